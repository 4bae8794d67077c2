#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "decoder/EntryName.h"
#include "support/Texts.h"

namespace trelv::decoder {
namespace {

std::string repeated(const std::string& text, int times) {
  std::string result;
  for (int count = 0; count < times; ++count) {
    result += text;
  }
  return result;
}

/// Names as they are stored, and the paths that are made of them.
const std::vector<std::pair<std::string, std::string>> kAccepted{
    {"prg/com/setup/", "prg/com/setup"},
    {"a b/perché.txt", "a b/perché.txt"},
    {" a", " a"},
    // Points and empty names between count for nothing.
    {"./prg/a.zip", "prg/a.zip"},
    {"a//b/./c//", "a/b/c"},
    {"./", ""},
    {".", ""},
    {"", ""},
    {"a/" + repeated("x", 255), "a/" + repeated("x", 255)}};

/// Names that are taken as they are, though most look like some that are not.
const std::string kHarmless =
    "prg/com/setup/aggdovra/nerio.zip Ω/😀.zip .a ..a CONS COM COM10 COMA LPT NULL.txt a.CON "
    "console CONIN xCON ~a a~ a~b longername~1 "
    "a~1.text ~$a.doc a~1b perchéun~1 a~1.àèìò a/~qalbunex1.tmp qalbunex "
    "\xED\x9F\xBF\xEE\x80\x80\xF4\x8F\xBF\xBF";

TEST(EntryName, OfAPackAsTarMakesItIsKept) {
  const auto expectPath = [](const std::string& stored, const std::string& path) {
    const EntryName name = readEntryName(stored);
    EXPECT_EQ(name.refusal, nullptr) << stored << ": " << name.refusal;
    EXPECT_EQ(name.path, path);
  };
  for (const auto& [stored, path] : kAccepted) {
    expectPath(stored, path);
  }
  for (const std::string& name : tests::wordsOf(kHarmless)) {
    expectPath(name, name);
  }
}

TEST(EntryName, LengthIsCountedAsWindowsCounts) {
  EXPECT_EQ(readEntryName("./ab//c").length, 4U);
  EXPECT_EQ(readEntryName("perché").length, 6U);
  EXPECT_EQ(readEntryName("😀").length, 2U);
}

struct Refused {
  const char* reason;
  std::vector<std::string> names;
};

const std::vector<Refused> kRefused{
    {"percorso assoluto",
     {"/e", "//srv/share/e", "/", "\\e", "\\\\srv\\share\\e", "\\\\?\\C:\\e", "\\\\.\\COM1",
      "C:\\e", "C:/e", "c:e", "Z:"}},
    {"percorso che risale", {"..", "../e", "a/../../e", "a/..", "./../e", "a/b/../c"}},
    {"carattere che Windows non ammette",
     {"a\\b", "a\\..\\..\\e", "a/C:/e", "a.txt:stream", "a/b::$DATA", "a?", "a*b", "<a", "a>",
      "a|b", "\"a\"", "a\nb", "a\tb", "\x01", "a/\x1F", std::string("a\0b", 3)}},
    {"nome che termina con uno spazio o un punto",
     {"a ", "a.", "a. ", "a./b", "a /b", "...", ".. ", "a/.. /b", "a/.../b", "prg.", "CON ",
      "SETUP~1."}},
    {"nome di un dispositivo",
     {"CON",    "con",     "Prn",    "AUX",      "NUL",     "nul.txt", "a/NUL/b",  "con.tar.gz",
      "COM1",   "COM9.x",  "COM0",   "lpt1",     "LPT9",    "COM¹",    "lpt².txt", "LPT³",
      "CONIN$", "conout$", "CLOCK$", "NUL .txt", "aux  .a", " CON"}},
    {"nome che può valere come nome breve di un altro",
     {"PROGRA~1", "progra~1.exe", "A~1", "~1", "a/ABCDE~12.TXT/b", "1234~567.c",
      // Letters count, not bytes.
      "CITTÀV~1", "ÀÈÌÒÙÀ~1.ÀÈÌ", "😀😀😀~1"}},
    {"nome che non è in UTF-8",
     {"perch\xE9.txt",     // an old code page
      "\x80",              // a byte from the middle
      "a\xC3",             // cut off
      "\xC0\xAF",          // "/" in two bytes
      "\xE0\x80\xAF",      // "/" in three
      "\xF0\x80\x80\xAF",  // "/" in four
      "\xC1\x81",          // "A" in two
      "\xED\xA0\x80",      // half of a pair
      "\xF4\x90\x80\x80",  // behind the last character
      "\xF8\x88\x80\x80\x80", "\xFF", "a/\xE2\x82/b"}},
    // More than 255 units.
    {"nome troppo lungo", {"a/" + repeated("x", 256), repeated("😀", 128)}},
    {"nome riservato ai file temporanei", {"~qalbunex1.tmp/a", "./~QALBUNEX9"}}};

TEST(EntryName, ThatWindowsTakesForSomethingElseIsRefused) {
  for (const Refused& row : kRefused) {
    for (const std::string& stored : row.names) {
      const EntryName name = readEntryName(stored);
      EXPECT_STREQ(name.refusal, row.reason) << stored;
      EXPECT_EQ(name.path, "") << stored;
    }
  }
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
