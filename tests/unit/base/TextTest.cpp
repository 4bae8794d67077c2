#include <gtest/gtest.h>

#include <limits>

#include "base/Text.h"

namespace trelv {
namespace {

TEST(UpperCase, FoldsLatinLettersAndItalianAccents) {
  EXPECT_EQ(upperCase("c:\\Città è più"), "C:\\CITTÀ È PIÙ");
  EXPECT_EQ(upperCase("123_-\\"), "123_-\\");
  EXPECT_EQ(upperCase(""), "");
}

TEST(UpperCase, LeavesSignsAndOtherAlphabetsAlone) {
  EXPECT_EQ(upperCase("÷ß€ж"), "÷ß€ж");
  EXPECT_EQ(lowerCase("×€Ж"), "×€Ж");
}

TEST(LowerCase, IsTheInverseForThoseLetters) {
  EXPECT_EQ(lowerCase("C:\\CITTÀ È PIÙ"), "c:\\città è più");
}

TEST(EqualNoCase, ComparesWholeTexts) {
  EXPECT_TRUE(equalNoCase("S:\\Lumo", "s:\\LUMO"));
  EXPECT_TRUE(equalNoCase("è", "È"));
  EXPECT_FALSE(equalNoCase("S:\\Lumo", "S:\\Lumo\\"));
  EXPECT_TRUE(equalNoCase("", ""));
}

TEST(Trim, RemovesBlanksOnly) {
  EXPECT_EQ(trim("  a b  "), "a b");
  EXPECT_EQ(trim("\t a \t"), "\t a \t");
  EXPECT_EQ(trim("   "), "");
  EXPECT_EQ(trim(""), "");
  EXPECT_EQ(trimLeft("  a  "), "a  ");
  EXPECT_EQ(trimLeft("   "), "");
}

TEST(ReplaceAll, ReplacesEveryOccurrenceOnce) {
  EXPECT_EQ(replaceAll("a/b/c", "/", "\\"), "a\\b\\c");
  EXPECT_EQ(replaceAll("aaa", "a", "aa"), "aaaaaa");
  EXPECT_EQ(replaceAll("%%%", "%%", ""), "%");
  EXPECT_EQ(replaceAll("abc", "x", "y"), "abc");
}

TEST(FirstCharacters, CountsCharactersNotBytes) {
  EXPECT_EQ(firstCharacters("però", 3), "per");
  EXPECT_EQ(firstCharacters("però", 4), "però");
  EXPECT_EQ(firstCharacters("€€€", 2), "€€");
  EXPECT_EQ(firstCharacters("abc", 9), "abc");
  EXPECT_EQ(firstCharacters("abc", 0), "");
}

TEST(SignedText, LeavesRoomForTheSign) {
  EXPECT_EQ(signedText(5), " 5");
  EXPECT_EQ(signedText(0), " 0");
  EXPECT_EQ(signedText(-5), "-5");
  EXPECT_EQ(signedText(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
}

TEST(TwoDigits, PadsToTwoAndNoMore) {
  EXPECT_EQ(twoDigits(0), "00");
  EXPECT_EQ(twoDigits(1), "01");
  EXPECT_EQ(twoDigits(9), "09");
  EXPECT_EQ(twoDigits(10), "10");
  EXPECT_EQ(twoDigits(100), "100");
}

}  // namespace
}  // namespace trelv
