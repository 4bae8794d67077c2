// The installation of one product and the manager's self-update, again and again: each time one
// more call of the machine fails, or everything from it on, or the program ends there by force.
// Client copy, environment file and what a pack brought are old or new, never half; nothing stays
// on the share; and whoever finds a failure silent says here why that is right.

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "packs/SelfUpdate.h"
#include "prove/Invariants.h"
#include "support/Installation.h"
#include "support/PackPrograms.h"
#include "support/RealProgram.h"
#include "sweep/ExpectSwept.h"

namespace trelv::tests {
namespace {

constexpr const char* kOwn = "C:\\Lumo\\Programmi\\TrelvManager.exe";
constexpr const char* kPack = "C:\\Lumo\\Programmi\\luda.gz";
constexpr const char* kClientCopy = "S:\\Lumo\\prg\\com\\bin\\cpy\\client\\TrelvManager.exe";
constexpr const char* kAmbver = "S:\\Lumo\\prg\\etc\\ambver";
constexpr const char* kTemporaries = "S:\\Lumo\\prg\\tempterm";
constexpr const char* kCopies = "S:\\Lumo\\prg\\com\\bin\\cpy";
constexpr const char* kClientCopyFolder = "S:\\Lumo\\prg\\com\\bin\\cpy\\client";
constexpr const char* kTree = "prg\\com\\setup\\aggdovra\\";
constexpr const char* kDelivered = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\luda.ini";
constexpr const char* kSetup = "C:\\Setup\\luda.exe";

constexpr const char* kOldAmbver = "prima\r\nAMB0001 01/02/08 10:11\r\n";
constexpr const char* kNewAmbver = "AMB000116/11/26 09:30\r\n";
constexpr const char* kCatalogueText =
    "[Prod01]\r\nid=LUDA\r\nname=Luda\r\nconf=prg\\com\\setup\\aggdovra\\luda.ini\r\n";
constexpr const char* kConfigurationText =
    "[Setup01]\r\nversion=01.00\r\nServer01=C:\\Setup\\luda.exe -S\r\n";

enum class Work { Done, NotDone, EitherWay };

struct Outcome {
  const char* call;
  /// Part of a log line or box; "|" separates what different calls of that beginning lead to. Null:
  /// told nowhere, or not by all of them.
  const char* told;
  Work work;
  /// Why it is right so, where that does not speak for itself.
  const char* reason = "";
  Trouble in = Trouble::FailsOnce;
};

/// Told in the error form only.
constexpr const char* kErrorForm = "frmError";
constexpr const char* kSelfUpdateFails = "Errore in aggiornamento TrelvManager ";

const CallTable<Outcome> kOutcomes{
    // The run log and start-up.
    {"files.append C:\\Users\\mario\\Temp\\log\\", nullptr, Work::Done, "a line is lost"},
    {"files.look C:\\Users\\mario\\Temp\\log\\", nullptr, Work::Done, "an old log is kept then"},
    {"system.temporaryFolder", nullptr, Work::EitherWay, "the log needs it too"},
    {"system.queryVersion", nullptr, Work::Done, "the edition's probes answer no"},
    {"system.isAdministrator", "forzato IsAdmin=TRUE", Work::Done},
    {"files.look \\prg\\com\\dovra\\plugin", nullptr, Work::Done, "the host is no Dovra then"},
    {"configuration.getConfigPath", nullptr, Work::EitherWay,
     "without it there is no integration: the product is installed on its own"},
    {"configuration.getParameter",
     "Errore in installazione singolo prodotto integrato: ", Work::NotDone},
    // The pack.
    {"system.userName", nullptr, Work::Done, "the mark of the work folder tells no name"},
    {"exclusion.take S:\\Lumo\\prg\\tempterm", nullptr, Work::Done,
     "the self-update goes on without its turn"},
    {"files.mayAddFile S:\\Lumo\\prg\\tempterm", nullptr, Work::Done,
     "the self-update goes on without its turn"},
    {"exclusion.take", "nessun pacco viene aperto", Work::NotDone},
    {"files.read S:\\Lumo\\TrelvManager.lck", "Errore in Apertura Pacco ", Work::NotDone,
     "the target may be the work folder under another name"},
    {"files.list S:\\Lumo\\prg\\com\\setup\\aggdovra", nullptr, Work::Done,
     "what other copies left there stays"},
    {"files.replaceFile S:\\Lumo\\prg\\com\\setup\\aggdovra\\", "Errore in Apertura Pacco ",
     Work::NotDone},
    {"files.readPart", nullptr, Work::Done, "7-Zip opens it without a look at it"},
    {"processes.start \"C:\\Lumo\\Programmi\\qalbunex.exe", kErrorForm, Work::NotDone},
    {"processes.start \"C:\\Lumo\\Programmi\\7z.exe",
     "Errore in esecuzione comando: ", Work::NotDone},
    {"processes.wait", nullptr, Work::Done, "counts as a program that ran"},
    {"processes.exitCode \"C:\\Lumo\\Programmi\\qalbunex.exe", nullptr, Work::Done,
     "the pack is noted as one that could not be opened, which nobody asks for here"},
    {"processes.exitCode", "Errore in esecuzione comando: ", Work::EitherWay,
     "the pack is kept; what it held is in the temporary folder, where a set-up finds it"},
    {"files.list C:\\Users\\mario\\Temp\\prg\\com\\setup\\aggdovra",
     "Contenuto di un pacco non rimosso|Errore in Apertura Pacco |Comando non eseguito: |"
     "Errore in installazione prodotto",
     Work::EitherWay},
    {"files.look C:\\Users\\mario\\Temp\\prg\\com\\setup\\aggdovra\\luda.zip", nullptr, Work::Done,
     "the opened pack is kept"},
    {"files.removeFile C:\\Users\\mario\\Temp\\prg\\com\\setup\\aggdovra\\luda.zip",
     "Errore in cancellazione file: ", Work::Done},
    {"desktop.showModeless", nullptr, Work::Done, "what is copied is copied without it"},
    {"files.makeFolder S:\\Lumo\\prg\\com\\", "Errore in Apertura Pacco ", Work::NotDone},
    {"files.look S:\\Lumo\\prg\\com\\setup\\aggdovra",
     "errore in creazione cartella: |Errore in Apertura Pacco ", Work::EitherWay},
    {"files.copyFile C:\\Users\\mario\\Temp\\prg\\", "Errore in Apertura Pacco ", Work::NotDone},
    // The direct set-up.
    {"files.read C:\\Users\\mario\\Temp\\prg\\", nullptr, Work::Done,
     "the platform's functions are asked instead"},
    {"profiles.readValue C:\\WINDOWS\\LUDA.INI", nullptr, Work::Done,
     "the product counts as absent"},
    {"versions.read", nullptr, Work::Done, "the product counts as absent"},
    {"files.look C:\\Users\\mario\\Temp\\prg\\com\\setup\\aggdovra\\luda.ini",
     "Prodotto non rilevato, file di config non presente ", Work::NotDone},
    {"files.look C:\\Users\\mario\\Temp\\prg\\tempterm\\agdv.lck", nullptr, Work::Done,
     "the lock counts as missing"},
    {"files.look C:\\Users\\mario\\Temp\\prg\\tempterm", nullptr, Work::Done, "it is made"},
    {"files.makeFolder C:\\Users\\mario\\Temp\\prg\\tempterm",
     "errore in creazione cartella: ", Work::NotDone},
    {"files.write C:\\Users\\mario\\Temp\\prg\\tempterm\\agdv.lck",
     "Comando non eseguito: ", Work::NotDone},
    {"processes.start C:\\Setup\\luda.exe", "Esecuzione non effettuata di: ", Work::NotDone},
    {"files.removeFile C:\\Users\\mario\\Temp\\prg\\tempterm\\agdv.lck",
     "Errore in cancellazione file: ", Work::Done},
    // The unpacked tree is deleted.
    {"files.look C:\\Users\\mario\\Temp\\prg", nullptr, Work::EitherWay},
    {"files.list C:\\Users\\mario\\Temp\\prg",
     "Contenuto di un pacco non rimosso|Errore in Apertura Pacco |"
     "Errore in installazione prodotto",
     Work::EitherWay},
    {"files.list C:\\Users\\mario\\Temp", nullptr, Work::Done, "what an ended decoder left stays"},
    {"files.removeFile C:\\Users\\mario\\Temp\\prg\\",
     "Contenuto di un pacco non rimosso|Errore in Apertura Pacco |"
     "Errore in installazione prodotto",
     Work::EitherWay},
    {"files.removeFolder C:\\Users\\mario\\Temp\\prg",
     "Contenuto di un pacco non rimosso|Errore in Apertura Pacco |"
     "Errore in installazione prodotto",
     Work::EitherWay},
    // The self-update.
    {"system.computerName", nullptr, Work::Done, "the temporaries' names lack it"},
    {"files.list S:\\Lumo\\prg\\tempterm", nullptr, Work::Done, "leftovers stay for the next one"},
    {"files.list S:\\Lumo\\prg\\com\\bin\\cpy", nullptr, Work::Done,
     "leftovers stay for the next one"},
    {"files.copyRights S:\\Lumo\\prg\\com\\bin\\cpy\\client", kSelfUpdateFails, Work::NotDone},
    {"files.copyRights S:\\Lumo\\prg\\etc\\ambver", kSelfUpdateFails, Work::NotDone},
    {"files.removeStream S:\\Lumo\\prg\\tempterm\\", nullptr, Work::EitherWay,
     "file systems differ in what they call a missing one"},
    {"files.mayAddFile", kSelfUpdateFails, Work::NotDone},
    {"files.look S:\\Lumo\\prg\\tempterm", "errore in creazione cartella: ", Work::Done},
    {"files.look S:\\Lumo\\prg\\com\\bin\\cpy\\TrelvManager-STAZIONE", nullptr, Work::Done,
     "the program that was put aside stays for the next one"},
    {"files.removeFile S:\\Lumo\\prg\\com\\bin\\cpy\\TrelvManager-STAZIONE",
     "File temporaneo non rimosso: ", Work::Done},
    {"files.look S:\\Lumo\\prg\\com\\bin\\cpy\\client\\TrelvManager.exe", nullptr, Work::EitherWay,
     "of a copy in use one look only tells that it may be waited for"},
    {"files.look C:\\Lumo\\Programmi\\TrelvManager.exe", kSelfUpdateFails, Work::NotDone},
    {"files.copyFile C:\\Lumo\\Programmi\\TrelvManager.exe", kSelfUpdateFails, Work::NotDone},
    {"files.clearReadOnly S:\\Lumo\\prg\\tempterm\\", kSelfUpdateFails, Work::NotDone},
    {"files.moveFile S:\\Lumo\\prg\\com\\bin\\cpy\\client\\TrelvManager.exe", kSelfUpdateFails,
     Work::NotDone},
    {"files.moveFile S:\\Lumo\\prg\\tempterm\\TrelvManager-STAZIONE", kSelfUpdateFails,
     Work::NotDone},
    {"files.replaceFile S:\\Lumo\\prg\\tempterm\\TrelvManager-STAZIONE", nullptr, Work::EitherWay,
     "one that is refused is tried by putting the old one aside"},
    {"files.read S:\\Lumo\\prg\\etc\\ambver", kSelfUpdateFails, Work::NotDone},
    {"files.read S:\\Lumo\\prg\\tempterm\\ambver-", kSelfUpdateFails, Work::NotDone},
    {"files.look C:\\Users\\mario\\Temp\\ambver", nullptr, Work::EitherWay,
     "an old scratch copy counts as missing and is overwritten"},
    {"files.write C:\\Users\\mario\\Temp\\ambver", kSelfUpdateFails, Work::NotDone},
    {"files.copyFile C:\\Users\\mario\\Temp\\ambver", kSelfUpdateFails, Work::NotDone},
    {"files.look S:\\Lumo\\prg\\etc\\ambver", kSelfUpdateFails, Work::NotDone},
    {"files.replaceFile S:\\Lumo\\prg\\tempterm\\ambver-STAZIONE", kSelfUpdateFails, Work::NotDone},
    {"files.look C:\\Users\\mario\\Temp",
     "nessun pacco viene aperto|Pacco zip con un collegamento|Errore in Apertura Pacco |"
     "Errore in esecuzione setup",
     Work::EitherWay, "a link may stand where nobody can look; what was unpacked before stays"},
    {"desktop.messageBox", nullptr, Work::Done, "there is nobody to see it"}};

enum class InstallKind {
  /// The self-update alone.
  SelfUpdate,
  /// The same while the client copy runs somewhere.
  SelfUpdateOfARunningCopy,
  /// A whole start that installs Luda's pack on the integrated server.
  Integrated,
  /// A whole start that installs Luda's pack on a machine without integration.
  Standalone
};

bool updatesItself(InstallKind kind) { return kind != InstallKind::Standalone; }
bool opensAPack(InstallKind kind) {
  return kind == InstallKind::Integrated || kind == InstallKind::Standalone;
}

/// A workstation on which one installation runs.
class SweptInstall : public SweptWorld {
 public:
  explicit SweptInstall(InstallKind kind);

