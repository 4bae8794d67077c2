// A whole start, again and again: each time one more call of the machine fails, or everything from
// it on, or the share vanishes there. Whatever fails, the requested program starts, versions stay
// true, locks go and the log tells it, or it stands by name in the table below or beside the
// invariant (prove/Invariants).

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "base/Text.h"
#include "prove/Invariants.h"
#include "support/Installation.h"
#include "support/RealProgram.h"
#include "sweep/ExpectSwept.h"

namespace trelv::tests {
namespace {

constexpr const char* kErrorForm = "frmError";
constexpr const char* kNotOnDisk = "non è stato trovato su disco";

/// Where a failure is told.
struct Telling {
  const char* call;
  /// Part of a log line, or a form; "|" separates what may stand in its place. Null: nowhere.
  const char* told;
  /// Why that is right, where it does not speak for itself.
  const char* reason = "";
  Trouble in = Trouble::FailsOnce;
};

const CallTable<Telling> kTellings{
    // The run log and start-up.
    {"files.append C:\\Users\\mario\\Temp\\log\\", nullptr, "a line that fails is lost"},
    {"files.look C:\\Users\\mario\\Temp\\log\\", nullptr, "an old log is kept then"},
    {"system.temporaryFolder", nullptr, "without it there is no log"},
    {"system.queryVersion", nullptr, "the edition's probes answer no"},
    {"system.isAdministrator",
     "Errore in esecuzione verifica di diritti di amministratore, forzato IsAdmin=TRUE"},
    {"files.look S:\\Lumo\\prg\\com\\dovra\\plugin", nullptr, "the host is no Dovra then"},
    // Configuration store, suites.
    {"configuration.getConfigPath", nullptr, "these results count as an empty path"},
    {"configuration.getParameter", kErrorForm},
    {"configuration.setParameter", kErrorForm},
    {"registry.openKey", nullptr, "a key that cannot be opened is an ordinary answer"},
    {"profiles.readValue C:\\WINDOWS\\", nullptr, "ini reading answers its default"},
    // Preparation.
    {"system.systemWindowsFolder", "Errore in lettura cartella di Windows: "},
    {"profiles.writeValue c:\\windows\\Lumow.ini", "WritePrivateProfileString Byte scritti = 0"},
    {"registry.createKey", "CreateKey SOFTWARE\\LUMO\\Programmi  False"},
    {"registry.writeValue", "SetKeyValue SOFTWARE\\LUMO\\Programmi PathLocale   False"},
    {"files.look S:\\Lumo\\mv\\nerio\\nerio.exe", nullptr,
     "old components are looked for as if it were missing"},
    // Repairs of ini files.
    {"files.look S:\\Lumo\\mv\\LUDA2003", nullptr, "counts as missing until the next start"},
    {"files.look S:\\Lumo\\mv\\nerio\\nerio.ini", nullptr, "nothing is copied this time"},
    {"files.look c:\\windows\\nerio.ini", "Gestione anomalia Nerio: "},
    // The walk.
    {"files.read S:\\Lumo\\prg\\etc\\dvrel", "Errore in GestioneProdottiComplementari ("},
    {"files.read S:\\Lumo\\", nullptr, "the platform's functions are asked instead"},
    {"files.read C:\\Lumo\\Client\\", nullptr, "the platform's functions are asked instead"},
    {"files.read C:\\Lumo\\Programmi\\TrelvManager.ini", nullptr,
     "the platform's functions are asked instead"},
    {"files.look S:\\Lumo\\prg\\com\\setup\\aggdovra\\",
     "Prodotto non rilevato, file di config non presente "},
    {"profiles.writeValue", "Impossibile registrare la versione "},
    // Packs.
    {"files.list S:\\Lumo\\prg\\com\\setup\\aggdovra", "Comando non eseguito:  ("},
    {"files.look C:\\Users\\mario\\Temp\\prg", nullptr,
     "what is unpacked stays till the next search"},
    // Locks and commands.
    {"files.look S:\\Lumo\\prg\\tempterm\\agdv.lck", nullptr, "counts as missing"},
    {"files.look C:\\Lumo\\Clientagdv.lck", nullptr, "counts as missing"},
    {"files.look S:\\Lumo\\prg",
     "errore in creazione cartella: |"
     "Creazione path avvenuta correttamente:S:\\Lumo\\prg\\tempterm",
     "where the failure did no harm the folder is there"},
    {"files.look C:\\Lumo", "errore in creazione cartella: "},
    {"files.makeFolder", "errore in creazione cartella: "},
    {"files.write S:\\Lumo\\prg\\tempterm\\agdv.lck", "Comando non eseguito: "},
    {"files.write C:\\Lumo\\Clientagdv.lck", "Comando non eseguito: "},
    {"files.removeFile", "Errore in cancellazione file: "},
    {"processes.start S:\\Lumo\\prg\\", "Esecuzione non effettuata di: "},
    {"processes.wait", nullptr, "the command counts as one that ran"},
    // The requested program.
    {"files.look S:\\Lumo\\mv\\", "non è stato trovato su disco"},
    {"environment.set", "Errore in settaggio variabili di ambiente Bilancio"},
    {"processes.start S:\\Lumo\\mv\\", kErrorForm}};

/// Which start is swept.
enum class StartKind {
  /// All five products at their versions.
  NothingToDo,
  /// No record, no integration: all set-ups run.
  FirstInstallation,
  /// Bilancio is behind on both sides.
  Update,
  /// As NothingToDo, by a user who is no administrator.
  NothingToDoWithoutRights
};

constexpr const char* kProgram = "S:\\Lumo\\mv\\zb\\mvbil.exe";
/// A section of no product: whatever happens, it stays in both records.
constexpr const char* kForeign = "[KXK]\r\nversion=01.02.03.04\r\n";

const std::map<std::string, std::string> kDelivered{{"NERIO", "03.20.30.00"},
                                                    {"LUDA", "07.10.00.00"},
                                                    {"ZB", "09.93.00.00"},
                                                    {"Q2", "02.92.00.00"},
                                                    {"ZM", "06.50.30.00"}};

/// Version of a product in both records before the start.
std::string versionBefore(StartKind kind, const std::string& id) {
  if (kind == StartKind::FirstInstallation) {
    return "";
  }
  return kind == StartKind::Update && id == "ZB" ? "09.90.00.00" : kDelivered.at(id);
}

/// A workstation on which Bilancio's program is started.
class SweptStart : public SweptWorld {
 public:
  explicit SweptStart(StartKind kind);

