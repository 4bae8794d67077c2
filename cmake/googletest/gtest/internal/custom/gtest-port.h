// GoogleTest asks for this header to fit it to a system. Ours: a Windows compiler whose thread
// variant has neither threads nor mutexes.
#pragma once

#define GTEST_IS_THREADSAFE 0
#define GTEST_HAS_PTHREAD 0

#include <windows.h>

namespace testing::internal {

// Its death tests use this owner of a handle, which it declares for its threads only.
class AutoHandle {
 public:
  AutoHandle() = default;
  explicit AutoHandle(HANDLE handle) : handle_(handle) {}
  AutoHandle(const AutoHandle&) = delete;
  AutoHandle& operator=(const AutoHandle&) = delete;
  ~AutoHandle() { Reset(); }

  HANDLE Get() const { return handle_; }
  void Reset() { Reset(INVALID_HANDLE_VALUE); }
  void Reset(HANDLE handle) {
    if (handle_ != handle && handle_ != nullptr && handle_ != INVALID_HANDLE_VALUE) {
      CloseHandle(handle_);
    }
    handle_ = handle;
  }

 private:
  HANDLE handle_ = INVALID_HANDLE_VALUE;
};

}  // namespace testing::internal
