// The search for packs, again and again: each time one more call of the machine fails, or the
// program ends there by force. A pack is never lost but in the one place that has a name here, no
// half copy goes untold, and nothing of the waiting stays on the screen.

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "base/RuntimeError.h"
#include "packs/PackExtraction.h"
#include "sim/FailingMachine.h"
#include "sim/KilledMachine.h"
#include "support/PackPrograms.h"
#include "support/RealProgram.h"

namespace trelv::tests {
namespace {

constexpr const char* kSetup = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\";
constexpr const char* kUnpacked = "C:\\Users\\mario\\Temp\\prg";
constexpr const char* kTree = "prg\\com\\setup\\aggdovra\\";

enum class Delivery {
  /// Two zip packs wait in the set-up folder of the server.
  ZipPacks,
  /// Two gz packs, each with one zip pack in it, lie in a folder of their own.
  GzPacks
};

struct Delivered {
  const char* name;
  PackContent content;
};

const std::vector<Delivered>& delivered() {
  static const std::string tree(kTree);
  static const std::vector<Delivered> packs{
      {"a", {{tree + "a\\1.exe", "a1"}, {tree + "a.ini", "a2"}}},
      {"b", {{tree + "b\\1.exe", "b1"}, {tree + "b.ini", "b2"}, {tree + "old.ini", "new"}}}};
  return packs;
}

/// One world; nothing is shared between two of them.
class SweptPacks {
 public:
  explicit SweptPacks(Delivery delivery) : delivery_(delivery) {
    machine_.mount("S:");
    machine_.putFile(std::string(kSetup) + "old.ini", "old");
    machine_.diskOf("S:\\").setReadOnly(std::string(kSetup) + "old.ini");
    for (const Delivered& pack : delivered()) {
      const std::string zip = packBytes(pack.content);
      machine_.putFile(packPath(pack),
                       delivery == Delivery::ZipPacks
                           ? zip
                           : packBytes({{std::string(kTree) + pack.name + ".zip", zip}}));
    }
    machine_.callLog().clear();
  }

  /// One process that looks for packs as its callers do.
  void run() {
    RealProgram program(machine_);
    try {
      if (delivery_ == Delivery::ZipPacks) {
        modProdTrelvManager::OpenZipPacksInFolder(program, "S:\\Lumo\\prg\\com\\setup\\aggdovra",
                                                  "S:\\Lumo", true);
      } else {
        modProdTrelvManager::OpenFolderPacks(program, "S:\\Packs", "S:\\Lumo");
      }
    } catch (const RuntimeError&) {
      raised_ = true;
    }
    log_ = program.logLines();
  }

  sim::SimMachine& machine() { return machine_; }
  sim::SimDesktop& desktop() { return machine_.desktop(); }

  bool waits(const Delivered& pack) { return machine_.fileExists(packPath(pack)); }
  bool arrived(const Delivered& pack) {
    return std::all_of(pack.content.begin(), pack.content.end(), [this](const auto& file) {
      const std::string path = "S:\\Lumo\\" + file.first;
      return machine_.fileExists(path) && machine_.fileText(path) == file.second;
    });
  }
  bool isDone() {
    const bool zips = delivery_ == Delivery::ZipPacks;
    return !machine_.folderExists(kUnpacked) &&
           std::all_of(delivered().begin(), delivered().end(), [&](const Delivered& pack) {
             return arrived(pack) && waits(pack) == !zips;
           });
  }
  /// Raised to the caller, shown, or told in the log.
  bool told() {
    const std::vector<std::string>& forms = desktop().shownForms();
    return raised_ || !desktop().boxes().empty() ||
           std::count(forms.begin(), forms.end(), std::string("frmError")) > 0 ||
           std::any_of(log_.begin(), log_.end(), [](const std::string& line) {
             return line.find("rrore") != std::string::npos;
           });
  }
  void expectNothingOnTheScreen() {
    EXPECT_FALSE(desktop().hourglass());
    EXPECT_EQ(desktop().activeForm(), nullptr);
  }

 private:
  std::string packPath(const Delivered& pack) const {
    return delivery_ == Delivery::ZipPacks ? std::string(kSetup) + pack.name + ".zip"
                                           : std::string("S:\\Packs\\") + pack.name + ".gz";
  }

