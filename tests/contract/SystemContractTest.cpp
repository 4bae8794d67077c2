#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "base/Text.h"
#include "contract/Contract.h"

namespace trelv::contract {
namespace {

using machine::LocalTime;

class SystemContract : public Contract {
 protected:
  machine::SystemFacts& system() { return machine().system; }
  machine::Locale& locale() { return machine().locale; }

  bool isFolder(const std::string& folder) {
    machine::FileFacts facts;
    return machine().files.look(folder, facts) == system_code::kSuccess && facts.folder;
  }

  void set(const std::string& name, const std::string& value) {
    EXPECT_TRUE(machine().environment.set(name, value));
  }
  std::string get(const std::string& name) {
    std::string value;
    EXPECT_TRUE(machine().environment.get(name, value)) << name;
    return value;
  }

  /// This system's version block in the form of this size.
  VersionRecord version(std::uint32_t size) {
    VersionRecord record;
    record.size = size;
    EXPECT_TRUE(system().queryVersion(record));
    return record;
  }

  std::string userName() {
    std::string name;
    EXPECT_EQ(system().userName(257, name), system_code::kSuccess);
    return name;
  }
  std::string temporaryFolder() {
    std::string folder;
    EXPECT_EQ(system().temporaryFolder(folder), system_code::kSuccess);
    return folder;
  }

