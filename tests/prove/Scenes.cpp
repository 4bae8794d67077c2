#include "prove/Scenes.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "integrated/TerminalServerRepairs.h"
#include "packs/SelfUpdate.h"
#include "prove/ChanceExceptions.h"
#include "prove/WeaveHost.h"

namespace trelv::tests {
namespace {

constexpr const char* kServer = "S:\\Lumo";
constexpr const char* kTemp = "C:\\USERS\\MARIO\\TEMP";

/// A workplace of the server of prove/WeaveHost.
class OnAWorkplace : public Scene {
 public:
  sim::SimMachine& machine() override { return workplace_.machine(); }

 protected:
  OnAWorkplace(unsigned seed, const Past* past) : Scene(seed, past) {
    putServer(installation_);
    putClient(workplace_);
  }

  sim::SimDisk& share() { return installation_.share(); }

  Installation installation_;
  Workplace workplace_{installation_, "STAZIONE"};
};

class StoreScene : public OnAWorkplace {
 public:
  StoreScene(unsigned seed, const Past* past) : OnAWorkplace(seed, past) {
    const std::string path =
        oneOf({Workplace::kStoreFile, Workplace::kStoreFile, "C:\\Lumo\\Società\\config 1.xml",
               "\\\\?\\C:\\Lumo\\Client\\config.xml", "S:\\Lumo\\postazioni\\mario\\config.xml"});
    if (path != Workplace::kStoreFile) {
      machine().putFile(path, machine().fileText(Workplace::kStoreFile));
    }
    machine().registry().setText(machine::Hive::LocalMachine, "SOFTWARE\\LUMO\\Configurazione",
                                 "Config", path);
    for (std::size_t i = 1 + below(4); i > 0; --i) {
      settings_.emplace_back(oneIn(3) ? "Path" : "Valore" + std::to_string(i), someText());
    }
  }

 protected:
  void work() override {
    for (const auto& [attribute, value] : settings_) {
      workplace_.store().setParameter("SYSTEM", "Complementary_Products", "Integration", attribute,
                                      1, value);
      note();
    }
  }

 private:
  std::vector<std::pair<std::string, std::string>> settings_;
};

class SelfUpdateScene : public OnAWorkplace {
 public:
  SelfUpdateScene(unsigned seed, const Past* past) : OnAWorkplace(seed, past) {
    const std::string own = machine().system().executablePath();
    sim::SimDisk& disk = machine().diskOf(own);
    disk.put(own, "MZ" + someText());
    disk.setModified(own, {2026, 11, 1, 12, 0, 0});
    share().put(kEnvironmentFile,
                (oneIn(2) ? someText() + "\r\n" : "") + "AMB0001 01/02/08 10:11\r\n");
    putClientCopy();
  }

 protected:
  void work() override {
    workplace_.work([](RealProgram& program) -> void {
      program.state().startup.paths.server = kServer;
      modProdTrelvManager::UpdateTrelvManager(program, kServer);
    });
  }
  // One that is in use is put aside: until the next self-update there may be none.
  std::vector<std::string> mayGo() override {
    std::vector<std::string> paths = Scene::mayGo();
    if (running_) {
      paths.emplace_back("S:\\LUMO\\PRG\\COM\\BIN\\CPY\\CLIENT\\TRELVMANAGER.EXE");
    }
    return paths;
  }

  // What is put aside stays while it runs; behind a power failure nothing runs.
  Picture comparable(Picture picture) override {
    std::erase_if(picture, [](const auto& file) -> bool { return file.first.ends_with(".OLD"); });
    return picture;
  }

 private:
  void putClientCopy() {
    share().put(kClientCopy, "MZ" + someText());
    share().setModified(kClientCopy, {2026, 10, 1, 12, 0, 0});
    switch (below(5)) {
      case 0:
        share().removeTree(kClientCopy);
        return;
      case 1:
        share().setReadOnly(kClientCopy);
        return;
      case 2:
        running_ = share().run(kClientCopy);
        return;
      default:
        return;
    }
  }

