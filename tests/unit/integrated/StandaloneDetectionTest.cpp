#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "integrated/StandaloneDetection.h"
#include "support/FakeProgram.h"
#include "support/Matchers.h"
#include "support/Texts.h"

namespace trelv::tests {
namespace {

using machine::Hive;
using modProdTrelvManager::EsisteProdottoComplementareStandalone;

constexpr const char* kBegun =
    "Gestione ProdTrelv - Verifica esistenza prodotti complementari standalone";

class StandaloneDetection : public testing::Test {
 protected:
  bool detect() { return EsisteProdottoComplementareStandalone(program_, list_); }
  sim::SimMachine& machine() { return program_.sim; }
  const std::vector<std::string>& lines() const { return program_.lines(); }

  void installNerio() { machine().setIniValue("nerio.ini", "Pathnames", "Homedir", "C:\\Nerio"); }
  void installTwins() {
    machine().registry().setText(Hive::LocalMachine, "Software\\Lumo\\Programmi", "PathLocale",
                                 "C:\\Client");
    machine().setIniValue("C:\\Client\\mv\\q2\\mvq2.ini", "AMBIENTE", "VRINST", "02.92");
    machine().setIniValue("C:\\Client\\mv\\bilancio\\mvanbil.ini", "AMBIENTE", "VRINST", "09.93");
  }
  void installLuda() { machine().setIniValue("luda.ini", "PathNames", "HomeDir", "C:\\Luda"); }
  void installZeltomodelli() {
    machine().registry().setText(
        Hive::LocalMachine, "Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\ZeltoMod.exe",
        "Path", "C:\\ZM");
    machine().setIniValue("zeltomodelli.ini", "Parametri", "PathModelli", "C:\\Modelli");
  }

  FakeProgram program_;
  std::string list_ = "di prima\r\n";
};

TEST_F(StandaloneDetection, AsksForFiveProductsInOrderAndFindsNoneOnAFreshMachine) {
  EXPECT_FALSE(detect());
  EXPECT_EQ(list_, "");
  EXPECT_EQ(lines().front(), kBegun);
  EXPECT_THAT(endsOf(lines(), "Gestione ProdTrelv - Verifica modalità installazione "),
              ElementsAre("NERIO", "Q2", "ZB", "LUDA", "ZM"));
  EXPECT_EQ(lines().back(),
            "Gestione ProdTrelv - Nessun prodotto complementare standalone rilevato");
  detect();
  EXPECT_EQ(machine().callLog().countOf("registry.openKey HKLM\\Software\\Classes\\ClsID"), 1U)
      << "the registered component is searched once for several questions";
}

TEST_F(StandaloneDetection, ListsTheProductsInOrderAndMakesNoReport) {
  installLuda();
  installNerio();
  EXPECT_TRUE(detect());
  EXPECT_EQ(list_, "Nerio Standalone\r\nLuda Standalone\r\n");
  EXPECT_EQ(program_.state.inventory.reportFile, "");
  EXPECT_EQ(machine().openings("C:\\Users").files(), 0U);
}

TEST_F(StandaloneDetection, ListsAllFiveInOrder) {
  installNerio();
  installTwins();
  installLuda();
  installZeltomodelli();
  EXPECT_TRUE(detect());
  EXPECT_EQ(list_,
            "Nerio Standalone\r\nTarsena2 Standalone\r\nBilancio Standalone\r\nLuda Standalone\r\n"
            "Zeltomodelli Standalone\r\n");
  EXPECT_EQ(lines().back(),
            "Gestione ProdTrelv - Rilevato almeno un prodotto complementare standalone");
}

TEST_F(StandaloneDetection, OfAnIntegratedMachineFindsNoneWhateverIsInstalled) {
  installNerio();
  installTwins();
  installLuda();
  installZeltomodelli();
  machine().configuration().put("SYSTEM", "Complementary_Products", "Integration", "Path", "X:\\");
  EXPECT_FALSE(detect());
  EXPECT_EQ(list_, "di prima\r\n");
  EXPECT_THAT(lines(),
              ElementsAre(kBegun, "Gestione ProdTrelv - Verifica integrazione con Dovra SP",
                          "Gestione ProdTrelv - Integrazione Dovra SP rilevata con: X:\\",
                          "Gestione ProdTrelv - Rilevata integrazione, nessun prodotto "
                          "complementare standalone rilevato"));
}

}  // namespace
}  // namespace trelv::tests
