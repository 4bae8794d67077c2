#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "decoder/Extraction.h"
#include "support/decoder/DecoderPacks.h"
#include "unit/decoder/Lay.h"

namespace trelv::decoder {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;

/// Unpacks into an empty folder; a refused pack must leave it empty.
std::string refusalOf(const std::string& packBytes) {
  MemoryTree tree;
  const std::string refusal = extracted(packBytes, tree);
  if (!refusal.empty()) {
    EXPECT_THAT(tree.names(), IsEmpty());
  }
  return refusal;
}

std::string refusalOf(const TarBytes& archive) { return refusalOf(pack(archive)); }

/// The pack with a good file before and behind what is tested.
TarBytes between(char type, const std::string& name, const std::string& link = "") {
  return TarBytes().file("first.zip", "1").entry(name, type, "", link).file("last.zip", "2");
}

TEST(Extraction, WritesTheTreeOfThePack) {
  MemoryTree tree;
  const std::string large(700000, 'x');
  EXPECT_EQ(extracted(pack(TarBytes()
                               .folder("prg/")
                               .folder("prg/com/")
                               .file("prg/com/a.zip", "content of a")
                               .file("prg/com/b.zip", large)
                               .file("empty.txt", "")),
                      tree),
            "");
  EXPECT_THAT(tree.names(),
              ElementsAre("empty.txt", "prg/", "prg/com/", "prg/com/a.zip", "prg/com/b.zip"));
  EXPECT_EQ(tree.at("prg/com/a.zip").content, "content of a");
  EXPECT_TRUE(tree.at("prg/com/b.zip").content == large);
}

TEST(Extraction, FilesKeepTheirTimes) {
  MemoryTree tree;
  EXPECT_EQ(extracted(pack(TarBytes()
                               .file("plain", "")
                               .pax({{"mtime", "1767323045.25"}})
                               .file("exact", "")
                               .pax({{"mtime", "-99999999999"}})
                               .file("ancient", "")
                               .pax({{"mtime", "-1"}})
                               .file("old", "")
                               .pax({{"mtime", "900000000000"}})
                               .file("last", "")
                               .pax({{"mtime", "9000000000000"}})
                               .file("far", "")),
                      tree),
            "");
  // 2026-01-02 03:04:05 UTC.
  EXPECT_EQ(tree.at("plain").modified, 134117966450000000U);
  EXPECT_EQ(tree.at("exact").modified, 134117966452500000U);
  EXPECT_EQ(tree.at("ancient").modified, 0U);
  // The last second of 1969; the last one that is kept; and one that no file time can tell.
  EXPECT_EQ(tree.at("old").modified, 116444735990000000U);
  EXPECT_EQ(tree.at("last").modified, 9116444736000000000U);
  EXPECT_EQ(tree.at("far").modified, 0U);
}

TEST(Extraction, FoldersAreMadeOnceHoweverThePackNamesThem) {
  const std::pair<TarBytes, std::vector<std::string>> rows[]{
      {TarBytes(), {}},
      {TarBytes().file("a/b/c.zip", "1").file("a/d/e.zip", "2"),
       {"a/", "a/b/", "a/b/c.zip", "a/d/", "a/d/e.zip"}},
      // A pack of the work folder itself.
      {TarBytes().folder("./").folder("./prg/").file("./prg/a", "1"), {"prg/", "prg/a"}},
      {TarBytes().folder("prg").folder("prg/").file("PRG/a", "1"), {"prg/", "prg/a"}}};
  for (const auto& [archive, names] : rows) {
    MemoryTree tree;
    EXPECT_EQ(extracted(pack(archive), tree), "");
    EXPECT_EQ(tree.names(), names);
  }
}

TEST(Extraction, WhatStandsIsOverwrittenAndTheRestKept) {
  MemoryTree tree;
  lay(tree, {"prg/", "prg/mine"});
  tree.put("prg/a.zip", "old", true);
  EXPECT_EQ(extracted(pack(TarBytes().file("prg/a.zip", "new")), tree), "");
  EXPECT_EQ(tree.at("prg/a.zip").content, "new");
  EXPECT_EQ(tree.at("prg/mine").content, "old");
}

TEST(Extraction, LongNamesOfGnuAndPaxAreRead) {
  const std::string longName = std::string(90, 'd') + "/" + std::string(90, 'f') + ".zip";
  MemoryTree tree;
  EXPECT_EQ(extracted(pack(TarBytes()
                               .gnuName("g/" + longName)
                               .file("cut", "1")
                               .pax({{"path", "p/" + longName}})
                               .file("cut", "2")),
                      tree),
            "");
  EXPECT_EQ(tree.at("g/" + longName).content, "1");
  EXPECT_EQ(tree.at("p/" + longName).content, "2");
}

TEST(Extraction, NamesAreUtf8InEveryKindOfHeader) {
  MemoryTree tree;
  EXPECT_EQ(extracted(pack(TarBytes()
                               .file("perché.zip", "1")
                               .gnuName("così.zip")
                               .file("x", "2")
                               .pax({{"path", "più Ω 😀.zip"}})
                               .file("x", "3")),
                      tree),
            "");
  EXPECT_THAT(tree.names(), ElementsAre("così.zip", "perché.zip", "più Ω 😀.zip"));
  EXPECT_NE(refusalOf(between('0', "perch\xE9.zip")), "");
  EXPECT_NE(refusalOf(TarBytes().pax({{"path", "perch\xE9"}}).file("x", "")), "");
  EXPECT_NE(refusalOf(TarBytes().gnuName("perch\xE9").file("x", "")), "");
}

TEST(Extraction, HostileNamesAreRefusedInEveryKindOfHeader) {
  for (const std::string name : {"../e", "/e", "C:\\e", "a/NUL", "a:b", "a\\b", "a ", "PROGRA~1"}) {
    for (const TarBytes& archive : {between('0', name), between('5', name),
                                    TarBytes().file("a", "").gnuName(name).file("x", ""),
                                    TarBytes().file("a", "").pax({{"path", name}}).file("x", "")}) {
      EXPECT_THAT(refusalOf(archive), HasSubstr("\"" + name + "\""));
    }
  }
}

TEST(Extraction, WhatIsNoFileOrFolderOfItsOwnNameIsRefused) {
  const std::string link = "collegamento: \"l\"";
  const std::string twice = "nome presente due volte nel pacco: ";
  const std::string noFile = "voce che non è né un file né una cartella: \"d\"";
  const std::pair<TarBytes, std::string> rows[]{
      {between('0', "../e"), "percorso che risale: \"../e\""},
      {between('2', "l", "/etc"), link},
      {between('2', "l", "first.zip"), link},
      {between('2', "l", ""), link},
      {between('1', "l", "first.zip"), link},
      {TarBytes().file("first", "").entry("l", '1', "content", "first"), link},
      {TarBytes().pax({{"linkpath", "x"}}).entry("l", '2'), link},
      {between('3', "d"), noFile},
      {between('4', "d"), noFile},
      {between('6', "d"), noFile},
      {between('0', "."), "file senza nome: \".\""},
      {TarBytes().file("a.zip", "1").file("A.ZIP", "2"), twice + "\"A.ZIP\""},
      {TarBytes().file("a.zip", "1").file("a.zip", "1"), twice + "\"a.zip\""},
      // A file and a folder of one name, in any order.
      {TarBytes().file("a", "1").folder("A/"), twice + "\"A\""},
      {TarBytes().folder("a").file("A", "1"), twice + "\"A\""},
      {TarBytes().file("a", "1").file("A/b", "2"), twice + "\"A\""},
      // The name is shown as one short line.
      {TarBytes().pax({{"path", "a\n\x1B[2J"}}).file("x", ""),
       "carattere che Windows non ammette: \"a??[2J\""},
      {between('0', "../\x7F"), "percorso che risale: \"../?\""},
      {TarBytes().pax({{"path", std::string(5000, 'x')}}).file("x", ""),
       "nome troppo lungo: \"" + std::string(200, 'x') + "...\""}};
  for (const auto& [archive, refusal] : rows) {
    EXPECT_EQ(refusalOf(archive), refusal);
  }
}

TEST(Extraction, APathThatIsTooLongForOtherProgramsIsRefused) {
  MemoryTree tree;
  tree.longest = 10;
  EXPECT_EQ(extracted(pack(TarBytes().file("abcd/efghi", "")), tree), "");
  EXPECT_EQ(extracted(pack(TarBytes().file("abcd/efghij", "")), tree),
            "percorso troppo lungo: \"abcd/efghij\"");
}

TEST(Extraction, AnArchiveCutOffAnywhereIsRefused) {
  const std::string archive = TarBytes().file("a", std::string(600, 'a')).folder("b").whole();
  // Up to the first of the two blocks that end it.
  for (std::size_t length = 0; length <= 512 + 1024 + 512 + 1023; length += 1 + length % 97) {
    EXPECT_NE(refusalOf(gzip(archive.substr(0, length))), "") << length;
  }
  EXPECT_EQ(refusalOf(gzip(archive.substr(0, 512 + 1024 + 512 + 1024))), "");
  EXPECT_EQ(refusalOf(gzip(archive.substr(0, 512 + 1024))), "archivio tar senza la sua fine");
}

TEST(Extraction, WhatFollowsTheEndOfTheArchiveIsRefusedUnlessItIsZeros) {
  const std::string archive = TarBytes().file("a", "").whole();
  const std::string zeros(400000, '\0');
  EXPECT_EQ(refusalOf(gzip(archive + zeros)), "");
  for (const std::string& more : {TarBytes().file("hidden", "x").whole(), zeros + "x"}) {
    EXPECT_EQ(refusalOf(gzip(archive + more)), "dati estranei dopo la fine dell'archivio tar");
  }
}

TEST(Extraction, DamageBehindTheLastFileIsStillNoticed) {
  std::string bytes = pack(TarBytes().file("a", "1"));
  bytes[bytes.size() - 8] = static_cast<char>(bytes[bytes.size() - 8] ^ 1);
  EXPECT_EQ(refusalOf(bytes), "pacco danneggiato (incorrect data check)");
}

TEST(Extraction, OtherThingsThanTarAndDamagedHeadersAreRefused) {
  std::string damaged = TarBytes().file("a", "1").file("b", "2").whole();
  damaged[1024 + 5] = 'x';
  for (const std::string& content :
       {std::string(), std::string("not tar"), std::string(5000, 'x'), gzip("x"), damaged}) {
    EXPECT_THAT(refusalOf(gzip(content)),
                MatchesRegex("archivio tar non valido \\([A-Z][a-z A-Z]+\\)"));
  }
}

TEST(Extraction, SparseFilesWithHolesAreRefused) {
  const auto sparse = [](const char* size, const char* map, const char* content) {
    return TarBytes().pax({{"GNU.sparse.size", size}, {"GNU.sparse.map", map}}).file("s", content);
  };
  EXPECT_NE(refusalOf(TarBytes()
                          .pax({{"GNU.sparse.size", "1000000000000"},
                                {"GNU.sparse.numblocks", "1"},
                                {"GNU.sparse.offset", "999999999999"},
                                {"GNU.sparse.numbytes", "1"}})
                          .file("s", "x")),
            "");
  // A hole at the end only, and parts that stand in another order.
  EXPECT_EQ(refusalOf(sparse("1000", "0,1", "x")), "file con parti mancanti");
  EXPECT_EQ(refusalOf(sparse("1000", "0,2", "xy")), "file con parti mancanti");
  EXPECT_EQ(refusalOf(sparse("2", "1,1,0,1", "xy")), "file con parti mancanti");
}

TEST(Extraction, MoreContentThanTheLimitIsRefused) {
  MemoryTree tree;
  EXPECT_EQ(extracted(pack(TarBytes().file("a", std::string(500000, '\0'))), tree, 400000),
            "il contenuto supera il limite di dimensione");
  EXPECT_THAT(tree.names(), IsEmpty());
}

TEST(Extraction, ManyEntriesAreNotRemembered) {
  TarBytes archive;
  for (int number = 0; number < 5000; ++number) {
    archive.file("d/f" + std::to_string(number), "");
  }
  MemoryTree tree;
  EXPECT_EQ(extracted(pack(archive), tree), "");
  EXPECT_EQ(tree.names().size(), 5001U);
  // Four calls for a file and a few for the rest: nothing is looked at twice.
  EXPECT_LT(tree.calls(), 5000 * 4);
}

}  // namespace
}  // namespace trelv::decoder
