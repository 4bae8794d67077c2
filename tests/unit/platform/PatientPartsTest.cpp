#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "platform/PatientParts.h"
#include "platform/modLibrary.h"
#include "support/FakeProgram.h"

// A simulated clock moves while the program pauses: nobody waits here.
namespace trelv {
namespace {

using sim::Sharing;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using namespace system_code;

constexpr std::uint64_t kAll = 3000;

class PatientPartsTest : public testing::Test {
 protected:
  PatientPartsTest() {
    machine_.putFile(kIni, "[ZB]\r\nversion=1\r\n");
    machine_.programs().define(kProgram);
    machine_.diskOf(kProgram).setVersion(kProgram, {3, 20, 30, 0});
  }

  void holdFor(const std::string& path, std::uint32_t milliseconds,
               Sharing sharing = Sharing::None) {
    sim::SimDisk& disk = machine_.diskOf(path);
    disk.holdOpen(path, sharing);
    machine_.clock().after(milliseconds, [&disk, path] { disk.release(path); });
  }
  std::uint64_t paused() { return machine_.clock().paused(); }
  std::uint32_t write(const std::string& file) {
    return patient_.profiles.writeValue("ZB", "version", "2", file);
  }
  SystemCode start(const std::string& commandLine) {
    return patient_.processes.start(commandLine, true, process_);
  }

  static constexpr const char* kIni = "C:\\d\\agdvver.ini";
  static constexpr const char* kProgram = "C:\\d\\setup.exe";

  sim::SimMachine machine_;
  PatientParts parts_{machine_.machine()};
  machine::Machine patient_ = parts_.machine(machine_.machine().configuration);
  std::unique_ptr<machine::RunningProcess> process_;
};

// --- Ini files

TEST_F(PatientPartsTest, AValueIsWrittenWhenTheFileIsLetGo) {
  holdFor(kIni, 1500);
  EXPECT_EQ(write(kIni), 1U);
  EXPECT_THAT(machine_.fileText(kIni), HasSubstr("version=2"));
  EXPECT_GE(paused(), 1500U);
}

TEST_F(PatientPartsTest, AnIniFileThatStaysHeldIsWaitedForOnce) {
  holdFor(kIni, 60'000, Sharing::Read);
  EXPECT_EQ(write(kIni), 0U);
  EXPECT_EQ(write(kIni), 0U);
  EXPECT_EQ(paused(), kAll);
}

TEST_F(PatientPartsTest, AValueThatCannotBeWrittenAtAllIsNotWaitedFor) {
  machine_.diskOf("C:\\").setReadOnly(kIni);
  EXPECT_EQ(write(kIni), 0U);
  machine_.diskOf("C:\\").setReadOnly(kIni, false);
  machine_.diskOf("C:\\").denyWriting("C:\\d");
  EXPECT_EQ(write(kIni), 0U);
  EXPECT_EQ(write("C:\\d"), 0U);
  EXPECT_EQ(write("C:\\none\\agdvver.ini"), 0U);
  EXPECT_EQ(paused(), 0U);
}

TEST_F(PatientPartsTest, AVersionIsRecordedWhileAScannerReadsTheRecord) {
  tests::FakeProgram program(machine_, patient_);
  holdFor(kIni, 1500);
  EXPECT_EQ(modLibrary::WriteSetting(program, {kIni, "ZB", "version"}, "3.20.30.0"), 1U);
  EXPECT_EQ(modLibrary::ReadSetting(program, {kIni, "ZB", "version"}), "3.20.30.0");
}

// --- Programs

TEST_F(PatientPartsTest, AProgramThatAScannerHasInHandIsStartedWhenItIsLetGo) {
  holdFor(kProgram, 1500);
  EXPECT_EQ(start(kProgram), kSuccess);
  EXPECT_GE(paused(), 1500U);
  EXPECT_THAT(machine_.programs().startedCommandLines(), SizeIs(1));
  holdFor(kProgram, 1500);
  EXPECT_EQ(patient_.processes.startBound(kProgram, true, process_), kSuccess);
  holdFor(kProgram, 1500);
  EXPECT_EQ(patient_.processes.startTool(kProgram, true, process_), kSuccess);
}

TEST_F(PatientPartsTest, AProgramThatStaysHeldFailsAfterThreeSeconds) {
  holdFor(kProgram, 60'000);
  EXPECT_EQ(start(kProgram), kSharingViolation);
  EXPECT_EQ(start(kProgram), kSharingViolation);
  EXPECT_EQ(paused(), kAll);
  EXPECT_THAT(machine_.programs().startedCommandLines(), IsEmpty());
}

TEST_F(PatientPartsTest, AProgramThatIsRefusedIsNotWaitedFor) {
  for (const SystemCode code : {kFileNotFound, kAccessDenied, kElevationRequired, kBadExeFormat}) {
    machine_.programs().failStart(kProgram, code);
    EXPECT_EQ(start(kProgram), code);
  }
  EXPECT_EQ(paused(), 0U);
}

TEST_F(PatientPartsTest, TheVersionOfAProgramIsReadWhenItIsLetGo) {
  machine::FileVersion version{};
  holdFor(kProgram, 1500);
  EXPECT_EQ(patient_.versions.read(kProgram, version), kSuccess);
  EXPECT_EQ(version, (machine::FileVersion{3, 20, 30, 0}));
  EXPECT_EQ(patient_.versions.read(kIni, version), kResourceDataNotFound);
}

}  // namespace
}  // namespace trelv
