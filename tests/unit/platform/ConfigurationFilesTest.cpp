#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "platform/ConfigurationFiles.h"
#include "sim/FailingMachine.h"
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

TEST_F(ConfigurationFilesTest, EachFileIsReadOnceUnderAllSpellingsOfItsPath) {
  for (const char* const volume : {"\\\\server\\share", "A:", "Z:"}) {
    machine_.mount(volume);
  }
  for (const auto& [file, otherSpelling] : std::vector<std::pair<std::string, std::string>>{
           {kFile, "s:\\LUMO\\PRG\\AGDVCOMP.INI"},
           {"C:\\Lumo\\agdvver.ini", "c:\\lumo\\AGDVVER.ini"},
           {"A:\\zm.ini", "a:\\ZM.ini"},
           {"Z:\\zm\\zm.ini", "z:\\ZM\\zm.ini"},
           {"S:\\citt\u00E0.ini", "S:\\CITT\u00C0.INI"},
           {"\\\\server\\share\\a.ini", "\\\\SERVER\\share\\a.ini"}}) {
    const std::string value = std::to_string(file.size());
    machine_.putFile(file, "[s]\r\nk=" + value + "\r\n");
    machine_.callLog().clear();
    EXPECT_EQ(read("s", "k", file), value);
    EXPECT_EQ(read("s", "k", otherSpelling), value);
    EXPECT_EQ(machine_.callCount(), 1U) << file;
  }
  EXPECT_EQ(read("s", "k"), "24") << "each file holds its own";
}

TEST_F(ConfigurationFilesTest, WhatAFileHoldsOrThatItIsMissingIsRememberedUntilForgotten) {
  for (const char* const value : {"", "old", "new"}) {
    const std::string before = read("s", "k");
    put(std::string("[s]\r\nk=") + value + "\r\n");
    EXPECT_EQ(read("s", "k"), before);
    files_.forget();
    EXPECT_EQ(read("s", "k"), value);
  }
  EXPECT_EQ(machine_.callCount(), 4U);
}

TEST_F(ConfigurationFilesTest, AKeyThatStandsWithoutValueIsToldFromAMissingOne) {
  put("[s]\r\nempty=\r\nfull=v\r\nbare\r\n");
  EXPECT_TRUE(files_.holds({kFile, "S", "EMPTY"}));
  EXPECT_TRUE(files_.holds({kFile, "s", "full"}));
  for (const IniAddress& missing :
       {IniAddress{kFile, "s", "bare"}, IniAddress{kFile, "s", "missing"},
        IniAddress{kFile, "t", "full"}, IniAddress{"S:\\missing.ini", "s", "full"},
        IniAddress{"win.ini", "s", "full"}}) {
    EXPECT_FALSE(files_.holds(missing)) << missing.file << missing.section << missing.key;
  }
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

TEST_F(ConfigurationFilesTest, AWrittenValueKeepsTheFileOnlyWhenItWasThere) {
  put("[NERIO]\r\nversion=03.20.30.00\r\n");
  EXPECT_EQ(read("NERIO", "version"), "03.20.30.00");
  files_.written({kFile, "nerio", "VERSION"}, "03.20.30.00");
  EXPECT_EQ(read("NERIO", "version"), "03.20.30.00");
  EXPECT_EQ(machine_.callCount(), 1U);
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

// --- What is left to the platform

TEST_F(ConfigurationFilesTest, ABusyFileIsAskedOfThePlatformEachTimeAndNotTakenForEmpty) {
  put("[s]\r\nk=v\r\n");
  machine_.diskOf(kFile).holdOpen(kFile, sim::Sharing::None);
  EXPECT_EQ(read("s", "k"), "");
  machine_.diskOf(kFile).release(kFile);
  EXPECT_EQ(read("s", "k"), "v");
}

TEST_F(ConfigurationFilesTest, AServerThatIsOutOfReachForAMomentDoesNotMakeAFileLookEmpty) {
  put("[s]\r\nk=v\r\n");
  sim::FailingMachine failing(machine_, 1);
  failing.failWith(system_code::kBadNetPath);
  EXPECT_EQ(read("s", "k"), "v");
}

TEST_F(ConfigurationFilesTest, AServerThatStaysAwayIsAskedTwiceForAllValues) {
  put("[s]\r\nk=v\r\n");
  machine_.diskOf(kFile).disconnect();
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(read("s", "k"), "");
  }
  EXPECT_EQ(machine_.callCount(), 2U);
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
    machine_.callLog().clear();
    EXPECT_EQ(read("s", "k", file), "");
    EXPECT_EQ(machine_.callCount(), 1U) << file;
    EXPECT_EQ(machine_.calls().front().rfind("profiles.readValue", 0), 0U) << file;
  }
}

