#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "prove/Interleavings.h"
#include "prove/Invariants.h"
#include "prove/WeaveHost.h"

namespace trelv::tests {

constexpr const char* kStartOfBilancio = "INTEGRATEDRUN S:\\Lumo S:\\Lumo MVBIL";
constexpr const char* kStartOfNerio = "INTEGRATEDRUN S:\\Lumo S:\\Lumo NERIO";

/// Parts of lines, boxes and forms that tell of a failure.
constexpr const char* kFailures =
    "rrore|frmError|non effettuata|non eseguit|Impossibile|non rimoss|non disponibile|non apert|"
    "non rilevato, file di config|non è stato trovato|non risulta installato";

/// Beginnings of the box and the line of a zip pack that could not be opened.
constexpr const char* kPackNotOpened =
    "Errore in esecuzione comando: \"C:\\Lumo\\Programmi\\7z.exe|"
    "Pacco zip protetto o incompleto, non aperto: ";

/// Workplaces of one server at which programs of the manager meet.
class Gathering : public WovenWorld {
 public:
  Gathering()
      : own_(std::make_unique<Installation>()),
        installation_(*own_),
        setUps_(putServer(installation_)) {}
  /// Around a server that is there.
  explicit Gathering(Installation& installation)
      : installation_(installation), setUps_(putServer(installation_)) {}
  Gathering(const Gathering&) = delete;
  Gathering& operator=(const Gathering&) = delete;

  std::vector<Weave::Program> programs() override;
  void observe(std::size_t program, const sim::SimCall& call) override;
  void judge(Findings& findings) override;
  std::set<std::string> mayDiffer() override { return setUps_->disputed(); }
  End end() override;

 protected:
  /// A computer of its own.
  Workplace& addComputer();
  /// Another process of a user on a computer.
  Workplace& addProcess(Workplace& computer, const std::string& user, std::uint32_t session);
  /// What a workplace does; in the order of the programs.
  void does(Workplace& workplace, std::function<void()> work);
  /// A start by the host, and the program that it is for.
  void starts(Workplace& workplace, const char* arguments, const char* program);
  void installs(Workplace& workplace, const std::string& id);
  void putWaitingPack();
  /// What the pack of a single installation brings is there, whole.
  void expectInstalled(const std::string& product, Findings& findings);
  /// Was one of them waited for so long that the others gave up? He has stood still, and they go on
  /// without him, by design.
  bool hasStoodStill(int seconds);
  /// Does it tell of a work folder that another one had longer than anybody waits?
  bool isOfWorkFolderInUse(const std::string& text);
  /// What holds of this meeting besides.
  virtual void judgeMore(Findings& /*findings*/) {}
  /// Is a failure that is told right here? The text is a line, a box or the name of a form.
  virtual bool isRight(const std::string& /*text*/) { return false; }
  /// Does the meeting leave this path of a disk, in lower case, by design?
  virtual bool mayStay(const std::string& /*path*/) { return false; }
  /// What a path of the end is compared by; nothing: it is not. The moment of a run is left out.
  virtual std::optional<std::string> comparable(const std::string& path, const std::string& bytes);
  /// Versions that the meeting may leave although no command brought them.
  virtual bool mayStand(const std::string& /*id*/, const std::string& /*version*/) { return false; }

  std::unique_ptr<Installation> own_;
  Installation& installation_;
  std::shared_ptr<SetUps> setUps_;
  std::deque<Workplace> workplaces_;
  std::vector<Weave::Program> programs_;

 private:
  struct Asked {
    Workplace* workplace;
    const char* program;
  };

  bool isOfOpenedPack(Workplace& workplace, const std::string& text);
  void expectNothingTold(Workplace& workplace, Findings& findings);
  void expectUpdated(Workplace& workplace, Findings& findings);
  void expectVersions(Workplace& workplace, Findings& findings);
  void expectVersion(const std::string& where, const std::string& id, const std::string& side,
                     const std::string& version, Findings& findings);
  void expectCleanDisks(Findings& findings);
  bool wasBrought(const std::string& id, const std::string& side, const std::string& version);

  std::vector<Asked> asked_;
  /// By program, since it began its present update run: the locks that it looked for and did not
  /// find.
  std::map<std::size_t, std::set<std::string>> free_;
  bool respected_ = true;
};

}  // namespace trelv::tests
