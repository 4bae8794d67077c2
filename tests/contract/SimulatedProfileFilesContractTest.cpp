// Only where the machine under test is Windows: there the simulated ini functions are held against
// the real ones, question by question and byte by byte. On the simulated machine it would compare
// them with themselves.
#ifdef _WIN32

#include <gtest/gtest.h>

#include <string>

#include "contract/Contract.h"
#include "contract/IniCases.h"
#include "sim/SimMachine.h"

namespace trelv::contract {
namespace {

class SimulatedProfileFilesContract : public Contract {
 protected:
  /// The same file on both machines.
  void put(const std::string& bytes) {
    putFile("a.ini", bytes);
    simulated_.putFile(kSimulatedFile, bytes);
  }

  std::string real(const std::string& ansi) { return machine().locale.fromAnsi(ansi); }

  void compareRead(const IniQuestion& question, const std::string& bytes) {
    const std::string section = real(question.section);
    const std::string key = real(question.key);
    const std::string defaultValue = real(question.defaultValue);
    EXPECT_EQ(
        simulated_.machine().profiles.readValue(section, key, defaultValue, question.size,
                                                kSimulatedFile),
        machine().profiles.readValue(section, key, defaultValue, question.size, path("a.ini")))
        << "[" << visible(question.section) << "] " << visible(question.key) << " default "
        << visible(question.defaultValue) << " size " << question.size << " in " << visible(bytes);
  }

  void compareWrite(const IniWrite& write) {
    const std::string section = real(write.section);
    const std::string key = real(write.key);
    const std::string value = real(write.value);
    const std::string before = world().fileBytes(path("a.ini"));
    EXPECT_EQ(simulated_.machine().profiles.writeValue(section, key, value, kSimulatedFile) != 0,
              machine().profiles.writeValue(section, key, value, path("a.ini")) != 0);
    EXPECT_EQ(visible(simulated_.fileText(kSimulatedFile)),
              visible(world().fileBytes(path("a.ini"))))
        << "[" << visible(write.section) << "] " << visible(write.key) << "="
        << visible(write.value) << " into " << visible(before);
  }

  void compareReads(IniManner manner, std::uint64_t firstSeed, int files) {
    for (int i = 0; i < files && !HasFailure(); ++i) {
      Dice dice(firstSeed + static_cast<std::uint64_t>(i));
      const std::string bytes = iniFile(dice, manner);
      put(bytes);
      for (int question = 0; question < 8; ++question) compareRead(iniQuestion(dice), bytes);
    }
  }

  void compareWrites(IniManner manner, std::uint64_t firstSeed, int files) {
    for (int i = 0; i < files && !HasFailure(); ++i) {
      Dice dice(firstSeed + static_cast<std::uint64_t>(i));
      put(iniFile(dice, manner));
      for (int write = 0; write < 4 && !HasFailure(); ++write) compareWrite(iniWrite(dice));
    }
  }

 private:
  static constexpr const char* kSimulatedFile = "C:\\a.ini";
  sim::SimMachine simulated_;
};

TEST_F(SimulatedProfileFilesContract, UsualFilesReadAlike) {
  compareReads(IniManner::Usual, 11000, 700);
}

TEST_F(SimulatedProfileFilesContract, OddFilesReadAlike) {
  compareReads(IniManner::Odd, 12000, 700);
}

TEST_F(SimulatedProfileFilesContract, EncodedFilesReadAlike) {
  compareReads(IniManner::Encoded, 13000, 300);
}

TEST_F(SimulatedProfileFilesContract, UsualFilesAreWrittenAlike) {
  compareWrites(IniManner::Usual, 14000, 300);
}

TEST_F(SimulatedProfileFilesContract, OddFilesAreWrittenAlike) {
  compareWrites(IniManner::Odd, 15000, 300);
}

TEST_F(SimulatedProfileFilesContract, EncodedFilesAreWrittenAlike) {
  compareWrites(IniManner::Encoded, 16000, 150);
}

}  // namespace
}  // namespace trelv::contract

#endif
