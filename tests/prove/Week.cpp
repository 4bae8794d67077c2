#include "prove/Week.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "base/Text.h"
#include "prove/Gathering.h"
#include "sim/FailingMachine.h"
#include "sim/KilledMachine.h"

namespace trelv::tests {
namespace {

constexpr std::size_t kMostAtOnce = 6;
/// Within the calls of a start.
constexpr std::size_t kCallsOfAStart = 250;

constexpr std::array kProducts{"ZB", "NERIO"};

constexpr const char* kInstallation = "SINGLEINSTALL LUDA luda.gz";

const char* codeOf(const std::string& id) { return id == "ZB" ? "MVBIL" : "NERIO"; }

const char* programOf(const std::string& id) { return id == "ZB" ? kBilancio : kNerio; }

/// The first release is what the server begins with.
std::string versionOf(const std::string& id, int release) {
  const std::string number = std::to_string(10 + release);
  return release == 0 ? (id == "ZB" ? kVersionThere : kNerioVersion) : "10." + number + ".00.00";
}

std::string packPath(const std::string& id) {
  return std::string(kSetupFolder) + "\\" + lowerCase(id) + ".zip";
}

void putInstallationPack(Workplace& workplace) {
  workplace.machine().putFile("C:\\Lumo\\Programmi\\luda.gz", productPack("LUDA"));
}

std::string momentText(const machine::LocalTime& time) {
  return std::to_string(time.day) + "/11 " + twoDigits(time.hour) + ":" + twoDigits(time.minute);
}

/// Lines that a start tells because another one was disturbed, or works beside it.
constexpr const char* kOthersTrouble =
    "presenza altre sessioni|Il sistema ha rilevato|Copia Trelvmanager.Exe non eseguita";

}  // namespace

struct Week::Trouble {
  std::unique_ptr<sim::FailingMachine> failing;
  std::unique_ptr<sim::KilledMachine> killed;
};

Week::Week(std::uint64_t seed, const WeekSize& size) : random_(seed), size_(size) {
  putServer(installation_);
  // The single installations name it in their catalogue.
  installation_.putConfiguration("prg\\com\\setup\\aggdovra\\q2.ini", configurationText({}));
  for (const char* const id : kProducts) {
    release_[id] = 0;
    deliverAnew(id);
  }
  putWorkplaces();
}

/// All of a product, as its newest release has it.
void Week::deliverAnew(const std::string& id) {
  sim::SimDisk& share = installation_.share();
  // A set-up does nothing but end: what fails in it is not the manager's.
  for (const char* const program : {"\\server.exe", "\\client.exe", "\\togli.exe"}) {
    share.putProgram(std::string(kSetupFolder) + "\\" + lowerCase(id) + program);
  }
  for (const auto& [path, bytes] : packOf(id, versionOf(id, release_[id]))) {
    share.put("S:\\Lumo\\" + path, bytes);
  }
}

void Week::putWorkplaces() {
  for (std::size_t i = 0; i < size_.computers; ++i) {
    putClient(workplaces_.emplace_back(installation_, "PC" + std::to_string(i + 1)));
  }
  Workplace& server = workplaces_.emplace_back(installation_, "TERMINALI");
  server.machine().setEdition(sim::WindowsEdition::Win2008TerminalServer);
  putClient(server);
  for (std::size_t i = 1; i < size_.sessions; ++i) {
    const auto session = static_cast<std::uint32_t>(i + 1);
    Workplace& added = workplaces_.emplace_back(installation_, server.machine(),
                                                "utente" + std::to_string(session), session);
    added.machine().setEdition(sim::WindowsEdition::Win2008TerminalServer);
    added.machine().profiles().setPrivateWindowsFolder("C:\\Users\\utente" +
                                                       std::to_string(session) + "\\windows");
  }
}

void Week::run(Findings& findings) {
  findings_ = &findings;
  constexpr int kWorkingDays = 5;
  for (int number = 0; number < kWorkingDays; ++number) {
    day(number);
    evening();
  }
  weekend();
}

/// Most starts are in the morning.
void Week::day(int number) {
  constexpr std::array<std::size_t, 10> kShares{30, 25, 10, 5, 3, 5, 10, 7, 3, 2};
  for (std::size_t i = 0; i < kShares.size(); ++i) {
    now_ = {2026, 11, 16 + number, static_cast<int>(8 + i), 0, 0};
    hour(size_.startsOfADay * kShares.at(i) / 100);
  }
}

void Week::hour(std::size_t starts) {
  if (oneIn(8)) {
    deliver();
  }
  for (std::size_t left = starts; left > 0;) {
    const std::size_t programs = std::min(left, 1 + below(kMostAtOnce));
    meet(programs);
    left -= programs;
    now_.minute = std::min(59, now_.minute + static_cast<int>(below(3)));
  }
}

/// A technician puts a pack into the set-up folder; an older one that still waits goes with it.
void Week::deliver() {
  const std::string id = kProducts.at(below(kProducts.size()));
  delivered_[id] = packOf(id, versionOf(id, ++release_[id]));
  installation_.share().put(packPath(id), packBytes(delivered_[id]));
  ++counts_.packs;
}

// --- Starts

Week::Started Week::someStart(Workplace& workplace) {
  Started started;
  started.workplace = &workplace;
  started.product = kProducts.at(below(kProducts.size()));
  takeUpWork(started);
  started.workplace->nextProcess();
  started.workplace->machine().callLog().clear();
  started.workplace->machine().clock().set(now_);
  started.workplace->forgetTold();
  started.programs = started.workplace->countOfStarted(programOf(started.product));
  started.lockBefore = workplace.machine().fileExists(Station::kClientLock);
  disturb(started);
  return started;
}

/// Most start their program; seldom one installs a product or removes one.
void Week::takeUpWork(Started& started) {
  constexpr std::size_t kSeldom = 150;
  constexpr std::size_t kFromServer = 4;
  if (oneIn(kSeldom)) {
    started.work = Work::Install;
    putInstallationPack(*started.workplace);
    ++counts_.installs;
  } else if (oneIn(kSeldom)) {
    started.work = Work::Removal;
    started.side = oneIn(kFromServer) ? Side::Server : Side::Client;
    removed_.insert(started.product +
                    (started.side == Side::Server ? "server" : std::string("client")));
    if (started.side == Side::Server) {
      missing_[started.product] = 1 + below(kMostAtOnce);
    }
    ++counts_.removals;
  } else {
    ++counts_.starts;
  }
}

void Week::workAt(const Started& started) {
  switch (started.work) {
    case Work::Start:
      started.workplace->start(std::string("INTEGRATEDRUN S:\\Lumo S:\\Lumo ") +
                               codeOf(started.product));
      break;
    case Work::Install:
      started.workplace->start(kInstallation);
      break;
    case Work::Removal:
      started.workplace->removeProduct(started.product, started.side);
      break;
  }
}

void Week::disturb(Started& started) {
  constexpr std::size_t kSeldom = 40;
  const std::size_t number = 1 + below(kCallsOfAStart);
  sim::SimMachine& machine = started.workplace->machine();
  if (oneIn(kSeldom)) {
    started.trouble = std::make_unique<Trouble>();
    started.trouble->failing =
        std::make_unique<sim::FailingMachine>(machine, number, sim::FailureSpan::Once, below(8));
  } else if (oneIn(kSeldom)) {
    started.trouble = std::make_unique<Trouble>();
    started.trouble->killed = std::make_unique<sim::KilledMachine>(
        machine, number, oneIn(2) ? sim::Unfinished::NotBegun : sim::Unfinished::Half);
  }
}

std::vector<Week::Started> Week::someStarts(std::size_t programs) {
  std::vector<Started> started;
  std::set<Workplace*> taken;
  for (std::size_t i = 0; i < programs; ++i) {
    Workplace& workplace = workplaces_[below(workplaces_.size())];
    if (taken.insert(&workplace).second) {
      started.push_back(someStart(workplace));
    }
  }
  return started;
}

/// Several users start at the same moment.
void Week::meet(std::size_t programs) {
  lockBefore_ = installation_.serverLockExists();
  std::vector<Started> started = someStarts(programs);
  std::vector<Weave::Program> woven;
  std::vector<std::size_t> order;
  for (Started& each : started) {
    order.push_back(woven.size());
    woven.push_back({&each.workplace->machine(), [this, &each] { workAt(each); }});
  }
  constexpr std::size_t kOutages = 60;
  const bool outage = oneIn(kOutages);
  untilOutage_ = outage ? 1 + below(kCallsOfAStart) : 0;
  gone_ = 0;
  constexpr std::size_t kPacks = 50;
  untilPack_ = oneIn(kPacks) ? 1 + below(kCallsOfAStart) : 0;
  Weave weave(std::move(woven));
  weave.run(order, [&](std::size_t program, const sim::SimCall&) -> Weave::Turn {
    loseShare();
    deliverInTheMiddle();
    return choose(weave, program, order.size());
  });
  installation_.share().reconnect();
  expect(Invariant::Ends, weave.endless().empty(), "a start does not end");
  for (const std::string& raised : weave.raised()) {
    expect(Invariant::Ends, false, "it was raised: " + raised);
  }
  judge(started, outage);
  deliverMissing();
}

void Week::deliverMissing() {
  for (const char* const id : kProducts) {
    const auto product = missing_.find(id);
    if (product != missing_.end() && --product->second == 0) {
      deliverAnew(id);
      missing_.erase(product);
    }
  }
}

void Week::deliverInTheMiddle() {
  if (untilPack_ > 0 && --untilPack_ == 0) {
    deliver();
  }
}

/// The share goes, and comes back so many calls later.
void Week::loseShare() {
  if (untilOutage_ > 0 && --untilOutage_ == 0) {
    installation_.share().disconnect(oneIn(2) ? system_code::kBadNetPath
                                              : system_code::kNetNameDeleted);
    gone_ = 1 + below(kCallsOfAStart);
    ++counts_.outages;
  } else if (gone_ > 0 && --gone_ == 0) {
    installation_.share().reconnect();
  }
}

Weave::Turn Week::choose(Weave& weave, std::size_t program, std::size_t programs) {
  constexpr std::size_t kCallsOfATurn = 20;
  if (!oneIn(kCallsOfATurn)) {
    return {program};
  }
  const std::size_t other = below(programs);
  return {weave.isReady(other) ? other : program};
}

// --- What must hold

void Week::expect(Invariant invariant, bool holds, const std::string& otherwise) {
  tests::expect(*findings_, invariant, holds, momentText(now_) + " " + otherwise);
}

void Week::judge(const std::vector<Started>& started, bool outage) {
  const bool disturbed = std::any_of(started.begin(), started.end(),
                                     [](const Started& each) { return each.trouble != nullptr; });
  for (const Started& each : started) {
    for (const std::string& line : each.workplace->commands()) {
      brought_.insert(upperCase(line));
    }
    countTrouble(each);
    if (!disturbed && !outage) {
      judgeTold(each);
      judgeLocks(each);
    }
    if (each.trouble == nullptr && !outage) {
      judgeWork(each);
    }
  }
  judgeRecords(started);
  judgeFiles();
}

void Week::countTrouble(const Started& started) {
  if (started.trouble != nullptr) {
    const Trouble& trouble = *started.trouble;
    counts_.faults += trouble.failing != nullptr && trouble.failing->reached() ? 1U : 0U;
    counts_.kills += trouble.killed != nullptr && trouble.killed->reached() ? 1U : 0U;
  }
}

void Week::judgeWork(const Started& started) {
  if (started.work == Work::Start && missing_.count(started.product) == 0) {
    expect(Invariant::ProgramStarts,
           started.workplace->countOfStarted(programOf(started.product)) == started.programs + 1,
           "not started once: " + std::string(programOf(started.product)));
  }
  if (started.work == Work::Install) {
    expect(Invariant::ProgramInstalled,
           installation_.share().exists(std::string(kSetupFolder) + "\\luda\\leggimi.txt"),
           "a single installation has brought nothing");
  }
}

void Week::judgeTold(const Started& started) {
  for (const std::string& text : started.workplace->told()) {
    const std::size_t pack = text.rfind(kSetupFolder);
    const bool opened =
        tellsOneOf({text}, kPackNotOpened) && pack != std::string::npos &&
        !installation_.share().exists(text.substr(pack, text.find('"', pack) - pack));
    expect(Invariant::ToldForAReason,
           !tellsOneOf({text}, kFailures) || tellsOneOf({text}, kOthersTrouble) || opened ||
               isOfRemoval(started, text),
           "told without a reason: " + text);
  }
}

void Week::judgeLocks(const Started& started) {
  expect(Invariant::LocksGo, lockBefore_ || !installation_.serverLockExists(),
         "the server's lock stays");
  expect(Invariant::LocksGo,
         started.lockBefore || !started.workplace->machine().fileExists(Station::kClientLock),
         "a client's lock stays");
}

/// What cannot be found, or not started, while a product is missing.
bool Week::isOfRemoval(const Started& started, const std::string& text) const {
  const bool asked =
      missing_.count(started.product) > 0 && tellsOneOf({text}, "non risulta installato");
  return asked || std::any_of(missing_.begin(), missing_.end(), [&](const auto& product) {
           const std::string id = lowerCase(product.first);
           const std::string folder = "aggdovra\\" + id;
           return tellsOneOf({text}, folder + "\\|" + folder + ".ini") || text.ends_with(folder) ||
                  text == "frmError";
         });
}

void Week::judgeRecords(const std::vector<Started>& started) {
  Station& server = workplaces_.front().station();
  for (const char* const id : kProducts) {
    const std::string version = server.serverVersion(id);
    judgeVersion("the server's", "server", id, version);
    std::string& before = recorded_[id];
    counts_.versionsWrittenBack += version < before && !version.empty() ? 1U : 0U;
    before = version;
    for (const Started& each : started) {
      judgeVersion("a client's", "client", id, each.workplace->station().clientVersion(id));
    }
  }
  expect(Invariant::OthersSurvive, server.serverVersion("KXK") == "01.02.03.04",
         "a section of nobody here is lost");
}

void Week::judgeVersion(const std::string& where, const std::string& side, const std::string& id,
                        const std::string& version) {
  const std::string command =
      upperCase(std::string(kSetupFolder) + "\\" + id + "\\" + side + ".exe " + version);
  const bool before = version == (id == "ZB" ? kVersionBefore : "03.20.00.00");
  const bool removed = version.empty() && removed_.count(id + side) > 0;
  expect(Invariant::VersionsTrue, before || removed || brought_.count(command) > 0,
         where + " version of " + id + " is \"" + version + "\"");
}

/// A configuration file is one of those that were delivered.
void Week::judgeFiles() {
  for (const char* const id : kProducts) {
    const std::string path = "prg\\com\\setup\\aggdovra\\" + lowerCase(id) + ".ini";
    bool whole = missing_.count(id) > 0 && !installation_.share().exists("S:\\Lumo\\" + path);
    const std::string text = whole ? "" : installation_.share().text("S:\\Lumo\\" + path);
    for (int release = 0; release <= release_[id] && !whole; ++release) {
      whole = packOf(id, versionOf(id, release)).front().second == text;
    }
    expect(Invariant::NothingHalf, whole, "half of " + path);
  }
}

// --- Evenings

/// The technician looks for locks that stayed, and for packs that are gone without having brought
/// what was in them.
void Week::evening() {
  now_.hour = 19;
  for (const auto& [id, meetings] : std::exchange(missing_, {})) {
    deliverAnew(id);
  }
  sim::SimDisk& share = installation_.share();
  if (share.exists(Installation::kServerLock)) {
    share.removeTree(Installation::kServerLock);
    ++counts_.locksRemovedByHand;
  }
  for (Workplace& workplace : workplaces_) {
    if (workplace.machine().fileExists(Station::kClientLock)) {
      workplace.machine().removeTree(Station::kClientLock);
      ++counts_.locksRemovedByHand;
    }
  }
  for (const auto& [id, content] : delivered_) {
    const bool arrived = std::all_of(content.begin(), content.end(), [&](const auto& file) {
      const std::string path = "S:\\Lumo\\" + file.first;
      return share.exists(path) && share.text(path) == file.second;
    });
    if (!arrived && !share.exists(packPath(id))) {
      share.put(packPath(id), packBytes(content));
      ++counts_.packsDeliveredAgain;
    }
  }
}

/// What single installations left that were ended in their copies goes with the next one of that
/// computer: it is made where something is left.
void Week::installWhereCopiesWereLeft() {
  for (Workplace& workplace : workplaces_) {
    std::string computer;
    workplace.machine().system().computerName(computer);
    if (installation_.share().tree().find("-" + computer + "-") != std::string::npos) {
      workplace.nextProcess();
      putInstallationPack(workplace);
      workplace.start(kInstallation);
    }
  }
}

/// Everybody starts twice, one after the other, and nothing is left to do.
void Week::weekend() {
  now_.day = 21;
  installWhereCopiesWereLeft();
  for (int round = 0; round < 2; ++round) {
    for (Workplace& workplace : workplaces_) {
      workplace.nextProcess();
      workplace.start("INTEGRATEDRUN S:\\Lumo S:\\Lumo MVBIL");
    }
  }
  for (const char* const id : kProducts) {
    const std::string newest = versionOf(id, release_[id]);
    expect(Invariant::Heals, workplaces_.front().station().serverVersion(id) == newest,
           "the server has not the newest " + std::string(id));
    expect(Invariant::Heals, !installation_.share().exists(packPath(id)),
           "a pack waits: " + packPath(id));
    for (Workplace& workplace : workplaces_) {
      expect(Invariant::Heals, workplace.station().clientVersion(id) == newest,
             "a client has not the newest " + std::string(id));
    }
  }
  expect(Invariant::NothingHalf, installation_.share().tree().find(".tmp") == std::string::npos,
         "a temporary stays on the share");
  for (Workplace& workplace : workplaces_) {
    expect(Invariant::NothingHalf, !workplace.machine().folderExists(workplace.temp() + "\\prg"),
           "what was unpacked stays");
    expect(Invariant::OthersSurvive, workplace.station().clientVersion("KXK") == "01.02.03.04",
           "a section of nobody here is lost");
  }
}

}  // namespace trelv::tests
