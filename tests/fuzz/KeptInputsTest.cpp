// The inputs that are kept hold in every build, with or without the coverage-guided programs.
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "fuzz/Targets.h"

namespace trelv::fuzz {
namespace {

/// A target by the name of its folder in corpus/.
struct Target {
  const char* name;
  void (*check)(std::string_view);
};

constexpr std::array kTargets{Target{"command_line", checkCommandLine},
                              Target{"description", checkDescription},
                              Target{"entry_name", checkEntryName},
                              Target{"gzip", checkGzip},
                              Target{"ini_document", checkIniDocument},
                              Target{"medium_files", checkMediumFiles},
                              Target{"removal_command", checkRemovalCommand},
                              Target{"run_log", checkRunLog},
                              Target{"tar", checkTar},
                              Target{"version_text", checkVersionText},
                              Target{"xml_store", checkXmlStore}};

class KeptInputs : public testing::TestWithParam<Target> {};

TEST_P(KeptInputs, HoldTheRulesOfTheirFormat) {
  const std::filesystem::path folder =
      std::filesystem::path(TRELV_PROJECT_FOLDER) / "tests/fuzz/corpus" / GetParam().name;
  std::size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    std::ifstream file(entry.path(), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    EXPECT_NO_THROW(GetParam().check(bytes)) << entry.path();
    ++count;
  }
  EXPECT_GT(count, 5U);
}

INSTANTIATE_TEST_SUITE_P(Formats, KeptInputs, testing::ValuesIn(kTargets),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace trelv::fuzz
