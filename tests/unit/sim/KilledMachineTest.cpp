#include <gtest/gtest.h>

#include <functional>
#include <utility>

#include "sim/KilledMachine.h"

namespace trelv::sim {
namespace {

using namespace system_code;

/// A step of a program that tidies up behind itself, whatever happens.
class TidyStep {
 public:
  explicit TidyStep(SimMachine& machine) : machine_(machine) {}
  ~TidyStep() { code_ = machine_.files().removeFile("C:\\a.lock"); }

  static SystemCode code() { return code_; }

 private:
  SimMachine& machine_;
  static inline SystemCode code_ = kSuccess;
};

class KilledMachineTest : public testing::Test {
 protected:
  SystemCode write(const std::string& path, const std::string& text = "x") {
    return machine_.files().write(path, text);
  }
  /// Runs `program`, which is killed in its call of this number; false when it came to its end.
  bool dies(std::size_t number, const std::function<void()>& program,
            Unfinished left = Unfinished::NotBegun) {
    const KilledMachine kill(machine_, number, left);
    bool died = false;
    try {
      program();
    } catch (const Killed&) {
      died = true;
    }
    EXPECT_EQ(kill.reached(), died);
    killedCall_ = kill.killedCall();
    calls_ = kill.calls();
    return died;
  }

