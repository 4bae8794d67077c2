#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "contract/Contract.h"
#include "support/Rows.h"

namespace trelv::contract {
namespace {

using namespace std::string_literals;
using tests::NameOfRow;

/// The program's own buffer.
constexpr std::uint32_t kSize = 511;

class ProfileFilesContract : public Contract {
 protected:
  std::string file() { return path("a.ini"); }

  /// Value of "k" of section "s"; "d" is the default.
  std::string read(const std::string& name) {
    return machine().profiles.readValue("s", "k", "d", kSize, name);
  }
  /// Writes "v" there; is it told as done?
  bool write(const std::string& name) {
    return machine().profiles.writeValue("s", "k", "v", name) != 0;
  }
};

// --- Reading

/// What a key reads as in a file of these bytes; "<missing>" is the default.
struct Reading {
  std::string bytes;
  std::string value;
  std::string section = "s";
  std::string key = "k";
  std::uint32_t size = kSize;
};

struct ReadingRow : tests::Row {
  std::vector<Reading> readings;
};

const std::string k510(510, 'x');

const std::vector<ReadingRow> kReadings = {
    // Names
    {"SectionAndKeyMatchWithoutRegardToCase",
     {{"[Prod01]\r\nConf=a.ini\r\n", "a.ini", "pROD01", "cONF"}}},
    {"BlanksRoundNamesAndValuesAreDropped",
     {{" [ Sp ] \r\n \t k \t = \t v \t \r\n", "v", "Sp", "k"}}},
    {"BlanksRoundTheAskedNamesAreDropped", {{"[Sec]\r\nk=v\r\n", "v", " sec ", " k\t"}}},
    {"AnUnbreakableBlankIsNone", {{"[s]\r\nk=\xA0v\xA0\r\n", "\u00A0v\u00A0"}}},
    {"ASectionMayBeIndentedAndFollowedByJunk", {{"  [Sec] junk\r\nk=v\r\n", "v", "Sec"}}},
    {"ASectionEndsAtTheLastBracketOfItsLine",
     {{"[a] b]\r\nk=v\r\n", "<missing>", "a"}, {"[a] b]\r\nk=v\r\n", "v", "a] b"}}},
    {"AnUnclosedSectionIsNone",
     {{"[s]\r\n[t\r\nk=v\r\n", "<missing>", "t"}, {"[s]\r\n[t\r\nk=v\r\n", "v", "s"}}},
    {"LinesBeforeTheFirstSectionHaveTheEmptyOne", {{"k=v\r\n[s]\r\nk=w\r\n", "v", ""}}},
    {"ANamelessSectionCannotBeReached", {{"[]\r\nk=v\r\n", "<missing>", ""}}},
    {"OfEqualKeysTheFirstWins", {{"[s]\r\nk=1\r\nK=2\r\n", "1"}, {"[s]\r\nk=\r\nk=2\r\n", ""}}},
    {"OfEqualSectionsOnlyTheFirstExists",
     {{"[s]\r\na=1\r\n[S]\r\nk=2\r\n", "<missing>"}, {"[s]\r\n[ S ]\r\nk=2\r\n", "<missing>"}}},
    {"AKeyWithoutNameIsReachedByTheEmptyOne",
     {{"[s]\r\n=v\r\n", "v", "s", ""}, {"[s]\r\nk=v\r\n", "<missing>", "s", ""}}},
    {"ALineWithoutEqualSignIsNoKeyAndHidesALaterOne",
     {{"[s]\r\nk\r\n", "<missing>"}, {"[s]\r\nk\r\nk=v\r\n", "<missing>"}}},
    {"ASemicolonAtTheBeginningMakesAComment", {{"[s]\r\n;k=1\r\n ; k=2\r\nk=3\r\n", "3"}}},
    {"ASemicolonInAValueBelongsToIt", {{"[s]\r\nk=a ; b\r\n", "a ; b"}}},
    {"ANumberSignIsAnOrdinaryCharacter", {{"[s]\r\n#k=v\r\n", "v", "s", "#k"}}},
    {"AKeyEndsAtItsFirstEqualSign", {{"[s]\r\na=b=c\r\n", "b=c", "s", "a"}}},
    {"AccentedNamesAreFound",
     {{"[citt\xE0]\r\nperch\xE9=s\xEC\r\n", "s\u00EC", "citt\u00E0", "perch\u00E9"}}},
    {"MissingSectionsAndKeysGiveTheDefault",
     {{"[s]\r\nz=1\r\n", "<missing>"}, {"[t]\r\nk=1\r\n", "<missing>"}}},
    // Values
    {"OnePairOfEqualOuterQuotesIsRemoved",
     {{"[s]\r\nk=\" v \"\r\n", " v "},
      {"[s]\r\nk=' v '  \r\n", " v "},
      {"[s]\r\nk=\"\"v\"\"\r\n", "\"v\""},
      {"[s]\r\nk=\"\"\r\n", ""},
      {"[s]\r\nk=\"C:\\A B\\x.exe\"\r\n", "C:\\A B\\x.exe"}}},
    {"AQuotedProgramWithQuotedArgumentLosesItsOuterQuotes",
     {{"[s]\r\nk=\"C:\\A B\\x.exe\" /s \"y z\"\r\n", "C:\\A B\\x.exe\" /s \"y z"}}},
    {"OtherQuotesStay",
     {{"[s]\r\nk=\"v'\r\n", "\"v'"},
      {"[s]\r\nk=\"v\r\n", "\"v"},
      {"[s]\r\nk=\"\r\n", "\""},
      {"[s]\r\nk=\"C:\\A B\\x.exe\" /s\r\n", "\"C:\\A B\\x.exe\" /s"}}},
    {"AnEmptyValueIsNotMissing", {{"[s]\r\nk=\r\n", ""}}},
    {"ValuesAreTextOfTheCodePage", {{"[s]\r\nk=perch\xE9 10 \x80\r\n", "perch\u00E9 10 \u20AC"}}},
    {"AValueIsCutToTheBuffer",
     {{"[s]\r\nk=" + k510 + "\r\n", k510},
      {"[s]\r\nk=" + k510 + "y\r\n", k510},
      {"[s]\r\nk=abc\r\n", "ab", "s", "k", 3},
      {"[s]\r\nk=abc\r\n", "", "s", "k", 1},
      {"[s]\r\nk=abc\r\n", "", "s", "k", 0}}},
    {"AQuotedValueLosesItsLastCharacterWhenItJustFits",
     {{"[s]\r\nk='abc'\r\n", "abc", "s", "k", 5},
      {"[s]\r\nk='abc'\r\n", "ab", "s", "k", 4},
      {"[s]\r\nk='abc'\r\n", "ab", "s", "k", 3}}},
    // Lines and encodings
    {"TheLastLineNeedsNoEnd", {{"[s]\r\nk=v", "v"}}},
    {"LfOrCrAloneEndALine",
     {{"[s]\na=1\nk=v\n", "v"},
      {"[s]\ra=1\rk=v\r", "v"},
      {"[s]\r\na=1\rk=v\r\n", "1", "s", "a"},
      {"[s]\r\r\na=1\r\r\nk=v\r\r\n", "v"}}},
    {"AnEmptyFileHasNothing", {{"", "<missing>"}, {" \r\n", "<missing>", "", ""}}},
    {"Utf16WithItsMarkIsRead",
     {{"\xFF\xFE[\0s\0]\0\n\0k\0=\0\xE8\0"s, "\u00E8"},
      {"\xFE\xFF\0[\0s\0]\0\n\0k\0=\0\xE8"s, "\u00E8"}}},
    {"Utf16WithoutMarkIsNotRecognised", {{"[\0s\0]\0\n\0k\0=\0v\0"s, "<missing>"}}},
    {"Utf8WithItsMarkIsRead", {{"\xEF\xBB\xBF[s]\r\nk=\xC3\xA8\r\n", "\u00E8"}}},
    {"ANulCutsTheValue",
     {{"[s]\r\nk=a\0b\r\nz=2\r\n"s, "a"}, {"[s]\r\nk=a\0b\r\nz=2\r\n"s, "2", "s", "z"}}},
};

class ReadValue : public ProfileFilesContract, public testing::WithParamInterface<ReadingRow> {};

TEST_P(ReadValue, GivesWhatTheFileHolds) {
  for (const Reading& reading : GetParam().readings) {
    world().putFile(file(), reading.bytes);
    EXPECT_EQ(machine().profiles.readValue(reading.section, reading.key, "<missing>", reading.size,
                                           file()),
              reading.value)
        << reading.bytes;
  }
}

INSTANTIATE_TEST_SUITE_P(Of, ReadValue, testing::ValuesIn(kReadings), NameOfRow());

TEST_F(ProfileFilesContract, TheBytesThatCountAsBlanks) {
  for (const std::string blank : {"\t", "\v", "\f", "\x1A", " "}) {
    world().putFile(file(), "[" + blank + "s]\r\nk" + blank + "=" + blank + "v" + blank + "\r\n");
    EXPECT_EQ(read(file()), "v") << static_cast<int>(blank[0]);
  }
  for (const std::string other : {"\x01", "\x1C", "\x1F", "\x7F"}) {
    world().putFile(file(), "[s]\r\nk=" + other + "v" + other + "\r\n");
    EXPECT_EQ(read(file()), other + "v" + other) << static_cast<int>(other[0]);
  }
}

TEST_F(ProfileFilesContract, TheDefaultLosesTrailingBlanksAndOuterQuotes) {
  const auto defaultAs = [this](const std::string& text, std::uint32_t size = kSize) {
    return machine().profiles.readValue("s", "k", text, size, path("none.ini"));
  };
  EXPECT_EQ(defaultAs("a "), "a");
  EXPECT_EQ(defaultAs(" a "), " a");
  EXPECT_EQ(defaultAs("'a'"), "a");
  EXPECT_EQ(defaultAs("\"a\" "), "a");
  EXPECT_EQ(defaultAs("\"a"), "\"a");
  EXPECT_EQ(defaultAs("abc", 3), "ab");
  EXPECT_EQ(defaultAs(""), "");
}

// --- Files and places

TEST_F(ProfileFilesContract, TheDefaultIsForMissingFilesAndFoldersToo) {
  EXPECT_EQ(read(path("none.ini")), "d");
  EXPECT_EQ(read(path("none\\a.ini")), "d");
  EXPECT_EQ(read(world().folder()), "d");
}

TEST_F(ProfileFilesContract, AFileHeldWithoutReadSharingGivesTheDefault) {
  CONTRACT_NEEDS(Ability::HoldFiles, "files cannot be held against others here");
  putFile("a.ini", "[s]\r\nk=v\r\n");
  {
    const auto held = world().hold(file(), {.read = false, .write = true, .remove = true});
    EXPECT_EQ(read(file()), "d");
  }
  EXPECT_EQ(read(file()), "v");
}

TEST_F(ProfileFilesContract, AChangeByOthersIsSeenAtOnce) {
  for (int i = 0; i < 20; ++i) {
    const std::string number = std::to_string(i);
    ASSERT_EQ(read(putFile("a.ini", "[s]\r\nk=" + number + "\r\n")), number);
  }
}

TEST_F(ProfileFilesContract, ABareNameMeansTheWindowsFolder) {
  std::string windows;
  ASSERT_EQ(machine().system.systemWindowsFolder(windows), system_code::kSuccess);
  const std::string name = "TrelvContract.ini";
  ASSERT_TRUE(write(name));
  EXPECT_EQ(world().fileBytes(windows + "\\" + name), "[s]\r\nk=v\r\n");
  EXPECT_EQ(read(name), "v");
  EXPECT_EQ(read(windows + "\\" + name), "v");
  EXPECT_EQ(machine().files.removeFile(windows + "\\" + name), system_code::kSuccess);
}

TEST_F(ProfileFilesContract, APathThatTheCodePageLacksIsNotFound) {
  const std::string name = putFile("\u4E2D.ini", "[s]\r\nk=w\r\n");
  EXPECT_EQ(read(name), "d");
  EXPECT_FALSE(write(name));
  EXPECT_EQ(world().fileBytes(name), "[s]\r\nk=w\r\n");
}

TEST_F(ProfileFilesContract, AccentedPathsWork) {
  const std::string name = path("citt\u00E0.ini");
  ASSERT_TRUE(write(name));
  EXPECT_EQ(read(name), "v");
  EXPECT_TRUE(world().exists(name));
}

TEST_F(ProfileFilesContract, ForwardSlashesWork) {
  std::string slashes = putFile("a.ini", "[s]\r\nk=v\r\n");
  std::replace(slashes.begin(), slashes.end(), '\\', '/');
  EXPECT_EQ(read(slashes), "v");
}

// --- Writing

/// The bytes of a file after a key was written into it. Without bytes before there was none.
struct Writing {
  std::optional<std::string> before;
  std::string after;
  std::string value = "v";
  std::string key = "k";
  std::string section = "S";
};

struct WritingRow : tests::Row {
  std::vector<Writing> writings;
};

const std::vector<WritingRow> kWritings = {
    {"ANewFileHasSectionAndKeyAlone", {{{}, "[S]\r\nk=v\r\n"}}},
    {"ANewKeyGoesToTheEndOfItsSection",
     {{"[S]\r\nx=1\r\n;c\r\n\r\n[b]\r\ny=2\r\n", "[S]\r\nx=1\r\n;c\r\nk=v\r\n[b]\r\ny=2\r\n", "v",
       "k", "s"}}},
    {"ANewSectionGoesToTheEndOfTheFile",
     {{"[a]\r\nx=1", "[a]\r\nx=1\r\n[S]\r\nk=v\r\n"},
      {"[a]\r\nx=1\r\n\r\n", "[a]\r\nx=1\r\n[S]\r\nk=v\r\n"}}},
    {"AnExistingKeyKeepsSpellingAndPlace",
     {{"[S]\r\nKey=1\r\nz=2\r\n", "[S]\r\nKey=v\r\nz=2\r\n", "v", "KEY", "s"}}},
    {"AChangeTidiesTheWholeFile",
     {{"\n[ S ] junk\n  K = 1\n; c\nbare\n\n[b]\ny = 2",
       "[S]\r\nK=v\r\n; c\r\nbare\r\n[b]\r\ny=2\r\n"}}},
    {"AnEqualValueLeavesTheFileAsItIs",
     {{"[S]\n  K = v\n; c\n\n", "[S]\n  K = v\n; c\n\n"},
      {"[S]\nk=\"v\"\n", "[S]\nk=\"v\"\n", "\"v\""},
      {"[S]\nk=\n", "[S]\nk=\n", ""}}},
    {"AValueThatDiffersInQuotesOrCaseIsWritten",
     {{"[S]\n  K = \"v\"\n", "[S]\r\nK=v\r\n"}, {"[S]\nk=V\n", "[S]\r\nk=v\r\n"}}},
    {"AnEmptyValueKeepsTheKey",
     {{"[S]\r\nk=1\r\n", "[S]\r\nk=\r\n", ""}, {{}, "[S]\r\nk=\r\n", ""}}},
    {"ABareLineIsReplaced", {{"[S]\r\nk\r\n", "[S]\r\nk=v\r\n"}}},
    {"LeadingBlanksOfAValueAreDropped", {{{}, "[S]\r\nk=v\r\n", "  \tv"}}},
    {"QuotesAreWrittenAsGiven", {{{}, "[S]\r\nk=\" v \"\r\n", "\" v \""}}},
    {"ALineEndInAValueMakesAFurtherLine", {{{}, "[S]\r\nk=a\r\nb=2\r\n", "a\r\nb=2"}}},
    {"AnEmptyKeyIsWrittenWithoutName", {{"[S]\r\nk=1\r\n", "[S]\r\nk=1\r\n=v\r\n", "v", ""}}},
    {"AnEmptySectionIsWrittenAboveTheFirst",
     {{"[S]\r\nz=1\r\n", "k=v\r\n[S]\r\nz=1\r\n", "v", "k", ""}}},
    {"OnlyTheFirstOfEqualSectionsIsWritten",
     {{"[S]\r\na=1\r\n[s]\r\nk=1\r\n", "[S]\r\na=1\r\nk=v\r\n[s]\r\nk=1\r\n"}}},
    {"ValuesAreWrittenInTheCodePage",
     {{{}, "[S]\r\nk=perch\xE9 10 \x80\r\n", "perch\u00E9 10 \u20AC"}}},
    {"WhatTheCodePageLacksIsWrittenAsAQuestionMark", {{{}, "[S]\r\nk=a?b?\r\n", "a\u4E2Db\u0416"}}},
    {"Utf8WithItsMarkStaysSo",
     {{"\xEF\xBB\xBF[s]\r\nk=\xC3\xA0\r\n", "\xEF\xBB\xBF[s]\r\nk=\xC3\xA0\r\nz=\xC3\xA8\r\n",
       "\u00E8", "z", "s"}}},
    {"Utf16WithItsMarkStaysSo",
     {{"\xFF\xFE[\0s\0]\0\r\0\n\0"s, "\xFF\xFE[\0s\0]\0\r\0\n\0z\0=\0\xE8\0\r\0\n\0"s, "\u00E8",
       "z", "s"}}},
};

class WriteValue : public ProfileFilesContract, public testing::WithParamInterface<WritingRow> {};

TEST_P(WriteValue, LeavesTheseBytes) {
  int number = 0;
  for (const Writing& writing : GetParam().writings) {
    const std::string name = path(std::to_string(++number) + ".ini");
    if (writing.before) world().putFile(name, *writing.before);
    EXPECT_NE(machine().profiles.writeValue(writing.section, writing.key, writing.value, name), 0U);
    EXPECT_EQ(world().fileBytes(name), writing.after);
  }
}

INSTANTIATE_TEST_SUITE_P(Of, WriteValue, testing::ValuesIn(kWritings), NameOfRow());

/// A file that keeps its bytes.
class RefusedWriting : public ProfileFilesContract {
 protected:
  RefusedWriting() { world().putFile(file(), kBefore); }
  void expectRefused() {
    EXPECT_FALSE(write(file()));
    EXPECT_EQ(world().fileBytes(file()), kBefore);
  }
  static constexpr const char* kBefore = "[s]\r\nk=1\r\n";
};

TEST_F(RefusedWriting, WithoutFolderOrOntoAFolder) {
  EXPECT_FALSE(write(path("none\\a.ini")));
  EXPECT_FALSE(world().exists(path("none")));
  EXPECT_FALSE(write(world().folder()));
}

TEST_F(RefusedWriting, OfAReadOnlyFile) {
  CONTRACT_NEEDS(Ability::ReadOnlyRefusesWriting, "this user may write read-only files");
  ASSERT_EQ(machine().files.setReadOnly(file(), true), system_code::kSuccess);
  expectRefused();
}

TEST_F(RefusedWriting, OfAFileHeldWithoutWriteSharing) {
  CONTRACT_NEEDS(Ability::HoldFiles, "files cannot be held against others here");
  const auto held = world().hold(file(), {.read = true, .write = false, .remove = true});
  expectRefused();
}

}  // namespace
}  // namespace trelv::contract
