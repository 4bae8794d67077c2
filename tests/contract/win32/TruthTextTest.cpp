#include <gtest/gtest.h>
#include <windows.h>
// The automation header needs the one above first.
#include <oleauto.h>

#include <string>

#include "win32/Win32Locale.h"
#include "win32/Win32Text.h"

namespace trelv::win32 {
namespace {

/// The automation library's word, which is what the program's own table has to give.
std::string libraryWord(WORD language, bool value) {
  BSTR word = nullptr;
  const HRESULT result = VarBstrFromBool(value ? VARIANT_TRUE : VARIANT_FALSE,
                                         MAKELCID(language, SORT_DEFAULT), VAR_LOCALBOOL, &word);
  const std::string text = SUCCEEDED(result) ? utf8(word) : "failed";
  SysFreeString(word);
  return text;
}

class TruthText : public testing::TestWithParam<WORD> {};

TEST_P(TruthText, IsTheAutomationLibrarysWord) {
  EXPECT_EQ(libraryWord(GetParam(), true), truthWord(GetParam(), true));
  EXPECT_EQ(libraryWord(GetParam(), false), truthWord(GetParam(), false));
}

INSTANTIATE_TEST_SUITE_P(Languages, TruthText,
                         testing::Values(MAKELANGID(LANG_ITALIAN, SUBLANG_ITALIAN),
                                         MAKELANGID(LANG_ITALIAN, SUBLANG_ITALIAN_SWISS),
                                         MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US),
                                         MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_UK),
                                         MAKELANGID(LANG_GERMAN, SUBLANG_GERMAN),
                                         MAKELANGID(LANG_GERMAN, SUBLANG_GERMAN_AUSTRIAN),
                                         MAKELANGID(LANG_FRENCH, SUBLANG_FRENCH),
                                         MAKELANGID(LANG_SPANISH, SUBLANG_SPANISH)));

TEST(TruthText, OfAnItalianSystemIsVeroOrFalso) {
  EXPECT_EQ("Vero", truthWord(MAKELANGID(LANG_ITALIAN, SUBLANG_ITALIAN), true));
  EXPECT_EQ("Falso", truthWord(MAKELANGID(LANG_ITALIAN, SUBLANG_ITALIAN), false));
}

TEST(TruthText, OfTheLocaleFollowsTheSystemsLanguage) {
  Win32Locale locale;
  EXPECT_EQ(libraryWord(GetSystemDefaultLangID(), true), locale.truthText(true));
  EXPECT_EQ(libraryWord(GetSystemDefaultLangID(), false), locale.truthText(false));
}

}  // namespace
}  // namespace trelv::win32
