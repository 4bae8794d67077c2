#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include "posix/PosixMachine.h"
#include "posix/PosixPath.h"

namespace trelv::tests {

/// A folder of its own, as a plain path and as the program sees it.
class Posix : public testing::Test {
 protected:
  Posix() {
    std::string name = (std::filesystem::temp_directory_path() / "trelv-posix-XXXXXX").string();
    folder_ = mkdtemp(name.data());
    shown_ = posix::shownPath(folder_.string());
  }
  ~Posix() override { std::filesystem::remove_all(folder_); }

  void put(const std::string& name, const std::string& bytes) {
    std::filesystem::create_directories((folder_ / name).parent_path());
    std::ofstream(folder_ / name, std::ios::binary) << bytes;
  }
  std::string textOf(const std::string& path) {
    std::string content;
    EXPECT_EQ(machine_.files.read(path, 1000, content), 0U);
    return content;
  }
  std::filesystem::path folder_;
  std::string shown_;
  posix::PosixMachine machine_;
};

/// A process of its own that does the work and ends with its answer; ended with this object.
class Process {
 public:
  explicit Process(const std::function<int()>& work) : number_(fork()) {
    if (number_ == 0) {
      _exit(work());
    }
  }
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  ~Process() {
    if (number_ > 0) {
      kill(number_, SIGKILL);
      end();
    }
  }

  pid_t number() const { return number_; }
  /// Its exit code as soon as it has ended; -1 where a signal ended it.
  int end() {
    int status = 0;
    waitpid(number_, &status, 0);
    number_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

 private:
  pid_t number_;
};

inline int inChild(const std::function<int()>& work) { return Process(work).end(); }

}  // namespace trelv::tests
