#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "packs/DirectSetup.h"
#include "packs/PackExtraction.h"
#include "packs/ProductInstall.h"
#include "packs/WorkFolder.h"
#include "support/FakeProgram.h"
#include "support/Matchers.h"
#include "support/PackPrograms.h"

namespace trelv::tests {
namespace {

using namespace modProdTrelvManager;

const std::string kTree = "prg\\com\\setup\\aggdovra\\";
const std::string kSetup = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\";
const std::string kWork = "C:\\Users\\mario\\Temp";
/// What links lead to.
const std::string kElsewhere = "D:\\Altrove";
constexpr const char* kRefused =
    "Gestione ProdTrelv - Cartella di lavoro C:\\Users\\mario\\Temp non disponibile, nessun pacco "
    "viene aperto (collegamento non seguito: ";

/// Somebody else has put a link into the way to the set-up tree of the work folder, at one of its
/// levels: what the link leads to looks just like what a pack brings.
class Links : public testing::TestWithParam<std::string> {
 public:
  Links() {
    machine_.mount("S:");
    machine_.mount("D:");
    machine_.makeFolders(kSetup);
    machine_.makeFolders("S:\\Lumo\\prg\\com\\bin\\cpy\\client");
    machine_.programs().define("C:\\Setup\\altro.exe");
    program_.state.startup.administrator = true;
    for (const std::string& root : {kElsewhere, kElsewhere + "\\prg", kElsewhere + "\\com",
                                    kElsewhere + "\\setup", kElsewhere + "\\aggdovra"}) {
      putLookalike(root);
    }
    before_ = machine_.diskOf(kElsewhere).tree();
  }

 protected:
  /// Whatever level the link stands in the place of, the rest of the way is there.
  void putLookalike(const std::string& root) {
    const std::string way = kTree;
    for (std::size_t at = 0; at < way.size(); at = way.find('\\', at) + 1) {
      const std::string folder = root + "\\" + way.substr(at);
      machine_.putFile(folder + "other.zip", packBytes({{kTree + "other.txt", "other"}}));
      machine_.putFile(folder + "agdvcomp.ini",
                       "[Prod01]\r\nid=LUDA\r\nconf=" + kTree + "luda.ini\r\n");
      machine_.putFile(folder + "luda.ini",
                       "[Setup01]\r\nversion=01.00\r\nServer01=C:\\Setup\\altro.exe\r\n");
    }
    machine_.putFile(root + "\\other.zip", packBytes({{kTree + "other.txt", "other"}}));
    machine_.putFile(root + "\\agdvcomp.ini",
                     "[Prod01]\r\nid=LUDA\r\nconf=" + kTree + "luda.ini\r\n");
  }
  std::string level() const { return kWork + GetParam(); }
  void putLink() {
    machine_.removeTree(level());
    machine_.diskOf(level()).putLink(level(), kElsewhere);
  }
  void putPack(const std::string& name) {
    machine_.putFile(kSetup + name + ".zip", packBytes({{kTree + name + ".ini", name}}));
  }
  std::string putGzPack() {
    std::string path = "C:\\Lumo\\Programmi\\luda.gz";
    machine_.putFile(path, packBytes({{kTree + "luda.zip", packBytes({{kTree + "1.txt", "1"}})}}));
    return path;
  }
  bool search() {
    return OpenZipPacksInFolder(program_, kSetup.substr(0, kSetup.size() - 1), "S:\\Lumo", true);
  }
  bool arrived(const std::string& name) { return machine_.fileExists(kSetup + name); }
  void expectNothingElsewhereChanged() {
    EXPECT_EQ(machine_.diskOf(kElsewhere).tree(), before_);
    EXPECT_FALSE(arrived("other.txt"));
    EXPECT_FALSE(arrived("other.zip"));
    EXPECT_FALSE(arrived("luda.ini"));
  }
  std::vector<std::string> started() { return machine_.programs().startedCommandLines(); }
  std::size_t linesThatBegin(const std::string& text) {
    std::size_t count = 0;
    for (const std::string& line : program_.lines()) {
      count += line.rfind(text, 0) == 0 ? 1U : 0U;
    }
    return count;
  }

