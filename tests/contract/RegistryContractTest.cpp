#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "contract/Contract.h"
#include "support/Rows.h"

namespace trelv::contract {
namespace {

using machine::Hive;
using machine::RegistryKey;
using testing::ElementsAre;
using testing::UnorderedElementsAre;
using tests::NameOfRow;
namespace key_access = machine::key_access;
namespace value_type = machine::value_type;

/// UTF-16LE of ASCII characters, NULs included.
std::string inUtf16(std::string_view text) {
  std::string wide;
  for (const char character : text) {
    wide += character;
    wide += '\0';
  }
  return wide;
}

/// What a value looks like to a reader that first asks for its size.
struct Seen {
  SystemCode code = 0;
  std::uint32_t type = 0;
  std::uint32_t size = 0;
  std::string data;

  friend bool operator==(const Seen&, const Seen&) = default;
  friend void PrintTo(const Seen& seen, std::ostream* out) {
    *out << "code " << seen.code << " type " << seen.type << " size " << seen.size << " data "
         << testing::PrintToString(seen.data);
  }
};

class RegistryContract : public Contract {
 protected:
  using Key = std::unique_ptr<RegistryKey>;

  SystemCode open(const std::string& path, std::uint32_t access, Key& key) {
    return machine().registry.openKey(Hive::CurrentUser, path, access, key);
  }
  SystemCode create(const std::string& path, Key& key) {
    return machine().registry.createKey(Hive::CurrentUser, path, key_access::kAll, key);
  }

  Key opened(std::uint32_t access) {
    Key key;
    EXPECT_EQ(open(world().registryKey(), access, key), system_code::kSuccess);
    return key;
  }

  Seen seen(const std::string& name) {
    const auto key = opened(key_access::kQueryValue);
    Seen result;
    result.code = key->describeValue(name, result.type, result.size);
    if (result.code != system_code::kSuccess) return result;
    result.data.assign(result.size, '#');
    result.code = key->readValue(name, result.data);
    return result;
  }

  /// Puts a value "v" below this test's key.
  void store(std::uint32_t type, std::string_view data) {
    world().storeValue(world().registryKey(), "v", type, data);
  }
  void storeText(std::string_view text) { store(value_type::kText, inUtf16(text)); }

  void write(const std::string& name, std::uint32_t type, const std::string& data) {
    EXPECT_EQ(opened(key_access::kSetValue)->writeValue(name, type, data), system_code::kSuccess);
  }

  /// Names of the sub-keys, asked for with a buffer of 255, up to the one that answers `last`.
  std::vector<std::string> subKeys(SystemCode last) {
    const auto key = opened(key_access::kEnumerate);
    std::vector<std::string> names;
    SystemCode code = system_code::kSuccess;
    for (std::string name; (code = key->subKeyName(static_cast<std::uint32_t>(names.size()), 255,
                                                   name)) == system_code::kSuccess;) {
      names.push_back(name);
    }
    EXPECT_EQ(code, last);
    return names;
  }

  void makeSubKey(const std::string& name) {
    Key key;
    EXPECT_EQ(create(world().registryKey() + "\\" + name, key), system_code::kSuccess);
  }

