#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

#include "kit/Failure.h"
#include "kit/HostShare.h"
#include "kit/Publication.h"
#include "kit/Verbs.h"
#include "packs/PackExtraction.h"
#include "sim/FailingMachine.h"
#include "sim/KilledMachine.h"
#include "sim/PowerLoss.h"
#include "support/Installation.h"
#include "support/kit/Publishing.h"
#include "support/kit/Trelv.h"
#include "support/kit/ZipPacks.h"

namespace trelv::tests {
namespace {

using namespace publishing;

using Json = nlohmann::ordered_json;

constexpr const char* kShelf = "S:\\Lumo\\prg\\tempterm\\trelv";

const std::string kOldConfiguration = configuration("09.94.00.00");
const std::string kNewConfiguration = configuration("09.95.00.00");

using Tree = std::map<std::string, std::string>;

void gather(sim::SimDisk& disk, const std::string& folder, Tree& tree) {
  for (const std::string& name : disk.names(folder)) {
    const std::string path = folder + "\\" + name;
    if (disk.folderExists(path)) {
      tree[path] = "<cartella>";
      gather(disk, path, tree);
    } else {
      tree[path] = disk.text(path);
    }
  }
}

/// A host, a station on which trelv runs, a pack that replaces one file and adds two, and another
/// one.
class Delivery {
 public:
  Delivery() {
    putSevenZip(machine());
    share().put(setup("zb.ini"), kOldConfiguration);
    share().put(setup("zb\\setup.exe"), "vecchio");
    share().put("S:\\Lumo\\mv\\zb\\mvbil.exe", "programma");
    share().put("S:\\Lumo\\mv\\zb\\togli.exe", "programma");
    share().put(setup("agdvcomp.ini"),
                "[prod01]\r\nid=ZB\r\nname=Bilancio\r\nconf=prg\\com\\setup\\aggdovra\\zb.ini\r\n");
    installation.putServerRecord("[ZB]\r\nversion=09.94.00.00\r\n");
    machine().putFile(kPack, zipPack({{"zb.ini", kNewConfiguration},
                                      {"zb/setup.exe", "vecchio"},
                                      {"zb/novità/leggimi.txt", "nuovo"},
                                      {"zb/perché.txt", "nuovo"}}));
    machine().putFile(kOther, zipPack({{"nerio/a.txt", "nerio"}, {"nerio/setup.exe", "nerio"}}));
  }

  static std::string setup(const std::string& path) { return std::string(kSetup) + "\\" + path; }

  sim::SimMachine& machine() { return station.machine(); }
  sim::SimDisk& share() { return installation.share(); }
  Tree tree() {
    Tree tree;
    gather(share(), kSetup, tree);
    return tree;
  }

  int publish(const std::vector<std::string>& packs = {kPack}) {
    std::vector<std::string> words{"publish", kHost, "--json"};
    words.insert(words.end(), packs.begin(), packs.end());
    return trelv.run(words);
  }
  int undo(const std::vector<std::string>& journal = {}) {
    std::vector<std::string> words{"publish", kHost, "--undo", "--json"};
    words.insert(words.end(), journal.begin(), journal.end());
    return trelv.run(words);
  }
  Json result() { return Json::parse(trelv.console.output).at("result"); }
  /// Of the publications, done or not.
  std::vector<std::string> journals() {
    std::vector<std::string> names;
    for (const std::string& name : share().exists(kShelf) ? share().names(kShelf) : names) {
      if (name.find("-20") != std::string::npos) {
        names.push_back(name);
      }
    }
    return names;
  }

  /// A start on the station opens what waits.
  void open() {
    modProdTrelvManager::OpenZipPacksInFolder(station.program(), kSetup, kHost, true);
    station.endProgram();
  }

