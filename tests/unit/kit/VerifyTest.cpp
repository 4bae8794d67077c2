#include <array>
#include <functional>

#include "support/kit/HostTest.h"

using testing::HasSubstr;
using testing::IsEmpty;

namespace trelv::tests {
namespace {

constexpr const char* kConf = "prg\\com\\setup\\aggdovra\\p.ini";

class Verify : public HostTest {
 protected:
  Verify() { machine().mount("S:", installation_.sharedDisk()); }

  /// The rows of one product: server side, client side.
  std::vector<Json> rows(const std::string& product) {
    std::vector<Json> found;
    const Json all = result({"verify", "S:\\Lumo"})["rows"];
    for (const Json& row : all) {
      if (row["product"] == product) {
        found.push_back(row);
      }
    }
    return found;
  }
  void configure(const std::string& id, const std::string& text) {
    installation_.putCatalogue({{id, id, kConf}});
    installation_.putConfiguration(kConf, text);
  }
  void record(const std::string& id, const std::string& server, const std::string& client) {
    installation_.putServerRecord("[" + id + "]\r\nversion=" + server + "\r\n");
    station_.putClientRecord("[" + id + "]\r\nversion=" + client + "\r\n");
  }
};

const std::string kTwoSections =
    configurationText({{"Setup01", "02.00.00.00", {"a.exe"}, {"b.exe"}},
                       {"Update01", "01.00.00.00", {"a.exe"}, {"b.exe"}},
                       {"Update02", "02.00.00.00", {"a.exe"}, {"b.exe"}}});

TEST_F(Verify, TellsARowForEachSideWithItsKeysInTheirOrder) {
  configure("ZM", kTwoSections);
  record("ZM", "02.00.00.00", "01.00.00.00");
  const std::vector<Json> found = rows("ZM");
  ASSERT_EQ(found.size(), 2U);
  EXPECT_EQ(found[0].dump(),
            "{\"product\":\"ZM\",\"side\":\"Server\",\"recorded\":\"02.00.00.00\",\"configured\":"
            "\"02.00.00.00\",\"found\":\"\",\"mode\":\"absent\",\"state\":\"ok\"}");
  EXPECT_EQ(found[1].dump(),
            "{\"product\":\"ZM\",\"side\":\"Client\",\"recorded\":\"01.00.00.00\",\"configured\":"
            "\"02.00.00.00\",\"found\":\"\",\"mode\":\"absent\",\"state\":\"older\"}");
  EXPECT_EQ(exitCode, 1);
}

TEST_F(Verify, PeopleSeeWhatIsBeingDone) {
  trelv_.console.terminal = true;
  trelv_.run({"verify", "S:\\Lumo"});
  EXPECT_EQ(errors(), "\rVerifica dei prodotti\r                     \r");
}

TEST_F(Verify, ProductsStandInTheOrderOfTheCatalogueThenThoseThatItLacks) {
  installation_.putCatalogue({{"Q2", "", kConf}, {"KXK", "", kConf}, {"nerio", "", kConf}});
  std::string order;
  const Json all = result({"verify", "S:\\Lumo"})["rows"];
  for (const Json& row : all) {
    order += row["product"].get<std::string>() + " ";
  }
  EXPECT_EQ(order, "Q2 Q2 KXK KXK nerio nerio LUDA LUDA ZB ZB ZM ZM ");
}

TEST_F(Verify, DeliveredVersionsOnBothSidesAreAllRight) {
  putFiveProducts(installation_);
  installation_.putServerRecord(deliveredVersions());
  station_.putClientRecord(deliveredVersions());
  EXPECT_EQ(trelv_.run({"verify", "S:\\Lumo"}), 0);
  EXPECT_THAT(output(), HasSubstr("NERIO     Server  03.20.30.00  03.20.30.00  -        -         "
                                  "a posto\n"));
}

TEST_F(Verify, TableHasAHeadingAndAWordForEachState) {
  installation_.putCatalogue({{"ZM", "", kConf}, {"ZB", "", kConf}});
  installation_.putConfiguration(kConf, kTwoSections);
  installation_.putServerRecord("[ZM]\r\nversion=02.00.00.00\r\n");
  station_.putClientRecord("[ZM]\r\nversion=01.00.00.00\r\n[ZB]\r\nversion=03.00.00.00\r\n");
  machine().setIniValue("nerio.ini", "NERIO", "Versione", "03.20");
  machine().setIniValue("luda.ini", "LUDA", "Versione", "07.10");
  trelv_.console.terminal = true;
  EXPECT_EQ(trelv_.run({"verify", "S:\\Lumo"}), 1);
  EXPECT_THAT(errors(), HasSubstr("\rVerifica dei prodotti"));
  EXPECT_EQ(output(),
            "prodotto  lato    registrata   configurata  trovata  modalità   stato\n"
            "ZM        Server  02.00.00.00  02.00.00.00  -        -          a posto\n"
            "ZM        Client  01.00.00.00  02.00.00.00  -        -          da aggiornare\n"
            "ZB        Server  -            02.00.00.00  -        -          da installare\n"
            "ZB        Client  03.00.00.00  02.00.00.00  -        -          più recente della "
            "configurazione\n"
            "NERIO     Server  -            -            -        -          assente\n"
            "NERIO     Client  -            -            03.20    -          presente ma non "
            "registrato\n"
            "LUDA      Server  -            -            07.10    integrata  presente ma non "
            "registrato\n"
            "LUDA      Client  -            -            07.10    integrata  presente ma non "
            "registrato\n"
            "Q2        Server  -            -            -        -          assente\n"
            "Q2        Client  -            -            -        -          assente\n");
  machine().setIniValue("luda.ini", "PathNames", "HomeDir", "C:\\Luda");
  EXPECT_EQ(trelv_.run({"verify", "S:\\Lumo"}), 1);
  EXPECT_THAT(output(), HasSubstr("07.10    Standard  installato in modalità Standard\n"));
  EXPECT_EQ(rows("LUDA").at(0)["mode"], "standalone");
}

TEST_F(Verify, ProductWithoutIdentifierHasNoRecord) {
  installation_.putCatalogue({{"", "", kConf}});
  installation_.putServerRecord("version=02.00.00.00\r\n[]\r\nversion=02.00.00.00\r\n");
  const std::vector<Json> found = rows("");
  ASSERT_EQ(found.size(), 2U);
  EXPECT_EQ(found[0]["recorded"], "");
}

TEST_F(Verify, EmptyHostHasNothingToVerify) { EXPECT_EQ(trelv_.run({"verify", "S:\\Lumo"}), 0); }

TEST_F(Verify, HostThatIsNotThereCannotBeVerified) {
  EXPECT_EQ(trelv_.run({"verify", "S:\\Altro"}), 2);
  EXPECT_EQ(trelv_.run({"verify"}), 64);
}

// --- Versions

struct VersionRow {
  const char* configuration;
  const char* recorded;
  const char* configured;
  const char* state;
};

TEST_F(Verify, StateComparesVersionsAsTheManagerDoes) {
  const std::string setupOnly = configurationText({{"Setup01", "02.00", {"a.exe"}, {"a.exe"}}});
  const std::string gap = "[Update01]\r\nversion=09.00\r\nServer02=a.exe\r\nClient02=a.exe\r\n";
  const std::string noVersion = "[Update01]\r\nServer01=a.exe\r\nClient01=a.exe\r\n";
  const std::vector<VersionRow> table{{kTwoSections.c_str(), "", "02.00.00.00", "missing"},
                                      {kTwoSections.c_str(), "01.00.00.00", "02.00.00.00", "older"},
                                      {kTwoSections.c_str(), "02.00.00.00", "02.00.00.00", "ok"},
                                      {kTwoSections.c_str(), "02000000", "02.00.00.00", "ok"},
                                      {kTwoSections.c_str(), "03.00.00.00", "02.00.00.00", "newer"},
                                      {kTwoSections.c_str(), "03.00", "02.00.00.00", "older"},
                                      {setupOnly.c_str(), "01.00", "02.00", "older"},
                                      {setupOnly.c_str(), "", "02.00", "missing"},
                                      {gap.c_str(), "", "", "absent"},
                                      {gap.c_str(), "01.00", "", "newer"},
                                      {noVersion.c_str(), "", "", "absent"},
                                      {"", "", "", "absent"}};
  for (const VersionRow& row : table) {
    configure("ZM", row.configuration);
    record("ZM", row.recorded, row.recorded);
    for (const Json& side : rows("ZM")) {
      EXPECT_EQ(side["configured"], row.configured) << row.configuration;
      EXPECT_EQ(side["state"], row.state) << row.configuration << row.recorded;
    }
  }
}

TEST_F(Verify, SideWithoutCommandsIsAbsentNotMissing) {
  configure("ZM", configurationText({{"Setup01", "02.00", {"a.exe"}, {}}}));
  record("ZM", "02.00", "");
  EXPECT_EQ(rows("ZM")[0]["state"], "ok");
  EXPECT_EQ(rows("ZM")[1]["state"], "absent");
  EXPECT_EQ(exitCode, 0);
}

// --- What is found on the machine

/// Where an installation lies.
struct Place {
  const char* name;
  const char* root;
  /// Share that the drive R: is connected to; empty: R: is a local drive.
  const char* share;
};

constexpr std::array kPlaces{
    Place{"local drive", "R:\\Lumo", ""},
    Place{"drive connected to this computer", "R:\\Lumo", "\\\\Stazione\\Dati"},
    Place{"drive connected to another computer", "R:\\Lumo", "\\\\SRV\\Dati"},
    Place{"share of this computer", "\\\\STAZIONE\\Dati\\Lumo", ""},
    Place{"share of another computer", "\\\\SRV\\Dati\\Lumo", ""}};

/// A product that stands in a place in some way, and what has to be found.
struct Cell {
  const char* product;
  const char* name;
  /// For each place: s on its own, i integrated, - neither.
  const char* modes;
  const char* server;
  const char* client;
  std::function<void(sim::SimMachine&, const std::string& root)> put;
};

void value(sim::SimMachine& machine, const char* key, const char* name, const std::string& text) {
  machine.registry().setText(machine::Hive::LocalMachine, key, name, text);
}

void registerNerio(sim::SimMachine& machine, const std::string& folder) {
  value(machine, "Software\\Classes\\ClsID\\{9C1D}\\InprocServer32", "",
        folder + "\\setup\\korvatgestionepratiche.ocx");
}

void putLocalNerio(sim::SimMachine& machine, const std::string& home, const char* version) {
  machine.setIniValue("nerio.ini", "NERIO", "Versione", version);
  if (!home.empty()) {
    machine.setIniValue("nerio.ini", "Pathnames", "Homedir", home);
  }
}

void putLuda(sim::SimMachine& machine, const std::string& home, const char* version) {
  if (!home.empty()) {
    machine.setIniValue("luda.ini", "PathNames", "HomeDir", home);
  }
  machine.setIniValue("luda.ini", "LUDA", "Versione", version);
}

constexpr const char* kBilancio = "\\mv\\bilancio\\mvanbil.ini";
constexpr const char* kQ2 = "\\mv\\q2\\mvq2.ini";

void putOnServer(sim::SimMachine& machine, const std::string& root, const char* ini,
                 const char* release) {
  machine.setIniValue("lumow.ini", "ARCHIVI", "Path", root);
  if (*release != '\0') {
    machine.setIniValue(root + ini, "AMBIENTE", "VRINST", release);
  }
}

void putOnClient(sim::SimMachine& machine, const std::string& root, const char* ini,
                 const char* release) {
  value(machine, "SOFTWARE\\LUMO\\Programmi", "PathLocale", root);
  if (*release != '\0') {
    machine.setIniValue(root + ini, "AMBIENTE", "VRINST", release);
  }
}

void putModels(sim::SimMachine& machine, const std::string& folder, const char* version) {
  value(machine, "Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\ZeltoMod.exe", "Path",
        "C:\\ZM");
  if (!folder.empty()) {
    machine.setIniValue("zeltomodelli.ini", "Parametri", "PathModelli", folder);
  }
  if (version != nullptr) {
    machine.putFile(folder + "\\vers.ini", version);
  }
}

const std::vector<Cell> kCells{
    {"NERIO", "absent", "-----", "", "", [](sim::SimMachine&, const std::string&) -> void {}},
    {"NERIO", "client only", "sssss", "", "03.20",
     [](sim::SimMachine& m, const std::string& r) -> void {
       putLocalNerio(m, r + "\\Nerio", "03.20");
     }},
    {"NERIO", "server only", "ss-s-", "03.30", "",
     [](sim::SimMachine& m, const std::string& r) -> void {
       registerNerio(m, r + "\\mv\\nerio");
       m.setIniValue(r + "\\mv\\nerio\\nerio.ini", "NERIO", "Versione", "03.30");
     }},
    {"NERIO", "integrated", "ssisi", "03.20", "03.20",
     [](sim::SimMachine& m, const std::string& r) -> void {
       putLocalNerio(m, "", "03.20");
       registerNerio(m, r + "\\mv\\nerio");
       m.setIniValue(r + "\\mv\\nerio\\nerio.ini", "NERIO", "Versione", "03.20");
     }},
    {"NERIO", "both sides", "sssss", "03.30", "03.20",
     [](sim::SimMachine& m, const std::string& r) -> void {
       putLocalNerio(m, "C:\\Nerio", "03.20");
       registerNerio(m, r + "\\mv\\nerio");
       m.setIniValue(r + "\\mv\\nerio\\nerio.ini", "NERIO", "Versione", "03.30");
     }},
    {"NERIO", "one version only", "-----", "", "03.20",
     [](sim::SimMachine& m, const std::string&) -> void { putLocalNerio(m, "", "03.20"); }},
    {"NERIO", "remains", "ss-s-", "", "",
     [](sim::SimMachine& m, const std::string& r) -> void { registerNerio(m, r + "\\mv\\nerio"); }},
    {"LUDA", "absent", "-----", "", "", [](sim::SimMachine&, const std::string&) -> void {}},
    {"LUDA", "with its program", "sssss", "7.10.3.4", "7.10.3.4",
     [](sim::SimMachine& m, const std::string& r) -> void {
       putLuda(m, r + "\\Luda", "01.00");
       m.putFile(r + "\\Luda\\luda2003.exe", "MZ");
       m.setFileVersion(r + "\\Luda\\luda2003.exe", {7, 10, 3, 4});
     }},
    {"LUDA", "without its program", "sssss", "07.09", "07.09",
     [](sim::SimMachine& m, const std::string& r) -> void { putLuda(m, r + "\\Luda", "07.09"); }},
    {"LUDA", "integrated", "iiiii", "07.10", "07.10",
     [](sim::SimMachine& m, const std::string&) -> void { putLuda(m, "", "07.10"); }},
    {"LUDA", "remains", "sssss", "", "",
     [](sim::SimMachine& m, const std::string& r) -> void { putLuda(m, r + "\\Luda", ""); }},
    {"ZB", "absent", "-----", "", "", [](sim::SimMachine&, const std::string&) -> void {}},
    {"ZB", "client only", "sssss", "", "09.92",
     [](sim::SimMachine& m, const std::string& r) -> void {
       putOnClient(m, r, kBilancio, "09.92");
     }},
    {"ZB", "server only", "ss-s-", "09.93", "",
     [](sim::SimMachine& m, const std::string& r) -> void {
       putOnServer(m, r, kBilancio, "09.93");
     }},
    {"ZB", "both sides", "sssss", "09.93", "09.92",
     [](sim::SimMachine& m, const std::string& r) -> void {
       putOnServer(m, r, kBilancio, "09.93");
       putOnClient(m, "C:\\Locale", kBilancio, "09.92");
     }},
    {"ZB", "the host's archives only", "-----", "", "",
     [](sim::SimMachine& m, const std::string& r) -> void { putOnServer(m, r, kBilancio, ""); }},
    {"Q2", "standalone", "sssss", "02.92", "",
     [](sim::SimMachine& m, const std::string&) -> void {
       putOnServer(m, "C:\\Locale", kQ2, "02.92");
     }},
    {"Q2", "server only", "ss-s-", "02.92", "",
     [](sim::SimMachine& m, const std::string& r) -> void { putOnServer(m, r, kQ2, "02.92"); }},
    {"Q2", "the local path only", "-----", "", "",
     [](sim::SimMachine& m, const std::string& r) -> void { putOnClient(m, r, kQ2, ""); }},
    {"ZM", "absent", "-----", "", "", [](sim::SimMachine&, const std::string&) -> void {}},
    {"ZM", "with its models", "sssss", "06.50", "06.50",
     [](sim::SimMachine& m, const std::string& r) -> void {
       putModels(m, r + "\\mv\\ZM", "06.50\r\naltro");
     }},
    {"ZM", "empty version file", "sssss", "", "",
     [](sim::SimMachine& m, const std::string& r) -> void { putModels(m, r + "\\mv\\ZM", ""); }},
    {"ZM", "models folder left behind", "sssss", "", "",
     [](sim::SimMachine& m, const std::string& r) -> void {
       putModels(m, r + "\\mv\\ZM", nullptr);
     }},
    {"ZM", "remains", "-----", "", "",
     [](sim::SimMachine& m, const std::string&) -> void { putModels(m, "", nullptr); }}};

/// A workstation that is not integrated, with the product of a cell in a place.
class CellHost : public HostTest {
 public:
  CellHost(const Cell& cell, const Place& place) : product_(cell.product) {
    station_.forgetIntegration();
    machine().mount("R:");
    machine().mount("\\\\SRV\\Dati");
    machine().mount("\\\\STAZIONE\\Dati");
    if (*place.share != '\0') {
      machine().system().connectDrive("R:", place.share);
    }
    installation_.putCatalogue({{cell.product, "", kConf}});
    installation_.putConfiguration(kConf, kTwoSections);
    cell.put(machine(), place.root);
  }
  void TestBody() override {}