TEST_F(ConfigurationFilesTest, OddFilesAndNamesBeyondAsciiGoToThePlatform) {
  for (const std::string& bytes :
       {"\xEF\xBB\xBF[s]\r\nk=\xC3\xA8\r\n"s, "\xFF\xFE[\0s\0]\0\n\0k\0=\0\xE8\0"s,
        "[s]\r\nk=\xE8\0x\r\n"s, "[s]\rk=\xE8\r"s, "[s]\r\nk=\xE8\x1A"s}) {
    put(bytes);
    files_.forget();
    EXPECT_EQ(read("s", "k"), "\u00E8") << testing::PrintToString(bytes);
  }
  EXPECT_EQ(openings("S:\\").reads, 5U);
  EXPECT_EQ(openings("S:\\").profileReads, 5U);
  put("[citt\xE0]\r\nk=v\r\n[s]\r\nperch\xE9=w\r\n");
  EXPECT_EQ(read("citt\u00E0", "k"), "v");
  EXPECT_EQ(read("s", "perch\u00E9"), "w");
  EXPECT_EQ(openings("S:\\").profileReads, 7U);
}

TEST_F(ConfigurationFilesTest, APathThatTheCodePageLacksHoldsNothing) {
  machine_.putFile("S:\\\u4E2D.ini", "[s]\r\nk=v\r\n");
  EXPECT_EQ(read("s", "k", "S:\\\u4E2D.ini"), "");
  EXPECT_EQ(openings("S:\\\u4E2D.ini").reads, 0U);
}

// --- Values

TEST_F(ConfigurationFilesTest, ValuesComeAsUtf8) {
  put("[s]\r\nk=perch\xE9 10 \x80\r\n");
  EXPECT_EQ(read("s", "k"), "perch\u00E9 10 \u20AC");
  EXPECT_EQ(openings("S:\\").profileReads, 0U);
}

TEST_F(ConfigurationFilesTest, AValueIsCutTo510CharactersAsThePlatformDoes) {
  for (std::size_t length = 503; length < 515; ++length) {
    for (const std::string quote : {"", "\"", "'"}) {
      put("[s]\r\nk=" + quote + std::string(length, 'x') + "y" + quote + "\r\n");
      files_.forget();
      EXPECT_EQ(read("s", "k"), platformReads("s", "k")) << length << quote;
    }
  }
  put("[s]\r\nk=" + std::string(5000, 'z') + "\r\n");
  files_.forget();
  EXPECT_EQ(read("s", "k"), std::string(510, 'z'));
}

TEST_F(ConfigurationFilesTest, SmallBuffersCutAsThePlatformDoes) {
  put("[s]\r\nk=abc\r\nq='abc'\r\n");
  for (std::uint32_t size = 0; size < 9; ++size) {
    EXPECT_EQ(read("s", "k", kFile, size), platformReads("s", "k", kFile, size)) << size;
    EXPECT_EQ(read("s", "q", kFile, size), platformReads("s", "q", kFile, size)) << size;
  }
}

}  // namespace
}  // namespace trelv
