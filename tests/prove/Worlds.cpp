#include "prove/Worlds.h"

#include <algorithm>
#include <iostream>
#include <random>
#include <set>
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
/// The version that the packs bring.
constexpr const char* kPackVersion = "77.00";
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

using Windows = std::vector<std::pair<std::size_t, std::size_t>>;

bool beginsACorrection(const sim::SimCall& call) {
  return call.kind == sim::CallKind::ProfileWrite &&
         call.text.ends_with("agdvver.ini [Q2] version=02.92.00.00");
}

bool endsACorrection(const sim::SimCall& call) {
  return call.kind == sim::CallKind::ProfileWrite &&
         call.text.ends_with("agdvver.ini [ZM] version=06.50.30.00");
}

/// From the removal of each pack to the end of its copy, and from the first to the last version of
/// a correction.
Windows windowsOf(const std::vector<sim::SimCall>& calls) {
  Windows windows;
  for (const sim::SimCall& call : calls) {
    const bool removesAPack = call.kind == sim::CallKind::FileRemove && call.path.ends_with(".zip");
    if (removesAPack || beginsACorrection(call)) {
      windows.emplace_back(call.number, call.number);
    } else if (!windows.empty() &&
               (call.kind == sim::CallKind::FileReplace || endsACorrection(call))) {
      windows.back().second = call.number;
    }
  }
  return windows;
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
  void beginTelling();
  void endTelling();
  void show() const;

  // --- Judging

  std::vector<std::string> volumes() const;
  Picture picture() { return pictureOf(machine(), volumes()); }
  std::string physical(const std::string& path);
  std::string record(bool server);
  Versions versions(bool server);
  std::vector<std::string> mayGo();
  bool wasCorrected(const std::string& id, const std::string& version) const;
  Origin originOf(const std::string& id, const std::string& version) const;
  void removeLocks(const Picture& after);
  void judgeProgram(Judge& judge);
  void judgeRecords(Judge& judge);
  void judgeTelling(Judge& judge, const Picture& after);
  Picture withoutScratch(Picture picture);
  void judgeScreen(Judge& judge);
  /// Without a user whose choices depend on what he sees.
  bool runsByItself() const {
    return work_ == Work::IntegratedRun || work_ == Work::TwoStarts || work_ == Work::Refusal;
  }
  bool wasBrokenOff(const Fault& fault);
  Picture comparable(Picture picture) const;
  void judgeHealing(Judge& judge);
  /// What the world comes to when it is started again and again; does it rest?
  Picture settle(bool& rests);

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
  Picture before_;
  Versions serverBefore_;
  Versions clientBefore_;
  bool endless_ = false;
  std::size_t startedBefore_ = 0;
  std::size_t boxesBefore_ = 0;
  std::size_t formsBefore_ = 0;
  /// The log of the program that ended last.
  std::vector<std::string> log_;
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
  // Where there is no record yet it depends on the run whether there is one at that call.
  neighbourAt_ = oneIn(2) && machine().fileExists(record(true)) ? 1 + below(kMostCalls) : 0;
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
  beginTelling();
  try {
    start();
  } catch (const sim::Killed&) {
    endTelling();
    throw;
  }
  // A run that was over before them has them behind it.
  startSecond();
  disturb();
  endTelling();
}

/// The other start dies alone: the first one lives on.
void ChanceWorld::startSecond() {
  if (std::exchange(secondAt_, 0) == 0) {
    return;
  }
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
  if (std::exchange(neighbourAt_, 0) == 0) {
    return;
  }
  const sim::SimVolumes::Place place = machine().volumes().find(record(true), true);
  if (place.node != nullptr && !place.node->folder && !place.node->readOnly &&
      !place.node->leaving) {
    place.node->bytes +=
        std::string("\r\n[") + kNeighbour + "]\r\nversion=" + kNeighbourVersion + "\r\n";
  }
}

void ChanceWorld::start() {
  user_.begin();
  // No start needs so many: one that does would go on for ever.
  constexpr std::size_t kMostCalls = 100'000;
  machine().onCall(machine().callCount() + kMostCalls, [this]() -> void {
    endless_ = true;
    throw sim::Killed(sim::Unfinished::NotBegun);
  });
  RealProgram program(machine());
  try {
    program.run(quoted(arguments_));
  } catch (const sim::Killed&) {
    if (!endless_) {
      throw;
    }
  }
  log_ = program.logLines();
}

