// The verbs on a system that is no Windows: a host folder as a plain folder.

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "posix/PosixFileUse.h"
#include "posix/PosixFinishedFiles.h"
#include "posix/PosixMachine.h"
#include "posix/PosixPath.h"
#include "support/Installation.h"
#include "support/kit/Trelv.h"

namespace trelv::tests {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

/// The second program on this system, with a folder of its own.
class OnLinux : public testing::Test {
 protected:
  OnLinux() {
    std::string name = (fs::temp_directory_path() / "trelv-linux-XXXXXX").string();
    folder_ = mkdtemp(name.data());
  }
  ~OnLinux() override { fs::remove_all(folder_); }

  void put(const std::string& name, const std::string& bytes) {
    fs::create_directories((folder_ / name).parent_path());
    std::ofstream(folder_ / name, std::ios::binary) << bytes;
  }
  int run(const std::vector<std::string>& arguments) {
    machine::Machine machine = system_.machine();
    kit::Workplace workplace{machine, console_, paths_, fileUse_, finished_};
    return kit::run(arguments, workplace);
  }

  fs::path folder_;
  FakeConsole console_;

 private:
  posix::PosixMachine system_;
  posix::PosixGivenPaths paths_;
  posix::PosixFileUse fileUse_;
  posix::PosixFinishedFiles finished_;
};

TEST_F(OnLinux, VerifyTellsTheServerSideAndNothingOfTheMachine) {
  put("Prg/Com/Setup/AggDovra/AGDVCOMP.INI",
      catalogueText({{"ZM", "Zeltomodelli", "prg\\com\\setup\\aggdovra\\zm.ini"}}));
  put("Prg/Com/Setup/AggDovra/zm.ini",
      configurationText({{"Setup01", "02.00", {"a.exe"}, {"a.exe"}}}));
  put("Prg/etc/agdvver.ini", "[ZM]\r\nversion=01.00\r\n[NERIO]\r\nversion=03.00\r\n");
  EXPECT_EQ(run({"verify", "--json", folder_.string() + "/"}), 1) << console_.errors;
  const Json rows = Json::parse(console_.output).at("result").at("rows");
  ASSERT_EQ(rows.size(), 5U) << "a row for each product";
  EXPECT_EQ(
      rows[0].dump(),
      "{\"product\":\"ZM\",\"side\":\"Server\",\"recorded\":\"01.00\",\"configured\":\"02.00\","
      "\"found\":null,\"mode\":null,\"state\":\"older\"}");
  EXPECT_EQ(rows[1].dump(),
            "{\"product\":\"NERIO\",\"side\":\"Server\",\"recorded\":\"03.00\",\"configured\":\"\","
            "\"found\":null,\"mode\":null,\"state\":\"newer\"}");
  for (const Json& row : rows) {
    EXPECT_EQ(row.at("side"), "Server");
    EXPECT_EQ(row.at("found"), nullptr);
    EXPECT_EQ(row.at("mode"), nullptr);
  }
}

TEST_F(OnLinux, VerifyWantsAFolder) {
  put("file", "x");
  EXPECT_EQ(run({"verify", (folder_ / "manca").string()}), 2);
  EXPECT_TRUE(console_.errors.starts_with("trelv: " + (folder_ / "manca").string() + ": "))
      << console_.errors;
  console_.errors.clear();
  EXPECT_EQ(run({"verify", (folder_ / "file").string()}), 2);
}

TEST_F(OnLinux, NoStartHasWrittenALogOfItsOwn) {
  EXPECT_EQ(run({"explain", "ZM", "--host", folder_.string()}), 64);
  EXPECT_EQ(console_.errors,
            "trelv: manca --log: qui nessun avvio ha scritto un registro (trelv --help)\n");
}

TEST_F(OnLinux, NothingIsPlanned) {
  EXPECT_EQ(run({"plan", "--json", "INTEGRATEDRUN", folder_.string(), folder_.string(), "NERIO"}),
            2);
  EXPECT_EQ(console_.output, "");
  EXPECT_EQ(console_.errors, "trelv: plan: un avvio si può prevedere soltanto su Windows\n");
  EXPECT_TRUE(fs::is_empty(folder_));
}

}  // namespace
}  // namespace trelv::tests
