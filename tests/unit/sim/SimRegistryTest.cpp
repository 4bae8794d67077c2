#include <gtest/gtest.h>

#include "sim/SimMachine.h"

namespace trelv::sim {
namespace {

using machine::Hive;
using namespace system_code;
namespace access_right = machine::key_access;

constexpr const char* kPath = "SOFTWARE\\LUMO\\Programmi";

class SimRegistryTest : public testing::Test {
 protected:
  SystemCode open(const std::string& path, std::uint32_t access) {
    return machine_.registry().openKey(Hive::LocalMachine, path, access, key_);
  }
  std::uint32_t sizeOf(std::uint32_t type, const std::string& stored) {
    machine_.registry().setStored(Hive::LocalMachine, kPath, "v", type, stored);
    EXPECT_EQ(open(kPath, access_right::kQueryValue), kSuccess);
    std::uint32_t foundType = 0;
    std::uint32_t size = 999;
    EXPECT_EQ(key_->describeValue("v", foundType, size), kSuccess);
    EXPECT_EQ(foundType, type);
    return size;
  }

  SimMachine machine_;
  std::unique_ptr<machine::RegistryKey> key_;
};

TEST_F(SimRegistryTest, SizesAreThoseOfTheAnsiForm) {
  using namespace std::string_literals;
  EXPECT_EQ(sizeOf(1, "a\0b\0c\0\0\0"s), 4U);
  EXPECT_EQ(sizeOf(1, "a\0b\0c"s), 2U);
  EXPECT_EQ(sizeOf(1, "\0\0"s), 1U);
  EXPECT_EQ(sizeOf(1, ""s), 0U);
  EXPECT_EQ(sizeOf(1, "a\0b\0\0\0c\0d\0\0\0"s), 6U);
  EXPECT_EQ(sizeOf(7, "o\0n\0e\0\0\0t\0w\0o\0\0\0\0\0"s), 9U);
  EXPECT_EQ(sizeOf(4, "\x01\x02"s), 2U);
}

TEST_F(SimRegistryTest, ATextWrittenWithoutItsNulGetsIt) {
  machine_.registry().makeKey(Hive::LocalMachine, kPath);
  ASSERT_EQ(open(kPath, access_right::kAll), kSuccess);
  ASSERT_EQ(key_->writeValue("v", 1, "abc"), kSuccess);
  std::uint32_t type = 0;
  std::uint32_t size = 0;
  ASSERT_EQ(key_->describeValue("V", type, size), kSuccess);
  EXPECT_EQ(size, 4U);

  std::string data(3, ' ');
  EXPECT_EQ(key_->readValue("v", data), kMoreData);
  data.assign(10, ' ');
  EXPECT_EQ(key_->readValue("v", data), kSuccess);
  EXPECT_EQ(data, std::string("abc\0", 4));
  EXPECT_EQ(machine_.registry().text(Hive::LocalMachine, "software\\lumo\\programmi", "V"), "abc");
}

TEST_F(SimRegistryTest, RightsThatWereNotAskedForAreMissing) {
  machine_.registry().setText(Hive::LocalMachine, kPath, "v", "abc");
  std::string data(10, ' ');
  std::string name;
  ASSERT_EQ(open(kPath, access_right::kSetValue), kSuccess);
  EXPECT_EQ(key_->readValue("v", data), kAccessDenied);
  ASSERT_EQ(open(kPath, access_right::kQueryValue), kSuccess);
  EXPECT_EQ(key_->writeValue("v", 1, "x"), kAccessDenied);
  EXPECT_EQ(key_->subKeyName(0, 255, name), kAccessDenied);
}

TEST_F(SimRegistryTest, PathsAreReadAsTheSystemReadsThem) {
  machine_.registry().makeKey(Hive::LocalMachine, kPath);
  EXPECT_EQ(open("software\\LUMO\\", access_right::kAll), kSuccess);
  EXPECT_EQ(open("\\SOFTWARE", access_right::kAll), kBadPathname);
  EXPECT_EQ(open("SOFTWARE\\missing", access_right::kAll), kFileNotFound);
  EXPECT_EQ(machine_.registry().openKey(Hive::CurrentUser, kPath, access_right::kAll, key_),
            kFileNotFound);
  EXPECT_EQ(machine_.registry().createKey(Hive::CurrentUser, "a\\b", access_right::kAll, key_),
            kSuccess);
  EXPECT_TRUE(machine_.registry().keyExists(Hive::CurrentUser, "A\\B"));
}

TEST_F(SimRegistryTest, SubKeysComeInAlphabeticalOrderUntilOneIsTooLong) {
  for (const char* name : {"b", "C", "a"}) {
    machine_.registry().makeKey(Hive::LocalMachine, std::string("list\\") + name);
  }
  machine_.registry().makeKey(Hive::LocalMachine, "list\\bb" + std::string(253, 'x'));
  ASSERT_EQ(open("list", access_right::kEnumerate), kSuccess);
  std::string name;
  EXPECT_EQ(key_->subKeyName(0, 255, name), kSuccess);
  EXPECT_EQ(name, "a");
  EXPECT_EQ(key_->subKeyName(1, 255, name), kSuccess);
  EXPECT_EQ(name, "b");
  EXPECT_EQ(key_->subKeyName(2, 255, name), kMoreData);
  EXPECT_EQ(key_->subKeyName(3, 255, name), kSuccess);
  EXPECT_EQ(name, "C");
  EXPECT_EQ(key_->subKeyName(4, 255, name), kNoMoreItems);
}

TEST_F(SimRegistryTest, DeniedKeysRefuse) {
  machine_.registry().setText(Hive::LocalMachine, kPath, "v", "abc");
  machine_.registry().denyWriting(Hive::LocalMachine, "SOFTWARE");
  EXPECT_EQ(open(kPath, access_right::kQueryValue), kSuccess);
  EXPECT_EQ(open(kPath, access_right::kAll), kAccessDenied);
  EXPECT_EQ(machine_.registry().createKey(Hive::LocalMachine, "SOFTWARE\\x", 1, key_),
            kAccessDenied);
  machine_.registry().deny(Hive::LocalMachine, "SOFTWARE\\LUMO");
  EXPECT_EQ(open(kPath, access_right::kQueryValue), kAccessDenied);
  EXPECT_EQ(open("SOFTWARE", access_right::kQueryValue), kSuccess);
}

TEST_F(SimRegistryTest, DumpTellsEverything) {
  machine_.registry().setText(Hive::LocalMachine, kPath, "PathLocale", "C:\\Lumo");
  machine_.registry().makeKey(Hive::CurrentUser, "vuota");
  EXPECT_EQ(machine_.registry().dump(),
            "HKCU\\vuota\n"
            "HKLM\\SOFTWARE\n"
            "HKLM\\SOFTWARE\\LUMO\n"
            "HKLM\\SOFTWARE\\LUMO\\Programmi: PathLocale=C:\\Lumo\n");
}

}  // namespace
}  // namespace trelv::sim
