#include "prove/Gathering.h"

#include <algorithm>
#include <map>
#include <set>
#include <sstream>
#include <utility>

#include "base/Text.h"

namespace trelv::tests {
namespace {

/// The boxes that tell of another session.
constexpr const char* kOtherSession = "Il sistema ha rilevato la necessità di effettuare un";

/// What a program may tell because another one works beside it.
const std::vector<std::string>& reasons() {
  static const std::vector<std::string> reasons{
      kOtherSession, "Gestione ProdTrelv - esecuzione non effettuata per presenza altre sessioni: ",
      // Who is newer than what he would copy says so.
      "Gestione ProdTrelv - Copia Trelvmanager.Exe non eseguita: "};
  return reasons;
}

void gather(const sim::SimNode& folder, const std::string& path,
            std::map<std::string, std::string>& files) {
  for (const auto& child : folder.children) {
    const std::string name = path + "\\" + lowerCase(child->name);
    if (child->folder) {
      files[name + "\\"];
      gather(*child, name, files);
    } else {
      files[name] = child->bytes;
    }
  }
}

/// An ini file with its sections, and the keys of each, in alphabetical order: who came first says
/// nothing.
std::string sorted(const std::string& text) {
  std::map<std::string, std::set<std::string>> sections;
  std::string section;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("[")) {
      section = line;
      sections[section];
    } else if (line.find_first_not_of('\r') != std::string::npos) {
      sections[section].insert(line);
    }
  }
  std::string result;
  for (const auto& [name, keys] : sections) {
    result += name;
    for (const std::string& key : keys) {
      result += " " + key;
    }
  }
  return result;
}

}  // namespace

Workplace& Gathering::addComputer() {
  Workplace& added =
      workplaces_.emplace_back(installation_, "PC" + std::to_string(workplaces_.size() + 1));
  putClient(added);
  return added;
}

Workplace& Gathering::addProcess(Workplace& computer, const std::string& user,
                                 std::uint32_t session) {
  return workplaces_.emplace_back(installation_, computer.machine(), user, session);
}

void Gathering::does(Workplace& workplace, std::function<void()> work) {
  programs_.push_back({&workplace.machine(), std::move(work)});
}

void Gathering::starts(Workplace& workplace, const char* arguments, const char* program) {
  asked_.push_back({&workplace, program});
  does(workplace, [&workplace, arguments] { workplace.start(arguments); });
}

void Gathering::installs(Workplace& workplace, const std::string& id) {
  const std::string pack = lowerCase(id) + ".gz";
  workplace.machine().putFile("C:\\Lumo\\Programmi\\" + pack, productPack(id));
  does(workplace, [&workplace, id, pack] { workplace.start("SINGLEINSTALL " + id + " " + pack); });
}

void Gathering::putWaitingPack() {
  installation_.share().put(std::string(kSetupFolder) + "\\zb-09.94.zip",
                            packBytes(packOf("ZB", kVersionOfPack)));
}

bool Gathering::hasStoodStill(int seconds) {
  const machine::LocalTime now = workplaces_.front().machine().clock().now();
  const machine::LocalTime began = sim::SimClock().now();
  return (now.hour - began.hour) * 3600 + (now.minute - began.minute) * 60 + now.second >= seconds;
}

void Gathering::expectInstalled(const std::string& product, Findings& findings) {
  sim::SimDisk& share = installation_.share();
  const std::string folder = std::string(kSetupFolder) + "\\" + product;
  expect(findings, Invariant::ProgramInstalled,
         share.exists(folder + ".ini") && share.text(folder + ".ini") == configurationText({}) &&
             share.exists(folder + "\\leggimi.txt") &&
             share.text(folder + "\\leggimi.txt") == "leggimi " + upperCase(product) &&
             share.text(Installation::kCatalogue).find("id=Q2") != std::string::npos,
         "not installed whole: " + product);
}

std::vector<Weave::Program> Gathering::programs() { return programs_; }

// Each update run begins with the list of the packs, and looks for its lock right before it takes
// it: what the run before saw says nothing.
void Gathering::observe(std::size_t program, const sim::SimCall& call) {
  std::set<std::string>& free = free_[program];
  if (call.kind == sim::CallKind::FolderList) {
    free.clear();
  }
  if (!call.path.ends_with("agdv.lck")) {
    return;
  }
  if (call.kind == sim::CallKind::FileLook && !programs_[program].machine->fileExists(call.path)) {
    free.insert(call.path);
  } else if (call.kind == sim::CallKind::FileWrite) {
    respected_ = respected_ && free.count(call.path) > 0;
  }
}

void Gathering::judge(Findings& findings) {
  expect(findings, Invariant::LocksRespected, respected_, "a lock was taken that another one had");
  for (Workplace& workplace : workplaces_) {
    expectNothingTold(workplace, findings);
    expectVersions(workplace, findings);
  }
  for (const Asked& asked : asked_) {
    expect(findings, Invariant::ProgramStarts, asked.workplace->countOfStarted(asked.program) == 1,
           "not started once: " + std::string(asked.program));
    expectUpdated(*asked.workplace, findings);
  }
  expectCleanDisks(findings);
  judgeMore(findings);
}

