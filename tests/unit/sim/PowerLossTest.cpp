#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "sim/PowerLoss.h"

namespace trelv::sim {
namespace {

const std::string kOld(1500, 'o');
const std::string kNew(2000, 'n');
constexpr const char* kFile = "C:\\a.txt";
constexpr const char* kOther = "C:\\b.txt";
constexpr const char* kIni = "C:\\d.ini";

using Work = std::function<void(SimMachine&)>;
using Contents = std::set<std::string>;

/// What the file is behind power failures before the call of this number; "-" where it is missing.
Contents survivors(const Work& work, const std::string& path, std::size_t number,
                   Unfinished left = Unfinished::NotBegun) {
  Contents found;
  for (unsigned loss = 0; loss < 200; ++loss) {
    SimMachine machine;
    machine.putFile(kFile, kOld);
    {
      PowerLoss power(machine, {"C:"}, number, left);
      try {
        work(machine);
      } catch (const Killed&) {
      }
      std::mt19937 random(loss);
      power.cut([&](std::size_t count) -> std::size_t { return random() % count; });
    }
    found.insert(machine.fileExists(path) ? machine.fileText(path) : "-");
  }
  return found;
}

void look(SimMachine& machine) {
  machine::FileFacts facts;
  machine.files().look("C:\\", facts);
}

bool hasZeros(const Contents& contents) {
  return std::any_of(contents.begin(), contents.end(), [](const std::string& text) -> bool {
    return text.find('\0') != std::string::npos;
  });
}

TEST(PowerLoss, WhatWasWrittenMayBeThereLostEmptyOrZeros) {
  const Contents found = survivors(
      [](SimMachine& machine) {
        machine.files().write(kFile, kNew);
        look(machine);
      },
      kFile, 2);
  EXPECT_TRUE(found.contains(kOld));
  EXPECT_TRUE(found.contains(kNew));
  EXPECT_TRUE(found.contains(""));
  EXPECT_TRUE(hasZeros(found));
}

TEST(PowerLoss, WhatWasRenamedIsTheOldOneOrTheNewOne) {
  const Contents found = survivors(
      [](SimMachine& machine) {
        machine.files().write(kOther, kNew);
        machine.files().replaceFile(kOther, kFile);
        look(machine);
      },
      kFile, 3);
  EXPECT_EQ(found, (Contents{kOld, kNew}));
}

TEST(PowerLoss, ARenameThatIsNotReachedFlushesNothing) {
  const Contents found = survivors(
      [](SimMachine& machine) {
        machine.files().write(kOther, kNew);
        machine.files().replaceFile(kOther, kFile);
      },
      kOther, 2);
  EXPECT_TRUE(found.contains("-"));
  EXPECT_TRUE(hasZeros(found));
}

TEST(PowerLoss, WhatTheProfileFunctionsWriteIsFlushedByARenameOnly) {
  const Work write = [](SimMachine& machine) {
    machine.setIniValue(kIni, "a", "b", "1");
    machine.profiles().writeValue("a", "b", std::string(600, '2'), kIni);
    machine.files().moveFile(kIni, kOther);
    look(machine);
  };
  EXPECT_TRUE(hasZeros(survivors(write, kIni, 2)));
  const Contents found = survivors(write, kOther, 3);
  EXPECT_FALSE(hasZeros(found));
  EXPECT_EQ(found.size(), 2U) << "there, or not yet";
}

/// The moments that are worth a failure.
TEST(PowerLoss, MattersWhereADiskChanges) {
  for (const CallKind kind : {CallKind::FileWrite, CallKind::FileCopy, CallKind::ProfileWrite,
                              CallKind::FileReplace, CallKind::FileMove, CallKind::FileRemove,
                              CallKind::FolderMake, CallKind::MarkTake, CallKind::ProcessStart}) {
    EXPECT_TRUE(PowerLoss::matters(kind));
  }
  for (const CallKind kind : {CallKind::FileLook, CallKind::FileRead, CallKind::FileAppend,
                              CallKind::ProfileRead, CallKind::FolderList}) {
    EXPECT_FALSE(PowerLoss::matters(kind));
  }
}

TEST(PowerLoss, AppendingKeepsWhatStoodThere) {
  const Contents found = survivors(
      [](SimMachine& machine) {
        machine.files().append(kFile, kNew);
        look(machine);
      },
      kFile, 2);
  for (const std::string& text : found) {
    EXPECT_EQ(text.substr(0, kOld.size()), kOld);
  }
  EXPECT_TRUE(found.contains(kOld + kNew));
  EXPECT_TRUE(hasZeros(found));
}

TEST(PowerLoss, ANewEntryOrARemovalMayBeLost) {
  const Work work = [](SimMachine& machine) {
    machine.files().write(kOther, kNew);
    machine.files().removeFile(kFile);
    look(machine);
  };
  EXPECT_TRUE(survivors(work, kOther, 3).contains("-"));
  EXPECT_EQ(survivors(work, kFile, 3), (Contents{kOld, "-"}));
}

TEST(PowerLoss, ChangesOfFoldersGetThereInTheirOrder) {
  for (unsigned loss = 0; loss < 100; ++loss) {
    SimMachine machine;
    PowerLoss power(machine, {"C:"}, 9);
    machine.files().makeFolder("C:\\x");
    machine.files().makeFolder("C:\\x\\y");
    machine.files().makeFolder("C:\\z");
    std::mt19937 random(loss);
    power.cut([&](std::size_t count) -> std::size_t { return random() % count; });
    EXPECT_TRUE(!machine.folderExists("C:\\z") || machine.folderExists("C:\\x\\y"));
  }
}

TEST(PowerLoss, WhatOtherProgramsWroteIsThere) {
  const Contents found = survivors(
      [](SimMachine& machine) {
        machine.diskOf("C:\\").putProgram("C:\\s.exe", [&](SimProcess&) -> std::uint32_t {
          machine.putFile(kFile, kNew);
          return 0;
        });
        std::unique_ptr<machine::RunningProcess> process;
        machine.programs().start("C:\\s.exe", true, process);
        process->wait();
        look(machine);
      },
      kFile, 3);
  EXPECT_EQ(found, Contents{kNew});
}

TEST(PowerLoss, TellsWhoseContentWasOnItsWay) {
  SimMachine machine;
  machine.putFile(kFile, kOld);
  machine.setIniValue(kIni, "a", "b", "1");
  PowerLoss power(machine, {"C:"}, 99);
  machine.files().write(kFile, kNew);
  machine.files().write(kOther, kNew);
  machine.files().moveFile(kOther, "C:\\c.txt");
  machine.profiles().writeValue("a", "b", "2", kIni);
  machine.profiles().writeValue("a", "b", "2", "C:\\nuovo.ini");
  EXPECT_EQ(
      power.cut([](std::size_t) -> std::size_t { return 0; }),
      (std::vector<OnItsWay>{
          {kFile, Writing::Anew}, {kIni, Writing::InPlace}, {"C:\\nuovo.ini", Writing::ByValues}}));
  EXPECT_EQ(machine.fileText(kFile), kNew);
}

}  // namespace
}  // namespace trelv::sim
