#include "unit/kit/RecordedRun.h"

#include <memory>
#include <utility>

#include "base/Text.h"
#include "platform/ConfigurationFiles.h"
#include "platform/FileSystemObject.h"
#include "platform/PatientParts.h"
#include "startup/modError.h"
#include "startup/modMain.h"

namespace trelv::tests {
namespace {

using overlay::Step;
using overlay::StepKind;
using Record = std::vector<Step>;

SystemCode noted(Record& record, SystemCode code, Step step) {
  if (code == system_code::kSuccess) {
    record.push_back(std::move(step));
  }
  return code;
}

class RecordedFiles : public machine::Files {
 public:
  RecordedFiles(machine::Files& files, Record& record) : files_(files), record_(record) {}

  SystemCode look(const std::string& path, machine::FileFacts& facts) override {
    return files_.look(path, facts);
  }
  SystemCode identify(const std::string& path, machine::FileIdentity& identity) override {
    return files_.identify(path, identity);
  }
  SystemCode read(const std::string& path, std::size_t limit, std::string& content) override {
    return files_.read(path, limit, content);
  }
  SystemCode readPart(const std::string& path, std::uint64_t offset, std::size_t size,
                      std::string& content) override {
    return files_.readPart(path, offset, size, content);
  }
  SystemCode write(const std::string& path, std::string_view bytes) override {
    return noted(record_, files_.write(path, bytes),
                 {.kind = StepKind::Write, .subject = path, .value = std::string(bytes)});
  }
  SystemCode append(const std::string& path, std::string_view bytes) override {
    return noted(record_, files_.append(path, bytes),
                 {.kind = StepKind::Append, .subject = path, .value = std::string(bytes)});
  }
  SystemCode removeFile(const std::string& path) override {
    return noted(record_, files_.removeFile(path), {.kind = StepKind::Delete, .subject = path});
  }
  SystemCode setReadOnly(const std::string& path, bool readOnly) override {
    return files_.setReadOnly(path, readOnly);
  }
  SystemCode makeFolder(const std::string& path) override {
    return noted(record_, files_.makeFolder(path), {.kind = StepKind::Make, .subject = path});
  }
  SystemCode removeFolder(const std::string& path) override {
    return noted(record_, files_.removeFolder(path), {.kind = StepKind::Delete, .subject = path});
  }
  SystemCode list(const std::string& folder, const std::string& ending,
                  std::vector<machine::FolderEntry>& entries) override {
    return files_.list(folder, ending, entries);
  }
  SystemCode copyFile(const std::string& source, const std::string& target) override {
    return noted(record_, files_.copyFile(source, target),
                 {.kind = StepKind::Copy, .subject = source, .target = target});
  }
  SystemCode replaceFile(const std::string& source, const std::string& target) override {
    return noted(record_, files_.replaceFile(source, target),
                 {.kind = StepKind::Rename, .subject = source, .target = target});
  }
  SystemCode moveFile(const std::string& source, const std::string& target) override {
    return noted(record_, files_.moveFile(source, target),
                 {.kind = StepKind::Rename, .subject = source, .target = target});
  }
  SystemCode copyRights(const std::string& source, const std::string& target) override {
    return files_.copyRights(source, target);
  }
  SystemCode mayAddFile(const std::string& folder) override { return files_.mayAddFile(folder); }
  SystemCode removeStream(const std::string& path, const std::string& stream) override {
    return files_.removeStream(path, stream);
  }

 private:
  machine::Files& files_;
  Record& record_;
};

/// Notes what changed a file, by its bytes.
class RecordedProfiles : public machine::ProfileFiles {
 public:
  RecordedProfiles(sim::SimMachine& machine, Record& record) : machine_(machine), record_(record) {}

  std::string readValue(const std::string& section, const std::string& key,
                        const std::string& defaultValue, std::uint32_t size,
                        const std::string& file) override {
    return machine_.profiles().readValue(section, key, defaultValue, size, file);
  }
  std::uint32_t writeValue(const std::string& section, const std::string& key,
                           const std::string& value, const std::string& file) override {
    const std::string place = machine_.profiles().placeOf(file);
    std::string before = "nothing";
    std::string after = "nothing";
    machine_.files().quietRead(place, before);
    const std::uint32_t written = machine_.profiles().writeValue(section, key, value, file);
    machine_.files().quietRead(place, after);
    if (before != after) {
      record_.push_back({.kind = StepKind::Ini,
                         .subject = file,
                         .section = section,
                         .name = key,
                         .value = value});
    }
    return written;
  }

