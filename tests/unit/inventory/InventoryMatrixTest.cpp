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

using Lines = std::vector<std::string>;

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

/// What stands of a product; the other columns of each table follow. Their paths begin with "@"
/// where they lie in the place.
struct State {
  const char* name;
  /// The mode in each of kPlaces: c on its own by its client, s on its own by its server,
  /// i integrated, - not installed.
  const char* modes;
};

/// What a state leads to, besides the lines that tell the mode. `log` are the lines of the check.
struct Expected {
  Product code{};
  const char* name = "";
  Operation kind{};
  Side side{};
  std::string serverVersion{};
  std::string clientVersion{};
  std::string serverFolder{};
  std::string clientFolder{};
  Lines report{};
  Lines log{};
};

class World {
 public:
  explicit World(const Place& place) : place_(place) {
    for (const char* const volume : {"S:", "\\\\SRV\\Dati", "\\\\STAZIONE\\Dati"}) {
      machine().mount(volume);
    }
    if (*place.share != '\0') {
      machine().system().connectDrive("S:", place.share);
    }
    beginReport(program_);
  }

  sim::SimMachine& machine() { return program_.sim; }
  FakeProgram& program() { return program_; }
  /// A path of a table.
  std::string at(const std::string& path) const {
    return path.rfind('@', 0) == 0 ? place_.root + path.substr(1) : path;
  }
  /// Values that are empty are not written.
  void ini(const std::string& file, const char* section, const char* key,
           const std::string& value) {
    if (!value.empty()) {
      machine().setIniValue(file, section, key, value);
    }
  }
  void value(const std::string& key, const std::string& name, const std::string& text) {
    machine().registry().setText(machine::Hive::LocalMachine, key, name, text);
  }

 private:
  const Place& place_;
  FakeProgram program_;
};

std::string banner(const char* word) {
  return std::string(46, '-') + " VERIFICA PRESENZA " + word + " " + std::string(46, '-');
}

Operation updateIf(bool found) { return found ? Operation::Update : Operation::Setup; }

// --- Nerio

struct NerioState : State {
  // Of the workstation's ini file.
  const char* home;
  const char* version;
  // Where its components are registered, and the version in the ini file there.
  const char* components;
  const char* serverVersion;
};

const std::vector<NerioState> kNerio{
    {{"absent", "-----"}, "", "", "", ""},
    {{"client only", "ccccc"}, "@\\Nerio", "03.20", "", ""},
    {{"server only", "ss-s-"}, "", "", "@\\mv\\nerio", "03.30"},
    {{"both sides", "ccccc"}, "C:\\Nerio", "03.20", "@\\mv\\nerio", "03.30"},
    {{"integrated", "ssisi"}, "", "03.20", "@\\mv\\nerio", "03.20"},
    {{"standalone", "ccccc"}, "C:\\Nerio", "03.20", "C:\\Nerio", "03.20"},
    {{"one version only", "-----"}, "", "03.20", "", ""},
    {{"remains", "ss-s-"}, "", "", "@\\mv\\nerio", ""}};

Expected nerio(World& world, const NerioState& state) {
  const std::string version = state.version;
  const std::string serverVersion = state.serverVersion;
  const std::string components = world.at(state.components);
  const std::string folder = lowerCase(components);
  Expected e{Product::Nerio,
             "NERIO",
             updateIf(!version.empty() || !serverVersion.empty()),
             Side::Server,
             serverVersion,
             version,
             folder,
             world.at(state.home)};
  world.ini("nerio.ini", "Pathnames", "Homedir", e.clientFolder);
  world.ini("nerio.ini", "NERIO", "Versione", version);
  world.ini(folder + "\\nerio.ini", "NERIO", "Versione", serverVersion);
  e.report = {banner("NERIO"),
              version.empty() ? "File Nerio.ini locale ASSENTE" : "File Nerio.ini locale PRESENTE",
              "Verifica componenti registrate"};
  if (folder.empty()) {
    e.report.emplace_back("Nessuna componente registrata");
  } else {
    world.value("Software\\Classes\\ClsID\\{9C1D}\\InprocServer32", "",
                components + "\\setup\\korvatgestionepratiche.ocx");
    e.report.push_back("Componenti registrate in " + folder);
    e.report.push_back(
        (serverVersion.empty() ? "File nerio.ini assente in " : "File nerio.ini presente in ") +
        folder);
  }
  if (version.empty()) {
    e.log.emplace_back("Gestione ProdTrelv - File Ini Nerio locale non presente");
  }
  e.log.emplace_back(
      "Gestione ProdTrelv - Determino path Server di Nerio da componenti registrate");
  return e;
}

