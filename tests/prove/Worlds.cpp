#include "prove/Worlds.h"

#include <algorithm>
#include <iostream>
#include <random>
#include <set>
#include <stdexcept>
#include <utility>

#include "base/Text.h"
#include "prove/ChanceExceptions.h"
#include "prove/Users.h"
#include "support/GeneratedStation.h"
#include "support/RealProgram.h"

namespace trelv::tests {
namespace {

constexpr const char* kUpdate = "INTEGRATEDRUN";
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

/// About as long as a folder of the ANSI functions can be, with what is put into it.
std::string longFolder() {
  constexpr std::size_t kLength = 150;
  std::string folder = "C:\\Users\\mario\\Dati applicazioni";
  while (folder.size() < kLength) {
    folder += "\\cartella dal nome lungo";
  }
  return folder;
}

/// Of whatever server; the path as pictures have it.
bool isInSetupTree(const std::string& path) {
  return path.find("\\PRG\\COM\\SETUP\\AGGDOVRA\\") != std::string::npos;
}

using Windows = std::vector<Undisturbed::Window>;

bool beginsACorrection(const sim::SimCall& call) {
  return call.kind == sim::CallKind::ProfileWrite &&
         call.text.ends_with("agdvver.ini [Q2] version=02.92.00.00");
}

bool endsACorrection(const sim::SimCall& call) {
  return call.kind == sim::CallKind::ProfileWrite &&
         call.text.ends_with("agdvver.ini [ZM] version=06.50.30.00");
}

/// From the removal of each pack to the end of its copy, and from the first to the last version of
/// a correction. The last rename of a copy is on its way until others have been at work.
Windows windowsOf(const std::vector<sim::SimCall>& calls) {
  Windows windows;
  for (const sim::SimCall& call : calls) {
    const bool removesAPack = call.kind == sim::CallKind::FileRemove && call.path.ends_with(".zip");
    if (removesAPack || beginsACorrection(call)) {
      windows.push_back({call.number, call.number, calls.size() + 2});
    } else if (!windows.empty() &&
               (call.kind == sim::CallKind::FileReplace || endsACorrection(call))) {
      windows.back().last = call.number;
      windows.back().durable = calls.size() + 2;
    } else if (call.kind == sim::CallKind::ProcessStart) {
      for (Undisturbed::Window& window : windows) {
        window.durable = std::min(window.durable, call.number);
      }
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
  void powerFailed(const std::vector<sim::OnItsWay>& onTheirWay) override {
    powerFailed_ = true;
    onTheirWay_ = onTheirWay;
  }
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
  std::vector<std::string> singleInstall();
  void putOthers();
  void putRemovals();

  // --- Running

  void start();
  void watch(const sim::SimCall& call);
  void startSecond();
  void disturb();
  void beginTelling();
  void endTelling();
  void show() const;

  // --- Judging

  std::vector<std::string> volumes() const;
  Picture picture() { return pictureOf(machine(), volumes()); }
  const Beginning& before() const { return undisturbed_ == nullptr ? own_ : undisturbed_->before; }
  std::string physical(const std::string& path);
  std::string record(bool server);
  Versions versions(bool server);
  std::vector<std::string> mayGo();
  std::vector<std::string> mayBeHalf();
  bool wasCorrected(const std::string& id, const std::string& version) const;
  Origin originOf(const std::string& id, const std::string& version) const;
  void removeLocks(const Picture& after);
  void judgeProgram(Judge& judge);
  bool couldBeRead(const std::string& file, const Versions& versions);
  void judgeRecords(Judge& judge);
  void judgePower(Judge& judge);
  void judgeTelling(Judge& judge, const Picture& after);
  bool isNamed(const std::string& call) const;
  Picture withoutScratch(Picture picture);
  void judgeScreen(Judge& judge);
  /// Without a user who does again what he did.
  bool runsByItself() const { return work_ != Work::Maintenance && work_ != Work::Session; }
  bool isInstallation() const { return work_ == Work::SingleInstall || work_ == Work::TwoInstalls; }
  bool updates() const {
    return arguments_.size() > 2 &&
           (arguments_[0] == kUpdate || (!alone_ && secondArguments_[0] == kUpdate));
  }
  bool isIntegrated() const {
    return std::any_of(undisturbed_->told.begin(), undisturbed_->told.end(),
                       [](const std::string& line) -> bool {
                         return line.starts_with("Gestione ProdTrelv - Integrazione Dovra SP ril");
                       });
  }
  bool wasBrokenOff(const Fault& fault);
  /// The second program may open its pack only in a further start.
  bool bringsPacks() const {
    return !undisturbed_->windows.empty() ||
           (!alone_ && !secondArguments_.empty() && secondArguments_[0] == "SINGLEINSTALL");
  }
  Picture comparable(Picture picture, bool brokenOff);
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
  /// What the second start asks for.
  std::vector<std::string> secondArguments_;
  /// The undisturbed run's own.
  Beginning own_;
  WholeFiles whole_;
  bool mayHaveWritten_ = true;
  /// What other workstations and programs have.
  Foreign foreign_;
  /// The text of the call before.
  std::string lastCall_;
  bool alone_ = true;
  bool lockWasThere_ = false;
  bool endless_ = false;
  std::size_t startedBefore_ = 0;
  std::size_t boxesBefore_ = 0;
  std::size_t formsBefore_ = 0;
  /// The log of the program that ended last.
  std::vector<std::string> log_;
  bool powerFailed_ = false;
  /// Files whose content was on its way then.
  std::vector<sim::OnItsWay> onTheirWay_;
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
  const bool two = work_ == Work::TwoStarts || work_ == Work::TwoInstalls;
  secondAt_ = two ? 1 + below(kMostCalls) : 0;
  // Where there is no record yet it depends on the run whether there is one at that call.
  neighbourAt_ = oneIn(2) && machine().fileExists(record(true)) ? 1 + below(kMostCalls) : 0;
  alone_ = secondAt_ == 0;
  if (undisturbed_ == nullptr) {
    own_ = {picture(), versions(true), versions(false)};
  }
  foreign_ = foreignOf(before().picture);
}

// --- Making

void ChanceWorld::chooseNames() {
  if (oneIn(4)) {
    return;
  }
  names_.server = oneOf({kServer, "s:\\LUMO", "\\\\SRVLUMO\\Dati\\Lumo", "\\\\?\\S:\\Lumo",
                         "\\\\?\\UNC\\SRVLUMO\\Dati\\Lumo", "C:\\Società\\Lumo rete",
                         "S:\\Collegata", "C:\\SOCIET~1\\Lumo rete"});
  names_.temporary =
      oneOf({kTemp, "C:\\Users\\mario\\Temp è\\di lavoro", "\\\\?\\C:\\Users\\mario\\Temp",
             "\\\\SRVLUMO\\Dati\\temp\\mario", "C:\\T", kServer, "S:\\Lumo\\prg\\tempterm",
             "C:", "C:\\Users\\mario\\TEMP~1\\di lavoro", longFolder()});
  names_.client =
      oneOf({kClient, "C:\\Lumo\\Client\\", "C:\\Lumo\\Cliente è", "C:", "\\\\?\\C:\\Lumo\\Client",
             "\\\\SRVLUMO\\Dati\\Lumo\\postazioni\\p 1", longFolder()});
}

void ChanceWorld::applyNames() {
  sim::SimDisk& disk = machine().diskOf("C:\\");
  machine().mount("\\\\SRVLUMO\\Dati", station_.installation().sharedDisk());
  disk.putLink("C:\\Società\\Lumo rete", kServer);
  share().putLink("S:\\Collegata", kServer);
  // What short names lead to is what links lead to.
  disk.putLink("C:\\SOCIET~1", "C:\\Società");
  disk.putLink("C:\\Users\\mario\\TEMP~1", "C:\\Users\\mario\\Temp è");
  machine().makeFolders(longFolder());
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

std::vector<std::string> ChanceWorld::singleInstall() {
  return {"SINGLEINSTALL", oneOf({"NERIO", "ZB", "nerio", "RR"}),
          oneIn(8) ? "manca.gz" : "nerio.gz"};
}

void ChanceWorld::chooseArguments() {
  switch (work_) {
    case Work::IntegratedRun:
      arguments_ = integratedRun();
      return;
    case Work::TwoStarts:
      arguments_ = integratedRun();
      secondArguments_ = oneIn(3) ? singleInstall() : arguments_;
      return;
    case Work::TwoInstalls:
      arguments_ = singleInstall();
      secondArguments_ = oneIn(3) ? integratedRun() : arguments_;
      return;
    case Work::Maintenance:
      arguments_ = {"INTEGRATEDMAINTAIN"};
      return;
    case Work::Session:
      arguments_ = {"INTERACTIVE"};
      return;
    case Work::SingleInstall:
      arguments_ = singleInstall();
      return;
    case Work::Refusal:
      arguments_ =
          std::vector<std::vector<std::string>>{{"STANDALONEINSTALL", names_.server},
                                                {"ALTRO"},
                                                {},
                                                {"INTEGRATEDRUN", names_.server}}[below(4)];
  }
}

/// What others have in the records, in the suite's ini file, in the registry and in folders.
void ChanceWorld::putOthers() {
  const sim::SimVolumes::Place suite = machine().volumes().find("C:\\WINDOWS\\lumow.ini", true);
  if (suite.node != nullptr) {
    suite.node->bytes += "\r\n[Altri]\r\nChiave=1\r\n";
  }
  machine().registry().setText(machine::Hive::LocalMachine, "SOFTWARE\\ALTRI", "Chiave", "1");
  for (const std::string& folder :
       {std::string("S:\\Lumo\\prg\\com\\setup\\aggdovra"), std::string("S:\\Lumo\\prg\\tempterm"),
        std::string("S:\\Lumo\\prg\\com\\bin\\cpy\\client"), names_.temporary, names_.client}) {
    const sim::SimVolumes::Place place = machine().volumes().find(folder, true);
    if (place.node != nullptr && place.node->folder && place.node->child("altri.txt") == nullptr) {
      place.disk->addChild(*place.node, "altri.txt", false).bytes = "di altri";
    }
  }
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
  machine().callLog().setTurns([this](const sim::SimCall& call) -> void { watch(call); });
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

/// Each moment of an undisturbed run shows what files have that are whole. Who takes a lock has
/// seen none.
void ChanceWorld::watch(const sim::SimCall& call) {
  if (undisturbed_ == nullptr && std::exchange(mayHaveWritten_, false)) {
    whole_.see(picture());
  }
  mayHaveWritten_ = call.kind == sim::CallKind::FileWrite || call.kind == sim::CallKind::FileCopy ||
                    call.kind == sim::CallKind::ProfileWrite ||
                    call.kind == sim::CallKind::ProcessStart;
  if (call.kind == sim::CallKind::FileWrite && call.path.ends_with("agdv.lck") &&
      call.text != lastCall_) {
    const sim::SimVolumes::Place place = machine().volumes().find(call.path, true);
    lockWasThere_ = lockWasThere_ || (place.node != nullptr && !place.node->folder);
  }
  lastCall_ = call.text;
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
    second.run(quoted(secondArguments_));
    log_ = second.logLines();
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
    const std::string section =
        std::string("\r\n[") + kNeighbour + "]\r\nversion=" + kNeighbourVersion + "\r\n";
    place.node->bytes += section;
    const Values values = valuesOf(section);
    foreign_[physical(record(true))].insert(values.begin(), values.end());
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
  const auto release = before().picture.find("S:\\LUMO\\PRG\\ETC\\DVREL");
  const auto corrected = kCorrected.find(id);
  return release != before().picture.end() && release->second.starts_with("10.70.00") &&
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
  const bool known =
      version == kPackVersion || std::any_of(before().picture.begin(), before().picture.end(), has);
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

/// What a kill may leave half: copies under way, the line of the environment file before it is put
/// in its place, the report that a form shows, and locks.
std::vector<std::string> ChanceWorld::mayBeHalf() {
  return {"*.TMP$", "*.LCK$", "*\\PRODINFO.TXT$", physical(names_.temporary) + "\\AMBVER$"};
}

void ChanceWorld::judge(const Fault& fault, Findings& findings) {
  if (undisturbed_ == nullptr) {
    return;
  }
  Judge judge(fault, findings, exceptionsByChance);
  if (fault.trouble == Trouble::PowerFails) {
    judgePower(judge);
    return;
  }
  const Picture after = picture();
  judgeRecords(judge);
  std::vector<std::string> mayBeHalf = this->mayBeHalf();
  if (fault.secondNumber != 0 || work_ == Work::Session) {
    // Two faults, and a user who sees something else, leave packs unopened that lay in packs:
    // nobody saw them whole before.
    mayBeHalf.emplace_back("*.ZIP$");
  }
  judge.nothingHalf(undisturbed_->whole, after, mayBeHalf);
  judge.othersSurvive(foreign_, after);
  // Two that meet between test and creation both take it.
  judge.demand(Invariant::LocksRespected, !alone_ || !lockWasThere_,
               "a lock was taken that another one had");
  judge.nothingElseDeleted(before().picture, after, mayGo());
  if (fault.trouble == Trouble::Killed) {
    secondAt_ = 0;
    disturb();
    removeLocks(after);
  } else {
    judgeProgram(judge);
    judge.locksGone(before().picture, after);
    judgeTelling(judge, after);
    judgeScreen(judge);
  }
  judgeHealing(judge);
  judge.demand(Invariant::Ends, !endless_, "a start that does not end");
}

/// What the box of the next start asks for: a lock whose owner was killed is removed by hand.
void ChanceWorld::removeLocks(const Picture& after) {
  for (const auto& [path, bytes] : after) {
    if (path.ends_with("AGDV.LCK") && !before().picture.contains(path)) {
      machine().removeTree(path);
    }
  }
}

/// A record that was on its way may name any versions: then set-ups run again that did not run in
/// the undisturbed run. What a user does again depends on what he sees, and two that did not meet
/// any more come to what they do one after the other, each time: a work folder is held no longer.
void ChanceWorld::judgePower(Judge& judge) {
  const std::string temporary = physical(names_.temporary);
  const bool recordLost =
      std::any_of(onTheirWay_.begin(), onTheirWay_.end(), [](const sim::OnItsWay& file) -> bool {
        return upperCase(file.path).ends_with("AGDVVER.INI");
      });
  const Picture after = picture();
  judge.nothingOnItsWay(onTheirWay_, temporary);
  judge.nothingHalf(undisturbed_->whole, wholeOf(after, temporary), mayBeHalf());
  judge.nothingElseDeleted(before().picture, after, mayGo());
  secondAt_ = 0;
  disturb();
  removeLocks(after);
  if (!recordLost && runsByItself() && alone_) {
    judgeRecords(judge);
    judgeHealing(judge);
  } else if (alone_) {
    bool rests = false;
    settle(rests);
    judge.demand(Invariant::Heals, rests || !undisturbed_->rests,
                 "each further start changes something");
  }
  judge.demand(Invariant::Ends, !endless_, "a start that does not end");
}

void ChanceWorld::judgeProgram(Judge& judge) {
  const std::string& asked = undisturbed_->asked;
  judge.demand(
      Invariant::ProgramStarts,
      asked.empty() || std::find(started_.begin(), started_.end(), asked) != started_.end(),
      "not started: " + asked);
}

/// Behind a power failure nobody holds a record any more that nobody could read before.
bool ChanceWorld::couldBeRead(const std::string& file, const Versions& versions) {
  return !before().picture.contains(physical(file)) ||
         std::any_of(versions.begin(), versions.end(),
                     [](const auto& version) -> bool { return !version.second.empty(); });
}

void ChanceWorld::judgeRecords(Judge& judge) {
  const OriginOf origin = [this](const std::string& id, const std::string& version) -> Origin {
    return originOf(id, version);
  };
  if (!powerFailed_ || couldBeRead(record(true), before().server)) {
    judge.versionsTrue("server", before().server, versions(true), origin);
  }
  if (!powerFailed_ || couldBeRead(record(false), before().client)) {
    judge.versionsTrue("client", before().client, versions(false), origin);
  }
}

/// What is unpacked in the temporary folder, or lies beside that in a pack, belongs to nobody when
/// the run is over, and copies under way are left to the next one.
Picture ChanceWorld::withoutScratch(Picture picture) {
  const std::string temporary = physical(names_.temporary);
  const std::string scratch = temporary + "\\PRG\\";
  std::erase_if(picture, [&](const auto& file) -> bool {
    return (temporary != "S:\\LUMO" && file.first.starts_with(scratch)) ||
           file.first == temporary + "\\LEGGIMI.TXT" || file.first == temporary + "\\AMBVER" ||
           file.first.ends_with(".TMP");
  });
  return picture;
}

/// Does a failure that is told name what the call was about? The undisturbed run may tell it in the
/// same words.
bool ChanceWorld::isNamed(const std::string& call) const {
  const std::size_t at = call.find(' ');
  const std::string path = at == std::string::npos ? call : call.substr(at + 1);
  return std::any_of(told_.begin(), told_.end(), [&path](const std::string& line) -> bool {
    return line.find("rrore") != std::string::npos && line.ends_with(path);
  });
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
  // One of two may hit the line that tells the other: it is lost.
  const Fault& fault = judge.fault();
  const bool lineIsLost = fault.secondNumber != 0 && (fault.call.starts_with("files.append") ||
                                                      fault.secondCall.starts_with("files.append"));
  const bool named =
      isNamed(fault.call) || (!fault.secondCall.empty() && isNamed(fault.secondCall));
  judge.demand(Invariant::FailureTold,
               difference.empty() || !besides.empty() || named || lineIsLost,
               "nobody told that it did not come to this: " + difference);
  std::set<std::string> boxes;
  for (const std::string& line : besides) {
    // Each command that a user without rights is refused has a box, and each of two starts its own.
    const bool mayRepeat = !alone_ || !runsByItself() || !line.starts_with("box: ") ||
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
    if (secondArguments_ != arguments_ && !alone_) {
      secondAt_ = 1;
      startSecond();
    }
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

/// Of two faults the second is counted in a run that the first has changed: it may have hit any
/// copy.
bool ChanceWorld::wasBrokenOff(const Fault& fault) {
  const auto holds = [&](const Undisturbed::Window& window) -> bool {
    const std::size_t last = powerFailed_ ? window.durable : window.last;
    const bool first = fault.number > window.first && fault.number <= last;
    return first || fault.secondNumber != 0;
  };
  return std::any_of(undisturbed_->windows.begin(), undisturbed_->windows.end(), holds);
}

/// Packs bring catalogues and configurations of their own: which file of that name there is in the
/// end, which of the waiting packs of a pack, and which version a record ends with, depends on what
/// was opened first. A pack of the tree that waits in another one may arrive too, and what stood in
/// the work folder with the first of them. A lock that was taken has made its folder, and one of
/// others goes with a run that has no work. What is lost between the removal of a pack and its copy
/// is delivered again.
Picture ChanceWorld::comparable(Picture picture, bool brokenOff) {
  picture = withoutScratch(std::move(picture));
  if (powerFailed_) {
    picture = wholeOf(std::move(picture), physical(names_.temporary));
  }
  if (!bringsPacks() && !brokenOff) {
    return picture;
  }
  std::erase_if(picture, [&](const auto& file) -> bool {
    const bool inTree = isInSetupTree(file.first);
    return file.first.ends_with("\\AGDVVER.INI") || file.first.ends_with("AGDV.LCK") ||
           file.first == "S:\\LUMO\\PRG\\TEMPTERM\\" ||
           (inTree && (brokenOff || !undisturbed_->healed.contains(file.first) ||
                       file.first.ends_with(".ZIP") || file.first.ends_with("\\VECCHIO.TXT")));
  });
  for (auto& [path, bytes] : picture) {
    if (isInSetupTree(path)) {
      bytes.clear();
    }
  }
  return picture;
}

/// The work of a user is done again where he does it again: what it comes to then depends on what
/// he sees. It comes to rest all the same.
void ChanceWorld::judgeHealing(Judge& judge) {
  // The world of the undisturbed run: its further starts were made.
  if (picture() == undisturbed_->after) {
    return;
  }
  bool rests = false;
  const Picture healed = settle(rests);
  judge.demand(Invariant::Heals, rests || !undisturbed_->rests,
               "each further start changes something");
  // Kept: a pack is deleted before its content is copied, and what is lost between is delivered
  // again; a record that names the corrected version of ZB counts as corrected.
  const bool brokenOff = wasBrokenOff(judge.fault());
  // Without an integration record each start that updates looks for products on their own, its own
  // files included.
  const bool dependsOnAUser = !runsByItself() && judge.fault().secondNumber != 0;
  const std::string difference =
      !dependsOnAUser && (!updates() || isIntegrated())
          ? differenceOf(comparable(undisturbed_->healed, brokenOff), comparable(healed, brokenOff))
          : "";
  judge.demand(Invariant::Heals, difference.empty(),
               "further starts do not mend it: " + difference);
}

Undisturbed ChanceWorld::takeUndisturbed() {
  Undisturbed undisturbed;
  undisturbed.calls = machine().callLog().all();
  undisturbed.before = std::move(own_);
  undisturbed.after = picture();
  undisturbed.told = told_;
  undisturbed.started = started_;
  undisturbed.windows = windowsOf(undisturbed.calls);
  // What a pack brings may be what names the program.
  if (runsByItself() && !isInstallation() && undisturbed.windows.empty() && !started_.empty() &&
      !machine().started().back().waited) {
    undisturbed.asked = started_.back();
  }
  undisturbed.healed = settle(undisturbed.rests);
  undisturbed.whole = std::move(whole_);
  undisturbed.whole.see(undisturbed.healed);
  // What is in packs that it did not open, and the line of the environment file, its date left out.
  undisturbed.whole.see({{"portato.exe", "MZ"},
                         {"secondo.txt", "x"},
                         {"dati.txt", "dati"},
                         {"ambver", "AMB0001##/##/## ##:##\r\n"}});
  return undisturbed;
}

}  // namespace

const char* nameOf(Work work) {
  switch (work) {
    case Work::IntegratedRun:
      return "start";
    case Work::TwoStarts:
      return "two-starts";
    case Work::TwoInstalls:
      return "two-installs";
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
