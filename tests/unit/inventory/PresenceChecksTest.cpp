// What a check does besides its finding; that stands, product by product and state by state, in
// InventoryMatrixTest.cpp.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "inventory/PresenceChecks.h"
#include "support/Matchers.h"
#include "unit/inventory/Report.h"

namespace trelv::tests {
namespace {

using machine::Hive;

constexpr const char* kPrograms = "Software\\Lumo\\Programmi";
constexpr const char* kLocalRead =
    "Lettura in HKEY_LOCAL_MACHINE\\Software\\lumo\\programmi della chiave 'PathLocale' eseguita ";
constexpr const char* kVersionFile = "C:\\Modelli\\vers.ini";

class PresenceChecks : public testing::Test {
 protected:
  PresenceChecks() { beginReport(program_); }

  sim::SimMachine& machine() { return program_.sim; }
  void check(std::int16_t code) { modProdTrelvInfo::CheckProduct(program_, Product{code}); }
  ProductInformation& record() { return program_.state.inventory.product; }
  std::vector<std::string> report() { return reportLines(machine()); }

  void setHostArchives(const std::string& path) {
    machine().setIniValue("lumow.ini", "Archivi", "Path", path);
  }
  void setLocalPath(const std::string& path) {
    machine().registry().setText(Hive::LocalMachine, kPrograms, "PathLocale", path);
  }
  void setRelease(const std::string& ini, const std::string& release) {
    machine().setIniValue(ini, "Ambiente", "VrInst", release);
  }
  /// Zeltomodelli, registered, with this models folder.
  void putModels(const std::string& folder) {
    machine().registry().setText(
        Hive::LocalMachine, "Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\ZeltoMod.exe",
        "Path", "C:\\ZM");
    machine().setIniValue("zeltomodelli.ini", "Parametri", "PathModelli", folder);
  }

  void expectRecord(std::int16_t code, const std::string& name, Operation kind, Side side) {
    EXPECT_EQ(record().productCode, Product{code});
    EXPECT_EQ(record().productName, name);
    EXPECT_EQ(record().kind, kind);
    EXPECT_EQ(record().side, side);
  }
  void expectVersions(const std::string& server, const std::string& client) {
    EXPECT_EQ(record().serverVersion, server);
    EXPECT_EQ(record().clientVersion, client);
  }
  void expectFolders(const std::string& server, const std::string& client) {
    EXPECT_EQ(record().serverFolder, server);
    EXPECT_EQ(record().clientFolder, client);
  }