// --- Luda

enum class LudaProgram { None, WithoutVersion, OfVersion7 };

struct LudaState : State {
  // Of its ini file.
  const char* home;
  const char* version;
  /// What lies in its home folder.
  LudaProgram program;
};

const std::vector<LudaState> kLuda{
    {{"absent", "-----"}, "", "", LudaProgram::None},
    {{"client only", "ccccc"}, "@\\Luda", "01.00", LudaProgram::OfVersion7},
    {{"server only", "ccccc"}, "@\\mv\\luda2003", "01.00", LudaProgram::OfVersion7},
    {{"both sides", "ccccc"}, "@\\mv\\luda2003", "07.09", LudaProgram::None},
    {{"no version", "ccccc"}, "C:\\Luda", "07.10.00.00", LudaProgram::WithoutVersion},
    {{"integrated", "iiiii"}, "", "07.10", LudaProgram::None},
    {{"standalone", "ccccc"}, "C:\\Programmi\\Luda", "01.00", LudaProgram::OfVersion7},
    {{"remains", "ccccc"}, "C:\\Luda", "", LudaProgram::None}};

Expected luda(World& world, const LudaState& state) {
  const std::string home = world.at(state.home);
  world.ini("luda.ini", "PathNames", "HomeDir", home);
  world.ini("luda.ini", "LUDA", "Versione", state.version);
  const std::string program = home + "\\luda2003.exe";
  if (state.program != LudaProgram::None) {
    world.machine().putFile(program, "MZ");
  }
  std::string version = state.version;
  if (state.program == LudaProgram::OfVersion7) {
    world.machine().setFileVersion(program, {7, 10, 3, 4});
    version = "7.10.3.4";
  }
  return {
      Product::Luda,
      "LUDA",
      updateIf(!version.empty()),
      Side::Server,
      version,
      version,
      home,
      home,
      {banner("LUDA"), version.empty() ? "File ini locale ASSENTE" : "File ini locale PRESENTE"},
      {}};
}

// --- Bilancio and Tarsena2

struct Names {
  Product code;
  const char* name;
  const char* word;
  const char* ini;
  const char* folder;
  const char* serverLine;
  const char* found;
  const char* missing;
};

constexpr Names kBilancio{Product::Zeltobilancio,
                          "ZB",
                          "BILANCIO",
                          "\\mv\\bilancio\\mvanbil.ini",
                          "\\mv\\bilancio",
                          "Lettura ini Server :",
                          "Ini server PRESENTE",
                          "Ini server ASSENTE"};
constexpr Names kTarsena2{Product::Tarsena2,
                          "Q2",
                          "Q2",
                          "\\mv\\q2\\mvq2.ini",
                          "\\mv\\q2",
                          "Lettura ini Server: ",
                          "Ini Server PRESENTE",
                          "Ini Server ASSENTE"};

struct TwinState : State {
  // Of the host's archives and of the local path: the root, empty where none is recorded, and the
  // release in the product's ini file there.
  const char* serverRoot;
  const char* serverRelease;
  const char* clientRoot;
  const char* clientRelease;
  Operation kind;
  Side side;
};

constexpr Operation kSetup = Operation::Setup;
constexpr Operation kUpdate = Operation::Update;
constexpr const char* kClient = "C:\\Client";

const std::vector<TwinState> kTwin{
    {{"absent", "-----"}, "", "", "", "", kSetup, Side::ClientServer},
    {{"client only", "ccccc"}, "", "", "@", "09.92", kUpdate, Side::Client},
    {{"server only", "ss-s-"}, "@", "09.93", "", "", kUpdate, Side::Server},
    {{"both sides", "ccccc"}, "@", "09.93", kClient, "09.92", kUpdate, Side::ClientServer},
    {{"integrated", "ss-s-"}, "@", "09.93", kClient, "", kUpdate, Side::Server},
    {{"standalone", "sssss"}, kClient, "09.93", "", "", kUpdate, Side::Server},
    {{"the host's archives only", "-----"}, "@", "", "", "", kUpdate, Side::Server},
    {{"the local path only", "-----"}, "", "", kClient, "", kSetup, Side::ClientServer},
    {{"remains", "-----"}, "@", "", kClient, "", kUpdate, Side::Server}};

