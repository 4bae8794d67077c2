// A removal, again and again: each time one more call of the machine fails, or the program ends
// there by force. Shared folders and the records of others survive, and whoever finds a failure
// silent says here why that is right.

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "packs/ProductRemoval.h"
#include "sim/FailingMachine.h"
#include "sim/KilledMachine.h"
#include "support/Installation.h"

namespace trelv::tests {
namespace {

constexpr const char* kConf = "prg\\com\\setup\\aggdovra\\zb.ini";
constexpr const char* kConfiguration = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb.ini";

class NoProgress : public modProdTrelvManager::RemovalProgress {
 public:
  void begin(int /*max*/) override {}
  void advance() override {}
  void finish() override {}
};

bool begins(const std::string& text, const std::string& beginning) {
  return text.compare(0, beginning.size(), beginning) == 0;
}

/// An installation whose product ZB is removed from the server: a quoted command, an unquoted one
/// with blanks, one whose program lies in a shared folder and one that names it by its share.
class SweptRemoval {
 public:
  explicit SweptRemoval(Side side) : side_(side) {
    station_.machine().mount("\\\\srv\\dati", installation_.sharedDisk());
    installation_.putCatalogue({{"ZB", "Bilancio", kConf}, {"Q2", "Tarsena2", "q2.ini"}});
    installation_.putServerRecord(deliveredVersions());
    station_.putClientRecord(deliveredVersions());
    for (const char* const program : {"prg\\com\\setup\\aggdovra\\zb\\u.exe", "mv\\z b\\u.exe",
                                      "prg\\com\\u.exe", "prg\\etc\\u.exe"}) {
      installation_.share().putProgram("S:\\Lumo\\" + std::string(program));
    }
    installation_.share().put("S:\\Lumo\\mv\\z b\\dati\\a.dat", "x");
    installation_.putConfiguration(
        kConf,
        configurationText({{"Remove",
                            "",
                            {"\"%PATHSETUP%\\prg\\com\\setup\\aggdovra\\zb\\u.exe\" -s",
                             "S:\\Lumo\\mv\\z b\\u.exe -s", "%PATHSETUP%\\prg\\com\\u.exe -s",
                             "\\\\srv\\dati\\Lumo\\prg\\etc\\u.exe -s"},
                            {"S:\\Lumo\\mv\\z b\\u.exe -s"}}}));
    station_.program();
  }

  sim::SimMachine& machine() { return station_.machine(); }

  void run() {
    NoProgress progress;
    modProdTrelvManager::RemoveProduct(station_.program(), Installation::kServer, "S:\\Work",
                                       "C:\\Lumo\\Client", "ZB", side_, progress);
  }

  void startAnotherProgram() { station_.endProgram(); }

  /// A log line or a report that nobody gets when all goes well.
  bool toldFailure() {
    const std::vector<std::string>& lines = station_.program().lines();
    const auto kept = std::count_if(lines.begin(), lines.end(), [](const std::string& line) {
      return line.find("Cartella non rimossa, non") != std::string::npos;
    });
    const bool line = std::any_of(lines.begin(), lines.end(), [](const std::string& text) {
      return text.find("Errore") != std::string::npos ||
             text.find("setup non rimossa") != std::string::npos ||
             text.find("configurazione non rimosso") != std::string::npos;
    });
    return line || !station_.program().reports().empty() || kept > 2;
  }

  /// What must never happen, whatever failed.
  void expectSound() {
    for (const char* const path : {Installation::kCatalogue, Installation::kServerRecord,
                                   "S:\\Lumo\\prg\\com\\u.exe", "S:\\Lumo\\prg\\etc\\u.exe"}) {
      EXPECT_TRUE(installation_.share().fileExists(path)) << path;
    }
    EXPECT_TRUE(installation_.share().folderExists("S:\\Lumo\\prg\\tempterm"));
    for (const char* const id : {"NERIO", "LUDA", "Q2", "ZM"}) {
      EXPECT_FALSE(station_.serverVersion(id).empty()) << id;
      EXPECT_FALSE(station_.clientVersion(id).empty()) << id;
    }
    EXPECT_FALSE(
        (side_ == Side::Server ? station_.clientVersion("ZB") : station_.serverVersion("ZB"))
            .empty())
        << "the other side's version";
    if (!installation_.share().fileExists(kConfiguration)) {
      EXPECT_EQ(side_, Side::Server);
      EXPECT_EQ(station_.serverVersion("ZB"), "") << "configuration gone before the version";
    }
    if (side_ == Side::Client) {
      EXPECT_TRUE(installation_.share().fileExists("S:\\Lumo\\mv\\z b\\dati\\a.dat"));
    }
  }