  sim::SimMachine& machine() override { return station_.machine(); }
  sim::SimDisk& share() override { return installation_.share(); }
  void run() override;
  void judge(const Fault& fault, Findings& findings) override;

 private:
  bool told(const std::string& parts) { return tellsOneOf(told_, parts); }
  bool copyIs(const char* text) {
    return share().exists(kClientCopy) && share().text(kClientCopy) == text;
  }
  bool isStamped() { return share().exists(kAmbver) && share().text(kAmbver) == kNewAmbver; }
  bool setupRan();
  bool isDelivered();
  bool isDone();
  bool lockWasLeft() {
    return machine().fileExists("C:\\Users\\mario\\Temp\\prg\\tempterm\\agdv.lck");
  }

  void expectNothingHalf(Findings& findings);
  void expectDeliveredWhole(Findings& findings);
  void expectOutcome(const Fault& fault, Findings& findings);
  void expectNoTemporaries(bool runs, Findings& findings);
  void finishAfterTheEnd(Findings& findings);

  const InstallKind kind_;
  Installation installation_;
  Station station_{installation_};
  PackPrograms packPrograms_{station_.machine()};
  std::shared_ptr<void> running_;
  /// Log lines, texts of boxes, names of forms.
  std::vector<std::string> told_;
};

SweptInstall::SweptInstall(InstallKind kind) : kind_(kind) {
  machine().putFile(kOwn, "il nuovo");
  machine().diskOf(kOwn).setModified(kOwn, {2026, 11, 1, 12, 0, 0});
  share().put(kClientCopy, "il vecchio");
  share().setModified(kClientCopy, {2026, 10, 1, 12, 0, 0});
  share().put(kAmbver, kOldAmbver);
  const std::string tree(kTree);
  machine().putFile(
      kPack,
      packBytes({{tree + "luda.zip", packBytes({{tree + "agdvcomp.ini", kCatalogueText},
                                                {tree + "luda.ini", kConfigurationText}})}}));
  machine().programs().define(kSetup);
  if (kind == InstallKind::Standalone) {
    station_.forgetIntegration();
  }
  if (kind == InstallKind::SelfUpdateOfARunningCopy) {
    running_ = share().run(kClientCopy);
  }
}

void SweptInstall::run() {
  RealProgram program(machine());
  if (opensAPack(kind_)) {
    program.run("SINGLEINSTALL LUDA luda.gz");
  } else {
    program.state().startup.paths.server = "S:\\Lumo";
    modProdTrelvManager::UpdateTrelvManager(program, "S:\\Lumo");
  }
  told_ = program.logLines();
  for (const std::vector<std::string>& shown :
       {machine().desktop().boxTexts(), machine().desktop().shownForms()}) {
    told_.insert(told_.end(), shown.begin(), shown.end());
  }
}

bool SweptInstall::setupRan() {
  const std::vector<std::string> lines = machine().programs().startedCommandLines();
  return std::count(lines.begin(), lines.end(), kSetup) > 0;
}

bool SweptInstall::isDelivered() {
  return share().exists(kDelivered) && share().exists(Installation::kCatalogue);
}

/// All that a start without failures does is done.
bool SweptInstall::isDone() {
  if (kind_ == InstallKind::Standalone) {
    return setupRan() && !machine().folderExists("C:\\Users\\mario\\Temp\\prg");
  }
  return copyIs("il nuovo") && isStamped() && (!opensAPack(kind_) || isDelivered());
}

void SweptInstall::judge(const Fault& fault, Findings& findings) {
  expectNothingHalf(findings);
  if (fault.trouble == Trouble::Killed) {
    // Between the two renames of a copy in use there is none.
    expect(findings, Invariant::NothingElseDeleted,
           share().exists(kClientCopy) || kind_ == InstallKind::SelfUpdateOfARunningCopy,
           "no client copy");
    finishAfterTheEnd(findings);
  } else {
    expectDeliveredWhole(findings);
  }
  if (fault.trouble == Trouble::None) {
    expect(findings, Invariant::Heals, isDone(), "not done");
  } else if (fault.trouble == Trouble::FailsOnce) {
    expectOutcome(fault, findings);
    expect(findings, Invariant::NothingElseDeleted, share().exists(kClientCopy), "no client copy");
    expectNoTemporaries(kind_ == InstallKind::SelfUpdateOfARunningCopy, findings);
  }
}

/// Nothing of it is half, whatever happened.
void SweptInstall::expectNothingHalf(Findings& findings) {
  expect(findings, Invariant::NothingHalf,
         !share().exists(kClientCopy) || copyIs("il nuovo") || copyIs("il vecchio"),
         "half a client copy");
  expect(findings, Invariant::NothingHalf, isStamped() || share().text(kAmbver) == kOldAmbver,
         "half an environment file");
  expect(findings, Invariant::NothingElseDeleted, machine().fileExists(kPack), "the pack is gone");
  expect(findings, Invariant::NothingHalf, machine().fileText(kOwn) == "il nuovo",
         "the manager itself changed");
  expect(findings, Invariant::OthersSurvive,
         updatesItself(kind_) || !(copyIs("il nuovo") || isStamped() || isDelivered()),
         "the server changed");
}

void SweptInstall::expectDeliveredWhole(Findings& findings) {
  expect(findings, Invariant::NothingHalf,
         !share().exists(kDelivered) || share().text(kDelivered) == kConfigurationText,
         "half a configuration");
  expect(findings, Invariant::NothingHalf,
         !share().exists(Installation::kCatalogue) ||
             share().text(Installation::kCatalogue) == kCatalogueText,
         "half a catalogue");
}

void SweptInstall::expectOutcome(const Fault& fault, Findings& findings) {
  const Outcome* const row = kOutcomes.of(fault);
  if (row == nullptr) {
    findings.expect(false, "nobody says what this failure leads to");
    return;
  }
  expect(findings, Invariant::FailureTold, row->told == nullptr || told(row->told),
         std::string("nobody told \"") + (row->told != nullptr ? row->told : ""));
  const bool done = isDone();
  expect(findings, Invariant::Heals, done || row->work != Work::Done, "not done");
  expect(findings, Invariant::ToldForAReason, !done || row->work != Work::NotDone,
         "done all the same");
  expect(findings, Invariant::FailureTold,
         done || told("rrore|nessun pacco viene aperto|non "
                      "rilevat|non effettuata|non eseguita|Comando non eseguito|"
                      "non trovata in registro|frmError"),
         "not done, and nobody told it");
}

/// The lock of nobody lies there too. A client copy that runs may be put aside.
void SweptInstall::expectNoTemporaries(bool runs, Findings& findings) {
  for (const std::string& name : share().names(kTemporaries)) {
    expect(findings, Invariant::Heals, false, "left on the share: " + name);
  }
  for (const std::string& name : share().names(kClientCopyFolder)) {
    expect(findings, Invariant::Heals, name == "TrelvManager.exe",
           "left beside the client copy: " + name);
  }
  for (const std::string& name : share().names(kCopies)) {
    expect(findings, Invariant::Heals, name == "client" || runs, "left aside: " + name);
  }
}

/// The next start finishes what one that was ended by force began.
void SweptInstall::finishAfterTheEnd(Findings& findings) {
  running_.reset();
  if (lockWasLeft()) {
    // Kept: a lock is respected whoever left it. The start that met it deletes it with the tree.
    run();
    expect(findings, Invariant::FailureTold,
           told("presenza di una o più precedenti sessioni in corso"),
           "nobody told of the lock that was left");
  }
  run();
  expect(findings, Invariant::Heals, isDone(), "not done by the next start");
  expectNothingHalf(findings);
  expectDeliveredWhole(findings);
  expectNoTemporaries(false, findings);
}

TEST(InstallSweep, FailuresAreToldAndNothingIsHalf) {
  expectSwept<SweptInstall>({Trouble::FailsOnce}, 25, InstallKind::SelfUpdate);
  expectSwept<SweptInstall>({Trouble::FailsOnce}, 25, InstallKind::SelfUpdateOfARunningCopy);
  expectSwept<SweptInstall>({Trouble::FailsOnce}, 60, InstallKind::Integrated);
  expectSwept<SweptInstall>({Trouble::FailsOnce}, 50, InstallKind::Standalone);
  expectEachRowMatched(kOutcomes);
}

TEST(InstallSweep, NothingIsHalfWhereEverythingFailsOrTheProgramEnds) {
  for (const InstallKind kind : {InstallKind::SelfUpdate, InstallKind::SelfUpdateOfARunningCopy,
                                 InstallKind::Integrated, InstallKind::Standalone}) {
    expectSwept<SweptInstall>({Trouble::FailsFromThenOn, Trouble::Killed},
                              opensAPack(kind) ? 50 : 25, kind);
  }
}

}  // namespace
}  // namespace trelv::tests