void onServer(World& world, const Names& names, const TwinState& state, Expected& e) {
  e.report.emplace_back("Lettura informazioni installazioni server");
  const std::string root = world.at(state.serverRoot);
  if (root.empty()) {
    e.report.emplace_back("File configurazione lumow.ini ASSENTE");
    return;
  }
  world.ini("lumow.ini", "ARCHIVI", "Path", root);
  e.report.emplace_back("File configurazione lumow.ini PRESENTE");
  e.report.push_back(names.serverLine + root + names.ini);
  world.ini(root + names.ini, "AMBIENTE", "VRINST", state.serverRelease);
  e.serverVersion = state.serverRelease;
  e.serverFolder = e.serverVersion.empty() ? "" : root + names.folder;
  e.report.emplace_back(e.serverVersion.empty() ? names.missing : names.found);
}

void onClient(World& world, const Names& names, const TwinState& state, Expected& e) {
  const std::string read =
      "Lettura in HKEY_LOCAL_MACHINE\\Software\\lumo\\programmi della chiave 'PathLocale' "
      "eseguita ";
  e.report.emplace_back("Lettura informazioni installazioni client");
  const std::string root = world.at(state.clientRoot);
  if (root.empty()) {
    e.report.push_back(read + "senza successo.");
    return;
  }
  world.value("SOFTWARE\\LUMO\\Programmi", "PathLocale", root);
  e.report.push_back(read + "con successo. Risultato: " + root);
  e.report.push_back("Lettura ini Client: " + root + names.ini);
  world.ini(root + names.ini, "AMBIENTE", "VRINST", state.clientRelease);
  e.clientVersion = state.clientRelease;
  e.clientFolder = e.clientVersion.empty() ? "" : root + names.folder;
  e.report.emplace_back(e.clientVersion.empty() ? "Ini Client ASSENTE" : "Ini Client PRESENTE");
}

template <const Names& N>
Expected twin(World& world, const TwinState& state) {
  Expected e{N.code, N.name, state.kind, state.side};
  e.report = {banner(N.word)};
  onServer(world, N, state, e);
  onClient(world, N, state, e);
  return e;
}

// --- Zeltomodelli

struct ModelsState : State {
  /// Where it is registered as a program; null: it is not.
  const char* registered;
  /// The models folder of its ini file, and the version in its version file; null: there is none.
  const char* folder;
  const char* version;
  bool integrated = false;
};

const std::vector<ModelsState> kZeltomodelli{
    {{"absent", "-----"}, nullptr, "", nullptr},
    {{"not registered", "-----"}, nullptr, "C:\\Modelli", "06.50.30.00"},
    {{"client only", "ccccc"}, "C:\\ZM", "@\\Modelli", "06.50.30.00"},
    {{"server only", "ccccc"}, "C:\\ZM", "@\\mv\\ZM", "06.50.30.00"},
    {{"integrated", "ccccc"}, "C:\\ZM", "@\\mv\\ZM", "06.50.30.00", true},
    {{"standalone", "ccccc"}, "C:\\ZM", "C:\\ZM\\modelli", "06.50.30.00"},
    {{"empty version file", "ccccc"}, "C:\\ZM", "C:\\Modelli", ""},
    {{"models folder left behind", "ccccc"}, "C:\\ZM", "@\\mv\\ZM", nullptr},
    {{"remains", "-----"}, "C:\\ZM", "", nullptr},
    {{"remains of an empty path", "-----"}, "", "", nullptr}};

/// The report's lines about the registration.
Lines registration(const ModelsState& state) {
  const std::string read =
      "Lettura in HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion\\App "
      "Paths\\ZeltoMod.exe della chiave 'Path' eseguita ";
  Lines lines{banner("ZELTOMODELLI"),
              "Verifica Chiave registro per individuazione componente installata"};
  if (state.registered == nullptr) {
    lines.push_back(read + "senza successo");
  } else {
    lines.push_back(read + "con successo. Risultato " + state.registered);
    lines.emplace_back("Lettura Informazioni da File Ini: Zeltomodelli.INI");
  }
  return lines;
}

