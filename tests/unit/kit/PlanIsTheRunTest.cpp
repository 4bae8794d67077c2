// The plan of a start against the start itself, on machines that are made up from numbers.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iostream>
#include <map>
#include <mutex>

#include "support/Cores.h"
#include "unit/kit/PlanWorld.h"
#include "unit/kit/RecordedRun.h"

namespace trelv::tests {
namespace {

using overlay::Step;
using overlay::StepKind;

constexpr unsigned kSeed = 20261122;
constexpr std::size_t kWorlds = 400;

/// By hand: as many as the variable says.
std::size_t worlds() {
  const char* const more = std::getenv("TRELV_PLAN_WORLDS");
  return more == nullptr ? kWorlds : std::strtoul(more, nullptr, 10);
}

constexpr std::array kKinds{"command",     "ini",    "write", "append",   "delete",
                            "make",        "rename", "copy",  "registry", "store",
                            "environment", "box",    "form",  "log"};

std::string shown(const Step& step) {
  return std::string(kKinds.at(static_cast<std::size_t>(step.kind))) + " " + step.subject + " > " +
         step.target + " [" + step.section + "] " + step.name.value_or("-") + "=" +
         step.value.value_or("-") + (step.waits ? " waits" : "") + " " +
         std::to_string(static_cast<int>(step.answer));
}

/// The first step in which they differ, with the one before; empty when they are the same.
std::string difference(const std::vector<Step>& plan, const std::vector<Step>& run) {
  for (std::size_t i = 0; i < std::max(plan.size(), run.size()); ++i) {
    if (i < plan.size() && i < run.size() && plan[i] == run[i]) {
      continue;
    }
    return "step " + std::to_string(i) + "\n before: " + (i > 0 ? shown(run[i - 1]) : "nothing") +
           "\n plan:   " + (i < plan.size() ? shown(plan[i]) : "nothing") +
           "\n run:    " + (i < run.size() ? shown(run[i]) : "nothing");
  }
  return "";
}

/// What has to be among the machines.
constexpr std::array kTraits{"INTEGRATEDRUN",
                             "SINGLEINSTALL",
                             "INTEGRATEDMAINTAIN",
                             "STANDALONEINSTALL",
                             "INTERACTIVE",
                             "ALTRO",
                             "a program that fails",
                             "as a user",
                             "no administrator",
                             "not integrated",
                             "no catalogue",
                             "a lock",
                             "a folder in the lock's place",
                             "the workstation's lock",
                             "packs that wait",
                             "no 7-Zip",
                             "another session that unpacks",
                             "a record that can only be read"};

/// What was planned in all worlds together.
struct Planned {
  std::mutex mutex;
  std::map<StepKind, std::size_t> steps;
  std::map<std::string, std::size_t> traits;
  std::vector<std::string> differences;
};

bool isStartOf(const Step& step, const std::string& commandLine) {
  return step.kind == StepKind::Command && !step.waits && step.subject == commandLine;
}

void playWorld(unsigned seed, Planned& planned) {
  PlanWorld world(seed);
  const std::set<std::string> traits = world.traits();
  const std::string before = world.text();
  const kit::Plan plan = world.plan();
  const std::string after = world.text();
  world.makeTrue();
  const std::vector<Step> run = recordedRun(world.machine(), world.rawArguments(), world.user());
  std::string found = before == after ? "" : "the plan changed the world";
  found += difference(plan.steps, run) + world.wrongRow(plan.updates);
  if (plan.starts && (run.empty() || !isStartOf(run.back(), *plan.starts))) {
    found += "the run does not end with " + *plan.starts;
  }
  const std::lock_guard lock(planned.mutex);
  for (const std::string& trait : traits) {
    ++planned.traits[trait];
  }
  for (const Step& step : plan.steps) {
    ++planned.steps[step.kind];
  }
  if (!found.empty()) {
    planned.differences.push_back("seed " + std::to_string(seed) + " " + world.rawArguments() +
                                  ": " + found);
  }
}

TEST(APlanIsTheRun, OnMachinesOfAllKinds) {
  std::cout << "seed " << kSeed << ", " << worlds() << " machines\n";
  Planned planned;
  onAllCores(worlds(),
             [&](std::size_t world) { playWorld(kSeed + static_cast<unsigned>(world), planned); });
  EXPECT_EQ(planned.differences.size(), 0U);
  for (std::size_t i = 0; i < std::min<std::size_t>(planned.differences.size(), 8); ++i) {
    std::cout << planned.differences[i] << "\n";
  }
  for (const StepKind kind :
       {StepKind::Command, StepKind::Ini, StepKind::Write, StepKind::Delete, StepKind::Make,
        StepKind::Rename, StepKind::Copy, StepKind::Registry, StepKind::Store,
        StepKind::Environment, StepKind::Box, StepKind::Form, StepKind::Log}) {
    EXPECT_LT(worlds() / 40, planned.steps[kind])
        << "too few of kind " << kKinds.at(static_cast<std::size_t>(kind));
  }
  for (const char* const trait : kTraits) {
    EXPECT_LT(worlds() / 200, planned.traits[trait]) << "too few machines with: " << trait;
  }
}

}  // namespace
}  // namespace trelv::tests