  Installation installation;
  Station station{installation};
  Trelv trelv{station.machine()};
};

class Publish : public testing::Test, public Delivery {};

TEST_F(Publish, PackWaitsUnderItsOwnName) {
  const Tree before = tree();
  ASSERT_EQ(publish(), 0) << trelv.console.errors << trelv.console.output;
  Tree expected = before;
  expected[setup("zb-09.95.zip")] = machine().fileText(kPack);
  EXPECT_EQ(tree(), expected);
  EXPECT_EQ(result()["published"], Json({"zb-09.95.zip"}));
  EXPECT_EQ(result()["replaces"], Json({"zb.ini", "zb\\setup.exe"}));
  EXPECT_EQ(result()["adds"], Json({"zb\\novità\\leggimi.txt", "zb\\perché.txt"}));
}

TEST_F(Publish, PeopleSeeWhatIsBeingDone) {
  trelv.console.terminal = true;
  ASSERT_EQ(trelv.run({"publish", kHost, kPack}), 0) << trelv.console.output;
  const std::string& seen = trelv.console.errors;
  EXPECT_TRUE(seen.starts_with("\rConfronto di zb-09.95.zip con il server\r")) << seen;
  EXPECT_NE(seen.find("\rCopia di zb-09.95.zip  "), std::string::npos) << seen;
}

TEST_F(Publish, RepeatedWhileThePackWaitsDoesNothing) {
  publish();
  const Tree before = tree();
  const std::vector<std::string> journals = share().names(kShelf);
  EXPECT_EQ(publish(), 0);
  EXPECT_EQ(tree(), before);
  EXPECT_EQ(share().names(kShelf), journals);
  EXPECT_EQ(result()["journal"], Json(nullptr));
  EXPECT_EQ(result()["present"], Json({"zb-09.95.zip"}));
}

TEST_F(Publish, RepeatedBehindTheOpeningDoesNothing) {
  publish();
  open();
  ASSERT_FALSE(machine().fileExists(setup("zb-09.95.zip")));
  const Tree before = tree();
  EXPECT_EQ(publish(), 0);
  EXPECT_EQ(tree(), before);
}

TEST_F(Publish, UndoTakesAnUnopenedPackAway) {
  const Tree before = tree();
  publish();
  ASSERT_EQ(undo(), 0) << trelv.console.errors;
  EXPECT_EQ(tree(), before);
  EXPECT_EQ(result()["withdrawn"], Json({"zb-09.95.zip"}));
}

TEST_F(Publish, UndoPutsBackWhatWasThereAndRemovesWhatThePackBrought) {
  const Tree before = tree();
  publish();
  open();
  ASSERT_EQ(share().text(setup("zb.ini")), kNewConfiguration);
  ASSERT_EQ(undo(), 0) << trelv.console.errors;
  EXPECT_EQ(tree(), before);
  EXPECT_EQ(result()["restored"], Json({"zb.ini"}));
  EXPECT_EQ(result()["removed"], Json({"zb\\novità\\leggimi.txt", "zb\\perché.txt"}));
  EXPECT_EQ(result()["left"], Json::array());
}

TEST_F(Publish, UndoOverwritesReadOnlyFiles) {
  const Tree before = tree();
  share().setReadOnly(setup("zb.ini"));
  publish();
  open();
  share().setReadOnly(setup("zb.ini"));
  share().setReadOnly(setup("zb\\perché.txt"));
  ASSERT_EQ(undo(), 0) << trelv.console.errors;
  EXPECT_EQ(tree(), before);
}

TEST_F(Publish, UndoReplacesWhatAKilledOneLeftHalfCopied) {
  share().put(setup("nerio\\a.txt"), "prima");
  const Tree before = tree();
  publish({kOther});
  open();
  const std::string left = setup("nerio\\a.txt.trelv.trelv");
  share().put(left, "mezzo");
  share().setReadOnly(left);
  ASSERT_EQ(undo(), 0) << trelv.console.errors;
  EXPECT_EQ(tree(), before);
}

TEST_F(Publish, UndoLeavesWhatWasChangedSinceAndKeepsItsOldContent) {
  publish();
  const std::string journal = result()["journal"];
  open();
  share().put(setup("zb.ini"), "corretto a mano");
  share().put(setup("zb\\novità\\altro.txt"), "di altri");
  ASSERT_EQ(undo(), 0);
  EXPECT_EQ(share().text(setup("zb.ini")), "corretto a mano");
  EXPECT_TRUE(share().fileExists(setup("zb\\novità\\altro.txt")));
  EXPECT_EQ(result()["left"], Json({"zb.ini"}));
  EXPECT_EQ(share().text(std::string(kShelf) + "\\" + journal + "\\file\\2"), kOldConfiguration);
}

TEST_F(Publish, UndoTellsTheVersionsThatStayRaised) {
  publish();
  open();
  installation.putServerRecord("[ZB]\r\nversion=09.95.00.00\r\n");
  ASSERT_EQ(undo(), 0);
  EXPECT_EQ(result()["raised"], Json::array({{{"product", "ZB"},
                                              {"side", "Server"},
                                              {"recorded", "09.95.00.00"},
                                              {"before", "09.94.00.00"}}}));
  EXPECT_EQ(installation.serverRecord(), "[ZB]\r\nversion=09.95.00.00\r\n");
}

TEST_F(Publish, UndoTellsTheRaisedVersionsOfAllProducts) {
  const std::vector<std::string> products{"KXK", "LUDA", "NERIO", "Q2", "ZB", "ZM"};
  share().put(setup("agdvcomp.ini"), "[prod01]\r\nid=KXK\r\nname=K\r\nconf=k.ini\r\n");
  installation.putServerRecord("");
  publish();
  std::string record;
  for (const std::string& product : products) {
    record += "[" + product + "]\r\nversion=09.95.00.00\r\n";
  }
  installation.putServerRecord(record);
  ASSERT_EQ(undo(), 0);
  std::vector<std::string> told;
  const Json all = result()["raised"];
  for (const Json& raised : all) {
    told.push_back(raised["product"]);
  }
  EXPECT_EQ(told, products);
}

TEST_F(Publish, TellsAPersonWhatIsAndWillBe) {
  trelv.console.terminal = true;
  ASSERT_EQ(trelv.run({"publish", kHost, kPack}), 0) << trelv.console.errors;
  EXPECT_NE(trelv.console.errors.find("\rConfronto di zb-09.95.zip con il server"),
            std::string::npos);
  const std::string journal = journals().at(0);
  EXPECT_EQ(trelv.console.output,
            "Pubblicati:\n    zb-09.95.zip\n"
            "All'apertura verranno sostituiti:\n    zb.ini\n    zb\\setup.exe\n"
            "All'apertura verranno aggiunti:\n    zb\\novità\\leggimi.txt\n    zb\\perché.txt\n"
            "Giornale: " +
                journal + " (si annulla con --undo " + journal + ")\n");
  ASSERT_EQ(trelv.run({"publish", kHost, kPack}), 0);
  EXPECT_EQ(trelv.console.output, "Già presenti sul server:\n    zb-09.95.zip\nNulla da fare.\n");
  ASSERT_EQ(trelv.run({"publish", kHost, "--list"}), 0);
  EXPECT_EQ(trelv.console.output.find(journal + "  "), 0U);
  EXPECT_TRUE(trelv.console.output.ends_with("  in attesa\n    zb-09.95.zip\n"))
      << trelv.console.output;
  ASSERT_EQ(trelv.run({"publish", kHost, "--undo"}), 0);
  EXPECT_EQ(trelv.console.output, "Annullata la pubblicazione " + journal +
                                      "\nPacchi tolti prima dell'apertura:\n    zb-09.95.zip\n");
  ASSERT_EQ(trelv.run({"publish", kHost, "--undo"}), 0);
  EXPECT_EQ(trelv.console.output, "Nessuna pubblicazione da annullare.\n");
}

TEST_F(Publish, UndoOfUndoneGoesToTheOneBeforeAndThenFindsNothing) {
  const Tree before = tree();
  publish();
  publish({kOther});
  const std::string last = result()["journal"];
  EXPECT_EQ(undo(), 0);
  EXPECT_EQ(result()["journal"], last);
  EXPECT_EQ(undo(), 0);
  EXPECT_EQ(tree(), before);
  EXPECT_EQ(undo(), 0);
  EXPECT_EQ(result()["journal"], Json(nullptr));
  EXPECT_EQ(undo({last}), 0);
  EXPECT_EQ(tree(), before);
}

TEST_F(Publish, UndoOfANamedJournalLeavesTheOthers) {
  publish();
  const std::string first = result()["journal"];
  publish({kOther});
  ASSERT_EQ(undo({first}), 0) << trelv.console.errors;
  EXPECT_FALSE(share().exists(setup("zb-09.95.zip")));
  EXPECT_TRUE(share().exists(setup("nerio-03.21.zip")));
}

TEST_F(Publish, UndoIsRefusedWhileALaterPublicationHasTheSameFiles) {
  publish();
  const std::string first = result()["journal"];
  machine().putFile("C:\\Consegne\\zb-09.96.zip",
                    zipPack({{"ZB.INI", configuration("09.96.00.00")}}));
  publish({"C:\\Consegne\\zb-09.96.zip"});
  const Tree before = tree();
  EXPECT_EQ(undo({first}), 2);
  EXPECT_NE(trelv.console.errors.find("prima va annullata la pubblicazione 0002-"),
            std::string::npos);
  EXPECT_EQ(tree(), before);
}

TEST_F(Publish, UndoOfAnUnknownJournalIsTold) {
  publish();
  EXPECT_EQ(undo({"0009-niente"}), 2);
  EXPECT_NE(trelv.console.errors.find("0009-niente: nessuna pubblicazione"), std::string::npos);
}

TEST_F(Publish, WaitingPackOfTheSameNameIsReplacedAndComesBack) {
  publish();
  const std::string old = machine().fileText(kPack);
  machine().putFile(kPack, zipPack({{"zb.ini", configuration("09.95.00.01")}}));
  ASSERT_EQ(publish(), 0);
  EXPECT_EQ(share().text(setup("zb-09.95.zip")), machine().fileText(kPack));
  ASSERT_EQ(undo(), 0);
  EXPECT_EQ(share().text(setup("zb-09.95.zip")), old);
}

TEST_F(Publish, ReplacedPackComesBackAlsoBehindTheOpening) {
  publish();
  const Tree before = tree();
  machine().putFile(kPack, zipPack({{"zb.ini", configuration("09.95.00.01")}}));
  publish();
  open();
  ASSERT_EQ(undo(), 0) << trelv.console.errors;
  EXPECT_EQ(tree(), before);
}

TEST_F(Publish, WhatAWaitingPackBringsIsWhatWasThere) {
  machine().putFile("C:\\Consegne\\a.zip", zipPack({{"zb.ini", configuration("09.94.00.01")}}));
  publish({"C:\\Consegne\\a.zip"});
  publish();
  open();
  ASSERT_EQ(share().text(setup("zb.ini")), kNewConfiguration);
  undo();
  EXPECT_EQ(share().text(setup("zb.ini")), configuration("09.94.00.01"));
}

TEST_F(Publish, PacksInAPackAreTakenBackToo) {
  const Tree before = tree();
  machine().putFile(kPack,
                    zipPack({{"interno.zip", zipPack({{"zb.ini", configuration("09.96.00.00")}})},
                             {"zb.ini", kNewConfiguration}}));
  ASSERT_EQ(publish(), 0);
  open();
  open();
  ASSERT_EQ(share().text(setup("zb.ini")), configuration("09.96.00.00"));
  ASSERT_EQ(undo(), 0);
  EXPECT_EQ(tree(), before);
}

TEST_F(Publish, ListTellsEachPublicationAndChangesNothing) {
  EXPECT_EQ(trelv.run({"publish", kHost, "--list"}), 0);
  EXPECT_EQ(trelv.console.output, "Nessuna pubblicazione.\n");
  EXPECT_FALSE(share().exists(kShelf));
  publish();
  publish({kOther});
  undo();
  open();
  const std::size_t writes = machine().openings("S:\\").writes;
  ASSERT_EQ(trelv.run({"publish", kHost, "--list", "--json"}), 0);
  const Json journals = result()["journals"];
  ASSERT_EQ(journals.size(), 2U);
  EXPECT_EQ(journals[0].dump(),
            R"({"name":")" + journals[0].at("name").get<std::string>() +
                R"(","written":"16/11/2026 09:30:00","author":"mario@STAZIONE","state":"opened",)"
                R"("packs":["zb-09.95.zip"],"waiting":[],"replaces":["zb.ini","zb\\setup.exe"],)"
                R"("adds":["zb\\novità\\leggimi.txt","zb\\perché.txt"]})");
  EXPECT_EQ(journals[1]["state"], "undone");
  EXPECT_EQ(machine().openings("S:\\").writes, writes);
}

