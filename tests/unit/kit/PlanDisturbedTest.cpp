// A plan that is disturbed: the share is gone before a call of the machine below, the program is
// ended by force there, other workstations start meanwhile. The machine stays as it was, the answer
// is a document or a reason, and what an ended plan has left goes with the next one.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "sim/KilledMachine.h"
#include "support/Installation.h"
#include "support/PackPrograms.h"
#include "support/kit/Trelv.h"
#include "unit/kit/RecordedRun.h"

namespace trelv::tests {
namespace {

using Json = nlohmann::ordered_json;
using Words = std::vector<std::string>;

constexpr const char* kTree = "prg\\com\\setup\\aggdovra\\";
constexpr const char* kSetups = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\";
constexpr const char* kTemporary = "C:\\Users\\mario\\Temp";
const Words kPlan{"plan", "--json", "INTEGRATEDRUN", "S:\\Lumo", "S:\\Lumo", "NERIO"};

/// A pack that brings an update of a product that is there, and its set-up.
std::string updatePack() {
  return packBytes(
      {{std::string(kTree) + "nuovo.exe", "MZ"},
       {std::string(kTree) + "p.ini",
        configurationText({{"Setup01", "02.00", {"%PATHSETUP%\\a.exe"}, {"%PATHSETUP%\\a.exe"}},
                           {"Update01", "02.00", {"%PATHSETUP%\\a.exe"}, {"%PATHSETUP%\\a.exe"}}},
                          {"NERIO=%PATHWORK%\\nerio.exe"})}});
}

void putUpdate(Installation& installation) {
  installation.putCatalogue({{"NERIO", "Nerio", std::string(kTree) + "p.ini"}});
  installation.putConfiguration(std::string(kTree) + "p.ini",
                                configurationText({{"Setup01", "01.00", {"a.exe"}, {}}}));
  installation.putServerRecord("[NERIO]\r\nversion=01.00\r\n");
  installation.putPrograms({"a", "nerio"});
  installation.share().put(std::string(kSetups) + "a.zip", updatePack());
}

/// A workstation on which a start is planned again and again.
class PlannedStation {
 public:
  PlannedStation() {
    putUpdate(installation_);
    station_.putClientRecord("[NERIO]\r\nversion=01.00\r\n");
    before_ = worldOf(machine(), {"C:", "S:"});
    machine().callLog().clear();
  }

  sim::SimMachine& machine() { return station_.machine(); }
  sim::SimDisk& share() { return installation_.share(); }
  int plan() { return trelv_.run(kPlan); }

  /// A whole document, or one line that says why there is none.
  void expectAnswer(int exitCode) {
    const std::string& errors = trelv_.console.errors;
    if (exitCode == 2) {
      EXPECT_EQ(trelv_.console.output, "");
      EXPECT_TRUE(errors.starts_with("trelv: ") && errors.find('\n') == errors.size() - 1)
          << errors;
      return;
    }
    EXPECT_TRUE(exitCode == 0 || exitCode == 1) << exitCode;
    EXPECT_TRUE(Json::accept(trelv_.console.output));
    EXPECT_EQ(errors, "");
  }

  /// Another process plans the same, and finds all as it was before the first one.
  void expectNextPlanIsWhole() {
    machine().system().setProcessId(machine().system().processId() + 1);
    EXPECT_EQ(plan(), 1);
    expectAnswer(1);
    EXPECT_EQ(machine().diskOf("C:\\").names(kTemporary), Words{"log"});
    EXPECT_EQ(worldOf(machine(), {"C:", "S:"}), before_);
  }