 private:
  sim::SimMachine& machine_;
  Record& record_;
};

std::string shownKey(machine::Hive hive, const std::string& path) {
  return (hive == machine::Hive::LocalMachine ? "HKLM\\" : "HKCU\\") + path;
}

class RecordedKey : public machine::RegistryKey {
 public:
  RecordedKey(std::unique_ptr<machine::RegistryKey> key, sim::SimMachine& machine,
              machine::Hive hive, std::string path, Record& record)
      : key_(std::move(key)),
        machine_(machine),
        hive_(hive),
        path_(std::move(path)),
        record_(record) {}

  SystemCode describeValue(const std::string& name, std::uint32_t& type,
                           std::uint32_t& size) override {
    return key_->describeValue(name, type, size);
  }
  SystemCode readValue(const std::string& name, std::string& data) override {
    return key_->readValue(name, data);
  }
  SystemCode writeValue(const std::string& name, std::uint32_t type,
                        const std::string& data) override {
    const auto before = machine_.registry().value(hive_, path_, name);
    const SystemCode code = key_->writeValue(name, type, data);
    const auto after = machine_.registry().value(hive_, path_, name);
    const bool changed =
        after && (!before || before->type != after->type || before->stored != after->stored);
    if (changed) {
      record_.push_back({.kind = StepKind::Registry,
                         .subject = shownKey(hive_, path_),
                         .name = name,
                         .value = machine_.registry().text(hive_, path_, name)});
    }
    return code;
  }
  SystemCode subKeyName(std::uint32_t index, std::uint32_t size, std::string& name) override {
    return key_->subKeyName(index, size, name);
  }

 private:
  std::unique_ptr<machine::RegistryKey> key_;
  sim::SimMachine& machine_;
  machine::Hive hive_;
  std::string path_;
  Record& record_;
};

class RecordedRegistry : public machine::Registry {
 public:
  RecordedRegistry(sim::SimMachine& machine, Record& record) : machine_(machine), record_(record) {}

  SystemCode openKey(machine::Hive hive, const std::string& path, std::uint32_t access,
                     std::unique_ptr<machine::RegistryKey>& key) override {
    return wrapped(machine_.registry().openKey(hive, path, access, key), hive, path, key);
  }
  SystemCode createKey(machine::Hive hive, const std::string& path, std::uint32_t access,
                       std::unique_ptr<machine::RegistryKey>& key) override {
    const bool there = machine_.registry().keyExists(hive, path);
    const SystemCode code = machine_.registry().createKey(hive, path, access, key);
    if (!there && code == system_code::kSuccess) {
      record_.push_back({.kind = StepKind::Registry, .subject = shownKey(hive, path)});
    }
    return wrapped(code, hive, path, key);
  }

 private:
  SystemCode wrapped(SystemCode code, machine::Hive hive, const std::string& path,
                     std::unique_ptr<machine::RegistryKey>& key) {
    if (code == system_code::kSuccess) {
      key = std::make_unique<RecordedKey>(std::move(key), machine_, hive, path, record_);
    }
    return code;
  }

  sim::SimMachine& machine_;
  Record& record_;
};

class RecordedProcess : public machine::RunningProcess {
 public:
  RecordedProcess(std::unique_ptr<machine::RunningProcess> process, std::function<void()> waited)
      : process_(std::move(process)), waited_(std::move(waited)) {}

  SystemCode wait() override {
    waited_();
    return process_->wait();
  }
  SystemCode waitUntilReady(std::uint32_t milliseconds) override {
    return process_->waitUntilReady(milliseconds);
  }
  SystemCode exitCode(std::uint32_t& code) override { return process_->exitCode(code); }

 private:
  std::unique_ptr<machine::RunningProcess> process_;
  std::function<void()> waited_;
};

class RecordedProcesses : public machine::Processes {
 public:
  RecordedProcesses(machine::Processes& processes, Record& record)
      : processes_(processes), record_(record) {}

