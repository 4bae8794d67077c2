#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "inventory/InstallationMode.h"
#include "unit/inventory/Report.h"

namespace trelv::tests {
namespace {

using machine::Hive;
using modProdTrelvInfo::IsServerPathRemote;
using modProdTrelvInfo::VerifyInstallationMode;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// --- Where a path leads

class ServerPath : public testing::Test {
 protected:
  /// The answer; the path that was left behind stands in path_.
  bool remote(const std::string& path) {
    path_ = path;
    return IsServerPathRemote(program_, path_);
  }
  sim::SimSystem& system() { return program_.sim.system(); }

  FakeProgram program_;
  std::string path_;
};

TEST_F(ServerPath, OnALocalDriveIsNotRemote) {
  EXPECT_FALSE(remote("c:\\Lumo"));
  EXPECT_EQ(path_, "c:\\Lumo");
  EXPECT_THAT(program_.sim.calls(), ElementsAre("system.driveType c:\\"));
}

TEST_F(ServerPath, OnAnyDriveThatIsNoNetworkDriveIsNotRemote) {
  constexpr std::uint32_t kUnknown = 0;
  constexpr std::uint32_t kRemovable = 2;
  constexpr std::uint32_t kDisc = 5;
  constexpr std::uint32_t kInMemory = 6;
  for (const std::uint32_t type : {kUnknown, kRemovable, kDisc, kInMemory}) {
    system().connectDrive("S:", "\\\\SRV\\Dati");
    system().setDriveType("S:", type);
    program_.sim.callLog().clear();
    EXPECT_FALSE(remote("S:\\Lumo")) << type;
    EXPECT_EQ(path_, "S:\\Lumo");
    EXPECT_THAT(program_.sim.calls(), ElementsAre("system.driveType S:\\"));
  }
}

TEST_F(ServerPath, OnADriveThatIsNotThereIsNotRemote) { EXPECT_FALSE(remote("Q:\\Lumo")); }

TEST_F(ServerPath, OnADriveConnectedToThisComputerIsNotRemote) {
  system().connectDrive("S:", "\\\\Stazione\\Dati");
  EXPECT_FALSE(remote("S:\\Lumo"));
  EXPECT_EQ(path_, "\\\\Stazione\\Dati\\Lumo");
}

TEST_F(ServerPath, OnADriveConnectedToAnotherComputerIsRemote) {
  system().connectDrive("S:", "\\\\SRV\\Dati");
  EXPECT_TRUE(remote("S:\\Lumo"));
  EXPECT_EQ(path_, "\\\\SRV\\Dati\\Lumo");
  EXPECT_THAT(program_.sim.calls(), ElementsAre("system.driveType S:\\",
                                                "system.connectionName S:", "system.computerName"));
}

TEST_F(ServerPath, OfAShareIsComparedWithoutCase) {
  EXPECT_FALSE(remote("\\\\stazione\\dati\\Lumo"));
  EXPECT_TRUE(remote("\\\\srv\\dati\\Lumo"));
  EXPECT_EQ(path_, "\\\\srv\\dati\\Lumo");
}

TEST_F(ServerPath, OfThisComputerIsLocalUnderEachSpellingOfItsName) {
  for (const char* const path : {"\\\\STAZIONE\\Dati", "\\\\stazione\\Dati\\Lumo",
                                 "\\\\StAzIoNe\\c$\\Lumo", "\\\\?\\UNC\\Stazione\\Dati\\Lumo"}) {
    EXPECT_FALSE(remote(path)) << path;
    EXPECT_EQ(path_, path);
  }
}

TEST_F(ServerPath, OfThisComputerByAnotherNameCountsAsRemote) {
  for (const char* const path : {"\\\\localhost\\Dati", "\\\\127.0.0.1\\Dati",
                                 "\\\\stazione.studio.local\\Dati", "//stazione/Dati"}) {
    EXPECT_TRUE(remote(path)) << path;
  }
}

TEST_F(ServerPath, OfAComputerWithAnAccentIsComparedWithoutCase) {
  system().setComputerName("STUDIO-È");
  EXPECT_FALSE(remote("\\\\studio-è\\Dati"));
  system().setComputerName("studio-è");
  EXPECT_FALSE(remote("\\\\STUDIO-È\\Dati"));
  EXPECT_TRUE(remote("\\\\studio-e\\Dati"));
}

TEST_F(ServerPath, OfAComputerWhoseNameOnlyBeginsAlikeIsRemote) {
  EXPECT_TRUE(remote("\\\\STAZIONE2\\dati"));
  EXPECT_TRUE(remote("\\\\STAZIONE"));
}

TEST_F(ServerPath, WithAFolderOfThisComputersNameCountsAsThisComputer) {
  EXPECT_FALSE(remote("\\\\SRV\\backup\\stazione\\Lumo"));
}

TEST_F(ServerPath, WithoutDriveAndShareIsRemote) {
  EXPECT_TRUE(remote(""));
  EXPECT_TRUE(remote("S"));
  EXPECT_TRUE(remote("Lumo\\mv"));
}

TEST_F(ServerPath, OfThisComputerIsLocalForEveryShareWhenItsNameCannotBeRead) {
  system().failComputerName(system_code::kAccessDenied);
  EXPECT_FALSE(remote("\\\\SRV\\dati"));
  EXPECT_TRUE(remote("Lumo\\mv"));
}

TEST_F(ServerPath, WhoseConnectionIsNotToldIsThatOfItsDevice) {
  system().connectDrive("S:", "\\\\SRV\\Dati");
  system().failConnectionName(2250);
  EXPECT_TRUE(remote("S:\\Lumo"));
  EXPECT_EQ(path_, "\\Device\\LanmanRedirector\\;S:000000000000a1b2\\SRV\\Dati\\Lumo");
  system().connectDrive("T:", "\\\\STAZIONE\\Dati");
  EXPECT_FALSE(remote("T:\\Lumo"));
}

TEST_F(ServerPath, WhoseConnectionIsTooLongIsThatOfItsDevice) {
  system().connectDrive("S:", "\\\\SRV\\" + std::string(248, 'd'));
  EXPECT_TRUE(remote("S:"));
  EXPECT_EQ(path_, "\\\\SRV\\" + std::string(248, 'd'));
  system().connectDrive("S:", "\\\\SRV\\" + std::string(249, 'd'));
  EXPECT_TRUE(remote("S:"));
  EXPECT_EQ(path_.substr(0, 8), "\\Device\\");
}

TEST_F(ServerPath, OfALongDeviceIsAskedWithABufferThatDoubles) {
  system().connectDrive("S:", "\\\\SRV\\Dati");
  system().failConnectionName(2250);
  system().setDevices("S:", {"\\Device\\" + std::string(1000, 'x') + "\\STAZIONE\\d"});
  EXPECT_FALSE(remote("S:\\Lumo"));
  EXPECT_EQ(program_.sim.callLog().countOf("system.deviceNames S:"), 3U);
}

TEST_F(ServerPath, OfADeviceThatFitsExactlyIsAskedOnce) {
  system().connectDrive("S:", "\\\\SRV\\Dati");
  system().failConnectionName(2250);
  system().setDevices("S:", {std::string(254, 'x')});
  remote("S:\\Lumo");
  EXPECT_EQ(path_, std::string(254, 'x') + "\\Lumo");
  EXPECT_EQ(program_.sim.callLog().countOf("system.deviceNames S:"), 1U);
}

TEST_F(ServerPath, OfADriveWithSeveralDevicesIsThatOfTheCurrentOne) {
  system().connectDrive("S:", "\\\\SRV\\Dati");
  system().failConnectionName(2250);
  system().setDevices("S:", {"\\Device\\Neu", "\\Device\\Alt"});
  EXPECT_TRUE(remote("S:\\Lumo"));
  EXPECT_EQ(path_, "\\Device\\Neu\\Lumo");
}

TEST_F(ServerPath, WhoseDeviceIsNotToldEitherIsItsRest) {
  system().connectDrive("S:", "\\\\STAZIONE\\Dati");
  system().failConnectionName(2250);
  system().failDeviceNames(system_code::kFileNotFound);
  EXPECT_TRUE(remote("S:\\Lumo"));
  EXPECT_EQ(path_, "\\Lumo");
  EXPECT_EQ(program_.sim.callLog().countOf("system.deviceNames S:"), 1U);
}

TEST_F(ServerPath, OfADeviceThatNoBufferHoldsEndsAllTheSame) {
  system().connectDrive("S:", "\\\\STAZIONE\\Dati");
  system().failConnectionName(2250);
  system().failDeviceNames(system_code::kInsufficientBuffer);
  EXPECT_TRUE(remote("S:\\Lumo"));
  EXPECT_EQ(path_, "\\Lumo");
}

// --- The mode

class InstallationMode : public testing::Test {
 protected:
  InstallationMode() { beginReport(program_); }