  /// All is gone that a removal without failures takes away.
  bool isRemoved() {
    if (side_ == Side::Client) {
      return station_.clientVersion("ZB").empty();
    }
    return !installation_.share().exists("S:\\Lumo\\mv\\z b") &&
           !installation_.share().exists("S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb") &&
           !installation_.share().exists(kConfiguration) && station_.serverVersion("ZB").empty();
  }

  Installation& installation() { return installation_; }

 private:
  Side side_;
  Installation installation_;
  Station station_{installation_};
};

struct Silent {
  const char* call;
  const char* reason;
};

/// Failures that nobody tells and that leave something undone.
const std::vector<Silent> kSilent{
    {"configuration.getConfigPath", "an empty client folder joins to a record in the root"}};

std::string sweepOnce(Side side, std::size_t number, std::size_t variant) {
  SweptRemoval removal(side);
  std::string call;
  {
    sim::FailingMachine failing(removal.machine(), number, sim::FailureSpan::Once, variant);
    removal.run();
    if (!failing.reached()) {
      EXPECT_TRUE(removal.isRemoved());
      return "";
    }
    call = failing.failedCall();
  }
  SCOPED_TRACE("call " + std::to_string(number) + ", variant " + std::to_string(variant) +
               " failed: " + call);
  const bool silent =
      std::any_of(kSilent.begin(), kSilent.end(),
                  [&call](const Silent& row) -> bool { return begins(call, row.call); });
  EXPECT_TRUE(silent || removal.toldFailure() || removal.isRemoved()) << "nobody told it";
  removal.expectSound();
  return call;
}

void sweep(Side side, std::size_t least) {
  constexpr std::size_t kVariants = 3;
  std::size_t number = 1;
  while (!sweepOnce(side, number, 0).empty()) {
    for (std::size_t variant = 1; variant < kVariants; ++variant) {
      sweepOnce(side, number, variant);
    }
    ++number;
  }
  EXPECT_GT(number, least);
}

TEST(EachCallOfARemovalFailsOnce, OnTheServerSide) { sweep(Side::Server, 50); }

TEST(EachCallOfARemovalFailsOnce, OnTheClientSide) { sweep(Side::Client, 6); }

TEST(ARemoval, WhereEverythingFailsFromACallOnTouchesNothingShared) {
  for (std::size_t number = 1;; ++number) {
    SweptRemoval removal(Side::Server);
    {
      sim::FailingMachine failing(removal.machine(), number, sim::FailureSpan::FromThenOn, number);
      removal.run();
      if (!failing.reached()) {
        EXPECT_GT(number, 50U);
        return;
      }
    }
    SCOPED_TRACE("everything failed from call " + std::to_string(number) + " on");
    removal.expectSound();
  }
}

TEST(ARemoval, WhoseShareVanishesBeforeACallTouchesNothingShared) {
  for (std::size_t number = 1;; ++number) {
    SweptRemoval removal(Side::Server);
    bool vanished = false;
    removal.machine().callLog().clear();
    removal.machine().onCall(number, [&] {
      vanished = true;
      removal.installation().share().disconnect(number % 2 == 0 ? system_code::kBadNetPath
                                                                : system_code::kNetNameDeleted);
    });
    removal.run();
    removal.installation().share().reconnect();
    if (!vanished) {
      EXPECT_GT(number, 50U);
      return;
    }
    SCOPED_TRACE("the share vanished before call " + std::to_string(number));
    removal.expectSound();
    EXPECT_TRUE(removal.isRemoved() || removal.toldFailure());
  }
}

/// Ends the removal by force at a call, then removes again in a new process. False when the removal
/// has fewer calls.
bool killOnce(Side side, std::size_t number) {
  SweptRemoval removal(side);
  bool killed = false;
  {
    sim::KilledMachine killing(removal.machine(), number);
    try {
      removal.run();
    } catch (const sim::Killed&) {
      killed = true;
    }
  }
  SCOPED_TRACE("ended by force at call " + std::to_string(number));
  removal.expectSound();
  removal.startAnotherProgram();
  removal.run();
  removal.expectSound();
  EXPECT_TRUE(removal.isRemoved()) << "the next removal could not finish it";
  return killed;
}

void killAtEachCall(Side side, std::size_t least) {
  std::size_t number = 1;
  while (killOnce(side, number)) {
    ++number;
  }
  EXPECT_GT(number, least);
}

TEST(ARemovalEndedByForce, AtEachCallOnTheServerCanBeFinished) { killAtEachCall(Side::Server, 50); }

TEST(ARemovalEndedByForce, AtEachCallOnTheClientCanBeFinished) { killAtEachCall(Side::Client, 6); }

}  // namespace
}  // namespace trelv::tests
