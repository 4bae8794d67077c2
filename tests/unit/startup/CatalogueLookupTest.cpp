#include <gtest/gtest.h>

#include <string>

#include "startup/modProdTrelvLibrary.h"
#include "support/RealProgram.h"

namespace trelv::modProdTrelvLibrary {
namespace {

constexpr const char* kCatalogue = "C:\\Lumo\\agdvcomp.ini";

std::string section(const std::string& name, const std::string& id, const std::string& conf) {
  return "[" + name + "]\r\nid=" + id + "\r\nname=Nome di " + name + "\r\nconf=" + conf + "\r\n";
}

class CatalogueLookup : public ::testing::Test {
 protected:
  void write(const std::string& text) { machine_.putFile(kCatalogue, text); }
  std::string conf(const std::string& id) {
    return GetCatalogueProductConf(program_, kCatalogue, id);
  }
  std::string name(const std::string& id) {
    return GetCatalogueProductName(program_, kCatalogue, id);
  }

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

TEST_F(CatalogueLookup, GivesConfAndNameOfTheProductsSection) {
  write(section("prod01", "NERIO", "a.ini") + section("prod02", "ZB", "b.ini"));
  EXPECT_EQ("b.ini", conf("ZB"));
  EXPECT_EQ("Nome di prod02", name("ZB"));
}

TEST_F(CatalogueLookup, FirstOfTwoEqualIdentifiersCounts) {
  write(section("prod03", "ZB", "first.ini") + section("prod07", "ZB", "second.ini"));
  EXPECT_EQ("first.ini", conf("ZB"));
}

TEST_F(CatalogueLookup, IdentifiersAreComparedExactly) {
  write(section("prod01", "Zb", "small.ini") + section("prod02", "ZB", "exact.ini"));
  EXPECT_EQ("exact.ini", conf("ZB"));
  EXPECT_EQ("", conf("zb"));
}

TEST_F(CatalogueLookup, GapsAreSkipped) {
  write(section("prod01", "NERIO", "a.ini") + section("prod40", "Q2", "q.ini"));
  EXPECT_EQ("q.ini", conf("Q2"));
}

TEST_F(CatalogueLookup, Prod100IsTheLastOneSearched) {
  write(section("prod100", "ZM", "hundred.ini"));
  EXPECT_EQ("hundred.ini", conf("ZM"));
}

TEST_F(CatalogueLookup, NoMatchInHundredSectionsGivesEmptyTexts) {
  std::string text;
  for (int i = 1; i <= 100; ++i) {
    text += section(CatalogueSection(i), "P" + std::to_string(i), "c.ini");
  }
  write(text);
  EXPECT_EQ("", conf("ZB"));
  EXPECT_EQ("", name("ZB"));
}

TEST_F(CatalogueLookup, NoMatchReadsSectionProd101) {
  write(section("prod01", "NERIO", "a.ini") + section("prod101", "WHATEVER", "beyond.ini"));
  EXPECT_EQ("beyond.ini", conf("ZB"));
  EXPECT_EQ("Nome di prod101", name("ZB"));
}

TEST_F(CatalogueLookup, MissingCatalogueGivesEmptyText) {
  EXPECT_EQ("", conf("ZB"));
  EXPECT_EQ("", name("ZB"));
}

TEST_F(CatalogueLookup, OpensTheCatalogueOnce) {
  write(section("prod01", "NERIO", "a.ini") + section("prod90", "ZB", "b.ini"));
  ASSERT_EQ("b.ini", conf("ZB"));
  ASSERT_EQ("Nome di prod90", name("ZB"));
  EXPECT_EQ(1U, machine_.openings(kCatalogue).files());
}

}  // namespace
}  // namespace trelv::modProdTrelvLibrary
