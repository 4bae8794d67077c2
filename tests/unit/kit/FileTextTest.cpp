#include <gtest/gtest.h>

#include "kit/FileText.h"
#include "sim/SimMachine.h"

namespace trelv::tests {
namespace {

/// Letters of one, two and three bytes in UTF-8.
constexpr const char* kLetters = "aà€–z";

std::string wide(bool highFirst) {
  std::string bytes;
  for (const unsigned letter : {0xFEFFU, 0x61U, 0xE0U, 0x20ACU, 0x2013U, 0x7AU}) {
    const char low = static_cast<char>(letter & 0xFFU);
    const char high = static_cast<char>(letter >> 8U);
    bytes += highFirst ? std::string{high, low} : std::string{low, high};
  }
  return bytes;
}

TEST(FileText, Utf16IsReadInBothOrders) {
  for (const bool highFirst : {false, true}) {
    EXPECT_TRUE(kit::isWide(wide(highFirst)));
    EXPECT_EQ(kit::utf8OfWide(wide(highFirst)), kLetters);
  }
  EXPECT_EQ(kit::utf8OfWide(wide(false) + "x"), kLetters) << "half a letter";
}

TEST(FileText, ALineIsUtf8WhereALetterOfItIs) {
  for (const char* const line :
       {"\xC3\xA0", "perch\xC3\xA9 no", "5 \xE2\x82\xAC", "\xC3\xA0\r\n"}) {
    EXPECT_TRUE(kit::holdsUtf8(line)) << line;
  }
  for (const char* const line : {"", "a", "abc", "perch\xE9", "\xE0 \xA0", "a\x91\x92", "\xE2\x82",
                                 "\xE2\x82z", "x\xC3", "\xFF\xA0"}) {
    EXPECT_FALSE(kit::holdsUtf8(line)) << line;
  }
}

TEST(FileText, EndOfALongFileIsReadFromAWholeLineOn) {
  // More than two of the pieces in which the lines before it are counted.
  constexpr std::size_t kLines = 200000;
  constexpr std::uint64_t kMost = 1000;
  std::string text;
  for (std::size_t line = 1; line <= kLines; ++line) {
    text += "riga che sta nel registro, la numero " + std::to_string(line) + "\n";
  }
  for (const bool asWide : {false, true}) {
    std::string bytes = asWide ? "\xFF\xFE" : "";
    for (const char letter : asWide ? text : "") {
      bytes += {letter, '\0'};
    }
    sim::SimMachine machine;
    machine.putFile("C:\\registro.log", asWide ? bytes : text);
    kit::FileEnd end;
    machine::Machine whole = machine.machine();
    ASSERT_EQ(kit::readFileEnd(whole, "C:\\registro.log", kMost, end), system_code::kSuccess);
    EXPECT_EQ(end.text, text.substr(text.size() - end.text.size()));
    EXPECT_LE(end.text.size() * (asWide ? 2 : 1), kMost);
    const std::string first =
        "riga che sta nel registro, la numero " + std::to_string(end.linesBefore + 1) + "\n";
    EXPECT_EQ(end.text.substr(0, first.size()), first);
  }
}

}  // namespace
}  // namespace trelv::tests
