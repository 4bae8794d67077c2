#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "sim/SimMachine.h"
#include "support/FakeProgram.h"

namespace trelv::tests {

/// One section of a product's configuration file: its version and its commands per side.
struct Section {
  std::string name;
  std::string version;
  std::vector<std::string> server;
  std::vector<std::string> client;
};

/// One product: its entry in the catalogue (conf relative to the server path) and its files.
struct ProductEntry {
  std::string id;
  std::string name;
  std::string conf;
};

/// Text of a catalogue with these entries in sections prod01, prod02, ...
std::string catalogueText(const std::vector<ProductEntry>& entries);

/// Text of a product configuration file; `programs` are the lines of section Exec.
std::string configurationText(const std::vector<Section>& sections,
                              const std::vector<std::string>& programs = {});

/// A host installation on a server share: what all workstations see under S:\Lumo.
class Installation {
 public:
  static constexpr const char* kServer = "S:\\Lumo";

  Installation();

  sim::SimDisk& share() { return *share_; }
  const std::shared_ptr<sim::SimDisk>& sharedDisk() { return share_; }

  void putCatalogue(const std::vector<ProductEntry>& entries);
  void putConfiguration(const std::string& conf, const std::string& text);
  /// Programs S:\Lumo\a.exe, S:\Lumo\b.exe, ... of these names, which end at once.
  void putPrograms(const std::vector<std::string>& names);
  /// Text of the server's version record, whole.
  std::string serverRecord();
  void putServerRecord(const std::string& text);
  bool serverLockExists();

  static constexpr const char* kCatalogue = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\agdvcomp.ini";
  static constexpr const char* kServerRecord = "S:\\Lumo\\prg\\etc\\agdvver.ini";
  static constexpr const char* kServerLock = "S:\\Lumo\\prg\\tempterm\\agdv.lck";

 private:
  std::shared_ptr<sim::SimDisk> share_;
};

/// One workstation of the installation, integrated with it: Windows XP, user mario, programs path
/// C:\Lumo\Client. Its log folder exists.
class Station {
 public:
  explicit Station(Installation& installation);

  sim::SimMachine& machine() { return machine_; }
  sim::SimDisk& disk() { return machine_.diskOf("C:\\"); }
  /// The process of the manager that runs here, whose user may install; log lines and reports are
  /// kept. Made on first use.
  FakeProgram& program();
  /// Ends that process; the next call of program() starts another.
  void endProgram() { program_.reset(); }

  void putClientRecord(const std::string& text);
  std::string clientVersion(const std::string& id);
  std::string serverVersion(const std::string& id);
  /// Takes the integration record away.
  void forgetIntegration();
  std::string recordedIntegration();
  /// Command lines of all started programs in order.
  std::vector<std::string> commandLines() { return machine_.programs().startedCommandLines(); }

  static constexpr const char* kClientRecord = "C:\\Lumo\\Client\\agdvver.ini";
  static constexpr const char* kClientLock = "C:\\Lumo\\Clientagdv.lck";

 private:
  sim::SimMachine machine_;
  std::unique_ptr<FakeProgram> program_;
};

/// The five products as they are delivered, their set-ups on the share: each set-up installs its
/// product's programs below S:\Lumo\mv. Nothing is recorded yet.
void putFiveProducts(Installation& installation);

/// Version records in which all five products are at the delivered versions.
std::string deliveredVersions();

}  // namespace trelv::tests
