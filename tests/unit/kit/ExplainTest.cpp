// Every cause, planted on a host on which the real program then starts; the log and the host that
// it leaves are all that explains.

#include <array>
#include <atomic>
#include <functional>
#include <map>
#include <random>
#include <set>

#include "base/Text.h"
#include "support/Cores.h"
#include "support/kit/PlantedHost.h"
#include "support/kit/ZipPacks.h"

using testing::HasSubstr;
using testing::IsEmpty;

namespace trelv::tests {
namespace {

/// Plants something for a product and starts the program.
using Plant = std::function<void(PlantedHost&, const std::string& id)>;

/// One thing that can be wrong, what has to be named, and what the evidence has to say.
struct Planting {
  const char* name;
  const char* cause;
  /// Part of the evidence's text, or of its file where it has no text.
  const char* evidence;
  Plant plant;
};

std::string pathOf(const std::string& id) { return PlantedHost::configurationOf(id); }

/// The product behind another one in the catalogue.
std::string otherThan(const std::string& id) { return id == "NERIO" ? "ZM" : "NERIO"; }

/// A store that answers every question and keeps nothing.
class ForgetfulStore : public sim::SimConfigurationLibrary {
 public:
  std::int32_t setParameter(const std::string& /*product*/, const std::string& /*section*/,
                            const std::string& /*key*/, const std::string& /*attribute*/,
                            std::int32_t /*type*/, const std::string& /*value*/) override {
    return 0;
  }
};

/// A store into which another session writes the record between two questions.
class StoreOfTwoSessions : public sim::SimConfigurationLibrary {
 public:
  std::int32_t getParameter(const std::string& product, const std::string& section,
                            const std::string& key, const std::string& attribute,
                            const std::string& defaultValue, std::int32_t size,
                            std::string& buffer) override {
    const std::int32_t code = SimConfigurationLibrary::getParameter(
        product, section, key, attribute, defaultValue, size, buffer);
    put("SYSTEM", "Complementary_Products", "Integration", "Path", "S:\\Lumo");
    return code;
  }
};

/// A store whose file is not well-formed.
class BrokenStore : public sim::SimConfigurationLibrary {
 public:
  std::int32_t getParameter(const std::string& /*product*/, const std::string& /*section*/,
                            const std::string& /*key*/, const std::string& /*attribute*/,
                            const std::string& /*defaultValue*/, std::int32_t /*size*/,
                            std::string& /*buffer*/) override {
    return -3000;
  }
};

Section updateTo(const std::string& version, std::vector<std::string> server,
                 std::vector<std::string> client) {
  return {"Update02", version, std::move(server), std::move(client)};
}

const Section kOldUpdate{
    "Update01", PlantedHost::kOld, {"S:\\Lumo\\server.exe"}, {"S:\\Lumo\\client.exe"}};

const std::vector<Planting> kPlantings{
    {"NothingToDo", "up-to-date", "minore o uguale",
     [](PlantedHost& h, const std::string& id) -> void { h.startFor(id); }},
    {"UpdatedByThisStart", "up-to-date", "Lato Client",
     [](PlantedHost& h, const std::string& id) -> void {
       h.record(id, PlantedHost::kOld);
       h.startFor(id);
     }},
    {"InstalledByThisStart", "up-to-date", "Tipo=Setup - Oggetto=Client",
     [](PlantedHost& h, const std::string& id) -> void {
       h.record(id, "");
       h.startFor(id);
     }},
    {"SecondStartAfterALockIsFine", "up-to-date", "Lato Client",
     [](PlantedHost& h, const std::string& id) -> void {
       h.putFirst(id);
       h.record(id, PlantedHost::kOld);
       h.putLock(Side::Server);
       h.startFor(id);
       h.share().removeTree(Installation::kServerLock);
       h.startFor(id);
     }},
    {"LockOfTheServer", "lock", "altre sessioni: Tipo=Update - Oggetto=Server",
     [](PlantedHost& h, const std::string& id) -> void {
       h.putFirst(id);
       h.record(id, PlantedHost::kOld);
       h.putLock(Side::Server);
       h.startFor(id);
     }},
    {"LockOfTheWorkstation", "lock", "altre sessioni: Tipo=Setup - Oggetto=Client",
     [](PlantedHost& h, const std::string& id) -> void {
       h.putFirst(id);
       h.record(id, "", Side::Client);
       h.putLock(Side::Client);
       h.startFor(id);
     }},
    {"LockThatIsHeldOpen", "lock", "altre sessioni: Tipo=Update - Oggetto=Server",
     [](PlantedHost& h, const std::string& id) -> void {
       h.record(id, PlantedHost::kOld);
       h.putLock(Side::Server);
       h.share().holdOpen(Installation::kServerLock, sim::Sharing::Read);
       h.startFor(id);
     }},
    {"FolderInPlaceOfTheLock", "lock", "agdv.lck",
     [](PlantedHost& h, const std::string& id) -> void {
       h.record(id, PlantedHost::kOld);
       h.share().makeFolders(Installation::kServerLock);
       h.startFor(id);
     }},
    {"LockMetByAnotherProduct", "run-stopped-earlier", "altre sessioni",
     [](PlantedHost& h, const std::string& id) -> void {
       const std::string other = otherThan(id);
       h.putFirst(other);
       h.record(other, PlantedHost::kOld);
       h.record(id, PlantedHost::kOld);
       h.putLock(Side::Server);
       h.startFor(id);
     }},
    {"LockOfTheWorkstationMetByAnotherProduct", "run-stopped-earlier", "Oggetto=Client",
     [](PlantedHost& h, const std::string& id) -> void {
       const std::string other = otherThan(id);
       h.putFirst(other);
       h.record(other, PlantedHost::kOld, Side::Client);
       h.putLock(Side::Client);
       h.startFor(id);
     }},
    {"OtherServer", "other-server", "su altro server",
     [](PlantedHost& h, const std::string& id) -> void {
       h.machine().configuration().put("SYSTEM", "Complementary_Products", "Integration", "Path",
                                       "T:\\Altro");
       h.record(id, PlantedHost::kOld);
       h.startFor(id);
     }},
    {"TrailingBackslashIsAnotherServer", "other-server", "su altro server",
     [](PlantedHost& h, const std::string& id) -> void {
       h.machine().configuration().put("SYSTEM", "Complementary_Products", "Integration", "Path",
                                       "S:\\Lumo\\");
       h.startFor(id);
     }},
    {"RecordWrittenEmpty", "other-server", "su altro server",
     [](PlantedHost& h, const std::string& id) -> void {
       h.machine().configuration().put("SYSTEM", "Complementary_Products", "Integration", "Path",
                                       "");
       h.startFor(id);
     }},
    {"Ferax", "suite", "SuiteFerax rilevata",
     [](PlantedHost& h, const std::string& id) -> void {
       h.machine().registry().setText(machine::Hive::LocalMachine, "Software\\FerPrg", "sistema",
                                      "0");
       h.startFor(id);
     }},
    {"Travolin", "suite", "SuiteTravolin rilevata",
     [](PlantedHost& h, const std::string& id) -> void {
       h.machine().diskOf("C:\\").makeFolders("C:\\Travolin");
       h.machine().setIniValue("travolin.ini", "Parametri", "PathPelan", "C:\\Travolin");
       h.startFor(id);
     }},
    {"ProductOnItsOwn", "standalone-product", "Rilevato almeno un prodotto",
     [](PlantedHost& h, const std::string& id) -> void {
       h.machine().configuration().setConfigPath("");
       h.machine().setIniValue("nerio.ini", "Pathnames", "Homedir", "C:\\Nerio");
       h.startFor(id);
     }},
    {"TwoProductsOnTheirOwnWhereTheRecordIsNotKept", "standalone-product", "Rilevato almeno",
     [](PlantedHost& h, const std::string& id) -> void {
       h.useStore(std::make_unique<ForgetfulStore>());
       h.machine().setIniValue("nerio.ini", "Pathnames", "Homedir", "C:\\Nerio");
       h.machine().setIniValue("luda.ini", "PathNames", "HomeDir", "C:\\Luda");
       h.startFor(id);
     }},
    {"StoreWithoutItsPointer", "no-store", "Suite Lumo non trovata in registro: Errore",
     [](PlantedHost& h, const std::string& id) -> void {
       h.machine().configuration().answerAlways(-4002);
       h.startFor(id);
     }},
    {"StoreLostOnAnIntegratedWorkstation", "no-store", "Suite Lumo non trovata in registro: Errore",
     [](PlantedHost& h, const std::string& id) -> void {
       h.machine().setIniValue("luda.ini", "PathNames", "HomeDir", "S:\\Lumo\\mv\\luda2003");
       h.machine().configuration().answerAlways(-4012);
       h.startFor(id);
     }},
    {"StoreThatIsNotWellFormed", "no-store", "su altro server",
     [](PlantedHost& h, const std::string& id) -> void {
       h.useStore(std::make_unique<BrokenStore>());
       h.startFor(id);
     }},
    {"RecordOfAnotherSessionMeanwhile", "no-store", "Impossibile aggiornare IntegrazioneSuMacchina",
     [](PlantedHost& h, const std::string& id) -> void {
       h.useStore(std::make_unique<StoreOfTwoSessions>());
       h.startFor(id);
     }},
    {"NoAdministrator", "no-rights", "utente non amministratore",
     [](PlantedHost& h, const std::string& id) -> void {
       h.machine().system().setAdministrator(false);
       h.record(id, PlantedHost::kOld);
       h.startFor(id);
     }},
    {"NoAdministratorOnTheWorkstation", "no-rights", "utente non amministratore",
     [](PlantedHost& h, const std::string& id) -> void {
       h.machine().system().setAdministrator(false);
       h.record(id, "", Side::Client);
       h.startFor(id);
     }},
    {"NoRightToWriteTheLock", "no-rights", "agdv.lck",
     [](PlantedHost& h, const std::string& id) -> void {
       h.record(id, PlantedHost::kOld);
       h.share().denyWriting("S:\\Lumo\\prg\\tempterm");
       h.startFor(id);
     }},
    {"GapBeforeTheProduct", "catalogue-gap", "[prod",
     [](PlantedHost& h, const std::string& id) -> void {
       h.order.insert(std::find(h.order.begin(), h.order.end(), id), "");
       h.putCatalogue();
       h.startFor(id);
     }},
    {"GapTwoBeforeTheProduct", "catalogue-gap", "[prod02]",
     [](PlantedHost& h, const std::string& id) -> void {
       h.putFirst(id);
       h.order.insert(h.order.begin(), {"", otherThan(id)});
       h.order.erase(h.order.begin() + 3, h.order.end());
       h.putCatalogue();
       h.startFor(id);
     }},
    {"NotInTheCatalogue", "not-in-catalogue", "agdvcomp.ini",
     [](PlantedHost& h, const std::string& id) -> void {
       h.order.erase(std::find(h.order.begin(), h.order.end(), id));
       h.putCatalogue();
       h.startFor(id);
     }},
    {"NoCatalogue", "not-in-catalogue", "agdvcomp.ini",
     [](PlantedHost& h, const std::string& id) -> void {
       h.share().removeTree(Installation::kCatalogue);
       h.startFor(id);
     }},
    {"NoConfigurationFile", "no-configuration", "file di config non presente S:\\Lumo\\prg",
     [](PlantedHost& h, const std::string& id) -> void {
       h.share().removeTree(pathOf(id));
       h.startFor(id);
     }},
    {"ConfigurationFileElsewhere", "no-configuration", "file di config non presente",
     [](PlantedHost& h, const std::string& id) -> void {
       h.machine().setIniValue(
           Installation::kCatalogue,
           "prod0" +
               std::to_string(std::find(h.order.begin(), h.order.end(), id) - h.order.begin() + 1),
           "conf", "prg\\altrove.ini");
       h.startFor(id);
     }},
    {"SectionWithoutVersion", "no-version", "[Update02]",
     [](PlantedHost& h, const std::string& id) -> void {
       h.configure(id, {kOldUpdate, updateTo("", {"S:\\Lumo\\server.exe"}, {})});
       h.record(id, PlantedHost::kOld);
       h.startFor(id);
     }},
    {"SetUpWithoutVersion", "no-version", "[Setup01]",
     [](PlantedHost& h, const std::string& id) -> void {
       h.configure(id, {{"Setup01", "", {"S:\\Lumo\\server.exe"}, {"S:\\Lumo\\client.exe"}}});
       h.record(id, "");
       h.startFor(id);
     }},
    {"RecordAboveEverySection", "version-not-higher", "03.00.00.00",
     [](PlantedHost& h, const std::string& id) -> void {
       h.record(id, "03.00.00.00");
       h.startFor(id);
     }},
    {"RecordOfTheWorkstationAbove", "version-not-higher", "Lato Client la versione: 02.00.00.00",
     [](PlantedHost& h, const std::string& id) -> void {
       h.record(id, "02.00.00.01", Side::Client);
       h.startFor(id);
     }},
    {"FieldsTooFew", "field-count", "la versione: 03.00 è minore",
     [](PlantedHost& h, const std::string& id) -> void {
       h.configure(id, {kOldUpdate, updateTo("03.00", {"S:\\Lumo\\server.exe"}, {})});
       h.record(id, PlantedHost::kOld);
       h.startFor(id);
     }},
    {"DigitsTooFew", "field-count", "la versione: 1.1.0.0 è minore",
     [](PlantedHost& h, const std::string& id) -> void {
       h.configure(id, {kOldUpdate, updateTo("1.1.0.0", {}, {"S:\\Lumo\\client.exe"})});
       h.record(id, PlantedHost::kOld);
       h.startFor(id);
     }},
    {"CommandWhoseProgramIsMissing", "command-not-started", "manca.exe",
     [](PlantedHost& h, const std::string& id) -> void {
       h.configure(id, {updateTo(PlantedHost::kNow, {"S:\\Lumo\\manca.exe"}, {})});
       h.record(id, PlantedHost::kOld);
       h.startFor(id);
     }},
    {"CommandThatWindowsRefuses", "command-not-started", "(740",
     [](PlantedHost& h, const std::string& id) -> void {
       h.machine().programs().failStart("S:\\Lumo\\client.exe", system_code::kElevationRequired);
       h.record(id, PlantedHost::kOld);
       h.startFor(id);
     }},
    {"ProgramThatWindowsRefuses", "command-not-started", "(193",
     [](PlantedHost& h, const std::string& id) -> void {
       h.machine().programs().failStart(PlantedHost::product(id).path, system_code::kBadExeFormat);
       h.startFor(id);
     }},
    {"CommandsBeginAtTwo", "command-gap", "Server02=",
     [](PlantedHost& h, const std::string& id) -> void {
       h.share().put(pathOf(id),
                     "[Update01]\r\nversion=02.00.00.00\r\nServer02=S:\\Lumo\\server.exe\r\n");
       h.record(id, PlantedHost::kOld);
       h.startFor(id);
     }},
    {"CommandBehindAGap", "command-gap", "Client03=",
     [](PlantedHost& h, const std::string& id) -> void {
       h.share().put(pathOf(id),
                     "[Update01]\r\nversion=02.00.00.00\r\nServer01=S:\\Lumo\\server.exe\r\n"
                     "Client01=S:\\Lumo\\client.exe\r\nClient03=S:\\Lumo\\altro.exe\r\n");
       h.record(id, PlantedHost::kOld);
       h.startFor(id);
     }},
    {"SecondCommandOfTheServer", "second-command", "Server02=",
     [](PlantedHost& h, const std::string& id) -> void {
       h.configure(
           id, {updateTo(PlantedHost::kNow, {"S:\\Lumo\\server.exe", "S:\\Lumo\\client.exe"}, {})});
       h.record(id, PlantedHost::kOld);
       h.startFor(id);
     }},
    {"SecondCommandOfTheSetUp", "second-command", "Client02=",
     [](PlantedHost& h, const std::string& id) -> void {
       h.configure(id, {{"Setup01",
                         PlantedHost::kNow,
                         {"S:\\Lumo\\server.exe"},
                         {"S:\\Lumo\\client.exe", "S:\\Lumo\\server.exe"}}});
       h.record(id, "");
       h.startFor(id);
     }},
    {"DamagedPack", "pack-failed", "agg.zip",
     [](PlantedHost& h, const std::string& id) -> void {
       h.putPack("agg.zip", 2);
       h.startFor(id);
     }},
    {"PackThatIsNone", "pack-failed", "agg.zip",
     [](PlantedHost& h, const std::string& id) -> void {
       h.share().put(std::string(PlantedHost::kSetups) + "agg.zip", "non un pacco");
       h.startFor(id);
     }},
    {"PackWhoseContentCannotBeCopied", "pack-failed", "agg.zip",
     [](PlantedHost& h, const std::string& id) -> void {
       h.putFirst(id);
       h.putPack("agg.zip", 0);
       h.share().makeFolders(std::string(PlantedHost::kSetups) + "nuovo.txt");
       h.startFor(id);
     }},
    {"WorkFolderThatCannotBeTaken", "pack-failed", "nessun pacco viene aperto",
     [](PlantedHost& h, const std::string& id) -> void {
       h.putPack("agg.zip", 0);
       h.machine().makeFolders("C:\\Users\\mario\\Temp\\TrelvManager.lck");
       h.startFor(id);
     }},
    {"RunThatFailsBehindAPack", "unknown", "agdv.lck",
     [](PlantedHost& h, const std::string& id) -> void {
       h.putFirst(id);
       h.record(id, PlantedHost::kOld);
       h.putPack("agg.zip", 0);
       h.share().removeTree("S:\\Lumo\\prg\\tempterm");
       h.share().put("S:\\Lumo\\prg\\tempterm", "no folder");
       h.startFor(id);
     }},
    {"PackInUpperCase", "pack-name", "AGG.ZIP",
     [](PlantedHost& h, const std::string& id) -> void {
       h.putPack("AGG.ZIP", 0);
       h.startFor(id);
     }},
    {"GzPackOnTheShare", "pack-name", "agg.Gz",
     [](PlantedHost& h, const std::string& id) -> void {
       h.putPack("agg.Gz", 0);
       h.startFor(id);
     }},
    {"WorkFolderOfAnotherSession", "pack-in-use", "in uso da un'altra sessione: anna",
     [](PlantedHost& h, const std::string& id) -> void {
       h.putPack("agg.zip", 0);
       const auto mark = h.machine().exclusion().takeForAnother(
           "C:\\Users\\mario\\Temp\\TrelvManager.lck", "anna, ALTRA");
       h.startFor(id);
     }},
    {"PackThatIsHeldOpen", "pack-in-use", "agg.zip",
     [](PlantedHost& h, const std::string& id) -> void {
       h.putPack("agg.zip", 2);
       h.share().holdOpen(std::string(PlantedHost::kSetups) + "agg.zip", sim::Sharing::None);
       h.startFor(id);
     }},
    {"RecordOfTheServerReadOnly", "record-not-writable", "agdvver.ini",
     [](PlantedHost& h, const std::string& id) -> void {
       h.record(id, PlantedHost::kOld);
       h.share().setReadOnly(Installation::kServerRecord);
       h.startFor(id);
     }},
    {"RecordOfTheWorkstationReadOnly", "record-not-writable", "C:\\Lumo\\Client\\agdvver.ini",
     [](PlantedHost& h, const std::string& id) -> void {
       h.record(id, PlantedHost::kOld);
       h.machine().diskOf("C:\\").setReadOnly(Station::kClientRecord);
       h.startFor(id);
     }},
    {"NoProgramInTheConfiguration", "program-not-in-configuration", "alcun programma",
     [](PlantedHost& h, const std::string& id) -> void {
       h.installation_.putConfiguration(PlantedHost::confOf(id),
                                        configurationText(PlantedHost::kTwoSections));
       h.startFor(id);
     }},
    {"ProgramThatIsNotThere", "program-missing", "non è stato trovato su disco",
     [](PlantedHost& h, const std::string& id) -> void {
       h.share().removeTree(PlantedHost::product(id).path);
       h.startFor(id);
     }},
    {"ProgramWithArguments", "program-missing", " -A non è stato trovato",
     [](PlantedHost& h, const std::string& id) -> void {
       const PlantedProduct& product = PlantedHost::product(id);
       h.machine().setIniValue(pathOf(id), "Exec", product.program,
                               std::string(product.path) + " -A");
       h.startFor(id);
     }},
    {"EndedByForce", "log-cut", "Esecuzione comando: \"S:\\Lumo\\server.exe\"",
     [](PlantedHost& h, const std::string& id) -> void {
       h.record(id, PlantedHost::kOld);
       h.share().putProgram("S:\\Lumo\\server.exe", [](sim::SimProcess&) -> std::uint32_t {
         throw sim::Killed(sim::Unfinished::NotBegun);
       });
       try {
         h.startFor(id);
       } catch (const sim::Killed&) {
       }
     }},
    {"BeginCutOff", "log-cut", "Inizio Gestione",
     [](PlantedHost& h, const std::string& id) -> void {
       h.machine().removeTree(PlantedHost::kLog);
       h.startFor(id);
       const std::string whole = h.machine().fileText(PlantedHost::kLog);
       h.machine().putFile(PlantedHost::kLog, whole.substr(whole.find("Inizio Gestione") - 50));
     }},
    {"EmptyLog", "unknown", "",
     [](PlantedHost& h, const std::string&) -> void {
       h.machine().putFile(PlantedHost::kLog, "");
     }},
    {"OnlyMaintenance", "unknown", "",
     [](PlantedHost& h, const std::string&) -> void {
       h.machine().removeTree(PlantedHost::kLog);
       RealProgram(h.machine()).run("STANDALONEINSTALL S:\\Lumo S:\\Lumo ZM");
     }},
    {"TooFewArguments", "unknown", "Numero parametri errato",
     [](PlantedHost& h, const std::string&) -> void {
       RealProgram(h.machine()).run("INTEGRATEDRUN S:\\Lumo S:\\Lumo");
     }},
    {"TwoStartsInOneLog", "unknown", "",
     [](PlantedHost& h, const std::string& id) -> void {
       h.machine().removeTree(PlantedHost::kLog);
       h.startFor(id);
       const std::string whole = h.machine().fileText(PlantedHost::kLog);
       h.machine().putFile(PlantedHost::kLog,
                           whole + whole.substr(whole.find("Inizio procedura") - 45));
     }},
    {"SessionOfWindowsEnded", "unknown", "Sessione di Windows terminata",
     [](PlantedHost& h, const std::string& id) -> void {
       h.record(id, PlantedHost::kOld);
       h.share().putProgram("S:\\Lumo\\server.exe", [](sim::SimProcess& process) -> std::uint32_t {
         process.machine().programs().endSession();
       });
       try {
         h.startFor(id);
       } catch (const sim::Killed&) {
         h.machine().startSession();
       }
     }},
};

void expectEvidence(PlantedHost& host, const nlohmann::ordered_json& found,
                    const Planting& planting) {
  const std::string file = found["evidence"]["file"];
  const std::string text = found["evidence"]["text"];
  EXPECT_THAT(text.empty() ? file : text, HasSubstr(planting.evidence));
  if (!found["evidence"]["line"].is_null()) {
    EXPECT_EQ(host.lineOf(file, found["evidence"]["line"]), text);
  }
}

TEST(Explain, NamesWhatWasPlantedForEachProduct) {
  std::size_t situations = 0;
  for (const Planting& planting : kPlantings) {
    for (const PlantedProduct& product : kPlantedProducts) {
      SCOPED_TRACE(std::string(planting.name) + " " + product.id);
      PlantedHost host;
      planting.plant(host, product.id);
      host.machine().callLog().clear();
      const auto found = host.explain(product.id);
      EXPECT_EQ(found["cause"].get<std::string>(), planting.cause)
          << found.dump() << "\n"
          << (::testing::Test::HasFailure() ? "" : host.logText());
      EXPECT_EQ(host.exitCode, std::string(planting.cause) == "up-to-date" ? 0 : 1);
      EXPECT_EQ(found["product"], product.id);
      EXPECT_NE(found["remedy"], "");
      expectEvidence(host, found, planting);
      EXPECT_THAT(changingCalls(host.machine()), IsEmpty());
      ++situations;
    }
  }
  EXPECT_GE(situations, 80U);
}

TEST(Explain, NamesTheStepOfTheStart) {
  const std::map<std::string, std::string> steps{
      {"OtherServer", "integrazione"},
      {"Ferax", "suite"},
      {"ProductOnItsOwn", "prodotti in modalità Standard"},
      {"TooFewArguments", "avvio"},
      {"LockOfTheServer", "lato Server"},
      {"LockOfTheWorkstation", "lato Client"},
      {"DamagedPack", "pacchi"},
      {"PackInUpperCase", "pacchi"},
      {"NotInTheCatalogue", "catalogo"},
      {"ProgramThatIsNotThere", "avvio del programma"},
      {"EndedByForce", "registro"},
      {"BeginCutOff", "registro"},
      {"EmptyLog", ""}};
  std::size_t found = 0;
  for (const Planting& planting : kPlantings) {
    const auto expected = steps.find(planting.name);
    if (expected != steps.end()) {
      PlantedHost host;
      planting.plant(host, "ZB");
      EXPECT_EQ(host.explain("ZB")["step"], expected->second) << planting.name;
      ++found;
    }
  }
  EXPECT_EQ(found, steps.size());
}

TEST(Explain, TellsPeopleCauseEvidenceAndRemedy) {
  PlantedHost host;
  host.share().removeTree(pathOf("ZB"));
  host.startFor("ZM");
  const auto found = host.explain("ZB");
  EXPECT_EQ(host.trelv_.run({"explain", "ZB", "--host", "S:\\Lumo", "--log", PlantedHost::kLog}),
            1);
  EXPECT_EQ(host.trelv_.console.output,
            "ZB: no-configuration (lato Server)\n    " + std::string(PlantedHost::kLog) + ":" +
                found["evidence"]["line"].dump() + ": " +
                found["evidence"]["text"].get<std::string>() +
                "\n    rimedio: Consegnare il file di configurazione del prodotto o correggere "
                "\"conf\" nel catalogo.\n");
  host.trelv_.console.terminal = true;
  host.trelv_.run({"explain", "ZB", "--host", "S:\\Lumo", "--log", PlantedHost::kLog});
  EXPECT_EQ(host.errors(), "\rLettura del registro\r                    \r");
}

// --- Generated histories

/// What is true beside the planted cause and has no part in it.
class Surroundings {
 public:
  explicit Surroundings(std::size_t seed) : random_(static_cast<std::mt19937::result_type>(seed)) {}