 private:
  Installation installation_;
  Station station_{installation_};
  PackPrograms packPrograms_{station_.machine()};
  Trelv trelv_{station_.machine()};
  std::string before_;
};

/// Calls of a plan that nothing disturbs, until it clears up behind itself: it does so while its
/// objects go, and no call of theirs can end it here.
std::size_t callsOfAPlan() {
  PlannedStation station;
  EXPECT_EQ(station.plan(), 1);
  const auto& calls = station.machine().callLog().all();
  std::size_t count = calls.size();
  while (calls[count - 1].text.find("\\trelv-") != std::string::npos) {
    --count;
  }
  return count;
}

/// Each of them would take long; these are spread over all that a plan does.
constexpr std::size_t kStep = 5;

TEST(APlan, LeavesNothingWhereItIsEndedByForce) {
  const std::size_t calls = callsOfAPlan();
  EXPECT_GT(calls, 150U);
  for (std::size_t number = 1; number <= calls; number += kStep) {
    SCOPED_TRACE("ended in call " + std::to_string(number));
    PlannedStation station;
    bool ended = false;
    try {
      const sim::KilledMachine killed(station.machine(), number, sim::Unfinished::Half);
      station.plan();
    } catch (const sim::Killed&) {
      ended = true;
    }
    EXPECT_TRUE(ended);
    station.expectNextPlanIsWhole();
  }
}

TEST(APlan, EndsWithAnAnswerWhereTheShareVanishes) {
  const std::size_t calls = callsOfAPlan();
  for (std::size_t number = 1; number <= calls; number += kStep) {
    SCOPED_TRACE("without the share from call " + std::to_string(number) + " on");
    PlannedStation station;
    station.machine().onCall(number, [&] {
      station.share().disconnect(number % 2 == 0 ? system_code::kBadNetPath
                                                 : system_code::kNetNameDeleted);
    });
    station.expectAnswer(station.plan());
    station.share().reconnect();
    station.expectNextPlanIsWhole();
  }
}

// --- Beside starts of other workstations

const std::string kStart = "INTEGRATEDRUN S:\\Lumo S:\\Lumo NERIO";

void nothing(machine::Form& /*form*/, machine::FormWindow& /*window*/) {}

/// What the share holds after one workstation's start.
std::string shareAfterAStart() {
  Installation installation;
  putUpdate(installation);
  Station other(installation);
  const PackPrograms packPrograms(other.machine());
  recordedRun(other.machine(), kStart, nothing);
  return installation.share().tree();
}

TEST(APlanBesideAStart, IsNotInItsWayAndChangesNothing) {
  Installation installation;
  putUpdate(installation);
  Station planning(installation);
  Station starting(installation);
  PackPrograms planned(planning.machine());
  const PackPrograms started(starting.machine());
  // The other workstation opens the same pack while this one does, and removes it.
  planned.onFile = [&](const std::string&) {
    planned.onFile = nullptr;
    recordedRun(starting.machine(), kStart, nothing);
  };
  const std::string before = planning.disk().tree();
  Trelv trelv(planning.machine());
  EXPECT_EQ(trelv.run(kPlan), 1) << trelv.console.errors;
  EXPECT_TRUE(Json::accept(trelv.console.output));
  EXPECT_EQ(planning.disk().tree(), before);
  EXPECT_EQ(installation.share().tree(), shareAfterAStart());
  EXPECT_FALSE(installation.share().exists(std::string(kSetups) + "a.zip"));
}

TEST(APlanBesideAStart, OpensACopyOfThePackNotThePack) {
  Installation installation;
  putUpdate(installation);
  Station station(installation);
  const PackPrograms packPrograms(station.machine());
  Trelv trelv(station.machine());
  trelv.run(kPlan);
  ASSERT_EQ(station.commandLines().size(), 1U);
  EXPECT_EQ(station.commandLines().front().find("S:\\"), std::string::npos)
      << station.commandLines().front();
}

TEST(APlanBesideAStart, SeesItsLock) {
  Installation installation;
  putUpdate(installation);
  installation.share().removeTree(std::string(kSetups) + "a.zip");
  installation.putConfiguration(
      std::string(kTree) + "p.ini",
      configurationText({{"Update01", "02.00", {"%PATHSETUP%\\a.exe"}, {}}},
                        {"NERIO=%PATHWORK%\\nerio.exe"}));
  Station planning(installation);
  Station starting(installation);
  Trelv trelv(planning.machine());
  std::string because;
  starting.machine().programs().define("S:\\Lumo\\a.exe", [&](sim::SimProcess&) -> std::uint32_t {
    EXPECT_EQ(trelv.run(kPlan), 1);
    because = Json::parse(trelv.console.output).at("result").at("updates").at(0).at("because");
    return 0;
  });
  recordedRun(starting.machine(), kStart, nothing);
  EXPECT_TRUE(because.starts_with("esecuzione non effettuata per presenza altre sessioni"))
      << because;
  EXPECT_EQ(starting.serverVersion("NERIO"), "02.00") << "the start was not disturbed";
}

}  // namespace
}  // namespace trelv::tests