  bool verify(std::int16_t code) { return VerifyInstallationMode(program_, Product{code}); }
  sim::SimMachine& machine() { return program_.sim; }
  const std::vector<std::string>& lines() const { return program_.lines(); }
  std::vector<std::string> report() { return reportLines(machine()); }

  void putServerBilancio(const std::string& root) {
    machine().setIniValue("lumow.ini", "ARCHIVI", "Path", root);
    machine().setIniValue(root + "\\mv\\bilancio\\mvanbil.ini", "AMBIENTE", "VRINST", "1");
  }

  FakeProgram program_;
};

TEST_F(InstallationMode, WithAClientFolderIsStandalone) {
  machine().setIniValue("nerio.ini", "Pathnames", "Homedir", "C:\\Nerio");
  EXPECT_TRUE(verify(10));
  EXPECT_THAT(
      lines(),
      ElementsAre("Gestione ProdTrelv - Verifica modalità installazione NERIO",
                  "Gestione ProdTrelv - File Ini Nerio locale non presente",
                  "Gestione ProdTrelv - Determino path Server di Nerio da componenti registrate",
                  "Gestione ProdTrelv - Esiste il file ini locale di NERIO",
                  "Gestione ProdTrelv - NERIO è in modalità standalone"));
  EXPECT_EQ(report().back(),
            "Rilevata la presenza del prodotto NERIO installato in modalità Standard. Rilevata "
            "presenza componenti client");
}

TEST_F(InstallationMode, WithAServerFolderOnALocalDriveIsStandalone) {
  putServerBilancio("C:\\Lumo");
  EXPECT_TRUE(verify(30));
  EXPECT_THAT(lines(),
              ElementsAre("Gestione ProdTrelv - Verifica modalità installazione ZB",
                          "Gestione ProdTrelv - Controllo cartella installazione server di ZB",
                          "Gestione ProdTrelv - Il path del server è una unità connessa sulla "
                          "macchina ZB",
                          "Gestione ProdTrelv - ZB è in modalità standalone"));
  EXPECT_EQ(report().back(),
            "Rilevata la presenza del prodotto ZB installato in modalità Standard. Rilevata "
            "presenza componenti server");
}

TEST_F(InstallationMode, WithAServerFolderOnAnotherComputerIsNotInstalledHere) {
  machine().mount("S:");
  machine().system().connectDrive("S:", "\\\\SRV\\Dati");
  putServerBilancio("S:\\Lumo");
  EXPECT_FALSE(verify(30));
  EXPECT_THAT(lines(),
              ElementsAre("Gestione ProdTrelv - Verifica modalità installazione ZB",
                          "Gestione ProdTrelv - Controllo cartella installazione server di ZB",
                          "Gestione ProdTrelv - ZB NON è installato"));
  EXPECT_EQ(report().back(), "Il prodotto ZB non è installato.");
  // The record keeps the folder as it was found.
  EXPECT_EQ(program_.state.inventory.product.serverFolder, "S:\\Lumo\\mv\\bilancio");
}

TEST_F(InstallationMode, WithBothVersionsAndNoFolderHereIsIntegrated) {
  machine().setIniValue("luda.ini", "LUDA", "Versione", "07.10");
  EXPECT_FALSE(verify(20));
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Verifica modalità installazione LUDA",
                                   "Gestione ProdTrelv - LUDA NON è in modalità standalone"));
  EXPECT_EQ(report().back(), "Il prodotto LUDA installato in modalità integrata.");
}