TEST_F(Publish, ErrorOfTheJudgeChangesNothing) {
  const Tree before = tree();
  kit::HostShare host(machine().machine(), kHost);
  kit::Progress progress(trelv.console, false);
  const auto judge = [](const std::vector<std::string>& packs) {
    return std::vector<kit::Finding>{
        {"TK505", kit::Severity::Warning, packs.at(0), std::nullopt, "a", "b"},
        {"TK502", kit::Severity::Error, packs.at(0), std::nullopt, "a", "b"}};
  };
  const kit::PublicationResult told = kit::publish(host, {kPack}, judge, progress);
  EXPECT_TRUE(told.refused);
  EXPECT_EQ(told.findings.size(), 2U);
  EXPECT_EQ(tree(), before);
  EXPECT_TRUE(host.shelf().names().empty());
}

TEST_F(Publish, ShareThatCannotBeWrittenIsTold) {
  share().setRights("S:\\Lumo", {{"*", sim::Right::Read}});
  const Tree before = tree();
  EXPECT_EQ(publish(), 2);
  EXPECT_NE(trelv.console.errors.find("S:\\Lumo\\prg\\tempterm\\trelv"), std::string::npos);
  EXPECT_EQ(tree(), before);
}

TEST_F(Publish, SetupFolderThatCannotBeWrittenLeavesNoJournal) {
  share().denyWriting(kSetup);
  const Tree before = tree();
  EXPECT_EQ(publish(), 2);
  EXPECT_EQ(tree(), before);
  EXPECT_TRUE(journals().empty());
  EXPECT_EQ(trelv.run({"publish", kHost, "--list"}), 0);
  EXPECT_EQ(trelv.console.output, "Nessuna pubblicazione.\n");
}

