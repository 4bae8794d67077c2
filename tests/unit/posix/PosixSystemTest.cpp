#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <thread>
#include <vector>

#include "posix/PosixFileUse.h"
#include "unit/posix/PosixTest.h"

namespace trelv::tests {
namespace {

namespace fs = std::filesystem;

/// What the system has of its own, and what it has not.
class PosixSystem : public Posix {};

TEST_F(PosixSystem, AMarkIsTakenOnce) {
  std::unique_ptr<machine::Mark> first;
  std::unique_ptr<machine::Mark> second;
  const std::string path = shown_ + "\\mark.lck";
  ASSERT_EQ(machine_.exclusion.take(path, "io", 0, first), 0U);
  EXPECT_EQ(machine_.exclusion.take(path, "tu", 0, second), system_code::kSharingViolation);
  EXPECT_EQ(textOf(path), "io");
  first.reset();
  EXPECT_FALSE(fs::exists(folder_ / "mark.lck"));
  EXPECT_EQ(machine_.exclusion.take(path, "tu", 0, second), 0U);
  EXPECT_EQ(machine_.exclusion.take(shown_ + "\\no\\mark.lck", "", 0, first),
            system_code::kPathNotFound);
}

TEST_F(PosixSystem, MarkExcludesHoweverManyAskForIt) {
  std::atomic<int> inside = 0;
  std::atomic<int> mixed = 0;
  std::vector<std::thread> askers;
  for (int number = 0; number < 8; ++number) {
    askers.emplace_back([&]() -> void {
      for (int time = 0; time < 200; ++time) {
        std::unique_ptr<machine::Mark> mark;
        if (machine_.exclusion.take(shown_ + "\\m.lck", "x", 0, mark) == 0U) {
          mixed += ++inside > 1 ? 1 : 0;
          std::this_thread::yield();
          --inside;
        }
      }
    });
  }
  for (std::thread& asker : askers) {
    asker.join();
  }
  EXPECT_EQ(mixed, 0);
}

TEST_F(PosixSystem, FindsTheVersionInAProgram) {
  const std::string fixed("\xBD\x04\xEF\xFE\x00\x00\x01\x00\x02\x00\x01\x00\x04\x00\x03\x00", 16);
  put("a.exe", "MZ...." + fixed + "...");
  put("b.exe", "MZ....");
  put("c.txt", fixed);
  machine::FileVersion version{};
  EXPECT_EQ(machine_.versions.read(shown_ + "\\a.exe", version), 0U);
  EXPECT_EQ(version, (machine::FileVersion{1, 2, 3, 4}));
  EXPECT_EQ(machine_.versions.read(shown_ + "\\b.exe", version),
            system_code::kResourceDataNotFound);
  EXPECT_EQ(machine_.versions.read(shown_ + "\\c.txt", version),
            system_code::kResourceDataNotFound);
  EXPECT_EQ(machine_.versions.read(shown_ + "\\d.exe", version), system_code::kFileNotFound);
}

TEST_F(PosixSystem, ClosedStreamsAndFullDisksAreTold) {
  const auto codeOf = [](const char* target) -> int {
    return inChild([target]() -> int {
      close(STDOUT_FILENO);
      if (target != nullptr) {
        open(target, O_WRONLY);
      }
      return static_cast<int>(posix::PosixConsole().print("testo"));
    });
  };
  EXPECT_EQ(codeOf("/dev/null"), 0);
  EXPECT_EQ(codeOf("/dev/full"), static_cast<int>(system_code::kDiskFull));
  EXPECT_EQ(codeOf(nullptr), static_cast<int>(system_code::kWriteFault));
}

TEST_F(PosixSystem, AMarkThatIsLetGoLeavesWhatTookItsPlace) {
  std::unique_ptr<machine::Mark> first;
  std::unique_ptr<machine::Mark> second;
  const std::string path = shown_ + "\\mark.lck";
  ASSERT_EQ(machine_.exclusion.take(path, "io", 0, first), 0U);
  fs::remove(folder_ / "mark.lck");
  ASSERT_EQ(machine_.exclusion.take(path, "tu", 0, second), 0U);
  first.reset();
  EXPECT_EQ(textOf(path), "tu");
  second.reset();
  EXPECT_FALSE(fs::exists(folder_ / "mark.lck"));
}

TEST_F(PosixSystem, AMarkIsTakenWithoutStandardInputToo) {
  const int code = inChild([&]() -> int {
    close(STDIN_FILENO);
    std::unique_ptr<machine::Mark> mark;
    const SystemCode taken = machine_.exclusion.take(shown_ + "\\mark.lck", "io", 0, mark);
    return static_cast<int>(taken) + (mark == nullptr ? 1 : 0);
  });
  EXPECT_EQ(code, 0);
}

TEST_F(PosixSystem, LooksForAVersionInTheFirst64MegabytesOfAProgram) {
  const std::string fixed("\xBD\x04\xEF\xFE\x00\x00\x01\x00\x02\x00\x01\x00\x04\x00\x03\x00", 16);
  constexpr std::uintmax_t kLooked = std::uintmax_t{64} << 20U;
  const auto codeWithVersionAt = [&](std::uintmax_t place) -> SystemCode {
    put("a.exe", "MZ");
    fs::resize_file(folder_ / "a.exe", place);
    std::ofstream(folder_ / "a.exe", std::ios::binary | std::ios::app) << fixed;
    machine::FileVersion version{};
    return machine_.versions.read(shown_ + "\\a.exe", version);
  };
  EXPECT_EQ(codeWithVersionAt(kLooked - fixed.size()), 0U);
  EXPECT_EQ(codeWithVersionAt(kLooked + 1), system_code::kResourceDataNotFound);
}

/// The zone of the process while this object lives.
class TimeZone {
 public:
  explicit TimeZone(const char* zone) {
    setenv("TZ", zone, 1);
    tzset();
  }
  TimeZone(const TimeZone&) = delete;
  TimeZone& operator=(const TimeZone&) = delete;
  ~TimeZone() {
    if (before_) {
      setenv("TZ", before_->c_str(), 1);
    } else {
      unsetenv("TZ");
    }
    tzset();
  }