  void before(PlantedHost& host, const std::string& id, const Planting& planting) {
    std::shuffle(host.order.begin(), host.order.end(), random_);
    // Two of the others, which plantings name, and one more.
    std::erase_if(host.order, [&](const std::string& other) -> bool {
      return other != id && other != otherThan(id) && often();
    });
    host.putCatalogue();
    if (often()) {
      host.start(host.product(oneOf(host.order)).program);
    }
    if (often()) {
      host.configure(id, PlantedHost::kTwoSections);
    }
    for (const std::string& other : host.order) {
      // Where the whole update stops at the first product with work, only one may have some.
      if (other != id && !stopsAll(planting) && often()) {
        host.record(other, oneOf({"", "01.00.00.00", "01.05.00.00", "02.00.00.00"}));
      }
    }
  }
  void after(PlantedHost& host) {
    if (often()) {
      RealProgram(host.machine()).run("STANDALONEINSTALL S:\\Lumo S:\\Lumo ZM");
    }
    if (often()) {
      host.machine().clock().advance(3600);
    }
  }

 private:
  static bool stopsAll(const Planting& planting) {
    static const std::set<std::string> kNames{"LockThatIsHeldOpen", "FolderInPlaceOfTheLock",
                                              "NoRightToWriteTheLock", "SessionOfWindowsEnded"};
    return kNames.count(planting.name) != 0;
  }
  bool often() { return random_() % 2 == 0; }
  std::string oneOf(const std::vector<std::string>& texts) {
    return texts.at(random_() % texts.size());
  }

