#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "packs/ZipProtection.h"
#include "sim/SimMachine.h"
#include "support/Rows.h"

namespace trelv::tests {
namespace {

using modProdTrelvManager::NeedsPassword;

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
};

constexpr unsigned kEncrypted = 1;

std::string localHeader(const Entry& entry) {
  return "PK\3\4" + number(20, 2) + number(entry.flags, 2) + number(0, 10) +
         number(entry.content.size(), 4) + number(entry.content.size(), 4) +
         number(entry.name.size(), 2) + number(0, 2) + entry.name + entry.content;
}

std::string directoryEntry(const Entry& entry) {
  const std::string extra = "extra";
  const std::string comment = "note";
  return "PK\1\2" + number(20, 2) + number(20, 2) + number(entry.flags, 2) + number(0, 10) +
         number(entry.content.size(), 4) + number(entry.content.size(), 4) +
         number(entry.name.size(), 2) + number(extra.size(), 2) + number(comment.size(), 2) +
         number(0, 12) + entry.name + extra + comment;
}

std::string end(std::uint64_t length, std::uint64_t offset, const std::string& comment = "") {
  return "PK\5\6" + number(0, 4) + number(1, 2) + number(1, 2) + number(length, 4) +
         number(offset, 4) + number(comment.size(), 2) + comment;
}

std::string zip(const std::vector<Entry>& entries, const std::string& comment = "",
                const std::string& before = "") {
  std::string bytes = before;
  std::string directory;
  for (const Entry& entry : entries) {
    bytes += localHeader(entry);
    directory += directoryEntry(entry);
  }
  return bytes + directory + end(directory.size(), bytes.size(), comment);
}

/// The same with the records of archives beyond 4 GB.
std::string zip64(const std::vector<Entry>& entries) {
  std::string bytes;
  std::string directory;
  for (const Entry& entry : entries) {
    bytes += localHeader(entry);
    directory += directoryEntry(entry);
  }
  const std::size_t at = bytes.size() + directory.size();
  return bytes + directory + "PK\6\6" + number(44, 8) + number(0, 28) +
         number(directory.size(), 8) + number(bytes.size(), 8) + "PK\6\7" + number(0, 4) +
         number(at, 8) + number(1, 4) + end(0xFFFFFFFF, 0xFFFFFFFF);
}

const std::vector<Entry> kPlain{{"prg/", ""}, {"prg/a.ini", "a"}, {"prg/b.ini", "b", 8}};
const std::vector<Entry> kSecret{{"prg/", ""}, {"prg/a.ini", "a"}, {"prg/b.ini", "b", kEncrypted}};

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
  EXPECT_EQ(NeedsPassword(machine.machine().files, "C:\\a.zip"), GetParam().needsPassword);
}

INSTANTIATE_TEST_SUITE_P(Of, ZipProtection, testing::ValuesIn(kPacks), NameOfRow());

TEST(ZipProtectionOf, AFileThatCannotBeReadIsLeftTo7Zip) {
  sim::SimMachine machine;
  EXPECT_FALSE(NeedsPassword(machine.machine().files, "C:\\manca.zip"));
  EXPECT_FALSE(NeedsPassword(machine.machine().files, "C:\\WINDOWS"));
  machine.putFile("C:\\a.zip", zip(kSecret));
  machine.diskOf("C:\\").holdOpen("C:\\a.zip", sim::Sharing::None);
  EXPECT_FALSE(NeedsPassword(machine.machine().files, "C:\\a.zip"));
}

TEST(ZipProtectionOf, ALargePackIsNotReadWhole) {
  sim::SimMachine machine;
  machine.putFile("C:\\a.zip", zip({{"a", std::string(1'000'000, 'x')}, {"b", "b", kEncrypted}}));
  machine.callLog().clear();
  EXPECT_TRUE(NeedsPassword(machine.machine().files, "C:\\a.zip"));
  EXPECT_EQ(machine.callLog().countOf("files.read C:"), 0U);
  EXPECT_EQ(machine.callLog().countOf("files.readPart C:"), 3U);
}

}  // namespace
}  // namespace trelv::tests