TEST_F(Publish, JournalsThatCannotBeReadAreNotTakenForNone) {
  publish();
  share().deny(kShelf);
  EXPECT_EQ(trelv.run({"publish", kHost, "--list"}), 2);
  EXPECT_NE(trelv.console.errors.find(kShelf), std::string::npos) << trelv.console.errors;
}

TEST_F(Publish, FoldersThatStandAreNotMadeAgain) {
  publish({kOther});
  machine().callLog().clear();
  ASSERT_EQ(publish(), 0) << trelv.console.errors;
  EXPECT_EQ(machine().callLog().countOf("files.makeFolder S:\\Lumo"),
            machine().callLog().countOf("files.makeFolder " + std::string(kShelf) + "\\0002"));
}

TEST_F(Publish, PackThatSomebodyPutsThereMeanwhileStaysAndEndsThePublication) {
  Tree expected = tree();
  expected[setup("nerio-03.21.zip")] = "di altri";
  machine().onCall("files.write S:\\Lumo\\prg\\tempterm\\trelv\\0001",
                   [this]() -> void { share().put(setup("nerio-03.21.zip"), "di altri"); });
  EXPECT_EQ(publish({kPack, kOther}), 2);
  EXPECT_EQ(tree(), expected);
  EXPECT_TRUE(journals().empty());
}

TEST_F(Publish, PackThatChangesDuringTheCopyIsNotPublished) {
  const Tree before = tree();
  machine().onCall("files.copyFile " + std::string(kPack), [this]() -> void {
    machine().putFile(kPack, zipPack({{"zb.ini", "a"}}));
  });
  EXPECT_EQ(publish(), 2);
  EXPECT_EQ(trelv.console.errors,
            "trelv: " + std::string(kPack) + ": il pacco è cambiato durante la copia\n");
  EXPECT_EQ(tree(), before);
}

TEST_F(Publish, PackThatIsGoneWhenItIsJudgedIsTold) {
  machine().onCall("files.look " + setup("agdvcomp.ini"),
                   [this]() -> void { machine().removeTree(kPack); });
  machine().onCall("files.read " + setup("agdvcomp.ini"),
                   [this]() -> void { machine().removeTree(kPack); });
  EXPECT_EQ(publish(), 2);
  EXPECT_NE(trelv.console.errors.find(kPack), std::string::npos) << trelv.console.errors;
}

TEST_F(Publish, WaitingPackThatCannotBeReadEndsThePublication) {
  machine().putFile("C:\\Consegne\\a.zip", zipPack({{"zb.ini", configuration("09.94.00.01")}}));
  publish({"C:\\Consegne\\a.zip"});
  const Tree before = tree();
  machine().onCall("files.copyFile " + std::string(kPack),
                   [this]() -> void { share().holdOpen(setup("a.zip"), sim::Sharing::None); });
  EXPECT_EQ(publish(), 2);
  share().release(setup("a.zip"));
  EXPECT_EQ(tree(), before);
}

TEST_F(Publish, UndoWhoseKeptCopyIsGoneNamesItAndChangesNothing) {
  publish();
  machine().putFile(kPack, zipPack({{"zb.ini", configuration("09.95.00.01")}}));
  publish();
  const std::string kept =
      std::string(kShelf) + "\\" + result()["journal"].get<std::string>() + "\\file\\1";
  const std::string bytes = share().text(kept);
  share().removeTree(kept);
  const Tree waiting = tree();
  EXPECT_EQ(undo(), 2);
  EXPECT_EQ(trelv.console.errors, "trelv: " + kept + ": Impossibile trovare il file\n");
  EXPECT_EQ(tree(), waiting);
  share().put(kept, bytes);
  const std::string file = replaceAll(kept, "\\file\\1", "\\file\\2");
  share().removeTree(file);
  open();
  const Tree opened = tree();
  EXPECT_EQ(undo(), 2);
  EXPECT_EQ(trelv.console.errors, "trelv: " + file + ": Impossibile trovare il file\n");
  EXPECT_EQ(tree(), opened);
}

// --- What a publication that was ended by force has left

TEST_F(Publish, InterruptedBeforeItsJournalIsTakenBackByTheNextUndo) {
  const Tree before = tree();
  const std::string name = "0001-20261116-093000";
  share().put(std::string(kShelf) + "\\" + name + "\\file\\1", "mezzo");
  share().put(setup("zb-09.95.zip." + name + ".trelv"), "mezzo");
  ASSERT_EQ(trelv.run({"publish", kHost, "--undo"}), 0) << trelv.console.errors;
  EXPECT_EQ(trelv.console.output, "Annullata la pubblicazione " + name +
                                      " (interrotta prima che un pacco fosse al suo posto)\n");
  EXPECT_EQ(tree(), before);
  EXPECT_TRUE(journals().empty());
}

TEST_F(Publish, InterruptedBetweenTwoPacksGoesOnWithTheNext) {
  publish({kPack, kOther});
  const Tree whole = tree();
  const std::string journal = result()["journal"];
  const std::string staged = setup("nerio-03.21.zip." + journal + ".trelv");
  share().put(staged, share().text(setup("nerio-03.21.zip")));
  share().removeTree(setup("nerio-03.21.zip"));
  EXPECT_EQ(publish({kPack, kOther}), 0) << trelv.console.errors;
  EXPECT_EQ(result()["present"], Json({"zb-09.95.zip", "nerio-03.21.zip"}));
  EXPECT_EQ(tree(), whole);
  EXPECT_EQ(journals(), (std::vector<std::string>{journal}));
}