void ChanceWorld::beginTelling() {
  startedBefore_ = machine().started().size();
  boxesBefore_ = machine().boxes().size();
  formsBefore_ = machine().desktop().shownForms().size();
}

void ChanceWorld::endTelling() {
  told_ = log_;
  for (std::size_t i = boxesBefore_; i < machine().boxes().size(); ++i) {
    told_.push_back("box: " + machine().boxes()[i].text);
  }
  for (std::size_t i = formsBefore_; i < machine().desktop().shownForms().size(); ++i) {
    told_.push_back("form: " + machine().desktop().shownForms()[i]);
  }
  started_.clear();
  for (std::size_t i = startedBefore_; i < machine().started().size(); ++i) {
    started_.push_back(machine().started()[i].commandLine);
  }
  if (undisturbed_ != nullptr && undisturbed_->shown) {
    show();
  }
}

void ChanceWorld::show() const {
  std::cout << description() << "\n";
  for (const std::string& line : told_) {
    std::cout << "  " << line << "\n";
  }
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

/// What the correction for Dovra before 11.0 records, whatever stood there.
bool ChanceWorld::wasCorrected(const std::string& id, const std::string& version) const {
  static const Versions kCorrected{{"NERIO", "03.20.30.00"},
                                   {"LUDA", "07.10.00.00"},
                                   {"ZB", "09.93.00.00"},
                                   {"Q2", "02.92.00.00"},
                                   {"ZM", "06.50.30.00"}};
  const auto release = before_.find("S:\\LUMO\\PRG\\ETC\\DVREL");
  const auto corrected = kCorrected.find(id);
  return release != before_.end() && release->second.starts_with("10.70.00") &&
         corrected != kCorrected.end() && corrected->second == version;
}

/// The version of a section of any configuration file may have come, where any command ran. None
/// stands there behind a removal.
Origin ChanceWorld::originOf(const std::string& id, const std::string& version) const {
  const std::string asked = upperCase("Procedere con la rimozione di: " + id + " - ");
  const bool removed =
      version.empty() &&
      std::any_of(told_.begin(), told_.end(), [&asked](const std::string& line) -> bool {
        return upperCase(line).find(asked) != std::string::npos;
      });
  if (removed || wasCorrected(id, version)) {
    return Origin::Anew;
  }
  const auto has = [&](const auto& file) -> bool {
    return file.second.find("version=" + version + "\r\n") != std::string::npos;
  };
  const bool known = version == kPackVersion || std::any_of(before_.begin(), before_.end(), has);
  return known && !started_.empty() ? Origin::Command : Origin::Nowhere;
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
  if (fault.trouble == Trouble::Killed) {
    secondAt_ = 0;
    disturb();
    removeLocks(after);
  } else {
    judgeProgram(judge);
    judge.locksGone(before_, after);
    judgeTelling(judge, after);
    judgeScreen(judge);
  }
  judgeHealing(judge);
  judge.demand(Invariant::Ends, !endless_, "a start that does not end");
}

/// What the box of the next start asks for: a lock whose owner was killed is removed by hand.
void ChanceWorld::removeLocks(const Picture& after) {
  for (const auto& [path, bytes] : after) {
    if (path.ends_with("AGDV.LCK") && !before_.contains(path)) {
      machine().removeTree(path);
    }
  }
}

void ChanceWorld::judgeProgram(Judge& judge) {
  const std::string& asked = undisturbed_->asked;
  judge.demand(
      Invariant::ProgramStarts,
      asked.empty() || std::find(started_.begin(), started_.end(), asked) != started_.end(),
      "not started: " + asked);
}

void ChanceWorld::judgeRecords(Judge& judge) {
  const OriginOf origin = [this](const std::string& id, const std::string& version) -> Origin {
    return originOf(id, version);
  };
  judge.versionsTrue("server", serverBefore_, versions(true), origin);
  judge.versionsTrue("client", clientBefore_, versions(false), origin);
}

/// What is unpacked in the temporary folder belongs to nobody when the run is over.
Picture ChanceWorld::withoutScratch(Picture picture) {
  const std::string scratch = physical(names_.temporary) + "\\PRG\\";
  if (runsByItself() && scratch != "S:\\LUMO\\PRG\\") {
    std::erase_if(picture,
                  [&scratch](const auto& file) -> bool { return file.first.starts_with(scratch); });
  }
  return picture;
}

/// Where the machine has no place for a log nothing but a box can tell anything; what a user does
/// follows from what he sees.
void ChanceWorld::judgeTelling(Judge& judge, const Picture& after) {
  const std::vector<std::string> besides = toldBesides(told_, undisturbed_->told);
  const bool logs = std::any_of(undisturbed_->told.begin(), undisturbed_->told.end(),
                                [](const std::string& line) -> bool {
                                  return !line.starts_with("box: ") && !line.starts_with("form: ");
                                });
  const std::string difference =
      logs ? differenceOf(withoutScratch(undisturbed_->after), withoutScratch(after)) : "";
  judge.demand(Invariant::FailureTold, difference.empty() || !besides.empty(),
               "nobody told that it did not come to this: " + difference);
  std::set<std::string> boxes;
  for (const std::string& line : besides) {
    // Each command that a user without rights is refused has a box, and each of two starts its own.
    const bool mayRepeat = work_ != Work::IntegratedRun || !line.starts_with("box: ") ||
                           line.starts_with("box: Per il corretto funzionamento");
    judge.demand(Invariant::ToldOnce, mayRepeat || boxes.insert(line).second,
                 "shown twice: " + line);
  }
}

void ChanceWorld::judgeScreen(Judge& judge) {
  judge.demand(Invariant::ScreenIsFree, !machine().desktop().hourglass(), "the hourglass stays");
  judge.demand(Invariant::ScreenIsFree, machine().desktop().activeForm() == nullptr,
               "a form stays");
  judge.demand(Invariant::ScreenIsFree, machine().desktop().forcedCloses() == 0,
               "a form did not close");
}

Picture ChanceWorld::settle(bool& rests) {
  rests = true;
  Picture last = picture();
  for (int i = 0; i < kMostStarts; ++i) {
    beginTelling();
    start();
    endTelling();
    Picture next = picture();
    if (next == last) {
      return last;
    }
    last = std::move(next);
  }
  rests = false;
  return last;
}

/// Of two faults the second is counted in a run that the first has changed: behind any removal it
/// may have hit the copy.
bool ChanceWorld::wasBrokenOff(const Fault& fault) {
  const auto holds = [&fault](const auto& window) -> bool {
    const bool first = fault.number > window.first && fault.number <= window.second;
    return first || fault.secondNumber > window.first;
  };
  return std::any_of(undisturbed_->windows.begin(), undisturbed_->windows.end(), holds);
}

/// Packs bring catalogues and configurations of their own: which version a record ends with then
/// depends on what was opened first.
Picture ChanceWorld::comparable(Picture picture) const {
  if (!undisturbed_->windows.empty()) {
    std::erase_if(picture,
                  [](const auto& file) -> bool { return file.first.ends_with("\\AGDVVER.INI"); });
  }
  return picture;
}

/// The work of a user is done again where he does it again: what it comes to then depends on what
/// he sees. It comes to rest all the same.
void ChanceWorld::judgeHealing(Judge& judge) {
  bool rests = false;
  const Picture healed = settle(rests);
  judge.demand(Invariant::Heals, rests || !undisturbed_->rests,
               "each further start changes something");
  // Kept: a pack is deleted before its content is copied, and what is lost between is delivered
  // again; a record that names the corrected version of ZB counts as corrected.
  const bool brokenOff = wasBrokenOff(judge.fault());
  // Without an integration record each start looks for products on their own, its own files
  // included.
  const bool recorded = !undisturbed_->after.at("*integration").empty();
  const std::string difference =
      runsByItself() && recorded && !brokenOff
          ? differenceOf(comparable(undisturbed_->healed), comparable(healed))
          : "";
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
  undisturbed.windows = windowsOf(undisturbed.calls);
  // What a pack brings may be what names the program.
  if (runsByItself() && undisturbed.windows.empty() && !started_.empty() &&
      !machine().started().back().waited) {
    undisturbed.asked = started_.back();
  }
  undisturbed.healed = settle(undisturbed.rests);
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

Undisturbed undisturbedRun(Work work, unsigned seed) {
  const std::unique_ptr<World> world = World::make(work, seed, nullptr);
  world->machine().callLog().clear();
  world->run();
  return world->takeUndisturbed();
}

}  // namespace trelv::tests
