// A removal, again and again: each time one more call of the machine fails, or everything from it
// on, or the share vanishes there, or the program ends there by force. Shared folders and the
// records of others survive, and whoever finds a failure silent says here why that is right.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "packs/ProductRemoval.h"
#include "prove/Invariants.h"
#include "support/Installation.h"
#include "sweep/ExpectSwept.h"

namespace trelv::tests {
namespace {

constexpr const char* kConf = "prg\\com\\setup\\aggdovra\\zb.ini";
constexpr const char* kConfiguration = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb.ini";

/// Failures that nobody tells and that leave something undone.
const CallTable<Exception> kSilent{
    {"configuration.getConfigPath", "an empty programs path joins to a record in the root"}};

class NoProgress : public modProdTrelvManager::RemovalProgress {
 public:
  void begin(int /*max*/) override {}
  void advance() override {}
  void finish() override {}
};

/// An installation whose product ZB is removed from the server: a quoted command, an unquoted one
/// with blanks, one whose program lies in a shared folder and one that names it by its share.
class SweptRemoval : public SweptWorld {
 public:
  explicit SweptRemoval(Side side);

  sim::SimMachine& machine() override { return station_.machine(); }
  sim::SimDisk& share() override { return installation_.share(); }
  void run() override;
  void judge(const Fault& fault, Findings& findings) override;

 private:
  bool toldFailure();
  bool isRemoved();
  void expectSound(Findings& findings);
  std::string version(Side side, const std::string& id) {
    return side == Side::Server ? station_.serverVersion(id) : station_.clientVersion(id);
  }

  const Side side_;
  const Side otherSide_;
  Installation installation_;
  Station station_{installation_};
};

SweptRemoval::SweptRemoval(Side side)
    : side_(side), otherSide_(side == Side::Server ? Side::Client : Side::Server) {
  machine().mount("\\\\srv\\dati", installation_.sharedDisk());
  installation_.putCatalogue({{"ZB", "Bilancio", kConf}, {"Q2", "Tarsena2", "q2.ini"}});
  installation_.putServerRecord(deliveredVersions());
  station_.putClientRecord(deliveredVersions());
  for (const char* const program : {"prg\\com\\setup\\aggdovra\\zb\\u.exe", "mv\\z b\\u.exe",
                                    "prg\\com\\u.exe", "prg\\etc\\u.exe"}) {
    share().putProgram("S:\\Lumo\\" + std::string(program));
  }
  share().put("S:\\Lumo\\mv\\z b\\dati\\a.dat", "x");
  installation_.putConfiguration(
      kConf, configurationText({{"Remove",
                                 "",
                                 {"\"%PATHSETUP%\\prg\\com\\setup\\aggdovra\\zb\\u.exe\" -s",
                                  "S:\\Lumo\\mv\\z b\\u.exe -s", "%PATHSETUP%\\prg\\com\\u.exe -s",
                                  "\\\\srv\\dati\\Lumo\\prg\\etc\\u.exe -s"},
                                 {"S:\\Lumo\\mv\\z b\\u.exe -s"}}}));
  station_.program();
}

void SweptRemoval::run() {
  NoProgress progress;
  modProdTrelvManager::RemoveProduct(station_.program(),
                                     {Installation::kServer, "S:\\Work", "C:\\Lumo\\Client"},
                                     {"ZB", side_}, progress);
}

/// A log line or a report that nobody gets when all goes well.
bool SweptRemoval::toldFailure() {
  const std::vector<std::string>& lines = station_.program().lines();
  const auto kept = std::count_if(lines.begin(), lines.end(), [](const std::string& line) {
    return tellsOneOf({line}, "Cartella non rimossa, non");
  });
  return kept > 2 || !station_.program().reports().empty() ||
         tellsOneOf(lines, "Errore|setup non rimossa|configurazione non rimosso");
}

/// All is gone that a removal without failures takes away.
bool SweptRemoval::isRemoved() {
  const bool filesAreGone = !share().exists("S:\\Lumo\\mv\\z b") &&
                            !share().exists("S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb") &&
                            !share().exists(kConfiguration);
  return version(side_, "ZB").empty() && (side_ == Side::Client || filesAreGone);
}

void SweptRemoval::judge(const Fault& fault, Findings& findings) {
  expectSound(findings);
  switch (fault.trouble) {
    case Trouble::FailsOnce:
      expect(findings, Invariant::FailureTold, isRemoved() || toldFailure() || kSilent.holds(fault),
             "nobody told it");
      break;
    case Trouble::ShareVanishes:
      expect(findings, Invariant::FailureTold, isRemoved() || toldFailure(), "nobody told it");
      break;
    case Trouble::Killed:
      station_.endProgram();
      run();
      expectSound(findings);
      expect(findings, Invariant::Heals, isRemoved(), "the next removal could not finish it");
      break;
    case Trouble::None:
      expect(findings, Invariant::Heals, isRemoved() && !toldFailure(), "it did not go well");
      break;
    default:
      break;
  }
}

/// What must never happen, whatever failed.
void SweptRemoval::expectSound(Findings& findings) {
  for (const char* const path : {Installation::kCatalogue, Installation::kServerRecord,
                                 "S:\\Lumo\\prg\\com\\u.exe", "S:\\Lumo\\prg\\etc\\u.exe"}) {
    expect(findings, Invariant::NothingElseDeleted, share().fileExists(path),
           std::string("lost: ") + path);
  }
  expect(findings, Invariant::NothingElseDeleted, share().folderExists("S:\\Lumo\\prg\\tempterm"),
         "lost: tempterm");
  for (const char* const id : {"NERIO", "LUDA", "Q2", "ZM"}) {
    expect(findings, Invariant::NothingElseDeleted,
           !version(Side::Server, id).empty() && !version(Side::Client, id).empty(),
           std::string("lost: a version of ") + id);
  }
  expect(findings, Invariant::NothingElseDeleted, !version(otherSide_, "ZB").empty(),
         "lost: the other side's version");
  if (side_ == Side::Client) {
    expect(findings, Invariant::NothingElseDeleted,
           share().fileExists("S:\\Lumo\\mv\\z b\\dati\\a.dat"), "lost: server files");
    expect(findings, Invariant::NothingElseDeleted, share().fileExists(kConfiguration),
           "lost: the configuration");
  } else if (!share().fileExists(kConfiguration)) {
    expect(findings, Invariant::NothingElseDeleted, version(side_, "ZB").empty(),
           "configuration gone before the version");
  }
}

// Both sides in one test: the rows of the table are for the two of them together, and parts of the
// test program may run in processes of their own.
TEST(RemovalSweep, TellsFailuresAndTouchesNothingShared) {
  expectSwept<SweptRemoval>(
      {Trouble::FailsOnce, Trouble::FailsFromThenOn, Trouble::ShareVanishes, Trouble::Killed}, 50,
      Side::Server);
  expectSwept<SweptRemoval>({Trouble::FailsOnce, Trouble::Killed}, 6, Side::Client);
  expectEachRowMatched(kSilent);
}

}  // namespace
}  // namespace trelv::tests