TEST_F(Publish, InterruptedBeforeTheFirstPackIsTakenBackByTheNextUndo) {
  const Tree before = tree();
  publish();
  const std::string journal = result()["journal"];
  share().put(setup("zb-09.95.zip." + journal + ".trelv"), share().text(setup("zb-09.95.zip")));
  share().removeTree(setup("zb-09.95.zip"));
  EXPECT_EQ(undo(), 0) << trelv.console.errors;
  EXPECT_EQ(result()["journal"], journal);
  EXPECT_EQ(tree(), before);
  EXPECT_TRUE(journals().empty());
}

TEST_F(Publish, FullShareIsLeftAsItWas) {
  const Tree before = tree();
  share().setCapacity(share().usedBytes() + 100);
  EXPECT_EQ(publish(), 2);
  EXPECT_EQ(tree(), before);
}

TEST_F(Publish, WhatIsMissingIsTold) {
  EXPECT_EQ(publish({"C:\\Consegne\\niente.zip"}), 2);
  EXPECT_NE(trelv.console.errors.find("C:\\Consegne\\niente.zip"), std::string::npos);
  EXPECT_EQ(trelv.run({"publish", "S:\\Altro", kPack}), 2);
  EXPECT_NE(trelv.console.errors.find("S:\\Altro"), std::string::npos);
}

TEST_F(Publish, TwoPacksOfOneNameAreRefused) {
  machine().putFile("C:\\Altro\\ZB-09.95.zip", "x");
  const Tree before = tree();
  EXPECT_EQ(publish({kPack, "C:\\Altro\\ZB-09.95.zip"}), 2);
  EXPECT_EQ(tree(), before);
}

TEST_F(Publish, PackThatNoStartWouldOpenIsRefused) {
  machine().putFile("C:\\Consegne\\zb.gz", "x");
  machine().putFile("C:\\Consegne\\zb.ZIP", machine().fileText(kPack));
  const Tree before = tree();
  EXPECT_NE(publish({"C:\\Consegne\\zb.gz"}), 0);
  EXPECT_NE(publish({"C:\\Consegne\\zb.ZIP"}), 0);
  EXPECT_EQ(tree(), before);
  kit::HostShare host(machine().machine(), kHost);
  kit::Progress progress(trelv.console, false);
  const auto judge = [](const std::vector<std::string>&) { return std::vector<kit::Finding>(); };
  EXPECT_THROW(kit::publish(host, {"C:\\Consegne\\zb.ZIP"}, judge, progress), kit::Failure);
  EXPECT_EQ(tree(), before);
}

TEST_F(Publish, WrongUsageIsTold) {
  EXPECT_EQ(trelv.run({"publish"}), 64);
  EXPECT_EQ(trelv.run({"publish", kHost}), 64);
  EXPECT_EQ(trelv.run({"publish", kHost, "--undo", "--list"}), 64);
  EXPECT_EQ(trelv.run({"publish", kHost, "--undo", "a", "b"}), 64);
  EXPECT_EQ(trelv.run({"publish", kHost, "--list", kPack}), 64);
}

TEST_F(Publish, AnotherPublicationUnderWayIsWaitedForAndTold) {
  share().makeFolders(kShelf);
  const auto held = machine().exclusion().takeForAnother(
      std::string(kShelf) + "\\pubblicazione.lck", "anna@PC7\r\n");
  const Tree before = tree();
  EXPECT_EQ(publish(), 2);
  EXPECT_NE(trelv.console.errors.find("un'altra pubblicazione è in corso (anna@PC7)"),
            std::string::npos);
  EXPECT_EQ(tree(), before);
}

TEST_F(Publish, RefusalLeavesNothingBehind) {
  Tree before;
  gather(share(), "S:", before);
  machine().putFile("C:\\Consegne\\rotto.zip", "PK");
  EXPECT_EQ(publish({"C:\\Consegne\\rotto.zip"}), 1);
  EXPECT_EQ(result().dump(),
            R"({"journal":null,"published":[],"present":[],"replaces":[],"adds":[]})");
  Tree after;
  gather(share(), "S:", after);
  EXPECT_EQ(after, before);
}

TEST_F(Publish, FolderIsNoPack) {
  machine().putFile("C:\\Consegne\\cartella.zip\\a.txt", "a");
  EXPECT_EQ(publish({"C:\\Consegne\\cartella.zip"}), 2);
  EXPECT_EQ(trelv.console.errors, "trelv: C:\\Consegne\\cartella.zip: è una cartella\n");
}

TEST_F(Publish, JournalThatIsDamagedIsToldAndKeepsNobodyFromPublishing) {
  const std::string damaged = std::string(kShelf) + "\\0007-20261121-100000\\giornale.json";
  for (const char* const text : {"", "{", "[]", "{\"schema\": \"trelv-giornale/2\"}",
                                 "{\"schema\": \"trelv-giornale/1\"}"}) {
    share().put(damaged, text);
    ASSERT_EQ(publish(), 0) << trelv.console.errors;
    ASSERT_EQ(trelv.run({"publish", kHost, "--list", "--json"}), 0);
    EXPECT_EQ(result()["journals"].at(0)["state"], "damaged");
    // An earlier one may have brought the same.
    EXPECT_EQ(undo(), 0);
    EXPECT_EQ(undo(), 2);
    EXPECT_EQ(trelv.console.errors,
              "trelv: " + damaged + ": giornale danneggiato o di un altro programma\n");
    EXPECT_TRUE(share().exists(damaged));
    share().removeTree(kShelf);
  }
}

TEST_F(Publish, UndoBehindADamagedJournalIsRefused) {
  publish();
  const std::string first = result()["journal"];
  publish({kOther});
  const std::string second = result()["journal"];
  const Tree before = tree();
  share().put(std::string(kShelf) + "\\" + second + "\\giornale.json", "");
  EXPECT_EQ(undo({first}), 2);
  EXPECT_EQ(undo({second}), 2);
  EXPECT_EQ(tree(), before);
}