  sim::SimMachine& machine() override { return station_.machine(); }
  sim::SimDisk& share() override { return installation_.share(); }
  void run() override;
  void judge(const Fault& fault, Findings& findings) override;

 private:
  bool told(const std::string& parts) { return tellsOneOf(told_, parts); }
  bool programWasStarted();
  void expectTold(Judge& judge);
  void expectStarted(Judge& judge);
  void expectVersionsTrue(const char* record, const std::string& side, Judge& judge);
  bool commandWasStarted(const std::string& id, const std::string& side);

  const StartKind kind_;
  Installation installation_;
  Station station_{installation_};
  /// Log lines and names of forms.
  std::vector<std::string> told_;
};

SweptStart::SweptStart(StartKind kind) : kind_(kind) {
  putFiveProducts(installation_);
  share().makeFolders("S:\\Lumo\\prg\\com\\dovra\\plugin");
  share().put("S:\\Lumo\\prg\\etc\\dvrel", "11.20.00\r\n");
  std::string record = kForeign;
  for (const auto& [id, version] : kDelivered) {
    const std::string before = versionBefore(kind, id);
    record += before.empty() ? "" : "[" + id + "]\r\nversion=" + before + "\r\n";
  }
  installation_.putServerRecord(record);
  station_.putClientRecord(record);
  if (kind == StartKind::FirstInstallation) {
    station_.forgetIntegration();
    share().removeTree("S:\\Lumo\\prg\\tempterm");
  } else {
    share().putProgram(kProgram);
  }
  machine().system().setAdministrator(kind != StartKind::NothingToDoWithoutRights);
}

void SweptStart::run() {
  RealProgram program(machine());
  program.run("INTEGRATEDRUN S:\\Lumo S:\\Lumo MVBIL");
  told_ = program.logLines();
  const std::vector<std::string>& forms = machine().desktop().shownForms();
  told_.insert(told_.end(), forms.begin(), forms.end());
}

bool SweptStart::programWasStarted() {
  const std::vector<std::string> lines = station_.commandLines();
  return std::count(lines.begin(), lines.end(), std::string(kProgram) + " ") == 1;
}

bool SweptStart::commandWasStarted(const std::string& id, const std::string& side) {
  const std::string folder = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\" + lowerCase(id) + "\\";
  const std::vector<std::string> lines = station_.commandLines();
  const auto ran = [&](const char* name) -> bool {
    return std::count(lines.begin(), lines.end(), folder + name + ".exe -S") > 0;
  };
  return side == "Server" ? ran("server") || ran("update") : ran("client") || ran("updatecl");
}

void SweptStart::judge(const Fault& fault, Findings& findings) {
  Judge judge(fault, findings, exceptionsOfTheStart);
  expectVersionsTrue(Installation::kServerRecord, "Server", judge);
  expectVersionsTrue(Station::kClientRecord, "Client", judge);
  switch (fault.trouble) {
    case Trouble::FailsFromThenOn:
      return;
    case Trouble::ShareVanishes:
      judge.demand(
          Invariant::FailureTold,
          programWasStarted() || told(std::string(kErrorForm) + "|" + kNotOnDisk +
                                      "|Non è stato rilevato alcun programma per il prodotto: ZB"),
          "the program was not started and nobody told it");
      // The server's lock lies on the share that is gone: nobody can remove it.
      judge.demand(Invariant::LocksGo, !machine().fileExists(Station::kClientLock),
                   "the client's lock stayed");
      return;
    default:
      expectTold(judge);
      expectStarted(judge);
      judge.locksGone({}, pictureOf(machine(), {"C:", "S:"}));
  }
}

void SweptStart::expectTold(Judge& judge) {
  const Telling* const row = kTellings.of(judge.fault());
  judge.demand(Invariant::FailureTold, row != nullptr || judge.fault().trouble == Trouble::None,
               "nobody says where this failure is told");
  if (row != nullptr && row->told != nullptr) {
    judge.demand(Invariant::FailureTold, told(row->told),
                 std::string("nobody told \"") + row->told + "\"");
  }
}

void SweptStart::expectStarted(Judge& judge) {
  if (share().fileExists(kProgram)) {
    judge.demand(Invariant::ProgramStarts, programWasStarted(), "the program was not started");
  } else {
    judge.demand(Invariant::ProgramInstalled, false, "the program was not installed");
    judge.demand(Invariant::FailureTold, told(kNotOnDisk), "nobody told that it is not installed");
  }
}

void SweptStart::expectVersionsTrue(const char* record, const std::string& side, Judge& judge) {
  Versions before;
  Versions found;
  for (const auto& [id, delivered] : kDelivered) {
    before[id] = versionBefore(kind_, id);
    found[id] = machine().iniValue(record, id, "version");
  }
  judge.versionsTrue(
      side, before, found, [&](const std::string& id, const std::string& version) -> Origin {
        return version == kDelivered.at(id) && commandWasStarted(id, side) ? Origin::Command
                                                                           : Origin::Nowhere;
      });
  judge.demand(Invariant::OthersSurvive,
               machine().iniValue(record, "KXK", "version") == "01.02.03.04",
               side + " record lost another section");
}

// The least number of calls says that a sweep did not end at once.

TEST(StartSweep, AFailureIsToldAndTheProgramStartsAllTheSame) {
  for (const StartKind kind : {StartKind::NothingToDo, StartKind::FirstInstallation,
                               StartKind::Update, StartKind::NothingToDoWithoutRights}) {
    expectSwept<SweptStart>({Trouble::FailsOnce}, 80, kind);
  }
  expectEachRowMatched(kTellings);
  expectEachRowMatched(exceptionsOfTheStart(Invariant::ProgramStarts));
  expectEachRowMatched(exceptionsOfTheStart(Invariant::ProgramInstalled));
  expectEachRowMatched(exceptionsOfTheStart(Invariant::LocksGo));
}

TEST(StartSweep, AShareThatVanishesIsToldAndDamagesNothing) {
  for (const StartKind kind :
       {StartKind::NothingToDo, StartKind::FirstInstallation, StartKind::Update}) {
    expectSwept<SweptStart>({Trouble::ShareVanishes}, 80, kind);
  }
}

TEST(StartSweep, AMachineOnWhichEverythingFailsKeepsItsRecords) {
  for (const StartKind kind : {StartKind::NothingToDo, StartKind::FirstInstallation}) {
    expectSwept<SweptStart>({Trouble::FailsFromThenOn}, 80, kind);
  }
}

}  // namespace
}  // namespace trelv::tests
