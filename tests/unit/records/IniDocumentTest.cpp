#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "records/IniDocument.h"

namespace trelv {
namespace {

using namespace std::string_literals;

/// Value of key "k" of section "s", or "<missing>".
std::string valueIn(std::string text, std::string_view section = "s", std::string_view key = "k") {
  const IniDocument document(std::move(text));
  return std::string(document.value(section, key).value_or("<missing>"));
}

TEST(IniDocument, ValueStandsInItsSection) {
  const std::string text = "[prod01]\r\nconf=a.ini\r\n[prod02]\r\nconf=b.ini\r\n";
  EXPECT_EQ(valueIn(text, "prod01", "conf"), "a.ini");
  EXPECT_EQ(valueIn(text, "prod02", "conf"), "b.ini");
  EXPECT_EQ(valueIn(text, "prod03", "conf"), "<missing>");
  EXPECT_EQ(valueIn(text, "prod01", "id"), "<missing>");
}

TEST(IniDocument, SameKeyOfTwoSectionsIsNotMixedUp) {
  EXPECT_EQ(valueIn("[a]\nk=1\n[s]\nx=2\n"), "<missing>");
}

TEST(IniDocument, NamesMatchWithoutRegardToCaseOfAsciiLetters) {
  EXPECT_EQ(valueIn("[SetUp01]\nServer01=x\n", "SETUP01", "server01"), "x");
  EXPECT_EQ(valueIn("[S@]\nk[=x\n", "s`", "k["), "<missing>");
}

TEST(IniDocument, BlanksRoundNamesAndValuesAreDropped) {
  EXPECT_EQ(valueIn(" \t[ s\t] \r\n \tk \t= \tv w\t \r\n"), "v w");
}

TEST(IniDocument, BlanksRoundTheAskedNamesAreDropped) {
  EXPECT_EQ(valueIn("[s]\nk=v\n", " s\t", "\r\nk "), "v");
}

TEST(IniDocument, AnUnbreakableBlankStays) {
  EXPECT_EQ(valueIn("[s]\nk=\xA0v\xA0\n"), "\xA0v\xA0");
}

TEST(IniDocument, BytesOfTheValueStayAsTheyAre) {
  EXPECT_EQ(valueIn("[s]\nk=perch\xE9 \x80 \x81\n"), "perch\xE9 \x80 \x81");
}

TEST(IniDocument, OnePairOfEqualOuterQuotesIsRemoved) {
  EXPECT_EQ(valueIn("[s]\nk=\" v \"\n"), " v ");
  EXPECT_EQ(valueIn("[s]\nk=' v ' \n"), " v ");
  EXPECT_EQ(valueIn("[s]\nk=\"\"v\"\"\n"), "\"v\"");
  EXPECT_EQ(valueIn("[s]\nk=\"'v'\"\n"), "'v'");
  EXPECT_EQ(valueIn("[s]\nk=\"\"\n"), "");
}

TEST(IniDocument, ACommandThatBeginsAndEndsWithAQuoteLosesBoth) {
  EXPECT_EQ(valueIn("[s]\nk=\"C:\\A B\\x.exe\" /s \"y z\"\n"), "C:\\A B\\x.exe\" /s \"y z");
  EXPECT_EQ(valueIn("[s]\nk=\"C:\\A B\\x.exe\" /s\n"), "\"C:\\A B\\x.exe\" /s");
}

TEST(IniDocument, UnequalOrSingleQuotesStay) {
  EXPECT_EQ(valueIn("[s]\nk=\"v'\n"), "\"v'");
  EXPECT_EQ(valueIn("[s]\nk=\"v\n"), "\"v");
  EXPECT_EQ(valueIn("[s]\nk=\"\n"), "\"");
}

TEST(IniDocument, AnEmptyValueIsNotMissing) { EXPECT_EQ(valueIn("[s]\nk= \n"), ""); }

TEST(IniDocument, AKeyEndsAtItsFirstEqualSign) { EXPECT_EQ(valueIn("[s]\nk=b=c\n"), "b=c"); }

TEST(IniDocument, CommentsAreNoKeys) {
  EXPECT_EQ(valueIn("[s]\n;k=1\n ; k=2\nk=3 ; rest\n"), "3 ; rest");
  EXPECT_EQ(valueIn("[s]\n#k=1\n"), "<missing>");
}

TEST(IniDocument, ALineWithoutEqualSignHasNoValueAndHidesLaterOnes) {
  EXPECT_EQ(valueIn("[s]\nk\n"), "<missing>");
  EXPECT_EQ(valueIn("[s]\nk\nk=v\n"), "<missing>");
}

TEST(IniDocument, OfEqualKeysTheFirstWins) {
  EXPECT_EQ(valueIn("[s]\nk=1\nK=2\n"), "1");
  EXPECT_EQ(valueIn("[s]\nk=\nk=2\n"), "");
}

TEST(IniDocument, OfEqualSectionsOnlyTheFirstExists) {
  EXPECT_EQ(valueIn("[s]\nx=1\n[S]\nk=2\n"), "<missing>");
  EXPECT_EQ(valueIn("[s]\nk=1\n[t]\nk=2\n[ s ]\nk=3\n[t]\nz=4\n", "t", "z"), "<missing>");
}

TEST(IniDocument, LinesBeforeTheFirstSectionHaveTheEmptyOne) {
  EXPECT_EQ(valueIn("k=v\n[s]\n", "", "k"), "v");
  EXPECT_EQ(valueIn("k=v\n[s]\n", " ", "k"), "v");
  EXPECT_EQ(valueIn("[]\nk=v\n", "", "k"), "<missing>");
}

TEST(IniDocument, ASectionEndsAtTheLastBracketOfItsLine) {
  EXPECT_EQ(valueIn("[s] junk\nk=v\n"), "v");
  EXPECT_EQ(valueIn("[s] junk]\nk=v\n"), "<missing>");
  EXPECT_EQ(valueIn("[s] junk]\nk=v\n", "s] junk"), "v");
}

TEST(IniDocument, AnUnclosedSectionIsAnOrdinaryLine) {
  EXPECT_EQ(valueIn("[s]\n[t\nk=v\n"), "v");
  EXPECT_EQ(valueIn("[s]\n[t=1\n", "s", "[t"), "1");
}

TEST(IniDocument, AKeyMayHaveNoName) { EXPECT_EQ(valueIn("[s]\n=v\n", "s", ""), "v"); }

TEST(IniDocument, LinesEndWithCrLfOrLfAndTheLastNeedsNone) {
  EXPECT_EQ(valueIn("[s]\nx=1\nk=v"), "v");
  EXPECT_EQ(valueIn("[s]\r\nx=1\r\nk=v"), "v");
  EXPECT_EQ(valueIn("\r\n\n[s]\r\n\nk=v\r\n"), "v");
}

TEST(IniDocument, AnEmptyTextHasNothing) {
  EXPECT_EQ(valueIn(""), "<missing>");
  EXPECT_EQ(valueIn("", "", ""), "<missing>");
}

TEST(IniDocument, ValuesAreViewsThatOutliveAMoveOfTheDocument) {
  IniDocument document("[s]\nk=v\n");
  const std::optional<std::string_view> value = document.value("s", "k");
  const IniDocument moved = std::move(document);
  EXPECT_EQ(value, "v");
  EXPECT_EQ(moved.value("s", "k"), "v");
  EXPECT_EQ(moved.value("s", "k")->data(), value->data());
}

TEST(IniDocument, EveryOfManySectionsAndKeysIsFound) {
  std::string text;
  for (int section = 0; section < 300; ++section) {
    text += "[Update" + std::to_string(section) + "]\r\n";
    for (int key = 0; key < 20; ++key) {
      text += "Server" + std::to_string(key) + "=" + std::to_string(section * 100 + key) + "\r\n";
    }
  }
  const IniDocument document(text);
  for (int section = 0; section < 300; ++section) {
    for (int key = 0; key < 20; ++key) {
      EXPECT_EQ(document.value("UPDATE" + std::to_string(section), "server" + std::to_string(key)),
                std::to_string(section * 100 + key));
    }
  }
  EXPECT_EQ(document.value("Update300", "Server0"), std::nullopt);
  EXPECT_EQ(document.value("Update0", "Server20"), std::nullopt);
}

TEST(IniDocument, UnderstandsPlainAnsiText) {
  EXPECT_TRUE(IniDocument::understands(""));
  EXPECT_TRUE(IniDocument::understands("[s]\r\nk = v\r\n"));
  EXPECT_TRUE(IniDocument::understands("[s]\nk=perch\xE9\tx\x80\xFF\x7F\n"));
  EXPECT_TRUE(IniDocument::understands("\xFF"));
  EXPECT_TRUE(IniDocument::understands("x\xEF\xBB\xBF"));
}

TEST(IniDocument, LeavesByteOrderMarksToThePlatform) {
  EXPECT_FALSE(IniDocument::understands("\xEF\xBB\xBF[s]\r\nk=v\r\n"));
  EXPECT_FALSE(IniDocument::understands("\xFF\xFE[s]\r\nk=v\r\n"));
  EXPECT_FALSE(IniDocument::understands("\xFE\xFF[s]\r\nk=v\r\n"));
  EXPECT_FALSE(IniDocument::understands("\xFF\xFE"));
}

TEST(IniDocument, LeavesNulBytesToThePlatform) {
  EXPECT_FALSE(IniDocument::understands("[s]\r\nk=a\0b\r\n"s));
  EXPECT_FALSE(IniDocument::understands("[\0s\0]\0"s));
  EXPECT_FALSE(IniDocument::understands("\0"s));
}

TEST(IniDocument, LeavesOtherControlCharactersToThePlatform) {
  for (char code = 1; code < ' '; ++code) {
    const bool plain = code == '\t' || code == '\n';
    EXPECT_EQ(IniDocument::understands("[s]\r\nk=a"s + code + "b\r\n"), plain)
        << static_cast<int>(code);
  }
}

TEST(IniDocument, LeavesACrOnItsOwnToThePlatform) {
  EXPECT_FALSE(IniDocument::understands("[s]\rk=v\r"));
  EXPECT_FALSE(IniDocument::understands("[s]\r\nk=v\r"));
  EXPECT_FALSE(IniDocument::understands("[s]\r\r\nk=v"));
}

TEST(IniDocument, LeavesNamesBeyondAsciiToThePlatform) {
  EXPECT_TRUE(IniDocument::canFind("Setup01", "Server01"));
  EXPECT_TRUE(IniDocument::canFind("", ""));
  EXPECT_FALSE(IniDocument::canFind("citt\u00E0", "k"));
  EXPECT_FALSE(IniDocument::canFind("s", "perch\u00E9"));
}

}  // namespace
}  // namespace trelv
