#pragma once

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "support/Installation.h"
#include "support/PackPrograms.h"
#include "support/RealProgram.h"

namespace trelv::tests {

/// Bytes of a medium's zip pack: NAME.gz in its root, which brings NAME.zip, which brings these
/// files to the set-up tree (paths below prg\com\setup\aggdovra).
std::string mediumPack(const std::string& name, const PackContent& tree);

/// The set-up tree of one product: its catalogue with this product alone, its configuration file
/// with one command for the server side, and the program of that command.
PackContent setupTree(const std::string& id, const std::string& version);

/// A workstation with an installation medium in drive E:, from which the manager is started, and a
/// host installation on S:\Lumo that it is not integrated with. The medium offers Nerio and
/// Bilancio (two versions) on the first page, Zeltomodelli with a command and an entry that leaves
/// on the second; it looks for no products.
class MediumStation {
 public:
  static constexpr const char* kManager = "E:\\prodotti\\manager";
  static constexpr const char* kRoot = "E:\\prodotti\\manager\\..\\..\\";
  static constexpr const char* kTemp = "C:\\Users\\mario\\Temp";
  static constexpr const char* kStandard = "Installazione Standard";
  static constexpr const char* kIntegrated = "Installazione Integrata";

  MediumStation();

  sim::SimMachine& machine() { return machine_; }
  sim::SimDesktop& desktop() { return machine_.desktop(); }
  sim::SimDisk& medium() { return *medium_; }
  sim::SimDisk& share() { return installation_.share(); }
  Station& station() { return station_; }
  Installation& installation() { return installation_; }
  /// The process of the manager that runs, or ran last.
  RealProgram& program() { return *process_; }
  SessionState& session() { return process_->state().session; }

  /// Lines of Setup.cmf behind the second one.
  void putMenu(const std::vector<std::string>& lines);
  void putMediumFile(const std::string& path, const std::string& bytes);

  /// What the user does the next time the form is there for him to work in; several calls in order.
  /// Without one he leaves it by its close box.
  void onForm(const std::string& form, sim::SimDesktop::UserAction action);
  /// What he tries in a form while packs are opened.
  void whileInstalling(sim::SimDesktop::UserAction action) { installing_ = std::move(action); }

  /// Confirms an installation of the selection form, the standard one or the other.
  void select(const std::string& installation);
  /// Selects entries of a product form by their captions, wherever they stand, and goes on.
  void install(const std::string& form, const std::vector<std::string>& captions);

  /// One session in a process of its own, from start to end.
  void run();
  /// The user forgets what he wanted to do.
  void forgetScripts() { scripts_.clear(); }
  /// Names in a folder, sorted.
  std::vector<std::string> namesIn(const std::string& folder);
  /// Messages of the error forms that were shown, each with the failure's description behind it.
  const std::vector<std::string>& reports() const { return reports_; }
  /// Command lines of what was started besides the programs that open packs.
  std::vector<std::string> setups();

 private:
  void putHost();
  void putMedium();
  void work(sim::SimFormWindow& form);

  Installation installation_;
  Station station_{installation_};
  sim::SimMachine& machine_ = station_.machine();
  std::shared_ptr<sim::SimDisk> medium_ = machine_.mount("E:");
  PackPrograms packPrograms_{machine_, kManager};
  std::unique_ptr<RealProgram> process_ = std::make_unique<RealProgram>(machine_);
  std::map<std::string, std::deque<sim::SimDesktop::UserAction>> scripts_;
  sim::SimDesktop::UserAction installing_;
  std::vector<std::string> reports_;
};

}  // namespace trelv::tests
