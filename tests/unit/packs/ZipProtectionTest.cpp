#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "packs/ZipProtection.h"
#include "sim/SimMachine.h"
#include "support/Rows.h"

namespace trelv::tests {
namespace {

using modProdTrelvManager::FindObstacle;
using modProdTrelvManager::ZipObstacle;

/// A number of so many bytes, lowest first.
std::string number(std::uint64_t value, int bytes) {
  std::string text;
  for (int i = 0; i < bytes; ++i) {
    text += static_cast<char>(value);
    value >>= 8;
  }
  return text;
}

struct Entry {
  std::string name;
  std::string content;
  unsigned flags = 0;
  /// Of the header before its content, where they are others than the directory's.
  std::optional<unsigned> ownFlags = std::nullopt;
};

constexpr unsigned kEncrypted = 1;
constexpr std::uint64_t kIn64Record = 0xFFFFFFFF;

std::string localHeader(const Entry& entry) {
  return "PK\3\4" + number(20, 2) + number(entry.ownFlags.value_or(entry.flags), 2) +
         number(0, 10) + number(entry.content.size(), 4) + number(entry.content.size(), 4) +
         number(entry.name.size(), 2) + number(0, 2) + entry.name + entry.content;
}

/// With `in64Field` the place of the entry stands in the extra field.
std::string directoryEntry(const Entry& entry, std::uint64_t offset, bool in64Field = false) {
  const std::string extra =
      number(0x5455, 2) + number(1, 2) + "t" +
      (in64Field ? number(1, 2) + number(8, 2) + number(offset, 8) : std::string());
  const std::string comment = "note";
  return "PK\1\2" + number(20, 2) + number(20, 2) + number(entry.flags, 2) + number(0, 10) +
         number(entry.content.size(), 4) + number(entry.content.size(), 4) +
         number(entry.name.size(), 2) + number(extra.size(), 2) + number(comment.size(), 2) +
         number(0, 8) + number(in64Field ? kIn64Record : offset, 4) + entry.name + extra + comment;
}

std::string end(std::uint64_t length, std::uint64_t offset, const std::string& comment = "",
                std::uint64_t entries = 1) {
  return "PK\5\6" + number(0, 4) + number(entries, 2) + number(entries, 2) + number(length, 4) +
         number(offset, 4) + number(comment.size(), 2) + comment;
}

/// What the record at the end says wrongly, if anything.
struct Wrong {
  std::uint64_t offset = 0;
  std::uint64_t entries = 0;
};

/// `counted`: the places count from the file's beginning, also where other bytes stand `before`.
std::string zip(const std::vector<Entry>& entries, const std::string& comment = "",
                const std::string& before = "", bool counted = true, const Wrong& wrong = {}) {
  std::string bytes = before;
  std::string directory;
  const std::size_t beginning = counted ? 0 : before.size();
  for (const Entry& entry : entries) {
    directory += directoryEntry(entry, bytes.size() - beginning);
    bytes += localHeader(entry);
  }
  return bytes + directory +
         end(directory.size(), bytes.size() - beginning + wrong.offset, comment,
             entries.size() + wrong.entries);
}

/// The same with the records of archives beyond 4 GB.
std::string zip64(const std::vector<Entry>& entries) {
  std::string bytes;
  std::string directory;
  for (const Entry& entry : entries) {
    directory += directoryEntry(entry, bytes.size(), true);
    bytes += localHeader(entry);
  }
  const std::size_t at = bytes.size() + directory.size();
  return bytes + directory + "PK\6\6" + number(44, 8) + number(0, 12) + number(entries.size(), 8) +
         number(entries.size(), 8) + number(directory.size(), 8) + number(bytes.size(), 8) +
         "PK\6\7" + number(0, 4) + number(at, 8) + number(1, 4) + end(kIn64Record, kIn64Record);
}

/// An entry that is to stand at this place.
std::string zip64Leading(std::uint64_t offset) {
  const std::string entry = localHeader({"a", "a"});
  const std::string directory = directoryEntry({"a", "a"}, offset, true);
  return entry + directory + end(directory.size(), entry.size());
}

/// An entry whose sizes and place all stand in its extra field.
std::string zip64Whole(const Entry& entry) {
  const std::string extra =
      number(1, 2) + number(24, 2) + number(5, 8) + number(5, 8) + number(0, 8);
  const std::string directory = "PK\1\2" + number(20, 2) + number(20, 2) + number(entry.flags, 2) +
                                number(0, 10) + number(kIn64Record, 4) + number(kIn64Record, 4) +
                                number(entry.name.size(), 2) + number(extra.size(), 2) +
                                number(0, 10) + number(kIn64Record, 4) + entry.name + extra;
  const std::string header = localHeader(entry);
  return header + directory + end(directory.size(), header.size());
}

const std::vector<Entry> kPlain{{"prg/", ""}, {"prg/a.ini", "a"}, {"prg/b.ini", "b", 8}};
const std::vector<Entry> kSecret{{"prg/", ""}, {"prg/a.ini", "a"}, {"prg/b.ini", "b", kEncrypted}};

/// Only 7-Zip's own header says that the content is encrypted.
const std::vector<Entry> kHidden{{"prg/", ""}, {"prg/a.ini", "a", 0, kEncrypted}, {"prg/b", "b"}};

std::string levels(int count) {
  std::string name;
  for (int i = 0; i < count; ++i) {
    name += i % 2 == 0 ? "a/" : "a\\";
  }
  return name + "f";
}

struct Pack : Row {
  std::string bytes;
  bool needsPassword;
};

const std::vector<Pack> kPacks{
    {"Plain", zip(kPlain), false},
    {"Empty", zip({}), false},
    {"OneEncryptedEntryAmongOthers", zip(kSecret), true},
    {"EncryptedByAES", zip({{"a", "a", kEncrypted | 8U}}), true},
    {"EncryptedDirectory", zip({{"a", "a", 0x2000}}), true},
    {"WithComment", zip(kPlain, "Versione 1"), false},
    {"EncryptedWithTheLongestComment", zip(kSecret, std::string(65535, 'x')), true},
    {"CommentThatLooksLikeAnEnd", zip(kSecret, "x" + end(0, 0) + "y"), true},
    {"PlainCommentThatLooksLikeAnEnd", zip(kPlain, "x" + end(99999, 0) + "y"), false},
    {"BehindAProgramThatOpensIt", zip(kPlain, "", "MZ program"), false},
    {"EncryptedBehindAProgramThatOpensIt", zip(kSecret, "", "MZ program"), true},
    {"CountedFromTheArchivesBeginning", zip(kPlain, "", "MZ program", false), false},
    {"EncryptedByItsOwnHeaderOnly", zip(kHidden), true},
    {"EncryptedByAESByItsOwnHeaderOnly", zip({{"a", "a", 8, kEncrypted | 8U}}), true},
    {"EncryptedByItsOwnHeaderBehindAProgram", zip(kHidden, "", "MZ program", false), true},
    {"EncryptedByTheDirectoryOnly", zip({{"a", "a", kEncrypted, 0}}), true},
    {"EncryptedByItsOwnHeaderBeyond4GB", zip64(kHidden), true},
    // 7-Zip looks for the entries by itself then, and may find others.
    {"WrongNumberOfEntries", zip(kPlain, "", "", true, {0, 1}), true},
    {"PlaceOfTheDirectoryBeforeTheTrueOne", zip(kPlain, "", "MZ", true, {~std::uint64_t{0}, 0}),
     true},
    {"PlaceOfTheDirectoryBehindTheTrueOne", zip(kPlain, "", "", true, {7, 0}), true},
    {"AnEntryThatStandsNowhere", zip64Leading(~std::uint64_t{0} - 10), true},
    {"AnEntryBehindTheEnd", zip64Leading(0x1'0000'0000), true},
    {"AnEntryWherePlaceIsInTheExtraField", zip64Leading(0), false},
    {"AnEntryWhoseSizesAndPlaceAreInTheExtraField", zip64Whole({"a", "aaaaa"}), false},
    {"EncryptedWithItsSizesAndPlaceInTheExtraField", zip64Whole({"a", "aaaaa", 0, kEncrypted}),
     true},
    {"ManyLargeEntries",
     zip({{"a", std::string(20000, 'x')}, {"b", std::string(20000, 'x')}, {"c", "c"}}), false},
    {"TheLastOfManyLargeEntries",
     zip({{"a", std::string(20000, 'x')}, {"b", std::string(20000, 'x')}, {"c", "c", 0, 1}}), true},
    // 16 KB are read at once, of which the second header has the last six bytes.
    {"AHeaderThatIsReadInTwoPieces", zip({{"a", std::string(16347, 'x')}, {"b", "b"}}), false},
    {"EncryptedByAHeaderThatIsReadInTwoPieces",
     zip({{"a", std::string(16347, 'x')}, {"b", "b", 0, kEncrypted}}), true},
    {"BytesBehindTheEnd", zip(kPlain) + "rest", false},
    {"EncryptedWithBytesBehindTheEnd", zip(kSecret) + "rest", true},
    {"Beyond4GB", zip64(kPlain), false},
    {"EncryptedBeyond4GB", zip64(kSecret), true},
    // Whether entries are encrypted cannot be told; 7-Zip would try to open them.
    {"CutShort", zip(kPlain).substr(0, 60), true},
    {"DirectoryThatIsNone", zip(kPlain).replace(zip(kPlain).find("PK\1\2"), 2, "XX"), true},
    {"DirectoryLongerThanTheFile", localHeader(kPlain[1]) + end(5000, 0), true},
    {"Rar", "Rar!\x1A\7\1 and more than the shortest archive", true},
    {"SevenZip", "7z\xBC\xAF\x27\x1C and more than the shortest archive", true},
    // 7-Zip ends with an error by itself.
    {"NoArchive", "Non e' un pacco", false},
    {"NoBytes", "", false},
    {"OneByte", "P", false},
};

class ZipProtection : public testing::TestWithParam<Pack> {};

TEST_P(ZipProtection, TellsWhether7ZipMayAskForAPassword) {
  sim::SimMachine machine;
  machine.putFile("C:\\a.zip", GetParam().bytes);
  EXPECT_EQ(FindObstacle(machine.machine().files, "C:\\a.zip"),
            GetParam().needsPassword ? ZipObstacle::Password : ZipObstacle::None);
}

INSTANTIATE_TEST_SUITE_P(Of, ZipProtection, testing::ValuesIn(kPacks), NameOfRow());

TEST(ZipProtectionOf, AFileThatCannotBeReadIsLeftTo7Zip) {
  sim::SimMachine machine;
  EXPECT_EQ(FindObstacle(machine.machine().files, "C:\\manca.zip"), ZipObstacle::None);
  EXPECT_EQ(FindObstacle(machine.machine().files, "C:\\WINDOWS"), ZipObstacle::None);
  machine.putFile("C:\\a.zip", zip(kSecret));
  machine.diskOf("C:\\").holdOpen("C:\\a.zip", sim::Sharing::None);
  EXPECT_EQ(FindObstacle(machine.machine().files, "C:\\a.zip"), ZipObstacle::None);
}

TEST(ZipProtectionOf, ALargePackIsNotReadWhole) {
  sim::SimMachine machine;
  machine.putFile("C:\\a.zip", zip({{"a", std::string(1'000'000, 'x')}, {"b", "b", kEncrypted}}));
  machine.callLog().clear();
  EXPECT_EQ(FindObstacle(machine.machine().files, "C:\\a.zip"), ZipObstacle::Password);
  EXPECT_EQ(machine.callLog().countOf("files.read C:"), 0U);
  EXPECT_EQ(machine.callLog().countOf("files.readPart C:"), 4U);
}

TEST(ZipProtectionOf, HeadersOfSmallEntriesAreReadTogether) {
  sim::SimMachine machine;
  machine.putFile("C:\\a.zip", zip(std::vector<Entry>(300, {"prg/a.ini", "a"})));
  machine.callLog().clear();
  EXPECT_EQ(FindObstacle(machine.machine().files, "C:\\a.zip"), ZipObstacle::None);
  EXPECT_EQ(machine.callLog().countOf("files.readPart C:"), 4U);
}

TEST(ZipProtectionOf, FoldersInEachOtherHaveALimit) {
  sim::SimMachine machine;
  for (const auto& [count, obstacle] : std::vector<std::pair<int, ZipObstacle>>{
           {100, ZipObstacle::None}, {101, ZipObstacle::Levels}, {16000, ZipObstacle::Levels}}) {
    machine.putFile("C:\\a.zip", zip({{"prg/a.ini", "a"}, {levels(count), "x"}}));
    EXPECT_EQ(FindObstacle(machine.machine().files, "C:\\a.zip"), obstacle) << count;
  }
}

}  // namespace
}  // namespace trelv::tests
