// Every product in every state, installed wherever a path may lead: record, mode, the whole report
// and the whole log. What is expected stands in the tables and texts of this file; nothing of it is
// worked out from what was found.

#include <gtest/gtest.h>

#include <array>

#include "base/Text.h"
#include "inventory/InstallationMode.h"
#include "unit/inventory/Report.h"

namespace trelv::tests {
namespace {

using machine::Hive;

/// Where an installation lies.
struct Place {
  const char* name;
  const char* root;
  /// Share that the drive S: is connected to; empty: S: is a local drive.
  const char* share;
};

constexpr std::array kPlaces{
    Place{"local drive", "S:\\Lumo", ""},
    Place{"drive connected to this computer", "S:\\Lumo", "\\\\Stazione\\Dati"},
    Place{"drive connected to another computer", "S:\\Lumo", "\\\\SRV\\Dati"},
    Place{"share of this computer", "\\\\STAZIONE\\Dati\\Lumo", ""},
    Place{"share of another computer", "\\\\SRV\\Dati\\Lumo", ""}};

/// What a case expects, besides the lines that tell the mode. `log` are the lines of the check.
struct Expected {
  std::int16_t code = 0;
  const char* name = "";
  Operation kind{};
  Side side{};
  std::string serverVersion;
  std::string clientVersion;
  std::string serverFolder;
  std::string clientFolder;
  std::vector<std::string> report;
  std::vector<std::string> log;
};

class World {
 public:
  explicit World(const Place& place) : place_(place) {
    machine().mount("S:");
    machine().mount("\\\\SRV\\Dati");
    machine().mount("\\\\STAZIONE\\Dati");
    if (*place.share != '\0') {
      machine().system().connectDrive("S:", place.share);
    }
    beginReport(program_);
  }

  sim::SimMachine& machine() { return program_.sim; }
  FakeProgram& program() { return program_; }
  /// A path below the place.
  std::string at(const std::string& below) const { return place_.root + below; }
  void ini(const std::string& file, const char* section, const char* key,
           const std::string& value) {
    machine().setIniValue(file, section, key, value);
  }
  void value(const std::string& key, const std::string& name, const std::string& text) {
    machine().registry().setText(Hive::LocalMachine, key, name, text);
  }

