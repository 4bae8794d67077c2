#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/XmlStore.h"
#include "prove/Invariants.h"
#include "support/Installation.h"
#include "support/PackPrograms.h"
#include "support/RealProgram.h"

namespace trelv::tests {

/// Where the programs of one process of the manager run: a computer of its own, or another session
/// on the computer of another workplace, whose disk, registry and configuration store it shares.
class Workplace {
 public:
  /// A computer of this name; its user is mario.
  Workplace(Installation& installation, const std::string& computer);
  /// Another process on the computer that `other` is one of: of the same user, or of another one
  /// with a profile and a session of his own.
  Workplace(Installation& installation, sim::SimMachine& other, const std::string& user,
            std::uint32_t session);

  sim::SimMachine& machine() { return station_.machine(); }
  Station& station() { return station_; }
  XmlStore& store() { return store_; }
  /// Temporary folder of its user, without trailing backslash.
  const std::string& temp() const { return temp_; }
  /// Do both unpack in the same folder?
  bool sharesWorkFolderWith(Workplace& other);

  /// One process of the manager from start to end. What it told is kept.
  void start(const std::string& arguments);
  /// The same for a procedure of the manager instead of a whole start.
  void work(const std::function<void(RealProgram&)>& procedure);
  /// A user of the maintenance form removes a product from one side.
  void removeProduct(const std::string& id, Side side);
  /// The process has ended and its number is another one's: the next one has another.
  void nextProcess();

  /// Texts of boxes, names of forms, and log lines of the processes so far.
  std::vector<std::string> told();
  /// What was told so far is not told again; the log is gone.
  void forgetTold();
  /// How often a program was started here.
  std::size_t countOfStarted(const std::string& beginning);
  /// Command lines of all programs that were started here.
  std::vector<std::string> commands() { return station_.commandLines(); }

  static constexpr const char* kStoreFile = "C:\\Lumo\\Client\\config.xml";

 private:
  void openPacksStepwise();

  Station station_;
  PatientMachine patient_{station_.machine().machine()};
  XmlStore store_{patient_.machine().files, patient_.machine().registry, patient_.machine().locale,
                  patient_.machine().system, patient_.machine().exclusion};
  std::unique_ptr<PackPrograms> packPrograms_;
  std::string temp_ = "C:\\Users\\mario\\Temp";
  std::vector<std::string> log_;
  std::size_t boxesBefore_ = 0;
  std::size_t formsBefore_ = 0;
  /// The other process on the same computer.
  sim::SimMachine* beside_ = nullptr;
};

/// The files and pointers of a configuration store, with the integration recorded.
void putStore(sim::SimMachine& machine);

/// The set-ups of one server and of its clients, each of which writes one file.
class SetUps {
 public:
  /// A set-up begins or ends to write a file of a disk.
  void begins(const sim::SimDisk& disk, const std::string& file, const std::string& version);
  void ends(const sim::SimDisk& disk, const std::string& file);
  /// Files, in lower case and without their drives, that two set-ups wrote at once or an older one
  /// after a newer one.
  const std::set<std::string>& disputed() const { return disputed_; }

 private:
  struct Target {
    int writers = 0;
    std::string newest;
  };

  std::map<std::pair<const sim::SimDisk*, std::string>, Target> targets_;
  std::set<std::string> disputed_;
};

/// What the server of the interleavings holds: Bilancio and Nerio, both behind what their
/// configuration files bring, whose set-ups write what they install step by step; versions of a
/// product that nobody touches in each record; the manager's copy for the clients and the
/// environment file.
std::shared_ptr<SetUps> putServer(Installation& installation);

/// What is recorded on a workplace of that server.
void putClient(Workplace& workplace);

/// A pack that brings a version of Bilancio ("ZB") or Nerio ("NERIO"), as a start opens it.
PackContent packOf(const std::string& id, const std::string& version);
/// A gz pack of a single installation, which brings this product to a server that knows of it.
std::string productPack(const std::string& id);

constexpr const char* kSetupFolder = "S:\\Lumo\\prg\\com\\setup\\aggdovra";
constexpr const char* kBilancio = "S:\\Lumo\\mv\\zb\\mvbil.exe";
constexpr const char* kNerio = "S:\\Lumo\\mv\\nerio\\nerio.exe";
constexpr const char* kClientCopy = "S:\\Lumo\\prg\\com\\bin\\cpy\\client\\TrelvManager.exe";
constexpr const char* kEnvironmentFile = "S:\\Lumo\\prg\\etc\\ambver";
constexpr const char* kVersionBefore = "09.90.00.00";
constexpr const char* kVersionThere = "09.93.00.00";
constexpr const char* kVersionOfPack = "09.94.00.00";
constexpr const char* kNerioVersion = "03.20.30.00";

}  // namespace trelv::tests
