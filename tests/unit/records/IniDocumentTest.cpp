#include <gtest/gtest.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "records/IniDocument.h"
#include "support/Allocated.h"

namespace trelv {
namespace {

using namespace std::string_literals;

/// What a text has at a key, "k" of section "s" unless others are given.
struct Lookup {
  std::string text;
  std::string value;
  std::string section = "s";
  std::string key = "k";
};

constexpr const char* kMissing = "<missing>";

void expectValues(const std::vector<Lookup>& rows) {
  for (const Lookup& row : rows) {
    const IniDocument document(row.text);
    EXPECT_EQ(document.value(row.section, row.key).value_or(kMissing), row.value)
        << row.text << " [" << row.section << "] " << row.key;
  }
}

TEST(IniDocument, ValueStandsInItsSection) {
  const std::string text = "[prod01]\r\nconf=a.ini\r\n[prod02]\r\nconf=b.ini\r\n";
  expectValues({{text, "a.ini", "prod01", "conf"},
                {text, "b.ini", "prod02", "conf"},
                {text, kMissing, "prod03", "conf"},
                {text, kMissing, "prod01", "id"},
                {"[a]\nk=1\n[s]\nx=2\n", kMissing},
                {"", kMissing},
                {"", kMissing, "", ""}});
}

TEST(IniDocument, NamesMatchWithoutRegardToCaseOfAsciiLetters) {
  expectValues({{"[SetUp01]\nServer01=x\n", "x", "SETUP01", "server01"},
                {"[S@]\nk[=x\n", kMissing, "s`", "k["}});
}

TEST(IniDocument, BlanksRoundNamesAndValuesAreDroppedAndOtherBytesStay) {
  expectValues({{" \t[ s\t] \r\n \tk \t= \tv w\t \r\n", "v w"},
                {"[s]\nk=v\n", "v", " s\t", "\r\nk "},
                {"[s]\nk=\xA0v\xA0\n", "\xA0v\xA0"},
                {"[s]\nk=perch\xE9 \x80 \x81\n", "perch\xE9 \x80 \x81"}});
}

TEST(IniDocument, OnePairOfEqualOuterQuotesIsRemoved) {
  expectValues({{"[s]\nk=\" v \"\n", " v "},
                {"[s]\nk=' v ' \n", " v "},
                {"[s]\nk=\"\"v\"\"\n", "\"v\""},
                {"[s]\nk=\"'v'\"\n", "'v'"},
                {"[s]\nk=\"\"\n", ""},
                // Of a command that begins and ends with one, too.
                {"[s]\nk=\"C:\\A B\\x.exe\" /s \"y z\"\n", "C:\\A B\\x.exe\" /s \"y z"},
                {"[s]\nk=\"C:\\A B\\x.exe\" /s\n", "\"C:\\A B\\x.exe\" /s"},
                // Unequal ones and single ones stay.
                {"[s]\nk=\"v'\n", "\"v'"},
                {"[s]\nk=\"v\n", "\"v"},
                {"[s]\nk=\"\n", "\""}});
}

TEST(IniDocument, AKeyEndsAtItsFirstEqualSignAndMayHaveNoName) {
  expectValues({{"[s]\nk= \n", ""}, {"[s]\nk=b=c\n", "b=c"}, {"[s]\n=v\n", "v", "s", ""}});
}

TEST(IniDocument, CommentsAndLinesWithoutEqualSignHaveNoValue) {
  expectValues({{"[s]\n;k=1\n ; k=2\nk=3 ; rest\n", "3 ; rest"},
                {"[s]\n#k=1\n", kMissing},
                {"[s]\nk\n", kMissing},
                // It hides later ones.
                {"[s]\nk\nk=v\n", kMissing}});
}

TEST(IniDocument, OfEqualKeysAndSectionsTheFirstWins) {
  expectValues({{"[s]\nk=1\nK=2\n", "1"},
                {"[s]\nk=\nk=2\n", ""},
                {"[s]\nx=1\n[S]\nk=2\n", kMissing},
                {"[s]\nk=1\n[t]\nk=2\n[ s ]\nk=3\n[t]\nz=4\n", kMissing, "t", "z"}});
}

TEST(IniDocument, LinesBeforeTheFirstSectionHaveTheEmptyOne) {
  expectValues({{"k=v\n[s]\n", "v", ""}, {"k=v\n[s]\n", "v", " "}, {"[]\nk=v\n", kMissing, ""}});
}

TEST(IniDocument, ASectionEndsAtTheLastBracketOfItsLine) {
  expectValues({{"[s] junk\nk=v\n", "v"},
                {"[s] junk]\nk=v\n", kMissing},
                {"[s] junk]\nk=v\n", "v", "s] junk"},
                // Without one it is an ordinary line.
                {"[s]\n[t\nk=v\n", "v"},
                {"[s]\n[t=1\n", "1", "s", "[t"}});
}

TEST(IniDocument, LinesEndWithCrLfOrLfAndTheLastNeedsNone) {
  expectValues(
      {{"[s]\nx=1\nk=v", "v"}, {"[s]\r\nx=1\r\nk=v", "v"}, {"\r\n\n[s]\r\n\nk=v\r\n", "v"}});
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
  constexpr int kSections = 300;
  constexpr int kKeys = 20;
  const auto numbered = [](const char* word, int n) { return word + std::to_string(n); };
  std::string text;
  for (int n = 0; n < kSections * kKeys; ++n) {
    text += n % kKeys == 0 ? numbered("[Update", n / kKeys) + "]\r\n" : "";
    text += numbered("Server", n % kKeys) + numbered("=", n) + "\r\n";
  }
  const IniDocument document(text);
  for (int n = 0; n < kSections * kKeys; ++n) {
    EXPECT_EQ(document.value(numbered("UPDATE", n / kKeys), numbered("server", n % kKeys)),
              std::to_string(n));
  }
  EXPECT_EQ(document.value("Update300", "Server0"), std::nullopt);
  EXPECT_EQ(document.value("Update0", "Server20"), std::nullopt);
}

// --- What it can be asked

TEST(IniDocument, OfALargeFileTakesLittleMoreMemoryThanTheFile) {
  std::string text = "[s]\n";
  while (text.size() < 1'000'000) {
    text += "k" + std::to_string(text.size()) + "=" + std::string(1000, 'v') + "\n";
  }
  const std::size_t length = text.size();
  const std::size_t before = tests::allocated();
  const IniDocument document(std::move(text));
  EXPECT_EQ(document.value("s", "k4"), std::string(1000, 'v'));
  EXPECT_LT(tests::allocated() - before, length / 2);
}

TEST(IniDocument, UnderstandsPlainAnsiText) {
  for (const char* const text :
       {"", "[s]\r\nk = v\r\n", "[s]\nk=perch\xE9\tx\x80\xFF\x7F\n", "\xFF", "x\xEF\xBB\xBF"}) {
    EXPECT_TRUE(IniDocument::understands(text)) << text;
  }
}

TEST(IniDocument, LeavesOtherTextToThePlatform) {
  for (const std::string& text : {// Marks of an encoding.
                                  "\xEF\xBB\xBF[s]\r\nk=v\r\n"s, "\xFF\xFE[s]\r\nk=v\r\n"s,
                                  "\xFE\xFF[s]\r\nk=v\r\n"s, "\xFF\xFE"s,
                                  // NULs.
                                  "[s]\r\nk=a\0b\r\n"s, "[\0s\0]\0"s, "\0"s,
                                  // A CR on its own.
                                  "[s]\rk=v\r"s, "[s]\r\nk=v\r"s, "[s]\r\r\nk=v"s}) {
    EXPECT_FALSE(IniDocument::understands(text)) << text;
  }
  for (char code = 1; code < ' '; ++code) {
    const bool plain = code == '\t' || code == '\n';
    EXPECT_EQ(IniDocument::understands("[s]\r\nk=a"s + code + "b\r\n"), plain)
        << static_cast<int>(code);
  }
}

TEST(IniDocument, LeavesNamesBeyondAsciiToThePlatform) {
  EXPECT_TRUE(IniDocument::canFind("Setup01", "Server01"));
  EXPECT_TRUE(IniDocument::canFind("", ""));
  EXPECT_FALSE(IniDocument::canFind("citt\u00E0", "k"));
  EXPECT_FALSE(IniDocument::canFind("s", "perch\u00E9"));
}

}  // namespace
}  // namespace trelv
