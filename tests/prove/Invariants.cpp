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

// --- What a power failure may cost

using sim::Writing;

/// A file, and why its content may be on its way under its own name.
struct MayBeLost {
  const char* path;
  const char* reason;
  /// It has to be written so, or in a way that spoils less, for that.
  Writing writing = Writing::Anew;
};

constexpr const char* kValueByValue =
    "the profile functions write it value by value, so that the values of others survive; a copy "
    "that is put in its place would undo theirs";
constexpr const char* kEachStart = "each start writes its values again";
constexpr const char* kNotInItsPlace = "not in its place yet";

constexpr MayBeLost kMayBeLost[] = {
    {"*.LOG", "opened, written and closed line by line: a flush of each would hold up every start"},
    {"*PRODINFO.TXT", "a report for the reader, made anew each time"},
    {"*AGDV.LCK", "a lock says by its name that there is one; its text is for the reader"},
    {"*.LCK", "it goes with its process"},
    {"*\\ANNULLATA", "says by its name that a publication was taken back; it is empty"},
    {"*.TMP", kNotInItsPlace},
    {"*.TRELV", kNotInItsPlace},
    {"*\\AGDVVER.INI", kValueByValue, Writing::ByValues},
    {"*\\MV\\LUDA2003\\LUDA.INI", kValueByValue, Writing::InPlace},
    {"*\\WINDOWS\\ZELTOMODELLI.INI", kValueByValue, Writing::InPlace},
    {"*\\WINDOWS\\LUMOW.INI", kEachStart, Writing::ByValues},
    {"*\\WINDOWS\\RATING.INI", kEachStart, Writing::ByValues},
    {"*\\WINDOWS\\VALUTAZIONE.INI", kEachStart, Writing::ByValues},
    {"*\\WINDOWS\\RATINGVALUTAZIONE.INI", kEachStart, Writing::ByValues},
    {"*\\WINDOWS\\ZELTOBILANCIO.INI", kEachStart, Writing::ByValues},
    {"*\\WINDOWS\\BILANCIOCONSOLIDATO.INI", kEachStart, Writing::ByValues},
    {"*\\WINDOWS\\CALCOLOIMPOSTE.INI", kEachStart, Writing::ByValues},
    {"*\\WINDOWS\\BILANCIOIAS.INI", kEachStart, Writing::ByValues},
    {"*\\WINDOWS\\CONSOLIDATOIAS.INI", kEachStart, Writing::ByValues},
    {"*\\WINDOWS\\COOPERATIVE.INI", kEachStart, Writing::ByValues},
    {"*\\WINDOWS\\ENTIFINANZIARI.INI", kEachStart, Writing::ByValues},
};

// --- Pictures

std::string upperPath(const std::string& path) { return upperCase(path); }

void add(Picture& picture, const sim::SimNode& node, const std::string& path) {
  for (const auto& child : node.children) {
    const std::string name = path + "\\" + upperPath(child->name);
    if (!child->linkTarget.empty()) {
      picture[name] = "-> " + child->linkTarget;
    } else if (child->folder) {
      picture[name + "\\"];
      add(picture, *child, name);
    } else if (!name.ends_with(".LOG")) {
      picture[name] = asInPictures(name, child->bytes);
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

void expect(Findings& findings, Invariant invariant, bool holds, const std::string& otherwise) {
  findings.expect(holds, nameOf(invariant) + (": " + otherwise));
}

const char* whyNotWhole(const std::string& path, const std::string& temporaryFolder,
                        Writing writing) {
  for (const MayBeLost& row : kMayBeLost) {
    if (beginsLike(path, row.path + std::string("$")) && writing >= row.writing) {
      return row.reason;
    }
  }
  // The scratch copy, and what the next search for packs clears.
  const bool scratch =
      path == temporaryFolder + "\\AMBVER" || path.starts_with(temporaryFolder + "\\PRG\\");
  return scratch ? "it lies in the temporary folder" : nullptr;
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
    expect(findings_, invariant, false, otherwise);
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

/// The date in these says when they were written.
std::string asInPictures(const std::string& path, const std::string& bytes) {
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

Picture wholeOf(Picture picture, const std::string& temporaryFolder) {
  std::erase_if(picture, [&](const auto& file) -> bool {
    return whyNotWhole(file.first, temporaryFolder, Writing::InPlace) != nullptr;
  });
  return picture;
}

void addTo(Known& known, const Picture& picture) {
  for (const auto& [path, bytes] : picture) {
    known[path].insert(bytes);
  }
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

void Judge::nothingOnItsWay(const std::vector<sim::OnItsWay>& onTheirWay,
                            const std::string& temporaryFolder) {
  for (const sim::OnItsWay& file : onTheirWay) {
    demand(Invariant::NothingHalf,
           whyNotWhole(upperPath(file.path), temporaryFolder, file.writing) != nullptr,
           "on its way: " + file.path);
  }
}

void Judge::nothingHalf(const Known& known, const Picture& found,
                        const std::string& temporaryFolder) {
  for (const auto& [path, bytes] : wholeOf(found, temporaryFolder)) {
    const auto at = known.find(path);
    demand(Invariant::NothingHalf, at == known.end() || at->second.contains(bytes),
           "neither old nor new: " + path + " is \"" + bytes + "\"");
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
    if (!path.ends_with("\\")) {
      contents_.insert(bytes);
    }
  }
}

bool WholeFiles::has(const std::string& path, const std::string& bytes) const {
  if (contents_.contains(bytes) || path.ends_with("\\") || path.starts_with("*")) {
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