  std::string localDrive() { return world().folder().substr(0, 2); }
  std::string deviceNames(const std::string& drive) {
    std::string names;
    EXPECT_EQ(system().deviceNames(drive, 256, names), system_code::kSuccess);
    return names;
  }
};

// --- Environment

TEST_F(SystemContract, AVariableThatWasSetIsReadAndReplaced) {
  std::string accented(2000, 'x');
  accented += "\u00E8\u20AC";
  for (const std::string text : {"one two", accented.c_str(), "x"}) {
    set("TRELV-CONTRACT_A", text);
    EXPECT_EQ(get("trelv-contract_a"), text);
  }
}

TEST_F(SystemContract, AMissingVariableLeavesTheValue) {
  std::string value = "old";
  EXPECT_FALSE(machine().environment.get("TRELV_CONTRACT_NONE", value));
  EXPECT_EQ(value, "old");
}

TEST_F(SystemContract, NamesThatAreNoneAreRefused) {
  EXPECT_FALSE(machine().environment.set("", "x"));
  EXPECT_FALSE(machine().environment.set("A=B", "x"));
}

TEST_F(SystemContract, TheUsersProfileIsSet) {
  EXPECT_TRUE(isFolder(get("USERPROFILE"))) << get("USERPROFILE");
}

// --- Upper case

TEST_F(SystemContract, PathsComeInCapitalsByTheSystemsRule) {
  EXPECT_EQ(locale().upperCase("s:\\Lumo\\perché ñ ö\\x-1.ini"), "S:\\LUMO\\PERCHÉ Ñ Ö\\X-1.INI");
  EXPECT_EQ(locale().upperCase("š œ ž ÿ ą ł Ж ж ω"), "Š Œ Ž Ÿ Ą Ł Ж Ж Ω");
  EXPECT_EQ(locale().upperCase("ß × ÷ €"), "ß × ÷ €");
  EXPECT_EQ(locale().upperCase(""), "");
}

// --- System facts

TEST_F(SystemContract, TheProcessHasANumber) {
  EXPECT_NE(system().processId(), 0U);
  EXPECT_EQ(system().processId(), system().processId());
  EXPECT_EQ(system().sessionId(), system().sessionId());
}

TEST_F(SystemContract, BothFormsOfTheVersionBlockAgree) {
  const VersionRecord brief = version(kShortVersionRecord);
  const VersionRecord extended = version(kExtendedVersionRecord);
  EXPECT_GT(brief.major, 3U);
  EXPECT_EQ(brief.major, extended.major);
  EXPECT_EQ(brief.minor, extended.minor);
  EXPECT_EQ(brief.build, extended.build);
  EXPECT_EQ(brief.platform, extended.platform);
  EXPECT_EQ(brief.servicePack, extended.servicePack);
  EXPECT_EQ(brief.size, kShortVersionRecord);
  EXPECT_EQ(brief.suiteMask, 0U);
  EXPECT_EQ(brief.productType, 0U);
}

TEST_F(SystemContract, AnyOtherSizeOfTheVersionBlockFails) {
  for (const std::uint32_t size : {0U, 147U, 149U, 157U, 284U}) {
    VersionRecord record;
    record.size = size;
    record.major = 77;
    EXPECT_FALSE(system().queryVersion(record)) << size;
    EXPECT_EQ(record.major, 77U);
    EXPECT_EQ(record.size, size);
  }
}

TEST_F(SystemContract, TheSuiteTestAgreesWithTheVersionBlock) {
  const VersionRecord record = version(kExtendedVersionRecord);
  EXPECT_TRUE(system().suiteIncludes(record.suiteMask));
  EXPECT_TRUE(system().suiteIncludes(0));
  for (std::uint16_t bit = 1; bit != 0; bit = static_cast<std::uint16_t>(bit << 1U)) {
    EXPECT_EQ(system().suiteIncludes(bit), (record.suiteMask & bit) != 0) << bit;
  }
}

TEST_F(SystemContract, TheAdministratorQueryAnswers) {
  bool member = false;
  EXPECT_EQ(system().isAdministrator(member), system_code::kSuccess);
}

TEST_F(SystemContract, TheUserHasANameWhichNeedsRoomForItsNul) {
  const std::string name = userName();
  EXPECT_FALSE(name.empty());
  EXPECT_EQ(name.find('\0'), std::string::npos);
  const auto length = static_cast<std::uint32_t>(locale().toAnsi(name).size());
  std::string again;
  EXPECT_EQ(system().userName(length + 1, again), system_code::kSuccess);
  EXPECT_EQ(again, name);
  EXPECT_EQ(system().userName(length, again), 122U);
}

TEST_F(SystemContract, TheSystemsFoldersExistAndDoNotEndInABackslash) {
  std::string windows;
  ASSERT_EQ(system().systemWindowsFolder(windows), system_code::kSuccess);
  std::string programs;
  ASSERT_EQ(system().shellFolder(machine::kProgramFilesFolder, programs), system_code::kSuccess);
  for (const std::string& folder : {windows, programs}) {
    EXPECT_TRUE(isFolder(folder)) << folder;
    EXPECT_NE(folder.back(), '\\');
  }
}

TEST_F(SystemContract, TheTemporaryFolderEndsInABackslash) {
  const std::string folder = temporaryFolder();
  EXPECT_EQ(folder.back(), '\\');
  EXPECT_TRUE(isFolder(folder.substr(0, folder.size() - 1))) << folder;
}

TEST_F(SystemContract, TheTemporaryFolderIsTheVariables) {
  const std::string old = get("TMP");
  for (const auto& [variable, folder] : {std::pair{"C:\\trelv none", "C:\\trelv none\\"},
                                         {"C:\\trelv none\\", "C:\\trelv none\\"},
                                         {"C:/trelv/none", "C:\\trelv\\none\\"}}) {
    set("TMP", variable);
    EXPECT_EQ(temporaryFolder(), folder);
  }
  set("TMP", old);
}

TEST_F(SystemContract, TheRunningProgramIsAFileOnTheCommandLine) {
  const std::string program = system().executablePath();
  machine::FileFacts facts;
  ASSERT_EQ(machine().files.look(program, facts), system_code::kSuccess) << program;
  EXPECT_FALSE(facts.folder);
  const std::string name = program.substr(program.rfind('\\') + 1);
  EXPECT_NE(upperCase(system().commandLine()).find(upperCase(name)), std::string::npos);
}

// --- Drives and the computer's name

TEST_F(SystemContract, TheDriveOfAFolderIsALocalOne) {
  const std::string drive = localDrive();
  EXPECT_EQ(system().driveType(drive + "\\"), machine::drive_type::kFixed);
  EXPECT_EQ(system().driveType(lowerCase(drive) + "\\"), machine::drive_type::kFixed);
  std::string name = "old";
  EXPECT_EQ(system().connectionName(drive, 255, name), 2250U);
  EXPECT_EQ(name, "old");
}

TEST_F(SystemContract, ADriveThatIsNotThereHasNoType) {
  EXPECT_EQ(system().driveType("Q:\\"), machine::drive_type::kNoRoot);
  std::string name = "old";
  EXPECT_EQ(system().connectionName("Q:", 255, name), 1200U);
  EXPECT_EQ(system().deviceNames("Q:", 256, name), 2U);
  EXPECT_EQ(name, "old");
}

TEST_F(SystemContract, AConnectedDriveIsANetworkDriveOfItsShare) {
  const std::string drive = world().connectedDrive();
  EXPECT_EQ(system().driveType(drive + "\\"), machine::drive_type::kNetwork);
  EXPECT_EQ(system().driveType(lowerCase(drive) + "\\"), machine::drive_type::kNetwork);
  for (const std::string& letter : {drive, lowerCase(drive)}) {
    std::string name;
    ASSERT_EQ(system().connectionName(letter, 255, name), system_code::kSuccess);
    EXPECT_EQ(upperCase(name), upperCase(world().connectedShare()));
  }
}

TEST_F(SystemContract, TheBufferForAShareHoldsItsNul) {
  const std::string drive = world().connectedDrive();
  const auto length = static_cast<std::uint32_t>(world().connectedShare().size());
  std::string name = "old";
  EXPECT_EQ(system().connectionName(drive, length, name), 234U);
  EXPECT_EQ(name, "old");
  EXPECT_EQ(system().connectionName(drive, length + 1, name), system_code::kSuccess);
  EXPECT_EQ(name.size(), length);
}

TEST_F(SystemContract, DrivesStandForDevicesWhoseNamesEndInTwoNuls) {
  for (const std::string& drive : {world().connectedDrive(), localDrive()}) {
    const std::string names = deviceNames(drive);
    ASSERT_GT(names.size(), 10U);
    EXPECT_EQ(names.substr(0, 8), "\\Device\\");
    EXPECT_EQ(names.substr(names.size() - 2), std::string(2, '\0'));
    EXPECT_NE(names[names.size() - 3], '\0');
  }
}

TEST_F(SystemContract, TheBufferForDevicesHoldsBothNuls) {
  const std::string names = deviceNames(localDrive());
  const auto length = static_cast<std::uint32_t>(names.size());
  std::string again;
  EXPECT_EQ(system().deviceNames(localDrive(), length, again), system_code::kSuccess);
  EXPECT_EQ(again, names);
  std::string kept = "old";
  EXPECT_EQ(system().deviceNames(localDrive(), length - 1, kept), 122U);
  EXPECT_EQ(system().deviceNames(lowerCase(world().connectedDrive()), 1, kept), 122U);
  EXPECT_EQ(kept, "old");
}

TEST_F(SystemContract, TheComputersNameIsThatOfItsVariable) {
  std::string name;
  ASSERT_EQ(system().computerName(name), system_code::kSuccess);
  EXPECT_EQ(upperCase(name), upperCase(get("COMPUTERNAME")));
  EXPECT_EQ(name.find('\\'), std::string::npos);
}

// --- Clock and locale

TEST_F(SystemContract, TheClockGivesADate) {
  const LocalTime now = machine().clock.now();
  EXPECT_GE(now.year, 2024);
  EXPECT_TRUE(now.month >= 1 && now.month <= 12);
  EXPECT_TRUE(now.day >= 1 && now.day <= 31);
  EXPECT_TRUE(now.hour >= 0 && now.hour <= 23);
  EXPECT_TRUE(now.minute >= 0 && now.minute <= 59);
  EXPECT_TRUE(now.second >= 0 && now.second <= 60);
}

TEST_F(SystemContract, AFileThatWasWrittenNowIsOfToday) {
  const LocalTime before = machine().clock.now();
  machine::FileFacts facts;
  ASSERT_EQ(machine().files.look(putFile("now.txt", "x"), facts), system_code::kSuccess);
  const LocalTime written = machine().clock.localTime(facts.modified);
  const LocalTime after = machine().clock.now();
  const auto minutes = [](const LocalTime& time) -> int {
    return (time.day * 24 + time.hour) * 60 + time.minute;
  };
  if (before.month == after.month) {
    EXPECT_EQ(written.year, after.year);
    EXPECT_EQ(written.month, after.month);
    EXPECT_LE(minutes(before), minutes(written) + 1);
    EXPECT_LE(minutes(written), minutes(after));
  }
}

TEST_F(SystemContract, TheKernelHasTheFunctionsOfItsSystem) {
  EXPECT_TRUE(machine().system.hasKernelFunction("GetProcAddress"));
  EXPECT_FALSE(machine().system.hasKernelFunction("GetProcAddressOfTheNextSystem"));
}

TEST_F(SystemContract, ItalianDatesAndTimes) {
  const LocalTime time{2009, 3, 5, 1, 2, 3};
  EXPECT_EQ(locale().shortDate(time), "05/03/2009");
  EXPECT_EQ(locale().longTime(time), "01:02:03");
  EXPECT_EQ(locale().longTime({2009, 3, 5, 23, 59, 0}), "23:59:00");
}

TEST_F(SystemContract, ItalianMonthsAndTruth) {
  EXPECT_EQ(locale().monthName(1), "gennaio");
  EXPECT_EQ(locale().monthName(3), "marzo");
  EXPECT_EQ(locale().monthName(12), "dicembre");
  EXPECT_EQ(locale().truthText(true), "Vero");
  EXPECT_EQ(locale().truthText(false), "Falso");
}

TEST_F(SystemContract, AnsiTextComesBack) {
  EXPECT_EQ(locale().toAnsi("\u00E8\u00E0\u20AC abc"), "\xE8\xE0\x80 abc");
  EXPECT_EQ(locale().fromAnsi("\xE8\xE0\x80 abc"), "\u00E8\u00E0\u20AC abc");
  EXPECT_EQ(locale().toAnsi(""), "");
  EXPECT_EQ(locale().fromAnsi(""), "");
}

TEST_F(SystemContract, EveryByteOfTheCodePageComesBack) {
  for (int code = 0; code < 256; ++code) {
    const std::string byte(1, static_cast<char>(code));
    EXPECT_EQ(locale().toAnsi(locale().fromAnsi(byte)), byte) << code;
  }
}

TEST_F(SystemContract, WhatTheCodePageLacksBecomesAQuestionMarkAndNoSimilarCharacter) {
  EXPECT_EQ(locale().toAnsi("a\u4E2Db"), "a?b");
  EXPECT_EQ(locale().toAnsi("\u0416"), "?");
  EXPECT_EQ(locale().toAnsi("\u0101\u03B1\u2260"), "???");
}

// --- Version resources

TEST_F(SystemContract, AFilesVersionIsItsFourNumbers) {
  world().putVersionedFile(path("v.exe"), {3, 20, 30, 65535});
  machine::FileVersion version{};
  ASSERT_EQ(machine().versions.read(path("v.exe"), version), system_code::kSuccess);
  EXPECT_EQ(version, (machine::FileVersion{3, 20, 30, 65535}));
}

TEST_F(SystemContract, WithoutVersionResourceItAnswers1812) {
  world().putUnversionedFile(path("u.exe"));
  machine::FileVersion version{1, 2, 3, 4};
  EXPECT_EQ(machine().versions.read(path("u.exe"), version), 1812U);
  EXPECT_EQ(version, (machine::FileVersion{1, 2, 3, 4}));
}

TEST_F(SystemContract, TheVersionOfAFileThatOthersMayNotReadAnswers32) {
  CONTRACT_NEEDS(Ability::HoldFiles, "files cannot be held against others here");
  world().putFile(path("v.exe"), "x");
  const auto held = world().hold(path("v.exe"), {});
  machine::FileVersion version{};
  EXPECT_EQ(machine().versions.read(path("v.exe"), version), 32U);
}

TEST_F(SystemContract, TheVersionOfAMissingFileAnswers2) {
  machine::FileVersion version{};
  EXPECT_EQ(machine().versions.read(path("none.exe"), version), 2U);
}

// --- Host libraries

TEST_F(SystemContract, TheSupportLibraryIsAbsentWhereTheSuiteIsNotInstalled) {
  EXPECT_EQ(machine().support.isAdministrator(), machine::SupportAnswer::Absent);
  std::string buffer(100, ' ');
  EXPECT_EQ(machine().support.temporaryPath(buffer), machine::SupportAnswer::Absent);
  EXPECT_EQ(buffer, std::string(100, ' '));
}

}  // namespace
}  // namespace trelv::contract
