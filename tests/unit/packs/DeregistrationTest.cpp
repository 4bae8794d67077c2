#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "packs/Deregistration.h"
#include "support/FakeProgram.h"
#include "support/Matchers.h"

namespace trelv::tests {
namespace {

constexpr const char* kFolder = "C:\\Nerio\\setup";
constexpr const char* kBegun =
    R"(Gestione ProdTrelv - Inizio fase deregestrizazione componenti in: "C:\Nerio\setup")";

/// The controls of C:\Nerio\setup, on a machine that has the tool.
class Deregistration : public testing::Test {
 protected:
  Deregistration() {
    machine_.makeFolders(kFolder);
    machine_.programs().define(kTool);
  }

  void putControls(const std::vector<std::string>& names) {
    for (const std::string& name : names) {
      machine_.putFile(std::string(kFolder) + "\\" + name, "MZ");
    }
  }
  /// Deregisters what a folder holds; gives the command lines that ran.
  std::vector<std::string> deregister(const std::string& folder = kFolder) {
    modProdTrelvManager::DeregisterOcxInFolder(program_, folder);
    return machine_.programs().startedCommandLines();
  }

  static constexpr const char* kTool = "C:\\WINDOWS\\system32\\regsrv32.exe";
  sim::SimMachine machine_;
  FakeProgram program_{machine_};
};

TEST_F(Deregistration, TellsTheFolderInItsOwnSpelling) {
  EXPECT_THAT(deregister(), IsEmpty());
  EXPECT_THAT(program_.lines(), ElementsAre(kBegun));
}

TEST_F(Deregistration, RunsRegsrv32ForEachControlInListingOrderAndWaits) {
  putControls({"a.ocx", "b.ocx", "con blank.ocx"});
  machine_.diskOf("C:\\").setListingOrder(kFolder, {"b.ocx", "con blank.ocx", "a.ocx"});
  machine_.programs().setDeferred(true);
  EXPECT_THAT(deregister(), ElementsAre(R"(regsrv32 /u /s "C:\Nerio\setup\b.ocx")",
                                        R"(regsrv32 /u /s "C:\Nerio\setup\con blank.ocx")",
                                        R"(regsrv32 /u /s "C:\Nerio\setup\a.ocx")"));
  for (const sim::StartedProgram& started : machine_.started()) {
    EXPECT_TRUE(started.waited && started.ended) << started.commandLine;
  }
}

TEST_F(Deregistration, TheSystemsOwnToolIsNotUsed) {
  putControls({"a.ocx", "b.ocx"});
  machine_.removeTree(kTool);
  machine_.programs().define("C:\\WINDOWS\\system32\\regsvr32.exe");
  EXPECT_THAT(deregister(), IsEmpty());
  EXPECT_THAT(
      program_.reportTexts(),
      ElementsAre(R"(Errore in esecuzione programma: regsrv32 /u /s "C:\Nerio\setup\a.ocx")",
                  R"(Errore in esecuzione programma: regsrv32 /u /s "C:\Nerio\setup\b.ocx")"));
  const std::string toldBegin = R"(Gestione ProdTrelv - Errore in esecuzione programma: )";
  const std::string toldEnd = " (2 Impossibile trovare il programma)";
  EXPECT_THAT(program_.lines(),
              ElementsAre(kBegun, toldBegin + R"(regsrv32 /u /s "C:\Nerio\setup\a.ocx")" + toldEnd,
                          toldBegin + R"(regsrv32 /u /s "C:\Nerio\setup\b.ocx")" + toldEnd));
}

TEST_F(Deregistration, OnlyTheExtensionOcxInLowerCaseQualifies) {
  putControls({"a.OCX", "b.Ocx", "c.dll", "ocx", "d.ocx.bak", "e.tar.ocx", "f.ocx2"});
  machine_.makeFolders(std::string(kFolder) + "\\folder.ocx");
  EXPECT_THAT(deregister(), ElementsAre(R"(regsrv32 /u /s "C:\Nerio\setup\e.tar.ocx")"));
}

TEST_F(Deregistration, FolderThatIsMissingOrCannotBeListedIsOneLine) {
  putControls({"a.ocx"});
  EXPECT_THAT(deregister("C:\\Nessuna"), IsEmpty());
  machine_.diskOf("C:\\").deny(kFolder);
  EXPECT_THAT(deregister(), IsEmpty());
  EXPECT_EQ(program_.logText(),
            R"(Gestione ProdTrelv - Inizio fase deregestrizazione componenti in: "C:\Nessuna"
Gestione ProdTrelv - Errore in deregistrazione ocx (76 Impossibile trovare il percorso: C:\Nessuna)
Gestione ProdTrelv - Inizio fase deregestrizazione componenti in: "C:\Nerio\setup"
Gestione ProdTrelv - Errore in deregistrazione ocx (70 Autorizzazione negata: C:\Nerio\setup)
)");
  EXPECT_THAT(program_.reports(), IsEmpty());
}

}  // namespace
}  // namespace trelv::tests
