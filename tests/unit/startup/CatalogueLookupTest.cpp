#include <gtest/gtest.h>

#include "startup/modProdTrelvLibrary.h"
#include "support/RealProgram.h"

namespace trelv::modProdTrelvLibrary {
namespace {

constexpr const char* kCatalogue = "C:\\Lumo\\agdvcomp.ini";

class CatalogueLookup : public testing::Test {
 protected:
  /// Adds a section; its name is told by its own.
  void put(const std::string& section, const std::string& id, const std::string& conf) {
    text_ += "[" + section + "]\r\nid=" + id + "\r\nname=Nome di " + section + "\r\nconf=" + conf +
             "\r\n";
    machine_.putFile(kCatalogue, text_);
  }
  std::string conf(const std::string& id) {
    return GetCatalogueProductConf(program_, kCatalogue, id);
  }
  std::string name(const std::string& id) {
    return GetCatalogueProductName(program_, kCatalogue, id);
  }

  std::string text_;
  sim::SimMachine machine_;
  tests::RealProgram program_{machine_};
};

TEST_F(CatalogueLookup, SectionNamesHaveAtLeastTwoDigits) {
  EXPECT_EQ("prod01", CatalogueSection(1));
  EXPECT_EQ("prod09", CatalogueSection(9));
  EXPECT_EQ("prod10", CatalogueSection(10));
  EXPECT_EQ("prod100", CatalogueSection(100));
  EXPECT_EQ("prod101", CatalogueSection(101));
}

TEST_F(CatalogueLookup, GivesConfAndNameOfTheFirstSectionWithExactlyThatIdentifier) {
  put("prod01", "Zb", "other case");
  put("prod02", "ZB", "b.ini");
  put("prod07", "ZB", "second");
  EXPECT_EQ("b.ini", conf("ZB"));
  EXPECT_EQ("Nome di prod02", name("ZB"));
  EXPECT_EQ("", conf("zb"));
}

TEST_F(CatalogueLookup, SkipsGapsUpToProd100) {
  put("prod01", "NERIO", "a.ini");
  put("prod40", "Q2", "q.ini");
  put("prod100", "ZM", "hundred.ini");
  EXPECT_EQ("q.ini", conf("Q2"));
  EXPECT_EQ("hundred.ini", conf("ZM"));
}

TEST_F(CatalogueLookup, NoMatchInHundredSectionsGivesEmptyTexts) {
  for (int i = 1; i <= 100; ++i) {
    put(CatalogueSection(i), "P" + std::to_string(i), "c.ini");
  }
  EXPECT_EQ("", conf("ZB"));
  EXPECT_EQ("", name("ZB"));
}

TEST_F(CatalogueLookup, NoMatchReadsSectionProd101) {
  put("prod01", "NERIO", "a.ini");
  put("prod101", "WHATEVER", "beyond.ini");
  EXPECT_EQ("beyond.ini", conf("ZB"));
  EXPECT_EQ("Nome di prod101", name("ZB"));
}

TEST_F(CatalogueLookup, MissingCatalogueGivesEmptyText) {
  EXPECT_EQ("", conf("ZB"));
  EXPECT_EQ("", name("ZB"));
}

TEST_F(CatalogueLookup, OpensTheCatalogueOnce) {
  put("prod01", "NERIO", "a.ini");
  put("prod90", "ZB", "b.ini");
  ASSERT_EQ("b.ini", conf("ZB"));
  ASSERT_EQ("Nome di prod90", name("ZB"));
  EXPECT_EQ(1U, machine_.openings(kCatalogue).files());
}

}  // namespace
}  // namespace trelv::modProdTrelvLibrary