 private:
  static std::optional<std::string> current() {
    const char* const zone = std::getenv("TZ");
    return zone == nullptr ? std::nullopt : std::optional<std::string>(zone);
  }

  std::optional<std::string> before_ = current();
};

TEST_F(PosixSystem, TellsTheTimeOfItsZone) {
  const TimeZone zone("PROVA-2");
  // 2026-06-15 12:30:45 UTC
  constexpr std::uint64_t kMoment = (1781526645ULL + 11644473600ULL) * 10'000'000ULL;
  EXPECT_EQ(machine_.clock.localTime(kMoment), (machine::LocalTime{2026, 6, 15, 14, 30, 45}));
  EXPECT_EQ(machine_.clock.localTime(kMoment + 9'999'999), machine_.clock.localTime(kMoment));
  const std::uint64_t before = static_cast<std::uint64_t>(std::time(nullptr)) + 11644473600ULL;
  const machine::LocalTime now = machine_.clock.now();
  const std::uint64_t after = static_cast<std::uint64_t>(std::time(nullptr)) + 11644473600ULL;
  EXPECT_TRUE(now == machine_.clock.localTime(before * 10'000'000ULL) ||
              now == machine_.clock.localTime(after * 10'000'000ULL));
}

TEST_F(PosixSystem, PausesAsLongAsItIsTold) {
  const auto begun = std::chrono::steady_clock::now();
  machine_.clock.pause(1000);
  EXPECT_GE(std::chrono::steady_clock::now() - begun, std::chrono::seconds(1));
}

TEST_F(PosixSystem, KeepsVariables) {
  constexpr const char* kName = "TRELV_PROVA";
  unsetenv(kName);
  std::string value = "before";
  EXPECT_FALSE(machine_.environment.get(kName, value));
  EXPECT_EQ(value, "before");
  for (const char* const text : {"uno", "due", ""}) {
    EXPECT_TRUE(machine_.environment.set(kName, text));
    EXPECT_TRUE(machine_.environment.get(kName, value));
    EXPECT_EQ(value, text);
  }
  unsetenv(kName);
}

TEST_F(PosixSystem, NamesTheUserWhereThereIsRoom) {
  put("a.txt", "");
  std::string owner;
  ASSERT_EQ(posix::PosixFileUse().owner(shown_ + "\\a.txt", owner), 0U);
  std::string name;
  const auto exact = static_cast<std::uint32_t>(owner.size() + 1);
  EXPECT_EQ(machine_.system.userName(exact - 1, name), system_code::kInsufficientBuffer);
  EXPECT_EQ(name, "");
  EXPECT_EQ(machine_.system.userName(exact, name), 0U);
  EXPECT_EQ(name, owner);
}

TEST_F(PosixSystem, NamesTheComputer) {
  std::string name;
  ASSERT_EQ(machine_.system.computerName(name), 0U);
  EXPECT_EQ(name + "\n", textOf("Z:\\proc\\sys\\kernel\\hostname"));
}

TEST_F(PosixSystem, KnowsWhichProcessesRun) {
  Process ended([]() -> int { return 0; });
  const auto number = static_cast<std::uint32_t>(ended.number());
  ended.end();
  Process waiting([]() -> int { return pause(); });
  EXPECT_FALSE(machine_.processes.isRunning(number));
  EXPECT_TRUE(machine_.processes.isRunning(static_cast<std::uint32_t>(waiting.number())));
  EXPECT_TRUE(machine_.processes.isRunning(static_cast<std::uint32_t>(getpid())));
  EXPECT_TRUE(machine_.processes.isRunning(1)) << "of another user, perhaps";
  int status = 0;
  EXPECT_EQ(waitpid(waiting.number(), &status, WNOHANG), 0) << "who is asked about goes on";
}

TEST_F(PosixSystem, AsksAfterAProcessWithoutASignal) {
  sigset_t all;
  sigset_t before;
  sigset_t waiting;
  sigfillset(&all);
  ASSERT_EQ(pthread_sigmask(SIG_BLOCK, &all, &before), 0);
  EXPECT_TRUE(machine_.processes.isRunning(static_cast<std::uint32_t>(getpid())));
  ASSERT_EQ(sigpending(&waiting), 0);
  for (int number = 1; number < NSIG; ++number) {
    EXPECT_NE(sigismember(&waiting, number), 1) << number;
  }
  ASSERT_EQ(pthread_sigmask(SIG_SETMASK, &before, nullptr), 0);
}

TEST_F(PosixSystem, AnswersEmptyOfWhatIsNotThere) {
  machine::Machine machine = machine_.machine();
  std::unique_ptr<machine::WordProcessor> word;
  const machine::AutomationAnswer answer = machine.automation.startWord(word);
  EXPECT_EQ(answer.code, machine::automation_code::kNotRegistered);
  EXPECT_EQ(answer.source + answer.description, "");
  EXPECT_EQ(word, nullptr);
  std::unique_ptr<machine::RegistryKey> key;
  EXPECT_EQ(machine.registry.openKey(machine::Hive::LocalMachine, "SOFTWARE", 1, key),
            system_code::kFileNotFound);
  EXPECT_EQ(machine.registry.createKey(machine::Hive::LocalMachine, "SOFTWARE", 1, key),
            system_code::kAccessDenied);
  EXPECT_EQ(key, nullptr);
  std::unique_ptr<machine::RunningProcess> process;
  EXPECT_EQ(machine.processes.start("Z:\\bin\\true", true, process), system_code::kFileNotFound);
  EXPECT_EQ(machine.processes.startTool("true", true, process), system_code::kFileNotFound);
  EXPECT_EQ(process, nullptr);
  EXPECT_EQ(machine.support.isAdministrator(), machine::SupportAnswer::Absent);
  // As the configuration store where no schema is registered.
  constexpr std::int32_t kNoSchema = -4001;
  std::string buffer = "before";
  EXPECT_EQ(machine.configuration.getParameter("S", "S", "K", "A", "", 6, buffer), kNoSchema);
  EXPECT_EQ(machine.configuration.setParameter("S", "S", "K", "A", 1, "x"), kNoSchema);
  EXPECT_EQ(machine.configuration.getConfigPath(1, buffer), kNoSchema);
  EXPECT_EQ(buffer, "before");
}

}  // namespace
}  // namespace trelv::tests