void Gathering::expectNothingTold(Workplace& workplace, Findings& findings) {
  for (const std::string& text : workplace.told()) {
    const bool reason = std::any_of(reasons().begin(), reasons().end(), [&](const auto& beginning) {
      return text.starts_with(beginning);
    });
    expect(findings, Invariant::ToldForAReason,
           reason || !tellsOneOf({text}, kFailures) || isRight(text) ||
               isOfOpenedPack(workplace, text) || isOfWorkFolderInUse(text),
           "told without a reason: " + text);
  }
}

/// The box, or the line, of a pack that could not be opened because somebody with another work
/// folder has opened and removed it since the folder was listed. Who shares the work folder lists
/// again behind his wait.
bool Gathering::isOfOpenedPack(Workplace& workplace, const std::string& text) {
  const std::size_t pack = text.rfind(kSetupFolder);
  const bool others = std::any_of(workplaces_.begin(), workplaces_.end(), [&](Workplace& other) {
    return !other.sharesWorkFolderWith(workplace);
  });
  return others && tellsOneOf({text}, kPackNotOpened) && pack != std::string::npos &&
         !installation_.share().exists(text.substr(pack, text.find('"', pack) - pack));
}

bool Gathering::isOfWorkFolderInUse(const std::string& text) {
  constexpr int kLongestWait = 120;
  return hasStoodStill(kLongestWait) && tellsOneOf({text}, "in uso da un'altra sessione");
}

/// Who tells nothing of a failure or another session has brought the products up to what the server
/// had when all began, and recorded it.
void Gathering::expectUpdated(Workplace& workplace, Findings& findings) {
  if (tellsOneOf(workplace.told(), std::string("presenza altre sessioni|") + kFailures)) {
    return;
  }
  Station& station = workplace.station();
  for (const char* const id : {"ZB", "NERIO"}) {
    const std::string there = std::string(id) == "ZB" ? kVersionThere : kNerioVersion;
    for (const std::string& version : {station.serverVersion(id), station.clientVersion(id)}) {
      expect(findings, Invariant::FailureTold, version >= there || mayStand(id, version),
             "not updated, and not told: " + std::string(id) + " is \"" + version + "\"");
    }
  }
}

void Gathering::expectVersions(Workplace& workplace, Findings& findings) {
  Station& station = workplace.station();
  for (const char* const id : {"ZB", "NERIO"}) {
    expectVersion("the server's", id, "server", station.serverVersion(id), findings);
    expectVersion("a client's", id, "client", station.clientVersion(id), findings);
  }
  expect(findings, Invariant::OthersSurvive,
         station.serverVersion("KXK") == "01.02.03.04" &&
             station.clientVersion("KXK") == "01.02.03.04",
         "a section of nobody here is lost");
}

void Gathering::expectVersion(const std::string& where, const std::string& id,
                              const std::string& side, const std::string& version,
                              Findings& findings) {
  const bool before = version == (id == "ZB" ? kVersionBefore : "03.20.00.00");
  expect(findings, Invariant::VersionsTrue,
         before || wasBrought(id, side, version) || mayStand(id, version),
         where + " version of " + id + " is \"" + version + "\"");
}

bool Gathering::wasBrought(const std::string& id, const std::string& side,
                           const std::string& version) {
  const std::string command =
      std::string(kSetupFolder) + "\\" + lowerCase(id) + "\\" + side + ".exe " + version;
  return std::any_of(workplaces_.begin(), workplaces_.end(), [&](Workplace& workplace) {
    return !version.empty() && workplace.countOfStarted(command) > 0;
  });
}

void Gathering::expectCleanDisks(Findings& findings) {
  std::map<std::string, std::string> files;
  gather(installation_.share().root(), "s:", files);
  for (Workplace& workplace : workplaces_) {
    gather(workplace.machine().diskOf("C:\\").root(), "c:", files);
  }
  for (const auto& [path, bytes] : files) {
    expect(findings, Invariant::LocksGo, !path.ends_with(".lck"), "left behind: " + path);
    const bool temporary = path.ends_with(".tmp") || path.ends_with("\\temp\\prg\\");
    expect(findings, Invariant::NothingHalf, !temporary || mayStay(path), "left behind: " + path);
    expect(
        findings, Invariant::NothingHalf,
        !path.ends_with("\\dati.txt") || bytes.size() == std::string("versione 00.00.00.00").size(),
        "half of " + path);
  }
}

std::optional<std::string> Gathering::comparable(const std::string& path,
                                                 const std::string& bytes) {
  constexpr std::size_t kField = 7;
  if (path.ends_with(".log") || path.find("\\tempterm\\trelv\\") != std::string::npos) {
    return std::nullopt;
  }
  if (path.ends_with("\\ambver")) {
    return bytes.substr(0, kField);
  }
  return path.ends_with(".ini") ? sorted(bytes) : bytes;
}

End Gathering::end() {
  for (Workplace& workplace : workplaces_) {
    workplace.nextProcess();
    workplace.start(kStartOfBilancio);
  }
  std::map<std::string, std::string> files;
  gather(installation_.share().root(), "s:", files);
  for (std::size_t i = 0; i < workplaces_.size(); ++i) {
    gather(workplaces_[i].machine().diskOf("C:\\").root(), "c" + std::to_string(i) + ":", files);
  }
  End end;
  for (const auto& [path, bytes] : files) {
    if (const std::optional<std::string> compared = comparable(path, bytes)) {
      end[path] = *compared;
    }
  }
  return end;
}

}  // namespace trelv::tests
