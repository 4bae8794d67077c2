// Part of each test program that tools/mutate builds: which mutant acts, and which test comes by
// which mutants. Begun with TRELV_MUTANTS_SERVED it answers lines "mutant seconds file": a process
// of its own, which began as all others do, runs the tests that the file names, with the mutant
// awake.

#include "tests/mutate/Mutants.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <memory>
#include <new>
#include <string>

namespace mutants {
namespace {

constexpr std::size_t kNumbers = 1U << 20U;

struct Reached {
  std::array<std::atomic<bool>, kNumbers> isReached;
  std::array<std::atomic<unsigned>, kNumbers> order;
  std::atomic<std::size_t> count;
};

/// Shared with the processes that a test starts: what they come by counts.
Reached& reachedOnes() {
  static auto* const ones = [] {
    void* memory =
        mmap(nullptr, sizeof(Reached), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
      throw std::bad_alloc();
    }
    return static_cast<Reached*>(memory);
  }();
  return *ones;
}

const char* listPath() {
  static const char* const path = std::getenv("TRELV_MUTANTS_REACHED");
  return path;
}

double secondsOf(int who) {
  rusage usage{};
  getrusage(who, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

double processorSeconds() { return secondsOf(RUSAGE_SELF) + secondsOf(RUSAGE_CHILDREN); }

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

/// One line a test: name, milliseconds, seconds of the processor, numbers; by tabs. What was
/// reached before the first test stands under "(start)".
class ReachedListener : public testing::EmptyTestEventListener {
 public:
  ReachedListener() : file_(std::fopen(listPath(), "w")) {}

 private:
  void OnTestProgramStart(const testing::UnitTest& /*program*/) override {
    std::fprintf(file_.get(), "(start)\t0\t0\t");
    writeNumbers();
  }

  void OnTestStart(const testing::TestInfo& /*test*/) override { since_ = processorSeconds(); }

  void OnTestEnd(const testing::TestInfo& test) override {
    std::fprintf(file_.get(), "%s.%s\t%lld\t%.4f\t", test.test_suite_name(), test.name(),
                 static_cast<long long>(test.result()->elapsed_time()),
                 processorSeconds() - since_);
    writeNumbers();
  }

  void writeNumbers() {
    Reached& ones = reachedOnes();
    for (std::size_t at = 0; at < ones.count; ++at) {
      std::fprintf(file_.get(), "%u ", ones.order.at(at).load());
      ones.isReached.at(ones.order.at(at)) = false;
    }
    ones.count = 0;
    std::fprintf(file_.get(), "\n");
    std::fflush(file_.get());
  }

  std::unique_ptr<std::FILE, CloseFile> file_;
  double since_ = 0;
};

[[maybe_unused]] const bool isListening = [] {
  if (listPath() != nullptr) {
    testing::UnitTest::GetInstance()->listeners().Append(
        std::make_unique<ReachedListener>().release());
  }
  return true;
}();

unsigned& actingNumber() {
  static unsigned number = [] {
    const char* text = std::getenv("TRELV_MUTANT");
    return text == nullptr ? 0U : static_cast<unsigned>(std::strtoul(text, nullptr, 10));
  }();
  return number;
}

struct Order {
  unsigned mutant = 0;
  rlim_t seconds = 0;
  std::string file;
};

/// Where the names of the tests are; what is printed goes beside it, into FILE.out.
[[noreturn]] void runTests(const Order& order) {
  setpgid(0, 0);
  const rlimit processor{order.seconds, order.seconds};
  setrlimit(RLIMIT_CPU, &processor);
  const int out = open((order.file + ".out").c_str(), O_WRONLY | O_TRUNC);
  const int in = open("/dev/null", O_RDONLY);
  dup2(in, STDIN_FILENO);
  dup2(out, STDOUT_FILENO);
  dup2(out, STDERR_FILENO);
  std::string names;
  std::getline(std::ifstream(order.file), names);
  GTEST_FLAG_SET(filter, names);
  GTEST_FLAG_SET(fail_fast, true);
  actingNumber() = order.mutant;
  const int code = RUN_ALL_TESTS();
  std::cout.flush();
  std::fflush(nullptr);
  _exit(code);
}

}  // namespace

/// Prints the process's number as soon as it runs, then its exit code, negative: the signal.
int serve() {
  Order order;
  while (std::cin >> order.mutant >> order.seconds >> order.file) {
    const pid_t process = fork();
    if (process == 0) {
      runTests(order);
    }
    setpgid(process, process);
    std::cout << process << std::endl;
    int status = 0;
    waitpid(process, &status, 0);
    std::cout << (WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status)) << std::endl;
  }
  return 0;
}

unsigned acting() { return actingNumber(); }

void note(unsigned number) {
  if (listPath() == nullptr) {
    return;
  }
  Reached& ones = reachedOnes();
  if (!ones.isReached.at(number).load(std::memory_order_relaxed) &&
      !ones.isReached.at(number).exchange(true)) {
    ones.order.at(ones.count++) = number;
  }
}

}  // namespace mutants

int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  return std::getenv("TRELV_MUTANTS_SERVED") == nullptr ? RUN_ALL_TESTS() : mutants::serve();
}