  /// The rows of both sides, where this version is recorded on both.
  Json rowsWith(const char* version) {
    const std::string text = "[" + product_ + "]\r\nversion=" + version + "\r\n";
    installation_.putServerRecord(text);
    station_.putClientRecord(text);
    return result({"verify", "S:\\Lumo"})["rows"];
  }
  void integrate() {
    machine().configuration().put("SYSTEM", "Complementary_Products", "Integration", "Path",
                                  Installation::kServer);
  }

 private:
  const std::string product_;
};

std::string modeOf(char letter) {
  return letter == 's' ? "standalone" : letter == 'i' ? "integrated" : "absent";
}

void expectCell(const Cell& cell, const Place& place, char letter) {
  CellHost host(cell, place);
  // Without the integration record a start refuses products on their own, whatever the version
  // records say. With it a start takes none for one on its own.
  const bool alone = letter == 's';
  const auto unknown = host.rowsWith("");
  const auto equal = host.rowsWith("02.00.00.00");
  const auto lower = host.rowsWith("01.00.00.00");
  const auto higher = host.rowsWith("03.00.00.00");
  EXPECT_THAT(changingCalls(host.machine()), IsEmpty());
  host.integrate();
  const auto integrated = host.rowsWith("02.00.00.00");
  const auto integratedUnknown = host.rowsWith("");
  for (const std::size_t side : {0U, 1U}) {
    const std::string found = side == 0 ? cell.server : cell.client;
    const char* const unrecorded = found.empty() ? "missing" : "unrecorded";
    EXPECT_EQ(unknown[side]["found"], found);
    EXPECT_EQ(unknown[side]["mode"], modeOf(letter));
    EXPECT_EQ(unknown[side]["recorded"], "");
    EXPECT_EQ(unknown[side]["state"], alone ? "standalone" : unrecorded);
    EXPECT_EQ(equal[side]["state"], alone ? "standalone" : "ok");
    EXPECT_EQ(lower[side]["state"], alone ? "standalone" : "older");
    EXPECT_EQ(higher[side]["state"], alone ? "standalone" : "newer");
    EXPECT_EQ(integrated[side]["state"], "ok");
    // Of a product that the records do not know the integration says nothing.
    if (std::string(cell.product) != "ZM") {
      EXPECT_EQ(integratedUnknown[side]["state"], alone ? "standalone" : unrecorded);
    }
  }
}

TEST(VerifyMatrix, EveryCellIsFoundAsItStands) {
  for (const Cell& cell : kCells) {
    for (std::size_t place = 0; place < kPlaces.size(); ++place) {
      SCOPED_TRACE(std::string(cell.product) + ", " + cell.name + ", " + kPlaces.at(place).name);
      expectCell(cell, kPlaces.at(place), cell.modes[place]);
    }
  }
}

/// A state for what is recorded, configured and found; of a product on its own it depends on
/// whether the machine is integrated.
struct StateRow {
  const char* recorded;
  bool configured;
  bool found;
  const char* state;
  const char* alone;
  const char* aloneIntegrated;
};

constexpr std::array kStates{StateRow{"", false, false, "absent", "standalone", "standalone"},
                             StateRow{"", false, true, "unrecorded", "standalone", "standalone"},
                             StateRow{"", true, false, "missing", "standalone", "standalone"},
                             StateRow{"", true, true, "unrecorded", "standalone", "standalone"},
                             StateRow{"01.00.00.00", false, false, "newer", "standalone", "newer"},
                             StateRow{"01.00.00.00", false, true, "newer", "standalone", "newer"},
                             StateRow{"01.00.00.00", true, false, "older", "standalone", "older"},
                             StateRow{"01.00.00.00", true, true, "older", "standalone", "older"},
                             StateRow{"02.00.00.00", true, false, "ok", "standalone", "ok"},
                             StateRow{"02.00.00.00", true, true, "ok", "standalone", "ok"},
                             StateRow{"03.00.00.00", true, false, "newer", "standalone", "newer"},
                             StateRow{"03.00.00.00", true, true, "newer", "standalone", "newer"}};

void expectState(const StateRow& row, const Cell& cell, const Place& place, bool alone,
                 bool integrated) {
  CellHost host(cell, place);
  host.installation_.putConfiguration(kConf, row.configured ? kTwoSections : "");
  if (integrated) {
    host.integrate();
  }
  const auto rows = host.rowsWith(row.recorded);
  for (const std::size_t side : {0U, 1U}) {
    const bool found = *(side == 0 ? cell.server : cell.client) != '\0';
    if (found == row.found) {
      EXPECT_EQ(rows[side]["state"], !alone       ? row.state
                                     : integrated ? row.aloneIntegrated
                                                  : row.alone);
      EXPECT_EQ(rows[side]["configured"], row.configured ? "02.00.00.00" : "");
    }
  }
  EXPECT_THAT(changingCalls(host.machine()), IsEmpty());
}

TEST(VerifyMatrix, EveryCellHasItsStateWhateverIsRecordedAndConfigured) {
  for (const Cell& cell : kCells) {
    // On a local drive, and on another computer's.
    for (const std::size_t place : {0U, 2U}) {
      for (const StateRow& row : kStates) {
        for (const bool integrated : {false, true}) {
          SCOPED_TRACE(std::string(cell.product) + ", " + cell.name + ", " +
                       kPlaces.at(place).name + ", recorded \"" + row.recorded + "\"" +
                       (row.configured ? ", configured" : "") + (integrated ? ", integrated" : ""));
          expectState(row, cell, kPlaces.at(place), cell.modes[place] == 's', integrated);
        }
      }
    }
  }
}

TEST_F(Verify, ProductsThatTheMachineCannotBeSearchedForAreNeitherFoundNorAlone) {
  for (const char* const id : {"KXK", "RR", "ALTRO"}) {
    configure(id, kTwoSections);
    for (const StateRow& row : kStates) {
      if (row.configured && !row.found) {
        record(id, row.recorded, row.recorded);
        for (const Json& side : rows(id)) {
          EXPECT_EQ(side["found"], "");
          EXPECT_EQ(side["mode"], "absent");
          EXPECT_EQ(side["state"], row.state);
        }
      }
    }
  }
}

TEST_F(Verify, ProductReportIsNeitherBegunNorWritten) {
  putFiveProducts(installation_);
  machine().putFile("C:\\Users\\mario\\Temp\\log\\ProdInfo.txt", "vecchio");
  rows("ZM");
  EXPECT_EQ(machine().fileText("C:\\Users\\mario\\Temp\\log\\ProdInfo.txt"), "vecchio");
  EXPECT_THAT(changingCalls(machine()), IsEmpty());
}

TEST_F(Verify, UsersWhoMayOnlyReadGetTheSame) {
  putFiveProducts(installation_);
  installation_.putServerRecord(deliveredVersions());
  const std::string all = result({"verify", "S:\\Lumo"}).dump();
  share().setRights("S:\\Lumo", {{"*", sim::Right::Read}});
  machine().diskOf("C:\\").setRights("C:\\", {{"*", sim::Right::Read}});
  EXPECT_EQ(result({"verify", "S:\\Lumo"}).dump(), all);
}

TEST_F(Verify, WithoutTheStoreTheClientSideHasNoRecord) {
  configure("ZM", kTwoSections);
  record("ZM", "02.00.00.00", "02.00.00.00");
  machine().configuration().answerAlways(-4002);
  EXPECT_EQ(rows("ZM")[0]["recorded"], "02.00.00.00");
  EXPECT_EQ(rows("ZM")[1]["recorded"], "");
}

}  // namespace
}  // namespace trelv::tests
