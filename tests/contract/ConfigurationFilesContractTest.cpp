#include <gtest/gtest.h>

#include <string>

#include "base/Text.h"
#include "contract/Contract.h"
#include "contract/IniCases.h"
#include "platform/ConfigurationFiles.h"
#include "records/IniDocument.h"

namespace trelv::contract {
namespace {

/// The program's own reader of ini files beside the platform's functions.
class ConfigurationFilesContract : public Contract {
 protected:
  std::string put(const std::string& bytes) {
    ours_.forget();
    return putFile("a.ini", bytes);
  }

  /// Asks both for a value. Names are bytes of the code page.
  void compare(const std::string& file, const IniQuestion& question) {
    const std::string section = machine().locale.fromAnsi(question.section);
    const std::string key = machine().locale.fromAnsi(question.key);
    const std::string expected =
        machine().profiles.readValue(section, key, "", question.size, file);
    EXPECT_EQ(ours_.read({file, section, key}, question.size), expected)
        << "[" << visible(question.section) << "] " << visible(question.key) << " size "
        << question.size << " in " << visible(world().fileBytes(file));
    if (!expected.empty()) ++found_;
  }

  /// Asks both the same of generated files.
  void compareFiles(IniManner manner, std::uint64_t firstSeed, int files) {
    for (int i = 0; i < files && !HasFailure(); ++i) {
      Dice dice(firstSeed + static_cast<std::uint64_t>(i));
      const std::string bytes = iniFile(dice, manner);
      const std::string file = put(bytes);
      if (IniDocument::understands(bytes)) ++understood_;
      for (int question = 0; question < 8; ++question) compare(file, iniQuestion(dice));
    }
  }

  int understood_ = 0;
  int found_ = 0;

 private:
  ConfigurationFiles ours_{machine()};
};

TEST_F(ConfigurationFilesContract, UsualFilesReadAsThePlatformReadsThem) {
  compareFiles(IniManner::Usual, 1000, 1000);
  EXPECT_EQ(understood_, 1000);
  EXPECT_GT(found_, 500);
}

TEST_F(ConfigurationFilesContract, OddFilesReadAsThePlatformReadsThem) {
  compareFiles(IniManner::Odd, 2000, 700);
  EXPECT_GT(understood_, 50);
  EXPECT_LT(understood_, 650);
  EXPECT_GT(found_, 100);
}

TEST_F(ConfigurationFilesContract, EncodedFilesReadAsThePlatformReadsThem) {
  compareFiles(IniManner::Encoded, 3000, 300);
  EXPECT_LT(understood_, 150);
  EXPECT_GT(found_, 50);
}

TEST_F(ConfigurationFilesContract, EveryByteOfANameOrValueReadsAsThePlatformReadsIt) {
  for (int code = 1; code < 256; ++code) {
    const std::string byte(1, static_cast<char>(code));
    const std::string file = put(replaceAll("~[~s~]~\r\n~k~=~v~w~\r\nz=1~", "~", byte));
    for (const char* key : {"k", "z"}) {
      for (const char* section : {"s", ""}) compare(file, {section, key, "", 511});
    }
  }
}

TEST_F(ConfigurationFilesContract, ValuesNearTheCutReadAsThePlatformReadsThem) {
  for (std::size_t length = 500; length < 520; ++length) {
    for (const std::string quote : {"", "\"", "'"}) {
      const std::string value = quote + std::string(length, 'x') + "y" + quote;
      compare(put("[s]\r\nk=" + value + "\r\n"), {"s", "k", "", 511});
    }
  }
}

TEST_F(ConfigurationFilesContract, WhatThePlatformWroteReadsAlike) {
  const auto text = [this](const std::string& ansi) { return machine().locale.fromAnsi(ansi); };
  for (std::uint64_t seed = 4000; seed < 4200; ++seed) {
    Dice dice(seed);
    const std::string file = put(iniFile(dice, IniManner::Usual));
    for (int i = 0; i < 4; ++i) {
      const IniWrite write = iniWrite(dice);
      machine().profiles.writeValue(text(write.section), text(write.key), text(write.value), file);
    }
    for (int i = 0; i < 6; ++i) compare(file, iniQuestion(dice));
  }
}

}  // namespace
}  // namespace trelv::contract