  std::mt19937 random_;
};

/// What is said in the history of a seed; empty where it is what was planted.
std::string wrongCause(std::size_t seed, std::atomic<std::size_t>& unknown) {
  const Planting& planting = kPlantings.at(seed % kPlantings.size());
  const std::string id = kPlantedProducts.at(seed / kPlantings.size() % 5).id;
  Surroundings surroundings(seed);
  PlantedHost host;
  surroundings.before(host, id, planting);
  planting.plant(host, id);
  surroundings.after(host);
  const std::string cause = host.causeOf(id);
  unknown += cause == "unknown" && cause != planting.cause ? 1U : 0U;
  return cause == planting.cause || cause == "unknown"
             ? std::string()
             : std::string(planting.name) + " " + id + ": " + cause;
}

TEST(Explain, NeverNamesAWrongCauseInGeneratedHistories) {
  constexpr std::size_t kHistories = 2000;
  std::atomic<std::size_t> unknown = 0;
  onAllCores(kHistories,
             [&](std::size_t seed) { EXPECT_EQ(wrongCause(seed, unknown), "") << seed; });
  EXPECT_LT(unknown, kHistories / 100);
}

// --- What it is asked

TEST(Explain, IdentifierIsTakenInAnyCaseAndToldAsItIs) {
  PlantedHost host;
  host.startFor("ZB");
  const auto found = host.explain("zb");
  EXPECT_EQ(found["product"], "ZB");
  EXPECT_EQ(found.dump().substr(0, 60),
            R"({"product":"ZB","cause":"up-to-date","step":"lato Client","e)");
}

TEST(Explain, UnknownIdentifierIsWrongUsage) {
  PlantedHost host;
  host.startFor("ZB");
  for (const char* const id : {"XYZ", "", "UNDEFINED", "NERIO2"}) {
    host.explain(id);
    EXPECT_EQ(host.exitCode, 64) << id;
  }
}

TEST(Explain, ProductThatOnlyTheCatalogueKnowsIsExplained) {
  PlantedHost host;
  host.order.emplace_back("Altro");
  host.putCatalogue();
  host.startFor("ZB");
  EXPECT_EQ(host.explain("ALTRO")["cause"], "no-configuration");
}

TEST(Explain, HostAndLogAreThoseOfThisUserWhereNoneAreGiven) {
  PlantedHost host;
  host.startFor("ZM");
  EXPECT_EQ(host.result({"explain", "ZM"})["cause"], "up-to-date");
  host.station_.forgetIntegration();
  host.result({"explain", "ZM"});
  EXPECT_EQ(host.exitCode, 64);
  EXPECT_EQ(host.errors(), "trelv: manca --host: questa macchina non è integrata (trelv --help)\n");
}

TEST(Explain, SectionBehindTheGapOfTheCatalogueIsTheEvidence) {
  PlantedHost host;
  host.order = {"LUDA", "ZM", "", "NERIO", "ZB"};
  host.putCatalogue();
  host.startFor("ZM");
  EXPECT_EQ(host.explain("ZB")["cause"], "catalogue-gap");
  EXPECT_EQ(host.explain("ZB")["evidence"]["text"], "[prod04]");
  host.order = {"LUDA", "", "", "ZB"};
  host.putCatalogue();
  host.startFor("ZM");
  EXPECT_EQ(host.explain("ZB")["evidence"]["text"], "[prod04]");
}

TEST(Explain, LastUpdateCountsWhereAnEarlierOneHasTwoCommands) {
  PlantedHost host;
  host.configure("ZB",
                 {{"Update01",
                   PlantedHost::kOld,
                   {"S:\\Lumo\\server.exe", "S:\\Lumo\\client.exe"},
                   {"S:\\Lumo\\client.exe"}},
                  updateTo(PlantedHost::kNow, {"S:\\Lumo\\server.exe"}, {"S:\\Lumo\\client.exe"})});
  host.startFor("ZB");
  EXPECT_EQ(host.explain("ZB")["cause"], "up-to-date");
}

TEST(Explain, GapOfASectionWithTooFewFieldsIsItsFirstTrouble) {
  PlantedHost host;
  host.share().put(pathOf("ZB"),
                   "[Update01]\r\nversion=01.00.00.00\r\nServer01=S:\\Lumo\\server.exe\r\n"
                   "[Update02]\r\nversion=02.00\r\nServer02=S:\\Lumo\\server.exe\r\n");
  host.record("ZB", PlantedHost::kOld);
  host.startFor("ZB");
  EXPECT_EQ(host.explain("ZB")["cause"], "command-gap");
}

TEST(Explain, ProductThatNoUpdateBringsToItsSetUpIsNotUpToDate) {
  PlantedHost host;
  host.configure(
      "ZB", {{"Setup01", PlantedHost::kNow, {"S:\\Lumo\\server.exe"}, {"S:\\Lumo\\client.exe"}}});
  host.record("ZB", PlantedHost::kOld);
  host.startFor("ZB");
  EXPECT_EQ(host.explain("ZB")["cause"], "unknown");
}

TEST(Explain, WhatCannotBeReadAnswers2) {
  PlantedHost host;
  host.result({"explain", "ZM", "--host", "S:\\Lumo", "--log", "C:\\manca.log"});
  EXPECT_EQ(host.exitCode, 2);
  EXPECT_THAT(host.errors(), HasSubstr("C:\\manca.log: "));
  host.startFor("ZM");
  host.result({"explain", "ZM", "--host", "S:\\Manca", "--log", PlantedHost::kLog});
  EXPECT_EQ(host.exitCode, 2);
}

TEST(Explain, UsersWhoMayOnlyReadGetTheSame) {
  PlantedHost host;
  host.record("ZM", PlantedHost::kOld);
  host.putFirst("ZM");
  host.putLock(Side::Server);
  host.startFor("ZM");
  const std::string all = host.explain("ZM").dump();
  host.share().setRights("S:\\Lumo", {{"*", sim::Right::Read}});
  host.machine().diskOf("C:\\").setRights("C:\\", {{"*", sim::Right::Read}});
  EXPECT_EQ(host.explain("ZM").dump(), all);
}

TEST(Explain, PackThatBearsOnAnotherProductIsNoCause) {
  PlantedHost host;
  for (const char* const name : {"AGG.ZIP", "agg.gz"}) {
    host.share().put(PlantedHost::kSetups + std::string(name),
                     zipPack({{"zb.ini", "nuovo"}, {"a.txt", "a"}}));
    host.startFor("ZM");
    EXPECT_EQ(host.explain("ZB")["cause"], "pack-name");
    EXPECT_EQ(host.explain("ZM")["cause"], "up-to-date");
    host.share().removeTree(PlantedHost::kSetups + std::string(name));
  }
  for (const char* const forAll : {"AGDVCOMP.INI", "altro.zip"}) {
    host.share().put(PlantedHost::kSetups + std::string("AGG.ZIP"), zipPack({{forAll, "nuovo"}}));
    EXPECT_EQ(host.explain("ZM")["cause"], "pack-name") << forAll;
  }
}

TEST(Explain, PackThatFailedStopsTheProductsThatTheSameStartDidNotUpdate) {
  PlantedHost host;
  host.putPack("agg.zip", 2);
  host.record("NERIO", PlantedHost::kOld);
  host.startFor("ZM");
  EXPECT_EQ(host.explain("NERIO")["cause"], "up-to-date");
  EXPECT_EQ(host.explain("ZM")["cause"], "pack-failed");
}

TEST(Explain, EvidenceInAFileThatIsMissingIsTheFileAlone) {
  PlantedHost host;
  kit::QuietProgram quiet(host.machine().machine());
  const kit::Evidence evidence =
      kit::inIniFile(quiet.program(), "S:\\Lumo\\manca.ini", "ZM", "version");
  EXPECT_EQ(evidence.file, "S:\\Lumo\\manca.ini");
  EXPECT_FALSE(evidence.line);
  EXPECT_EQ(evidence.text, "");
}

TEST(Explain, EvidenceBehind16MegabytesOfAFileIsTheFileAlone) {
  PlantedHost host;
  kit::QuietProgram quiet(host.machine().machine());
  const std::string file = "S:\\Lumo\\grande.ini";
  const std::string key = "\r\n[ZM]\r\nversion=1";
  constexpr std::size_t kRead = std::size_t{16} << 20U;
  host.share().put(file, std::string(kRead - key.size(), ';') + key);
  EXPECT_EQ(kit::inIniFile(quiet.program(), file, "ZM", "version").text, "version=1");
  host.share().put(file, std::string(kRead, ';') + key);
  EXPECT_EQ(kit::inIniFile(quiet.program(), file, "ZM", "version").text, "");
}

TEST(Explain, ProductThatStoppedTheOthersIsNamed) {
  PlantedHost host;
  host.putFirst("LUDA");
  host.record("LUDA", PlantedHost::kOld, Side::Client);
  host.putLock(Side::Client);
  host.startFor("ZM");
  EXPECT_EQ(host.explain("ZM")["step"], "lato Client di LUDA");
  EXPECT_EQ(host.explain("LUDA")["cause"], "lock");
}

TEST(Explain, StopOfAnotherProductIsNoCauseOfOneThatTheCatalogueLacks) {
  PlantedHost host;
  host.order = {"LUDA", "ZB"};
  host.putCatalogue();
  host.record("LUDA", PlantedHost::kOld);
  host.putLock(Side::Server);
  host.startFor("ZM");
  EXPECT_EQ(host.explain("ZM")["cause"], "not-in-catalogue");
  EXPECT_EQ(host.explain("ZB")["cause"], "run-stopped-earlier");
}

TEST(Explain, CommandWhoseWorkTheSecondOneDidIsNoCause) {
  PlantedHost host;
  host.configure("ZB", {updateTo(PlantedHost::kNow, {"S:\\Lumo\\manca.exe", "S:\\Lumo\\server.exe"},
                                 {"S:\\Lumo\\client.exe"})});
  host.record("ZB", PlantedHost::kOld);
  host.startFor("ZB");
  EXPECT_EQ(host.explain("ZB")["cause"], "up-to-date");
}

TEST(Explain, SearchForPacksThatFailsStopsTheFirstProduct) {
  PlantedHost host;
  host.putFirst("LUDA");
  host.machine().onCall("files.list S:\\Lumo\\prg\\com\\setup\\aggdovra",
                        [&host]() -> void { host.share().disconnect(); });
  host.startFor("ZM");
  host.share().reconnect();
  EXPECT_EQ(host.explain("LUDA")["cause"], "unknown");
  EXPECT_EQ(host.explain("ZM")["cause"], "run-stopped-earlier");
}

TEST(Explain, SearchForPacksThatFailsBehindARunIsThatOfTheNextOne) {
  for (const bool missing : {false, true}) {
    PlantedHost host;
    host.putFirst("LUDA");
    if (missing) {
      host.share().removeTree(pathOf("LUDA"));
    } else {
      host.configure("LUDA", {updateTo(PlantedHost::kNow, {"S:\\Lumo\\manca.exe"}, {})});
      host.record("LUDA", PlantedHost::kOld);
    }
    const std::string search = "files.list S:\\Lumo\\prg\\com\\setup\\aggdovra";
    host.machine().onCall(search, [&]() -> void {
      host.machine().onCall(search, [&host]() -> void { host.share().disconnect(); });
    });
    host.startFor("ZM");
    host.share().reconnect();
    EXPECT_EQ(host.explain("ZM")["step"], "lato Client di LUDA") << host.logText();
  }
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t from = 0; from < text.size();) {
    const std::size_t end = text.find('\n', from) + 1;
    lines.push_back(text.substr(from, end - from));
    from = end;
  }
  return lines;
}

/// All that a start for ZM writes.
std::string logOfAStart(PlantedHost& host) {
  host.machine().removeTree(PlantedHost::kLog);
  host.startFor("ZM");
  return host.machine().fileText(PlantedHost::kLog);
}

/// All that a start writes which updates nothing.
std::string logOfAnotherKind(PlantedHost& host) {
  host.machine().removeTree(PlantedHost::kLog);
  RealProgram(host.machine()).run("STANDALONEINSTALL S:\\Lumo S:\\Lumo ZM");
  return host.machine().fileText(PlantedHost::kLog);
}

TEST(Explain, StartThatHoldsALineOfAnotherOneIsNotExplained) {
  PlantedHost host;
  host.startFor("ZM");
  const std::vector<std::string> lines = linesOf(host.machine().fileText(PlantedHost::kLog));
  std::size_t tried = 0;
  for (const char* const once :
       {"Analisi linea di comando effettuata", "Inizio procedura", "Verifica Esistenza Travolin",
        "Inizio gestione anomalia Corvel", "Inizio Gestione Anomalia Nerio",
        "Inizio Gestione anomalia ZeltoModelli", "Inizio Gestione anomalia Luda"}) {
    const auto own = std::find_if(
        lines.begin(), lines.end(),
        [once](const std::string& line) -> bool { return line.find(once) != std::string::npos; });
    ASSERT_NE(own, lines.end()) << once;
    std::string text;
    for (auto line = lines.begin(); line != lines.end(); ++line) {
      text += line == own ? *line + *line : *line;
    }
    host.machine().putFile(PlantedHost::kLog, text);
    EXPECT_EQ(host.causeOf("ZM"), "unknown") << once;
    ++tried;
  }
  EXPECT_EQ(tried, 7U);
}

TEST(Explain, StartThatHoldsALineOfTheOtherSideIsNotExplained) {
  PlantedHost host;
  host.putFirst("LUDA");
  host.record("LUDA", PlantedHost::kOld);
  const std::vector<std::string> lines = linesOf(logOfAStart(host));
  std::set<std::string> tried;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    for (const char* const own : {"Lato Server la versione", " - Oggetto=Server - "}) {
      if (lines[i].find(own) == std::string::npos) {
        continue;
      }
      std::string text;
      for (std::size_t j = 0; j < lines.size(); ++j) {
        text += lines[j] + (j == i ? replaceAll(lines[j], "Server", "Client") : "");
      }
      host.machine().putFile(PlantedHost::kLog, text);
      EXPECT_EQ(host.causeOf("ZM"), "unknown") << lines[i];
      tried.insert(own);
    }
  }
  EXPECT_EQ(tried.size(), 2U);
}