  FakeProgram program_;
  /// A record that a check before may have left.
  const ProductInformation before_{Product::Zeltobilancio, "ZB",         "1",     "2",
                                   Operation::Update,      Side::Client, "C:\\a", "C:\\b"};
};

// --- All products

TEST_F(PresenceChecks, ProductsThatNobodyLooksForAreSetUpNowhere) {
  for (const std::int16_t code : {std::int16_t{60}, std::int16_t{70}}) {
    record() = before_;
    check(code);
    expectRecord(code, "", Operation::Setup, Side::None);
    expectVersions("", "");
    expectFolders("", "");
  }
  EXPECT_THAT(report(), IsEmpty());
  EXPECT_THAT(program_.lines(), IsEmpty());
}

TEST_F(PresenceChecks, AnyOtherCodeLeavesTheRecord) {
  record() = before_;
  machine().callLog().clear();
  for (const int code : {0, 5, 11, 80, 100, -10}) {
    check(static_cast<std::int16_t>(code));
    expectRecord(30, "ZB", Operation::Update, Side::Client);
    expectVersions("1", "2");
    expectFolders("C:\\a", "C:\\b");
  }
  EXPECT_EQ(machine().callCount(), 0U);
}

TEST_F(PresenceChecks, WithoutReportTheyFindTheSame) {
  machine().removeTree(kReport);
  setHostArchives("S:\\Lumo");
  check(30);
  expectRecord(30, "ZB", Operation::Update, Side::Server);
  EXPECT_FALSE(machine().fileExists(kReport));
}

TEST_F(PresenceChecks, OnATerminalServerTheUsersIniFilesAreRead) {
  machine().setEdition(sim::WindowsEdition::Win2003TerminalServer);
  machine().putFile("C:\\WINDOWS\\nerio.ini", "[NERIO]\r\nVersione=1\r\n");
  machine().putFile("C:\\Users\\mario\\windows\\nerio.ini", "[NERIO]\r\nVersione=2\r\n");
  machine().putFile("C:\\WINDOWS\\luda.ini", "[LUDA]\r\nVersione=1\r\n");
  check(10);
  expectVersions("", "2");
  check(20);
  expectVersions("", "");
}

// --- Nerio

TEST_F(PresenceChecks, NerioReadsInOrder) {
  machine().registry().setText(Hive::LocalMachine,
                               "Software\\Classes\\ClsID\\{5F2A}\\InprocServer32", "",
                               "C:\\n\\setup\\korvatgestionepratiche.ocx");
  machine().putFile("C:\\n\\nerio.ini", "[NERIO]\r\nVersione=1\r\n");
  machine().callLog().clear();
  check(10);
  std::vector<std::string> asked;
  for (const std::string& call : machine().calls()) {
    if (call.find("ProdInfo") == std::string::npos && call.find("registry.") != 0) {
      asked.push_back(call);
    }
  }
  EXPECT_THAT(asked, ElementsAre("profiles.readValue C:\\WINDOWS\\NERIO.INI [Pathnames] Homedir",
                                 "profiles.readValue C:\\WINDOWS\\NERIO.INI [NERIO] Versione",
                                 "files.look c:\\n\\NERIO.INI", "files.read c:\\n\\NERIO.INI"));
}

// --- Luda

TEST_F(PresenceChecks, LudaOfAProgramWithVersionDoesNotReadTheInisVersion) {
  machine().setIniValue("luda.ini", "PathNames", "HomeDir", "C:\\Luda");
  machine().putFile("C:\\Luda\\LUDA2003.EXE", "MZ");
  machine().setFileVersion("C:\\Luda\\luda2003.exe", {7, 10, 0, 12});
  machine().callLog().clear();
  check(20);
  expectVersions("7.10.0.12", "7.10.0.12");
  EXPECT_EQ(machine().openings("").profileReads + machine().callLog().countOf("profiles.read"), 1U);
}

TEST_F(PresenceChecks, LudaWithoutAHomeFolderIsLookedForInTheRootOfTheCurrentDrive) {
  machine().putFile("C:\\luda2003.exe", "MZ");
  machine().setFileVersion("C:\\luda2003.exe", {7, 10, 0, 12});
  machine().volumes().setCurrentFolder("C:\\Lumo");
  check(20);
  expectVersions("7.10.0.12", "7.10.0.12");
  expectFolders("", "");
}

// --- Bilancio and Tarsena2

TEST_F(PresenceChecks, RootsLoseTheirBlanksInPathsOnly) {
  machine().mount("S:");
  setHostArchives("\"  S:\\Lumo  \"");
  setRelease("S:\\Lumo\\mv\\bilancio\\mvanbil.ini", "1");
  setLocalPath("  C:\\Client ");
  setRelease("C:\\Client\\mv\\bilancio\\mvanbil.ini", "2");
  check(30);
  expectVersions("1", "2");
  expectFolders("S:\\Lumo\\mv\\bilancio", "C:\\Client\\mv\\bilancio");
  EXPECT_EQ(report()[6], std::string(kLocalRead) + "con successo. Risultato:   C:\\Client ");
}

TEST_F(PresenceChecks, EmptyLocalPathCountsAsNotRead) {
  setLocalPath("");
  check(30);
  EXPECT_EQ(report().back(), std::string(kLocalRead) + "senza successo.");
}

TEST_F(PresenceChecks, LocalPathOfAnotherTypeIsNoFailure) {
  machine().registry().setStored(Hive::LocalMachine, kPrograms, "PathLocale",
                                 machine::value_type::kNumber, std::string("\x07\0\0\0", 4));
  check(30);
  EXPECT_EQ(report()[4], std::string(kLocalRead) + "con successo. Risultato: 7");
  EXPECT_THAT(program_.reports(), IsEmpty());
}

// --- Zeltomodelli

TEST_F(PresenceChecks, ZeltomodelliOfAnIntegratedMachineIsNotLookedForInTheRegistry) {
  machine().configuration().put("SYSTEM", "Complementary_Products", "Integration", "Path",
                                "S:\\Lumo");
  putModels("C:\\Modelli");
  machine().callLog().clear();
  check(50);
  EXPECT_EQ(machine().callLog().countOf("registry."), 0U);
}

TEST_F(PresenceChecks, BlanksRoundTheModelsFolderAreDroppedForItsVersionFileOnly) {
  putModels("\" C:\\Modelli \"");
  check(50);
  expectFolders(" C:\\Modelli ", " C:\\Modelli ");
  EXPECT_EQ(report().back(), std::string("Lettura informazioni da file ") + kVersionFile);
}

TEST_F(PresenceChecks, AVersionFileThatCannotBeReadIsToldAndItsFolderKept) {
  putModels("C:\\Modelli");
  machine().putFile(kVersionFile, "06.50");
  machine().diskOf("C:\\").holdOpen(kVersionFile, sim::Sharing::None);
  check(50);
  expectRecord(50, "ZM", Operation::Setup, Side::Server);
  expectFolders("C:\\Modelli", "C:\\Modelli");
  EXPECT_THAT(program_.lines().back(), StartsWith("Gestione ProdTrelv - Errore in lettura file: "));
}

TEST_F(PresenceChecks, AVersionFileIsReadInTheAnsiCodePage) {
  putModels("C:\\Modelli");
  machine().putFile(kVersionFile, "6.5 \xE0");
  check(50);
  expectVersions("6.5 à", "6.5 à");
}

}  // namespace
}  // namespace trelv::tests
