#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "unit/posix/PosixTest.h"

namespace trelv::tests {
namespace {

/// Ini files and texts.
class PosixText : public Posix {
 protected:
  std::string valueOf(const std::string& bytes, const std::string& section, const std::string& key,
                      std::uint32_t size = 100) {
    put("a.ini", bytes);
    return machine_.profiles.readValue(section, key, "", size, shown_ + "\\a.ini");
  }
};

TEST_F(PosixText, ReadsIniFilesAsThePlatformDoes) {
  const std::string text = "[a]\r\nk=1\r\nk=2\r\n[b]\n x = \"quoted\" \n[A]\nz=3\n;k=5";
  EXPECT_EQ(valueOf(text, "A", "K"), "1");
  EXPECT_EQ(valueOf(text, "b", "x"), "quoted");
  EXPECT_EQ(valueOf(text, "a", "z"), "");
  EXPECT_EQ(valueOf(text, "c", "z"), "");
  EXPECT_EQ(valueOf("[a]\nk=12345", "a", "k", 4), "123");
  EXPECT_EQ(valueOf("[\xE8]\nk=\xE0\x80", "è", "k"), "à€");
}

TEST_F(PosixText, ReadsUtf16WithItsMarkAndNoUtf8Mark) {
  const std::string wide("\xFF\xFE[\0a\0]\0\n\0k\0=\0\xE8\0", 16);
  EXPECT_EQ(valueOf(wide, "a", "k"), "è");
  EXPECT_EQ(valueOf("\xEF\xBB\xBF[a]\nk=1", "a", "k"), "");
}

TEST_F(PosixText, OnlyALineInBracketsBeginsASection) {
  EXPECT_EQ(valueOf("[a]\nx=1]\nk=2", "a", "k"), "2");
  EXPECT_EQ(valueOf("[a]\n[b\nk=2", "a", "k"), "2");
  EXPECT_EQ(valueOf("[a]\n\n  [ b ] x\nk=2", "a", "k"), "");
  EXPECT_EQ(valueOf("[a]\n\n  [ b ] x\nk=2", "b", "k"), "2");
}

TEST_F(PosixText, IniNamesAreComparedByTheirAsciiLettersOnly) {
  EXPECT_EQ(valueOf("[azAZ]\nAzaz=1", "AZaz", "aZAZ"), "1");
  EXPECT_EQ(valueOf("[a@[`{]\nk=1", "A@[`{", "K"), "1");
  EXPECT_EQ(valueOf("[\xE8]\nk=1", "È", "k"), "");
}

TEST_F(PosixText, IniValuesLoseOnePairOfQuotes) {
  EXPECT_EQ(valueOf("[a]\nk=\"\"", "a", "k"), "");
  EXPECT_EQ(valueOf("[a]\nk=''", "a", "k"), "");
  EXPECT_EQ(valueOf("[a]\nk=\"", "a", "k"), "\"");
  EXPECT_EQ(valueOf("[a]\nk=\"'x'\"", "a", "k"), "'x'");
  EXPECT_EQ(valueOf("[a]\nk=\"x'", "a", "k"), "\"x'");
}

TEST_F(PosixText, IniValuesAreCutToTheRoomForThem) {
  EXPECT_EQ(valueOf("[a]\nk=12", "a", "k", 3), "12");
  EXPECT_EQ(valueOf("[a]\nk=12", "a", "k", 1), "");
  EXPECT_EQ(valueOf("[a]\nk=12", "a", "k", 0), "");
}

TEST_F(PosixText, EachByteHasItsCharacterAndEachCharacterItsByte) {
  std::string bytes;
  for (int byte = 0; byte < 0x100; ++byte) {
    bytes += static_cast<char>(byte);
  }
  EXPECT_EQ(machine_.locale.toAnsi(machine_.locale.fromAnsi(bytes)), bytes);
  EXPECT_EQ(machine_.locale.fromAnsi("\x7F\x80\x9F\xA0\xFF"), "\x7F€Ÿ\u00A0ÿ");
}

TEST_F(PosixText, WhatTheCodePageLacksIsAQuestionMarkForEachUnitOfUtf16) {
  const std::vector<std::pair<std::string, std::string>> rows{
      {"Ω.", "?."}, {"\u0905.", "?."}, {"日.", "?."}, {"😀.", "??."}, {"è€Ω😀", "\xE8\x80???"}};
  for (const auto& [text, bytes] : rows) {
    EXPECT_EQ(machine_.locale.toAnsi(text), bytes) << text;
  }
}

TEST_F(PosixText, ReadsUtf16) {
  const std::string bytes("a\0\xE8\0\xAC\x20\x3D\xD8\x00\xDE", 10);
  EXPECT_EQ(posix::textOfWide(bytes), "aè€😀");
  EXPECT_EQ(posix::textOfWide(bytes + "b"), "aè€😀") << "half a character at the end";
  EXPECT_EQ(posix::textOfWide(""), "");
  const std::vector<std::pair<std::string, std::string>> rows{
      {std::string("\x7F\x00", 2), "\x7F"},
      {std::string("\x80\x00", 2), "\xC2\x80"},
      {"\xFF\x07", "\xDF\xBF"},
      {std::string("\x00\x08", 2), "\xE0\xA0\x80"},
      {"\xFF\xFF", "\xEF\xBF\xBF"},
      {std::string("\x00\xD8\x00\xDC", 4), "\xF0\x90\x80\x80"},
      {"\xFF\xDB\xFF\xDF", "\xF4\x8F\xBF\xBF"}};
  for (const auto& [wide, text] : rows) {
    EXPECT_EQ(posix::textOfWide(wide), text);
  }
}

TEST_F(PosixText, HalfAPairOfUtf16IsOneCharacter) {
  for (const std::string& half :
       {std::string("\x3D\xD8", 2), std::string("\x00\xDC", 2), std::string("\xFF\xDB", 2)}) {
    EXPECT_EQ(machine_.locale.toAnsi(posix::textOfWide(half)), "?");
    EXPECT_EQ(machine_.locale.toAnsi(posix::textOfWide(half + "x")), "?") << "and half another";
  }
  EXPECT_EQ(machine_.locale.toAnsi(posix::textOfWide(std::string("\x00\xDC.\0", 4))), "?.");
}

TEST_F(PosixText, WritesDatesAndTruthAsAnItalianSystem) {
  machine::Locale& locale = machine_.locale;
  EXPECT_EQ(locale.shortDate({2026, 1, 2, 3, 4, 5}), "02/01/2026");
  EXPECT_EQ(locale.longTime({2026, 1, 2, 3, 4, 5}), "03:04:05");
  const std::vector<std::string> months{"",        "gennaio",  "febbraio", "marzo",  "aprile",
                                        "maggio",  "giugno",   "luglio",   "agosto", "settembre",
                                        "ottobre", "novembre", "dicembre", ""};
  for (std::size_t month = 0; month < months.size(); ++month) {
    EXPECT_EQ(locale.monthName(static_cast<int>(month)), months[month]);
  }
  EXPECT_EQ(locale.truthText(true), "Vero");
  EXPECT_EQ(locale.truthText(false), "Falso");
}

}  // namespace
}  // namespace trelv::tests
