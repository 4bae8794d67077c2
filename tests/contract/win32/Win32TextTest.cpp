#include <gtest/gtest.h>
#include <windows.h>

#include "win32/Win32Text.h"

namespace trelv::win32 {
namespace {

TEST(Win32Text, AccentsAreOneByteInCodePage1252) {
  ASSERT_EQ(1252U, GetACP()) << "the tests want an Italian or English Windows";
  EXPECT_EQ("Modalit\xE0 \x80", ansi("Modalità €"));
  EXPECT_EQ("Modalità €", fromAnsi("Modalit\xE0 \x80"));
}

TEST(Win32Text, ALetterOutsideTheCodePageBecomesAQuestionMarkNotASimilarOne) {
  EXPECT_EQ("?", ansi("ā"));
  EXPECT_EQ("?", ansi("∕"));
}

TEST(Win32Text, NulsInsideAreKept) {
  EXPECT_EQ(std::string("a\0b", 3), ansi(std::string("a\0b", 3)));
  EXPECT_EQ(std::string("a\0b", 3), fromAnsi(std::string("a\0b", 3)));
}

TEST(Win32Text, EmptyTextStaysEmpty) {
  EXPECT_EQ("", ansi(""));
  EXPECT_EQ("", fromAnsi(""));
  EXPECT_EQ(L"", wide(""));
  EXPECT_EQ("", utf8(L""));
}

}  // namespace
}  // namespace trelv::win32
