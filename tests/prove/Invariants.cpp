#include "prove/Invariants.h"

#include <algorithm>
#include <cstdlib>
#include <set>
#include <sstream>
#include <stdexcept>

#include "base/Text.h"

namespace trelv::tests {
namespace {

using Table = CallTable<Exception>;

// --- What the system leaves undone by design. A row that nothing needs is a failure of the sweeps.

const Table kProgramDoesNotStart{{"files.look S:\\Lumo\\mv\\zb\\mvbil.exe", "its own test"},
                                 {"processes.start S:\\Lumo\\mv\\zb\\mvbil.exe", "its own start"}};

const Table kProgramIsNotInstalled{
    {"configuration.getParameter", "the integration cannot be read: nothing is installed"},
    {"files.look S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb.ini", "no part of the installation"},
    {"files.list S:\\Lumo\\prg\\com\\setup\\aggdovra", "the search for packs ends the update"},
    {"files.look S:\\Lumo\\prg", "the lock's folder cannot be made: no command runs"},
    {"files.makeFolder", "the lock's folder cannot be made: no command runs"},
    {"files.write", "the lock cannot be taken: no command runs"},
    {"files.removeFile S:\\Lumo\\prg\\tempterm\\agdv.lck",
     "the lock that stayed stops the next product"},
    {"files.removeFile C:\\Lumo\\Clientagdv.lck", "the lock that stayed stops the next product"},
    {"files.look C:\\Lumo\\Clientagdv.lck", "the lock that stayed stops the next product"},
    {"processes.start S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb\\server.exe", "its own set-up"}};

const Table kLockStays{
    {"files.removeFile S:\\Lumo\\prg\\tempterm\\agdv.lck", "its removal is what failed"},
    {"files.removeFile C:\\Lumo\\Clientagdv.lck", "its removal is what failed"},
    {"files.look S:\\Lumo\\prg\\tempterm\\agdv.lck", "a lock that cannot be seen is not removed"},
    {"files.look C:\\Lumo\\Clientagdv.lck", "a lock that cannot be seen is not removed"}};

const Table kNone{};

// --- The same by chance

constexpr const char* kNoStore = "these results of the store count as an empty path";
constexpr const char* kNoEdition = "the edition's probes answer no";
constexpr const char* kDefault = "ini reading answers its default";
constexpr const char* kMissing = "what cannot be looked at counts as missing until the next start";
constexpr const char* kLeftover = "leftovers of others stay for the next one";
constexpr const char* kNobody = "there is nobody to answer";
constexpr const char* kAbsent =
    "a key that cannot be opened is an ordinary answer: no suite is seen";
constexpr const char* kPlugin = "the host is no Dovra then";

const Table kChanceProgramDoesNotStart{{"files.look *.exe", "its own test"},
                                       {"processes.start", "its own start"},
                                       {"profiles.readValue *", kDefault}};

const Table kChanceVersionsTrue{{"profiles.readValue *", kDefault}};

const Table kChanceLockStays{{"files.removeFile *agdv.lck", "its removal is what failed"},
                             {"files.look *agdv.lck", "a lock that cannot be seen is not removed"}};

const Table kChanceSilent{
    {"files.append *.log", "a line that fails is lost"},
    {"files.look *.log", "an old log is kept then"},
    {"files.look *.zip", "a pack that is not seen is not removed: it is opened again"},
    {"files.look *agdv.lck", "counts as missing"},
    {"files.look *.ini", kMissing},
    {"files.look *plugin", kPlugin},
    {"files.look *LUDA2003", kMissing},
    {"files.look *ZM", kMissing},
    {"files.look *.exe", kMissing},
    {"files.look *ProdInfo.txt", "the report of before counts as missing"},
    {"files.look *.tmp", kLeftover},
    {"files.removeFile *.tmp", kLeftover},
    {"processes.isRunning", kLeftover},
    {"files.list *tempterm", kLeftover},
    {"files.list *cpy", kLeftover},
    {"files.look *Setup.cmf", "the menu counts as missing the second time"},
    {"system.temporaryFolder", "without it there is no log"},
    {"system.computerName", kLeftover},
    {"system.queryVersion", kNoEdition},
    {"system.suiteIncludes", kNoEdition},
    {"configuration.getConfigPath", kNoStore},
    {"registry.", kAbsent},
    {"profiles.readValue", kDefault},
    {"profiles.writeValue *agdvver.ini *version=$",
     "a version that nothing raised is written by the next start"},
    {"environment.", "the folders are then those without the variable"},
    {"desktop.messageBox", kNobody},
    {"desktop.inputBox", kNobody},
    {"desktop.show", kNobody},
    {"processes.wait", "the command counts as one that ran"}};

const Table kChanceDoesNotHeal{
    {"configuration.getConfigPath", "what was put by an empty path stays there"},
    {"configuration.getParameter", "a start that cannot read the integration prepares nothing"},
    {"registry.", kAbsent},
    {"system.queryVersion", kNoEdition},
    {"system.suiteIncludes", kNoEdition},
    {"files.look *plugin", kPlugin},
    {"files.look *.tmp", kLeftover},
    {"files.look *agdv.lck", "a lock of others that is not seen is not respected and not removed"},
    {"files.removeFile *agdv.lck", "a lock stays until a run without work frees it"},
    {"profiles.readValue", kDefault},
    {"profiles.writeValue *agdvver.ini", "the correction for Dovra runs once"},
    {"environment.", "the folders are then those without the variable"}};

// --- Pictures

std::string upperPath(const std::string& path) { return upperCase(path); }

/// The date in these says when they were written.
std::string withoutMoment(const std::string& path, const std::string& bytes) {
  constexpr std::size_t kField = 7;
  if (path.ends_with("AGDV.LCK")) {
    return "";
  }
  return path.ends_with("\\AMBVER") ? bytes.substr(0, kField) : bytes;
}

void add(Picture& picture, const sim::SimNode& node, const std::string& path) {
  for (const auto& child : node.children) {
    const std::string name = path + "\\" + upperPath(child->name);
    if (!child->linkTarget.empty()) {
      picture[name] = "-> " + child->linkTarget;
    } else if (child->folder) {
      picture[name + "\\"];
      add(picture, *child, name);
    } else if (!name.ends_with(".LOG")) {
      picture[name] = withoutMoment(name, child->bytes);
    }
  }
}

/// A version as a number: the digits that stand first when the dots are gone.
unsigned long long numberOf(const std::string& version) {
  return std::strtoull(replaceAll(version, ".", "").c_str(), nullptr, 10);
}

/// The values of an ini file, whatever their order. An empty one reads like one that is missing.
std::set<std::string> valuesOf(const std::string& bytes) {
  std::istringstream text(bytes);
  std::set<std::string> values;
  std::string section;
  for (std::string line; std::getline(text, line);) {
    line = upperCase(trim(replaceAll(line, "\r", "")));
    if (line.starts_with("[")) {
      section = line;
    } else if (!line.empty() && !line.ends_with("=")) {
      values.insert(section + line);
    }
  }
  return values;
}

bool isSame(const std::string& path, const std::string& expected, const std::string& found) {
  return expected == found || (path.ends_with(".INI") && valuesOf(expected) == valuesOf(found));
}

}  // namespace

const char* nameOf(Invariant invariant) {
  switch (invariant) {
    case Invariant::ProgramStarts:
      return "program-starts";
    case Invariant::ProgramInstalled:
      return "program-installed";
    case Invariant::VersionsTrue:
      return "versions-true";
    case Invariant::NothingHalf:
      return "nothing-half";
    case Invariant::LocksGo:
      return "locks-go";
    case Invariant::LocksRespected:
      return "locks-respected";
    case Invariant::NothingElseDeleted:
      return "nothing-else-deleted";
    case Invariant::OthersSurvive:
      return "others-survive";
    case Invariant::FailureTold:
      return "failure-told";
    case Invariant::ToldOnce:
      return "told-once";
    case Invariant::ToldForAReason:
      return "told-for-a-reason";
    case Invariant::ScreenIsFree:
      return "screen-is-free";
    case Invariant::Heals:
      return "heals";
    case Invariant::Ends:
      return "ends";
  }
  throw std::logic_error("an invariant without a name");
}

const CallTable<Exception>& exceptionsOfTheStart(Invariant invariant) {
  switch (invariant) {
    case Invariant::ProgramStarts:
      return kProgramDoesNotStart;
    case Invariant::ProgramInstalled:
      return kProgramIsNotInstalled;
    case Invariant::LocksGo:
      return kLockStays;
    default:
      return kNone;
  }
}

const CallTable<Exception>& exceptionsByChance(Invariant invariant) {
  switch (invariant) {
    case Invariant::ProgramStarts:
      return kChanceProgramDoesNotStart;
    case Invariant::VersionsTrue:
      return kChanceVersionsTrue;
    case Invariant::LocksGo:
      return kChanceLockStays;
    case Invariant::FailureTold:
      return kChanceSilent;
    case Invariant::Heals:
      return kChanceDoesNotHeal;
    default:
      return kNone;
  }
}

void Judge::demand(Invariant invariant, bool holds, const std::string& otherwise) {
  if (!holds && !exceptions_(invariant).holds(fault_)) {
    findings_.expect(false, std::string(nameOf(invariant)) + ": " + otherwise);
  }
}

Picture pictureOf(sim::SimMachine& machine, const std::vector<std::string>& volumes) {
  Picture picture;
  for (const std::string& volume : volumes) {
    add(picture, machine.diskOf(volume + "\\").root(), volume);
  }
  picture["*registry"] = machine.registry().dump();
  picture["*integration"] =
      machine.configuration().value("SYSTEM", "Complementary_Products", "Integration", "Path");
  return picture;
}

std::string differenceOf(const Picture& expected, const Picture& found) {
  for (const auto& [path, bytes] : expected) {
    const auto at = found.find(path);
    if (at == found.end()) {
      return "not there: " + path;
    }
    if (!isSame(path, bytes, at->second)) {
      return path + " is \"" + at->second + "\" and not \"" + bytes + "\"";
    }
  }
  for (const auto& [path, bytes] : found) {
    if (!expected.contains(path)) {
      return "there: " + path;
    }
  }
  return "";
}

void Judge::versionsTrue(const std::string& record, const Versions& before, const Versions& found,
                         const OriginOf& originOf) {
  for (const auto& [id, version] : found) {
    const auto at = before.find(id);
    const std::string old = at == before.end() ? "" : at->second;
    if (version != old) {
      const Origin origin = originOf(id, version);
      const bool risen = numberOf(version) > numberOf(old);
      demand(Invariant::VersionsTrue,
             origin == Origin::Anew || (origin == Origin::Command && risen),
             record + " version of " + id + " was \"" + old + "\" and is \"" + version + "\"");
    }
  }
}

void Judge::locksGone(const Picture& before, const Picture& after) {
  for (const auto& [path, bytes] : after) {
    if (path.ends_with("AGDV.LCK")) {
      demand(Invariant::LocksGo, before.contains(path), "left behind: " + path);
    }
  }
}

void Judge::nothingElseDeleted(const Picture& before, const Picture& after,
                               const std::vector<std::string>& mayGo) {
  for (const auto& [path, bytes] : before) {
    if (!after.contains(path)) {
      const bool allowed = std::any_of(
          mayGo.begin(), mayGo.end(),
          [&path = path](const std::string& pattern) { return beginsLike(path, pattern); });
      demand(Invariant::NothingElseDeleted, allowed, "deleted: " + path);
    }
  }
}

std::vector<std::string> toldBesides(const std::vector<std::string>& told,
                                     const std::vector<std::string>& undisturbed) {
  std::multiset<std::string> usual(undisturbed.begin(), undisturbed.end());
  std::vector<std::string> besides;
  for (const std::string& line : told) {
    const auto at = usual.find(line);
    if (at == usual.end()) {
      besides.push_back(line);
    } else {
      usual.erase(at);
    }
  }
  return besides;
}

}  // namespace trelv::tests