TEST_F(Publish, JournalThatLeadsElsewhereIsNotFollowed) {
  publish();
  const std::string path =
      std::string(kShelf) + "\\" + result()["journal"].get<std::string>() + "\\giornale.json";
  const std::string whole = share().text(path);
  open();
  const Tree before = tree();
  const std::string record = share().text(Installation::kServerRecord);
  for (const auto& [from, to] : std::vector<std::pair<std::string, std::string>>{
           {"zb\\\\setup.exe", "..\\\\..\\\\etc\\\\agdvver.ini"},
           {"zb\\\\novità", "zb\\\\..\\\\.."},
           {"zb.ini", "C:\\\\zb.ini"},
           {"zb-09.95.zip", "..\\\\zb-09.95.zip"},
           {"zb-09.95.zip", "zb\\\\zb-09.95.zip"},
           {"\"kept\": \"2\"", "\"kept\": \"2\\\\x\""},
           {"\"kept\": \"2\"", "\"kept\": \"..\\\\..\\\\x\""}}) {
    const std::string changed = replaceAll(whole, from, to);
    ASSERT_NE(changed, whole) << from;
    share().put(path, changed);
    EXPECT_EQ(undo(), 2) << to;
    EXPECT_EQ(tree(), before) << to;
    EXPECT_EQ(share().text(Installation::kServerRecord), record);
  }
  share().put(path, whole);
  EXPECT_EQ(undo(), 0);
}

TEST_F(Publish, NumbersOfJournalsGoOnBeyondFourDigits) {
  publish({kOther});
  const std::string first = result()["journal"];
  share().put(std::string(kShelf) + "\\9999-20260101-000000\\giornale.json",
              share().text(std::string(kShelf) + "\\" + first + "\\giornale.json"));
  publish();
  EXPECT_EQ(result()["journal"].get<std::string>().substr(0, 6), "10000-");
  EXPECT_EQ(undo(), 0);
  EXPECT_EQ(result()["journal"].get<std::string>().substr(0, 6), "10000-");
}

TEST_F(Publish, WhatSomebodyElseKeepsBesideTheJournalsStays) {
  share().put(std::string(kShelf) + "\\0001-note\\leggimi.txt", "mio");
  share().put(std::string(kShelf) + "\\elenco.txt", "mio");
  publish();
  undo();
  EXPECT_EQ(share().text(std::string(kShelf) + "\\0001-note\\leggimi.txt"), "mio");
  EXPECT_EQ(share().text(std::string(kShelf) + "\\elenco.txt"), "mio");
}

TEST_F(Publish, OnlyWhatIsNamedLikeAJournalIsOne) {
  const std::vector<std::string> others{"123-20260101-000000",         "123456789-20260101-000000",
                                        "99999999999-20260101-000000", "note-20260101-000000",
                                        "0001-2026a101-000000",        "0001-20260101_000000"};
  for (const std::string& other : others) {
    share().put(std::string(kShelf) + "\\" + other + "\\leggimi.txt", "mio");
  }
  ASSERT_EQ(publish(), 0) << trelv.console.errors;
  EXPECT_EQ(result()["journal"].get<std::string>().substr(0, 5), "0001-");
  EXPECT_EQ(undo(), 0) << trelv.console.errors;
  for (const std::string& other : others) {
    EXPECT_EQ(share().text(std::string(kShelf) + "\\" + other + "\\leggimi.txt"), "mio") << other;
  }
}

TEST_F(Publish, JournalNamesItsFormAndTakesFoldersOfOneLetter) {
  const Tree before = tree();
  machine().putFile(kPack, zipPack({{"zb/a/b/c.txt", "nuovo"}}));
  ASSERT_EQ(publish(), 0) << trelv.console.errors;
  const std::string path =
      std::string(kShelf) + "\\" + result()["journal"].get<std::string>() + "\\giornale.json";
  EXPECT_EQ(Json::parse(share().text(path))["schema"], "trelv-giornale/1");
  open();
  EXPECT_EQ(share().text(setup("zb\\a\\b\\c.txt")), "nuovo");
  ASSERT_EQ(undo(), 0) << trelv.console.errors;
  EXPECT_EQ(tree(), before);
}

TEST_F(Publish, JournalToTakeBackIsNamedByNameOrPath) {
  for (const char* const before : {"", "S:\\Lumo\\prg\\tempterm\\trelv\\", "./"}) {
    publish();
    const std::string name = result()["journal"];
    EXPECT_EQ(undo({before + name + (*before == '\0' ? "" : "\\")}), 0);
    EXPECT_EQ(result()["journal"], name);
    EXPECT_EQ(undo({name}), 0);
    EXPECT_TRUE(result()["journal"].is_null());
  }
  for (const char* const name : {"..", "pippo", "", "\\", "0001"}) {
    EXPECT_EQ(undo({name}), 2) << name;
    EXPECT_EQ(std::count(trelv.console.errors.begin(), trelv.console.errors.end(), '\n'), 1);
  }
}

// --- Killed, failing, and two at once, at each call

using MakeDelivery = std::function<void(Delivery&)>;

struct Work {
  const char* name;
  /// What happened before.
  MakeDelivery prepare;
  /// What is disturbed; its exit code.
  std::function<int(Delivery&)> work;
};

int publishTwo(Delivery& delivery) { return delivery.publish({kPack, kOther}); }
int undoLatest(Delivery& delivery) { return delivery.undo(); }

void publishAnotherOfTheName(Delivery& delivery) {
  const std::string bytes = delivery.machine().fileText(kPack);
  delivery.machine().putFile(kPack, zipPack({{"zb.ini", configuration("09.94.00.01")}}));
  delivery.publish();
  delivery.machine().putFile(kPack, bytes);
}

