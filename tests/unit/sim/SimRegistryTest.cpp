// What the registry does on Windows is held by the contract; here is what only the simulated
// machine can show.

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
    return registry_.openKey(Hive::LocalMachine, path, access, key_);
  }

  SimMachine machine_;
  SimRegistry& registry_ = machine_.registry();
  std::unique_ptr<machine::RegistryKey> key_;
};

TEST_F(SimRegistryTest, ATextWrittenWithoutItsNulGetsIt) {
  registry_.makeKey(Hive::LocalMachine, kPath);
  ASSERT_EQ(open(kPath, access_right::kAll), kSuccess);
  ASSERT_EQ(key_->writeValue("v", 1, "abc"), kSuccess);
  std::uint32_t type = 0;
  std::uint32_t size = 0;
  ASSERT_EQ(key_->describeValue("V", type, size), kSuccess);
  EXPECT_EQ(size, 4U);
  std::string data(10, ' ');
  EXPECT_EQ(key_->readValue("v", data), kSuccess);
  EXPECT_EQ(data, std::string("abc\0", 4));
  EXPECT_EQ(registry_.text(Hive::LocalMachine, "software\\lumo\\programmi", "V"), "abc");
}

TEST_F(SimRegistryTest, DeniedKeysRefuse) {
  registry_.setText(Hive::LocalMachine, kPath, "v", "abc");
  registry_.denyWriting(Hive::LocalMachine, "SOFTWARE");
  EXPECT_EQ(open(kPath, access_right::kQueryValue), kSuccess);
  EXPECT_EQ(open(kPath, access_right::kAll), kAccessDenied);
  EXPECT_EQ(registry_.createKey(Hive::LocalMachine, "SOFTWARE\\x", 1, key_), kAccessDenied);
  registry_.deny(Hive::LocalMachine, "SOFTWARE\\LUMO");
  EXPECT_EQ(open(kPath, access_right::kQueryValue), kAccessDenied);
  EXPECT_EQ(open("SOFTWARE", access_right::kQueryValue), kSuccess);
}

TEST_F(SimRegistryTest, DumpTellsEverything) {
  registry_.setText(Hive::LocalMachine, kPath, "PathLocale", "C:\\Lumo");
  registry_.makeKey(Hive::CurrentUser, "vuota");
  EXPECT_EQ(registry_.dump(),
            "HKCU\\vuota\n"
            "HKLM\\SOFTWARE\n"
            "HKLM\\SOFTWARE\\LUMO\n"
            "HKLM\\SOFTWARE\\LUMO\\Programmi: PathLocale=C:\\Lumo\n");
}

TEST_F(SimRegistryTest, TwoProcessesOfOneComputerSeeTheSameKeys) {
  SimMachine other;
  other.registry().shareKeysOf(registry_);
  registry_.setText(Hive::LocalMachine, kPath, "v", "abc");
  EXPECT_EQ(other.registry().text(Hive::LocalMachine, kPath, "v"), "abc");
  EXPECT_TRUE(other.registry().sharesKeysOf(registry_));
  EXPECT_FALSE(SimMachine().registry().sharesKeysOf(registry_));
}

}  // namespace
}  // namespace trelv::sim
