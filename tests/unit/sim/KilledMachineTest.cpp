#include <gtest/gtest.h>

#include "sim/KilledMachine.h"

namespace trelv::sim {
namespace {

using namespace system_code;

// A step of a program that tidies up behind itself, whatever happens.
class TidyStep {
 public:
  explicit TidyStep(SimMachine& machine) : machine_(machine) {}
  ~TidyStep() { code_ = machine_.files().removeFile("C:\\a.lock"); }

  static SystemCode code() { return code_; }

 private:
  SimMachine& machine_;
  static inline SystemCode code_ = kSuccess;
};

// Runs `program` until it is killed; false when it came to its end.
template <class Program>
bool dies(Program&& program) {
  try {
    program();
  } catch (const Killed&) {
    return true;
  }
  return false;
}

TEST(KilledMachine, TheCallOfItsNumberIsNotCarriedOut) {
  SimMachine machine;
  const KilledMachine kill(machine, 2);

  EXPECT_TRUE(dies([&] {
    machine.files().write("C:\\1.txt", "x");
    machine.files().write("C:\\2.txt", "x");
    machine.files().write("C:\\3.txt", "x");
  }));
  EXPECT_TRUE(machine.fileExists("C:\\1.txt"));
  EXPECT_FALSE(machine.fileExists("C:\\2.txt"));
  EXPECT_FALSE(machine.fileExists("C:\\3.txt"));
  EXPECT_TRUE(kill.reached());
  EXPECT_EQ(kill.killedCall(), "files.write C:\\2.txt");
  EXPECT_EQ(kill.calls(), 2U);
}

TEST(KilledMachine, ARunThatEndsBeforeSaysSo) {
  SimMachine machine;
  const KilledMachine kill(machine, 3);

  EXPECT_FALSE(dies([&] { machine.files().write("C:\\1.txt", "x"); }));
  EXPECT_FALSE(kill.reached());
  EXPECT_EQ(kill.killedCall(), "");
}

TEST(KilledMachine, ATrapOfTheProgramDoesNotHoldIt) {
  SimMachine machine;
  const KilledMachine kill(machine, 1);

  EXPECT_TRUE(dies([&] {
    try {
      machine.files().write("C:\\1.txt", "x");
    } catch (const std::exception&) {
      ADD_FAILURE() << "caught as a failure of the program";
    }
  }));
}

TEST(KilledMachine, TheDyingProgramChangesNothing) {
  SimMachine machine;
  machine.putFile("C:\\a.lock", "lock");
  machine.programs().define("C:\\a.exe");
  machine.registry().makeKey(machine::Hive::LocalMachine, "SOFTWARE\\LUMO");
  std::unique_ptr<machine::RegistryKey> key;
  ASSERT_EQ(machine.registry().openKey(machine::Hive::LocalMachine, "SOFTWARE\\LUMO", 0xF003F, key),
            kSuccess);
  machine.callLog().clear();
  const KilledMachine kill(machine, 1);

  EXPECT_TRUE(dies([&] {
    const TidyStep step(machine);
    try {
      std::string content;
      machine.files().read("C:\\a.lock", 10, content);
    } catch (...) {
      machine::Machine& parts = machine.machine();
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
  EXPECT_EQ(machine.fileText("C:\\a.lock"), "lock");
  EXPECT_FALSE(machine.fileExists("C:\\b.txt"));
  EXPECT_FALSE(machine.fileExists("C:\\b.ini"));
  EXPECT_TRUE(machine.started().empty());
  EXPECT_FALSE(machine.environment().has("KILLED"));
  EXPECT_TRUE(machine.boxes().empty());
  EXPECT_EQ(machine.calls(), (std::vector<std::string>{"files.read C:\\a.lock"}));
}

TEST(KilledMachine, NothingElseHappensBetweenTheCallsOfTheDyingProgram) {
  SimMachine machine;
  bool hooked = false;
  bool pumped = false;
  machine.onCall("files.removeFile", [&] { hooked = true; });
  machine.desktop().onEvents([&] { pumped = true; });
  const KilledMachine kill(machine, 1);

  EXPECT_TRUE(dies([&] {
    try {
      machine.files().write("C:\\1.txt", "x");
    } catch (...) {
      machine.files().removeFile("C:\\1.txt");
      machine.desktop().processEvents();
      throw;
    }
  }));
  EXPECT_FALSE(hooked);
  EXPECT_FALSE(pumped);
}

TEST(KilledMachine, TheNextStartFindsTheWorldAsItWasLeft) {
  SimMachine machine;
  machine.desktop().setHourglass(true);
  SimFormWindow window("frmwait");
  machine.desktop().activate(window);
  {
    const KilledMachine kill(machine, 1);
    EXPECT_TRUE(dies([&] { machine.files().write("C:\\1.txt", "x"); }));
  }
  EXPECT_EQ(machine.desktop().activeForm(), nullptr);
  EXPECT_FALSE(machine.desktop().hourglass());
  EXPECT_EQ(machine.files().write("C:\\1.txt", "again"), kSuccess);
  EXPECT_EQ(machine.fileText("C:\\1.txt"), "again");
}

TEST(KilledMachine, AProgramThatItStartedLivesOn) {
  SimMachine machine;
  machine.programs().define("C:\\a.exe", [](SimProcess& process) {
    process.machine().putFile("C:\\made.txt", "x");
    return 0U;
  });
  machine.programs().setDeferred(true);
  std::unique_ptr<machine::RunningProcess> process;
  const KilledMachine kill(machine, 2);

  EXPECT_TRUE(dies([&] {
    machine.programs().start("C:\\a.exe", true, process);
    process->wait();
  }));
  EXPECT_EQ(process->wait(), kAccessDenied);
  EXPECT_FALSE(machine.fileExists("C:\\made.txt"));
  machine.programs().runDeferred();
  EXPECT_TRUE(machine.fileExists("C:\\made.txt"));
}

TEST(KilledMachine, AFileBeingWrittenIsLeftUntouchedEmptyOrHalf) {
  const auto left = [](Unfinished unfinished) {
    SimMachine machine;
    machine.putFile("C:\\a.txt", "old text");
    const KilledMachine kill(machine, 1, unfinished);
    EXPECT_TRUE(dies([&] { machine.files().write("C:\\a.txt", "123456"); }));
    return machine.fileText("C:\\a.txt");
  };
  EXPECT_EQ(left(Unfinished::NotBegun), "old text");
  EXPECT_EQ(left(Unfinished::Empty), "");
  EXPECT_EQ(left(Unfinished::Half), "123");
}

TEST(KilledMachine, AFileThatGrowsKeepsWhatItHeld) {
  const auto left = [](Unfinished unfinished) {
    SimMachine machine;
    machine.putFile("C:\\a.log", "old ");
    const KilledMachine kill(machine, 1, unfinished);
    EXPECT_TRUE(dies([&] { machine.files().append("C:\\a.log", "123456"); }));
    return machine.fileText("C:\\a.log");
  };
  EXPECT_EQ(left(Unfinished::NotBegun), "old ");
  EXPECT_EQ(left(Unfinished::Empty), "old ");
  EXPECT_EQ(left(Unfinished::Half), "old 123");
}

TEST(KilledMachine, ACopyIsLeftHalfDoneWithTheTimeOfItsWriting) {
  SimMachine machine;
  machine.putFile("C:\\a.txt", "123456");
  machine.diskOf("C:\\").setModified("C:\\a.txt", {2001, 4, 3, 2, 1, 0});
  machine.putFile("C:\\b.txt", "an older and longer text");
  const KilledMachine kill(machine, 1, Unfinished::Half);

  EXPECT_TRUE(dies([&] { machine.files().copyFile("C:\\a.txt", "C:\\b.txt"); }));
  EXPECT_EQ(machine.fileText("C:\\a.txt"), "123456");
  EXPECT_EQ(machine.fileText("C:\\b.txt"), "123");
  EXPECT_EQ(machine.diskOf("C:\\").modifiedTicks("C:\\b.txt"), ticksOf(machine.clock().now()));
}

TEST(KilledMachine, AFileThatRefusesIsNotTouchedEither) {
  SimMachine machine;
  machine.putFile("C:\\a.txt", "new");
  machine.programs().define("C:\\b.exe");
  const auto running = machine.diskOf("C:\\").run("C:\\b.exe");
  const std::string program = machine.fileText("C:\\b.exe");
  const KilledMachine kill(machine, 1, Unfinished::Half);

  EXPECT_TRUE(dies([&] { machine.files().copyFile("C:\\a.txt", "C:\\b.exe"); }));
  EXPECT_EQ(machine.fileText("C:\\b.exe"), program);
}

TEST(KilledMachine, AReplacementHappensAsAWholeOrNotAtAll) {
  SimMachine machine;
  machine.putFile("C:\\a.txt", "new");
  machine.putFile("C:\\b.txt", "old");
  const KilledMachine kill(machine, 1, Unfinished::Half);

  EXPECT_TRUE(dies([&] { machine.files().replaceFile("C:\\a.txt", "C:\\b.txt"); }));
  EXPECT_EQ(machine.fileText("C:\\a.txt"), "new");
  EXPECT_EQ(machine.fileText("C:\\b.txt"), "old");
}

}  // namespace
}  // namespace trelv::sim
