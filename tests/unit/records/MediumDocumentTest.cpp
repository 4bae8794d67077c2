// The examples of docs/medium.md, read as the program reads the files of a medium.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "records/MediumFiles.h"

namespace trelv::mediumFiles {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// Lines of the example that the document shows as this file.
std::vector<std::string> example(const std::string& file) {
  std::ifstream document(TRELV_PROJECT_FOLDER "/docs/medium.md");
  std::vector<std::string> lines;
  bool inside = false;
  for (std::string line; std::getline(document, line);) {
    if (inside && line == "```") {
      return lines;
    }
    if (inside) {
      lines.push_back(line);
    }
    inside = inside || line == "```text file=" + file;
  }
  ADD_FAILURE() << "docs/medium.md has no example of " << file;
  return {};
}

/// What an entry says, on one line.
std::string told(const OfferedProduct& entry) {
  std::ostringstream text;
  text << entry.caption << " - " << entry.packFolder << " - " << entry.identifier;
  for (const std::string& command : entry.commands) {
    text << " - " << command;
  }
  return text.str();
}

std::vector<std::string> told(const std::vector<OfferedProduct>& entries) {
  std::vector<std::string> texts;
  for (const OfferedProduct& entry : entries) {
    texts.push_back(told(entry));
  }
  return texts;
}

TEST(MediumDocument, SetUpFileSaysWhatTheTextSaysOfIt) {
  const SetupFile setup = readSetup(example("Setup.cmf"));
  EXPECT_EQ(setup.headerTemplate, "Prodotti complementari - versione %V%");
  EXPECT_TRUE(setup.showIntegrationPath);
  EXPECT_EQ(setup.menu[0].caption, "Contabilità");
  EXPECT_THAT(told(setup.menu[0].entries),
              ElementsAre("Nerio - prodotti\\packs\\nerio - NERIO",
                          "Bilancio - prodotti\\packs\\bilancio - ZB"));
  EXPECT_EQ(setup.menu[1].caption, "Modelli");
  EXPECT_THAT(told(setup.menu[1].entries),
              ElementsAre("Zeltomodelli - prodotti\\packs\\modelli - ZM - notepad.exe "
                          "\"%MEDIUM%\\prodotti\\docs\\leggimi.txt\"",
                          "Torna all'elenco -  - Exit"));
  EXPECT_THAT(setup.menu[2].entries, IsEmpty());
  EXPECT_THAT(setup.menu[3].entries, IsEmpty());
}

TEST(MediumDocument, FoldersOfItsEntriesLieOnTheMedium) {
  for (const MenuPage& page : readSetup(example("Setup.cmf")).menu) {
    for (const OfferedProduct& entry : page.entries) {
      EXPECT_TRUE(liesOnMedium(entry.packFolder)) << entry.caption;
    }
  }
}

TEST(MediumDocument, ProductsAreIdentifierAndDescription) {
  const std::vector<ListedProduct> products = readProducts(example("Products.cmf"));
  ASSERT_THAT(products, SizeIs(3));
  EXPECT_EQ(products[1].identifier, "ZB");
  EXPECT_EQ(products[1].description, "Bilancio");
}

TEST(MediumDocument, EveryLineOfTheFilesIsPlainText) {
  for (const char* const file : {"Setup.cmf", "Versione.ver", "Products.cmf"}) {
    for (const std::string& line : example(file)) {
      EXPECT_TRUE(isPlainLine(line)) << file << ": " << line;
    }
  }
}

}  // namespace
}  // namespace trelv::mediumFiles