 private:
  const Place& place_;
  FakeProgram program_;
};

/// One product in one state: the mode in each of the places, the world and what is expected there.
struct Case {
  const char* name;
  /// A letter for each of kPlaces: c on its own by its client, s on its own by its server,
  /// i integrated, - not installed.
  const char* modes;
  Expected (*build)(World&);
};

std::string banner(const char* word) {
  return "---------------------------------------------- VERIFICA PRESENZA " + std::string(word) +
         " ----------------------------------------------";
}

// --- Nerio

constexpr const char* kComponentKey = "Software\\Classes\\ClsID\\{9C1D}\\InprocServer32";

constexpr const char* kNoLocalIni = "Gestione ProdTrelv - File Ini Nerio locale non presente";
constexpr const char* kComponentsAsked =
    "Gestione ProdTrelv - Determino path Server di Nerio da componenti registrate";

Expected nerio(std::vector<std::string> report, std::vector<std::string> log = {kComponentsAsked}) {
  return {10, "NERIO", Operation::Update, Side::Server,  "", "",
          "", "",      std::move(report), std::move(log)};
}

void nerioLocal(World& world, const std::string& home, const std::string& version) {
  world.ini("nerio.ini", "Pathnames", "Homedir", home);
  world.ini("nerio.ini", "NERIO", "Versione", version);
}

std::string nerioServer(World& world, const std::string& version) {
  world.value(kComponentKey, "", world.at("\\mv\\nerio\\setup\\korvatgestionepratiche.ocx"));
  if (!version.empty()) {
    world.ini(world.at("\\mv\\nerio\\nerio.ini"), "NERIO", "Versione", version);
  }
  return lowerCase(world.at("\\mv\\nerio"));
}

const std::array kNerio{
    Case{"Nerio, absent", "-----",
         [](World&) {
           Expected e = nerio({banner("NERIO"), "File Nerio.ini locale ASSENTE",
                               "Verifica componenti registrate", "Nessuna componente registrata"},
                              {kNoLocalIni, kComponentsAsked});
           e.kind = Operation::Setup;
           return e;
         }},
    Case{"Nerio, client only", "ccccc",
         [](World& world) {
           nerioLocal(world, world.at("\\Nerio"), "03.20");
           Expected e = nerio({banner("NERIO"), "File Nerio.ini locale PRESENTE",
                               "Verifica componenti registrate", "Nessuna componente registrata"});
           e.clientVersion = "03.20";
           e.clientFolder = world.at("\\Nerio");
           return e;
         }},
    Case{"Nerio, server only", "ss-s-",
         [](World& world) {
           const std::string folder = nerioServer(world, "03.30");
           Expected e = nerio(
               {banner("NERIO"), "File Nerio.ini locale ASSENTE", "Verifica componenti registrate",
                "Componenti registrate in " + folder, "File nerio.ini presente in " + folder},
               {kNoLocalIni, kComponentsAsked});
           e.serverVersion = "03.30";
           e.serverFolder = folder;
           return e;
         }},
    Case{"Nerio, both sides", "ccccc",
         [](World& world) {
           nerioLocal(world, "C:\\Nerio", "03.20");
           const std::string folder = nerioServer(world, "03.30");
           Expected e = nerio(
               {banner("NERIO"), "File Nerio.ini locale PRESENTE", "Verifica componenti registrate",
                "Componenti registrate in " + folder, "File nerio.ini presente in " + folder});
           e.serverVersion = "03.30";
           e.clientVersion = "03.20";
           e.serverFolder = folder;
           e.clientFolder = "C:\\Nerio";
           return e;
         }},
    Case{"Nerio, integrated", "ssisi",
         [](World& world) {
           world.ini("nerio.ini", "NERIO", "Versione", "03.20");
           const std::string folder = nerioServer(world, "03.20");
           Expected e = nerio(
               {banner("NERIO"), "File Nerio.ini locale PRESENTE", "Verifica componenti registrate",
                "Componenti registrate in " + folder, "File nerio.ini presente in " + folder});
           e.serverVersion = "03.20";
           e.clientVersion = "03.20";
           e.serverFolder = folder;
           return e;
         }},
    Case{"Nerio, standalone", "ccccc",
         [](World& world) {
           nerioLocal(world, "C:\\Nerio", "03.20");
           world.value(kComponentKey, "", "C:\\Nerio\\setup\\korvatgestionepratiche.ocx");
           world.ini("C:\\Nerio\\nerio.ini", "NERIO", "Versione", "03.20");
           Expected e = nerio(
               {banner("NERIO"), "File Nerio.ini locale PRESENTE", "Verifica componenti registrate",
                "Componenti registrate in c:\\nerio", "File nerio.ini presente in c:\\nerio"});
           e.serverVersion = "03.20";
           e.clientVersion = "03.20";
           e.serverFolder = "c:\\nerio";
           e.clientFolder = "C:\\Nerio";
           return e;
         }},
    Case{"Nerio, remains", "ss-s-", [](World& world) {
           const std::string folder = nerioServer(world, "");
           Expected e = nerio(
               {banner("NERIO"), "File Nerio.ini locale ASSENTE", "Verifica componenti registrate",
                "Componenti registrate in " + folder, "File nerio.ini assente in " + folder},
               {kNoLocalIni, kComponentsAsked});
           e.kind = Operation::Setup;
           e.serverFolder = folder;
           return e;
         }}};

// --- Luda

Expected luda(const std::string& version, const std::string& folder) {
  return {
      20,
      "LUDA",
      version.empty() ? Operation::Setup : Operation::Update,
      Side::Server,
      version,
      version,
      folder,
      folder,
      {banner("LUDA"), version.empty() ? "File ini locale ASSENTE" : "File ini locale PRESENTE"},
      {}};
}

Expected ludaIn(World& world, const std::string& folder) {
  world.ini("luda.ini", "PathNames", "HomeDir", folder);
  world.ini("luda.ini", "LUDA", "Versione", "01.00");
  world.machine().putFile(folder + "\\luda2003.exe", "MZ");
  world.machine().setFileVersion(folder + "\\luda2003.exe", {7, 10, 3, 4});
  return luda("7.10.3.4", folder);
}

const std::array kLuda{Case{"Luda, absent", "-----", [](World&) { return luda("", ""); }},
                       Case{"Luda, client only", "ccccc",
                            [](World& world) { return ludaIn(world, world.at("\\Luda")); }},
                       Case{"Luda, server only", "ccccc",
                            [](World& world) { return ludaIn(world, world.at("\\mv\\luda2003")); }},
                       Case{"Luda, both sides", "ccccc",
                            [](World& world) {
                              // No program with a version: that of the ini file counts.
                              const std::string folder = world.at("\\mv\\luda2003");
                              world.ini("luda.ini", "PathNames", "HomeDir", folder);
                              world.ini("luda.ini", "LUDA", "Versione", "07.09");
                              return luda("07.09", folder);
                            }},
                       Case{"Luda, integrated", "iiiii",
                            [](World& world) {
                              world.ini("luda.ini", "LUDA", "Versione", "07.10");
                              return luda("07.10", "");
                            }},
                       Case{"Luda, standalone", "ccccc",
                            [](World& world) { return ludaIn(world, "C:\\Programmi\\Luda"); }},
                       Case{"Luda, remains", "ccccc", [](World& world) {
                              world.ini("luda.ini", "PathNames", "HomeDir", "C:\\Luda");
                              return luda("", "C:\\Luda");
                            }}};

// --- Bilancio and Tarsena2

struct Names {
  std::int32_t code;
  const char* name;
  const char* word;
  const char* ini;
  const char* folder;
  const char* serverLine;
  const char* found;
  const char* missing;
};

constexpr Names kBilancio{30,
                          "ZB",
                          "BILANCIO",
                          "\\mv\\bilancio\\mvanbil.ini",
                          "\\mv\\bilancio",
                          "Lettura ini Server :",
                          "Ini server PRESENTE",
                          "Ini server ASSENTE"};
constexpr Names kTarsena2{40,
                          "Q2",
                          "Q2",
                          "\\mv\\q2\\mvq2.ini",
                          "\\mv\\q2",
                          "Lettura ini Server: ",
                          "Ini Server PRESENTE",
                          "Ini Server ASSENTE"};

enum class Half { None, PathOnly, Whole };

/// The twins in a state of each side, below the roots of server and client.
template <const Names& N>
Expected twin(World& world, const std::string& root, Half server, Half client, Operation kind,
              Side side, const std::string& clientRoot = "C:\\Client") {
  Expected e{N.code, N.name, kind, side, "", "", "", "", {}, {}};
  std::vector<std::string>& r = e.report;
  r = {banner(N.word), "Lettura informazioni installazioni server"};
  if (server == Half::None) {
    r.push_back("File configurazione lumow.ini ASSENTE");
  } else {
    world.ini("lumow.ini", "ARCHIVI", "Path", root);
    r.push_back("File configurazione lumow.ini PRESENTE");
    r.push_back(N.serverLine + root + N.ini);
    r.push_back(server == Half::Whole ? N.found : N.missing);
  }
  if (server == Half::Whole) {
    world.ini(root + N.ini, "AMBIENTE", "VRINST", "09.93");
    e.serverVersion = "09.93";
    e.serverFolder = root + N.folder;
  }
  r.push_back("Lettura informazioni installazioni client");
  const std::string read =
      "Lettura in HKEY_LOCAL_MACHINE\\Software\\lumo\\programmi della chiave 'PathLocale' "
      "eseguita ";
  if (client == Half::None) {
    r.push_back(read + "senza successo.");
    return e;
  }
  world.value("SOFTWARE\\LUMO\\Programmi", "PathLocale", clientRoot);
  r.push_back(read + "con successo. Risultato: " + clientRoot);
  r.push_back("Lettura ini Client: " + clientRoot + N.ini);
  r.push_back(client == Half::Whole ? "Ini Client PRESENTE" : "Ini Client ASSENTE");
  if (client == Half::Whole) {
    world.ini(clientRoot + N.ini, "AMBIENTE", "VRINST", "09.92");
    e.clientVersion = "09.92";
    e.clientFolder = clientRoot + N.folder;
  }
  return e;
}

template <const Names& N>
std::array<Case, 7> twinCases() {
  return {Case{"twin, absent", "-----",
               [](World& world) {
                 return twin<N>(world, "", Half::None, Half::None, Operation::Setup,
                                Side::ClientServer);
               }},
          Case{"twin, client only", "ccccc",
               [](World& world) {
                 return twin<N>(world, "", Half::None, Half::Whole, Operation::Update, Side::Client,
                                world.at(""));
               }},
          Case{"twin, server only", "ss-s-",
               [](World& world) {
                 return twin<N>(world, world.at(""), Half::Whole, Half::None, Operation::Update,
                                Side::Server);
               }},
          Case{"twin, both sides", "ccccc",
               [](World& world) {
                 return twin<N>(world, world.at(""), Half::Whole, Half::Whole, Operation::Update,
                                Side::ClientServer);
               }},
          Case{"twin, integrated", "ss-s-",
               [](World& world) {
                 return twin<N>(world, world.at(""), Half::Whole, Half::PathOnly, Operation::Update,
                                Side::Server);
               }},
          Case{"twin, standalone", "sssss",
               [](World& world) {
                 return twin<N>(world, "C:\\Client", Half::Whole, Half::None, Operation::Update,
                                Side::Server);
               }},
          Case{"twin, remains", "-----", [](World& world) {
                 return twin<N>(world, world.at(""), Half::PathOnly, Half::PathOnly,
                                Operation::Update, Side::Server);
               }}};
}

// --- Zeltomodelli

constexpr const char* kModelsKey =
    "Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\ZeltoMod.exe";

Expected models(Operation kind, const std::string& version, const std::string& folder,
                std::vector<std::string> report) {
  return {50,
          "ZM",
          kind,
          Side::Server,
          version,
          version,
          folder,
          folder,
          std::move(report),
          {"Gestione ProdTrelv - Verifica integrazione con Dovra SP",
           "Gestione ProdTrelv - Integrazione Dovra SP non rilevata"}};
}

std::vector<std::string> modelsRead(std::vector<std::string> more) {
  std::vector<std::string> lines{
      banner("ZELTOMODELLI"), "Verifica Chiave registro per individuazione componente installata",
      "Lettura in HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion\\App "
      "Paths\\ZeltoMod.exe della chiave 'Path' eseguita con successo. Risultato C:\\ZM",
      "Lettura Informazioni da File Ini: Zeltomodelli.INI"};
  lines.insert(lines.end(), more.begin(), more.end());
  return lines;
}

Expected modelsIn(World& world, const std::string& folder) {
  world.value(kModelsKey, "Path", "C:\\ZM");
  world.ini("zeltomodelli.ini", "Parametri", "PathModelli", folder);
  world.machine().putFile(folder + "\\vers.ini", "06.50.30.00\r\n");
  return models(
      Operation::Update, "06.50.30.00", folder,
      modelsRead({"File Ini PRESENTE", "Lettura informazioni da file " + folder + "\\vers.ini"}));
}

const std::array kZeltomodelli{
    Case{"Zeltomodelli, absent", "-----",
         [](World&) {
           return models(
               Operation::Setup, "", "",
               {banner("ZELTOMODELLI"),
                "Verifica Chiave registro per individuazione componente installata",
                "Lettura in HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion\\App "
                "Paths\\ZeltoMod.exe della chiave 'Path' eseguita senza successo"});
         }},
    Case{"Zeltomodelli, client only", "ccccc",
         [](World& world) { return modelsIn(world, world.at("\\Modelli")); }},
    Case{"Zeltomodelli, server only", "ccccc",
         [](World& world) { return modelsIn(world, world.at("\\mv\\ZM")); }},
    Case{"Zeltomodelli, both sides", "ccccc",
         [](World& world) {
           world.machine().putFile("C:\\ZM\\vers.ini", "06.00\r\n");
           return modelsIn(world, world.at("\\mv\\ZM"));
         }},
    Case{
        "Zeltomodelli, integrated", "ccccc",
        [](World& world) {
          world.machine().configuration().put("SYSTEM", "Complementary_Products", "Integration",
                                              "Path", "S:\\Lumo");
          const std::string folder = world.at("\\mv\\ZM");
          Expected e = modelsIn(world, folder);
          e.report = {"File Ini PRESENTE", "Lettura informazioni da file " + folder + "\\vers.ini"};
          e.log[1] = "Gestione ProdTrelv - Integrazione Dovra SP rilevata con: S:\\Lumo";
          return e;
        }},
    Case{"Zeltomodelli, standalone", "ccccc",
         [](World& world) { return modelsIn(world, "C:\\ZM\\modelli"); }},
    Case{"Zeltomodelli, models folder left behind", "ccccc",
         [](World& world) {
           world.value(kModelsKey, "Path", "C:\\ZM");
           world.ini("zeltomodelli.ini", "Parametri", "PathModelli", world.at("\\mv\\ZM"));
           return models(Operation::Setup, "", world.at("\\mv\\ZM"),
                         modelsRead({"File Ini PRESENTE", "Lettura informazioni da file " +
                                                              world.at("\\mv\\ZM\\vers.ini")}));
         }},
    Case{"Zeltomodelli, remains", "-----", [](World& world) {
           world.value(kModelsKey, "Path", "C:\\ZM");
           return models(Operation::Setup, "", "",
                         modelsRead({"File Ini Zeltomodelli.INI ASSENTE"}));
         }}};

// --- Playing a case

/// The lines of the log and of the report that tell the mode of a product.
struct Mode {
  bool standalone = false;
  std::vector<std::string> log;
  std::string report;
};

Mode modeLines(char mode, const std::string& name, bool serverFolderKnown) {
  const std::string standalone = "Gestione ProdTrelv - " + name + " è in modalità standalone";
  const std::string present = "Rilevata la presenza del prodotto " + name +
                              " installato in modalità Standard. Rilevata presenza componenti ";
  const std::string asked =
      "Gestione ProdTrelv - Controllo cartella installazione server di " + name;
  std::vector<std::string> log;
  if (mode == 'c') {
    return {true,
            {"Gestione ProdTrelv - Esiste il file ini locale di " + name, standalone},
            present + "client"};
  }
  if (mode == 's') {
    return {true,
            {asked,
             "Gestione ProdTrelv - Il path del server è una unità connessa sulla macchina " + name,
             standalone},
            present + "server"};
  }
  if (serverFolderKnown) {
    log.push_back(asked);
  }
  if (mode == 'i') {
    log.push_back("Gestione ProdTrelv - " + name + " NON è in modalità standalone");
    return {false, log, "Il prodotto " + name + " installato in modalità integrata."};
  }
  log.push_back("Gestione ProdTrelv - " + name + " NON è installato");
  return {false, log, "Il prodotto " + name + " non è installato."};
}

void expectRecord(const ProductInformation& found, const Expected& e) {
  EXPECT_EQ(found.productCode, Product{e.code});
  EXPECT_EQ(found.productName, e.name);
  EXPECT_EQ(found.kind, e.kind);
  EXPECT_EQ(found.side, e.side);
  EXPECT_EQ(found.serverVersion, e.serverVersion);
  EXPECT_EQ(found.clientVersion, e.clientVersion);
  EXPECT_EQ(found.serverFolder, e.serverFolder);
  EXPECT_EQ(found.clientFolder, e.clientFolder);
}

void playIn(std::size_t place, const Case& one) {
  SCOPED_TRACE(std::string(one.name) + ", " + kPlaces.at(place).name);
  World world(kPlaces.at(place));
  Expected e = one.build(world);
  const Mode mode = modeLines(one.modes[place], e.name, !e.serverFolder.empty());
  e.report.push_back(mode.report);
  e.log.insert(e.log.begin(),
               "Gestione ProdTrelv - Verifica modalità installazione " + std::string(e.name));
  e.log.insert(e.log.end(), mode.log.begin(), mode.log.end());
  EXPECT_EQ(modProdTrelvInfo::VerifyInstallationMode(world.program(), Product{e.code}),
            mode.standalone);
  expectRecord(world.program().state.inventory.product, e);
  EXPECT_EQ(reportLines(world.machine()), e.report);
  EXPECT_EQ(world.program().lines(), e.log);
  EXPECT_TRUE(world.program().reports().empty());
}

template <class Cases>
void play(const Cases& cases) {
  for (const Case& one : cases) {
    ASSERT_EQ(std::string(one.modes).size(), kPlaces.size());
    for (std::size_t place = 0; place < kPlaces.size(); ++place) {
      playIn(place, one);
    }
  }
}

TEST(InventoryMatrix, Nerio) { play(kNerio); }

TEST(InventoryMatrix, Luda) { play(kLuda); }

TEST(InventoryMatrix, Bilancio) { play(twinCases<kBilancio>()); }

TEST(InventoryMatrix, Tarsena2) { play(twinCases<kTarsena2>()); }

TEST(InventoryMatrix, Zeltomodelli) { play(kZeltomodelli); }

}  // namespace
}  // namespace trelv::tests
