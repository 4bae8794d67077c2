// The search for packs, again and again: each time one more call of the machine fails, or
// everything from it on, or the program ends there by force. A pack is never lost but in the one
// place that has a name here, no half copy goes untold, and nothing of the waiting stays on the
// screen.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "base/RuntimeError.h"
#include "packs/PackExtraction.h"
#include "prove/Invariants.h"
#include "support/PackPrograms.h"
#include "support/RealProgram.h"
#include "sweep/ExpectSwept.h"

namespace trelv::tests {
namespace {

constexpr const char* kSetup = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\";
constexpr const char* kUnpacked = "C:\\Users\\mario\\Temp\\prg";
constexpr const char* kTree = "prg\\com\\setup\\aggdovra\\";

/// Failures that nobody tells although something stays undone.
const CallTable<Exception> kSilent{
    {"files.look S:\\Lumo\\prg\\com\\setup\\aggdovra\\",
     "the pack counts as missing, stays and is opened again by the next process"}};

enum class Delivery {
  /// Two zip packs wait in the set-up folder of the server.
  ZipPacks,
  /// Two gz packs, each with one zip pack in it, lie in a folder of their own.
  GzPacks
};

struct Delivered {
  std::string name;
  PackContent content;
};

const std::vector<Delivered>& delivered() {
  static const std::string tree(kTree);
  static const std::vector<Delivered> packs{
      {"a", {{tree + "a\\1.exe", "a1"}, {tree + "a.ini", "a2"}}},
      {"b", {{tree + "b\\1.exe", "b1"}, {tree + "b.ini", "b2"}, {tree + "old.ini", "new"}}}};
  return packs;
}

/// Between these two calls of an undisturbed search a pack is removed and not yet copied.
struct Window {
  std::size_t removal = 0;
  std::size_t lastCopy = 0;
  bool holds(const Fault& fault) const {
    return fault.number > removal && fault.number <= lastCopy;
  }
};

/// One for each of the delivered packs; none where they cannot be lost.
using Windows = std::vector<Window>;

/// A machine on which one process looks for packs as its callers do.
class SweptPacks : public SweptWorld {
 public:
  /// In its window a pack may be lost.
  SweptPacks(Delivery delivery, Windows windows);

  sim::SimMachine& machine() override { return machine_; }
  void run() override;
  void judge(const Fault& fault, Findings& findings) override;
  bool isDone();

 private:
  std::string packPath(const Delivered& pack) const {
    return zips_ ? kSetup + pack.name + ".zip" : "S:\\Packs\\" + pack.name + ".gz";
  }
  bool waits(const Delivered& pack) { return machine_.fileExists(packPath(pack)); }
  bool arrived(const Delivered& pack);
  bool told();
  void expectNothingOnTheScreen(Findings& findings);
  void expectNothingHalf(Findings& findings);
  void judgeNextSearch(const Fault& fault, Findings& findings);

