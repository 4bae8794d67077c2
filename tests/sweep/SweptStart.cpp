#include "sweep/SweptStart.h"

#include <algorithm>

#include "base/Text.h"

namespace trelv::tests {
namespace {

constexpr const char* kProgram = "S:\\Lumo\\mv\\zb\\mvbil.exe";
/// A section of no product: whatever happens, it stays in both records.
constexpr const char* kForeign = "[KXK]\r\nversion=01.02.03.04\r\n";

const std::map<std::string, std::string>& delivered() {
  static const std::map<std::string, std::string> versions{{"NERIO", "03.20.30.00"},
                                                           {"LUDA", "07.10.00.00"},
                                                           {"ZB", "09.93.00.00"},
                                                           {"Q2", "02.92.00.00"},
                                                           {"ZM", "06.50.30.00"}};
  return versions;
}

std::string versionBefore(StartKind kind, const std::string& id) {
  if (kind == StartKind::FirstInstallation) {
    return "";
  }
  return kind == StartKind::Update && id == "ZB" ? "09.90.00.00" : delivered().at(id);
}

}  // namespace

SweptStart::SweptStart(StartKind kind) : station_(installation_) {
  putFiveProducts(installation_);
  installation_.share().makeFolders("S:\\Lumo\\prg\\com\\dovra\\plugin");
  installation_.share().put("S:\\Lumo\\prg\\etc\\dvrel", "11.20.00\r\n");
  std::string record = kForeign;
  for (const auto& [id, version] : delivered()) {
    products_[id] = {versionBefore(kind, id), version};
    if (!products_[id].before.empty()) {
      record += "[" + id + "]\r\nversion=" + products_[id].before + "\r\n";
    }
  }
  installation_.putServerRecord(record);
  station_.putClientRecord(record);
  if (kind == StartKind::FirstInstallation) {
    station_.forgetIntegration();
    installation_.share().removeTree("S:\\Lumo\\prg\\tempterm");
  } else {
    installation_.share().putProgram(kProgram);
  }
  machine().system().setAdministrator(kind != StartKind::NothingToDoWithoutRights);
}

void SweptStart::run() {
  RealProgram program(machine());
  program.run("INTEGRATEDRUN S:\\Lumo S:\\Lumo MVBIL");
  log_ = program.logLines();
}

bool SweptStart::logHas(const std::string& part) const {
  return std::any_of(log_.begin(), log_.end(), [&part](const std::string& line) {
    return line.find(part) != std::string::npos;
  });
}

bool SweptStart::formWasShown() { return !machine().desktop().shownForms().empty(); }

bool SweptStart::programWasStarted() {
  const std::vector<std::string> lines = station_.commandLines();
  return std::count(lines.begin(), lines.end(), std::string(kProgram) + " ") == 1;
}

bool SweptStart::programIsOnDisk() { return installation_.share().fileExists(kProgram); }

bool SweptStart::commandWasStarted(const std::string& id, const std::string& side) {
  const std::string folder = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\" + lowerCase(id) + "\\";
  const std::vector<std::string> names = side == "Server"
                                             ? std::vector<std::string>{"server", "update"}
                                             : std::vector<std::string>{"client", "updatecl"};
  const std::vector<std::string> lines = station_.commandLines();
  return std::any_of(names.begin(), names.end(), [&](const std::string& name) {
    return std::count(lines.begin(), lines.end(), folder + name + ".exe -S") > 0;
  });
}

void SweptStart::damageOf(const std::string& record, const std::string& serverOrClient,
                          std::vector<std::string>& damage) {
  for (const auto& [id, versions] : products_) {
    const std::string found = machine().iniValue(record, id, "version");
    const bool raised = found == versions.delivered && commandWasStarted(id, serverOrClient);
    if (found != versions.before && !raised) {
      damage.push_back(serverOrClient + " version of " + id + " is \"" + found + "\", was \"" +
                       versions.before + "\"");
    }
  }
  if (machine().iniValue(record, "KXK", "version") != "01.02.03.04") {
    damage.push_back(serverOrClient + " record lost another section");
  }
}

std::vector<std::string> SweptStart::damage() {
  std::vector<std::string> damage;
  damageOf(Installation::kServerRecord, "Server", damage);
  damageOf(Station::kClientRecord, "Client", damage);
  return damage;
}

std::vector<std::string> SweptStart::locksLeft() {
  std::vector<std::string> locks;
  for (const char* const lock : {Installation::kServerLock, Station::kClientLock}) {
    if (machine().fileExists(lock)) {
      locks.emplace_back(lock);
    }
  }
  return locks;
}

}  // namespace trelv::tests