TEST(Explain, StartBehindWhichAnotherKindBeganAndEndedIsCut) {
  PlantedHost host;
  const std::string other = logOfAnotherKind(host);
  const std::string whole = logOfAStart(host);
  const std::size_t cut = whole.find("\r\n", whole.find("Inizio procedura")) + 2;
  host.machine().putFile(PlantedHost::kLog, whole.substr(0, cut) + other);
  EXPECT_EQ(host.causeOf("ZM"), "log-cut") << host.logText();
}

TEST(Explain, WhatAnotherStartWritesBehindTheWalkIsNoRunOfThisOne) {
  PlantedHost host;
  std::string text = logOfAStart(host);
  const std::string begin = text.substr(0, text.find(" -- ") + 4);
  const std::size_t end = text.find("\r\n", text.find("Termine procedura Update")) + 2;
  text.insert(end, begin +
                       "Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "
                       "S:\\Lumo\\prg\\com\\setup\\aggdovra\r\n" +
                       begin +
                       "Gestione ProdTrelv - esecuzione non effettuata per presenza altre "
                       "sessioni: Tipo=Update - Oggetto=Server - Comando=x\r\n");
  host.machine().putFile(PlantedHost::kLog, text);
  EXPECT_EQ(host.causeOf("ZM"), "up-to-date") << host.logText();
}

