#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "decoder/EntryName.h"

namespace trelv::decoder {
namespace {

std::string pathOf(const std::string& stored) {
  const EntryName name = readEntryName(stored);
  EXPECT_EQ(name.refusal, nullptr) << stored << ": " << name.refusal;
  return name.path;
}

std::string refusalOf(const std::string& stored) {
  const EntryName name = readEntryName(stored);
  EXPECT_TRUE(name.refusal == nullptr || name.path.empty());
  return name.refusal == nullptr ? "accepted as " + name.path : name.refusal;
}

TEST(EntryName, OfAPackAsTarMakesItIsKept) {
  EXPECT_EQ(pathOf("prg/com/setup/aggdovra/nerio.zip"), "prg/com/setup/aggdovra/nerio.zip");
  EXPECT_EQ(pathOf("prg/com/setup/"), "prg/com/setup");
  EXPECT_EQ(pathOf("a b/perché.txt"), "a b/perché.txt");
  EXPECT_EQ(pathOf("Ω/😀.zip"), "Ω/😀.zip");
}

TEST(EntryName, PointsAndEmptyNamesBetweenCountForNothing) {
  EXPECT_EQ(pathOf("./prg/a.zip"), "prg/a.zip");
  EXPECT_EQ(pathOf("a//b/./c//"), "a/b/c");
  EXPECT_EQ(pathOf("./"), "");
  EXPECT_EQ(pathOf("."), "");
  EXPECT_EQ(pathOf(""), "");
}

TEST(EntryName, LengthIsCountedAsWindowsCounts) {
  EXPECT_EQ(readEntryName("./ab//c").length, 4U);
  EXPECT_EQ(readEntryName("perché").length, 6U);
  EXPECT_EQ(readEntryName("😀").length, 2U);
}

TEST(EntryName, AbsoluteOnesAreRefused) {
  for (const char* name : {"/e", "//srv/share/e", "/", "\\e", "\\\\srv\\share\\e", "\\\\?\\C:\\e",
                           "\\\\.\\COM1", "C:\\e", "C:/e", "c:e", "Z:"}) {
    EXPECT_EQ(refusalOf(name), "percorso assoluto") << name;
  }
}

TEST(EntryName, OnesThatLeadUpwardsAreRefused) {
  for (const char* name : {"..", "../e", "a/../../e", "a/..", "./../e", "a/b/../c"}) {
    EXPECT_EQ(refusalOf(name), "percorso che risale") << name;
  }
}

TEST(EntryName, CharactersThatWindowsDoesNotTakeAreRefused) {
  for (const char* name : {"a\\b", "a\\..\\..\\e", "a/C:/e", "a.txt:stream", "a/b::$DATA", "a?",
                           "a*b", "<a", "a>", "a|b", "\"a\"", "a\nb", "a\tb", "\x01", "a/\x1F"}) {
    EXPECT_EQ(refusalOf(name), "carattere che Windows non ammette") << name;
  }
  EXPECT_EQ(refusalOf(std::string("a\0b", 3)), "carattere che Windows non ammette");
}

TEST(EntryName, BlanksAndPointsAtTheEndOfANameAreRefused) {
  for (const char* name :
       {"a ", "a.", "a. ", "a./b", "a /b", "...", ".. ", "a/.. /b", "a/.../b", "prg.", "CON "}) {
    EXPECT_EQ(refusalOf(name), "nome che termina con uno spazio o un punto") << name;
  }
  EXPECT_EQ(pathOf(".a"), ".a");
  EXPECT_EQ(pathOf(" a"), " a");
  EXPECT_EQ(pathOf("..a"), "..a");
}

TEST(EntryName, DevicesAreRefusedWithAnyExtensionAndInAnyCase) {
  for (const char* name :
       {"CON",    "con",     "Prn",    "AUX",      "NUL",     "nul.txt", "a/NUL/b",  "con.tar.gz",
        "COM1",   "COM9.x",  "COM0",   "lpt1",     "LPT9",    "COM¹",    "lpt².txt", "LPT³",
        "CONIN$", "conout$", "CLOCK$", "NUL .txt", "aux  .a", " CON"}) {
    EXPECT_EQ(refusalOf(name), "nome di un dispositivo") << name;
  }
  for (const char* name :
       {"CONS", "COM", "COM10", "COMA", "LPT", "NULL.txt", "a.CON", "console", "CONIN", "xCON"}) {
    EXPECT_EQ(pathOf(name), name);
  }
}

TEST(EntryName, WhatCouldBeAShortNameIsRefused) {
  for (const char* name :
       {"PROGRA~1", "progra~1.exe", "A~1", "~1", "a/ABCDE~12.TXT/b", "SETUP~1.", "1234~567.c",
        // Letters count, not bytes.
        "CITTÀV~1", "ÀÈÌÒÙÀ~1.ÀÈÌ", "😀😀😀~1"}) {
    const std::string refusal = refusalOf(name);
    EXPECT_TRUE(refusal == "nome che può valere come nome breve di un altro" ||
                refusal == "nome che termina con uno spazio o un punto")
        << name << ": " << refusal;
  }
  for (const char* name : {"~a", "a~", "a~b", "longername~1", "a~1.text", "~$a.doc", "a~1b",
                           "perchéun~1", "a~1.àèìò"}) {
    EXPECT_EQ(pathOf(name), name);
  }
}

TEST(EntryName, OnlyWellFormedUtf8IsTaken) {
  const std::vector<std::string> bad = {"perch\xE9.txt",     // an old code page
                                        "\x80",              // a byte from the middle
                                        "a\xC3",             // cut off
                                        "\xC0\xAF",          // "/" in two bytes
                                        "\xE0\x80\xAF",      // "/" in three
                                        "\xF0\x80\x80\xAF",  // "/" in four
                                        "\xC1\x81",          // "A" in two
                                        "\xED\xA0\x80",      // half of a pair
                                        "\xF4\x90\x80\x80",  // behind the last character
                                        "\xF8\x88\x80\x80\x80",
                                        "\xFF",
                                        "a/\xE2\x82/b"};
  for (const std::string& name : bad) {
    EXPECT_EQ(refusalOf(name), "nome che non è in UTF-8") << name;
  }
  EXPECT_EQ(pathOf("\xED\x9F\xBF\xEE\x80\x80\xF4\x8F\xBF\xBF"),
            "\xED\x9F\xBF\xEE\x80\x80\xF4\x8F\xBF\xBF");
}

TEST(EntryName, ANameOfMoreThan255UnitsIsRefused) {
  EXPECT_EQ(pathOf("a/" + std::string(255, 'x')).size(), 257U);
  EXPECT_EQ(refusalOf("a/" + std::string(256, 'x')), "nome troppo lungo");
  std::string faces;
  for (int count = 0; count < 128; ++count) {
    faces += "😀";
  }
  EXPECT_EQ(refusalOf(faces), "nome troppo lungo");
}

TEST(EntryName, TheDecodersOwnTemporaryNamesAreRefused) {
  EXPECT_EQ(refusalOf("~qalbunex1.tmp/a"), "nome riservato ai file temporanei");
  EXPECT_EQ(refusalOf("./~QALBUNEX9"), "nome riservato ai file temporanei");
  EXPECT_EQ(pathOf("a/~qalbunex1.tmp"), "a/~qalbunex1.tmp");
  EXPECT_EQ(pathOf("qalbunex"), "qalbunex");
}

/// Whatever is accepted must be harmless by rules that are much simpler than the ones tested.
void expectHarmless(const std::string& path, const std::string& stored) {
  const std::string framed = "/" + path + "/";
  for (const char* bad : {"/../", "/./", "//", " /", "./"}) {
    EXPECT_EQ(framed.find(bad), path.empty() && std::string(bad) == "//" ? 0U : std::string::npos)
        << stored;
  }
  EXPECT_EQ(path.find_first_of("\\:*?\"<>|"), std::string::npos) << stored;
  for (const char* device : {"/NUL/", "/NUL.", "/nul/", "/nul.", "/COM1/", "/COM1.", "/CON/"}) {
    EXPECT_EQ(framed.find(device), std::string::npos) << stored;
  }
}

TEST(EntryName, NamesPutTogetherFromHostilePiecesAreRefusedOrHarmless) {
  const std::vector<std::string> pieces = {"..",  ".",   "/",  "\\",  ":",  "C:",   " ",
                                           "NUL", "nul", "~1", "a",   "/",  "COM1", "\xC0\xAF",
                                           "é",   "CON", ".",  "txt", "//", "?"};
  std::uint64_t state = 42;
  int accepted = 0;
  for (int round = 0; round < 20000; ++round) {
    std::string stored;
    for (int count = 0; count < 1 + round % 6; ++count) {
      state = state * 6364136223846793005U + 1442695040888963407U;
      stored += pieces[(state >> 33U) % pieces.size()];
    }
    const EntryName name = readEntryName(stored);
    if (name.refusal == nullptr) {
      ++accepted;
      expectHarmless(name.path, stored);
    }
  }
  EXPECT_GT(accepted, 1000);
}

}  // namespace
}  // namespace trelv::decoder