const std::vector<Work>& works() {
  static const std::vector<Work> all{
      {"publish", [](Delivery&) {}, [](Delivery& delivery) { return delivery.publish(); }},
      {"publish two", [](Delivery&) {}, publishTwo},
      {"replace a waiting pack", publishAnotherOfTheName,
       [](Delivery& delivery) { return delivery.publish(); }},
      {"undo of a waiting pack", [](Delivery& delivery) { delivery.publish(); }, undoLatest},
      {"undo of an opened pack",
       [](Delivery& delivery) {
         delivery.publish();
         delivery.open();
       },
       undoLatest},
      {"undo of a replaced pack",
       [](Delivery& delivery) {
         publishAnotherOfTheName(delivery);
         delivery.publish();
       },
       undoLatest},
  };
  return all;
}

std::unique_ptr<Delivery> prepared(const Work& work) {
  auto delivery = std::make_unique<Delivery>();
  work.prepare(*delivery);
  return delivery;
}

/// What a start sees: no file under another name than its own.
Tree seen(Delivery& delivery) {
  Tree tree = delivery.tree();
  std::erase_if(tree, [](const auto& each) { return each.first.ends_with(".trelv"); });
  return tree;
}

/// Each file stands as it did before or as it does afterwards, whole.
void expectOldOrNew(const Tree& found, const Tree& before, const Tree& after,
                    const std::string& where) {
  for (const auto& [path, text] : found) {
    const auto old = before.find(path);
    const auto made = after.find(path);
    EXPECT_TRUE((old != before.end() && old->second == text) ||
                (made != after.end() && made->second == text))
        << where << ": " << path;
  }
  for (const auto& [path, text] : before) {
    EXPECT_TRUE(!after.contains(path) || found.contains(path)) << where << ": " << path;
  }
}

struct Ends {
  Tree before;
  Tree after;
};

Ends undisturbed(const Work& work) {
  const std::unique_ptr<Delivery> delivery = prepared(work);
  Ends ends;
  ends.before = delivery->tree();
  EXPECT_EQ(work.work(*delivery), 0) << work.name << delivery->trelv.console.errors;
  ends.after = delivery->tree();
  return ends;
}

bool isUndo(const Work& work) { return std::string(work.name).starts_with("undo"); }

class PublishDisturbed : public testing::TestWithParam<Work> {};

INSTANTIATE_TEST_SUITE_P(Works, PublishDisturbed, testing::ValuesIn(works()),
                         [](const testing::TestParamInfo<Work>& row) -> std::string {
                           return replaceAll(row.param.name, " ", "_");
                         });

/// How far each call can have come when the program is killed in it.
std::vector<std::vector<sim::Unfinished>> waysToLeave(const Work& work) {
  const std::unique_ptr<Delivery> delivery = prepared(work);
  delivery->machine().callLog().clear();
  work.work(*delivery);
  std::vector<std::vector<sim::Unfinished>> ways;
  for (const sim::SimCall& call : delivery->machine().callLog().all()) {
    ways.push_back({sim::Unfinished::NotBegun});
    if (sim::KilledMachine::canBeLeftBegun(call.kind)) {
      ways.back().insert(ways.back().end(), {sim::Unfinished::Empty, sim::Unfinished::Half});
    }
  }
  return ways;
}

/// Lets the work end in the call of this number; the call's text, empty where there is none.
using Disturb = std::function<std::string(Delivery&, std::size_t number, sim::Unfinished left)>;

void expectRepairedBehind(const Work& work, const Ends& ends, Delivery& delivery,
                          const std::string& where) {
  expectOldOrNew(seen(delivery), ends.before, ends.after, where);
  // Behind the last change an undo would be one of an earlier publication.
  if (isUndo(work) && seen(delivery) == ends.after) {
    return;
  }
  EXPECT_EQ(work.work(delivery), 0) << where << delivery.trelv.console.errors;
  EXPECT_EQ(delivery.tree(), ends.after) << where;
  if (!isUndo(work)) {
    EXPECT_EQ(delivery.undo(), 0) << where << delivery.trelv.console.errors;
  }
  EXPECT_EQ(delivery.tree(), isUndo(work) ? ends.after : ends.before) << where;
}

void expectRepairedBehindEach(const Work& work, const Disturb& disturb) {
  const Ends ends = undisturbed(work);
  const auto kinds = waysToLeave(work);
  for (std::size_t number = 1; number <= kinds.size(); ++number) {
    for (const sim::Unfinished left : kinds[number - 1]) {
      const std::unique_ptr<Delivery> delivery = prepared(work);
      const std::string call = disturb(*delivery, number, left);
      ASSERT_NE(call, "");
      expectRepairedBehind(work, ends, *delivery, std::string(work.name) + ", " + call);
    }
  }
}

TEST_P(PublishDisturbed, KilledInAnyCallLeavesOldOrNewAndIsRepeatedSafely) {
  const Work& work = GetParam();
  expectRepairedBehindEach(
      work, [&](Delivery& delivery, std::size_t number, sim::Unfinished left) -> std::string {
        sim::KilledMachine killed(delivery.machine(), number, left);
        try {
          work.work(delivery);
        } catch (const sim::Killed&) {
        }
        return killed.killedCall();
      });
}

TEST_P(PublishDisturbed, PowerFailureInAnyCallLeavesOldOrNewAndIsRepeatedSafely) {
  const Work& work = GetParam();
  expectRepairedBehindEach(
      work, [&](Delivery& delivery, std::size_t number, sim::Unfinished left) -> std::string {
        sim::PowerLoss power(delivery.machine(), {"S:"}, number, left);
        try {
          work.work(delivery);
        } catch (const sim::Killed&) {
        }
        std::mt19937 random(static_cast<unsigned>(number));
        power.cut([&](std::size_t count) -> std::size_t { return random() % count; });
        return power.deadlyCall();
      });
}

