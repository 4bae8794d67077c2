#include <memory>
#include <string>
#include <vector>

#include "packs/PackExtraction.h"
#include "prove/Scenes.h"
#include "support/Installation.h"
#include "support/kit/Publishing.h"
#include "support/kit/Trelv.h"
#include "support/kit/ZipPacks.h"

namespace trelv::tests {
namespace {

using namespace publishing;

/// A host and a station on which trelv runs, with one or two packs to publish.
class WithPacks : public Scene {
 public:
  sim::SimMachine& machine() override { return station_.machine(); }

 protected:
  WithPacks(unsigned seed, const Past* past);

  std::vector<std::string> mayGo() override {
    return {"*.TRELV", "S:\\LUMO\\PRG\\TEMPTERM\\TRELV", "*.TMP"};
  }
  /// Journals have the moment in their names.
  Picture comparable(Picture picture) override {
    std::erase_if(picture, [](const auto& file) -> bool {
      return file.first.starts_with("S:\\LUMO\\PRG\\TEMPTERM\\TRELV");
    });
    return picture;
  }
  int publish() {
    std::vector<std::string> words{"publish", kHost, "--json"};
    words.insert(words.end(), packs_.begin(), packs_.end());
    return trelv_.run(words);
  }
  int undo() { return trelv_.run({"publish", kHost, "--undo", "--json"}); }
  /// A start on the station opens what waits.
  void open() {
    modProdTrelvManager::OpenZipPacksInFolder(station_.program(), kSetup, kHost, true);
    station_.endProgram();
  }
  Picture setUps() {
    Picture picture = pictureOf(machine(), {"S:"});
    std::erase_if(picture, [](const auto& file) -> bool {
      return !file.first.starts_with("S:\\LUMO\\PRG\\COM\\SETUP");
    });
    return picture;
  }

  Installation installation_;
  Station station_{installation_};
  Trelv trelv_{station_.machine()};
  std::vector<std::string> packs_{kPack};
  int exitCode_ = 0;
};

WithPacks::WithPacks(unsigned seed, const Past* past) : Scene(seed, past) {
  sim::SimDisk& share = installation_.share();
  const std::string setup = std::string(kSetup) + "\\";
  putSevenZip(machine());
  share.put(setup + "zb.ini", configuration("09.94.00.00"));
  if (!oneIn(4)) {
    share.put(setup + "zb\\setup.exe", "MZ" + someText());
  }
  share.put("S:\\Lumo\\mv\\zb\\mvbil.exe", "programma");
  share.put("S:\\Lumo\\mv\\zb\\togli.exe", "programma");
  share.put(setup + "agdvcomp.ini",
            "[prod01]\r\nid=ZB\r\nname=Bilancio\r\nconf=prg\\com\\setup\\aggdovra\\zb.ini\r\n");
  installation_.putServerRecord("[ZB]\r\nversion=09.94.00.00\r\n");
  machine().putFile(kPack, zipPack({{"zb.ini", configuration("09.95.00.00")},
                                    {"zb/setup.exe", "MZ" + someText()},
                                    {"zb/novità/leggimi.txt", someText()}}));
  machine().putFile(kOther, zipPack({{"nerio/a.txt", someText()}}));
  if (oneIn(3)) {
    packs_.emplace_back(kOther);
  }
}

class PublicationScene : public WithPacks {
 public:
  PublicationScene(unsigned seed, const Past* past) : WithPacks(seed, past), setUps_(setUps()) {}

 protected:
  void work() override { exitCode_ = publish(); }
  /// What was kept takes all back, once the packs were opened.
  void judgeMore(Judge& judge) override {
    judge.demand(Invariant::Heals, exitCode_ == 0, "not published: " + trelv_.console.errors);
    open();
    judge.demand(Invariant::Heals, undo() == 0, "not taken back: " + trelv_.console.errors);
    const std::string difference = differenceOf(setUps_, setUps());
    judge.demand(Invariant::NothingHalf, difference.empty(), "taken back to this: " + difference);
  }

 private:
  const Picture setUps_;
};

class WithdrawalScene : public WithPacks {
 public:
  WithdrawalScene(unsigned seed, const Past* past) : WithPacks(seed, past) {
    const bool opened = !oneIn(4);
    publish();
    if (opened) {
      open();
    }
  }

 protected:
  void work() override { exitCode_ = undo(); }
  // What the packs brought, and the packs that wait.
  std::vector<std::string> mayGo() override {
    std::vector<std::string> paths = WithPacks::mayGo();
    for (const char* const path : {"\\ZB\\", "\\NERIO", "\\*.ZIP"}) {
      paths.push_back(std::string("S:\\LUMO\\PRG\\COM\\SETUP\\AGGDOVRA") + path);
    }
    return paths;
  }
  void judgeMore(Judge& judge) override {
    judge.demand(Invariant::Heals, exitCode_ == 0, "not taken back: " + trelv_.console.errors);
  }
};

}  // namespace

std::unique_ptr<Scene> makePublication(unsigned seed, const Past* past) {
  return std::make_unique<PublicationScene>(seed, past);
}

std::unique_ptr<Scene> makeWithdrawal(unsigned seed, const Past* past) {
  return std::make_unique<WithdrawalScene>(seed, past);
}

}  // namespace trelv::tests
