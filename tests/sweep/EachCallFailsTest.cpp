// A whole start, again and again: each time one more call of the machine fails. Whatever fails, the
// requested program starts, versions stay true, locks go and the log tells it, or it stands by name
// in one of the tables below.

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "sim/FailingMachine.h"
#include "sweep/SweptStart.h"

namespace trelv::tests {
namespace {

/// Where a failure is told to user or support.
enum class Told { InLog, InForm, Nowhere };

struct Telling {
  /// How the call's text begins.
  const char* call;
  Told told;
  /// Part of the log line; for failures that are told nowhere, why that is right.
  const char* text;
  /// A line that may stand in its place: the failure did no harm.
  const char* harmless = nullptr;
};

// The first row that fits counts.
const std::vector<Telling> kTellings{
    // The run log and start-up.
    {"files.append C:\\Users\\mario\\Temp\\log\\", Told::Nowhere, "a line that fails is lost"},
    {"files.look C:\\Users\\mario\\Temp\\log\\", Told::Nowhere, "an old log is kept then"},
    {"system.temporaryFolder", Told::Nowhere, "without it there is no log"},
    {"system.queryVersion", Told::Nowhere, "the edition's probes answer no"},
    {"system.isAdministrator", Told::InLog,
     "Errore in esecuzione verifica di diritti di amministratore, forzato IsAdmin=TRUE"},
    {"files.look S:\\Lumo\\prg\\com\\dovra\\plugin", Told::Nowhere, "the host is no Dovra then"},
    // Configuration store, suites.
    {"configuration.getConfigPath", Told::Nowhere, "these results count as an empty path"},
    {"configuration.getParameter", Told::InForm, ""},
    {"configuration.setParameter", Told::InForm, ""},
    {"registry.openKey", Told::Nowhere, "a key that cannot be opened is an ordinary answer"},
    {"profiles.readValue C:\\WINDOWS\\", Told::Nowhere, "ini reading answers its default"},
    // Preparation.
    {"system.systemWindowsFolder", Told::InLog, "Errore in lettura cartella di Windows: "},
    {"profiles.writeValue c:\\windows\\Lumow.ini", Told::InLog,
     "WritePrivateProfileString Byte scritti = 0"},
    {"registry.createKey", Told::InLog, "CreateKey SOFTWARE\\LUMO\\Programmi  False"},
    {"registry.writeValue", Told::InLog,
     "SetKeyValue SOFTWARE\\LUMO\\Programmi PathLocale   False"},
    {"files.look S:\\Lumo\\mv\\nerio\\nerio.exe", Told::Nowhere,
     "old components are looked for as if it were missing"},
    // Repairs of ini files.
    {"files.look S:\\Lumo\\mv\\LUDA2003", Told::Nowhere, "counts as missing until the next start"},
    {"files.look S:\\Lumo\\mv\\nerio\\nerio.ini", Told::Nowhere, "nothing is copied this time"},
    {"files.look c:\\windows\\nerio.ini", Told::InLog, "Gestione anomalia Nerio: "},
    // The walk.
    {"files.read S:\\Lumo\\prg\\etc\\dvrel", Told::InLog,
     "Errore in GestioneProdottiComplementari ("},
    {"files.read S:\\Lumo\\", Told::Nowhere, "the platform's functions are asked instead"},
    {"files.read C:\\Lumo\\Client\\", Told::Nowhere, "the platform's functions are asked instead"},
    {"files.look S:\\Lumo\\prg\\com\\setup\\aggdovra\\", Told::InLog,
     "Prodotto non rilevato, file di config non presente "},
    {"profiles.writeValue", Told::InLog, "Impossibile registrare la versione "},
    // Packs.
    {"files.list S:\\Lumo\\prg\\com\\setup\\aggdovra", Told::InLog, "Comando non eseguito:  ("},
    {"files.look C:\\Users\\mario\\Temp\\prg", Told::Nowhere,
     "what is unpacked stays till the next search"},
    // Locks and commands.
    {"files.look S:\\Lumo\\prg\\tempterm\\agdv.lck", Told::Nowhere, "counts as missing"},
    {"files.look C:\\Lumo\\Clientagdv.lck", Told::Nowhere, "counts as missing"},
    {"files.look S:\\Lumo\\prg", Told::InLog, "errore in creazione cartella: ",
     "Creazione path avvenuta correttamente:S:\\Lumo\\prg\\tempterm"},
    {"files.look C:\\Lumo", Told::InLog, "errore in creazione cartella: "},
    {"files.makeFolder", Told::InLog, "errore in creazione cartella: "},
    {"files.write S:\\Lumo\\prg\\tempterm\\agdv.lck", Told::InLog, "Comando non eseguito: "},
    {"files.write C:\\Lumo\\Clientagdv.lck", Told::InLog, "Comando non eseguito: "},
    {"files.removeFile", Told::InLog, "Errore in cancellazione file: "},
    {"processes.start S:\\Lumo\\prg\\", Told::InLog, "Esecuzione non effettuata di: "},
    {"processes.wait", Told::Nowhere, "the command counts as one that ran"},
    // The requested program.
    {"files.look S:\\Lumo\\mv\\", Told::InLog, "non è stato trovato su disco"},
    {"environment.set", Told::InLog, "Errore in settaggio variabili di ambiente Bilancio"},
    {"processes.start S:\\Lumo\\mv\\", Told::InForm, ""}};

/// A failing call after which something holds no longer, and why.
struct Exception {
  const char* call;
  const char* reason;
};

const std::vector<Exception> kProgramDoesNotStart{
    {"files.look S:\\Lumo\\mv\\zb\\mvbil.exe", "its own test"},
    {"processes.start S:\\Lumo\\mv\\zb\\mvbil.exe", "its own start"}};

const std::vector<Exception> kProgramIsNotInstalled{
    {"configuration.getConfigPath", "the integration is not recognised: nothing is installed"},
    {"configuration.getParameter", "the integration cannot be read: nothing is installed"},
    {"files.look S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb.ini", "no part of the installation"},
    {"files.list S:\\Lumo\\prg\\com\\setup\\aggdovra", "the search for packs ends the update"},
    {"files.look S:\\Lumo\\prg", "the lock's folder cannot be made: no command runs"},
    {"files.makeFolder", "the lock's folder cannot be made: no command runs"},
    {"files.write", "the lock cannot be taken: no command runs"},
    {"files.removeFile S:\\Lumo\\prg\\tempterm\\agdv.lck",
     "the lock that stayed stops the next product"},
    {"files.look S:\\Lumo\\prg\\tempterm\\agdv.lck", "the lock that stayed stops the next product"},
    {"files.removeFile C:\\Lumo\\Clientagdv.lck", "the lock that stayed stops the next product"},
    {"files.look C:\\Lumo\\Clientagdv.lck", "the lock that stayed stops the next product"},
    {"processes.start S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb\\server.exe", "its own set-up"}};

const std::vector<Exception> kLockStays{
    {"files.removeFile S:\\Lumo\\prg\\tempterm\\agdv.lck", "its removal is what failed"},
    {"files.removeFile C:\\Lumo\\Clientagdv.lck", "its removal is what failed"},
    {"files.look S:\\Lumo\\prg\\tempterm\\agdv.lck", "a lock that cannot be seen is not removed"},
    {"files.look C:\\Lumo\\Clientagdv.lck", "a lock that cannot be seen is not removed"}};

bool begins(const std::string& text, const std::string& beginning) {
  return text.compare(0, beginning.size(), beginning) == 0;
}

bool listed(const std::vector<Exception>& table, const std::string& call) {
  return std::any_of(table.begin(), table.end(),
                     [&call](const Exception& row) { return begins(call, row.call); });
}

void expectTold(SweptStart& start, const std::string& call) {
  const auto row = std::find_if(kTellings.begin(), kTellings.end(),
                                [&call](const Telling& known) { return begins(call, known.call); });
  ASSERT_NE(row, kTellings.end()) << "nobody says where this failure is told";
  if (row->told == Told::InLog) {
    EXPECT_TRUE(start.logHas(row->text) ||
                (row->harmless != nullptr && start.logHas(row->harmless)))
        << "no line with \"" << row->text << "\"";
  } else if (row->told == Told::InForm) {
    EXPECT_TRUE(start.formWasShown()) << "no form was shown";
  }
}

void expectStarted(SweptStart& start, const std::string& call) {
  if (!start.programIsOnDisk()) {
    EXPECT_TRUE(listed(kProgramIsNotInstalled, call)) << "the program was not installed";
    EXPECT_TRUE(start.logHas("non è stato trovato su disco")) << "nobody told it";
    return;
  }
  EXPECT_TRUE(start.programWasStarted() || listed(kProgramDoesNotStart, call))
      << "the program was not started";
}

void expectSound(SweptStart& start, const std::string& call) {
  expectStarted(start, call);
  for (const std::string& damage : start.damage()) {
    ADD_FAILURE() << damage;
  }
  for (const std::string& lock : start.locksLeft()) {
    EXPECT_TRUE(listed(kLockStays, call)) << "left behind: " << lock;
  }
}

/// Fails call number `number` and gives its text; empty when the start has fewer calls.
std::string sweepOnce(StartKind kind, std::size_t number, std::size_t variant) {
  SweptStart start(kind);
  sim::FailingMachine failing(start.machine(), number, sim::FailureSpan::Once, variant);
  start.run();
  if (!failing.reached()) {
    return "";
  }
  const std::string& call = failing.failedCall();
  SCOPED_TRACE("call " + std::to_string(number) + ", variant " + std::to_string(variant) +
               " failed: " + call);
  expectTold(start, call);
  expectSound(start, call);
  return call;
}

/// Can such a call fail in more than one way that matters?
bool hasVariants(const std::string& call) {
  return (begins(call, "files.") && !begins(call, "files.append ")) ||
         begins(call, "processes.start ") || begins(call, "configuration.");
}

void sweep(StartKind kind) {
  constexpr std::size_t kVariants = 3;
  std::vector<std::size_t> furtherWays;
  std::size_t number = 1;
  for (std::string call; !(call = sweepOnce(kind, number, 0)).empty(); ++number) {
    if (hasVariants(call)) {
      furtherWays.push_back(number);
    }
  }
  // A start of that many calls at least: the sweep did not end at once.
  EXPECT_GT(number, 80U);
  EXPECT_GT(furtherWays.size(), 40U);
  for (const std::size_t again : furtherWays) {
    for (std::size_t variant = 1; variant < kVariants; ++variant) {
      sweepOnce(kind, again, variant);
    }
  }
}

TEST(EachCallFailsOnce, InAStartThatFindsNothingToDo) { sweep(StartKind::NothingToDo); }

TEST(EachCallFailsOnce, InAFirstInstallation) { sweep(StartKind::FirstInstallation); }

TEST(EachCallFailsOnce, InAnUpdate) { sweep(StartKind::Update); }

TEST(EachCallFailsOnce, InAStartByAUserWithoutRights) {
  sweep(StartKind::NothingToDoWithoutRights);
}

// --- The share vanishes before a call and stays away until the program has ended

/// False when the start has fewer calls.
bool vanishOnce(StartKind kind, std::size_t number) {
  SweptStart start(kind);
  bool vanished = false;
  start.machine().callLog().clear();
  start.machine().onCall(number, [&] {
    vanished = true;
    start.installation().share().disconnect(number % 2 == 0 ? system_code::kBadNetPath
                                                            : system_code::kNetNameDeleted);
  });
  start.run();
  start.installation().share().reconnect();
  if (!vanished) {
    return false;
  }
  SCOPED_TRACE("the share vanished before call " + std::to_string(number));
  EXPECT_TRUE(start.programWasStarted() || start.logHas("non è stato trovato su disco") ||
              start.logHas("Non è stato rilevato alcun programma per il prodotto: ZB") ||
              start.formWasShown())
      << "the program was not started and nobody told it";
  for (const std::string& damage : start.damage()) {
    ADD_FAILURE() << damage;
  }
  for (const std::string& lock : start.locksLeft()) {
    // The server's lock lies on the share that is gone: nobody can remove it.
    EXPECT_EQ(lock, Installation::kServerLock);
  }
  return true;
}

void vanishBeforeEachCall(StartKind kind) {
  std::size_t number = 1;
  while (vanishOnce(kind, number)) {
    ++number;
  }
  EXPECT_GT(number, 80U);
}

TEST(ShareVanishes, BeforeEachCallOfAStartThatFindsNothingToDo) {
  vanishBeforeEachCall(StartKind::NothingToDo);
}

TEST(ShareVanishes, BeforeEachCallOfAFirstInstallation) {
  vanishBeforeEachCall(StartKind::FirstInstallation);
}

TEST(ShareVanishes, BeforeEachCallOfAnUpdate) { vanishBeforeEachCall(StartKind::Update); }

// --- Everything fails from some call on: the program ends, and records stay true

void failFromEachCallOn(StartKind kind) {
  for (std::size_t number = 1;; ++number) {
    SweptStart start(kind);
    {
      sim::FailingMachine failing(start.machine(), number, sim::FailureSpan::FromThenOn, number);
      start.run();
      if (!failing.reached()) {
        EXPECT_GT(number, 80U);
        return;
      }
    }
    SCOPED_TRACE("everything failed from call " + std::to_string(number) + " on");
    for (const std::string& damage : start.damage()) {
      ADD_FAILURE() << damage;
    }
  }
}

TEST(EverythingFailsFromACallOn, InAStartThatFindsNothingToDo) {
  failFromEachCallOn(StartKind::NothingToDo);
}

TEST(EverythingFailsFromACallOn, InAFirstInstallation) {
  failFromEachCallOn(StartKind::FirstInstallation);
}

}  // namespace
}  // namespace trelv::tests