TEST(Explain, SectionThatTheStartDidNotReadIsNoCauseWhenTheRecordIsGone) {
  PlantedHost host;
  host.configure("ZB", {{"Setup01", "", {"S:\\Lumo\\server.exe"}, {"S:\\Lumo\\client.exe"}}});
  host.record("ZB", PlantedHost::kOld);
  host.startFor("ZB");
  host.record("ZB", "");
  EXPECT_NE(host.explain("ZB")["cause"], "no-version");
}

TEST(Explain, UpdateThatTheStartDidNotReadIsNoCauseWhereNothingIsRecorded) {
  PlantedHost host;
  host.configure("ZB", {{"Update01", "", {"S:\\Lumo\\server.exe"}, {"S:\\Lumo\\client.exe"}}});
  host.record("ZB", "");
  host.startFor("ZB");
  EXPECT_NE(host.explain("ZB")["cause"], "no-version");
}

TEST(Explain, LogThatIsCutBehindAProductIsNoCauseOfIt) {
  PlantedHost host;
  host.putFirst("ZM");
  host.record("LUDA", PlantedHost::kOld);
  host.share().putProgram("S:\\Lumo\\server.exe", [](sim::SimProcess&) -> std::uint32_t {
    throw sim::Killed(sim::Unfinished::NotBegun);
  });
  try {
    host.startFor("ZM");
  } catch (const sim::Killed&) {
  }
  EXPECT_EQ(host.explain("LUDA")["cause"], "log-cut");
  EXPECT_EQ(host.explain("ZM")["cause"], "up-to-date");
}

