#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "records/MediumFiles.h"
#include "support/Texts.h"

namespace trelv::mediumFiles {
namespace {

using namespace std::string_literals;
using testing::_;
using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;
using tests::joined;
using Lines = std::vector<std::string>;

/// Set-up file whose third and further lines are these.
SetupFile setupOf(const Lines& lines) {
  Lines whole{"Intestazione", "2026-11-21"};
  whole.insert(whole.end(), lines.begin(), lines.end());
  return readSetup(whole);
}

/// What each entry of a page says, on one line: caption, folder, identifier, commands.
Lines told(const MenuPage& page) {
  Lines texts;
  for (const OfferedProduct& entry : page.entries) {
    Lines values{entry.caption, entry.packFolder, entry.identifier};
    values.insert(values.end(), entry.commands.begin(), entry.commands.end());
    texts.push_back(joined(values, "|"));
  }
  return texts;
}

Lines told(const std::vector<ListedProduct>& products) {
  Lines texts;
  for (const ListedProduct& product : products) {
    texts.push_back(product.identifier + "|" + product.description);
  }
  return texts;
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
  const auto page = [](const char* caption) {
    return AllOf(Field(&MenuPage::caption, caption), Field(&MenuPage::entries, IsEmpty()));
  };
  EXPECT_THAT(setup.menu, ElementsAre(page("Primo"), page("Due"), page("Tre"), page("Quattro")));
  EXPECT_THAT(setupOf({}).menu, Each(page("")));
}

TEST(SetupFile, EntriesAreCaptionFolderIdentifierAndCommandsInTheOrderOfTheFile) {
  const SetupFile setup =
      setupOf({R"(#SECONDA_LISTA# Zeltomodelli | prodotti\packs\zm |ZM| a.exe "x y" | b.exe )",
               "altro", "#SECONDA_LISTA#A|", "#SECONDA_LISTA#B|b|ZB||  |c.exe|"});
  EXPECT_THAT(
      told(setup.menu[1]),
      ElementsAre(R"(Zeltomodelli|prodotti\packs\zm|ZM|a.exe "x y"|b.exe)", "A||", "B|b|ZB|c.exe"));
  EXPECT_THAT(setup.menu[1].entries.front().chosenPacks, IsEmpty());
}

TEST(SetupFile, MenuLinesBeginWithTheirMarkerInCapitalsBehindTheFreeLine) {
  const SetupFile setup =
      readSetup({"#PRIMA_LISTA#A|a|ZB", "#PRIMA_LISTA#B|b|ZB", " #PRIMA_LISTA#C",
                 "#prima_lista#D|d|ZB", "PRIMA_LISTA#E|e", "#PRIMA_LISTA#F|f|ZB"});
  EXPECT_EQ(setup.menu[0].caption, "");
  EXPECT_THAT(told(setup.menu[0]), ElementsAre("F|f|ZB"));
}

// --- Products

TEST(ProductsFile, EachLineIsAProductAsItStandsAndBlankOnesAreNone) {
  const std::vector<ListedProduct> products =
      readProducts({"NERIO|Nerio", "", "Q2 | Tarsena2|altro", "  ", "LUDA", "|senza codice", ""});
  EXPECT_THAT(told(products),
              ElementsAre("NERIO|Nerio", "Q2 | Tarsena2", "LUDA|", "|senza codice"));
  EXPECT_EQ(products.at(0).presence, 0);
  EXPECT_THAT(readProducts({}), IsEmpty());
}

// --- Odd files

TEST(MediumText, IsPlainWithoutControlCharactersAndMarksOfAnotherEncoding) {
  for (const char* const line : {"", "Contabilit\xE0\t\x80 %V%", "x\xFF\xFE"}) {
    EXPECT_TRUE(isPlainLine(line)) << line;
  }
  for (const std::string& line :
       {"a\0b"s, "a\rb"s, "\x1A"s, "\xEF\xBB\xBFProdotti"s, "\xFF\xFEP"s, "\xFE\xFF"s}) {
    EXPECT_FALSE(isPlainLine(line)) << line;
  }
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

// --- The examples of docs/medium.md, read as the program reads the files of a medium

/// Lines of the example that the document shows as this file.
Lines example(const std::string& file) {
  std::ifstream document(TRELV_PROJECT_FOLDER "/docs/medium.md");
  Lines lines;
  bool inside = false;
  for (std::string line; std::getline(document, line);) {
    if (inside && line == "```") {
      return lines;
    }
    if (inside) {
      EXPECT_TRUE(isPlainLine(line)) << file << ": " << line;
      lines.push_back(line);
    }
    inside = inside || line == "```text file=" + file;
  }
  ADD_FAILURE() << "docs/medium.md has no example of " << file;
  return {};
}

TEST(MediumDocument, SetUpFileSaysWhatTheTextSaysOfIt) {
  const SetupFile setup = readSetup(example("Setup.cmf"));
  EXPECT_EQ(setup.headerTemplate, "Prodotti complementari - versione %V%");
  EXPECT_TRUE(setup.showIntegrationPath);
  EXPECT_EQ(setup.menu[0].caption, "Contabilità");
  EXPECT_THAT(told(setup.menu[0]), ElementsAre(R"(Nerio|prodotti\packs\nerio|NERIO)",
                                               R"(Bilancio|prodotti\packs\bilancio|ZB)"));
  EXPECT_EQ(setup.menu[1].caption, "Modelli");
  EXPECT_THAT(
      told(setup.menu[1]),
      ElementsAre(
          R"(Zeltomodelli|prodotti\packs\modelli|ZM|notepad.exe "%MEDIUM%\prodotti\docs\leggimi.txt")",
          "Torna all'elenco||Exit"));
  EXPECT_THAT(told(setup.menu[2]), IsEmpty());
  EXPECT_THAT(told(setup.menu[3]), IsEmpty());
  for (const MenuPage& page : setup.menu) {
    for (const OfferedProduct& entry : page.entries) {
      EXPECT_TRUE(liesOnMedium(entry.packFolder)) << entry.caption;
    }
  }
}

TEST(MediumDocument, OtherFilesSayWhatTheTextSaysOfThem) {
  EXPECT_THAT(example("Versione.ver"), testing::Not(IsEmpty()));
  EXPECT_THAT(told(readProducts(example("Products.cmf"))), ElementsAre(_, "ZB|Bilancio", _));
}

}  // namespace
}  // namespace trelv::mediumFiles
