#include <gtest/gtest.h>

#include "sim/SimMachine.h"

namespace trelv::sim {
namespace {

constexpr const char* kFile = "C:\\p.ini";

class SimProfileFilesTest : public testing::Test {
 protected:
  std::string read(const std::string& bytes, const std::string& section, const std::string& key,
                   std::uint32_t size = 511) {
    machine_.putFile(kFile, bytes);
    return machine_.profiles().readValue(section, key, "(none)", size, kFile);
  }
  std::string bytesAfterWriting(const std::string& bytes, const std::string& section,
                                const std::string& key, const std::string& value) {
    machine_.putFile(kFile, bytes);
    EXPECT_EQ(machine_.profiles().writeValue(section, key, value, kFile), 1U);
    return machine_.fileText(kFile);
  }

  SimMachine machine_;
};

TEST_F(SimProfileFilesTest, ReadsAsTheSystemDoes) {
  EXPECT_EQ(read("[ Sec ]\r\n Key \t=  a b  \r\n", " SEC ", " kEY "), "a b");
  EXPECT_EQ(read("[S]\nk=\"C:\\A B\\x.exe\" /s \"y z\"\n", "S", "k"), "C:\\A B\\x.exe\" /s \"y z");
  EXPECT_EQ(read("[S]\r\nk=' a '\r\n", "S", "k"), " a ");
  EXPECT_EQ(read("[S]\r\nk='a\"\r\n", "S", "k"), "'a\"");
  EXPECT_EQ(read("[S]\r\n;k=1\r\n#k=2\r\nk=3;4\r\n", "S", "k"), "3;4");
  EXPECT_EQ(read("[S]\r\nk=a=b=c", "S", "k"), "a=b=c");
  EXPECT_EQ(read("[S]\r\nk=1\r\nk=2\r\n", "S", "k"), "1");
  EXPECT_EQ(read("[S]\r\na=1\r\n[T]\r\n[S]\r\nk=2\r\n", "S", "k"), "(none)");
  EXPECT_EQ(read("k=top\r\n[S]\r\nk=2\r\n", "", "k"), "top");
  EXPECT_EQ(read("  [S] junk\r\nk=1\r\n[Unclosed\r\nl=2\r\n", "S", "l"), "2");
  EXPECT_EQ(read("[S]\r\nk=\r\n", "S", "k"), "");
  EXPECT_EQ(read("[S]\r\nk\r\n", "S", "k"), "(none)");
  EXPECT_EQ(read(std::string("[S]\r\nk=ab\0cd\r\n", 13), "S", "k"), "ab");
}

TEST_F(SimProfileFilesTest, GivesTheDefaultWithoutTrailingBlanksAndQuotes) {
  const auto defaultAs = [&](const std::string& text) {
    return machine_.profiles().readValue("S", "k", text, 100, "C:\\no.ini");
  };
  EXPECT_EQ(defaultAs("\"a \"  "), "a ");
  EXPECT_EQ(defaultAs(" a\t "), " a\t");
  EXPECT_EQ(defaultAs("  "), " ");
}

TEST_F(SimProfileFilesTest, CutsAtTheSizeOfTheBuffer) {
  const std::string longest(510, 'x');
  EXPECT_EQ(read("[S]\r\nk=" + longest + "\r\n", "S", "k"), longest);
  EXPECT_EQ(read("[S]\r\nk=" + longest + "y\r\n", "S", "k"), longest);
  EXPECT_EQ(read("[S]\r\nk=abc\r\n", "S", "k", 3), "ab");
  EXPECT_EQ(read("[S]\r\nk=abc\r\n", "S", "k", 0), "");
  EXPECT_EQ(read("[S]\r\nk='abc'\r\n", "S", "k", 5), "abc");
  EXPECT_EQ(read("[S]\r\nk='abc'\r\n", "S", "k", 4), "ab");
  EXPECT_EQ(read("[S]\r\nk='abc'\r\n", "S", "k", 3), "ab");
}

TEST_F(SimProfileFilesTest, ReadsEveryEncoding) {
  EXPECT_EQ(read("[S]\r\nk=citt\xE0 \x80\r\n", "S", "k"), "città €");
  EXPECT_EQ(read("\xEF\xBB\xBF[S]\r\nk=città\r\n", "S", "k"), "città");
  const std::string little("\xFF\xFE[\0S\0]\0\n\0k\0=\0\xE0\0", 16);
  EXPECT_EQ(read(little, "S", "k"), "à");
  const std::string big("\xFE\xFF\0[\0S\0]\0\n\0k\0=\0\xE0", 16);
  EXPECT_EQ(read(big, "S", "k"), "à");
  EXPECT_EQ(read(little.substr(2), "S", "k"), "(none)");
}

TEST_F(SimProfileFilesTest, ANewFileHasNoBlankLineAndNoMark) {
  EXPECT_EQ(machine_.profiles().writeValue("S", "k", "v", "C:\\new.ini"), 1U);
  EXPECT_EQ(machine_.fileText("C:\\new.ini"), "[S]\r\nk=v\r\n");
}

TEST_F(SimProfileFilesTest, AChangeRewritesTheWholeFile) {
  EXPECT_EQ(
      bytesAfterWriting("; testa\n\n  [S]  \n  a = 1\n;nota\n bare\n\n[T]\nb=2\n", "s", "c", " 3 "),
      "; testa\r\n[S]\r\na=1\r\n;nota\r\nbare\r\nc=3 \r\n[T]\r\nb=2\r\n");
  EXPECT_EQ(bytesAfterWriting("[S]\r\nKey=1\r\nb=2\r\n", "S", "kEY", "9"),
            "[S]\r\nKey=9\r\nb=2\r\n");
  EXPECT_EQ(bytesAfterWriting("[S]\r\na=1\r\n", "N", "k", "v"), "[S]\r\na=1\r\n[N]\r\nk=v\r\n");
  EXPECT_EQ(bytesAfterWriting("[S]\r\na\r\n", "S", "a", "1"), "[S]\r\na=1\r\n");
  EXPECT_EQ(bytesAfterWriting("[S]\r\na=1\r\n", "S", "a", ""), "[S]\r\na=\r\n");
  EXPECT_EQ(bytesAfterWriting("[S]\r\n", "S", "q", "\"x\""), "[S]\r\nq=\"x\"\r\n");
}

TEST_F(SimProfileFilesTest, OfNamelessKeysInARowOnlyTheFirstIsKept) {
  EXPECT_EQ(bytesAfterWriting("[S]\r\n=1\r\n=2\r\na=1\r\n=3\r\n", "S", "k", "v"),
            "[S]\r\n=1\r\na=1\r\n=3\r\nk=v\r\n");
}

TEST_F(SimProfileFilesTest, AnEqualValueLeavesTheFileAlone) {
  EXPECT_EQ(bytesAfterWriting("[S]\n\n a = 1\n", "S", "a", "1"), "[S]\n\n a = 1\n");
}

TEST_F(SimProfileFilesTest, EncodingStaysAndForeignCharactersBecomeQuestionMarks) {
  EXPECT_EQ(bytesAfterWriting("[S]\r\n", "S", "k", "à€Ω"), "[S]\r\nk=\xE0\x80?\r\n");
  EXPECT_EQ(bytesAfterWriting("\xEF\xBB\xBF[S]\r\n", "S", "k", "à"), "\xEF\xBB\xBF[S]\r\nk=à\r\n");
  EXPECT_EQ(bytesAfterWriting(std::string("\xFF\xFE[\0S\0]\0", 8), "S", "k", "v"),
            std::string("\xFF\xFE[\0S\0]\0\r\0\n\0k\0=\0v\0\r\0\n\0", 22));
}

TEST_F(SimProfileFilesTest, RefusesWhereTheFileCannotBeWritten) {
  machine_.putFile(kFile, "[S]\r\nk=v\r\n");
  SimDisk& disk = machine_.diskOf("C:\\");
  disk.holdOpen(kFile, Sharing::Read);
  EXPECT_EQ(machine_.profiles().writeValue("S", "k", "w", kFile), 0U);
  disk.release(kFile);
  EXPECT_EQ(machine_.profiles().writeValue("S", "k", "w", "C:\\missing\\p.ini"), 0U);
  EXPECT_EQ(machine_.profiles().writeValue("S", "k", "w", "C:\\WINDOWS"), 0U);
}

TEST_F(SimProfileFilesTest, BareNamesLieInTheWindowsFolder) {
  machine_.profiles().writeValue("S", "k", "v", "bare.ini");
  EXPECT_EQ(machine_.fileText("C:\\WINDOWS\\bare.ini"), "[S]\r\nk=v\r\n");

  machine_.profiles().writeValue("S", "k", "v", ".\\here.ini");
  EXPECT_TRUE(machine_.fileExists("C:\\Lumo\\Programmi\\here.ini"));
}

TEST_F(SimProfileFilesTest, BareNamesAreTheUsersOwnOnATerminalServer) {
  machine_.setEdition(WindowsEdition::Win2003TerminalServer);
  machine_.profiles().writeValue("S", "k", "v", "bare.ini");

  EXPECT_EQ(machine_.fileText("C:\\Users\\mario\\windows\\bare.ini"), "[S]\r\nk=v\r\n");
  EXPECT_FALSE(machine_.fileExists("C:\\WINDOWS\\bare.ini"));
}

}  // namespace
}  // namespace trelv::sim
