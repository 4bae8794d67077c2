#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "inventory/InstallationMode.h"
#include "support/Matchers.h"
#include "unit/inventory/Report.h"

namespace trelv::tests {
namespace {

using modProdTrelvInfo::IsServerPathRemote;
using modProdTrelvInfo::VerifyInstallationMode;

constexpr SystemCode kNotConnected = 2250;

// --- Where a path leads

class ServerPath : public testing::Test {
 protected:
  ServerPath() { system().connectDrive("S:", R"(\\SRV\Dati)"); }

  /// The answer; the path that was left behind stands in path_.
  bool remote(const std::string& path) {
    path_ = path;
    return IsServerPathRemote(program_, path_);
  }
  sim::SimSystem& system() { return program_.sim.system(); }
  std::size_t askedForDevices() { return program_.sim.callLog().countOf("system.deviceNames S:"); }

  FakeProgram program_;
  std::string path_;
};

TEST_F(ServerPath, IsRemoteUnlessThisComputerHoldsIt) {
  system().connectDrive("T:", R"(\\Stazione\Dati)");
  struct {
    const char* path;
    bool remote;
    /// What it leads to, where that is another path.
    const char* target = nullptr;
  } const rows[]{
      {R"(c:\Lumo)", false},
      {R"(Q:\Lumo)", false},
      {R"(S:\Lumo)", true, R"(\\SRV\Dati\Lumo)"},
      {R"(T:\Lumo)", false, R"(\\Stazione\Dati\Lumo)"},
      // Shares of this computer, under each spelling of its name.
      {R"(\\STAZIONE\Dati)", false},
      {R"(\\stazione\dati\Lumo)", false},
      {R"(\\StAzIoNe\c$\Lumo)", false},
      {R"(\\?\UNC\Stazione\Dati\Lumo)", false},
      // Other names of this computer count as another one.
      {R"(\\localhost\Dati)", true},
      {R"(\\127.0.0.1\Dati)", true},
      {R"(\\stazione.studio.local\Dati)", true},
      {"//stazione/Dati", true},
      // Others, whose names may begin alike; a folder of this computer's name counts as it.
      {R"(\\srv\dati\Lumo)", true},
      {R"(\\STAZIONE2\dati)", true},
      {R"(\\STAZIONE)", true},
      {R"(\\SRV\backup\stazione\Lumo)", false},
      // Neither drive nor share.
      {"", true},
      {"S", true},
      {R"(Lumo\mv)", true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.path);
    EXPECT_EQ(remote(row.path), row.remote);
    EXPECT_EQ(path_, row.target != nullptr ? row.target : row.path);
  }
}

TEST_F(ServerPath, OnAnyDriveThatIsNoNetworkDriveIsNotRemote) {
  constexpr std::uint32_t kUnknown = 0;
  constexpr std::uint32_t kRemovable = 2;
  constexpr std::uint32_t kDisc = 5;
  constexpr std::uint32_t kInMemory = 6;
  for (const std::uint32_t type : {kUnknown, kRemovable, kDisc, kInMemory}) {
    system().setDriveType("S:", type);
    program_.sim.callLog().clear();
    EXPECT_FALSE(remote("S:\\Lumo")) << type;
    EXPECT_EQ(path_, "S:\\Lumo");
    EXPECT_THAT(program_.sim.calls(), ElementsAre("system.driveType S:\\"));
  }
}

TEST_F(ServerPath, OnANetworkDriveAsksForConnectionAndComputer) {
  EXPECT_TRUE(remote("S:\\Lumo"));
  EXPECT_THAT(program_.sim.calls(), ElementsAre("system.driveType S:\\",
                                                "system.connectionName S:", "system.computerName"));
}

TEST_F(ServerPath, OfAComputerWithAnAccentIsComparedWithoutCase) {
  system().setComputerName("STUDIO-È");
  EXPECT_FALSE(remote("\\\\studio-è\\Dati"));
  system().setComputerName("studio-è");
  EXPECT_FALSE(remote("\\\\STUDIO-È\\Dati"));
  EXPECT_TRUE(remote("\\\\studio-e\\Dati"));
}

TEST_F(ServerPath, OfThisComputerIsLocalForEveryShareWhenItsNameCannotBeRead) {
  system().failComputerName(system_code::kAccessDenied);
  EXPECT_FALSE(remote("\\\\SRV\\dati"));
  EXPECT_TRUE(remote("Lumo\\mv"));
}

TEST_F(ServerPath, WhoseConnectionIsNotToldIsThatOfItsDevice) {
  system().failConnectionName(kNotConnected);
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

TEST_F(ServerPath, OfADeviceIsThatOfTheCurrentOneAskedWithABufferThatDoubles) {
  system().failConnectionName(kNotConnected);
  struct {
    std::vector<std::string> devices;
    bool remote;
    std::string target;
    std::size_t asked;
  } const rows[]{
      {{"\\Device\\Neu", "\\Device\\Alt"}, true, "\\Device\\Neu\\Lumo", 1},
      {{std::string(254, 'x')}, true, std::string(254, 'x') + "\\Lumo", 1},
      {{std::string(600, 'x')}, true, std::string(600, 'x') + "\\Lumo", 3},
      // What is asked with a buffer of a million characters is the most.
      {{std::string(600'000, 'x')}, true, std::string(600'000, 'x') + "\\Lumo", 13},
      {{std::string(1'100'000, 'x')}, true, "\\Lumo", 13},
      {{std::string(1000, 'x') + "\\STAZIONE\\d"},
       false,
       std::string(1000, 'x') + "\\STAZIONE\\d\\Lumo",
       3},
  };
  for (const auto& row : rows) {
    system().setDevices("S:", row.devices);
    program_.sim.callLog().clear();
    EXPECT_EQ(remote("S:\\Lumo"), row.remote);
    EXPECT_EQ(path_, row.target);
    EXPECT_EQ(askedForDevices(), row.asked);
  }
}

TEST_F(ServerPath, WhoseDeviceIsNotToldEitherIsItsRest) {
  system().connectDrive("S:", "\\\\STAZIONE\\Dati");
  system().failConnectionName(kNotConnected);
  system().failDeviceNames(system_code::kFileNotFound);
  EXPECT_TRUE(remote("S:\\Lumo"));
  EXPECT_EQ(path_, "\\Lumo");
  EXPECT_EQ(askedForDevices(), 1U);
  // No buffer holds it: asking ends all the same.
  system().failDeviceNames(system_code::kInsufficientBuffer);
  EXPECT_TRUE(remote("S:\\Lumo"));
  EXPECT_EQ(path_, "\\Lumo");
}

// --- The mode; that of each product in each state stands in InventoryMatrixTest.cpp

class InstallationMode : public testing::Test {
 protected:
  InstallationMode() { beginReport(program_); }

  bool verify(std::int16_t code) { return VerifyInstallationMode(program_, Product{code}); }
  const std::vector<std::string>& lines() const { return program_.lines(); }

  FakeProgram program_;
};

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
