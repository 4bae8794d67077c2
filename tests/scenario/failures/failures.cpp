// Lets the C++ library raise each of its failures inside a trap, linked as the manager is. The exit
// code counts those that did not arrive there.
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "base/Trap.h"

namespace {

using trelv::RuntimeError;

/// Not known when this is compiled, so that the call stays.
volatile std::size_t many = std::numeric_limits<std::size_t>::max();

struct Failure {
  std::function<void()> step;
  std::int32_t number;
};

bool arrives(const Failure& failure) {
  bool trapped = false;
  trelv::resumeNext(failure.step, [&](const RuntimeError& error) -> void {
    trapped = error.number() == failure.number && !error.description().empty();
  });
  return trapped;
}

}  // namespace

int main() {
  using trelv::runtime_number::kApplicationDefined;
  using trelv::runtime_number::kOutOfMemory;
  const std::vector<Failure> failures{
      {[]() -> void { std::string().resize(many); }, kApplicationDefined},
      {[]() -> void { std::string("a").erase(many); }, kApplicationDefined},
      {[]() -> void { std::vector<char>().reserve(many); }, kApplicationDefined},
      {[]() -> void { std::string().reserve(many / 2 - 1); }, kOutOfMemory}};
  int missing = 0;
  for (const Failure& failure : failures) {
    missing += arrives(failure) ? 0 : 1;
  }
  return missing;
}
