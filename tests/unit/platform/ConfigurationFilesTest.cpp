#include <gtest/gtest.h>

#include <string>

#include "platform/ConfigurationFiles.h"
#include "sim/SimMachine.h"

namespace trelv {
namespace {

using namespace std::string_literals;

constexpr std::uint32_t kSize = 511;
constexpr const char* kFile = "S:\\Lumo\\prg\\agdvcomp.ini";

class ConfigurationFilesTest : public testing::Test {
 protected:
  ConfigurationFilesTest() { machine_.mount("S:"); }

  void put(const std::string& bytes) { machine_.putFile(kFile, bytes); }

  std::string read(const std::string& section, const std::string& key,
                   const std::string& file = kFile, std::uint32_t size = kSize) {
    return files_.read({file, section, key}, size);
  }

  /// What the platform's function answers; not counted.
  std::string platformReads(const std::string& section, const std::string& key,
                            const std::string& file = kFile, std::uint32_t size = kSize) {
    sim::SimMachine other;
    other.mount("S:");
    other.putFile(file, machine_.fileText(file));
    return other.machine().profiles.readValue(section, key, "", size, file);
  }

  sim::Openings openings(const std::string& prefix) { return machine_.openings(prefix); }

  sim::SimMachine machine_;
  ConfigurationFiles files_{machine_.machine()};
};

TEST_F(ConfigurationFilesTest, ManyValuesOfAFileCostOneOpening) {
  std::string text;
  for (int i = 1; i <= 100; ++i) {
    text += "[Update" + std::to_string(i) + "]\r\nversion=" + std::to_string(i) + "\r\n";
  }
  put(text);
  for (int i = 1; i <= 100; ++i) {
    EXPECT_EQ(read("Update" + std::to_string(i), "version"), std::to_string(i));
    EXPECT_EQ(read("Update" + std::to_string(i), "Server01"), "");
  }
  EXPECT_EQ(machine_.callCount(), 1U);
  EXPECT_EQ(openings("S:\\").reads, 1U);
}

TEST_F(ConfigurationFilesTest, APathIsTheSameInAnyCase) {
  put("[s]\r\nk=v\r\n");
  EXPECT_EQ(read("s", "k", "S:\\Lumo\\prg\\agdvcomp.ini"), "v");
  EXPECT_EQ(read("s", "k", "s:\\LUMO\\PRG\\AGDVCOMP.INI"), "v");
  EXPECT_EQ(machine_.callCount(), 1U);
}

TEST_F(ConfigurationFilesTest, EachFileIsReadForItself) {
  put("[s]\r\nk=server\r\n");
  machine_.putFile("C:\\Lumo\\agdvver.ini", "[s]\r\nk=client\r\n");
  EXPECT_EQ(read("s", "k"), "server");
  EXPECT_EQ(read("s", "k", "C:\\Lumo\\agdvver.ini"), "client");
  EXPECT_EQ(read("s", "k"), "server");
  EXPECT_EQ(machine_.callCount(), 2U);
}

TEST_F(ConfigurationFilesTest, AMissingFileIsRememberedUntilForgotten) {
  EXPECT_EQ(read("s", "k"), "");
  EXPECT_EQ(read("s", "k"), "");
  EXPECT_EQ(machine_.callCount(), 1U);
  put("[s]\r\nk=v\r\n");
  EXPECT_EQ(read("s", "k"), "");
  files_.forget();
  EXPECT_EQ(read("s", "k"), "v");
  EXPECT_EQ(machine_.callCount(), 2U);
}

TEST_F(ConfigurationFilesTest, AChangeIsSeenAfterForgetting) {
  put("[s]\r\nk=old\r\n");
  EXPECT_EQ(read("s", "k"), "old");
  put("[s]\r\nk=new\r\n");
  EXPECT_EQ(read("s", "k"), "old");
  files_.forget();
  EXPECT_EQ(read("s", "k"), "new");
  EXPECT_EQ(openings("S:\\").reads, 2U);
}

TEST_F(ConfigurationFilesTest, AKeyThatStandsWithoutValueIsToldFromAMissingOne) {
  put("[s]\r\nempty=\r\nfull=v\r\nbare\r\n");
  EXPECT_TRUE(files_.holds({kFile, "S", "EMPTY"}));
  EXPECT_TRUE(files_.holds({kFile, "s", "full"}));
  EXPECT_FALSE(files_.holds({kFile, "s", "bare"}));
  EXPECT_FALSE(files_.holds({kFile, "s", "missing"}));
  EXPECT_FALSE(files_.holds({kFile, "t", "full"}));
  EXPECT_FALSE(files_.holds({"S:\\missing.ini", "s", "full"}));
  EXPECT_FALSE(files_.holds({"win.ini", "s", "full"}));
  EXPECT_EQ(openings(kFile).reads, 1U);
}

TEST_F(ConfigurationFilesTest, ForgettingOneFileKeepsTheOthers) {
  put("[s]\r\nk=old\r\n");
  machine_.putFile("S:\\b.ini", "[s]\r\nk=b\r\n");
  EXPECT_EQ(read("s", "k"), "old");
  EXPECT_EQ(read("s", "k", "S:\\b.ini"), "b");
  put("[s]\r\nk=new\r\n");
  files_.forget("s:\\lumo\\prg\\AGDVCOMP.INI");
  EXPECT_EQ(read("s", "k"), "new");
  EXPECT_EQ(read("s", "k", "S:\\b.ini"), "b");
  EXPECT_EQ(openings("S:\\b.ini").reads, 1U);
  EXPECT_EQ(openings(kFile).reads, 2U);
}

TEST_F(ConfigurationFilesTest, AWrittenValueThatWasThereKeepsTheFile) {
  put("[NERIO]\r\nversion=03.20.30.00\r\n");
  EXPECT_EQ(read("NERIO", "version"), "03.20.30.00");
  files_.written({kFile, "nerio", "VERSION"}, "03.20.30.00");
  EXPECT_EQ(read("NERIO", "version"), "03.20.30.00");
  EXPECT_EQ(machine_.callCount(), 1U);
}

TEST_F(ConfigurationFilesTest, AWrittenValueThatIsNewDropsTheFile) {
  put("[NERIO]\r\nversion=03.20.30.00\r\n");
  EXPECT_EQ(read("NERIO", "version"), "03.20.30.00");
  put("[NERIO]\r\nversion=03.20.31.00\r\n");
  files_.written({kFile, "NERIO", "version"}, "03.20.31.00");
  EXPECT_EQ(read("NERIO", "version"), "03.20.31.00");
}

TEST_F(ConfigurationFilesTest, AWrittenValueThatLosesItsQuotesDropsTheFile) {
  put("[s]\r\nk=\" v \"\r\n");
  EXPECT_EQ(read("s", "k"), " v ");
  machine_.machine().profiles.writeValue("s", "k", " v ", kFile);
  files_.written({kFile, "s", "k"}, " v ");
  EXPECT_EQ(read("s", "k"), platformReads("s", "k"));
}

TEST_F(ConfigurationFilesTest, ABusyFileIsAskedOfThePlatformEachTimeAndNotTakenForEmpty) {
  put("[s]\r\nk=v\r\n");
  machine_.diskOf(kFile).holdOpen(kFile, sim::Sharing::None);
  EXPECT_EQ(read("s", "k"), "");
  machine_.diskOf(kFile).release(kFile);
  EXPECT_EQ(read("s", "k"), "v");
}

TEST_F(ConfigurationFilesTest, BareNamesAreThoseOfTheWindowsFolder) {
  machine_.putFile("C:\\WINDOWS\\Lumow.ini", "[s]\r\nk=v\r\n");
  EXPECT_EQ(read("s", "k", "Lumow.ini"), "v");
  EXPECT_EQ(read("s", "k", "Lumow.ini"), "v");
  EXPECT_EQ(openings("C:\\WINDOWS\\Lumow.ini").profileReads, 2U);
  EXPECT_EQ(machine_.callCount(), 2U);
}

TEST_F(ConfigurationFilesTest, RelativeAndOddPathsGoToThePlatform) {
  for (const char* file : {"prg\\a.ini", ".\\a.ini", "C:a.ini", "\\a.ini", "S:/Lumo/prg/a.ini",
                           "\\\\.\\a.ini", "\\\\?\\S:\\a.ini", "", "C:", "a"}) {
    sim::SimMachine machine;
    ConfigurationFiles files(machine.machine());
    EXPECT_EQ(files.read({file, "s", "k"}, kSize), "");
    EXPECT_EQ(machine.callCount(), 1U) << file;
    EXPECT_EQ(machine.calls().front().rfind("profiles.readValue", 0), 0U) << file;
  }
}

TEST_F(ConfigurationFilesTest, SharesAreReadOnce) {
  machine_.mount("\\\\server\\share");
  machine_.putFile("\\\\server\\share\\a.ini", "[s]\r\nk=v\r\n");
  EXPECT_EQ(read("s", "k", "\\\\server\\share\\a.ini"), "v");
  EXPECT_EQ(read("s", "k", "\\\\SERVER\\share\\a.ini"), "v");
  EXPECT_EQ(machine_.callCount(), 1U);
}

TEST_F(ConfigurationFilesTest, OddFilesGoToThePlatform) {
  for (const std::string& bytes :
       {"\xEF\xBB\xBF[s]\r\nk=\xC3\xA8\r\n"s, "\xFF\xFE[\0s\0]\0\n\0k\0=\0\xE8\0"s,
        "[s]\r\nk=\xE8\0x\r\n"s, "[s]\rk=\xE8\r"s, "[s]\r\nk=\xE8\x1A"s}) {
    put(bytes);
    files_.forget();
    EXPECT_EQ(read("s", "k"), "\u00E8") << testing::PrintToString(bytes);
  }
  EXPECT_EQ(openings("S:\\").reads, 5U);
  EXPECT_EQ(openings("S:\\").profileReads, 5U);
}

TEST_F(ConfigurationFilesTest, NamesBeyondAsciiGoToThePlatform) {
  put("[citt\xE0]\r\nk=v\r\n[s]\r\nperch\xE9=w\r\n");
  EXPECT_EQ(read("citt\u00E0", "k"), "v");
  EXPECT_EQ(read("s", "perch\u00E9"), "w");
  EXPECT_EQ(openings("S:\\").profileReads, 2U);
}

TEST_F(ConfigurationFilesTest, ValuesComeAsUtf8) {
  put("[s]\r\nk=perch\xE9 10 \x80\r\n");
  EXPECT_EQ(read("s", "k"), "perch\u00E9 10 \u20AC");
  EXPECT_EQ(openings("S:\\").profileReads, 0U);
}

TEST_F(ConfigurationFilesTest, AValueIsCutTo510Characters) {
  const std::string whole(510, 'x');
  put("[s]\r\na=" + whole + "\r\nb=" + whole + "y\r\nc=" + std::string(5000, 'z') + "\r\n");
  EXPECT_EQ(read("s", "a"), whole);
  EXPECT_EQ(read("s", "b"), whole);
  EXPECT_EQ(read("s", "c"), std::string(510, 'z'));
}

TEST_F(ConfigurationFilesTest, ValuesRoundTheCutAreThoseOfThePlatform) {
  for (std::size_t length = 503; length < 515; ++length) {
    for (const std::string quote : {"", "\"", "'"}) {
      put("[s]\r\nk=" + quote + std::string(length, 'x') + "y" + quote + "\r\n");
      files_.forget();
      EXPECT_EQ(read("s", "k"), platformReads("s", "k")) << length << quote;
    }
  }
}

TEST_F(ConfigurationFilesTest, SmallBuffersCutAsThePlatformDoes) {
  put("[s]\r\nk=abc\r\nq='abc'\r\n");
  for (std::uint32_t size = 0; size < 9; ++size) {
    EXPECT_EQ(read("s", "k", kFile, size), platformReads("s", "k", kFile, size)) << size;
    EXPECT_EQ(read("s", "q", kFile, size), platformReads("s", "q", kFile, size)) << size;
  }
}

TEST_F(ConfigurationFilesTest, APathThatTheCodePageLacksHoldsNothing) {
  machine_.putFile("S:\\\u4E2D.ini", "[s]\r\nk=v\r\n");
  EXPECT_EQ(read("s", "k", "S:\\\u4E2D.ini"), "");
  EXPECT_EQ(openings("S:\\\u4E2D.ini").reads, 0U);
}

TEST_F(ConfigurationFilesTest, AccentedPathsAreReadOnce) {
  machine_.putFile("S:\\citt\u00E0.ini", "[s]\r\nk=v\r\n");
  EXPECT_EQ(read("s", "k", "S:\\citt\u00E0.ini"), "v");
  EXPECT_EQ(read("s", "k", "S:\\CITT\u00C0.INI"), "v");
  EXPECT_EQ(machine_.callCount(), 1U);
}

}  // namespace
}  // namespace trelv
