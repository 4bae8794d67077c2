#include <gtest/gtest.h>

#include "sim/FailingMachine.h"

namespace trelv::sim {
namespace {

using namespace system_code;

constexpr SystemCode kNoNetwork = 1222;

class FailingMachineTest : public testing::Test {
 protected:
  SystemCode write(const std::string& path) { return machine_.files().write(path, "new"); }

  SimMachine machine_;
};

TEST_F(FailingMachineTest, FailsExactlyTheCallOfItsNumber) {
  write("C:\\before.txt");
  {
    const FailingMachine failing(machine_, 2);
    EXPECT_EQ(write("C:\\1.txt"), kSuccess);
    EXPECT_FALSE(failing.reached());
    EXPECT_EQ(failing.failedCall(), "");
    EXPECT_EQ(write("C:\\2.txt"), kAccessDenied);
    EXPECT_EQ(write("C:\\3.txt"), kSuccess);
    EXPECT_TRUE(failing.reached());
    EXPECT_EQ(failing.failedCall(), "files.write C:\\2.txt");
    EXPECT_EQ(failing.calls(), 3U);
  }
  EXPECT_FALSE(machine_.fileExists("C:\\2.txt"));
  EXPECT_EQ(write("C:\\2.txt"), kSuccess);
}

TEST_F(FailingMachineTest, FailsEveryCallFromItsNumberOn) {
  const FailingMachine failing(machine_, 2, FailureSpan::FromThenOn);
  EXPECT_EQ(write("C:\\1.txt"), kSuccess);
  EXPECT_EQ(write("C:\\2.txt"), kAccessDenied);
  EXPECT_EQ(write("C:\\3.txt"), kAccessDenied);
  EXPECT_EQ(failing.failedCall(), "files.write C:\\2.txt");
}

TEST_F(FailingMachineTest, AChangeThatIsMadeAgainAtOnceFailsAgain) {
  machine_.putFile("C:\\1.txt", "");
  const FailingMachine failing(machine_, 1);
  machine::FileFacts facts;

  EXPECT_EQ(machine_.files().removeFile("C:\\1.txt"), kAccessDenied);
  EXPECT_EQ(machine_.files().look("C:\\1.txt", facts), kSuccess);
  EXPECT_EQ(machine_.files().removeFile("C:\\1.txt"), kAccessDenied);
  EXPECT_EQ(machine_.files().removeFile("C:\\1.txt"), kAccessDenied);
  EXPECT_EQ(machine_.files().write("C:\\2.txt", ""), kSuccess);
  EXPECT_EQ(machine_.files().removeFile("C:\\1.txt"), kSuccess);
}

TEST_F(FailingMachineTest, ACallThatNobodyTriesAgainFailsOnce) {
  const FailingMachine failing(machine_, 1);

  EXPECT_EQ(machine_.files().write("C:\\1.txt", ""), kAccessDenied);
  EXPECT_EQ(machine_.files().write("C:\\1.txt", ""), kSuccess);
}

TEST_F(FailingMachineTest, EachKindOfCallFailsInItsOwnWay) {
  machine_.putFile("C:\\a.ini", "[S]\r\nk=v\r\n");
  machine_.programs().define("C:\\a.exe");
  machine_.registry().makeKey(machine::Hive::LocalMachine, "SOFTWARE\\LUMO");
  machine_.environment().put("X", "1");
  const FailingMachine failing(machine_, 1, FailureSpan::FromThenOn);

  std::string text = "before";
  std::unique_ptr<machine::RunningProcess> process;
  std::unique_ptr<machine::RegistryKey> key;
  VersionRecord record;
  record.size = kShortVersionRecord;
  machine::Machine& parts = machine_.machine();
  EXPECT_EQ(parts.files.read("C:\\a.ini", 10, text), kSharingViolation);
  EXPECT_EQ(parts.profiles.readValue("S", "k", "default", 100, "C:\\a.ini"), "default");
  EXPECT_EQ(parts.profiles.writeValue("S", "k", "w", "C:\\a.ini"), 0U);
  EXPECT_EQ(parts.registry.openKey(machine::Hive::LocalMachine, "SOFTWARE\\LUMO", 1, key),
            kAccessDenied);
  EXPECT_EQ(parts.processes.start("C:\\a.exe", true, process), kFileNotFound);
  EXPECT_FALSE(parts.environment.get("X", text));
  EXPECT_FALSE(parts.system.queryVersion(record));
  EXPECT_EQ(parts.system.driveType("C:\\"), machine::drive_type::kNoRoot);
  EXPECT_EQ(parts.system.connectionName("C:", 100, text), kNoNetwork);
  EXPECT_EQ(parts.system.deviceNames("C:", 100, text), kAccessDenied);
  EXPECT_EQ(parts.system.computerName(text), kAccessDenied);
  EXPECT_EQ(parts.configuration.getParameter("P", "S", "K", "A", "D", 10, text), -3000);
  EXPECT_EQ(parts.desktop.messageBox("", "", machine::BoxIcon::None, machine::BoxButtons::Ok),
            machine::BoxAnswer::None);
  EXPECT_EQ(parts.desktop.inputBox("", ""), std::nullopt);
  std::unique_ptr<machine::WordProcessor> word;
  EXPECT_EQ(parts.automation.startWord(word).code, machine::automation_code::kNotRegistered);
  EXPECT_EQ(word, nullptr);
  EXPECT_EQ(text, "before");
  EXPECT_EQ(machine_.fileText("C:\\a.ini"), "[S]\r\nk=v\r\n");
  EXPECT_TRUE(machine_.started().empty());
  EXPECT_TRUE(machine_.boxes().empty());
}

TEST_F(FailingMachineTest, AVariantFailsWithAnotherCode) {
  machine_.putFile("C:\\a.txt", "old");
  machine_.programs().define("C:\\a.exe");
  std::unique_ptr<machine::RunningProcess> process;
  const FailingMachine failing(machine_, 1, FailureSpan::FromThenOn, 2);

  EXPECT_EQ(machine_.programs().start("C:\\a.exe", true, process), kElevationRequired);
  EXPECT_EQ(write("C:\\a.txt"), kDiskFull);
  EXPECT_EQ(machine_.fileText("C:\\a.txt"), "");
}

TEST_F(FailingMachineTest, ClockAndLocaleAreNotCounted) {
  const FailingMachine failing(machine_, 1, FailureSpan::FromThenOn);

  EXPECT_EQ(machine_.machine().clock.now().year, 2026);
  EXPECT_EQ(machine_.machine().locale.truthText(true), "Vero");
  EXPECT_EQ(machine_.machine().desktop.activeForm(), nullptr);
  machine_.machine().desktop.processEvents();
  EXPECT_EQ(failing.calls(), 0U);
}

}  // namespace
}  // namespace trelv::sim
