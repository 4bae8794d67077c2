#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "packs/Deregistration.h"
#include "support/FakeProgram.h"

namespace trelv::tests {
namespace {

using modProdTrelvManager::DeregisterOcxInFolder;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* kFolder = "C:\\Nerio\\setup";

class Deregistration : public testing::Test {
 protected:
  Deregistration() { machine_.makeFolders(kFolder); }

  void putControls(const std::vector<std::string>& names) {
    for (const std::string& name : names) {
      machine_.putFile(std::string(kFolder) + "\\" + name, "MZ");
    }
  }
  void putTool() { machine_.programs().define("C:\\WINDOWS\\system32\\regsrv32.exe"); }

  sim::SimMachine machine_;
  FakeProgram program_{machine_};
};

TEST_F(Deregistration, TellsTheFolderInItsOwnSpelling) {
  DeregisterOcxInFolder(program_, kFolder);
  EXPECT_THAT(program_.lines(),
              ElementsAre("Gestione ProdTrelv - Inizio fase deregestrizazione componenti in: "
                          "\"C:\\Nerio\\setup\""));
  EXPECT_THAT(machine_.started(), IsEmpty());
}

TEST_F(Deregistration, RunsRegsrv32ForEachControlInListingOrderAndWaits) {
  putControls({"a.ocx", "b.ocx", "con blank.ocx"});
  machine_.diskOf("C:\\").setListingOrder(kFolder, {"b.ocx", "con blank.ocx", "a.ocx"});
  putTool();
  machine_.programs().setDeferred(true);
  DeregisterOcxInFolder(program_, kFolder);
  EXPECT_THAT(machine_.programs().startedCommandLines(),
              ElementsAre("regsrv32 /u /s \"C:\\Nerio\\setup\\b.ocx\"",
                          "regsrv32 /u /s \"C:\\Nerio\\setup\\con blank.ocx\"",
                          "regsrv32 /u /s \"C:\\Nerio\\setup\\a.ocx\""));
  for (const sim::StartedProgram& started : machine_.started()) {
    EXPECT_TRUE(started.waited);
    EXPECT_TRUE(started.ended);
  }
}

TEST_F(Deregistration, TheSystemsOwnToolIsNotUsed) {
  putControls({"a.ocx", "b.ocx"});
  machine_.programs().define("C:\\WINDOWS\\system32\\regsvr32.exe");
  DeregisterOcxInFolder(program_, kFolder);
  EXPECT_THAT(machine_.started(), IsEmpty());
  EXPECT_THAT(
      program_.reportTexts(),
      ElementsAre("Errore in esecuzione programma: regsrv32 /u /s \"C:\\Nerio\\setup\\a.ocx\"",
                  "Errore in esecuzione programma: regsrv32 /u /s \"C:\\Nerio\\setup\\b.ocx\""));
  EXPECT_THAT(program_.lines(), SizeIs(1));
}

TEST_F(Deregistration, OnlyTheExtensionOcxInLowerCaseQualifies) {
  putControls({"a.OCX", "b.Ocx", "c.dll", "ocx", "d.ocx.bak", "e.tar.ocx", "f.ocx2"});
  machine_.makeFolders(std::string(kFolder) + "\\folder.ocx");
  putTool();
  DeregisterOcxInFolder(program_, kFolder);
  EXPECT_THAT(machine_.programs().startedCommandLines(),
              ElementsAre("regsrv32 /u /s \"C:\\Nerio\\setup\\e.tar.ocx\""));
}

TEST_F(Deregistration, MissingFolderIsOneLine) {
  DeregisterOcxInFolder(program_, "C:\\Nessuna");
  EXPECT_THAT(program_.lines(),
              ElementsAre("Gestione ProdTrelv - Inizio fase deregestrizazione componenti in: "
                          "\"C:\\Nessuna\"",
                          "Gestione ProdTrelv - Errore in deregistrazione ocx (76 Impossibile "
                          "trovare il percorso: C:\\Nessuna)"));
  EXPECT_THAT(program_.reports(), IsEmpty());
}

TEST_F(Deregistration, FolderThatCannotBeListedIsOneLine) {
  putControls({"a.ocx"});
  putTool();
  machine_.diskOf("C:\\").deny(kFolder);
  DeregisterOcxInFolder(program_, kFolder);
  EXPECT_EQ(program_.lines().back(),
            "Gestione ProdTrelv - Errore in deregistrazione ocx (70 Autorizzazione negata: "
            "C:\\Nerio\\setup)");
  EXPECT_THAT(machine_.started(), IsEmpty());
}

}  // namespace
}  // namespace trelv::tests
