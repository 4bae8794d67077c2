#include "prove/Worlds.h"

#include <algorithm>
#include <random>
#include <stdexcept>
#include <utility>

#include "base/Text.h"
#include "prove/Users.h"
#include "support/GeneratedStation.h"
#include "support/RealProgram.h"

namespace trelv::tests {
namespace {

constexpr const char* kServer = "S:\\Lumo";
constexpr const char* kTemp = "C:\\Users\\mario\\Temp";
constexpr const char* kClient = "C:\\Lumo\\Client";
constexpr const char* kSetups = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\";
/// Sections of others in both records.
constexpr const char* kForeign = "KXK";
constexpr const char* kForeignVersion = "01.02.03.04";
/// What another workstation records while the run works.
constexpr const char* kNeighbour = "VICINO";
constexpr const char* kNeighbourVersion = "05.06.07.08";

const std::vector<std::string> kIds{"NERIO", "LUDA", "ZB", "Q2", "ZM", "RR", "ALTRO"};

/// More starts than any world needs until nothing changes.
constexpr int kMostStarts = 5;

std::string quoted(const std::vector<std::string>& arguments) {
  std::string line;
  for (const std::string& argument : arguments) {
    const bool quotes = argument.empty() || argument.find(' ') != std::string::npos;
    line += (line.empty() ? "" : " ") + (quotes ? "\"" + argument + "\"" : argument);
  }
  return line;
}

/// By which names a world knows its folders.
struct Names {
  std::string server = kServer;
  std::string temporary = kTemp;
  std::string client = kClient;
};

class ChanceWorld : public World {
 public:
  ChanceWorld(Work work, unsigned seed, const Undisturbed* undisturbed);

  sim::SimMachine& machine() override { return station_.machine(); }
  sim::SimDisk& share() override { return station_.share(); }
  void run() override;
  void judge(const Fault& fault, Findings& findings) override;
  Undisturbed takeUndisturbed() override;
  std::string description() const override;

 private:
  bool oneIn(unsigned count) { return random_() % count == 0; }
  std::size_t below(std::size_t count) { return random_() % count; }
  std::string oneOf(const std::vector<std::string>& texts) { return texts[below(texts.size())]; }

  // --- Making

  void chooseNames();
  void applyNames();
  void chooseArguments();
  std::vector<std::string> integratedRun();
  void putOthers();
  void putRemovals();

  // --- Running

  void start();
  void startSecond();
  void disturb();

  // --- Judging

  std::vector<std::string> volumes() const;
  Picture picture() { return pictureOf(machine(), volumes()); }
  std::string physical(const std::string& path);
  std::string record(bool server);
  Versions versions(bool server);
  std::vector<std::string> mayGo();
  bool wasBrought(const std::string& version) const;
  void judgeProgram(Judge& judge);
  void judgeRecords(Judge& judge);
  void judgeTelling(Judge& judge, const Picture& after);
  void judgeScreen(Judge& judge);
  void judgeHealing(Judge& judge);
  Picture settle();

