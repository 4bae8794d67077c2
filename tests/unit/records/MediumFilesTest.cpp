#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "records/MediumFiles.h"

namespace trelv::mediumFiles {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Lines = std::vector<std::string>;

/// Set-up file whose third and further lines are these.
SetupFile setupOf(const Lines& lines) {
  Lines whole{"Intestazione", "2026-11-21"};
  whole.insert(whole.end(), lines.begin(), lines.end());
  return readSetup(whole);
}

// --- Set-up file

TEST(SetupFile, FirstLineIsTheHeaderAsItStands) {
  EXPECT_EQ(readSetup({" Prodotti %V% - %V% "}).headerTemplate, " Prodotti %V% - %V% ");
  EXPECT_EQ(readSetup({}).headerTemplate, "");
}

TEST(SetupFile, PathIsShownWhereAnyLineFromTheThirdOnSaysSo) {
  EXPECT_TRUE(setupOf({"", "x%SHOW_PATH_INTEGRATION%y"}).showIntegrationPath);
  EXPECT_FALSE(setupOf({"%show_path_integration%", "SHOW_PATH_INTEGRATION"}).showIntegrationPath);
  EXPECT_FALSE(
      readSetup({"%SHOW_PATH_INTEGRATION%", "%SHOW_PATH_INTEGRATION%"}).showIntegrationPath);
}

TEST(SetupFile, LineWithOneValueNamesItsPageAndTheLastOneCounts) {
  const SetupFile setup = setupOf({"#PRIMA_LISTA#Uno", "#SECONDA_LISTA# Due ", "#TERZA_LISTA#Tre",
                                   "#QUARTA_LISTA#Quattro", "#PRIMA_LISTA#Primo"});
  EXPECT_EQ(setup.menu[0].caption, "Primo");
  EXPECT_EQ(setup.menu[1].caption, "Due");
  EXPECT_EQ(setup.menu[2].caption, "Tre");
  EXPECT_EQ(setup.menu[3].caption, "Quattro");
  EXPECT_THAT(setup.menu[0].entries, IsEmpty());
  EXPECT_EQ(setupOf({}).menu[0].caption, "");
}

TEST(SetupFile, EntryIsCaptionFolderIdentifierAndCommands) {
  const SetupFile setup =
      setupOf({R"(#SECONDA_LISTA# Zeltomodelli | prodotti\packs\zm |ZM| a.exe "x y" | b.exe )"});
  ASSERT_THAT(setup.menu[1].entries, SizeIs(1));
  const OfferedProduct& entry = setup.menu[1].entries.front();
  EXPECT_EQ(entry.caption, "Zeltomodelli");
  EXPECT_EQ(entry.packFolder, "prodotti\\packs\\zm");
  EXPECT_EQ(entry.identifier, "ZM");
  EXPECT_THAT(entry.commands, ElementsAre("a.exe \"x y\"", "b.exe"));
  EXPECT_THAT(entry.chosenPacks, IsEmpty());
}

TEST(SetupFile, EntriesStandInTheOrderOfTheFile) {
  const SetupFile setup = setupOf({"#PRIMA_LISTA#B|b|ZB", "altro", "#PRIMA_LISTA#A|a|NERIO"});
  ASSERT_THAT(setup.menu[0].entries, SizeIs(2));
  EXPECT_EQ(setup.menu[0].entries[0].caption, "B");
  EXPECT_EQ(setup.menu[0].entries[1].caption, "A");
}

TEST(SetupFile, ValuesThatAreMissingAreEmptyAndEmptyCommandsNone) {
  const SetupFile setup = setupOf({"#PRIMA_LISTA#A|", "#PRIMA_LISTA#B|b|ZB||  |c.exe|"});
  ASSERT_THAT(setup.menu[0].entries, SizeIs(2));
  EXPECT_EQ(setup.menu[0].entries[0].packFolder, "");
  EXPECT_EQ(setup.menu[0].entries[0].identifier, "");
  EXPECT_THAT(setup.menu[0].entries[1].commands, ElementsAre("c.exe"));
}

TEST(SetupFile, MarkerStandsAtTheBeginningInCapitals) {
  const SetupFile setup =
      setupOf({" #PRIMA_LISTA#A|a|ZB", "#prima_lista#B|b|ZB", "PRIMA_LISTA#C|c"});
  EXPECT_THAT(setup.menu[0].entries, IsEmpty());
  EXPECT_EQ(setup.menu[0].caption, "");
}

TEST(SetupFile, MenuBeginsBehindTheFreeLine) {
  const SetupFile setup =
      readSetup({"#PRIMA_LISTA#A|a|ZB", "#PRIMA_LISTA#B|b|ZB", "#PRIMA_LISTA#C|c|ZB"});
  ASSERT_THAT(setup.menu[0].entries, SizeIs(1));
  EXPECT_EQ(setup.menu[0].entries[0].caption, "C");
}

// --- Products

TEST(ProductsFile, EachLineIsAProductAsItStands) {
  const std::vector<ListedProduct> products =
      readProducts({"NERIO|Nerio", "Q2 | Tarsena2|altro", "LUDA", "|senza codice"});
  ASSERT_THAT(products, SizeIs(4));
  EXPECT_EQ(products[0].identifier, "NERIO");
  EXPECT_EQ(products[0].description, "Nerio");
  EXPECT_EQ(products[0].presence, 0);
  EXPECT_EQ(products[1].identifier, "Q2 ");
  EXPECT_EQ(products[1].description, " Tarsena2");
  EXPECT_EQ(products[2].description, "");
  EXPECT_EQ(products[3].identifier, "");
}

TEST(ProductsFile, BlankLinesAreNoProducts) {
  EXPECT_THAT(readProducts({"", "  ", "ZB|Bilancio", ""}), SizeIs(1));
  EXPECT_THAT(readProducts({}), IsEmpty());
}

// --- Odd files

TEST(MediumText, IsPlainWithTabsAndLettersOfTheCodePage) {
  EXPECT_TRUE(isPlainLine(""));
  EXPECT_TRUE(isPlainLine("Contabilit\xE0\t\x80 %V%"));
}

TEST(MediumText, IsNotPlainWithControlCharactersOrAMarkOfAnotherEncoding) {
  EXPECT_FALSE(isPlainLine("a\0b"s));
  EXPECT_FALSE(isPlainLine("a\rb"));
  EXPECT_FALSE(isPlainLine("\x1A"));
  EXPECT_FALSE(isPlainLine("\xEF\xBB\xBFProdotti"));
  EXPECT_FALSE(isPlainLine("\xFF\xFEP"));
  EXPECT_FALSE(isPlainLine("\xFE\xFF"));
  EXPECT_TRUE(isPlainLine("x\xFF\xFE")) << "letters of the code page elsewhere";
}

// --- Folders

TEST(PackFolder, LiesOnTheMediumBelowItsRoot) {
  for (const char* const folder :
       {"", "prodotti\\packs\\nerio", "prodotti/packs/nerio\\", "a\\..\\b", ".\\a", "a..b\\c.."}) {
    EXPECT_TRUE(liesOnMedium(folder)) << folder;
  }
}

TEST(PackFolder, LeadsElsewhereByDriveShareRootOrPoints) {
  for (const char* const folder :
       {"C:\\Windows", "C:", "\\\\srv\\share", "\\Windows", "/Windows", "..", "..\\packs",
        "a\\..\\..\\b", "a/../../b", ".. \\b", "...\\b", "a\\.\\..\\..", "packs:x"}) {
    EXPECT_FALSE(liesOnMedium(folder)) << folder;
  }
}

}  // namespace
}  // namespace trelv::mediumFiles
