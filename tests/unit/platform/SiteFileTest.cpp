#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/SiteFile.h"
#include "platform/modConfig.h"
#include "support/FakeProgram.h"

namespace trelv::siteFile {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kFile = "C:\\Lumo\\Manager\\TrelvManager.ini";

class SiteFile : public testing::Test {
 protected:
  SiteFile() { program_.sim.setExecutable("C:\\Lumo\\Manager\\TRELVM~1.EXE"); }
  void put(const std::string& text) { program_.sim.putFile(kFile, text); }

  tests::FakeProgram program_;
};

TEST_F(SiteFile, ThatIsMissingLeavesTheBuiltInNames) {
  const SiteNames builtIn;
  EXPECT_EQ(Names(program_).harmlessLibraries, builtIn.harmlessLibraries);
  EXPECT_EQ(Names(program_).storeProducts, builtIn.storeProducts);
  EXPECT_EQ(Names(program_).travolinIniFile, "travolin.ini");
  EXPECT_THAT(program_.lines(), IsEmpty());
}

TEST_F(SiteFile, GivesWhatItNamesAndLeavesTheRest) {
  put("[LibrerieInnocue]\r\nLibreria6=Studio.dll\r\n[ProdottiArchivio]\r\n10=perla\r\n"
      "[Travolin]\r\nFile=trv.ini");
  SiteNames expected;
  expected.harmlessLibraries[5] = "STUDIO.DLL";
  expected.storeProducts[10] = "PERLA";
  EXPECT_EQ(Names(program_).harmlessLibraries, expected.harmlessLibraries);
  EXPECT_EQ(Names(program_).storeProducts, expected.storeProducts);
  EXPECT_EQ(Names(program_).travolinIniFile, "trv.ini");
  EXPECT_EQ(modConfig::ProductName(program_, 10), "PERLA");
  EXPECT_EQ(modConfig::ProductCode(program_, "Perla"), 10);
  EXPECT_EQ(modConfig::ProductCode(program_, "SURVENA"), 0);
  EXPECT_THAT(program_.lines(), IsEmpty());
}

TEST_F(SiteFile, DoesNotRenameTheProductsThatTheSuiteNames) {
  put("[ProdottiArchivio]\r\n14=ALTRO\r\n999=TUTTO\r\n");
  EXPECT_EQ(modConfig::ProductName(program_, 14), "DOVRA");
  EXPECT_EQ(modConfig::ProductName(program_, 999), "SYSTEM");
}

TEST_F(SiteFile, TakesTheShortestAndTheLongestNames) {
  put("[LibrerieInnocue]\r\nLibreria1=a.dll\r\n[ProdottiArchivio]\r\n2=AZ\r\n10=OTTOLE09\r\n");
  EXPECT_EQ(Names(program_).harmlessLibraries[0], "A.DLL");
  EXPECT_EQ(modConfig::ProductName(program_, 2), "AZ");
  EXPECT_EQ(modConfig::ProductName(program_, 10), "OTTOLE09");
  EXPECT_THAT(program_.lines(), IsEmpty());
}

TEST_F(SiteFile, WithANameThatCannotBeRightGetsALineThatNamesIt) {
  struct Row {
    const char* text;
    const char* told;
  };
  for (const Row& row :
       {Row{"[LibrerieInnocue]\r\nLibreria1=DLL\r\n",
            "[LibrerieInnocue] Libreria1 = \"DLL\" non valido, vale \"LUMOCTRL.OCX\""},
        Row{"[LibrerieInnocue]\r\nLibreria1=.dll\r\n",
            "[LibrerieInnocue] Libreria1 = \".dll\" non valido, vale \"LUMOCTRL.OCX\""},
        Row{"[ProdottiArchivio]\r\n2=A\r\n",
            "[ProdottiArchivio] 2 = \"A\" non valido, vale \"FADRO\""},
        Row{"[ProdottiArchivio]\r\n2=NOVELETTERE\r\n",
            "[ProdottiArchivio] 2 = \"NOVELETTERE\" non valido, vale \"FADRO\""},
        Row{"[ProdottiArchivio]\r\n2=DUE A\r\n",
            "[ProdottiArchivio] 2 = \"DUE A\" non valido, vale \"FADRO\""},
        Row{"[Travolin]\r\nFile=trv?.ini\r\n",
            "[Travolin] File = \"trv?.ini\" non valido, vale \"travolin.ini\""}}) {
    SCOPED_TRACE(row.text);
    tests::FakeProgram program;
    program.sim.setExecutable("C:\\Lumo\\Manager\\TrelvManager.exe");
    program.sim.putFile(kFile, row.text);
    const SiteNames builtIn;
    EXPECT_EQ(Names(program).harmlessLibraries, builtIn.harmlessLibraries);
    EXPECT_EQ(Names(program).storeProducts, builtIn.storeProducts);
    EXPECT_EQ(Names(program).travolinIniFile, builtIn.travolinIniFile);
    EXPECT_THAT(program.lines(),
                ElementsAre(std::string("Gestione ProdTrelv - ") + kFile + ": " + row.told));
  }
}

TEST_F(SiteFile, IsLookedAtOnce) {
  Names(program_);
  put("[Travolin]\r\nFile=trv.ini\r\n");
  program_.configurationFiles.forget();
  EXPECT_EQ(Names(program_).travolinIniFile, "travolin.ini");
}

TEST_F(SiteFile, IsNotNeededForTheProductsThatTheSuiteNames) {
  EXPECT_EQ(modConfig::ProductName(program_, 14), "DOVRA");
  EXPECT_FALSE(program_.state.siteNames.has_value());
}

}  // namespace
}  // namespace trelv::siteFile
