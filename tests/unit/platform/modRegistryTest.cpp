#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "platform/modRegistry.h"
#include "support/FakeProgram.h"

namespace trelv::modRegistry {
namespace {

using machine::Hive;
using testing::IsEmpty;
using tests::FakeProgram;

constexpr Hive kMachine = Hive::LocalMachine;
constexpr const char* kKey = "SOFTWARE\\LUMO\\Programmi";

/// ASCII as the registry stores it.
std::string wide(const std::string& text) {
  std::string bytes;
  for (const char c : text) {
    bytes += c;
    bytes += '\0';
  }
  return bytes;
}

class RegistryTest : public testing::Test {
 protected:
  bool query(const std::string& name, Variant& value) {
    return QueryValue(program, kMachine, kKey, name, value);
  }
  std::string text(const std::string& name) {
    Variant value;
    return query(name, value) ? std::get<std::string>(value) : "(none)";
  }
  void store(const std::string& name, std::uint32_t type, const std::string& bytes) {
    registry.setStored(kMachine, kKey, name, type, bytes);
  }

  FakeProgram program;
  sim::SimRegistry& registry = program.sim.registry();
};

// --- CreateKey

TEST_F(RegistryTest, CreateKeyMakesTheKeyWithItsParents) {
  EXPECT_TRUE(CreateKey(program, kKey, kMachine));
  EXPECT_TRUE(registry.keyExists(kMachine, kKey));
  EXPECT_FALSE(registry.keyExists(Hive::CurrentUser, kKey));
}

TEST_F(RegistryTest, CreateKeyLeavesAnExistingKeyAsItIs) {
  registry.setText(kMachine, kKey, "a", "x");
  EXPECT_TRUE(CreateKey(program, kKey, kMachine));
  EXPECT_EQ(registry.text(kMachine, kKey, "a"), "x");
}

TEST_F(RegistryTest, CreateKeyAnswersFalseWhenRefused) {
  registry.denyWriting(kMachine, "SOFTWARE");
  EXPECT_FALSE(CreateKey(program, kKey, kMachine));
  EXPECT_FALSE(CreateKey(program, "\\SOFTWARE\\x", kMachine));
  EXPECT_THAT(program.reports(), IsEmpty());
}

// --- SetKeyValue

TEST_F(RegistryTest, SetKeyValueWritesTextWithItsNul) {
  registry.makeKey(kMachine, kKey);
  EXPECT_TRUE(SetKeyValue(program, kMachine, kKey, "a", std::string("C:\\Città"),
                          machine::value_type::kText));
  EXPECT_EQ(registry.text(kMachine, kKey, "a"), "C:\\Città");
  const auto stored = registry.value(kMachine, kKey, "a");
  ASSERT_TRUE(stored.has_value());
  EXPECT_EQ(stored->type, 1U);
  // Eight characters and the NUL, two bytes each.
  EXPECT_EQ(stored->stored.size(), 18U);
}

TEST_F(RegistryTest, SetKeyValueWritesEmptyText) {
  registry.makeKey(kMachine, kKey);
  EXPECT_TRUE(SetKeyValue(program, kMachine, kKey, "a", std::string(), machine::value_type::kText));
  EXPECT_EQ(registry.text(kMachine, kKey, "a"), "");
}

TEST_F(RegistryTest, SetKeyValueWritesNumbersInFourBytes) {
  registry.makeKey(kMachine, kKey);
  const std::uint32_t type = machine::value_type::kNumber;
  EXPECT_TRUE(SetKeyValue(program, kMachine, kKey, "a", std::int32_t{-2}, type));
  EXPECT_TRUE(SetKeyValue(program, kMachine, kKey, "b", std::string(" 258 "), type));
  EXPECT_EQ(registry.value(kMachine, kKey, "a")->stored, "\xFE\xFF\xFF\xFF");
  EXPECT_EQ(registry.value(kMachine, kKey, "b")->stored, std::string("\x02\x01\0\0", 4));
}

TEST_F(RegistryTest, SetKeyValueWritesANumberAsText) {
  registry.makeKey(kMachine, kKey);
  EXPECT_TRUE(
      SetKeyValue(program, kMachine, kKey, "a", std::int32_t{-7}, machine::value_type::kText));
  EXPECT_EQ(registry.text(kMachine, kKey, "a"), "-7");
}

TEST_F(RegistryTest, SetKeyValueReportsATextThatIsNoNumber) {
  registry.makeKey(kMachine, kKey);
  for (const char* const bad : {"abc", "12a", "", "2147483648"}) {
    EXPECT_FALSE(
        SetKeyValue(program, kMachine, kKey, "a", std::string(bad), machine::value_type::kNumber))
        << bad;
  }
  ASSERT_EQ(program.reports().size(), 4U);
  EXPECT_EQ(program.reports()[0].module, "modRegistry");
  EXPECT_EQ(program.reports()[0].procedure, "SetValueEx");
  EXPECT_EQ(program.reports()[0].failure.number(), 13);
  EXPECT_EQ(program.reports()[3].failure.number(), 6);
  EXPECT_FALSE(registry.value(kMachine, kKey, "a").has_value());
}

TEST_F(RegistryTest, SetKeyValueWritesNothingOfOtherTypesYetAnswersTrue) {
  registry.makeKey(kMachine, kKey);
  for (const std::uint32_t type : {2U, 3U, 7U, 11U}) {
    EXPECT_TRUE(SetKeyValue(program, kMachine, kKey, "a", std::string("x"), type));
  }
  EXPECT_FALSE(registry.value(kMachine, kKey, "a").has_value());
}

TEST_F(RegistryTest, SetKeyValueNeedsAKeyThatIsThereAndMayBeWritten) {
  const std::uint32_t type = machine::value_type::kText;
  EXPECT_FALSE(SetKeyValue(program, kMachine, kKey, "a", std::string("x"), type));
  EXPECT_FALSE(registry.keyExists(kMachine, kKey));
  registry.makeKey(kMachine, kKey);
  registry.denyWriting(kMachine, kKey);
  EXPECT_FALSE(SetKeyValue(program, kMachine, kKey, "a", std::string("x"), type));
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST_F(RegistryTest, SetKeyValueAnswersFalseWhenTheWriteFails) {
  registry.makeKey(kMachine, kKey);
  program.sim.callLog().setInjector([](const sim::SimCall& call) -> std::optional<SystemCode> {
    return call.kind == sim::CallKind::RegistryWrite ? std::optional<SystemCode>(5) : std::nullopt;
  });
  EXPECT_FALSE(
      SetKeyValue(program, kMachine, kKey, "a", std::string("x"), machine::value_type::kText));
}

// --- QueryValue

TEST_F(RegistryTest, QueryValueReadsTextWithoutItsNul) {
  registry.setText(kMachine, kKey, "a", "C:\\Città");
  EXPECT_EQ(text("a"), "C:\\Città");
  EXPECT_EQ(text("A"), "C:\\Città");
}

TEST_F(RegistryTest, QueryValueReadsEmptyText) {
  registry.setText(kMachine, kKey, "a", "");
  EXPECT_EQ(text("a"), "");
}

TEST_F(RegistryTest, QueryValueReadsAValueOfNoBytesAsEmptyText) {
  store("a", machine::value_type::kText, "");
  EXPECT_EQ(text("a"), "");
}

TEST_F(RegistryTest, QueryValueLosesTheLastCharacterOfATextWithoutNul) {
  // Five bytes: two whole characters and half a one.
  store("a", machine::value_type::kText, std::string("a\0b\0c", 5));
  EXPECT_EQ(text("a"), "a");
}

TEST_F(RegistryTest, QueryValueKeepsInnerNuls) {
  store("m", machine::value_type::kMultiText,
        wide("one") + std::string(2, '\0') + wide("two") + std::string(4, '\0'));
  EXPECT_EQ(text("m"), std::string("one\0two\0", 8));
  store("s", machine::value_type::kText,
        wide("ab") + std::string(2, '\0') + wide("cd") + std::string(2, '\0'));
  EXPECT_EQ(text("s"), std::string("ab\0cd", 5));
}

TEST_F(RegistryTest, QueryValueReadsNumbersWithTheirSign) {
  store("a", machine::value_type::kNumber, std::string("\x02\x01\0\0", 4));
  store("b", machine::value_type::kNumber, "\xFF\xFF\xFF\xFF");
  store("c", machine::value_type::kNumber, std::string("\0\0\0\x80", 4));
  Variant value;
  EXPECT_TRUE(query("a", value));
  EXPECT_EQ(std::get<std::int32_t>(value), 258);
  EXPECT_TRUE(query("b", value));
  EXPECT_EQ(std::get<std::int32_t>(value), -1);
  EXPECT_TRUE(query("c", value));
  EXPECT_EQ(std::get<std::int32_t>(value), std::numeric_limits<std::int32_t>::min());
}

TEST_F(RegistryTest, QueryValueReadsAShortNumberAndRefusesALongOne) {
  store("short", machine::value_type::kNumber, std::string("\x02\x01", 2));
  store("long", machine::value_type::kNumber, std::string(8, '\x01'));
  Variant value = std::string("before");
  EXPECT_FALSE(query("long", value));
  EXPECT_EQ(std::get<std::string>(value), "before");
  EXPECT_TRUE(query("short", value));
  EXPECT_EQ(std::get<std::int32_t>(value), 258);
}

TEST_F(RegistryTest, QueryValueRefusesOtherTypesAndLeavesTheValueAlone) {
  store("expand", machine::value_type::kExpandText, wide("%windir%") + std::string(2, '\0'));
  store("binary", machine::value_type::kBinary, "abc");
  Variant value = std::int32_t{7};
  EXPECT_FALSE(query("expand", value));
  EXPECT_FALSE(query("binary", value));
  EXPECT_EQ(std::get<std::int32_t>(value), 7);
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST_F(RegistryTest, QueryValueOfAMissingKeyOrValueAnswersFalseInSilence) {
  Variant value = std::int32_t{7};
  EXPECT_FALSE(query("a", value));
  registry.makeKey(kMachine, kKey);
  EXPECT_FALSE(query("a", value));
  EXPECT_FALSE(query("", value));
  EXPECT_EQ(std::get<std::int32_t>(value), 7);
  EXPECT_THAT(program.reports(), IsEmpty());
  EXPECT_THAT(program.lines(), IsEmpty());
}

TEST_F(RegistryTest, QueryValueReadsTheDefaultValue) {
  registry.setText(kMachine, kKey, "", "x");
  EXPECT_EQ(text(""), "x");
}

TEST_F(RegistryTest, QueryValueOfARefusedKeyAnswersFalse) {
  registry.setText(kMachine, kKey, "a", "x");
  registry.deny(kMachine, kKey);
  EXPECT_EQ(text("a"), "(none)");
}

TEST_F(RegistryTest, QueryValueEmptiesTheTextWhenTheSecondReadFails) {
  registry.setText(kMachine, kKey, "a", "x");
  program.sim.callLog().setInjector([](const sim::SimCall& call) -> std::optional<SystemCode> {
    return call.kind == sim::CallKind::RegistryRead ? std::optional<SystemCode>(234) : std::nullopt;
  });
  Variant value = std::string("before");
  EXPECT_FALSE(query("a", value));
  EXPECT_EQ(std::get<std::string>(value), "");
}

TEST_F(RegistryTest, QueryValueReportsWhenTypeAndSizeCannotBeRead) {
  registry.setText(kMachine, kKey, "a", "x");
  program.sim.callLog().setInjector([](const sim::SimCall& call) -> std::optional<SystemCode> {
    return call.kind == sim::CallKind::RegistryDescribe ? std::optional<SystemCode>(5)
                                                        : std::nullopt;
  });
  Variant value = std::int32_t{7};
  EXPECT_FALSE(query("a", value));
  EXPECT_EQ(std::get<std::int32_t>(value), 7);
  ASSERT_EQ(program.reports().size(), 1U);
  EXPECT_EQ(program.reports()[0].module, "modRegistry");
  EXPECT_EQ(program.reports()[0].procedure, "QueryValueEx");
}

TEST_F(RegistryTest, QueryValueExTellsTheSystemsCodeOrMinusOne) {
  store("expand", machine::value_type::kExpandText, wide("x") + std::string(2, '\0'));
  registry.setText(kMachine, kKey, "a", "x");
  std::unique_ptr<machine::RegistryKey> key;
  ASSERT_EQ(registry.openKey(kMachine, kKey, machine::key_access::kQueryValue, key), 0U);
  Variant value;
  EXPECT_EQ(QueryValueEx(program, *key, "a", value), 0);
  EXPECT_EQ(QueryValueEx(program, *key, "no", value), 2);
  EXPECT_EQ(QueryValueEx(program, *key, "expand", value), -1);
}

// --- FindRegisteredFile

constexpr const char* kClasses = "Software\\Classes\\ClsID";

class FindRegisteredFileTest : public RegistryTest {
 protected:
  void put(const std::string& keys, const std::string& file) {
    registry.setText(kMachine, std::string(kClasses) + "\\" + keys, "", file);
  }
  std::string find(const std::string& search) {
    return FindRegisteredFile(program, kClasses, search);
  }
};

TEST_F(FindRegisteredFileTest, GivesTheValueAsStoredWithoutRegardToCase) {
  put("{1}\\InprocServer32", "C:\\WINDOWS\\other.ocx");
  put("{2}\\InprocServer32", "S:\\Lumo\\PRG\\Control.ocx");
  EXPECT_EQ(find("lumo\\prg\\CONTROL.OCX"), "S:\\Lumo\\PRG\\Control.ocx");
}

TEST_F(FindRegisteredFileTest, GivesTheFirstInOrderOfEnumeration) {
  put("{3}\\InprocServer32", "C:\\c\\x.ocx");
  put("{1}\\ToolboxBitmap32", "C:\\a\\x.ocx");
  put("{1}\\InprocServer32", "C:\\b\\x.ocx");
  EXPECT_EQ(find("x.ocx"), "C:\\b\\x.ocx");
}

TEST_F(FindRegisteredFileTest, LooksExactlyTwoLevelsDown) {
  put("{1}", "C:\\a\\x.ocx");
  put("{1}\\InprocServer32\\deeper", "C:\\b\\x.ocx");
  EXPECT_EQ(find("x.ocx"), "");
}

TEST_F(FindRegisteredFileTest, ReadsPlainTextsOnly) {
  const std::string key = std::string(kClasses) + "\\{1}\\InprocServer32";
  registry.setStored(kMachine, key, "", machine::value_type::kExpandText,
                     wide("C:\\x.ocx") + std::string(2, '\0'));
  EXPECT_EQ(find("x.ocx"), "");
  registry.setText(kMachine, key, "", "C:\\x.ocx");
  EXPECT_EQ(find("x.ocx"), "C:\\x.ocx");
}

TEST_F(FindRegisteredFileTest, GoesOnAfterKeysThatCannotBeOpened) {
  put("{1}\\InprocServer32", "C:\\a\\x.ocx");
  put("{2}\\InprocServer32", "C:\\b\\x.ocx");
  registry.makeKey(kMachine, std::string(kClasses) + "\\{2}\\Implemented");
  registry.deny(kMachine, std::string(kClasses) + "\\{1}");
  EXPECT_EQ(find("x.ocx"), "C:\\b\\x.ocx");
}

TEST_F(FindRegisteredFileTest, IsEmptyWithoutTheTreeOrAMatch) {
  EXPECT_EQ(find("x.ocx"), "");
  put("{1}\\InprocServer32", "C:\\a\\y.ocx");
  EXPECT_EQ(find("x.ocx"), "");
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST_F(FindRegisteredFileTest, EndsAtANameThatDoesNotFitTheBuffer) {
  put("{1}" + std::string(252, 'x') + "\\InprocServer32", "C:\\a\\z.ocx");
  put("{2}\\InprocServer32", "C:\\b\\x.ocx");
  EXPECT_EQ(find("x.ocx"), "");
  registry.removeKey(kMachine, std::string(kClasses) + "\\{1}" + std::string(252, 'x'));
  EXPECT_EQ(find("x.ocx"), "C:\\b\\x.ocx");
}

// --- Product folders

TEST_F(RegistryTest, OlvamarFolderHasTheSuffixInItsKey) {
  registry.setText(kMachine, "Software\\Microsoft\\Windows\\CurrentVersion\\uninstall\\Olvamar2007",
                   "InstallLocation", "C:\\Olv7\\");
  registry.setText(kMachine, "Software\\Microsoft\\Windows\\CurrentVersion\\uninstall\\Olvamar",
                   "InstallLocation", "C:\\Olv\\");
  EXPECT_EQ(OlvamarFolder(program, "2007"), "C:\\Olv7");
  EXPECT_EQ(OlvamarFolder(program, "2008"), "");
  EXPECT_EQ(OlvamarFolder(program, ""), "C:\\Olv");
}

TEST_F(RegistryTest, OtherProductFoldersHaveTheirOwnKeys) {
  EXPECT_EQ(BrundelFolder(program), "");
  EXPECT_EQ(KexoraFolder(program), "");
  EXPECT_EQ(GastrimFolder(program), "");
  registry.setText(kMachine, "Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\Brundel",
                   "Path", "C:\\Brundel");
  registry.setText(kMachine, "Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\Kexora.exe",
                   "Path", "C:\\Kexora");
  registry.setText(kMachine, "Software\\AutoSetupInfo\\GASTRIM", "ProgramPath", "C:\\Gastrim");
  EXPECT_EQ(BrundelFolder(program), "C:\\Brundel");
  EXPECT_EQ(KexoraFolder(program), "C:\\Kexora");
  EXPECT_EQ(GastrimFolder(program), "C:\\Gastrim");
}

TEST_F(RegistryTest, AProductFolderLosesBlanksAndOneBackslash) {
  const char* const key = "Software\\AutoSetupInfo\\GASTRIM";
  registry.setText(kMachine, key, "ProgramPath", "  C:\\Gastrim\\ ");
  EXPECT_EQ(GastrimFolder(program), "C:\\Gastrim");
  registry.setText(kMachine, key, "ProgramPath", "C:\\Gastrim\\\\");
  EXPECT_EQ(GastrimFolder(program), "C:\\Gastrim\\");
  EXPECT_THAT(program.reports(), IsEmpty());
}

}  // namespace
}  // namespace trelv::modRegistry