  const Work work_;
  const Undisturbed* const undisturbed_;
  std::mt19937 random_;
  GeneratedStation station_;
  ScriptedUser user_;
  std::unique_ptr<PackPrograms> mediumPrograms_;
  Names names_;
  std::vector<std::string> arguments_;
  /// At which call the second start, or the other workstation, comes between; 0: never.
  std::size_t secondAt_ = 0;
  std::size_t neighbourAt_ = 0;
  bool neighbourWrote_ = false;
  Picture before_;
  Versions serverBefore_;
  Versions clientBefore_;
  /// Programs that the run started, and what it told.
  std::vector<std::string> started_;
  std::vector<std::string> told_;
};

ChanceWorld::ChanceWorld(Work work, unsigned seed, const Undisturbed* undisturbed)
    : work_(work),
      undisturbed_(undisturbed),
      random_(seed * static_cast<unsigned>(kEveryWork.size()) + static_cast<unsigned>(work)),
      station_(static_cast<unsigned>(random_())),
      user_(station_.machine(), static_cast<unsigned>(random_())) {
  chooseNames();
  applyNames();
  putOthers();
  if (work_ == Work::Maintenance) {
    putRemovals();
  }
  if (work_ == Work::Session) {
    mediumPrograms_ = putMedium(machine(), static_cast<unsigned>(random_()));
  }
  chooseArguments();
  constexpr std::size_t kMostCalls = 250;
  secondAt_ = work_ == Work::TwoStarts ? 1 + below(kMostCalls) : 0;
  neighbourAt_ = oneIn(2) ? 1 + below(kMostCalls) : 0;
  before_ = picture();
  serverBefore_ = versions(true);
  clientBefore_ = versions(false);
}

// --- Making

void ChanceWorld::chooseNames() {
  if (oneIn(2)) {
    return;
  }
  names_.server =
      oneOf({kServer, "s:\\LUMO", "\\\\SRVLUMO\\Dati\\Lumo", "\\\\?\\S:\\Lumo",
             "\\\\?\\UNC\\SRVLUMO\\Dati\\Lumo", "C:\\Società\\Lumo rete", "S:\\Collegata"});
  names_.temporary =
      oneOf({kTemp, "C:\\Users\\mario\\Temp è\\di lavoro", "\\\\?\\C:\\Users\\mario\\Temp",
             "\\\\SRVLUMO\\Dati\\temp\\mario", "C:\\T", kServer, "S:\\Lumo\\prg\\tempterm", "C:"});
  names_.client =
      oneOf({kClient, "C:\\Lumo\\Client\\", "C:\\Lumo\\Cliente è", "C:", "\\\\?\\C:\\Lumo\\Client",
             "\\\\SRVLUMO\\Dati\\Lumo\\postazioni\\p 1"});
}

void ChanceWorld::applyNames() {
  sim::SimDisk& disk = machine().diskOf("C:\\");
  machine().mount("\\\\SRVLUMO\\Dati", station_.installation().sharedDisk());
  disk.putLink("C:\\Società\\Lumo rete", kServer);
  share().putLink("S:\\Collegata", kServer);
  disk.putLink("C:\\T", kTemp);
  machine().makeFolders("C:\\Users\\mario\\Temp è\\di lavoro");
  machine().makeFolders("C:\\Lumo\\Cliente è");
  share().makeFolders("S:\\temp\\mario");
  share().makeFolders("S:\\Lumo\\postazioni\\p 1");
  for (const char* const variable : {"TEMP", "TMP"}) {
    machine().environment().put(variable, names_.temporary);
  }
  machine().configuration().setConfigPath(names_.client);
  const std::string recorded = station_.station().recordedIntegration();
  if (recorded == kServer) {
    machine().configuration().put("SYSTEM", "Complementary_Products", "Integration", "Path",
                                  names_.server);
  }
  const std::string clientRecord = machine().fileExists(Station::kClientRecord)
                                       ? machine().fileText(Station::kClientRecord)
                                       : "";
  const sim::SimVolumes::Place place = machine().volumes().find(names_.client, true);
  if (names_.client != kClient && place.node != nullptr && !clientRecord.empty()) {
    place.disk->put("C:\\" + place.diskPath + "\\agdvver.ini", clientRecord);
  }
}

std::vector<std::string> ChanceWorld::integratedRun() {
  const std::string server = oneIn(12) ? oneOf({"S:\\Manca", "S:\\Lumo\\"}) : names_.server;
  const std::string integration = oneIn(6) ? std::string(kServer) : server;
  return {"INTEGRATEDRUN", server,       integration, oneOf({"NERIO", "MVBIL", "Q2", "FALSO"}),
          "azienda uno",   "esercizio 2"};
}

void ChanceWorld::chooseArguments() {
  switch (work_) {
    case Work::IntegratedRun:
    case Work::TwoStarts:
      arguments_ = integratedRun();
      return;
    case Work::Maintenance:
      arguments_ = {"INTEGRATEDMAINTAIN"};
      return;
    case Work::Session:
      arguments_ = {"INTERACTIVE"};
      return;
    case Work::SingleInstall:
      arguments_ = {"SINGLEINSTALL", oneOf({"NERIO", "ZB", "nerio", "RR"}),
                    oneIn(8) ? "manca.gz" : "nerio.gz"};
      return;
    case Work::Refusal:
      arguments_ =
          std::vector<std::vector<std::string>>{{"STANDALONEINSTALL", names_.server},
                                                {"ALTRO"},
                                                {},
                                                {"INTEGRATEDRUN", names_.server}}[below(4)];
  }
}

/// What others have in the records.
void ChanceWorld::putOthers() {
  for (const bool server : {true, false}) {
    const std::string path = record(server);
    const sim::SimVolumes::Place place = machine().volumes().find(path, true);
    if (place.node != nullptr && !place.node->folder && !place.node->readOnly) {
      place.node->bytes +=
          std::string("\r\n[") + kForeign + "]\r\nversion=" + kForeignVersion + "\r\naltro=1\r\n";
    }
  }
}

/// Each product has programs in a folder of its own that take it away.
void ChanceWorld::putRemovals() {
  for (const std::string name : {"nerio", "luda", "zb", "q2"}) {
    const std::string path = kSetups + name + ".ini";
    if (!share().fileExists(path)) {
      continue;
    }
    const std::string folder = "S:\\Lumo\\mv\\" + name;
    share().putProgram(folder + "\\togli\\u.exe");
    share().put(folder + "\\togli\\dati.txt", "x");
    machine().putFile("C:\\Programmi\\" + name + "\\u.exe", "MZ");
    share().put(path, share().text(path) + "\r\n[Remove]\r\nServer01=%PATHWORK%\\mv\\" + name +
                          "\\togli\\u.exe -s\r\nServer02=%PATHSETUP%\\prg\\com\\setup\\aggdovra\\" +
                          "setup.exe -x\r\nClient01=C:\\Programmi\\" + name + "\\u.exe -s\r\n");
  }
}

std::string ChanceWorld::description() const {
  return std::string(nameOf(work_)) + ": " + quoted(arguments_) + ", temporary folder " +
         names_.temporary + ", client " + names_.client +
         (secondAt_ == 0 ? "" : ", second start at call " + std::to_string(secondAt_)) +
         (neighbourAt_ == 0 ? "" : ", neighbour at call " + std::to_string(neighbourAt_));
}

// --- Running

void ChanceWorld::run() {
  const std::size_t calls = machine().callCount();
  if (secondAt_ != 0) {
    machine().onCall(calls + secondAt_, [this]() -> void { startSecond(); });
  }
  if (neighbourAt_ != 0) {
    machine().onCall(calls + neighbourAt_, [this]() -> void { disturb(); });
  }
  start();
}

/// The other start dies alone: the first one lives on.
void ChanceWorld::startSecond() {
  const std::uint32_t process = machine().system().processId();
  constexpr std::uint32_t kOther = 1000;
  machine().system().setProcessId(process + kOther);
  try {
    RealProgram second(machine());
    second.run(quoted(arguments_));
  } catch (const sim::Killed&) {
    machine().callLog().setDead(false);
  }
  machine().system().setProcessId(process);
}

/// Another workstation records a product of its own.
void ChanceWorld::disturb() {
  const sim::SimVolumes::Place place = machine().volumes().find(record(true), true);
  if (place.node != nullptr && !place.node->folder && !place.node->readOnly &&
      !place.node->leaving) {
    place.node->bytes +=
        std::string("\r\n[") + kNeighbour + "]\r\nversion=" + kNeighbourVersion + "\r\n";
    neighbourWrote_ = true;
  }
}

void ChanceWorld::start() {
  const std::size_t startedBefore = machine().started().size();
  const std::size_t boxes = machine().boxes().size();
  const std::size_t forms = machine().desktop().shownForms().size();
  user_.begin();
  const auto take = [&](const RealProgram& program) -> void {
    const std::vector<std::string> lines = program.logLines();
    told_.assign(lines.begin(), lines.end());
    for (std::size_t i = boxes; i < machine().boxes().size(); ++i) {
      told_.push_back("box: " + machine().boxes()[i].text);
    }
    for (std::size_t i = forms; i < machine().desktop().shownForms().size(); ++i) {
      told_.push_back("form: " + machine().desktop().shownForms()[i]);
    }
    started_.clear();
    for (std::size_t i = startedBefore; i < machine().started().size(); ++i) {
      started_.push_back(machine().started()[i].commandLine);
    }
  };
  RealProgram program(machine());
  try {
    program.run(quoted(arguments_));
  } catch (...) {
    take(program);
    throw;
  }
  take(program);
}

// --- Judging

std::vector<std::string> ChanceWorld::volumes() const {
  return work_ == Work::Session ? std::vector<std::string>{"C:", "S:", "E:"}
                                : std::vector<std::string>{"C:", "S:"};
}

/// A path as pictures have it: the place itself, in upper case.
std::string ChanceWorld::physical(const std::string& path) {
  const sim::SimVolumes::Place place = machine().volumes().find(path, true);
  if (place.disk == nullptr) {
    return "nowhere";
  }
  const std::string volume = place.disk == &share() ? "S:" : "C:";
  return upperCase(place.diskPath.empty() ? volume : volume + "\\" + place.diskPath);
}

std::string ChanceWorld::record(bool server) {
  return server ? Installation::kServerRecord : names_.client + "\\agdvver.ini";
}

Versions ChanceWorld::versions(bool server) {
  Versions versions;
  for (const std::string& id : kIds) {
    versions[id] = machine().iniValue(record(server), id, "version");
  }
  return versions;
}

/// Any version of a section of any configuration file may have come, where any command ran.
bool ChanceWorld::wasBrought(const std::string& version) const {
  const auto any = [&](const Picture& picture) -> bool {
    return std::any_of(picture.begin(), picture.end(), [&](const auto& file) -> bool {
      return file.second.find("version=" + version + "\r\n") != std::string::npos;
    });
  };
  return (!started_.empty() && any(before_)) || version == "77.00";
}

std::vector<std::string> ChanceWorld::mayGo() {
  const std::string temporary = physical(names_.temporary);
  std::vector<std::string> paths{"*AGDV.LCK", "*.TMP", upperCase(kSetups) + "*.ZIP",
                                 temporary + "\\AMBVER", temporary + "\\TRELVMANAGER.LCK"};
  if (temporary != "S:\\LUMO") {
    paths.push_back(temporary + "\\PRG");
  }
  if (work_ == Work::Maintenance) {
    paths.insert(paths.end(), {"S:\\LUMO\\MV\\*\\TOGLI", upperCase(kSetups) + "*.INI"});
  }
  return paths;
}

void ChanceWorld::judge(const Fault& fault, Findings& findings) {
  if (undisturbed_ == nullptr) {
    return;
  }
  Judge judge(fault, findings, exceptionsByChance);
  const Picture after = picture();
  judgeRecords(judge);
  judge.nothingElseDeleted(before_, after, mayGo());
  if (fault.trouble != Trouble::Killed) {
    judgeProgram(judge);
    judge.locksGone(before_, after);
    judgeTelling(judge, after);
    judgeScreen(judge);
  }
  judgeHealing(judge);
}

void ChanceWorld::judgeProgram(Judge& judge) {
  const std::string& asked = undisturbed_->asked;
  judge.demand(
      Invariant::ProgramStarts,
      asked.empty() || std::find(started_.begin(), started_.end(), asked) != started_.end(),
      "not started: " + asked);
}

void ChanceWorld::judgeRecords(Judge& judge) {
  const WasBrought brought = [this](const std::string& /*id*/, const std::string& version) -> bool {
    return wasBrought(version);
  };
  judge.versionsTrue("server", serverBefore_, versions(true), brought);
  judge.versionsTrue("client", clientBefore_, versions(false), brought);
}

void ChanceWorld::judgeTelling(Judge& judge, const Picture& after) {
  const std::string difference = differenceOf(undisturbed_->after, after);
  judge.demand(Invariant::FailureTold,
               difference.empty() || !toldBesides(told_, undisturbed_->told).empty(),
               "nobody told that it did not come to this: " + difference);
}

void ChanceWorld::judgeScreen(Judge& judge) {
  judge.demand(Invariant::ScreenIsFree, !machine().desktop().hourglass(), "the hourglass stays");
  judge.demand(Invariant::ScreenIsFree, machine().desktop().activeForm() == nullptr,
               "a form stays");
  judge.demand(Invariant::ScreenIsFree, machine().desktop().forcedCloses() == 0,
               "a form did not close");
}

Picture ChanceWorld::settle() {
  Picture last = picture();
  for (int i = 0; i < kMostStarts; ++i) {
    start();
    Picture next = picture();
    if (next == last) {
      return last;
    }
    last = std::move(next);
  }
  return last;
}

void ChanceWorld::judgeHealing(Judge& judge) {
  const std::string difference = differenceOf(undisturbed_->healed, settle());
  judge.demand(Invariant::Heals, difference.empty(),
               "further starts do not mend it: " + difference);
}

Undisturbed ChanceWorld::takeUndisturbed() {
  Undisturbed undisturbed;
  undisturbed.calls = machine().callLog().all();
  undisturbed.before = before_;
  undisturbed.after = picture();
  undisturbed.told = told_;
  undisturbed.started = started_;
  const bool runsAProgram = work_ == Work::IntegratedRun || work_ == Work::TwoStarts;
  if (runsAProgram && !machine().started().empty() && !machine().started().back().waited) {
    undisturbed.asked = started_.back();
  }
  undisturbed.healed = settle();
  return undisturbed;
}

}  // namespace

const char* nameOf(Work work) {
  switch (work) {
    case Work::IntegratedRun:
      return "start";
    case Work::TwoStarts:
      return "two-starts";
    case Work::Maintenance:
      return "maintenance";
    case Work::Session:
      return "session";
    case Work::SingleInstall:
      return "single-install";
    case Work::Refusal:
      return "refusal";
  }
  throw std::logic_error("a work without a name");
}

std::unique_ptr<World> World::make(Work work, unsigned seed, const Undisturbed* undisturbed) {
  return std::make_unique<ChanceWorld>(work, seed, undisturbed);
}

Undisturbed undisturbedRun(Work work, unsigned seed, Findings& /*findings*/) {
  const std::unique_ptr<World> world = World::make(work, seed, nullptr);
  world->machine().callLog().clear();
  world->run();
  return world->takeUndisturbed();
}

}  // namespace trelv::tests