  Delivery delivery_;
  sim::SimMachine machine_;
  PackPrograms programs_{machine_};
  bool raised_ = false;
  std::vector<std::string> log_;
};

bool begins(const std::string& text, const std::string& beginning) {
  return text.compare(0, beginning.size(), beginning) == 0;
}

/// Failures that nobody tells although something stays undone, and why that is right.
struct Silent {
  const char* call;
  const char* reason;
};

const std::vector<Silent> kSilent{
    {"files.look S:\\Lumo\\prg\\com\\setup\\aggdovra\\",
     "the pack counts as missing, stays and is opened again by the next process"},
    {"files.look C:\\Users\\mario\\Temp\\prg", "what is unpacked goes with the next search"}};

bool isSilent(const std::string& call) {
  return std::any_of(kSilent.begin(), kSilent.end(),
                     [&](const Silent& row) { return begins(call, row.call); });
}

/// Between these two calls of an undisturbed search the pack is removed and not yet copied.
struct Window {
  std::size_t removal = 0;
  std::size_t lastCopy = 0;
  bool holds(std::size_t call) const { return call > removal && call <= lastCopy; }
};

/// The window of the second pack. Kept: the removal stands before the copy. What is lost there has
/// to be delivered again; the first pack's content is taken along by the second one's copy.
Window windowOfTheLastPack() {
  SweptPacks packs(Delivery::ZipPacks);
  packs.run();
  EXPECT_TRUE(packs.isDone());
  Window window;
  for (const sim::SimCall& call : packs.machine().callLog().all()) {
    if (call.text == "files.removeFile " + std::string(kSetup) + "b.zip") {
      window.removal = call.number;
    } else if (begins(call.text, "files.copyFile ")) {
      window.lastCopy = call.number;
    }
  }
  EXPECT_LT(window.removal, window.lastCopy);
  return window;
}

bool failOnce(Delivery delivery, std::size_t number, std::size_t variant, const Window& window) {
  SweptPacks packs(delivery);
  std::string call;
  {
    sim::FailingMachine failing(packs.machine(), number, sim::FailureSpan::Once, variant);
    packs.run();
    if (!failing.reached()) {
      return false;
    }
    call = failing.failedCall();
  }
  SCOPED_TRACE("call " + std::to_string(number) + ", variant " + std::to_string(variant) +
               " failed: " + call);
  packs.expectNothingOnTheScreen();
  EXPECT_TRUE(packs.isDone() || packs.told() || isSilent(call)) << "not done and not told";
  for (const Delivered& pack : delivered()) {
    EXPECT_TRUE(packs.waits(pack) || packs.arrived(pack) || packs.told()) << pack.name;
  }
  packs.run();
  for (const Delivered& pack : delivered()) {
    const bool mayBeLost =
        delivery == Delivery::ZipPacks && pack.name == std::string("b") && window.holds(number);
    EXPECT_TRUE(packs.arrived(pack) || mayBeLost) << pack.name << " is lost";
  }
  EXPECT_FALSE(packs.machine().folderExists(kUnpacked));
  packs.expectNothingOnTheScreen();
  return true;
}

void failEachCall(Delivery delivery) {
  const Window window = windowOfTheLastPack();
  constexpr std::size_t kVariants = 3;
  std::size_t number = 1;
  while (failOnce(delivery, number, 0, window)) {
    for (std::size_t variant = 1; variant < kVariants; ++variant) {
      failOnce(delivery, number, variant, window);
    }
    ++number;
  }
  EXPECT_GT(number, 30U);
}

TEST(PackCallFails, InASearchForZipPacks) { failEachCall(Delivery::ZipPacks); }

TEST(PackCallFails, InASearchForGzPacks) { failEachCall(Delivery::GzPacks); }

void failFromEachCallOn(Delivery delivery) {
  for (std::size_t number = 1;; ++number) {
    SweptPacks packs(delivery);
    {
      sim::FailingMachine failing(packs.machine(), number, sim::FailureSpan::FromThenOn, number);
      packs.run();
      if (!failing.reached()) {
        EXPECT_GT(number, 30U);
        return;
      }
      SCOPED_TRACE("everything failed from call " + std::to_string(number) +
                   " on: " + failing.failedCall());
      packs.expectNothingOnTheScreen();
    }
    packs.run();
    packs.expectNothingOnTheScreen();
  }
}

TEST(EverythingFailsFromAPackCallOn, InASearchForZipPacks) {
  failFromEachCallOn(Delivery::ZipPacks);
}

TEST(EverythingFailsFromAPackCallOn, InASearchForGzPacks) { failFromEachCallOn(Delivery::GzPacks); }

// --- The program is ended by force, and started again

bool killOnce(Delivery delivery, std::size_t number, sim::Unfinished left, const Window& window) {
  SweptPacks packs(delivery);
  std::string call;
  {
    sim::KilledMachine killed(packs.machine(), number, left);
    try {
      packs.run();
    } catch (const sim::Killed&) {
    }
    if (!killed.reached()) {
      return false;
    }
    call = killed.killedCall();
  }
  SCOPED_TRACE("killed at call " + std::to_string(number) + ": " + call);
  packs.run();
  packs.expectNothingOnTheScreen();
  for (const Delivered& pack : delivered()) {
    // The last copy repeats the files of the first pack, and leaves half of one where it is cut.
    const bool mayBeLost = delivery == Delivery::ZipPacks && window.holds(number) &&
                           (pack.name == std::string("b") || left != sim::Unfinished::NotBegun);
    const bool mustBeLost = mayBeLost && left == sim::Unfinished::NotBegun;
    EXPECT_TRUE(packs.arrived(pack) || mayBeLost) << pack.name << " is lost";
    EXPECT_FALSE(packs.arrived(pack) && mustBeLost) << pack.name << " is not lost any more";
    EXPECT_FALSE(packs.waits(pack) && delivery == Delivery::ZipPacks) << pack.name;
  }
  EXPECT_FALSE(packs.machine().folderExists(kUnpacked));
  return true;
}

void killAtEachCall(Delivery delivery, sim::Unfinished left) {
  const Window window = windowOfTheLastPack();
  std::size_t number = 1;
  while (killOnce(delivery, number, left, window)) {
    ++number;
  }
  EXPECT_GT(number, 30U);
}

TEST(PackSearchIsKilled, BeforeEachCallWithZipPacks) {
  killAtEachCall(Delivery::ZipPacks, sim::Unfinished::NotBegun);
}

TEST(PackSearchIsKilled, WithinEachWritingCall) {
  for (const Delivery delivery : {Delivery::ZipPacks, Delivery::GzPacks}) {
    killAtEachCall(delivery, sim::Unfinished::Half);
    killAtEachCall(delivery, sim::Unfinished::Empty);
  }
}

TEST(PackSearchIsKilled, BeforeEachCallWithGzPacks) {
  killAtEachCall(Delivery::GzPacks, sim::Unfinished::NotBegun);
}

}  // namespace
}  // namespace trelv::tests