  SystemCode start(const std::string& commandLine, bool visible,
                   std::unique_ptr<machine::RunningProcess>& process) override {
    return noteStart(processes_.start(commandLine, visible, process), commandLine, process);
  }
  SystemCode startTool(const std::string& commandLine, bool visible,
                       std::unique_ptr<machine::RunningProcess>& process) override {
    return noteStart(processes_.startTool(commandLine, visible, process), commandLine, process);
  }
  SystemCode startBound(const std::string& commandLine, bool visible,
                        std::unique_ptr<machine::RunningProcess>& process) override {
    return noteStart(processes_.startBound(commandLine, visible, process), commandLine, process);
  }
  void whenSessionEnds(const std::string& reason, std::function<void()> action) override {
    processes_.whenSessionEnds(reason, std::move(action));
  }
  bool isRunning(std::uint32_t processId) override { return processes_.isRunning(processId); }

 private:
  SystemCode noteStart(SystemCode code, const std::string& commandLine,
                       std::unique_ptr<machine::RunningProcess>& process) {
    if (code != system_code::kSuccess || opensPacks(commandLine)) {
      return code;
    }
    record_.push_back({.kind = StepKind::Command, .subject = commandLine});
    const std::size_t place = record_.size() - 1;
    process = std::make_unique<RecordedProcess>(
        std::move(process), [this, place]() -> void { record_[place].waits = true; });
    return code;
  }

  machine::Processes& processes_;
  Record& record_;
};

class RecordedEnvironment : public machine::Environment {
 public:
  RecordedEnvironment(machine::Environment& environment, Record& record)
      : environment_(environment), record_(record) {}

  bool get(const std::string& name, std::string& value) override {
    return environment_.get(name, value);
  }
  bool set(const std::string& name, const std::string& value) override {
    const bool done = environment_.set(name, value);
    if (done) {
      record_.push_back({.kind = StepKind::Environment, .subject = name, .value = value});
    }
    return done;
  }

 private:
  machine::Environment& environment_;
  Record& record_;
};

class RecordedStore : public machine::ConfigurationLibrary {
 public:
  RecordedStore(machine::ConfigurationLibrary& store, Record& record)
      : store_(store), record_(record) {}

  std::int32_t getParameter(const std::string& product, const std::string& section,
                            const std::string& key, const std::string& attribute,
                            const std::string& defaultValue, std::int32_t size,
                            std::string& buffer) override {
    return store_.getParameter(product, section, key, attribute, defaultValue, size, buffer);
  }
  std::int32_t setParameter(const std::string& product, const std::string& section,
                            const std::string& key, const std::string& attribute, std::int32_t type,
                            const std::string& value) override {
    const std::int32_t code = store_.setParameter(product, section, key, attribute, type, value);
    if (code == 0) {
      record_.push_back({.kind = StepKind::Store, .value = value});
    }
    return code;
  }
  std::int32_t getConfigPath(std::int32_t kind, std::string& buffer) override {
    return store_.getConfigPath(kind, buffer);
  }

 private:
  machine::ConfigurationLibrary& store_;
  Record& record_;
};

class RecordedDesktop : public machine::Desktop {
 public:
  RecordedDesktop(sim::SimDesktop& desktop, Record& record, const FormHand& user)
      : desktop_(desktop), record_(record), user_(user) {}

  machine::BoxAnswer messageBox(const std::string& title, const std::string& text,
                                machine::BoxIcon icon, machine::BoxButtons buttons) override {
    const machine::BoxAnswer answer = desktop_.messageBox(title, text, icon, buttons);
    record_.push_back({.kind = StepKind::Box,
                       .subject = title,
                       .value = text,
                       .icon = icon,
                       .buttons = buttons,
                       .answer = answer});
    return answer;
  }
  std::optional<std::string> inputBox(const std::string& title,
                                      const std::string& prompt) override {
    record_.push_back({.kind = StepKind::Box,
                       .subject = title,
                       .value = prompt,
                       .buttons = machine::BoxButtons::OkCancel,
                       .answer = machine::BoxAnswer::Cancel});
    return desktop_.inputBox(title, prompt);
  }
  bool showModal(machine::Form& form) override {
    record_.push_back({.kind = StepKind::Form, .subject = form.name()});
    desktop_.onForm(form.name(),
                    [this, &form](sim::SimFormWindow& window) -> void { user_(form, window); });
    return desktop_.showModal(form);
  }
  std::unique_ptr<machine::ShownForm> showModeless(machine::Form& form) override {
    record_.push_back({.kind = StepKind::Form, .subject = form.name()});
    return desktop_.showModeless(form);
  }
  machine::FormWindow* activeForm() override { return desktop_.activeForm(); }
  void processEvents() override { desktop_.processEvents(); }
  void setHourglass(bool on) override { desktop_.setHourglass(on); }

