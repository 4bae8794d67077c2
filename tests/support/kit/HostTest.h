#pragma once

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "support/Installation.h"
#include "support/kit/Trelv.h"

namespace trelv::tests {

/// Calls that change something, or that stand in the way of others.
inline std::vector<std::string> changingCalls(sim::SimMachine& machine) {
  using sim::CallKind;
  std::vector<std::string> texts;
  for (const sim::SimCall& call : machine.callLog().all()) {
    switch (call.kind) {
      case CallKind::FileWrite:
      case CallKind::FileAppend:
      case CallKind::FileRemove:
      case CallKind::FileSetReadOnly:
      case CallKind::FolderMake:
      case CallKind::FolderRemove:
      case CallKind::FileCopy:
      case CallKind::FileReplace:
      case CallKind::FileMove:
      case CallKind::FileRights:
      case CallKind::FileStreamRemove:
      case CallKind::ProfileWrite:
      case CallKind::RegistryCreate:
      case CallKind::RegistryWrite:
      case CallKind::ProcessStart:
      case CallKind::EnvironmentSet:
      case CallKind::ConfigurationSet:
      case CallKind::BoxShow:
      case CallKind::FormShow:
      case CallKind::MarkTake:
        texts.push_back(call.text);
        break;
      default:
        break;
    }
  }
  return texts;
}

/// The second program on a workstation of an installation.
class HostTest : public testing::Test {
 public:
  using Json = nlohmann::ordered_json;

  sim::SimMachine& machine() { return station_.machine(); }
  sim::SimDisk& share() { return installation_.share(); }

  /// Runs a verb with "--json" behind its arguments, answers its "result" (null where there is no
  /// document) and keeps the exit code.
  Json result(std::vector<std::string> arguments) {
    arguments.emplace_back("--json");
    exitCode = trelv_.run(arguments);
    return trelv_.console.output.empty() ? Json() : Json::parse(trelv_.console.output).at("result");
  }
  std::string output() const { return trelv_.console.output; }
  std::string errors() const { return trelv_.console.errors; }

  Installation installation_;
  Station station_{installation_};
  Trelv trelv_{machine()};
  int exitCode = -1;
};

}  // namespace trelv::tests
