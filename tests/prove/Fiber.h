#pragma once

#include <ucontext.h>

#include <array>
#include <cstddef>
#include <exception>
#include <functional>
#include <memory>

namespace trelv::tests {

/// Work with a stack of its own, which its thread leaves and takes up again between two of its
/// steps. All of it happens in the thread that resumes it first.
class Fiber {
 public:
  explicit Fiber(std::function<void()> work);
  Fiber(const Fiber&) = delete;
  Fiber& operator=(const Fiber&) = delete;
  /// It has ended, or was never resumed: what its stack held would not be destroyed.
  ~Fiber();

  /// Runs the work until it yields or has ended. What it raised is raised here.
  void resume();
  /// In the work: back to whoever resumed it.
  void yield();
  bool ended() const { return ended_; }

 private:
  /// What the language keeps for each thread of the exceptions that are on their way or handled.
  using Exceptions = std::array<std::byte, 2 * sizeof(void*)>;

  static void enter(unsigned int high, unsigned int low);
  void work();
  void swapExceptions();

  std::function<void()> work_;
  std::unique_ptr<std::byte[]> stack_;
  ucontext_t own_{};
  ucontext_t resumer_{};
  Exceptions exceptions_{};
  std::exception_ptr raised_;
  bool ended_ = false;
  // For the address sanitizer, which has to know of each stack.
  void* ownFakeStack_ = nullptr;
  void* resumerFakeStack_ = nullptr;
  const void* resumerStack_ = nullptr;
  std::size_t resumerSize_ = 0;
};

}  // namespace trelv::tests