 private:
  sim::SimDesktop& desktop_;
  Record& record_;
  const FormHand& user_;
};

/// Appends to the run log become its lines.
void takeLogLines(Record& record, const std::string& logFile, machine::Locale& locale) {
  const std::string separator = " -- ";
  for (Step& step : record) {
    if (step.kind == StepKind::Append && equalNoCase(step.subject, logFile)) {
      std::string line = locale.fromAnsi(*step.value);
      line = line.substr(line.find(separator) + separator.size());
      step.kind = StepKind::Log;
      step.value = line.substr(0, line.size() - 2);
    }
  }
}

void dump(const sim::SimNode& node, const std::string& path, std::string& text) {
  text += path + " " + std::to_string(node.modified) + (node.readOnly ? " r" : "") +
          (node.hidden ? " h" : "") + (node.leaving ? " leaving" : "") + " " + node.owner + " " +
          node.linkTarget + (node.held ? " held" : "") + " " + node.bytes;
  for (const auto& [user, right] : node.rights) {
    text += " " + user + "=" + std::to_string(static_cast<unsigned>(right));
  }
  for (const auto& [stream, bytes] : node.streams) {
    text += " :" + stream + "=" + bytes;
  }
  text += "\n";
  for (const auto& child : node.children) {
    dump(*child, path + "\\" + child->name, text);
  }
}

}  // namespace

bool opensPacks(const std::string& commandLine) {
  return commandLine.find("\\7z.exe\" x ") != std::string::npos ||
         commandLine.find("\\qalbunex.exe\" ") != std::string::npos;
}

std::vector<Step> recordedRun(sim::SimMachine& machine, const std::string& arguments,
                              const FormHand& user) {
  Record record;
  RecordedFiles recordedFiles(machine.files(), record);
  RecordedProfiles profiles(machine, record);
  RecordedRegistry registry(machine, record);
  RecordedProcesses processes(machine.programs(), record);
  RecordedEnvironment environment(machine.environment(), record);
  RecordedStore store(machine.machine().configuration, record);
  RecordedDesktop desktop(machine.desktop(), record, user);
  PatientParts parts({recordedFiles, profiles, registry, processes, environment, machine.system(),
                      machine.clock(), machine.locale(), machine.machine().versions, store,
                      machine.support(), desktop, machine.automation(), machine.exclusion()});
  machine::Machine watched = parts.machine(store);
  ProgramState state;
  modError::LogAndReporter log;
  FileSystemObject fileSystem(parts.files());
  ConfigurationFiles configurationFiles(watched);
  Program program{watched, state, log, log, fileSystem, configurationFiles};
  log.attach(program);
  machine.setArguments(arguments);
  modMain::Main(program);
  takeLogLines(record, state.runLog.logFile, machine.locale());
  return record;
}

std::string worldOf(sim::SimMachine& machine, const std::vector<std::string>& volumes) {
  std::string text;
  for (const std::string& volume : volumes) {
    dump(machine.diskOf(volume + "\\").root(), volume, text);
  }
  text += machine.registry().dump();
  for (const auto& [name, value] : machine.environment().snapshot()) {
    text += name + "=" + value + "\n";
  }
  text += machine.configuration().value("SYSTEM", "Complementary_Products", "Integration", "Path") +
          "\nstored " + std::to_string(machine.configuration().sets()) + ", paused " +
          std::to_string(machine.clock().paused()) + ", boxes " +
          std::to_string(machine.desktop().boxes().size()) + ", forms " +
          std::to_string(machine.desktop().shownForms().size()) + "\n";
  for (const std::string& line : machine.programs().startedCommandLines()) {
    text += opensPacks(line) ? "" : "started " + line + "\n";
  }
  return text;
}

}  // namespace trelv::tests
