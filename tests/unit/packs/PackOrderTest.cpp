#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "packs/PackOrder.h"
#include "support/FakeProgram.h"

namespace trelv::tests {
namespace {

using modProdTrelvInteractive::OrderZipPacks;
using modProdTrelvInteractive::SortStrings;
using testing::ElementsAre;
using testing::IsEmpty;
using Names = std::vector<std::string>;

Names sorted(Names list) {
  SortStrings(list);
  return list;
}

class PackOrder : public testing::Test {
 protected:
  PackOrder() { program_.sim.mount("E:"); }

  /// Files appear in the folder in this order, which is how the file system lists them.
  void put(const Names& names) {
    program_.sim.makeFolders("E:\\packs");
    for (const std::string& name : names) {
      program_.sim.putFile("E:\\packs\\" + name, "x");
    }
  }
  Names order() { return OrderZipPacks(program_, "E:\\packs"); }

  FakeProgram program_;
};

TEST(SortedStrings, AllButTheLastAreSorted) {
  EXPECT_THAT(sorted({"c", "b", "a"}), ElementsAre("b", "c", "a"));
  EXPECT_THAT(sorted({"d", "b", "c", "a", "e"}), ElementsAre("a", "b", "c", "d", "e"));
  EXPECT_THAT(sorted({"b", "b", "a", "b"}), ElementsAre("a", "b", "b", "b"));
}

TEST(SortedStrings, TwoAreNeverExchanged) {
  EXPECT_THAT(sorted({"b", "a"}), ElementsAre("b", "a"));
  EXPECT_THAT(sorted({"a", "b"}), ElementsAre("a", "b"));
}

TEST(SortedStrings, NoneAndOneStay) {
  EXPECT_THAT(sorted({}), IsEmpty());
  EXPECT_THAT(sorted({"a"}), ElementsAre("a"));
}

TEST(SortedStrings, CapitalsComeBeforeSmallLettersAndAccentedOnesLast) {
  EXPECT_THAT(sorted({"à", "a", "B", "z"}), ElementsAre("B", "a", "à", "z"));
}

TEST_F(PackOrder, ListsFullPathsWithTheLastFoundAtTheEnd) {
  put({"c.zip", "b.zip", "a.zip"});
  EXPECT_THAT(order(), ElementsAre("E:\\packs\\b.zip", "E:\\packs\\c.zip", "E:\\packs\\a.zip"));
  EXPECT_THAT(program_.lines(),
              ElementsAre("Gestione ProdTrelv - Lettura file zip della cartella: \"E:\\packs\""));
}

TEST_F(PackOrder, OnlyTheExtensionZipInLowerCaseCounts) {
  put({"DATA.ZIP", "data.Zip", "x.tar.zip", "zip", "y.zip.gz", "leggimi.txt"});
  program_.sim.makeFolders("E:\\packs\\cartella.zip");
  EXPECT_THAT(order(), ElementsAre("E:\\packs\\x.tar.zip"));
}

TEST_F(PackOrder, CapitalsComeFirst) {
  put({"a.zip", "B.zip", "c.zip"});
  EXPECT_THAT(order(), ElementsAre("E:\\packs\\B.zip", "E:\\packs\\a.zip", "E:\\packs\\c.zip"));
}

TEST_F(PackOrder, EmptyFolderGivesAnEmptyList) {
  put({});
  EXPECT_THAT(order(), IsEmpty());
  EXPECT_THAT(program_.lines(), testing::SizeIs(1));
}

TEST_F(PackOrder, MissingFolderIsToldInOneLineAndGivesAnEmptyList) {
  EXPECT_THAT(order(), IsEmpty());
  EXPECT_THAT(program_.lines(),
              ElementsAre("Gestione ProdTrelv - Lettura file zip della cartella: \"E:\\packs\"",
                          "Gestione ProdTrelv - Errore in ordinamento cartella E:\\packs "
                          "(Impossibile trovare il percorso: E:\\packs)"));
  EXPECT_THAT(program_.reports(), IsEmpty());
}

TEST_F(PackOrder, FolderThatCannotBeReadIsTold) {
  put({"a.zip"});
  program_.sim.diskOf("E:\\").deny("E:\\packs");
  EXPECT_THAT(order(), IsEmpty());
  EXPECT_EQ(program_.lines().size(), 2U);
}

// --- The folder of an entry

TEST_F(PackOrder, FolderOfAnEntryIsJoinedToTheMediumsRoot) {
  program_.state.session.mediaRoot = "E:\\prodotti\\manager\\..\\..\\";
  const auto folder = [this](const std::string& packFolder) -> std::string {
    return modProdTrelvInteractive::PackFolder(program_.program, {"ZB", "Bilancio", packFolder});
  };
  EXPECT_EQ(folder("prodotti\\packs\\zb"), "E:\\prodotti\\manager\\..\\..\\prodotti\\packs\\zb");
  EXPECT_EQ(folder("packs\\zb\\"), "E:\\prodotti\\manager\\..\\..\\packs\\zb");
  EXPECT_EQ(folder(""), "") << "an entry without packs";
  EXPECT_EQ(folder("..\\packs"), "") << "not on the medium";
  EXPECT_EQ(folder("C:\\packs"), "");
}

}  // namespace
}  // namespace trelv::tests
