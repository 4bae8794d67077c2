// The installation of one product and the manager's self-update, again and again: each time one
// more call of the machine fails, or the program ends there by force. Client copy, environment file
// and what a pack brought are old or new, never half; nothing stays on the share; and whoever finds
// a failure silent says here why that is right.

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <sstream>
#include <vector>

#include "packs/SelfUpdate.h"
#include "sim/FailingMachine.h"
#include "sim/KilledMachine.h"
#include "support/Installation.h"
#include "support/PackPrograms.h"
#include "support/RealProgram.h"

namespace trelv::tests {
namespace {

constexpr const char* kOwn = "C:\\Lumo\\Programmi\\TrelvManager.exe";
constexpr const char* kPack = "C:\\Lumo\\Programmi\\luda.gz";
constexpr const char* kClientCopy = "S:\\Lumo\\prg\\com\\bin\\cpy\\client\\TrelvManager.exe";
constexpr const char* kAmbver = "S:\\Lumo\\prg\\etc\\ambver";
constexpr const char* kTemporaries = "S:\\Lumo\\prg\\tempterm";
constexpr const char* kTree = "prg\\com\\setup\\aggdovra\\";
constexpr const char* kSetup = "C:\\Setup\\luda.exe";

constexpr const char* kOldAmbver = "prima\r\nAMB0001 01/02/08 10:11\r\n";
constexpr const char* kNewAmbver = "AMB000116/11/26 09:30\r\n";
constexpr const char* kCatalogueText =
    "[Prod01]\r\nid=LUDA\r\nname=Luda\r\nconf=prg\\com\\setup\\aggdovra\\luda.ini\r\n";
constexpr const char* kConfigurationText =
    "[Setup01]\r\nversion=01.00\r\nServer01=C:\\Setup\\luda.exe -S\r\n";

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

/// One world; nothing is shared between two of them.
class SweptInstall {
 public:
  explicit SweptInstall(InstallKind kind) : kind_(kind) {
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

  void run() {
    RealProgram program(machine());
    if (opensAPack(kind_)) {
      program.run("SINGLEINSTALL LUDA luda.gz");
    } else {
      program.state().startup.hostFolder = "S:\\Lumo";
      modProdTrelvManager::UpdateTrelvManager(program, "S:\\Lumo");
    }
    log_ = program.logLines();
  }
  bool lockWasLeft() {
    return machine().fileExists("C:\\Users\\mario\\Temp\\prg\\tempterm\\agdv.lck");
  }
  void endRunningCopy() { running_.reset(); }

  sim::SimMachine& machine() { return station_.machine(); }
  sim::SimDisk& share() { return installation_.share(); }

  /// One of the parts, which "|" separates, stands in a line of the log or the text of a box, or
  /// is the name of a form that was shown.
  bool told(const std::string& parts) {
    std::vector<std::string> told = log_;
    const std::vector<std::string> boxes = machine().desktop().boxTexts();
    told.insert(told.end(), boxes.begin(), boxes.end());
    const std::vector<std::string>& forms = machine().desktop().shownForms();
    told.insert(told.end(), forms.begin(), forms.end());
    std::istringstream text(parts);
    for (std::string part; std::getline(text, part, '|');) {
      if (std::any_of(told.begin(), told.end(), [&part](const std::string& line) {
            return line.find(part) != std::string::npos;
          })) {
        return true;
      }
    }
    return false;
  }

  bool copyIsNew() {
    return share().exists(kClientCopy) && share().text(kClientCopy) == "il nuovo";
  }
  bool isStamped() { return share().exists(kAmbver) && share().text(kAmbver) == kNewAmbver; }
  bool setupRan() {
    const std::vector<std::string> lines = machine().programs().startedCommandLines();
    return std::count(lines.begin(), lines.end(), kSetup) > 0;
  }
  bool isDelivered() {
    return share().exists(std::string("S:\\Lumo\\") + kTree + "luda.ini") &&
           share().exists(Installation::kCatalogue);
  }
  /// All that a start without failures does is done.
  bool isDone() {
    switch (kind_) {
      case InstallKind::Standalone:
        return setupRan() && !machine().folderExists("C:\\Users\\mario\\Temp\\prg");
      case InstallKind::Integrated:
        return copyIsNew() && isStamped() && isDelivered();
      default:
        return copyIsNew() && isStamped();
    }
  }

  /// Nothing of it is half, whatever happened.
  void expectNothingHalf() {
    if (share().exists(kClientCopy)) {
      EXPECT_TRUE(copyIsNew() || share().text(kClientCopy) == "il vecchio") << "client copy";
    }
    ASSERT_TRUE(share().exists(kAmbver));
    EXPECT_TRUE(isStamped() || share().text(kAmbver) == kOldAmbver) << share().text(kAmbver);
    EXPECT_TRUE(machine().fileExists(kPack));
    EXPECT_EQ(machine().fileText(kOwn), "il nuovo");
    if (!updatesItself(kind_)) {
      EXPECT_FALSE(copyIsNew());
      EXPECT_FALSE(isStamped());
      EXPECT_FALSE(isDelivered());
    }
  }
  void expectDeliveredWhole() {
    const std::string configuration = std::string("S:\\Lumo\\") + kTree + "luda.ini";
    if (share().exists(configuration)) {
      EXPECT_EQ(share().text(configuration), kConfigurationText);
    }
    if (share().exists(Installation::kCatalogue)) {
      EXPECT_EQ(share().text(Installation::kCatalogue), kCatalogueText);
    }
  }
  /// Temporaries of the self-update; the lock of nobody is among them.
  std::vector<std::string> temporaries() { return share().names(kTemporaries); }

 private:
  InstallKind kind_;
  Installation installation_;
  Station station_{installation_};
  PackPrograms packPrograms_{station_.machine()};
  std::shared_ptr<void> running_;
  std::vector<std::string> log_;
};

// --- One call fails

enum class Work { Done, NotDone, EitherWay };

struct Outcome {
  /// How the call's text begins.
  const char* call;
  /// Part of a log line or box; "|" separates what different calls of that beginning lead to. Null:
  /// told nowhere, or not by all of them.
  const char* told;
  Work work;
  /// Why it is right so, where that does not speak for itself.
  const char* reason = "";
};

/// Told in the error form only.
constexpr const char* kErrorForm = "frmError";
constexpr const char* kSelfUpdateFails = "Errore in aggiornamento TrelvManager ";

// The first row that fits counts.
const std::vector<Outcome> kOutcomes{
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
    {"processes.start \"C:\\Lumo\\Programmi\\qalbunex.exe", kErrorForm, Work::NotDone},
    {"processes.start \"C:\\Lumo\\Programmi\\7z.exe",
     "Errore in esecuzione comando: ", Work::NotDone},
    {"processes.wait", nullptr, Work::Done, "counts as a program that ran"},
    {"processes.exitCode", "Errore in esecuzione comando: ", Work::EitherWay,
     "the pack is kept; what it held is in the temporary folder, where a set-up finds it"},
    {"files.list C:\\Users\\mario\\Temp\\prg\\com\\setup\\aggdovra",
     "Errore in Apertura Pacco |Comando non eseguito: |Errore in installazione prodotto",
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
    {"files.look C:\\Users\\mario\\Temp\\prg\\com\\setup\\aggdovra", "Errore in Apertura Pacco ",
     Work::NotDone},
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
     "Errore in Apertura Pacco |Errore in installazione prodotto", Work::EitherWay},
    {"files.removeFile C:\\Users\\mario\\Temp\\prg\\",
     "Errore in Apertura Pacco |Errore in installazione prodotto", Work::EitherWay},
    {"files.removeFolder C:\\Users\\mario\\Temp\\prg",
     "Errore in Apertura Pacco |Errore in installazione prodotto", Work::EitherWay},
    // The self-update.
    {"system.computerName", nullptr, Work::Done, "the temporaries' names lack it"},
    {"files.look S:\\Lumo\\prg\\tempterm\\", nullptr, Work::Done, "leftovers count as missing"},
    {"files.look S:\\Lumo\\prg\\tempterm", "errore in creazione cartella: ", Work::Done},
    {"files.removeFile S:\\Lumo\\prg\\tempterm\\TrelvManager.old",
     "File temporaneo non rimosso: ", Work::Done},
    {"files.look S:\\Lumo\\prg\\com\\bin\\cpy\\client\\TrelvManager.exe", kSelfUpdateFails,
     Work::NotDone},
    {"files.look C:\\Lumo\\Programmi\\TrelvManager.exe", kSelfUpdateFails, Work::NotDone},
    {"files.copyFile C:\\Lumo\\Programmi\\TrelvManager.exe", kSelfUpdateFails, Work::NotDone},
    {"files.clearReadOnly S:\\Lumo\\prg\\tempterm\\", kSelfUpdateFails, Work::NotDone},
    {"files.replaceFile S:\\Lumo\\prg\\com\\bin\\cpy\\client\\TrelvManager.exe", kSelfUpdateFails,
     Work::NotDone},
    {"files.replaceFile S:\\Lumo\\prg\\tempterm\\TrelvManager-STAZIONE.tmp", nullptr,
     Work::EitherWay, "one that is refused is tried by putting the old one aside"},
    {"files.read S:\\Lumo\\prg\\etc\\ambver", kSelfUpdateFails, Work::NotDone},
    {"files.look C:\\Users\\mario\\Temp\\ambver", nullptr, Work::EitherWay,
     "an old scratch copy counts as missing and is overwritten"},
    {"files.write C:\\Users\\mario\\Temp\\ambver", kSelfUpdateFails, Work::NotDone},
    {"files.copyFile C:\\Users\\mario\\Temp\\ambver", kSelfUpdateFails, Work::NotDone},
    {"files.look S:\\Lumo\\prg\\etc\\ambver", kSelfUpdateFails, Work::NotDone},
    {"files.replaceFile S:\\Lumo\\prg\\tempterm\\ambver-STAZIONE.tmp", kSelfUpdateFails,
     Work::NotDone},
    {"desktop.messageBox", nullptr, Work::Done, "there is nobody to see it"}};

void expectOutcome(SweptInstall& install, const std::string& call) {
  const auto row = std::find_if(kOutcomes.begin(), kOutcomes.end(), [&call](const Outcome& known) {
    return call.compare(0, std::string(known.call).size(), known.call) == 0;
  });
  ASSERT_NE(row, kOutcomes.end()) << "nobody says what this failure leads to";
  EXPECT_TRUE(row->told == nullptr || install.told(row->told)) << "nobody told \"" << row->told;
  const bool done = install.isDone();
  EXPECT_TRUE(done || row->work != Work::Done) << "not done";
  EXPECT_TRUE(!done || row->work != Work::NotDone) << "done all the same";
  EXPECT_TRUE(done || install.told("rrore|non rilevat|non effettuata|Comando non eseguito|"
                                   "non trovata in registro|frmError"))
      << "not done, and nobody told it";
}

/// Gives the failed call's text; empty when there are fewer calls.
std::string failOnce(InstallKind kind, std::size_t number, std::size_t variant) {
  SweptInstall install(kind);
  sim::FailingMachine failing(install.machine(), number, sim::FailureSpan::Once, variant);
  install.run();
  if (!failing.reached()) {
    EXPECT_TRUE(install.isDone());
    return "";
  }
  const std::string& call = failing.failedCall();
  SCOPED_TRACE("call " + std::to_string(number) + ", variant " + std::to_string(variant) +
               " failed: " + call);
  expectOutcome(install, call);
  install.expectNothingHalf();
  install.expectDeliveredWhole();
  EXPECT_TRUE(install.share().exists(kClientCopy));
  for (const std::string& name : install.temporaries()) {
    EXPECT_EQ(name, "TrelvManager.old") << "left on the share";
    EXPECT_EQ(kind, InstallKind::SelfUpdateOfARunningCopy);
  }
  return call;
}

void failEachCall(InstallKind kind, std::size_t leastCalls) {
  constexpr std::size_t kVariants = 3;
  for (std::size_t variant = 0; variant < kVariants; ++variant) {
    std::size_t number = 1;
    while (!failOnce(kind, number, variant).empty()) {
      ++number;
    }
    EXPECT_GT(number, leastCalls);
  }
}

TEST(InstallCallFails, InASelfUpdate) { failEachCall(InstallKind::SelfUpdate, 25); }

TEST(InstallCallFails, InASelfUpdateOfARunningCopy) {
  failEachCall(InstallKind::SelfUpdateOfARunningCopy, 25);
}

TEST(InstallCallFails, InAnIntegratedInstallation) { failEachCall(InstallKind::Integrated, 60); }

TEST(InstallCallFails, InAStandaloneInstallation) { failEachCall(InstallKind::Standalone, 50); }

// --- Everything fails from some call on

void failFromEachCallOn(InstallKind kind, std::size_t leastCalls) {
  for (std::size_t number = 1;; ++number) {
    SweptInstall install(kind);
    bool reached = false;
    {
      sim::FailingMachine failing(install.machine(), number, sim::FailureSpan::FromThenOn, number);
      install.run();
      reached = failing.reached();
    }
    if (!reached) {
      EXPECT_GT(number, leastCalls);
      return;
    }
    SCOPED_TRACE("everything failed from call " + std::to_string(number) + " on");
    install.expectNothingHalf();
    install.expectDeliveredWhole();
  }
}

TEST(InstallFailsFromACallOn, InASelfUpdate) { failFromEachCallOn(InstallKind::SelfUpdate, 25); }

TEST(InstallFailsFromACallOn, InASelfUpdateOfARunningCopy) {
  failFromEachCallOn(InstallKind::SelfUpdateOfARunningCopy, 25);
}

TEST(InstallFailsFromACallOn, InAnIntegratedInstallation) {
  failFromEachCallOn(InstallKind::Integrated, 60);
}

TEST(InstallFailsFromACallOn, InAStandaloneInstallation) {
  failFromEachCallOn(InstallKind::Standalone, 50);
}

// --- The program is ended by force, and started again

bool dies(SweptInstall& install) {
  try {
    install.run();
  } catch (const sim::Killed&) {
    return true;
  }
  return false;
}

/// False when there are fewer calls.
bool killOnce(InstallKind kind, std::size_t number, sim::Unfinished left) {
  SweptInstall install(kind);
  std::string call;
  {
    const sim::KilledMachine kill(install.machine(), number, left);
    if (!dies(install)) {
      EXPECT_FALSE(kill.reached());
      return false;
    }
    call = kill.killedCall();
  }
  SCOPED_TRACE("ended in call " + std::to_string(number) + ": " + call);
  install.expectNothingHalf();
  // Between the two renames of a copy in use there is none.
  EXPECT_TRUE(install.share().exists(kClientCopy) || kind == InstallKind::SelfUpdateOfARunningCopy);
  install.endRunningCopy();
  if (install.lockWasLeft()) {
    // Kept: a lock is respected whoever left it. The start that met it deletes it with the tree.
    install.run();
    EXPECT_TRUE(install.told("presenza di una o più precedenti sessioni in corso"));
  }
  install.run();
  EXPECT_TRUE(install.isDone()) << "not done by the next start";
  install.expectNothingHalf();
  install.expectDeliveredWhole();
  EXPECT_EQ(install.temporaries(), std::vector<std::string>());
  return true;
}

void killInEachCall(InstallKind kind, std::size_t leastCalls) {
  for (const sim::Unfinished left :
       {sim::Unfinished::NotBegun, sim::Unfinished::Empty, sim::Unfinished::Half}) {
    std::size_t number = 1;
    while (killOnce(kind, number, left)) {
      ++number;
    }
    EXPECT_GT(number, leastCalls);
  }
}

TEST(InstallIsEndedByForce, InASelfUpdate) { killInEachCall(InstallKind::SelfUpdate, 25); }

TEST(InstallIsEndedByForce, InASelfUpdateOfARunningCopy) {
  killInEachCall(InstallKind::SelfUpdateOfARunningCopy, 25);
}

TEST(InstallIsEndedByForce, InAnIntegratedInstallation) {
  killInEachCall(InstallKind::Integrated, 60);
}

TEST(InstallIsEndedByForce, InAStandaloneInstallation) {
  killInEachCall(InstallKind::Standalone, 50);
}

}  // namespace
}  // namespace trelv::tests