  sim::SimMachine machine_;
  PackPrograms programs_{machine_};
  FakeProgram program_{machine_};
  std::string before_;
};

// --- The work folder itself

using LinkToTheWorkFolder = Links;
INSTANTIATE_TEST_SUITE_P(Itself, LinkToTheWorkFolder, testing::Values(""),
                         [](const auto&) -> std::string { return "WorkFolder"; });

TEST_P(LinkToTheWorkFolder, IsNotFollowedByASearchAndToldOnceInAProcess) {
  putLink();
  putPack("a");
  for (int searches = 0; searches < 10; ++searches) {
    EXPECT_TRUE(search());
  }
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_TRUE(arrived("a.zip"));
  EXPECT_EQ(linesThatBegin(kRefused + kWork + ")"), 1U);
  EXPECT_THAT(machine_.boxes(), IsEmpty());
  EXPECT_THAT(program_.reports(), IsEmpty());
  expectNothingElsewhereChanged();
}

TEST_P(LinkToTheWorkFolder, IsKnownWhateverItsNameEndsWith) {
  putLink();
  for (const char* const end : {"", "\\", "\\\\"}) {
    EXPECT_EQ(LinkOnTheWay(program_, kWork + end), "collegamento non seguito: " + kWork) << end;
  }
  expectNothingElsewhereChanged();
}

TEST_P(LinkToTheWorkFolder, ThatIsARootIsNone) {
  EXPECT_EQ(LinkOnTheWay(program_, "D:"), "");
  EXPECT_EQ(LinkOnTheWay(program_, "D:\\"), "");
}

TEST_P(LinkToTheWorkFolder, OnTheWayToItIsTheSystemsOwn) {
  machine_.diskOf("C:\\").putLink("C:\\Profili", "C:\\Users");
  EXPECT_EQ(LinkOnTheWay(program_, "C:\\Profili\\mario\\Temp"), "");
}

TEST_P(LinkToTheWorkFolder, MayBeOneThatCannotBeLookedAt) {
  machine_.diskOf(kWork).deny(kWork);
  EXPECT_EQ(LinkOnTheWay(program_, kWork), "Autorizzazione negata: " + kWork);
  machine_.diskOf(kWork).allow(kWork);
}

// --- The work folder and the levels of its set-up tree

INSTANTIATE_TEST_SUITE_P(At, Links,
                         testing::Values("", "\\prg", "\\prg\\com", "\\prg\\com\\setup",
                                         "\\prg\\com\\setup\\aggdovra"),
                         [](const auto& level) -> std::string {
                           const std::string& path = level.param;
                           return path.empty() ? "workFolder"
                                               : path.substr(path.find_last_of('\\') + 1);
                         });

TEST_P(Links, AreNotFollowedByAnInstallationOnTheServer) {
  putGzPack();
  putLink();
  std::string server = "S:\\Lumo";
  InstallSingleProdottoComplementareIntegrato(program_, "LUDA", server, "luda.gz");
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_THAT(machine_.desktop().boxTexts(),
              ElementsAre(HasSubstr("(collegamento non seguito: " + level() + ")")));
  EXPECT_FALSE(arrived("1.txt"));
  expectNothingElsewhereChanged();
}

TEST_P(Links, AreNotFollowedByAnInstallationOnItsOwn) {
  putGzPack();
  putLink();
  InstallSingleProdottoComplementareStandAlone(program_, "LUDA", "luda.gz");
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_THAT(machine_.desktop().boxTexts(),
              ElementsAre(HasSubstr("(collegamento non seguito: " + level() + ")")));
  expectNothingElsewhereChanged();
}

TEST_P(Links, AreNotFollowedByTheDecoderAndTheSearchBehindIt) {
  const std::string pack = putGzPack();
  putLink();
  OpenSinglePacks(program_, pack, "S:\\Lumo");
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_THAT(program_.state.packs.unopened, ElementsAre(pack));
  EXPECT_EQ(linesThatBegin(kRefused + level() + ")"), 1U);
  expectNothingElsewhereChanged();
}

TEST_P(Links, AreNotFollowedBySetUps) {
  putLink();
  program_.state.selectedProducts = {{"LUDA"}};
  ExecuteDirectSetup(program_, kWork);
  EXPECT_THAT(started(), IsEmpty());
  ASSERT_EQ(program_.reports().size(), 1U);
  EXPECT_EQ(program_.reports()[0].failure.description(),
            "Nessun setup eseguito, collegamento non seguito: " + level());
  expectNothingElsewhereChanged();
}

// --- The levels alone

using LinkedLevels = Links;
INSTANTIATE_TEST_SUITE_P(At, LinkedLevels,
                         testing::Values("\\prg", "\\prg\\com", "\\prg\\com\\setup",
                                         "\\prg\\com\\setup\\aggdovra"),
                         [](const auto& level) -> std::string {
                           return level.param.substr(level.param.find_last_of('\\') + 1);
                         });

TEST_P(LinkedLevels, OfAnEarlierRunAreRemovedAndWhatTheyLeadToStays) {
  putLink();
  putPack("a");
  machine_.putFile("S:\\Lumo\\prg\\com\\setup\\aggdovra\\x\\TrelvManager-ALTRA-1-99.tmp", "half");
  EXPECT_TRUE(search());
  EXPECT_TRUE(arrived("a.ini"));
  EXPECT_FALSE(machine_.diskOf(level()).exists(kWork + "\\prg"));
  expectNothingElsewhereChanged();
}

TEST_P(LinkedLevels, ThatCannotBeRemovedKeepEveryPackClosed) {
  putLink();
  putPack("a");
  machine_.diskOf(level()).denyWriting(level());
  EXPECT_TRUE(search());
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_TRUE(arrived("a.zip"));
  expectNothingElsewhereChanged();
  machine_.diskOf(level()).allow(level());
}

TEST_P(LinkedLevels, ThatAPackBringsMakeItAFailingOneAndTheNextIsOpened) {
  putPack("a");
  putPack("b");
  bool first = true;
  programs_.onFile = [&](const std::string&) {
    if (std::exchange(first, false)) {
      putLink();
    }
  };
  EXPECT_TRUE(search());
  EXPECT_TRUE(arrived("a.zip"));
  EXPECT_FALSE(arrived("a.ini"));
  EXPECT_TRUE(arrived("b.ini"));
  EXPECT_EQ(machine_.boxes().size(), 1U);
  EXPECT_EQ(linesThatBegin("Gestione ProdTrelv - Pacco zip con un collegamento, non aperto: " +
                           kSetup + "a.zip (collegamento non seguito: " + level() + ")"),
            1U);
  EXPECT_FALSE(machine_.diskOf(kWork).exists(kWork + "\\prg"));
  expectNothingElsewhereChanged();
  EXPECT_TRUE(search());
  EXPECT_EQ(machine_.boxes().size(), 1U) << "tried once in a process";
}

TEST_P(LinkedLevels, ThatAppearBehindTheDecoderAreNotSearchedForPacks) {
  const std::string pack = putGzPack();
  programs_.onFile = [&](const std::string&) { putLink(); };
  OpenSinglePacks(program_, pack, "S:\\Lumo");
  EXPECT_EQ(started().size(), 1U) << "the decoder alone";
  EXPECT_THAT(program_.state.packs.unopened, ElementsAre(pack));
  expectNothingElsewhereChanged();
}

TEST_P(LinkedLevels, ThatAppearBeforeSevenZipKeepThePackClosed) {
  const std::string pack = putGzPack();
  machine_.onCall("files.list " + kWork + "\\prg\\com\\setup\\aggdovra", [&] {
    // The second listing is the one that counts.
    machine_.onCall("files.list " + kWork + "\\prg\\com\\setup\\aggdovra",
                    [&] { machine_.onCall("files.look " + kWork, [&] { putLink(); }); });
  });
  OpenSinglePacks(program_, pack, "S:\\Lumo");
  EXPECT_EQ(started().size(), 1U) << "the decoder alone";
  EXPECT_THAT(program_.state.packs.unopened, ElementsAre(kWork + "\\" + kTree + "luda.zip"));
  EXPECT_EQ(linesThatBegin(kRefused + level() + ")"), 1U);
  expectNothingElsewhereChanged();
}

TEST_P(LinkedLevels, ThatAppearBeforeTheCopyAreNotCopiedFrom) {
  putPack("a");
  machine_.onCall("files.removeFile " + kSetup + "a.zip", [&] { putLink(); });
  try {
    search();
    FAIL() << "copied through a link";
  } catch (const RuntimeError& failure) {
    EXPECT_EQ(failure.number(), 75);
    EXPECT_EQ(failure.description(), "Cartella non copiata, collegamento non seguito: " + level());
  }
  expectNothingElsewhereChanged();
  EXPECT_TRUE(search()) << "the next one clears it";
  EXPECT_FALSE(machine_.diskOf(kWork).exists(kWork + "\\prg"));
  expectNothingElsewhereChanged();
}

TEST_P(LinkedLevels, ThatAFailingPackLeavesInTheDecodersTreeGoThemselves) {
  const std::string broken = packBytes({{kTree + "x.txt", "x"}}, 2);
  machine_.putFile("C:\\Lumo\\Programmi\\luda.gz", packBytes({{kTree + "luda.zip", broken}}));
  int files = 0;
  programs_.onFile = [&](const std::string&) {
    if (++files == 2) {
      putLink();
    }
  };
  OpenSinglePacks(program_, "C:\\Lumo\\Programmi\\luda.gz", "S:\\Lumo");
  EXPECT_EQ(files, 2);
  EXPECT_FALSE(machine_.diskOf(level()).exists(level()));
  expectNothingElsewhereChanged();
}

// --- On the server

/// There links are the administrator's: who may set them decides what set-ups run anyway.
TEST(LinksOnTheServer, LeadToWhereTheSetUpsLieAndGoThemselvesNowhere) {
  sim::SimMachine machine;
  const PackPrograms programs(machine);
  FakeProgram program(machine);
  machine.mount("S:");
  machine.mount("D:");
  machine.makeFolders("D:\\Setup\\grande");
  machine.makeFolders("S:\\Lumo\\prg\\com\\setup");
  machine.diskOf("S:\\").putLink("S:\\Lumo\\prg\\com\\setup\\aggdovra", "D:\\Setup");
  machine.putFile("D:\\Setup\\a.zip", packBytes({{kTree + "grande\\1.exe", "1"}}));
  OpenZipPacksInFolder(program, "D:\\Setup", "S:\\Lumo", true);
  EXPECT_EQ(machine.fileText("D:\\Setup\\grande\\1.exe"), "1");
  EXPECT_FALSE(machine.fileExists("D:\\Setup\\a.zip"));
  EXPECT_TRUE(machine.diskOf("S:\\").exists("S:\\Lumo\\prg\\com\\setup\\aggdovra"));
}

}  // namespace
}  // namespace trelv::tests
