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

std::string momentText(const machine::LocalTime& time) {
  return std::to_string(time.day) + "/11 " + twoDigits(time.hour) + ":" + twoDigits(time.minute);
}

/// Lines that a start tells because another one was disturbed, or works beside it.
constexpr const char* kOthersTrouble =
    "presenza altre sessioni|Il sistema ha rilevato|Copia Trelvmanager.Exe non eseguita|"
    "Errore in esecuzione comando: \"C:\\Lumo\\Programmi\\7z.exe";

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
    // A set-up does nothing but end: what fails in it is not the manager's.
    for (const char* const program : {"\\server.exe", "\\client.exe"}) {
      installation_.share().putProgram(std::string(kSetupFolder) + "\\" + lowerCase(id) + program);
    }
  }
  putWorkplaces();
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
  if (oneIn(20)) {
    installSingle();
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

void Week::installSingle() {
  Workplace& workplace = workplaces_[below(size_.computers)];
  workplace.machine().putFile("C:\\Lumo\\Programmi\\luda.gz", productPack("LUDA"));
  workplace.nextProcess();
  workplace.start("SINGLEINSTALL LUDA luda.gz");
  ++counts_.installs;
  expect(Invariant::NothingHalf,
         installation_.share().exists(std::string(kSetupFolder) + "\\luda\\leggimi.txt"),
         "a single installation has brought nothing");
}

// --- Starts

Week::Started Week::someStart(Workplace& workplace) {
  Started started;
  started.workplace = &workplace;
  started.product = kProducts.at(below(kProducts.size()));
  started.workplace->nextProcess();
  started.workplace->machine().callLog().clear();
  started.workplace->machine().clock().set(now_);
  started.workplace->forgetTold();
  started.programs = started.workplace->countOfStarted(programOf(started.product));
  disturb(started);
  ++counts_.starts;
  return started;
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
  std::vector<Started> started = someStarts(programs);
  std::vector<Weave::Program> woven;
  std::vector<std::size_t> order;
  for (Started& each : started) {
    order.push_back(woven.size());
    woven.push_back({&each.workplace->machine(), [&each] {
                       each.workplace->start(std::string("INTEGRATEDRUN S:\\Lumo S:\\Lumo ") +
                                             codeOf(each.product));
                     }});
  }
  constexpr std::size_t kOutages = 60;
  const bool outage = oneIn(kOutages);
  untilOutage_ = outage ? 1 + below(kCallsOfAStart) : 0;
  gone_ = 0;
  Weave weave(std::move(woven));
  weave.run(order, [&](std::size_t program, const sim::SimCall&) -> Weave::Turn {
    loseShare();
    return choose(weave, program, order.size());
  });
  installation_.share().reconnect();
  expect(Invariant::Ends, weave.endless().empty(), "a start does not end");
  for (const std::string& raised : weave.raised()) {
    expect(Invariant::Ends, false, "it was raised: " + raised);
  }
  judge(started, outage);
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
    judgeProgram(each, !disturbed && !outage);
    if (each.trouble != nullptr) {
      counts_.faults +=
          each.trouble->failing != nullptr && each.trouble->failing->reached() ? 1U : 0U;
      counts_.kills += each.trouble->killed != nullptr && each.trouble->killed->reached() ? 1U : 0U;
    }
    if (each.trouble == nullptr && !outage) {
      expect(Invariant::ProgramStarts,
             each.workplace->countOfStarted(programOf(each.product)) == each.programs + 1,
             "not started once: " + std::string(programOf(each.product)));
    }
  }
  judgeRecords();
  judgeFiles();
}

void Week::judgeProgram(const Started& started, bool quiet) {
  if (!quiet) {
    return;
  }
  for (const std::string& text : started.workplace->told()) {
    expect(Invariant::ToldForAReason,
           !tellsOneOf({text}, kFailures) || tellsOneOf({text}, kOthersTrouble),
           "told without a reason: " + text);
  }
}

void Week::judgeRecords() {
  Station& server = workplaces_.front().station();
  for (const char* const id : kProducts) {
    const std::string version = server.serverVersion(id);
    judgeVersion("the server's", "server", id, version);
    std::string& before = recorded_[id];
    counts_.versionsWrittenBack += version < before ? 1U : 0U;
    before = version;
  }
  expect(Invariant::OthersSurvive, server.serverVersion("KXK") == "01.02.03.04",
         "a section of nobody here is lost");
}

void Week::judgeVersion(const std::string& where, const std::string& side, const std::string& id,
                        const std::string& version) {
  const std::string command =
      upperCase(std::string(kSetupFolder) + "\\" + id + "\\" + side + ".exe " + version);
  const bool before = version == (id == "ZB" ? kVersionBefore : "03.20.00.00");
  expect(Invariant::VersionsTrue, before || brought_.count(command) > 0,
         where + " version of " + id + " is \"" + version + "\"");
}

/// A configuration file is one of those that were delivered.
void Week::judgeFiles() {
  for (const char* const id : kProducts) {
    const std::string path = "prg\\com\\setup\\aggdovra\\" + lowerCase(id) + ".ini";
    const std::string text = installation_.share().text("S:\\Lumo\\" + path);
    bool whole = false;
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

/// Everybody starts twice, one after the other, and nothing is left to do.
void Week::weekend() {
  now_.day = 21;
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
