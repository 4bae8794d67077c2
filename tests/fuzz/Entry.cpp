// What libFuzzer calls; the build says which target a program is for.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "fuzz/Property.h"
#include "fuzz/Targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    trelv::fuzz::TRELV_FUZZ_TARGET({reinterpret_cast<const char*>(data), size});
  } catch (const std::exception& broken) {
    std::fprintf(stderr, "BROKEN: %s\n", broken.what());
    std::abort();
  }
  return 0;
}
