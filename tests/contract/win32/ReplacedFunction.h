#pragma once

#include <windows.h>

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace trelv::win32 {

/// Puts a function of the test in the place of one of a system's library, for this process and as
/// long as it lives: what the system does not do by itself here.
class ReplacedFunction {
 public:
  template <class Function>
  ReplacedFunction(const wchar_t* library, const char* name, Function* instead)
      : begin_(std::bit_cast<unsigned char*>(GetProcAddress(LoadLibraryW(library), name))) {
    std::memcpy(before_.data(), begin_, before_.size());
    // A jump, counted from the end of its own five bytes.
    std::array<unsigned char, 5> jump{0xE9};
    const std::uint32_t distance = std::bit_cast<std::uint32_t>(instead) -
                                   std::bit_cast<std::uint32_t>(begin_) -
                                   static_cast<std::uint32_t>(jump.size());
    std::memcpy(jump.data() + 1, &distance, sizeof distance);
    put(jump);
  }
  ~ReplacedFunction() { put(before_); }
  ReplacedFunction(const ReplacedFunction&) = delete;
  ReplacedFunction& operator=(const ReplacedFunction&) = delete;

 private:
  void put(const std::array<unsigned char, 5>& bytes) {
    DWORD protection = 0;
    VirtualProtect(begin_, bytes.size(), PAGE_EXECUTE_READWRITE, &protection);
    std::memcpy(begin_, bytes.data(), bytes.size());
    VirtualProtect(begin_, bytes.size(), protection, &protection);
    FlushInstructionCache(GetCurrentProcess(), begin_, bytes.size());
  }

  unsigned char* begin_;
  std::array<unsigned char, 5> before_{};
};

}  // namespace trelv::win32