/// Only an undo behind the opening needs what was kept. The last failure is one behind the end.
TEST(PublishPower, WhatWasKeptIsThereForAnUndoBehindTheOpening) {
  const Work& publish = works().front();
  const Ends ends = undisturbed(publish);
  const std::size_t calls = waysToLeave(publish).size();
  for (std::size_t number = 1; number <= calls + 1; ++number) {
    const std::unique_ptr<Delivery> delivery = prepared(publish);
    {
      sim::PowerLoss power(delivery->machine(), {"S:"}, number);
      try {
        publish.work(*delivery);
      } catch (const sim::Killed&) {
      }
      // All that can be lost is: changes of folders stay.
      power.cut([](std::size_t count) -> std::size_t { return count == 3 || count == 4 ? 1 : 0; });
    }
    EXPECT_EQ(publish.work(*delivery), 0) << number << delivery->trelv.console.errors;
    delivery->open();
    EXPECT_EQ(delivery->undo(), 0) << number << delivery->trelv.console.errors;
    EXPECT_EQ(delivery->tree(), ends.before) << number;
  }
}

std::size_t journalsOf(Delivery& delivery) {
  return delivery.share().exists(kShelf) ? delivery.share().names(kShelf).size() : 0;
}

TEST_P(PublishDisturbed, UndoBehindAKilledPublicationTakesBackThatOneAlone) {
  const Work& work = GetParam();
  if (isUndo(work)) {
    return;
  }
  const Ends ends = undisturbed(work);
  bool reached = true;
  for (std::size_t number = 1; reached; ++number) {
    const std::unique_ptr<Delivery> delivery = prepared(work);
    const std::size_t journals = journalsOf(*delivery);
    std::string where;
    {
      sim::KilledMachine killed(delivery->machine(), number);
      try {
        work.work(*delivery);
      } catch (const sim::Killed&) {
      }
      reached = killed.reached();
      where = std::string(work.name) + ", " + killed.killedCall();
    }
    if (!reached || journalsOf(*delivery) == journals) {
      continue;
    }
    EXPECT_EQ(delivery->undo(), 0) << where << delivery->trelv.console.errors;
    EXPECT_EQ(delivery->tree(), ends.before) << where;
    EXPECT_FALSE(delivery->result()["journal"].is_null()) << where;
  }
}

TEST_P(PublishDisturbed, FailureInAnyCallLeavesOldOrNewAndIsRepeatedSafely) {
  const Work& work = GetParam();
  const Ends ends = undisturbed(work);
  bool reached = true;
  for (std::size_t number = 1; reached; ++number) {
    for (const sim::FailureSpan span : {sim::FailureSpan::Once, sim::FailureSpan::FromThenOn}) {
      const std::unique_ptr<Delivery> delivery = prepared(work);
      std::string where;
      int exitCode = 0;
      {
        sim::FailingMachine failing(delivery->machine(), number, span);
        exitCode = work.work(*delivery);
        reached = failing.reached();
        where = std::string(work.name) + ", " + failing.failedCall();
      }
      EXPECT_TRUE(exitCode == 0 || exitCode == 2 || (exitCode == 1 && !isUndo(work))) << where;
      const Tree found = seen(*delivery);
      expectOldOrNew(found, ends.before, ends.after, where);
      if (exitCode == 0) {
        EXPECT_EQ(found, ends.after) << where;
      } else if (span == sim::FailureSpan::Once && !isUndo(work)) {
        EXPECT_EQ(found, ends.before) << where;
      }
      if (exitCode == 0 || (isUndo(work) && found == ends.after)) {
        continue;
      }
      EXPECT_EQ(work.work(*delivery), 0) << where << delivery->trelv.console.errors;
      EXPECT_EQ(delivery->tree(), ends.after) << where;
    }
  }
}

std::size_t callsOf(const Work& work) {
  const std::unique_ptr<Delivery> delivery = prepared(work);
  const std::size_t before = delivery->machine().callCount();
  work.work(*delivery);
  return delivery->machine().callCount() - before;
}

TEST_P(PublishDisturbed, TwoAtOnceDoNotMix) {
  const Work& work = GetParam();
  const Ends ends = undisturbed(work);
  const std::size_t calls = callsOf(work);
  for (std::size_t number = 1; number <= calls; ++number) {
    const std::unique_ptr<Delivery> delivery = prepared(work);
    Station second(delivery->installation);
    Trelv other(second.machine());
    second.machine().putFile(kOther, delivery->machine().fileText(kOther));
    int othersCode = -1;
    delivery->machine().onCall(delivery->machine().callCount() + number, [&]() {
      othersCode = other.run({"publish", kHost, kOther});
    });
    const std::string where = std::string(work.name) + " " + std::to_string(number);
    EXPECT_EQ(work.work(*delivery), 0) << where << delivery->trelv.console.errors;
    EXPECT_TRUE(othersCode == 0 || othersCode == 2) << where;
    EXPECT_EQ(other.run({"publish", kHost, kOther}), 0) << where << other.console.errors;
    Tree expected = isUndo(work) && othersCode == 0 ? delivery->tree() : ends.after;
    expected[Delivery::setup("nerio-03.21.zip")] = delivery->machine().fileText(kOther);
    EXPECT_EQ(delivery->tree(), expected) << where;
  }
}

TEST_P(PublishDisturbed, StartMeanwhileSeesOldOrNewAndUndoBringsTheOldBack) {
  const Work& work = GetParam();
  const std::size_t calls = callsOf(work);
  const Tree original = Delivery().tree();
  for (std::size_t number = 1; number <= calls; ++number) {
    const std::unique_ptr<Delivery> delivery = prepared(work);
    Station second(delivery->installation);
    putSevenZip(second.machine());
    delivery->machine().onCall(delivery->machine().callCount() + number, [&]() {
      modProdTrelvManager::OpenZipPacksInFolder(second.program(), kSetup, kHost, true);
    });
    const std::string where = std::string(work.name) + " " + std::to_string(number);
    EXPECT_EQ(work.work(*delivery), 0) << where << delivery->trelv.console.errors;
    for (int left = 0; left < 3; ++left) {
      EXPECT_EQ(delivery->undo(), 0) << where << delivery->trelv.console.errors;
    }
    EXPECT_EQ(delivery->tree(), original) << where;
  }
}

}  // namespace
}  // namespace trelv::tests
