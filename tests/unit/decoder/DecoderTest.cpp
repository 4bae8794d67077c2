#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <string>
#include <utility>

#include "decoder/Decoder.h"
#include "support/decoder/DecoderPacks.h"

namespace trelv::decoder {
namespace {

using testing::ElementsAre;

/// Hands a pack and an output folder out and remembers what was asked for.
class FakeMachine : public DecoderMachine {
 public:
  SystemCode openPack(const std::string& path, std::unique_ptr<PackInput>& pack) override {
    asked.push_back(path);
    if (withoutMemory) {
      throw std::bad_alloc();
    }
    made = nullptr;
    if (packCode == system_code::kSuccess) {
      pack = std::make_unique<MemoryPack>(packBytes);
    }
    return packCode;
  }
  SystemCode openOutput(const std::string& path, std::unique_ptr<OutputTree>& output) override {
    asked.push_back(path);
    if (outputCode == system_code::kSuccess) {
      auto tree = std::make_unique<MemoryTree>();
      tree->failAlways("replaceFile", inUse);
      made = tree.get();
      output = std::move(tree);
    }
    return outputCode;
  }
  void pause(std::uint32_t milliseconds) override {
    paused += milliseconds;
    if (paused >= packHeldFor && packCode == system_code::kSharingViolation) {
      packCode = system_code::kSuccess;
    }
    if (made != nullptr && paused >= inUseFor) {
      made->failAlways("replaceFile", system_code::kSuccess);
    }
  }

  std::string packBytes = pack(TarBytes());
  bool withoutMemory = false;
  SystemCode packCode = system_code::kSuccess;
  SystemCode outputCode = system_code::kSuccess;
  std::vector<std::string> asked;
  /// What putting a file in its place answers until so much time has passed.
  SystemCode inUse = system_code::kSuccess;
  std::uint32_t inUseFor = 0;
  /// How long the pack answers 32, where it does.
  std::uint32_t packHeldFor = 0;
  std::uint32_t paused = 0;
  MemoryTree* made = nullptr;
};

class DecoderTest : public testing::Test {
 protected:
  DecoderResult run(const std::vector<std::string>& arguments) {
    return decode(arguments, machine_);
  }

  FakeMachine machine_;
};

TEST_F(DecoderTest, EndsWithZeroAndWithoutALineWhenAllIsWell) {
  const DecoderResult result = run({"C:\\P\\a.gz", "C:\\T"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.line, "");
  EXPECT_THAT(machine_.asked, ElementsAre("C:\\P\\a.gz", "C:\\T"));
}

TEST_F(DecoderTest, TellsItsUsageForOtherArguments) {
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{}, {"a"}, {"a", "b", "c"}, {"", "b"}, {"a", ""}}) {
    const DecoderResult result = run(arguments);
    EXPECT_EQ(result.exitCode, 7);
    EXPECT_EQ(result.line, "Uso: qalbunex PACCO CARTELLA");
  }
  EXPECT_TRUE(machine_.asked.empty());
}

TEST_F(DecoderTest, AnOutputFolderMayEndInAQuoteForABackslashOrBeADriveAlone) {
  run({"a.gz", "C:\\T\""});
  EXPECT_EQ(machine_.asked.back(), "C:\\T\\");
  run({"a.gz", "C:"});
  EXPECT_EQ(machine_.asked.back(), "C:\\");
}

TEST_F(DecoderTest, AFileThatAScannerReadsIsWaitedForAndNoLongerThanThreeSeconds) {
  machine_.packBytes = pack(TarBytes().file("a.txt", "x"));
  machine_.inUse = system_code::kSharingViolation;
  machine_.inUseFor = 1500;
  EXPECT_EQ(run({"C:\\P\\a.gz", "C:\\T"}).exitCode, 0);
  machine_.paused = 0;
  machine_.inUseFor = 60'000;
  EXPECT_EQ(run({"C:\\P\\a.gz", "C:\\T"}).exitCode, 2);
  EXPECT_EQ(machine_.paused, 3000U);
}

TEST_F(DecoderTest, APackThatAScannerReadsIsWaitedForAndNoLongerThanThreeSeconds) {
  machine_.packBytes = pack(TarBytes().file("a.txt", "x"));
  machine_.packCode = system_code::kSharingViolation;
  machine_.packHeldFor = 1500;
  EXPECT_EQ(run({"C:\\P\\a.gz", "C:\\T"}).exitCode, 0);
  machine_.paused = 0;
  machine_.packCode = system_code::kSharingViolation;
  machine_.packHeldFor = 60'000;
  EXPECT_EQ(run({"C:\\P\\a.gz", "C:\\T"}).exitCode, 2);
  EXPECT_EQ(machine_.paused, 3000U);
  machine_.packCode = system_code::kAccessDenied;
  EXPECT_EQ(run({"C:\\P\\a.gz", "C:\\T"}).exitCode, 2);
  EXPECT_EQ(machine_.paused, 3000U);
}

TEST_F(DecoderTest, AFailureIsToldInOneLine) {
  const std::string hostile = pack(TarBytes().file("../e", "x"));
  struct {
    SystemCode packCode;
    SystemCode outputCode;
    const char* line;
    std::size_t asked;
  } const rows[]{
      {system_code::kFileNotFound, 0, "Impossibile trovare il file: C:\\P\\a.gz", 1},
      {0, system_code::kDirectoryName, "Il percorso non è una cartella: C:\\T", 2},
      {0, 0, "percorso che risale: \"../e\"", 2},
  };
  for (const auto& row : rows) {
    machine_.packBytes = hostile;
    machine_.packCode = row.packCode;
    machine_.outputCode = row.outputCode;
    machine_.asked.clear();
    const DecoderResult result = run({"C:\\P\\a.gz", "C:\\T"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.line, std::string("qalbunex: C:\\P\\a.gz: ") + row.line);
    EXPECT_EQ(machine_.asked.size(), row.asked);
  }
}

TEST_F(DecoderTest, MissingMemoryIsToldInOneLineOfThePack) {
  machine_.withoutMemory = true;
  const DecoderResult result = run({"C:\\P\\a.gz", "C:\\T"});
  EXPECT_EQ(result.exitCode, 2);
  EXPECT_EQ(result.line, "qalbunex: C:\\P\\a.gz: Memoria insufficiente");
}

}  // namespace
}  // namespace trelv::decoder