  /// For names that the ANSI interface cannot make.
  void storeSubKey(const std::string& name) {
    world().storeValue(world().registryKey() + "\\" + name, "v", value_type::kBinary, "x");
  }
};

using namespace std::string_literals;

// --- Sizes and data

/// A value as it is stored, and what its reader gets.
struct Stored : tests::Row {
  std::uint32_t type;
  std::string stored;
  std::uint32_t size;
  std::string data;
};

const std::vector<Stored> kStored = {
    {"ATextCountsItsNul", value_type::kText, inUtf16("abc\0"s), 4, "abc\0"s},
    {"AnEmptyTextIsOneNul", value_type::kText, inUtf16("\0"s), 1, "\0"s},
    {"ATextOfNoBytesHasSize0", value_type::kText, "", 0, ""},
    {"ATextOfOddLengthHasNoNul", value_type::kText, "a\0b\0c"s, 2, "ab"},
    {"ATextKeepsItsInnerNuls", value_type::kText, inUtf16("ab\0cd\0"s), 6, "ab\0cd\0"s},
    {"SeveralTextsKeepTheirNuls", value_type::kMultiText, inUtf16("one\0two\0\0"s), 9,
     "one\0two\0\0"s},
    {"AnExpandableTextIsNotExpanded", value_type::kExpandText, inUtf16("%windir%\\x\0"s), 11,
     "%windir%\\x\0"s},
    {"ANumberComesAsItIs", value_type::kNumber, "\x01\x02\x03\x04", 4, "\x01\x02\x03\x04"},
    {"AShortNumberComesAsItIs", value_type::kNumber, "\x01\x02", 2, "\x01\x02"},
    {"BytesComeAsTheyAre", value_type::kBinary, "\xFF\0\x01"s, 3, "\xFF\0\x01"s},
    {"TextsComeInTheCodePage", value_type::kText, "\xE8\0\xAC\x20\0\0"s, 3, "\xE8\x80\0"s},
    {"WhatTheCodePageLacksReadsAsAQuestionMark", value_type::kText, "\x2D\x4E\x61\0\0\0"s, 3,
     "?a\0"s}};

class StoredValue : public RegistryContract, public testing::WithParamInterface<Stored> {};

TEST_P(StoredValue, IsReadSo) {
  store(GetParam().type, GetParam().stored);
  EXPECT_EQ(seen("v"), (Seen{0, GetParam().type, GetParam().size, GetParam().data}));
}

INSTANTIATE_TEST_SUITE_P(Of, StoredValue, testing::ValuesIn(kStored), NameOfRow());

TEST_F(RegistryContract, TooSmallABufferAnswers234AndALargerOneIsCutToWhatWasRead) {
  storeText("abc\0"s);
  const auto key = opened(key_access::kQueryValue);
  std::string data(3, '#');
  EXPECT_EQ(key->readValue("v", data), 234U);
  data.assign(300, '#');
  EXPECT_EQ(key->readValue("v", data), system_code::kSuccess);
  EXPECT_EQ(data, "abc\0"s);
}

TEST_F(RegistryContract, AMissingValueAnswers2) {
  const auto key = opened(key_access::kQueryValue);
  std::uint32_t type = 99;
  std::uint32_t size = 99;
  EXPECT_EQ(key->describeValue("none", type, size), 2U);
  EXPECT_EQ(type, 99U);
  EXPECT_EQ(size, 99U);
  std::string data(8, '#');
  EXPECT_EQ(key->readValue("none", data), 2U);
}

TEST_F(RegistryContract, TheDefaultValueIsMissingUntilWritten) {
  EXPECT_EQ(seen("").code, 2U);
  write("", value_type::kText, "d\0"s);
  EXPECT_EQ(seen(""), (Seen{0, 1, 2, "d\0"s}));
}

TEST_F(RegistryContract, ValueNamesMatchWithoutRegardToCase) {
  world().storeValue(world().registryKey(), "PathLocale", value_type::kText, inUtf16("x\0"s));
  EXPECT_EQ(seen("PATHLOCALE"), (Seen{0, 1, 2, "x\0"s}));
}

// --- Writing

TEST_F(RegistryContract, WrittenTextsAreReadBackAsGiven) {
  write("v", value_type::kText, "perch\xE9 \x80\0"s);
  EXPECT_EQ(seen("v"), (Seen{0, 1, 9, "perch\xE9 \x80\0"s}));
  write("several", value_type::kMultiText, "one\0two\0\0"s);
  EXPECT_EQ(seen("several"), (Seen{0, 7, 9, "one\0two\0\0"s}));
}

TEST_F(RegistryContract, AWrittenValueReplacesTheOldOneAndItsType) {
  write("v", value_type::kText, "a longer text\0"s);
  write("V", value_type::kNumber, "\x05\0\0\0"s);
  EXPECT_EQ(seen("v"), (Seen{0, 4, 4, "\x05\0\0\0"s}));
}

// --- Keys and rights

TEST_F(RegistryContract, AMissingKeyAnswers2) {
  Key key;
  EXPECT_EQ(open(world().registryKey() + "\\none", key_access::kQueryValue, key), 2U);
  EXPECT_EQ(key, nullptr);
}

TEST_F(RegistryContract, KeyPathsMatchWithoutRegardToCaseAndMayEndInABackslash) {
  std::string loud = world().registryKey();
  for (char& character : loud) character = static_cast<char>(std::toupper(character));
  Key key;
  EXPECT_EQ(open(loud, key_access::kQueryValue, key), system_code::kSuccess);
  EXPECT_EQ(open(loud + "\\", key_access::kQueryValue, key), system_code::kSuccess);
}

TEST_F(RegistryContract, ALeadingBackslashAnswers161) {
  Key key;
  EXPECT_EQ(open("\\" + world().registryKey(), key_access::kQueryValue, key), 161U);
  EXPECT_EQ(create("\\" + world().registryKey() + "\\x", key), 161U);
}

TEST_F(RegistryContract, CreateKeyMakesItsParentsToo) {
  makeSubKey("one\\two\\three");
  Key key;
  EXPECT_EQ(open(world().registryKey() + "\\ONE\\two", key_access::kQueryValue, key),
            system_code::kSuccess);
}

TEST_F(RegistryContract, CreateKeyOfAnExistingOneKeepsItsValues) {
  storeText("x\0"s);
  Key key;
  ASSERT_EQ(create(world().registryKey(), key), system_code::kSuccess);
  EXPECT_EQ(seen("v"), (Seen{0, 1, 2, "x\0"s}));
}

TEST_F(RegistryContract, ACreatedKeyCanBeReadWrittenAndEnumerated) {
  Key key;
  ASSERT_EQ(create(world().registryKey(), key), system_code::kSuccess);
  EXPECT_EQ(key->writeValue("v", value_type::kText, "x\0"s), system_code::kSuccess);
  std::string data(2, '#');
  EXPECT_EQ(key->readValue("v", data), system_code::kSuccess);
  std::string name;
  EXPECT_EQ(key->subKeyName(0, 255, name), 259U);
}

TEST_F(RegistryContract, WithoutTheRightEachOperationAnswers5) {
  storeText("x\0"s);
  makeSubKey("sub");
  const auto setter = opened(key_access::kSetValue);
  std::uint32_t type = 0;
  std::uint32_t size = 0;
  std::string data(2, '#');
  std::string name;
  EXPECT_EQ(setter->describeValue("v", type, size), 5U);
  EXPECT_EQ(setter->readValue("v", data), 5U);
  EXPECT_EQ(setter->subKeyName(0, 255, name), 5U);
  const auto reader = opened(key_access::kQueryValue);
  EXPECT_EQ(reader->subKeyName(0, 255, name), 5U);
  EXPECT_EQ(reader->writeValue("v", value_type::kText, "y\0"s), 5U);
  const auto lister = opened(key_access::kEnumerate);
  EXPECT_EQ(lister->subKeyName(0, 255, name), system_code::kSuccess);
  EXPECT_EQ(lister->describeValue("v", type, size), 5U);
}

TEST_F(RegistryContract, LocalMachineHasItsOwnKeys) {
  Key key;
  EXPECT_EQ(machine().registry.openKey(Hive::LocalMachine, world().registryKey(),
                                       key_access::kQueryValue, key),
            2U);
}

// --- Enumeration

TEST_F(RegistryContract, EnumerationGivesEverySubKeyAndEndsWith259) {
  for (const char* name : {"b", "A", "c10", "C9"}) makeSubKey(name);
  EXPECT_THAT(subKeys(259), UnorderedElementsAre("A", "b", "c10", "C9"));
}

TEST_F(RegistryContract, EnumerationIsAlphabeticalWithoutRegardToCase) {
  for (const char* name : {"b", "A", "c", "B2", "a-b", "a b"}) makeSubKey(name);
  EXPECT_THAT(subKeys(259), ElementsAre("A", "a b", "a-b", "b", "B2", "c"));
}

TEST_F(RegistryContract, ANameOf254CharactersFitsIntoABufferOf255) {
  const std::string name(254, 'n');
  storeSubKey(name);
  EXPECT_THAT(subKeys(259), ElementsAre(name));
}

TEST_F(RegistryContract, ANameOf255CharactersAnswers234) {
  for (const std::string& name : {std::string("a"), std::string(255, 'n'), std::string("z")}) {
    storeSubKey(name);
  }
  EXPECT_THAT(subKeys(234), ElementsAre("a"));
  std::string name = "old";
  EXPECT_EQ(opened(key_access::kEnumerate)->subKeyName(2, 255, name), system_code::kSuccess);
  EXPECT_EQ(name, "z");
}

}  // namespace
}  // namespace trelv::contract
