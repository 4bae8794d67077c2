#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <tuple>

#include "platform/modRegistry.h"
#include "support/FakeProgram.h"
#include "support/Matchers.h"
#include "support/Refusals.h"

namespace trelv::modRegistry {
namespace {

using machine::Hive;
using sim::CallKind;
using testing::_;
using testing::ElementsAre;
using testing::IsEmpty;
using tests::FakeProgram;
using tests::isReport;
using tests::refuse;

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

constexpr std::uint32_t kText = machine::value_type::kText;
constexpr std::uint32_t kNumber = machine::value_type::kNumber;

/// A text with its NUL, as the registry stores it.
std::string stored(const std::string& text) { return wide(text) + std::string(2, '\0'); }

class RegistryTest : public testing::Test {
 protected:
  /// The value of a query that began with the text "before"; "unread" when it answers false and
  /// left that.
  Variant query(const std::string& name) {
    Variant value = std::string("before");
    if (QueryValue(program, kMachine, kKey, name, value)) {
      return value;
    }
    return value == Variant(std::string("before")) ? std::string("unread") : value;
  }
  bool set(const Variant& value, std::uint32_t type) {
    return SetKeyValue(program, kMachine, kKey, "a", value, type);
  }
  /// The bytes of value "a"; "none" when it is missing.
  std::string bytes() {
    const auto value = registry.value(kMachine, kKey, "a");
    return value.has_value() ? value->stored : "none";
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

TEST_F(RegistryTest, SetKeyValueWritesTextWithItsNulAndNumbersInFourBytes) {
  registry.makeKey(kMachine, kKey);
  const std::vector<std::tuple<std::uint32_t, Variant, std::string>> rows = {
      {kText, std::string("C:\\x"), stored("C:\\x")},
      {kText, std::string("\u00E0"), std::string("\xE0\0\0\0", 4)},
      {kText, std::string(), stored("")},
      {kText, std::int32_t{-7}, stored("-7")},
      {kNumber, std::int32_t{-2}, "\xFE\xFF\xFF\xFF"},
      {kNumber, std::string(" 258 "), std::string("\x02\x01\0\0", 4)},
      {kNumber, std::string("+1"), std::string("\x01\0\0\0", 4)},
      {kNumber, std::string("-2147483648"), std::string("\0\0\0\x80", 4)}};
  for (const auto& [type, value, data] : rows) {
    EXPECT_TRUE(set(value, type));
    EXPECT_EQ(bytes(), data);
    EXPECT_EQ(registry.value(kMachine, kKey, "a")->type, type);
  }
}

TEST_F(RegistryTest, SetKeyValueReportsATextThatIsNoNumber) {
  registry.makeKey(kMachine, kKey);
  for (const auto& [text, number] :
       std::vector<std::pair<std::string, std::int32_t>>{{"abc", 13},
                                                         {"12a", 13},
                                                         {"", 13},
                                                         {"+", 13},
                                                         {"+-1", 13},
                                                         {"2147483648", 6},
                                                         {"-2147483649", 6}}) {
    program.errors.reports.clear();
    EXPECT_FALSE(set(text, kNumber)) << text;
    EXPECT_THAT(program.reports(), ElementsAre(isReport("SetValueEx", _, number, "modRegistry")));
  }
  EXPECT_EQ(bytes(), "none");
}

TEST_F(RegistryTest, SetKeyValueWritesNothingOfOtherTypesYetAnswersTrue) {
  registry.makeKey(kMachine, kKey);
  for (const std::uint32_t type : {2U, 3U, 7U, 11U}) EXPECT_TRUE(set(std::string("x"), type));
  EXPECT_EQ(bytes(), "none");
}

TEST_F(RegistryTest, SetKeyValueNeedsAKeyThatIsThereAndMayBeWritten) {
  EXPECT_FALSE(set(std::string("x"), kText));
  EXPECT_FALSE(registry.keyExists(kMachine, kKey));
  registry.makeKey(kMachine, kKey);
  program.sim.callLog().setInjector(refuse({CallKind::RegistryWrite}));
  EXPECT_FALSE(set(std::string("x"), kText));
  program.sim.callLog().setInjector(nullptr);
  registry.denyWriting(kMachine, kKey);
  EXPECT_FALSE(set(std::string("x"), kText));
  EXPECT_THAT(program.reports(), IsEmpty());
}

// --- QueryValue

TEST_F(RegistryTest, QueryValueReadsTextsAndNumbersAsTheyAreStored) {
  const std::vector<std::tuple<std::uint32_t, std::string, Variant>> rows = {
      {kText, stored("C:\\x"), std::string("C:\\x")},
      {kText, std::string("\xE0\0\0\0", 4), std::string("\u00E0")},
      {kText, stored(""), std::string()},
      {kText, "", std::string()},
      // Five bytes: two whole characters and half a one. The last counts as the NUL.
      {kText, std::string("a\0b\0c", 5), std::string("a")},
      {kText, stored("ab") + stored("cd"), std::string("ab\0cd", 5)},
      {machine::value_type::kMultiText, stored("one") + stored("two") + stored(""),
       std::string("one\0two\0", 8)},
      {kNumber, std::string("\x02\x01\0\0", 4), std::int32_t{258}},
      {kNumber, "\xFF\xFF\xFF\xFF", std::int32_t{-1}},
      {kNumber, std::string("\0\0\0\x80", 4), std::numeric_limits<std::int32_t>::min()},
      {kNumber, std::string("\x02\x01", 2), std::int32_t{258}},
      {kNumber, std::string(8, '\x01'), std::string("unread")},
      {machine::value_type::kExpandText, stored("%windir%"), std::string("unread")},
      {machine::value_type::kBinary, "abc", std::string("unread")}};
  for (const auto& [type, data, value] : rows) {
    registry.setStored(kMachine, kKey, "a", type, data);
    EXPECT_EQ(query("a"), value) << testing::PrintToString(data);
    EXPECT_EQ(query("A"), value);
  }
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST_F(RegistryTest, QueryValueOfAMissingOrRefusedKeyOrValueAnswersFalseInSilence) {
  const Variant unread = std::string("unread");
  EXPECT_EQ(query("a"), unread);
  registry.makeKey(kMachine, kKey);
  EXPECT_EQ(query("a"), unread);
  EXPECT_EQ(query(""), unread);
  registry.setText(kMachine, kKey, "", "x");
  EXPECT_EQ(query(""), Variant(std::string("x"))) << "the default value";
  registry.deny(kMachine, kKey);
  EXPECT_EQ(query(""), unread);
  EXPECT_THAT(program.reports(), IsEmpty());
  EXPECT_THAT(program.lines(), IsEmpty());
}

TEST_F(RegistryTest, QueryValueEmptiesTheTextWhenTheSecondReadFails) {
  registry.setText(kMachine, kKey, "a", "x");
  program.sim.callLog().setInjector(refuse({CallKind::RegistryRead}, 234));
  EXPECT_EQ(query("a"), Variant(std::string()));
  Variant value;
  EXPECT_FALSE(QueryValue(program, kMachine, kKey, "a", value));
}

TEST_F(RegistryTest, QueryValueReportsWhenTypeAndSizeCannotBeRead) {
  registry.setText(kMachine, kKey, "a", "x");
  program.sim.callLog().setInjector(refuse({CallKind::RegistryDescribe}));
  EXPECT_EQ(query("a"), Variant(std::string("unread")));
  EXPECT_THAT(program.reports(), ElementsAre(isReport("QueryValueEx", _, _, "modRegistry")));
}

TEST_F(RegistryTest, QueryValueExTellsTheSystemsCodeOrMinusOne) {
  registry.setStored(kMachine, kKey, "expand", machine::value_type::kExpandText, stored("x"));
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
  static std::string keyOf(const std::string& keys) { return std::string(kClasses) + "\\" + keys; }
  void put(const std::string& keys, const std::string& file) {
    registry.setText(kMachine, keyOf(keys), "", file);
  }
  std::string find(const std::string& search = "x.ocx") {
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
  EXPECT_EQ(find(), "C:\\b\\x.ocx");
}

TEST_F(FindRegisteredFileTest, LooksAtPlainTextsExactlyTwoLevelsDown) {
  EXPECT_EQ(find(), "") << "without the tree";
  put("{1}", "C:\\a\\x.ocx");
  put("{1}\\InprocServer32", "C:\\a\\y.ocx");
  put("{1}\\InprocServer32\\deeper", "C:\\b\\x.ocx");
  registry.setStored(kMachine, keyOf("{2}\\InprocServer32"), "", machine::value_type::kExpandText,
                     stored("C:\\x.ocx"));
  EXPECT_EQ(find(), "");
  put("{2}\\InprocServer32", "C:\\x.ocx");
  EXPECT_EQ(find(), "C:\\x.ocx");
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST_F(FindRegisteredFileTest, GoesOnAfterKeysThatCannotBeOpened) {
  put("{1}\\InprocServer32", "C:\\a\\x.ocx");
  put("{2}\\InprocServer32", "C:\\b\\x.ocx");
  registry.makeKey(kMachine, keyOf("{2}\\Implemented"));
  registry.deny(kMachine, keyOf("{1}"));
  EXPECT_EQ(find(), "C:\\b\\x.ocx");
}

TEST_F(FindRegisteredFileTest, EndsAtANameThatDoesNotFitTheBuffer) {
  const std::string longName = "{1}" + std::string(252, 'x');
  put(longName + "\\InprocServer32", "C:\\a\\z.ocx");
  put("{2}\\InprocServer32", "C:\\b\\x.ocx");
  EXPECT_EQ(find(), "");
  registry.removeKey(kMachine, keyOf(longName));
  EXPECT_EQ(find(), "C:\\b\\x.ocx");
}

// --- Product folders

TEST_F(RegistryTest, ProductFoldersHaveTheirOwnKeysAndLoseBlanksAndOneBackslash) {
  const std::string current = "Software\\Microsoft\\Windows\\CurrentVersion\\";
  EXPECT_EQ(BrundelFolder(program) + KexoraFolder(program) + GastrimFolder(program), "");
  registry.setText(kMachine, current + "uninstall\\Olvamar2007", "InstallLocation", "C:\\Olv7\\");
  registry.setText(kMachine, current + "uninstall\\Olvamar", "InstallLocation", "C:\\Olv\\");
  registry.setText(kMachine, current + "App Paths\\Brundel", "Path", "C:\\Brundel");
  registry.setText(kMachine, current + "App Paths\\Kexora.exe", "Path", "  C:\\Kexora\\ ");
  registry.setText(kMachine, "Software\\AutoSetupInfo\\GASTRIM", "ProgramPath", "C:\\Gastrim\\\\");
  EXPECT_EQ(OlvamarFolder(program, "2007"), "C:\\Olv7");
  EXPECT_EQ(OlvamarFolder(program, "2008"), "");
  EXPECT_EQ(OlvamarFolder(program, ""), "C:\\Olv");
  EXPECT_EQ(BrundelFolder(program), "C:\\Brundel");
  EXPECT_EQ(KexoraFolder(program), "C:\\Kexora");
  EXPECT_EQ(GastrimFolder(program), "C:\\Gastrim\\");
  EXPECT_THAT(program.reports(), IsEmpty());
}

}  // namespace
}  // namespace trelv::modRegistry
