#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Ini files, questions and writes out of a seed: the same ones everywhere. Bytes are of code page
/// 1252.
namespace trelv::contract {

/// A small generator of pseudo-random numbers whose sequence depends on its seed alone.
class Dice {
 public:
  explicit Dice(std::uint64_t seed) : state_(seed * 0x9E3779B97F4A7C15U + 1) {}

  std::uint64_t next();
  /// From 0 to `count` - 1.
  std::size_t below(std::size_t count) { return static_cast<std::size_t>(next() % count); }
  /// True once in `times`.
  bool oneIn(std::size_t times) { return below(times) == 0; }
  const std::string& of(const std::vector<std::string>& choices) {
    return choices[below(choices.size())];
  }

 private:
  std::uint64_t state_;
};

struct IniQuestion {
  std::string section;
  std::string key;
  std::string defaultValue;
  std::uint32_t size = 0;
};

struct IniWrite {
  std::string section;
  std::string key;
  std::string value;
};

/// How wild a file is. Usual: what people and programs write. Odd: stray control characters, CRs,
/// bytes of any value. Encoded: byte-order marks, UTF-16, NULs.
enum class IniManner { Usual, Odd, Encoded };

std::string iniFile(Dice& dice, IniManner manner);
IniQuestion iniQuestion(Dice& dice);
IniWrite iniWrite(Dice& dice);

/// The bytes with everything unprintable as "\xNN": for messages.
std::string visible(const std::string& bytes);

}  // namespace trelv::contract