Expected zeltomodelli(World& world, const ModelsState& state) {
  const std::string folder = world.at(state.folder);
  world.ini("zeltomodelli.ini", "Parametri", "PathModelli", folder);
  // A version file where nobody looks.
  world.machine().putFile("C:\\ZM\\vers.ini", "06.00\r\n");
  if (state.version != nullptr) {
    const std::string version = state.version;
    world.machine().putFile(folder + "\\vers.ini", version.empty() ? "" : version + "\r\naltro");
  }
  Expected e{Product::Zeltomodelli, "ZM", Operation::Setup, Side::Server};
  e.log = {"Gestione ProdTrelv - Verifica integrazione con Dovra SP",
           "Gestione ProdTrelv - Integrazione Dovra SP non rilevata"};
  if (state.registered != nullptr) {
    world.value("Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\ZeltoMod.exe", "Path",
                state.registered);
  }
  if (state.integrated) {
    world.machine().configuration().put("SYSTEM", "Complementary_Products", "Integration", "Path",
                                        "S:\\Lumo");
    e.log[1] = "Gestione ProdTrelv - Integrazione Dovra SP rilevata con: S:\\Lumo";
  } else {
    e.report = registration(state);
  }
  if (state.registered == nullptr) {
    return e;
  }
  if (folder.empty()) {
    e.report.emplace_back("File Ini Zeltomodelli.INI ASSENTE");
    return e;
  }
  e.report.emplace_back("File Ini PRESENTE");
  e.report.push_back("Lettura informazioni da file " + folder + "\\vers.ini");
  e.kind = updateIf(state.version != nullptr);
  e.serverVersion = e.clientVersion = state.version != nullptr ? state.version : "";
  e.serverFolder = e.clientFolder = folder;
  return e;
}

// --- Playing a state

/// The lines of the log and of the report that tell the mode of a product.
struct Mode {
  bool standalone = false;
  Lines log;
  std::string report;
};

Mode modeLines(char mode, const std::string& name, bool serverFolderKnown) {
  const std::string standalone = "Gestione ProdTrelv - " + name + " è in modalità standalone";
  const std::string present = "Rilevata la presenza del prodotto " + name +
                              " installato in modalità Standard. Rilevata presenza componenti ";
  const std::string asked =
      "Gestione ProdTrelv - Controllo cartella installazione server di " + name;
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
  Lines log = serverFolderKnown ? Lines{asked} : Lines{};
  if (mode == 'i') {
    log.push_back("Gestione ProdTrelv - " + name + " NON è in modalità standalone");
    return {false, log, "Il prodotto " + name + " installato in modalità integrata."};
  }
  log.push_back("Gestione ProdTrelv - " + name + " NON è installato");
  return {false, log, "Il prodotto " + name + " non è installato."};
}

void expectRecord(const ProductInformation& found, const Expected& e) {
  EXPECT_EQ(found.productCode, e.code);
  EXPECT_EQ(found.productName, e.name);
  EXPECT_EQ(found.kind, e.kind);
  EXPECT_EQ(found.side, e.side);
  EXPECT_EQ(found.serverVersion, e.serverVersion);
  EXPECT_EQ(found.clientVersion, e.clientVersion);
  EXPECT_EQ(found.serverFolder, e.serverFolder);
  EXPECT_EQ(found.clientFolder, e.clientFolder);
}

void expectIn(World& world, Expected e, char letter) {
  const Mode mode = modeLines(letter, e.name, !e.serverFolder.empty());
  e.report.push_back(mode.report);
  e.log.insert(e.log.begin(),
               "Gestione ProdTrelv - Verifica modalità installazione " + std::string(e.name));
  e.log.insert(e.log.end(), mode.log.begin(), mode.log.end());
  EXPECT_EQ(modProdTrelvInfo::VerifyInstallationMode(world.program(), e.code), mode.standalone);
  expectRecord(world.program().state.inventory.product, e);
  EXPECT_EQ(reportLines(world.machine()), e.report);
  EXPECT_EQ(world.program().lines(), e.log);
  EXPECT_TRUE(world.program().reports().empty());
}

/// Every state in every place; `put` lays it out and says what is expected.
template <class States, class Put>
void play(const States& states, const Put& put) {
  for (const auto& state : states) {
    ASSERT_EQ(std::string(state.modes).size(), kPlaces.size());
    for (std::size_t place = 0; place < kPlaces.size(); ++place) {
      SCOPED_TRACE(std::string(state.name) + ", " + kPlaces.at(place).name);
      World world(kPlaces.at(place));
      expectIn(world, put(world, state), state.modes[place]);
    }
  }
}

TEST(InventoryMatrix, Nerio) { play(kNerio, nerio); }

TEST(InventoryMatrix, Luda) { play(kLuda, luda); }

TEST(InventoryMatrix, Bilancio) { play(kTwin, twin<kBilancio>); }

TEST(InventoryMatrix, Tarsena2) { play(kTwin, twin<kTarsena2>); }

TEST(InventoryMatrix, Zeltomodelli) { play(kZeltomodelli, zeltomodelli); }

}  // namespace
}  // namespace trelv::tests
