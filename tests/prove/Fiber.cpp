#include "prove/Fiber.h"

#include <cxxabi.h>

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <utility>
#include <vector>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/common_interface_defs.h>
#endif

namespace trelv::tests {
namespace {

/// A whole start needs less than a tenth of it, sanitised and not optimised.
constexpr std::size_t kStackBytes = std::size_t{1024} * 1024;

using Stack = std::unique_ptr<std::byte[]>;

/// Stacks that were used before: their pages are there already.
std::vector<Stack>& usedStacks() {
  thread_local std::vector<Stack> stacks;
  return stacks;
}

Stack takeStack() {
  std::vector<Stack>& stacks = usedStacks();
  if (stacks.empty()) {
    // Not cleared: most of its pages are never touched.
    return Stack(new std::byte[kStackBytes]);
  }
  Stack stack = std::move(stacks.back());
  stacks.pop_back();
  return stack;
}

void leaveStack([[maybe_unused]] void** fakeStack, [[maybe_unused]] const void* bottom,
                [[maybe_unused]] std::size_t size) {
#ifdef __SANITIZE_ADDRESS__
  __sanitizer_start_switch_fiber(fakeStack, bottom, size);
#endif
}

void enterStack([[maybe_unused]] void* fakeStack, [[maybe_unused]] const void** oldBottom,
                [[maybe_unused]] std::size_t* oldSize) {
#ifdef __SANITIZE_ADDRESS__
  __sanitizer_finish_switch_fiber(fakeStack, oldBottom, oldSize);
#endif
}

}  // namespace

Fiber::Fiber(std::function<void()> work) : work_(std::move(work)), stack_(takeStack()) {
  if (getcontext(&own_) != 0) {
    throw std::runtime_error("no context for a fiber");
  }
  own_.uc_stack.ss_sp = stack_.get();
  own_.uc_stack.ss_size = kStackBytes;
  own_.uc_link = nullptr;
  const auto self = reinterpret_cast<std::uintptr_t>(this);
  constexpr unsigned kHalf = 32;
  makecontext(&own_, reinterpret_cast<void (*)()>(&Fiber::enter), 2,
              static_cast<unsigned int>(self >> kHalf), static_cast<unsigned int>(self));
}

Fiber::~Fiber() { usedStacks().push_back(std::move(stack_)); }

// A context passes on numbers only.
void Fiber::enter(unsigned int high, unsigned int low) {
  constexpr unsigned kHalf = 32;
  reinterpret_cast<Fiber*>((std::uintptr_t{high} << kHalf) | low)->work();
}

void Fiber::work() {
  enterStack(nullptr, &resumerStack_, &resumerSize_);
  try {
    work_();
  } catch (...) {
    raised_ = std::current_exception();
  }
  ended_ = true;
  leaveStack(nullptr, resumerStack_, resumerSize_);
  setcontext(&resumer_);
}

void Fiber::resume() {
  swapExceptions();
  leaveStack(&resumerFakeStack_, stack_.get(), kStackBytes);
  swapcontext(&resumer_, &own_);
  enterStack(resumerFakeStack_, nullptr, nullptr);
  swapExceptions();
  if (raised_) {
    std::rethrow_exception(std::exchange(raised_, nullptr));
  }
}

void Fiber::yield() {
  leaveStack(&ownFakeStack_, resumerStack_, resumerSize_);
  swapcontext(&own_, &resumer_);
  enterStack(ownFakeStack_, &resumerStack_, &resumerSize_);
}

void Fiber::swapExceptions() {
  Exceptions current{};
  std::memcpy(current.data(), abi::__cxa_get_globals(), current.size());
  std::memcpy(abi::__cxa_get_globals(), exceptions_.data(), exceptions_.size());
  exceptions_ = current;
}

}  // namespace trelv::tests
