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
  /// Asks both the same of generated files.
  void compare(IniManner manner, std::uint64_t firstSeed, int files) {
    ConfigurationFiles ours(machine());
    for (int i = 0; i < files && !HasFailure(); ++i) {
      Dice dice(firstSeed + static_cast<std::uint64_t>(i));
      const std::string bytes = iniFile(dice, manner);
      const std::string file = putFile("a.ini", bytes);
      ours.forget();
      if (IniDocument::understands(bytes)) ++understood_;
      for (int question = 0; question < 8; ++question)
        compare(ours, file, bytes, iniQuestion(dice));
    }
  }

  int understood() const { return understood_; }
  int found() const { return found_; }

 private:
  void compare(ConfigurationFiles& ours, const std::string& file, const std::string& bytes,
               const IniQuestion& question) {
    const std::string section = machine().locale.fromAnsi(question.section);
    const std::string key = machine().locale.fromAnsi(question.key);
    const std::string expected =
        machine().profiles.readValue(section, key, "", question.size, file);
    EXPECT_EQ(ours.read({file, section, key}, question.size), expected)
        << "[" << visible(question.section) << "] " << visible(question.key) << " size "
        << question.size << " in " << visible(bytes);
    if (!expected.empty()) ++found_;
  }

  int understood_ = 0;
  int found_ = 0;
};

TEST_F(ConfigurationFilesContract, UsualFilesReadAsThePlatformReadsThem) {
  compare(IniManner::Usual, 1000, 1000);
  EXPECT_EQ(understood(), 1000);
  EXPECT_GT(found(), 500);
}

TEST_F(ConfigurationFilesContract, OddFilesReadAsThePlatformReadsThem) {
  compare(IniManner::Odd, 2000, 700);
  EXPECT_GT(understood(), 50);
  EXPECT_LT(understood(), 650);
  EXPECT_GT(found(), 100);
}

TEST_F(ConfigurationFilesContract, EncodedFilesReadAsThePlatformReadsThem) {
  compare(IniManner::Encoded, 3000, 300);
  EXPECT_LT(understood(), 150);
  EXPECT_GT(found(), 50);
}

TEST_F(ConfigurationFilesContract, EveryByteOfANameOrValueReadsAsThePlatformReadsIt) {
  ConfigurationFiles ours(machine());
  for (int code = 1; code < 256; ++code) {
    const std::string byte(1, static_cast<char>(code));
    const std::string bytes = replaceAll("~[~s~]~\r\n~k~=~v~w~\r\nz=1~", "~", byte);
    const std::string file = putFile("a.ini", bytes);
    ours.forget();
    for (const char* key : {"k", "z"}) {
      for (const std::string section : {"s", ""}) {
        EXPECT_EQ(ours.read({file, section, key}, 511),
                  machine().profiles.readValue(section, key, "", 511, file))
            << visible(bytes);
      }
    }
  }
}

TEST_F(ConfigurationFilesContract, ValuesNearTheCutReadAsThePlatformReadsThem) {
  ConfigurationFiles ours(machine());
  for (std::size_t length = 500; length < 520; ++length) {
    for (const std::string quote : {"", "\"", "'"}) {
      const std::string value = quote + std::string(length, 'x') + "y" + quote;
      const std::string file = putFile("a.ini", "[s]\r\nk=" + value + "\r\n");
      ours.forget();
      EXPECT_EQ(ours.read({file, "s", "k"}, 511),
                machine().profiles.readValue("s", "k", "", 511, file))
          << length << quote;
    }
  }
}

TEST_F(ConfigurationFilesContract, WhatThePlatformWroteReadsAlike) {
  for (std::uint64_t seed = 4000; seed < 4200; ++seed) {
    Dice dice(seed);
    const std::string file = putFile("a.ini", iniFile(dice, IniManner::Usual));
    for (int i = 0; i < 4; ++i) {
      const IniWrite write = iniWrite(dice);
      machine().profiles.writeValue(machine().locale.fromAnsi(write.section),
                                    machine().locale.fromAnsi(write.key),
                                    machine().locale.fromAnsi(write.value), file);
    }
    ConfigurationFiles ours(machine());
    for (int i = 0; i < 6; ++i) {
      const IniQuestion question = iniQuestion(dice);
      const std::string section = machine().locale.fromAnsi(question.section);
      const std::string key = machine().locale.fromAnsi(question.key);
      EXPECT_EQ(ours.read({file, section, key}, question.size),
                machine().profiles.readValue(section, key, "", question.size, file))
          << visible(world().fileBytes(file));
    }
  }
}

}  // namespace
}  // namespace trelv::contract
