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

// --- Pictures

std::string upperPath(const std::string& path) { return upperCase(path); }

/// The date in these says when they were written.
std::string withoutMoment(const std::string& path, const std::string& bytes) {
  constexpr std::size_t kField = 7;
  if (path.ends_with("AGDV.LCK")) {
    return "";
  }
  std::string without = bytes;
  if (path.ends_with("\\AMBVER")) {
    for (std::size_t i = kField; i < without.size(); ++i) {
      without[i] = without[i] >= '0' && without[i] <= '9' ? '#' : without[i];
    }
  }
  return without;
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

void Judge::demand(Invariant invariant, bool holds, const std::string& otherwise) {
  if (holds) {
    return;
  }
  const Exception* const exception = exceptions_(invariant).of(fault_);
  if (exception == nullptr) {
    findings_.expect(false, std::string(nameOf(invariant)) + ": " + otherwise);
  } else {
    findings_.excuse(nameOf(invariant, *exception));
  }
}

std::string nameOf(Invariant invariant, const Exception& exception) {
  const auto only = [](const char* words) -> std::string {
    return *words == '\0' ? "" : std::string(", ") + words;
  };
  return std::string(nameOf(invariant)) + ": " + exception.call + only(exception.works) +
         only(exception.codes) + ": " + exception.reason;
}

Values valuesOf(const std::string& bytes) {
  std::istringstream text(bytes);
  Values values;
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

void Judge::nothingHalf(const WholeFiles& whole, const Picture& after,
                        const std::vector<std::string>& mayBeHalf) {
  for (const auto& [path, bytes] : after) {
    if (!whole.has(path, bytes) && std::none_of(mayBeHalf.begin(), mayBeHalf.end(),
                                                [&path = path](const std::string& pattern) -> bool {
                                                  return beginsLike(path, pattern);
                                                })) {
      demand(Invariant::NothingHalf, false, path + " is \"" + bytes + "\"");
    }
  }
}

void Judge::othersSurvive(const Foreign& before, const Picture& after) {
  for (const auto& [path, values] : before) {
    const auto at = after.find(path);
    const Values left = at == after.end() ? Values() : foreignOf(path, at->second);
    demand(Invariant::OthersSurvive,
           std::includes(left.begin(), left.end(), values.begin(), values.end()),
           path + " lost what others wrote");
  }
}

// --- Whole files

namespace {

std::string nameIn(const std::string& path) { return path.substr(path.rfind('\\') + 1); }

/// What the ini files that the repairs make beside their place have in any case.
const Values& keysOf(const std::string& path) {
  static const Values kNoKeys;
  static const Values kLuda{
      "[PATHNAMES]HOMEDIR=",   "[PATHNAMES]DATABASE=", "[PATHNAMES]EXEC=",   "[PATHNAMES]FILEDIR=",
      "[PATHNAMES]CRITTADIR=", "[DRIVE]FLOPPY=",       "[CONFIGVISTE]VISTA="};
  static const Values kModels{"[PARAMETRI]PATHMODELLI="};
  if (path.find("WINDOWS\\") == std::string::npos) {
    return kNoKeys;
  }
  return nameIn(path) == "LUDA.INI"           ? kLuda
         : nameIn(path) == "ZELTOMODELLI.INI" ? kModels
                                              : kNoKeys;
}

}  // namespace

void WholeFiles::see(const Picture& moment) {
  for (const auto& [path, bytes] : moment) {
    contents_.insert(bytes);
  }
}

bool WholeFiles::has(const std::string& path, const std::string& bytes) const {
  if (contents_.contains(bytes) || path.starts_with("*registry")) {
    return true;
  }
  if (!path.ends_with(".INI") || !bytes.ends_with("\n")) {
    return false;
  }
  const Values values = valuesOf(bytes);
  const Values& keys = keysOf(path);
  return std::all_of(keys.begin(), keys.end(), [&values](const std::string& key) -> bool {
    const auto at = values.lower_bound(key);
    return at != values.end() && at->starts_with(key);
  });
}

// --- What others have

Values foreignOf(const std::string& path, const std::string& bytes) {
  if (path.ends_with("\\ALTRI.TXT")) {
    return {bytes};
  }
  Values values;
  if (path.ends_with(".INI")) {
    values = valuesOf(bytes);
    std::erase_if(values, [](const std::string& value) -> bool {
      return !value.starts_with("[KXK]") && !value.starts_with("[VICINO]") &&
             !value.starts_with("[ALTRI]");
    });
  } else if (path == "*registry") {
    std::istringstream text(bytes);
    for (std::string line; std::getline(text, line);) {
      if (line.find("ALTRI") != std::string::npos) {
        values.insert(line);
      }
    }
  }
  return values;
}

Foreign foreignOf(const Picture& picture) {
  Foreign foreign;
  for (const auto& [path, bytes] : picture) {
    Values values = foreignOf(path, bytes);
    if (!values.empty()) {
      foreign[path] = std::move(values);
    }
  }
  return foreign;
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