  SimMachine machine_;
  std::string killedCall_;
  std::size_t calls_ = 0;
};

TEST_F(KilledMachineTest, TheCallOfItsNumberIsNotCarriedOut) {
  EXPECT_TRUE(dies(2, [&] {
    write("C:\\1.txt");
    write("C:\\2.txt");
    write("C:\\3.txt");
  }));
  EXPECT_TRUE(machine_.fileExists("C:\\1.txt"));
  EXPECT_FALSE(machine_.fileExists("C:\\2.txt"));
  EXPECT_FALSE(machine_.fileExists("C:\\3.txt"));
  EXPECT_EQ(killedCall_, "files.write C:\\2.txt");
  EXPECT_EQ(calls_, 2U);
}

TEST_F(KilledMachineTest, ARunThatEndsBeforeSaysSo) {
  EXPECT_FALSE(dies(3, [&] { write("C:\\1.txt"); }));
  EXPECT_EQ(killedCall_, "");
}

TEST_F(KilledMachineTest, ATrapOfTheProgramDoesNotHoldIt) {
  EXPECT_TRUE(dies(1, [&] {
    try {
      write("C:\\1.txt");
    } catch (const std::exception&) {
      ADD_FAILURE() << "caught as a failure of the program";
    }
  }));
}

TEST_F(KilledMachineTest, TheDyingProgramChangesNothing) {
  machine_.putFile("C:\\a.lock", "lock");
  machine_.programs().define("C:\\a.exe");
  machine_.registry().makeKey(machine::Hive::LocalMachine, "SOFTWARE\\LUMO");
  std::unique_ptr<machine::RegistryKey> key;
  ASSERT_EQ(
      machine_.registry().openKey(machine::Hive::LocalMachine, "SOFTWARE\\LUMO", 0xF003F, key),
      kSuccess);
  machine_.callLog().clear();

  EXPECT_TRUE(dies(1, [&] {
    const TidyStep step(machine_);
    try {
      std::string content;
      machine_.files().read("C:\\a.lock", 10, content);
    } catch (...) {
      machine::Machine& parts = machine_.machine();
      std::unique_ptr<machine::RunningProcess> process;
      EXPECT_EQ(parts.files.write("C:\\b.txt", "x"), kAccessDenied);
      EXPECT_EQ(parts.files.append("C:\\a.lock", "x"), kAccessDenied);
      EXPECT_EQ(parts.files.copyFile("C:\\a.lock", "C:\\b.txt"), kAccessDenied);
      EXPECT_EQ(parts.files.replaceFile("C:\\a.lock", "C:\\b.txt"), kAccessDenied);
      EXPECT_EQ(parts.profiles.writeValue("S", "k", "v", "C:\\b.ini"), 0U);
      EXPECT_EQ(parts.processes.start("C:\\a.exe", true, process), kAccessDenied);
      EXPECT_EQ(key->writeValue("v", 1, "x"), kAccessDenied);
      EXPECT_FALSE(parts.environment.set("KILLED", "1"));
      EXPECT_NE(parts.configuration.setParameter("P", "S", "K", "A", 1, "V"), 0);
      EXPECT_EQ(parts.desktop.messageBox("", "", machine::BoxIcon::None, machine::BoxButtons::Ok),
                machine::BoxAnswer::None);
      throw;
    }
  }));
  EXPECT_EQ(TidyStep::code(), kAccessDenied);
  EXPECT_EQ(machine_.fileText("C:\\a.lock"), "lock");
  EXPECT_FALSE(machine_.fileExists("C:\\b.txt"));
  EXPECT_FALSE(machine_.fileExists("C:\\b.ini"));
  EXPECT_TRUE(machine_.started().empty());
  EXPECT_FALSE(machine_.environment().has("KILLED"));
  EXPECT_TRUE(machine_.boxes().empty());
  EXPECT_EQ(machine_.calls(), (std::vector<std::string>{"files.read C:\\a.lock"}));
}

TEST_F(KilledMachineTest, NothingElseHappensBetweenTheCallsOfTheDyingProgram) {
  bool happened = false;
  machine_.onCall("files.removeFile", [&] { happened = true; });
  machine_.desktop().onEvents([&] { happened = true; });
  EXPECT_TRUE(dies(1, [&] {
    try {
      write("C:\\1.txt");
    } catch (...) {
      machine_.files().removeFile("C:\\1.txt");
      machine_.desktop().processEvents();
      throw;
    }
  }));
  EXPECT_FALSE(happened);
}

TEST_F(KilledMachineTest, TheNextStartFindsTheWorldAsItWasLeft) {
  machine_.desktop().setHourglass(true);
  SimFormWindow window("frmwait");
  machine_.desktop().activate(window);
  EXPECT_TRUE(dies(1, [&] { write("C:\\1.txt"); }));
  EXPECT_EQ(machine_.desktop().activeForm(), nullptr);
  EXPECT_FALSE(machine_.desktop().hourglass());
  EXPECT_EQ(write("C:\\1.txt", "again"), kSuccess);
  EXPECT_EQ(machine_.fileText("C:\\1.txt"), "again");
}

TEST_F(KilledMachineTest, AProgramThatItStartedLivesOn) {
  machine_.programs().define("C:\\a.exe", [](SimProcess& process) {
    process.machine().putFile("C:\\made.txt", "x");
    return 0U;
  });
  machine_.programs().setDeferred(true);
  std::unique_ptr<machine::RunningProcess> process;
  const KilledMachine kill(machine_, 2);
  ASSERT_EQ(machine_.programs().start("C:\\a.exe", true, process), kSuccess);
  EXPECT_THROW(process->wait(), Killed);
  EXPECT_EQ(process->wait(), kAccessDenied);
  EXPECT_FALSE(machine_.fileExists("C:\\made.txt"));
  machine_.programs().runDeferred();
  EXPECT_TRUE(machine_.fileExists("C:\\made.txt"));
}

// --- What a call leaves that was begun

TEST_F(KilledMachineTest, AFileIsLeftAsFarAsItsCallWas) {
  const std::string source = "C:\\a.txt";
  const std::string target = "C:\\b.txt";
  machine::Files& files = machine_.machine().files;
  const auto write = [&] { files.write(target, "123456"); };
  const auto append = [&] { files.append(target, "123456"); };
  const auto copy = [&] { files.copyFile(source, target); };
  const auto replace = [&] { files.replaceFile(source, target); };
  struct {
    std::function<void()> call;
    Unfinished left;
    const char* text;
  } const rows[]{
      {write, Unfinished::NotBegun, "old "},
      {write, Unfinished::Empty, ""},
      {write, Unfinished::Half, "123"},
      {append, Unfinished::NotBegun, "old "},
      {append, Unfinished::Empty, "old "},
      {append, Unfinished::Half, "old 123"},
      {copy, Unfinished::Half, "123"},
      // As a whole or not at all.
      {replace, Unfinished::Half, "old "},
  };
  for (const auto& row : rows) {
    machine_.putFile(source, "123456");
    machine_.putFile(target, "old ");
    EXPECT_TRUE(dies(1, row.call, row.left));
    EXPECT_EQ(machine_.fileText(target), row.text);
    EXPECT_EQ(machine_.fileText(source), "123456");
  }
}

TEST_F(KilledMachineTest, ACopyThatIsLeftHalfDoneHasTheTimeOfItsWriting) {
  machine_.putFile("C:\\a.txt", "123456");
  machine_.diskOf("C:\\").setModified("C:\\a.txt", {2001, 4, 3, 2, 1, 0});
  EXPECT_TRUE(dies(
      1, [&] { machine_.files().copyFile("C:\\a.txt", "C:\\b.txt"); }, Unfinished::Half));
  EXPECT_EQ(machine_.diskOf("C:\\").modifiedTicks("C:\\b.txt"), ticksOf(machine_.clock().now()));
}

TEST_F(KilledMachineTest, AFileThatRefusesIsNotTouchedEither) {
  machine_.putFile("C:\\a.txt", "new");
  machine_.programs().define("C:\\b.exe");
  const auto running = machine_.diskOf("C:\\").run("C:\\b.exe");
  const std::string program = machine_.fileText("C:\\b.exe");
  EXPECT_TRUE(dies(
      1, [&] { machine_.files().copyFile("C:\\a.txt", "C:\\b.exe"); }, Unfinished::Half));
  EXPECT_EQ(machine_.fileText("C:\\b.exe"), program);
}

}  // namespace
}  // namespace trelv::sim