  const bool zips_;
  const Windows windows_;
  sim::SimMachine machine_;
  PackPrograms programs_{machine_};
  bool raised_ = false;
  std::vector<std::string> log_;
};

SweptPacks::SweptPacks(Delivery delivery, Windows windows)
    : zips_(delivery == Delivery::ZipPacks), windows_(std::move(windows)) {
  machine_.mount("S:");
  machine_.putFile(std::string(kSetup) + "old.ini", "old");
  machine_.diskOf("S:\\").setReadOnly(std::string(kSetup) + "old.ini");
  for (const Delivered& pack : delivered()) {
    const std::string zip = packBytes(pack.content);
    machine_.putFile(packPath(pack), zips_ ? zip : packBytes({{kTree + pack.name + ".zip", zip}}));
  }
}

void SweptPacks::run() {
  RealProgram program(machine_);
  try {
    if (zips_) {
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

bool SweptPacks::arrived(const Delivered& pack) {
  return std::all_of(pack.content.begin(), pack.content.end(), [this](const auto& file) {
    const std::string path = "S:\\Lumo\\" + file.first;
    return machine_.fileExists(path) && machine_.fileText(path) == file.second;
  });
}

bool SweptPacks::isDone() {
  return !machine_.folderExists(kUnpacked) &&
         std::all_of(delivered().begin(), delivered().end(),
                     [&](const Delivered& pack) { return arrived(pack) && waits(pack) != zips_; });
}

/// Raised to the caller, shown, or told in the log.
bool SweptPacks::told() {
  return raised_ || !machine_.boxes().empty() ||
         tellsOneOf(machine_.desktop().shownForms(), "frmError") ||
         tellsOneOf(log_, "rrore|nessun pacco viene aperto|nessun altro pacco viene aperto");
}

void SweptPacks::expectNothingOnTheScreen(Findings& findings) {
  expect(findings, Invariant::ScreenIsFree, !machine_.desktop().hourglass(), "the hourglass stays");
  expect(findings, Invariant::ScreenIsFree, machine_.desktop().activeForm() == nullptr,
         "a form stays");
}

/// Each file under its name is the old one or the new one, and what names a version stands there
/// only behind the set-up that it starts.
void SweptPacks::expectNothingHalf(Findings& findings) {
  const std::string old = machine_.fileText(std::string(kSetup) + "old.ini");
  expect(findings, Invariant::NothingHalf, old == "old" || old == "new", "half of old.ini");
  for (const Delivered& pack : delivered()) {
    for (const auto& [path, text] : pack.content) {
      const std::string file = "S:\\Lumo\\" + path;
      expect(findings, Invariant::NothingHalf,
             !machine_.fileExists(file) || machine_.fileText(file) == text ||
                 path.ends_with("old.ini"),
             "half of " + path);
    }
    const std::string name = kSetup + pack.name;
    expect(findings, Invariant::NothingHalf,
           !machine_.fileExists(name + ".ini") || machine_.fileExists(name + "\\1.exe"),
           pack.name + " is named before its set-up is there");
  }
}

void SweptPacks::judge(const Fault& fault, Findings& findings) {
  if (fault.trouble != Trouble::Killed) {
    expectNothingOnTheScreen(findings);
  }
  expectNothingHalf(findings);
  if (fault.trouble == Trouble::None) {
    expect(findings, Invariant::Heals, isDone(), "it did not go well");
  } else if (fault.trouble == Trouble::FailsOnce) {
    expect(findings, Invariant::FailureTold, isDone() || told() || kSilent.holds(fault),
           "not done and not told");
    for (const Delivered& pack : delivered()) {
      expect(findings, Invariant::FailureTold, waits(pack) || arrived(pack) || told(),
             "nobody told of " + pack.name);
    }
  }
  run();
  expectNothingOnTheScreen(findings);
  if (fault.trouble == Trouble::FailsOnce || fault.trouble == Trouble::Killed) {
    judgeNextSearch(fault, findings);
  }
}

/// What a search that was disturbed left undone is done by the next one.
void SweptPacks::judgeNextSearch(const Fault& fault, Findings& findings) {
  const bool killed = fault.trouble == Trouble::Killed;
  expect(findings, Invariant::Heals, !machine_.folderExists(kUnpacked), "what was unpacked stays");
  expect(findings, Invariant::Heals,
         machine_.diskOf("S:\\").tree().find(".tmp") == std::string::npos,
         "a temporary stays on the share");
  for (std::size_t i = 0; i < delivered().size(); ++i) {
    const Delivered& pack = delivered()[i];
    const bool mayBeLost = !windows_.empty() && windows_[i].holds(fault);
    expect(findings, Invariant::NothingElseDeleted, arrived(pack) || mayBeLost,
           pack.name + " is lost");
    if (killed) {
      expect(findings, Invariant::Heals, !arrived(pack) || !mayBeLost,
             pack.name + " is not lost any more");
      expect(findings, Invariant::Heals, !waits(pack) || !zips_, pack.name + " is not opened");
    }
  }
}

/// Where each pack may be lost. Kept: the removal stands before the copy. What is lost there has to
/// be delivered again: what it has left goes before the next pack is opened.
Windows windowsOfThePacks() {
  SweptPacks packs(Delivery::ZipPacks, {});
  packs.run();
  EXPECT_TRUE(packs.isDone());
  Windows windows;
  for (const sim::SimCall& call : packs.machine().callLog().all()) {
    if (call.kind == sim::CallKind::FileRemove && call.path.ends_with(".zip")) {
      windows.push_back({call.number, call.number});
    } else if (call.kind == sim::CallKind::FileReplace) {
      windows.back().lastCopy = call.number;
    }
  }
  EXPECT_EQ(windows.size(), delivered().size());
  return windows;
}

// Both deliveries in one test: the rows of the table are for the two of them together, and parts of
// the test program may run in processes of their own.
TEST(PackSweep, ZipPacksAreLostOnlyBetweenTheirRemovalAndTheirCopyAndGzPacksNever) {
  const std::initializer_list<Trouble> troubles{Trouble::FailsOnce, Trouble::FailsFromThenOn,
                                                Trouble::Killed};
  expectSwept<SweptPacks>(troubles, 30, Delivery::ZipPacks, windowsOfThePacks());
  expectSwept<SweptPacks>(troubles, 30, Delivery::GzPacks, Windows());
  expectEachRowMatched(kSilent);
}

}  // namespace
}  // namespace trelv::tests
