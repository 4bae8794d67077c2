#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "base/RuntimeError.h"
#include "decoder/Extraction.h"
#include "kit/ArchiveReader.h"
#include "kit/ArchiveReading.h"
#include "kit/ArchiveWriter.h"
#include "kit/DecodedPack.h"
#include "sim/SimMachine.h"
#include "support/kit/Archives.h"

namespace trelv::kit {
namespace {

constexpr Moment kMoment = 1795255200;  // 2026-11-21 10:00:00

using Files = std::map<std::string, std::string>;

Files filesOf(ByteSource source, ArchiveKind kind) {
  ArchiveReader reader(std::move(source), kind);
  Files files;
  for (ArchivedEntry entry; reader.next(entry);) {
    if (!entry.folder) {
      files[entry.name] = reader.content();
    }
  }
  return files;
}

Files filesOf(const std::string& bytes, ArchiveKind kind) {
  return filesOf(textSource(bytes), kind);
}

const std::vector<ArchiveFile>& someFiles() {
  static const std::vector<ArchiveFile> files{
      {"prg/com/setup/aggdovra/Contabilità €/perché.txt", "perché"},
      {"prg/com/setup/aggdovra/agdvcomp.ini", std::string(100000, 'x')},
      {"prg/com/setup/aggdovra/vuoto.txt", ""}};
  return files;
}

Files expectedFiles() {
  Files files;
  for (const ArchiveFile& file : someFiles()) {
    files[file.name] = file.content;
  }
  return files;
}

std::string isoOf(const std::vector<ArchiveFile>& files, Moment moment = kMoment) {
  std::string bytes;
  IsoImage image("PRODOTTI", moment, [&](std::string_view piece) -> void { bytes += piece; });
  for (const ArchiveFile& file : files) {
    image.add(file, moment - 86400);
  }
  image.finish();
  return bytes;
}

/// Bytes that cannot be packed.
std::string noiseOf(unsigned count) {
  std::string noise;
  for (unsigned i = 0, value = 1; i < count; ++i, value = value * 1103515245U + 12345U) {
    noise += static_cast<char>(value >> 16U);
  }
  return noise;
}

/// The time zone of the process while it lives.
class Zone {
 public:
  explicit Zone(const char* name) {
    setenv("TZ", name, 1);
    tzset();
  }
  ~Zone() {
    unsetenv("TZ");
    tzset();
  }
  Zone(const Zone&) = delete;
  Zone& operator=(const Zone&) = delete;
};

TEST(Archive, ZipHoldsWhatWasPutIn) {
  EXPECT_EQ(filesOf(zipArchive(someFiles(), kMoment), ArchiveKind::Zip), expectedFiles());
}

TEST(Archive, ZipMarksNamesBeyondAsciiAsUtf8AndCarriesUniversalTime) {
  const std::string bytes = zipArchive({{"perché.txt", "a"}}, kMoment);
  EXPECT_NE(static_cast<unsigned char>(bytes.at(7)) & 8U, 0U);
  EXPECT_NE(bytes.find("perch\xC3\xA9.txt"), std::string::npos);
  // 10:00:00 and 2026-11-21 as DOS writes them.
  EXPECT_EQ(bytes.substr(10, 4), std::string("\x00\x50\x75\x5D", 4));
}

TEST(Archive, ZoneOfTheMachineChangesNothing) {
  const std::string zip = zipArchive(someFiles(), kMoment);
  const std::string gz = tarGzArchive(someFiles(), kMoment);
  const std::string iso = isoOf(someFiles());
  const Zone zone("Asia/Tokyo");
  EXPECT_EQ(zipArchive(someFiles(), kMoment), zip);
  EXPECT_EQ(tarGzArchive(someFiles(), kMoment), gz);
  EXPECT_EQ(isoOf(someFiles()), iso);
  EXPECT_STREQ(std::getenv("TZ"), "Asia/Tokyo");
}

TEST(Archive, GzipHeaderHasTheGivenTimeAndTellsTheStrongestPacking) {
  const std::string bytes = tarGzArchive({{"prg/a.txt", "a"}}, 0x01020304);
  EXPECT_EQ(bytes.substr(0, 9), std::string("\x1F\x8B\x08\x00\x04\x03\x02\x01\x02", 9));
}

TEST(Archive, ImageHasTheNamesOfJolietAndWhatWasPutIn) {
  EXPECT_EQ(filesOf(isoOf(someFiles()), ArchiveKind::Iso), expectedFiles());
}

TEST(Archive, ImageReadWithoutJolietHasNamesOfThirtyLetters) {
  const std::string bytes = isoOf({{"prodotti/configurazione.ini", "x"}});
  EXPECT_NE(bytes.find("CONFIGURAZIONE.INI;1"), std::string::npos);
}

TEST(Archive, ImageHasTheTimesOfItsFilesAndOneForAllFolders) {
  const std::string bytes = isoOf(someFiles());
  ArchiveReader reader(textSource(bytes), ArchiveKind::Iso);
  std::size_t folders = 0;
  for (ArchivedEntry entry; reader.next(entry);) {
    EXPECT_EQ(entry.moment, entry.folder ? kMoment : kMoment - 86400) << entry.name;
    folders += entry.folder ? 1 : 0;
  }
  EXPECT_EQ(folders, 6U);
}

TEST(Archive, ImageNamesNothingOfTheDayAndTheProgram) {
  const std::string bytes = isoOf(someFiles());
  EXPECT_EQ(bytes.find("INFO "), std::string::npos);
  EXPECT_EQ(bytes.find("ARCHIVE"), std::string::npos);
  EXPECT_EQ(bytes.substr(16 * 2048 + 8, 32), std::string(32, ' '));
  std::string letters;
  for (int i = 0; i < 16; ++i) {
    letters += std::string("\0 ", 2);
  }
  EXPECT_EQ(bytes.substr(17 * 2048 + 8, 32), letters);
  EXPECT_EQ(bytes.substr(16 * 2048 + 813, 16), "2026112110000000");
  EXPECT_EQ(bytes.substr(17 * 2048 + 830, 16), "2026112110000000");
}

TEST(Archive, FolderOfManyFilesKeepsItsTimesInAnImage) {
  std::vector<ArchiveFile> many;
  for (int i = 0; i < 300; ++i) {
    many.push_back({"cartella " + std::to_string(i % 20) + "/file " + std::to_string(i), "x"});
  }
  const std::string bytes = isoOf(many);
  EXPECT_EQ(filesOf(bytes, ArchiveKind::Iso).size(), 300U);
  ArchiveReader reader(textSource(bytes), ArchiveKind::Iso);
  for (ArchivedEntry entry; reader.next(entry);) {
    EXPECT_EQ(entry.moment, entry.folder ? kMoment : kMoment - 86400) << entry.name;
  }
}

TEST(Archive, ImageTakesWhatLiesSixFoldersDeepAndNothingBelow) {
  const std::string deepest = "1/2/3/4/5/6/file.txt";
  ASSERT_TRUE(IsoImage::takes(deepest));
  EXPECT_EQ(filesOf(isoOf({{deepest, "x"}}), ArchiveKind::Iso), (Files{{deepest, "x"}}));
  EXPECT_FALSE(IsoImage::takes("0/" + deepest));
}

TEST(Archive, FileThatCannotBeReadEndsWithTheReasonOfTheSystem) {
  sim::SimMachine machine;
  machine.makeFolders("C:\\cartella.zip");
  for (const char* const path : {"C:\\manca.zip", "C:\\cartella.zip"}) {
    EXPECT_THROW(fileSource(machine.files(), path), RuntimeError) << path;
  }
  const ByteSource refused{1000, [](std::uint64_t, std::size_t, std::string&) -> SystemCode {
                             return system_code::kAccessDenied;
                           }};
  try {
    filesOf(refused, ArchiveKind::Zip);
    FAIL() << "the source refuses every byte";
  } catch (const RuntimeError& failure) {
    EXPECT_EQ(failure.number(), failureFromSystemCode(system_code::kAccessDenied, "").number());
  }
}

TEST(Archive, LinkInAZipIsNeitherAFileNorAFolder) {
  ArchiveReader reader(textSource(tests::zipBytes({{"a.txt", "a"}, {"b.txt", "", "a.txt"}})),
                       ArchiveKind::Zip);
  ArchivedEntry entry;
  ASSERT_TRUE(reader.next(entry));
  EXPECT_FALSE(entry.other);
  ASSERT_TRUE(reader.next(entry));
  EXPECT_TRUE(entry.other);
  EXPECT_FALSE(entry.folder);
}

TEST(Archive, ZipThatHoldsNothingIsWhole) {
  const auto damageOf = [](const std::string& bytes) -> std::string {
    return readZip(
        textSource(bytes), [](const PackEntry&) -> bool { return true; },
        [](const PackEntry&, const std::string&) -> void { FAIL(); });
  };
  const std::string nothing = std::string("PK\5\6") + std::string(18, '\0');
  EXPECT_EQ(damageOf(nothing), "");
  EXPECT_NE(damageOf(nothing.substr(1)), "");
}

TEST(Archive, EncryptedEntryIsToldAndNotRead) {
  std::vector<PackEntry> told;
  const std::string damage = readZip(
      textSource(tests::zipBytes({{"a.ini", "x"}}, "segreto")),
      [&told](const PackEntry& entry) -> bool {
        told.push_back(entry);
        return true;
      },
      [](const PackEntry& entry, const std::string&) -> void { ADD_FAILURE() << entry.name; });
  EXPECT_EQ(damage, "");
  ASSERT_EQ(told.size(), 1U);
  EXPECT_TRUE(told.front().encrypted);
}

TEST(Archive, BackslashesInAZipPartFoldersToo) {
  std::string told;
  readZip(
      textSource(tests::zipBytes({{"prg\\com/a.ini", "x"}})),
      [&told](const PackEntry& entry) -> bool {
        told += entry.name;
        return false;
      },
      [](const PackEntry&, const std::string&) -> void {});
  EXPECT_EQ(told, "prg/com/a.ini");
}

TEST(Archive, DecodedPackIsWhatWasPutInHoweverLong) {
  const std::vector<ArchiveFile> files{{"leggimi.txt", "a"},
                                       {"prg/com/rumore.bin", noiseOf(300000)}};
  const Files decoded = decodedPack(tarGzArchive(files, kMoment), "a.gz");
  ASSERT_EQ(decoded.size(), 2U);
  EXPECT_EQ(decoded.at("leggimi.txt"), "a");
  EXPECT_TRUE(decoded.at("prg/com/rumore.bin") == files.back().content);
}

/// Folders of 250 letters, and a file: so long in all.
std::string nameOfLength(std::size_t length) {
  std::string name;
  while (length - name.size() > 251) {
    name += std::string(250, 'n') + "/";
  }
  return name + std::string(length - name.size(), 'n');
}

TEST(Archive, NameForWhichNoOutputFolderHasRoomIsRefusedAsTheDecoderDoes) {
  const auto refusal = [](std::size_t length) -> std::string {
    return decoderRefusal(textSource(tarGzArchive({{nameOfLength(length), "a"}}, kMoment)), "a.gz");
  };
  EXPECT_EQ(refusal(2040), "");
  EXPECT_NE(refusal(2041).find("percorso troppo lungo"), std::string::npos) << refusal(2041);
}

TEST(Archive, WhatIsNoArchiveIsRefused) {
  EXPECT_THROW(filesOf("no archive at all", ArchiveKind::Zip), RuntimeError);
  const std::string zip = zipArchive(someFiles(), kMoment);
  EXPECT_THROW(filesOf(zip.substr(0, zip.size() / 2), ArchiveKind::Zip), RuntimeError);
  std::string damaged = zipArchive({{"a", noiseOf(5000)}}, kMoment);
  damaged[2500] = static_cast<char>(damaged[2500] ^ 0x55);
  EXPECT_THROW(filesOf(damaged, ArchiveKind::Zip), RuntimeError);
}

}  // namespace
}  // namespace trelv::kit