TEST(Explain, LogWhoseUpdateWasStoppedIsNotCut) {
  PlantedHost host;
  host.order = {"LUDA", "ZB"};
  host.putCatalogue();
  host.record("LUDA", PlantedHost::kOld);
  host.share().putProgram("S:\\Lumo\\server.exe", [](sim::SimProcess& process) -> std::uint32_t {
    process.machine().programs().endSession();
  });
  try {
    host.startFor("ZM");
  } catch (const sim::Killed&) {
    host.machine().startSession();
  }
  EXPECT_EQ(host.explain("ZM")["cause"], "not-in-catalogue");
  EXPECT_EQ(host.explain("ZB")["cause"], "run-stopped-earlier");
}

TEST(Explain, StopBehindWhichTheStartWentOnIsNotItsOwn) {
  PlantedHost host;
  host.putFirst("LUDA");
  std::vector<std::string> lines = linesOf(logOfAStart(host));
  const auto isSearch = [](const std::string& line) -> bool {
    return line.find("Inizio verifica presenza di pacchi zip") != std::string::npos;
  };
  const auto first = std::find_if(lines.begin(), lines.end(), isSearch);
  const std::string stop = first->substr(0, first->find(" -- ") + 4) +
                           "Gestione ProdTrelv - esecuzione non effettuata per presenza altre "
                           "sessioni: Tipo=Update - Oggetto=Server - Comando=x\r\n";
  lines.erase(std::find_if(first + 6, lines.end(), isSearch), lines.end());
  lines.insert(std::find_if(lines.begin(), lines.end(), isSearch) + 1, stop);
  std::string text;
  for (const std::string& line : lines) {
    text += line;
  }
  host.machine().putFile(PlantedHost::kLog, text);
  EXPECT_EQ(host.explain("LUDA")["cause"], "unknown");
}

