#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/XmlStore.h"
#include "platform/modConfig.h"
#include "support/FakeProgram.h"

namespace trelv::modConfig {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using tests::FakeProgram;

constexpr const char* kFile = "C:\\Lumo\\Conf\\config.xml";

/// A workstation whose configuration store is ours.
class OwnStoreTest : public testing::Test {
 protected:
  OwnStoreTest() {
    constexpr const char* kPointers = "SOFTWARE\\LUMO\\Configurazione";
    program.sim.registry().setText(machine::Hive::LocalMachine, kPointers, "Schema",
                                   "C:\\Lumo\\Conf\\schema.xsd");
    program.sim.registry().setText(machine::Hive::LocalMachine, kPointers, "Config", kFile);
    program.sim.putFile("C:\\Lumo\\Conf\\schema.xsd", "<schema/>");
    program.sim.putFile(kFile, "<configuration/>");
    program.sim.useConfigurationLibrary(store);
  }

  std::string read() {
    std::string value;
    done = GetParameterXML(program, {999, "Complementary_Products", "Integration", "Path"},
                           "_DEFAULT_VALUE_", 1000, value);
    return value;
  }
  bool write(const std::string& value) {
    return SetParameterXML(program, {999, "Complementary_Products", "Integration", "Path"}, 1,
                           value);
  }

  FakeProgram program;
  XmlStore store{program.sim.machine().files, program.sim.machine().registry,
                 program.sim.machine().locale, program.sim.machine().system,
                 program.sim.machine().exclusion};
  bool done = false;
};

TEST_F(OwnStoreTest, GivesTheDefaultUntilSomethingIsWritten) {
  EXPECT_EQ(read(), "_DEFAULT_VALUE_");
  EXPECT_TRUE(write("S:\\Lumo"));
  EXPECT_EQ(read(), "S:\\Lumo");
  EXPECT_TRUE(done);
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST_F(OwnStoreTest, GivesAnEmptyValueAsEmpty) {
  EXPECT_TRUE(write(""));
  EXPECT_EQ(read(), "");
  EXPECT_TRUE(done);
}

TEST_F(OwnStoreTest, IsReadThreeTimesWhenTheFileHasNoBytes) {
  program.sim.putFile(kFile, "");
  program.sim.callLog().clear();
  EXPECT_EQ(read(), "");
  EXPECT_FALSE(done);
  EXPECT_EQ(program.sim.callLog().openings(kFile).reads, 3U);
  EXPECT_THAT(program.reportTexts(),
              ElementsAre("Errore in lettura chiave da file di configurazione: Document "
                          "Empty\r\nSezione: Complementary_Products\r\nChiave: "
                          "Integration\r\nProdotto: SYSTEM"));
}

TEST_F(OwnStoreTest, IsReadAgainWhenTheWriterIsDoneMeanwhile) {
  EXPECT_TRUE(write("S:\\Lumo"));
  const std::string whole = program.sim.fileText(kFile);
  program.sim.putFile(kFile, "");
  program.sim.onCall("files.read", [&] {
    program.sim.onCall("files.read", [&] { program.sim.putFile(kFile, whole); });
  });
  EXPECT_EQ(read(), "S:\\Lumo");
  EXPECT_TRUE(done);
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST_F(OwnStoreTest, GivesItsFolderAsProgramsPath) {
  EXPECT_EQ(DeterminaPathClient(program), "C:\\Lumo\\Conf");
}

TEST_F(OwnStoreTest, TellsInTheLogThatTheSuiteIsMissing) {
  program.sim.removeTree(kFile);
  EXPECT_FALSE(EsisteSuiteTravolin(program));
  EXPECT_THAT(program.lines(),
              ElementsAre("Gestione ProdTrelv - Verifica Esistenza Travolin",
                          "Suite Lumo non trovata in registro: Errore riscontrato -4012"));
}

TEST_F(OwnStoreTest, ReportsAWriteThatFailsAndKeepsTheOldValue) {
  EXPECT_TRUE(write("S:\\Lumo"));
  program.sim.diskOf(kFile).denyWriting("Lumo\\Conf");
  EXPECT_FALSE(write("T:\\Altro"));
  EXPECT_EQ(read(), "S:\\Lumo");
  EXPECT_THAT(program.reportTexts(),
              ElementsAre("Errore in scrittura chiave da file di configurazione: Insert Node "
                          "Failed\r\nSezione: Complementary_Products\r\nChiave: "
                          "Integration\r\nProdotto: SYSTEM"));
}

}  // namespace
}  // namespace trelv::modConfig
