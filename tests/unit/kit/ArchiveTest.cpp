#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "base/RuntimeError.h"
#include "decoder/Extraction.h"
#include "kit/ArchiveReader.h"
#include "kit/ArchiveWriter.h"

namespace trelv::kit {
namespace {

constexpr Moment kMoment = 1795255200;  // 2026-11-21 10:00:00

using Files = std::map<std::string, std::string>;

Files filesOf(const std::string& bytes, ArchiveKind kind) {
  ArchiveReader reader(textSource(bytes), kind);
  Files files;
  for (ArchivedEntry entry; reader.next(entry);) {
    if (!entry.folder) {
      files[entry.name] = reader.content();
    }
  }
  return files;
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

TEST(Archive, GzipHeaderHasTheGivenTime) {
  const std::string bytes = tarGzArchive({{"prg/a.txt", "a"}}, 0x01020304);
  EXPECT_EQ(bytes.substr(4, 4), "\x04\x03\x02\x01");
}

TEST(Archive, ImageHasTheNamesOfJolietAndWhatWasPutIn) {
  EXPECT_EQ(filesOf(isoOf(someFiles()), ArchiveKind::Iso), expectedFiles());
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

TEST(Archive, WhatIsNoArchiveIsRefused) {
  EXPECT_THROW(filesOf("no archive at all", ArchiveKind::Zip), RuntimeError);
  const std::string zip = zipArchive(someFiles(), kMoment);
  EXPECT_THROW(filesOf(zip.substr(0, zip.size() / 2), ArchiveKind::Zip), RuntimeError);
  std::string noise;
  for (unsigned i = 0, value = 1; i < 5000; ++i, value = value * 1103515245U + 12345U) {
    noise += static_cast<char>(value >> 16U);
  }
  std::string damaged = zipArchive({{"a", noise}}, kMoment);
  damaged[2500] = static_cast<char>(damaged[2500] ^ 0x55);
  EXPECT_THROW(filesOf(damaged, ArchiveKind::Zip), RuntimeError);
}

}  // namespace
}  // namespace trelv::kit