  std::shared_ptr<void> running_;
};

class RepairsScene : public OnAWorkplace {
 public:
  RepairsScene(unsigned seed, const Past* past) : OnAWorkplace(seed, past) {
    machine().setEdition(sim::WindowsEdition::Win2003TerminalServer);
    machine().makeFolders("C:\\Users\\mario\\windows");
    put("C:\\WINDOWS\\lumow.ini", "[Archivi]\r\nPath=S:\\Lumo\r\n");
    put("S:\\Lumo\\mv\\nerio\\nerio.ini", "[Pathnames]\r\nHomedir=S:\\Lumo\\mv\\nerio\r\n");
    share().makeFolders("S:\\Lumo\\mv\\ZM");
    put("S:\\Lumo\\mv\\ZM\\zeltomodelli.ini", "[Parametri]\r\nPathModelli=S:\\Lumo\\mv\\ZM\r\n");
    share().put("S:\\Lumo\\mv\\LUDA2003\\LUDA2003.exe", "MZ");
    share().setVersion("S:\\Lumo\\mv\\LUDA2003\\LUDA2003.exe", {7, 1, 0, 2});
    put("S:\\Lumo\\mv\\LUDA2003\\Luda.ini", "[LUDA]\r\nVersione=7.1.0.2\r\n");
    if (oneIn(2)) {
      machine().putFile("C:\\Users\\mario\\windows\\lumow.ini", "[Altro]\r\nx=1\r\n");
    }
  }

 protected:
  void work() override {
    workplace_.work([](RealProgram& program) -> void {
      program.state().startup.terminalServer = true;
      modProdTrelvManager::RiparaCorvelTS(program);
      modProdTrelvManager::RiparaNerioTS(program, kServer);
      modProdTrelvManager::RiparaZeltomodelliTS(program, kServer);
      modProdTrelvManager::RiparaLudaTS(program, kServer);
    });
  }

 private:
  /// With values of others behind it, mostly.
  void put(const std::string& path, const std::string& text) {
    if (!oneIn(4)) {
      machine().putFile(path, text + "[Vario]\r\nnota=" + someText() + "\r\n");
    }
  }
};

}  // namespace

std::string Scene::someText() {
  constexpr std::size_t kMost = 1600;
  return std::string(below(kMost), static_cast<char>('a' + below(26)));
}

void Scene::note() {
  if (past_ == nullptr) {
    addTo(known_, picture());
  }
}

void Scene::run() {
  before_ = picture();
  note();
  work();
  note();
}

void Scene::judge(const Fault& fault, Findings& findings) {
  if (past_ == nullptr) {
    return;
  }
  Judge judge(fault, findings, exceptionsByChance);
  const Picture found = picture();
  judge.nothingOnItsWay(onTheirWay_, kTemp);
  judge.nothingHalf(past_->known, found, kTemp);
  judge.nothingElseDeleted(past_->before, found, mayGo());
  bool rests = false;
  const Picture healed = workUntilNothingChanges(rests);
  judge.demand(Invariant::Heals, rests, "each further work changes something");
  const std::string difference =
      differenceOf(comparable(wholeOf(past_->healed, kTemp)), comparable(wholeOf(healed, kTemp)));
  judge.demand(Invariant::Heals, difference.empty(),
               "further work does not mend it: " + difference);
  judgeMore(judge);
}

Picture Scene::workUntilNothingChanges(bool& rests) {
  constexpr int kMost = 4;
  rests = false;
  Picture last = picture();
  for (int i = 0; i < kMost && !rests; ++i) {
    work();
    Picture next = picture();
    rests = comparable(next) == comparable(last);
    last = std::move(next);
  }
  return last;
}

Past Scene::takePast() {
  Past past;
  past.calls = machine().callLog().all();
  past.before = before_;
  past.known = known_;
  bool rests = false;
  past.healed = workUntilNothingChanges(rests);
  addTo(past.known, past.healed);
  return past;
}

const char* nameOf(Subject subject) {
  switch (subject) {
    case Subject::Store:
      return "store";
    case Subject::SelfUpdate:
      return "self-update";
    case Subject::Repairs:
      return "repairs";
    case Subject::Publication:
      return "publication";
    case Subject::Withdrawal:
      return "withdrawal";
  }
  throw std::logic_error("a subject without a name");
}

std::unique_ptr<Scene> Scene::make(Subject subject, unsigned seed, const Past* past) {
  switch (subject) {
    case Subject::Store:
      return std::make_unique<StoreScene>(seed, past);
    case Subject::SelfUpdate:
      return std::make_unique<SelfUpdateScene>(seed, past);
    case Subject::Repairs:
      return std::make_unique<RepairsScene>(seed, past);
    case Subject::Publication:
      return makePublication(seed, past);
    case Subject::Withdrawal:
      return makeWithdrawal(seed, past);
  }
  throw std::logic_error("a subject without a scene");
}

Past pastOf(Subject subject, unsigned seed) {
  const std::unique_ptr<Scene> scene = Scene::make(subject, seed, nullptr);
  scene->machine().callLog().clear();
  scene->run();
  return scene->takePast();
}

}  // namespace trelv::tests
