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

/// What was planned in all worlds together.
struct Planned {
  std::mutex mutex;
  std::map<StepKind, std::size_t> steps;
  std::map<std::string, std::size_t> modes;
  std::vector<std::string> differences;
};

void playWorld(unsigned seed, Planned& planned) {
  PlanWorld world(seed);
  const std::string before = world.text();
  const kit::Plan plan = world.plan();
  const std::string after = world.text();
  world.makeTrue();
  const std::vector<Step> run = recordedRun(world.machine(), world.rawArguments(), useForm);
  std::string found = before == after ? "" : "the plan changed the world";
  found += difference(plan.steps, run);
  const std::lock_guard lock(planned.mutex);
  ++planned.modes[world.arguments().front()];
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
}

}  // namespace
}  // namespace trelv::tests
