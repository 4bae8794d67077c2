#include "kit/PlanRun.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "base/Text.h"
#include "kit/PackCommand.h"
#include "kit/QuietProgram.h"
#include "platform/PatientParts.h"
#include "platform/XmlStore.h"
#include "platform/modLibrary.h"
#include "startup/HostPaths.h"
#include "startup/IntegrationRecord.h"
#include "startup/modError.h"
#include "startup/modMain.h"

namespace trelv::kit {
namespace {

using overlay::Overlay;
using overlay::Step;
using overlay::StepKind;

std::string temporaryFolder(machine::SystemFacts& system) {
  std::string folder;
  const SystemCode code = system.temporaryFolder(folder);
  if (code != system_code::kSuccess) {
    throw failureFromSystemCode(code, "cartella temporanea");
  }
  return folder.substr(0, folder.find_last_not_of('\\') + 1);
}

overlay::Settings settingsOf(const machine::Machine& below, const PlannedStart& start) {
  return {.process = {start.manager, commandLineOf(start), start.asUser},
          .privateParent = temporaryFolder(below.system),
          .order = start.order,
          .findUnpacking = packCommands(modLibrary::ParentPath(start.manager)),
          .formUser = start.user,
          .fails = start.fails};
}

/// The overlay as the manager gets its machine: with patience, and with a store of ours that works
/// on the overlay's files.
class PlannedMachine {
 public:
  PlannedMachine(const machine::Machine& below, const PlannedStart& start)
      : overlay_(below, settingsOf(below, start)),
        parts_(overlay_.machine()),
        ownStore_(parts_.files(), overlay_.machine().registry, overlay_.machine().locale,
                  overlay_.machine().system, overlay_.machine().exclusion),
        storeOverFiles_(ownStore_, overlay_.steps()),
        machine_(machineOver(dynamic_cast<XmlStore*>(&below.configuration) != nullptr)) {}

  machine::Machine& machine() { return machine_; }
  overlay::Steps& steps() { return overlay_.steps(); }

 private:
  machine::Machine machineOver(bool storeIsOurs) {
    return parts_.machine(storeIsOurs ? storeOverFiles_ : overlay_.machine().configuration);
  }

  Overlay overlay_;
  PatientParts parts_;
  XmlStore ownStore_;
  overlay::StoreOverFiles storeOverFiles_;
  machine::Machine machine_;
};

/// The manager, put together as its composition root does.
class PlannedProgram {
 public:
  explicit PlannedProgram(machine::Machine& machine)
      : fileSystem_(machine.files),
        configurationFiles_(machine),
        program_{machine, state_, log_, log_, fileSystem_, configurationFiles_} {
    log_.attach(program_);
  }
  PlannedProgram(const PlannedProgram&) = delete;
  PlannedProgram& operator=(const PlannedProgram&) = delete;

  Program& program() { return program_; }
  const ProgramState& state() const { return state_; }

 private:
  ProgramState state_;
  modError::LogAndReporter log_;
  FileSystemObject fileSystem_;
  ConfigurationFiles configurationFiles_;
  Program program_;
};

bool isAppendedToLog(const Step& step, const RunLogState& log) {
  return step.kind == StepKind::Append && equalNoCase(step.subject, log.logFile);
}

/// A line of the log without its date and its end.
std::string logText(machine::Locale& locale, const std::string& bytes) {
  constexpr std::string_view kSeparator = " -- ";
  std::string text = locale.fromAnsi(bytes);
  const std::size_t at = text.find(kSeparator);
  text.erase(0, at == std::string::npos ? 0 : at + kSeparator.size());
  if (text.ends_with(kCrLf)) {
    text.resize(text.size() - 2);
  }
  return text;
}

/// The program that the host asked for is the one that nobody waits for.
std::optional<std::string> requestedProgram(const std::vector<Step>& steps, RunMode mode) {
  const auto found = std::find_if(steps.rbegin(), steps.rend(), [](const Step& step) -> bool {
    return step.kind == StepKind::Command && !step.waits;
  });
  return mode == RunMode::IntegratedRun && found != steps.rend() ? std::optional(found->subject)
                                                                 : std::nullopt;
}

/// The server path that the start works with, else the recorded one.
std::string serverPathOf(Program& program, const StartupFacts& startup) {
  std::string recorded;
  if (startup.paths.server.empty() && startup.runMode != RunMode::IntegratedRun) {
    modMain::VerifyConfig(program, recorded);
    return recorded;
  }
  return startup.paths.server;
}

/// The rows of the catalogue as the run leaves it: before it, and after.
std::vector<UpdateRow> updatesOf(machine::Machine& before, machine::Machine& after,
                                 const StartupFacts& startup, const LogOfUpdates& log) {
  QuietProgram left(after);
  QuietProgram found(before);
  const std::string server = serverPathOf(left.program(), startup);
  if (server.empty()) {
    return {};
  }
  std::vector<UpdateRow> rows = recordedVersions(left.program(), server);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    UpdateRow& row = rows[i];
    const std::string record = row.side == Side::Server
                                   ? hostPaths::serverVersionRecord(server)
                                   : hostPaths::clientVersionRecord(found.program());
    row.recorded = modLibrary::ReadSetting(found.program(), {record, row.product, "version"});
    row.because = log.because(i);
  }
  return rows;
}

}  // namespace

bool Plan::changesAnything() const {
  return std::any_of(steps.begin(), steps.end(), [this](const Step& step) -> bool {
    switch (step.kind) {
      case StepKind::Log:
      case StepKind::Environment:
        return false;
      case StepKind::Command:
        return step.waits || step.subject != starts;
      case StepKind::Make:
      case StepKind::Delete:
        return logFolder.empty() || !FileSystemObject::liesAtOrIn(step.subject, logFolder);
      default:
        return true;
    }
  });
}

std::string commandLineOf(const PlannedStart& start) {
  std::string line = "\"" + start.manager + "\"";
  for (const std::string& argument : start.arguments) {
    const bool plain = !argument.empty() && argument.find_first_of(" \t") == std::string::npos;
    line += plain ? " " + argument : " \"" + argument + "\"";
  }
  return line;
}

Plan planRun(const machine::Machine& below, const PlannedStart& start) {
  PlannedMachine planned(below, start);
  PlannedProgram manager(planned.machine());
  LogOfUpdates log;
  planned.steps().setObserver([&](Step& step) -> void {
    if (isAppendedToLog(step, manager.state().runLog)) {
      step.kind = StepKind::Log;
      step.value = logText(below.locale, step.value.value_or(""));
      log.add(*step.value);
    }
    if (start.onStep) {
      start.onStep(step);
    }
  });
  modMain::Main(manager.program());
  planned.steps().setObserver(nullptr);
  const StartupFacts& startup = manager.state().startup;
  machine::Machine before = below;
  Plan plan;
  plan.steps = planned.steps().all();
  plan.logFolder = manager.state().runLog.logFolder;
  plan.starts = requestedProgram(plan.steps, startup.runMode);
  plan.updates = updatesOf(before, planned.machine(), startup, log);
  return plan;
}

}  // namespace trelv::kit