TEST_F(InstallationMode, WithOneVersionOnlyIsNotInstalled) {
  machine().setIniValue("nerio.ini", "NERIO", "Versione", "03.20");
  EXPECT_FALSE(verify(10));
  EXPECT_EQ(lines().back(), "Gestione ProdTrelv - NERIO NON è installato");
  EXPECT_EQ(report().back(), "Il prodotto NERIO non è installato.");
}

TEST_F(InstallationMode, OfAnUnknownCodeIsToldAndNotStandalone) {
  EXPECT_FALSE(verify(15));
  EXPECT_THAT(lines(), ElementsAre(HasSubstr("Prodotto  15 non riconosciuto")));
  EXPECT_THAT(program_.reports(), IsEmpty());
}

TEST_F(InstallationMode, OfACodeWithoutCheckIsAnsweredFromTheLastRecord) {
  program_.state.inventory.product.clientFolder = "C:\\vecchio";
  EXPECT_TRUE(verify(80));
  EXPECT_EQ(lines()[1], "Gestione ProdTrelv - Esiste il file ini locale di VELTRA");
}

TEST_F(InstallationMode, OfProductsThatNobodyLooksForIsNotInstalled) {
  EXPECT_FALSE(verify(60));
  EXPECT_FALSE(verify(70));
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Verifica modalità installazione KXK",
                                   "Gestione ProdTrelv - KXK NON è installato",
                                   "Gestione ProdTrelv - Verifica modalità installazione RR",
                                   "Gestione ProdTrelv - RR NON è installato"));
}

}  // namespace
}  // namespace trelv::tests