TEST(Explain, LogThatEndsAnywhereIsNeverExplainedWrongly) {
  PlantedHost host;
  host.putFirst("ZM");
  host.record("ZM", PlantedHost::kOld);
  host.putLock(Side::Server);
  host.startFor("ZM");
  const std::string whole = host.machine().fileText(PlantedHost::kLog);
  std::set<std::string> causes;
  for (std::size_t length = 0; length <= whole.size(); length += 7) {
    host.machine().putFile(PlantedHost::kLog, whole.substr(0, length));
    causes.insert(host.explain("ZM")["cause"].get<std::string>());
  }
  EXPECT_THAT(causes, testing::ElementsAre("lock", "log-cut", "unknown"));
}

// --- Logs as they come from elsewhere

std::string wide(const std::string& ansi, bool highFirst) {
  std::string bytes = highFirst ? "\xFE\xFF" : "\xFF\xFE";
  for (const char letter : ansi) {
    bytes += highFirst ? std::string{'\0', letter} : std::string{letter, '\0'};
  }
  return bytes;
}

TEST(Explain, LogInAnotherEncodingIsExplainedAlike) {
  PlantedHost host;
  host.machine().removeTree(PlantedHost::kLog);
  host.machine().setIniValue(pathOf("ZM"), "Exec", "ZM", "");
  host.startFor("ZM");
  const std::string asWritten = host.machine().fileText(PlantedHost::kLog);
  const auto expected = host.explain("ZM");
  ASSERT_EQ(expected["cause"], "program-not-in-configuration");
  ASSERT_THAT(expected["evidence"]["text"].get<std::string>(), HasSubstr("Non è stato rilevato"));
  const std::string utf8 = host.logText();
  const std::size_t newest = asWritten.rfind("\r\n", asWritten.size() - 3);
  for (const std::string& bytes :
       {utf8, "\xEF\xBB\xBF" + utf8, wide(asWritten, false), wide(asWritten, true),
        replaceAll(asWritten, "\r\n", "\n"), asWritten.substr(0, asWritten.size() - 2),
        // The manager has gone on in a file that an editor had kept in UTF-8.
        "\xEF\xBB\xBF" + host.machine().locale().fromAnsi(asWritten.substr(0, newest)) +
            asWritten.substr(newest)}) {
    host.machine().putFile(PlantedHost::kLog, bytes);
    EXPECT_EQ(host.explain("ZM"), expected) << bytes.substr(0, 8);
  }
}

