#include <gtest/gtest.h>

#include <string>

#include "contract/Contract.h"

namespace trelv::contract {
namespace {

/// The program's own buffer.
constexpr std::uint32_t kSize = 511;

class ProfileFilesContract : public Contract {
 protected:
  std::string file() { return path("a.ini"); }

  /// Value of a key in a file of these bytes; "<missing>" is the default.
  std::string valueIn(std::string_view bytes, const std::string& section, const std::string& key,
                      std::uint32_t size = kSize) {
    world().putFile(file(), bytes);
    return machine().profiles.readValue(section, key, "<missing>", size, file());
  }

  std::string defaultAs(const std::string& defaultValue, std::uint32_t size = kSize) {
    return machine().profiles.readValue("s", "k", defaultValue, size, path("none.ini"));
  }

  /// The file after a value was written into these bytes.
  std::string afterWrite(std::string_view bytes, const std::string& section, const std::string& key,
                         const std::string& value) {
    world().putFile(file(), bytes);
    EXPECT_NE(machine().profiles.writeValue(section, key, value, file()), 0U);
    return world().fileBytes(file());
  }

  std::string writtenNew(const std::string& section, const std::string& key,
                         const std::string& value) {
    const std::string name = path("new.ini");
    EXPECT_NE(machine().profiles.writeValue(section, key, value, name), 0U);
    return world().fileBytes(name);
  }
};

// --- Reading: names

TEST_F(ProfileFilesContract, SectionAndKeyMatchWithoutRegardToCase) {
  EXPECT_EQ(valueIn("[Prod01]\r\nConf=a.ini\r\n", "pROD01", "cONF"), "a.ini");
}

TEST_F(ProfileFilesContract, BlanksRoundNamesAndValuesAreDropped) {
  EXPECT_EQ(valueIn(" [ Sp ] \r\n \t k \t = \t v \t \r\n", "Sp", "k"), "v");
}

TEST_F(ProfileFilesContract, BlanksRoundTheAskedNamesAreDropped) {
  EXPECT_EQ(valueIn("[Sec]\r\nk=v\r\n", " sec ", " k\t"), "v");
}

TEST_F(ProfileFilesContract, TheBytesThatCountAsBlanks) {
  for (const std::string blank : {"\t", "\v", "\f", "\x1A", " "}) {
    EXPECT_EQ(
        valueIn("[" + blank + "s]\r\nk" + blank + "=" + blank + "v" + blank + "\r\n", "s", "k"),
        "v")
        << static_cast<int>(blank[0]);
  }
  for (const std::string other : {"\x01", "\x1C", "\x1F", "\x7F"}) {
    EXPECT_EQ(valueIn("[s]\r\nk=" + other + "v" + other + "\r\n", "s", "k"), other + "v" + other)
        << static_cast<int>(other[0]);
  }
}

TEST_F(ProfileFilesContract, AnUnbreakableBlankIsNone) {
  EXPECT_EQ(valueIn("[s]\r\nk=\xA0v\xA0\r\n", "s", "k"), "\u00A0v\u00A0");
}

TEST_F(ProfileFilesContract, ASectionMayBeIndentedAndFollowedByJunk) {
  EXPECT_EQ(valueIn("  [Sec] junk\r\nk=v\r\n", "Sec", "k"), "v");
}

TEST_F(ProfileFilesContract, ASectionEndsAtTheLastBracketOfItsLine) {
  EXPECT_EQ(valueIn("[a] b]\r\nk=v\r\n", "a", "k"), "<missing>");
  EXPECT_EQ(valueIn("[a] b]\r\nk=v\r\n", "a] b", "k"), "v");
}

TEST_F(ProfileFilesContract, AnUnclosedSectionIsNone) {
  EXPECT_EQ(valueIn("[s]\r\n[t\r\nk=v\r\n", "t", "k"), "<missing>");
  EXPECT_EQ(valueIn("[s]\r\n[t\r\nk=v\r\n", "s", "k"), "v");
}

TEST_F(ProfileFilesContract, LinesBeforeTheFirstSectionHaveTheEmptyOne) {
  EXPECT_EQ(valueIn("k=v\r\n[s]\r\nk=w\r\n", "", "k"), "v");
}

TEST_F(ProfileFilesContract, ANamelessSectionCannotBeReached) {
  EXPECT_EQ(valueIn("[]\r\nk=v\r\n", "", "k"), "<missing>");
}

TEST_F(ProfileFilesContract, OfEqualKeysTheFirstWins) {
  EXPECT_EQ(valueIn("[s]\r\nk=1\r\nK=2\r\n", "s", "k"), "1");
  EXPECT_EQ(valueIn("[s]\r\nk=\r\nk=2\r\n", "s", "k"), "");
}

TEST_F(ProfileFilesContract, OfEqualSectionsOnlyTheFirstExists) {
  EXPECT_EQ(valueIn("[s]\r\na=1\r\n[S]\r\nk=2\r\n", "s", "k"), "<missing>");
  EXPECT_EQ(valueIn("[s]\r\n[ S ]\r\nk=2\r\n", "s", "k"), "<missing>");
}

TEST_F(ProfileFilesContract, AKeyWithoutNameIsReachedByTheEmptyOne) {
  EXPECT_EQ(valueIn("[s]\r\n=v\r\n", "s", ""), "v");
  EXPECT_EQ(valueIn("[s]\r\nk=v\r\n", "s", ""), "<missing>");
}

TEST_F(ProfileFilesContract, ALineWithoutEqualSignIsNoKeyAndHidesALaterOne) {
  EXPECT_EQ(valueIn("[s]\r\nk\r\n", "s", "k"), "<missing>");
  EXPECT_EQ(valueIn("[s]\r\nk\r\nk=v\r\n", "s", "k"), "<missing>");
}

TEST_F(ProfileFilesContract, ASemicolonAtTheBeginningMakesAComment) {
  EXPECT_EQ(valueIn("[s]\r\n;k=1\r\n ; k=2\r\nk=3\r\n", "s", "k"), "3");
}

TEST_F(ProfileFilesContract, ASemicolonInAValueBelongsToIt) {
  EXPECT_EQ(valueIn("[s]\r\nk=a ; b\r\n", "s", "k"), "a ; b");
}

TEST_F(ProfileFilesContract, ANumberSignIsAnOrdinaryCharacter) {
  EXPECT_EQ(valueIn("[s]\r\n#k=v\r\n", "s", "#k"), "v");
}

TEST_F(ProfileFilesContract, AKeyEndsAtItsFirstEqualSign) {
  EXPECT_EQ(valueIn("[s]\r\na=b=c\r\n", "s", "a"), "b=c");
}

TEST_F(ProfileFilesContract, AccentedNamesAreFound) {
  EXPECT_EQ(valueIn("[citt\xE0]\r\nperch\xE9=s\xEC\r\n", "citt\u00E0", "perch\u00E9"), "s\u00EC");
}

// --- Reading: values

TEST_F(ProfileFilesContract, OnePairOfEqualOuterQuotesIsRemoved) {
  EXPECT_EQ(valueIn("[s]\r\nk=\" v \"\r\n", "s", "k"), " v ");
  EXPECT_EQ(valueIn("[s]\r\nk=' v '  \r\n", "s", "k"), " v ");
  EXPECT_EQ(valueIn("[s]\r\nk=\"\"v\"\"\r\n", "s", "k"), "\"v\"");
  EXPECT_EQ(valueIn("[s]\r\nk=\"\"\r\n", "s", "k"), "");
  EXPECT_EQ(valueIn("[s]\r\nk=\"C:\\A B\\x.exe\"\r\n", "s", "k"), "C:\\A B\\x.exe");
}

TEST_F(ProfileFilesContract, AQuotedProgramWithQuotedArgumentLosesItsOuterQuotes) {
  EXPECT_EQ(valueIn("[s]\r\nk=\"C:\\A B\\x.exe\" /s \"y z\"\r\n", "s", "k"),
            "C:\\A B\\x.exe\" /s \"y z");
}

TEST_F(ProfileFilesContract, OtherQuotesStay) {
  EXPECT_EQ(valueIn("[s]\r\nk=\"v'\r\n", "s", "k"), "\"v'");
  EXPECT_EQ(valueIn("[s]\r\nk=\"v\r\n", "s", "k"), "\"v");
  EXPECT_EQ(valueIn("[s]\r\nk=\"\r\n", "s", "k"), "\"");
  EXPECT_EQ(valueIn("[s]\r\nk=\"C:\\A B\\x.exe\" /s\r\n", "s", "k"), "\"C:\\A B\\x.exe\" /s");
}

TEST_F(ProfileFilesContract, AnEmptyValueIsNotMissing) {
  EXPECT_EQ(valueIn("[s]\r\nk=\r\n", "s", "k"), "");
}

TEST_F(ProfileFilesContract, ValuesAreTextOfTheCodePage) {
  EXPECT_EQ(valueIn("[s]\r\nk=perch\xE9 10 \x80\r\n", "s", "k"), "perch\u00E9 10 \u20AC");
}

TEST_F(ProfileFilesContract, AValueIsCutToTheBuffer) {
  const std::string whole(510, 'x');
  EXPECT_EQ(valueIn("[s]\r\nk=" + whole + "\r\n", "s", "k"), whole);
  EXPECT_EQ(valueIn("[s]\r\nk=" + whole + "y\r\n", "s", "k"), whole);
  EXPECT_EQ(valueIn("[s]\r\nk=abc\r\n", "s", "k", 3), "ab");
  EXPECT_EQ(valueIn("[s]\r\nk=abc\r\n", "s", "k", 1), "");
  EXPECT_EQ(valueIn("[s]\r\nk=abc\r\n", "s", "k", 0), "");
}

TEST_F(ProfileFilesContract, AQuotedValueLosesItsLastCharacterWhenItJustFits) {
  EXPECT_EQ(valueIn("[s]\r\nk='abc'\r\n", "s", "k", 5), "abc");
  EXPECT_EQ(valueIn("[s]\r\nk='abc'\r\n", "s", "k", 4), "ab");
  EXPECT_EQ(valueIn("[s]\r\nk='abc'\r\n", "s", "k", 3), "ab");
}

// --- Reading: lines and encodings

TEST_F(ProfileFilesContract, TheLastLineNeedsNoEnd) {
  EXPECT_EQ(valueIn("[s]\r\nk=v", "s", "k"), "v");
}

TEST_F(ProfileFilesContract, LfOrCrAloneEndALine) {
  EXPECT_EQ(valueIn("[s]\na=1\nk=v\n", "s", "k"), "v");
  EXPECT_EQ(valueIn("[s]\ra=1\rk=v\r", "s", "k"), "v");
  EXPECT_EQ(valueIn("[s]\r\na=1\rk=v\r\n", "s", "a"), "1");
  EXPECT_EQ(valueIn("[s]\r\r\na=1\r\r\nk=v\r\r\n", "s", "k"), "v");
}

TEST_F(ProfileFilesContract, AnEmptyFileHasNothing) {
  EXPECT_EQ(valueIn("", "s", "k"), "<missing>");
  EXPECT_EQ(valueIn(" \r\n", "", ""), "<missing>");
}

TEST_F(ProfileFilesContract, Utf16WithItsMarkIsRead) {
  using namespace std::string_literals;
  EXPECT_EQ(valueIn("\xFF\xFE[\0s\0]\0\n\0k\0=\0\xE8\0"s, "s", "k"), "\u00E8");
  EXPECT_EQ(valueIn("\xFE\xFF\0[\0s\0]\0\n\0k\0=\0\xE8"s, "s", "k"), "\u00E8");
}

TEST_F(ProfileFilesContract, Utf16WithoutMarkIsNotRecognised) {
  using namespace std::string_literals;
  EXPECT_EQ(valueIn("[\0s\0]\0\n\0k\0=\0v\0"s, "s", "k"), "<missing>");
}

TEST_F(ProfileFilesContract, Utf8WithItsMarkIsRead) {
  EXPECT_EQ(valueIn("\xEF\xBB\xBF[s]\r\nk=\xC3\xA8\r\n", "s", "k"), "\u00E8");
}

TEST_F(ProfileFilesContract, ANulCutsTheValue) {
  using namespace std::string_literals;
  EXPECT_EQ(valueIn("[s]\r\nk=a\0b\r\nz=2\r\n"s, "s", "k"), "a");
  EXPECT_EQ(valueIn("[s]\r\nk=a\0b\r\nz=2\r\n"s, "s", "z"), "2");
}

// --- Reading: defaults, files and places

TEST_F(ProfileFilesContract, TheDefaultLosesTrailingBlanksAndOuterQuotes) {
  EXPECT_EQ(defaultAs("a "), "a");
  EXPECT_EQ(defaultAs(" a "), " a");
  EXPECT_EQ(defaultAs("'a'"), "a");
  EXPECT_EQ(defaultAs("\"a\" "), "a");
  EXPECT_EQ(defaultAs("\"a"), "\"a");
  EXPECT_EQ(defaultAs("abc", 3), "ab");
  EXPECT_EQ(defaultAs(""), "");
}

TEST_F(ProfileFilesContract, TheDefaultIsForMissingFilesFoldersSectionsAndKeys) {
  const std::string folder = world().folder();
  const auto value = [&](const std::string& name) {
    return machine().profiles.readValue("s", "k", "d", kSize, name);
  };
  EXPECT_EQ(value(path("none.ini")), "d");
  EXPECT_EQ(value(path("none\\a.ini")), "d");
  EXPECT_EQ(value(folder), "d");
  EXPECT_EQ(valueIn("[s]\r\nz=1\r\n", "s", "k"), "<missing>");
  EXPECT_EQ(valueIn("[t]\r\nk=1\r\n", "s", "k"), "<missing>");
}

TEST_F(ProfileFilesContract, AFileHeldWithoutReadSharingGivesTheDefault) {
  CONTRACT_NEEDS(Ability::HoldFiles, "files cannot be held against others here");
  ASSERT_EQ(valueIn("[s]\r\nk=v\r\n", "s", "k"), "v");
  {
    const auto held = world().hold(file(), {.read = false, .write = true, .remove = true});
    EXPECT_EQ(machine().profiles.readValue("s", "k", "d", kSize, file()), "d");
  }
  EXPECT_EQ(machine().profiles.readValue("s", "k", "d", kSize, file()), "v");
}

TEST_F(ProfileFilesContract, AChangeByOthersIsSeenAtOnce) {
  for (int i = 0; i < 20; ++i) {
    const std::string number = std::to_string(i);
    ASSERT_EQ(valueIn("[s]\r\nk=" + number + "\r\n", "s", "k"), number);
  }
}

TEST_F(ProfileFilesContract, ABareNameMeansTheWindowsFolder) {
  std::string windows;
  ASSERT_EQ(machine().system.systemWindowsFolder(windows), system_code::kSuccess);
  const std::string name = "TrelvContract.ini";
  ASSERT_NE(machine().profiles.writeValue("s", "k", "v", name), 0U);
  EXPECT_EQ(world().fileBytes(windows + "\\" + name), "[s]\r\nk=v\r\n");
  EXPECT_EQ(machine().profiles.readValue("s", "k", "", kSize, name), "v");
  EXPECT_EQ(machine().profiles.readValue("s", "k", "", kSize, windows + "\\" + name), "v");
  EXPECT_EQ(machine().files.removeFile(windows + "\\" + name), system_code::kSuccess);
}

TEST_F(ProfileFilesContract, APathThatTheCodePageLacksIsNotFound) {
  const std::string name = putFile("\u4E2D.ini", "[s]\r\nk=v\r\n");
  EXPECT_EQ(machine().profiles.readValue("s", "k", "d", kSize, name), "d");
  EXPECT_EQ(machine().profiles.writeValue("s", "k", "w", name), 0U);
  EXPECT_EQ(world().fileBytes(name), "[s]\r\nk=v\r\n");
}

TEST_F(ProfileFilesContract, AccentedPathsWork) {
  const std::string name = path("citt\u00E0.ini");
  ASSERT_NE(machine().profiles.writeValue("s", "k", "v", name), 0U);
  EXPECT_EQ(machine().profiles.readValue("s", "k", "", kSize, name), "v");
  EXPECT_TRUE(world().exists(name));
}

TEST_F(ProfileFilesContract, ForwardSlashesWork) {
  ASSERT_EQ(valueIn("[s]\r\nk=v\r\n", "s", "k"), "v");
  std::string slashes = file();
  for (char& character : slashes) {
    if (character == '\\') character = '/';
  }
  EXPECT_EQ(machine().profiles.readValue("s", "k", "", kSize, slashes), "v");
}

// --- Writing

TEST_F(ProfileFilesContract, ANewFileHasSectionAndKeyAlone) {
  EXPECT_EQ(writtenNew("S", "k", "v"), "[S]\r\nk=v\r\n");
}

TEST_F(ProfileFilesContract, ANewKeyGoesToTheEndOfItsSection) {
  EXPECT_EQ(afterWrite("[S]\r\nx=1\r\n;c\r\n\r\n[b]\r\ny=2\r\n", "s", "k", "v"),
            "[S]\r\nx=1\r\n;c\r\nk=v\r\n[b]\r\ny=2\r\n");
}

TEST_F(ProfileFilesContract, ANewSectionGoesToTheEndOfTheFile) {
  EXPECT_EQ(afterWrite("[a]\r\nx=1", "S", "k", "v"), "[a]\r\nx=1\r\n[S]\r\nk=v\r\n");
  EXPECT_EQ(afterWrite("[a]\r\nx=1\r\n\r\n", "S", "k", "v"), "[a]\r\nx=1\r\n[S]\r\nk=v\r\n");
}

TEST_F(ProfileFilesContract, AnExistingKeyKeepsSpellingAndPlace) {
  EXPECT_EQ(afterWrite("[S]\r\nKey=1\r\nz=2\r\n", "s", "KEY", "v"), "[S]\r\nKey=v\r\nz=2\r\n");
}

TEST_F(ProfileFilesContract, AChangeTidiesTheWholeFile) {
  EXPECT_EQ(afterWrite("\n[ S ] junk\n  K = 1\n; c\nbare\n\n[b]\ny = 2", "S", "k", "v"),
            "[S]\r\nK=v\r\n; c\r\nbare\r\n[b]\r\ny=2\r\n");
}

TEST_F(ProfileFilesContract, AnEqualValueLeavesTheFileAsItIs) {
  EXPECT_EQ(afterWrite("[S]\n  K = v\n; c\n\n", "S", "k", "v"), "[S]\n  K = v\n; c\n\n");
  EXPECT_EQ(afterWrite("[S]\nk=\"v\"\n", "S", "k", "\"v\""), "[S]\nk=\"v\"\n");
  EXPECT_EQ(afterWrite("[S]\nk=\n", "S", "k", ""), "[S]\nk=\n");
}

TEST_F(ProfileFilesContract, AValueThatDiffersInQuotesOrCaseIsWritten) {
  EXPECT_EQ(afterWrite("[S]\n  K = \"v\"\n", "S", "k", "v"), "[S]\r\nK=v\r\n");
  EXPECT_EQ(afterWrite("[S]\nk=V\n", "S", "k", "v"), "[S]\r\nk=v\r\n");
}

TEST_F(ProfileFilesContract, AnEmptyValueKeepsTheKey) {
  EXPECT_EQ(afterWrite("[S]\r\nk=1\r\n", "S", "k", ""), "[S]\r\nk=\r\n");
  EXPECT_EQ(writtenNew("S", "k", ""), "[S]\r\nk=\r\n");
}

TEST_F(ProfileFilesContract, ABareLineIsReplaced) {
  EXPECT_EQ(afterWrite("[S]\r\nk\r\n", "S", "k", "v"), "[S]\r\nk=v\r\n");
}

TEST_F(ProfileFilesContract, LeadingBlanksOfAValueAreDropped) {
  EXPECT_EQ(writtenNew("S", "k", "  \tv"), "[S]\r\nk=v\r\n");
}

TEST_F(ProfileFilesContract, QuotesAreWrittenAsGivenAndLostAtTheNextRead) {
  EXPECT_EQ(writtenNew("S", "k", "\" v \""), "[S]\r\nk=\" v \"\r\n");
  EXPECT_EQ(machine().profiles.readValue("S", "k", "", kSize, path("new.ini")), " v ");
}

TEST_F(ProfileFilesContract, ALineEndInAValueMakesAFurtherLine) {
  EXPECT_EQ(writtenNew("S", "k", "a\r\nb=2"), "[S]\r\nk=a\r\nb=2\r\n");
  EXPECT_EQ(machine().profiles.readValue("S", "b", "", kSize, path("new.ini")), "2");
}

TEST_F(ProfileFilesContract, AnEmptyKeyIsWrittenWithoutName) {
  EXPECT_EQ(afterWrite("[S]\r\nk=1\r\n", "S", "", "v"), "[S]\r\nk=1\r\n=v\r\n");
}

TEST_F(ProfileFilesContract, AnEmptySectionIsWrittenAboveTheFirst) {
  EXPECT_EQ(afterWrite("[S]\r\nz=1\r\n", "", "k", "v"), "k=v\r\n[S]\r\nz=1\r\n");
}

TEST_F(ProfileFilesContract, OnlyTheFirstOfEqualSectionsIsWritten) {
  EXPECT_EQ(afterWrite("[S]\r\na=1\r\n[s]\r\nk=1\r\n", "S", "k", "v"),
            "[S]\r\na=1\r\nk=v\r\n[s]\r\nk=1\r\n");
}

TEST_F(ProfileFilesContract, ValuesAreWrittenInTheCodePage) {
  EXPECT_EQ(writtenNew("S", "k", "perch\u00E9 10 \u20AC"), "[S]\r\nk=perch\xE9 10 \x80\r\n");
}

TEST_F(ProfileFilesContract, WhatTheCodePageLacksIsWrittenAsAQuestionMark) {
  EXPECT_EQ(writtenNew("S", "k", "a\u4E2Db\u0416"), "[S]\r\nk=a?b?\r\n");
}

TEST_F(ProfileFilesContract, Utf8WithItsMarkStaysSo) {
  EXPECT_EQ(afterWrite("\xEF\xBB\xBF[s]\r\nk=\xC3\xA0\r\n", "s", "z", "\u00E8"),
            "\xEF\xBB\xBF[s]\r\nk=\xC3\xA0\r\nz=\xC3\xA8\r\n");
}

TEST_F(ProfileFilesContract, Utf16WithItsMarkStaysSo) {
  using namespace std::string_literals;
  EXPECT_EQ(afterWrite("\xFF\xFE[\0s\0]\0\r\0\n\0"s, "s", "z", "\u00E8"),
            "\xFF\xFE[\0s\0]\0\r\0\n\0z\0=\0\xE8\0\r\0\n\0"s);
}

TEST_F(ProfileFilesContract, WritingWithoutFolderFails) {
  EXPECT_EQ(machine().profiles.writeValue("S", "k", "v", path("none\\a.ini")), 0U);
  EXPECT_FALSE(world().exists(path("none")));
}

TEST_F(ProfileFilesContract, WritingOntoAFolderFails) {
  EXPECT_EQ(machine().profiles.writeValue("S", "k", "v", world().folder()), 0U);
}

TEST_F(ProfileFilesContract, WritingAReadOnlyFileFails) {
  CONTRACT_NEEDS(Ability::ReadOnlyRefusesWriting, "this user may write read-only files");
  world().putFile(file(), "[S]\r\nk=1\r\n");
  ASSERT_EQ(machine().files.setReadOnly(file(), true), system_code::kSuccess);
  EXPECT_EQ(machine().profiles.writeValue("S", "k", "v", file()), 0U);
  EXPECT_EQ(world().fileBytes(file()), "[S]\r\nk=1\r\n");
}

TEST_F(ProfileFilesContract, WritingAFileHeldWithoutWriteSharingFails) {
  CONTRACT_NEEDS(Ability::HoldFiles, "files cannot be held against others here");
  world().putFile(file(), "[S]\r\nk=1\r\n");
  {
    const auto held = world().hold(file(), {.read = true, .write = false, .remove = true});
    EXPECT_EQ(machine().profiles.writeValue("S", "k", "v", file()), 0U);
  }
  EXPECT_EQ(world().fileBytes(file()), "[S]\r\nk=1\r\n");
}

}  // namespace
}  // namespace trelv::contract