TEST(Explain, NewestStartOfAHugeLogIsTheOneThatCounts) {
  // Just beyond what is read of a log, 16 MB.
  constexpr std::size_t kLength = (std::size_t{16} << 20U) + (std::size_t{1} << 19U);
  PlantedHost host;
  const std::string older = logOfAStart(host);
  host.machine().removeTree(PlantedHost::kLog);
  host.record("ZM", PlantedHost::kOld);
  host.putFirst("ZM");
  host.putLock(Side::Server);
  host.startFor("ZM");
  const std::string newest = host.machine().fileText(PlantedHost::kLog);
  const auto expected = host.explain("ZM");
  ASSERT_EQ(expected["cause"], "lock");
  const std::string line =
      "16/11/2026 09:30:00 -- una riga come tante altre in un registro lungo\r\n";
  std::string huge = older;
  std::size_t lines = static_cast<std::size_t>(std::count(older.begin(), older.end(), '\n'));
  for (; huge.size() < kLength; ++lines) {
    huge += line;
  }
  for (const bool asWide : {false, true}) {
    host.machine().putFile(PlantedHost::kLog, asWide ? wide(huge + newest, false) : huge + newest);
    const auto found = host.explain("ZM");
    EXPECT_EQ(found["cause"], "lock");
    EXPECT_EQ(found["evidence"]["text"], expected["evidence"]["text"]);
    EXPECT_EQ(found["evidence"]["line"].get<std::size_t>(),
              expected["evidence"]["line"].get<std::size_t>() + lines);
  }
  // Nothing of an older start is taken for the newest one's.
  host.machine().putFile(PlantedHost::kLog, newest + huge.substr(older.size()));
  EXPECT_EQ(host.explain("ZM")["cause"], "unknown");
}

TEST(Explain, StartInWhichOneOfAnotherKindBeganIsNotTakenForCut) {
  PlantedHost host;
  const std::string other = logOfAnotherKind(host);
  const std::string whole = logOfAStart(host);
  for (std::size_t at = whole.find("\r\n"); at + 2 < whole.size();
       at = whole.find("\r\n", at + 1)) {
    host.machine().putFile(PlantedHost::kLog,
                           whole.substr(0, at + 2) + other + whole.substr(at + 2));
    EXPECT_THAT(host.causeOf("ZM"), testing::AnyOf("unknown", "up-to-date")) << at;
  }
}

/// The lines of both in their orders; the last one's first line comes behind the other's.
std::string interleaved(const std::string& first, const std::string& last, std::mt19937& random) {
  std::vector<std::string> one = linesOf(first);
  std::vector<std::string> other = linesOf(last);
  std::string text;
  const std::size_t alone = 1 + random() % one.size();
  for (std::size_t i = 0, j = 0; i < one.size() || j < other.size();) {
    const bool takeOne = i < one.size() && (i < alone || j == other.size() || random() % 3 != 0);
    text += takeOne ? one[i++] : other[j++];
  }
  return text;
}

/// Two sessions of one user write into one log. What the last one met is told, or nothing.
TEST(Explain, StartsWhoseLinesStandInEachOtherAreNeverExplainedWrongly) {
  for (const bool lastIsStopped : {false, true}) {
    PlantedHost host;
    host.putFirst("LUDA");
    std::array<std::string, 2> logs;
    for (const bool stopped : {!lastIsStopped, lastIsStopped}) {
      host.machine().removeTree(PlantedHost::kLog);
      host.share().removeTree(Installation::kServerLock);
      host.record("LUDA", stopped ? PlantedHost::kOld : PlantedHost::kNow);
      if (stopped) {
        host.putLock(Side::Server);
      }
      host.startFor("ZM");
      logs.at(stopped == lastIsStopped ? 1 : 0) = host.machine().fileText(PlantedHost::kLog);
    }
    std::map<std::string, std::string> expected;
    for (const std::string& id : host.order) {
      expected[id] = host.causeOf(id);
      EXPECT_NE(expected[id], "unknown");
    }
    std::mt19937 random(20261122);
    std::size_t unknown = 0;
    for (int mixture = 0; mixture < 300; ++mixture) {
      host.machine().putFile(PlantedHost::kLog, interleaved(logs[0], logs[1], random));
      for (const std::string& id : host.order) {
        const std::string cause = host.causeOf(id);
        unknown += cause == "unknown" ? 1U : 0U;
        EXPECT_TRUE(cause == "unknown" || cause == expected[id])
            << id << " " << cause << "\n"
            << (::testing::Test::HasFailure() ? "" : host.logText());
      }
    }
    EXPECT_GT(unknown, 100U);
  }
}

}  // namespace
}  // namespace trelv::tests
