#include "packs/SetupFolderGuard.h"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include "base/Text.h"
#include "platform/modLibrary.h"
#include "startup/HostPaths.h"

namespace trelv::modProdTrelvManager {
namespace {

// --- The program of a command

std::string lastLevel(const std::string& path) {
  const std::size_t last = path.find_last_of("\\/");
  return last == std::string::npos ? path : path.substr(last + 1);
}

bool isProgramFile(Program& program, const std::string& path) {
  return modLibrary::FileExists(program, path) || (lastLevel(path).find('.') == std::string::npos &&
                                                   modLibrary::FileExists(program, path + ".exe"));
}

/// Of several blanks behind a name only the first one ends it.
bool endsLikeProgram(const std::string& path) {
  const std::string extension = lowerCase(modLibrary::Extension(lastLevel(path)));
  return !path.ends_with(' ') &&
         (extension == "exe" || extension == "com" || extension == "bat" || extension == "cmd");
}

/// Every beginning that ends before a blank, shortest first, then the whole text.
std::vector<std::string> beginnings(const std::string& text) {
  std::vector<std::string> found;
  for (std::size_t at = text.find(' '); at != std::string::npos; at = text.find(' ', at + 1)) {
    found.push_back(text.substr(0, at));
  }
  found.push_back(text);
  return found;
}

std::string programOfUnquoted(Program& program, const std::string& text) {
  const std::vector<std::string> candidates = beginnings(text);
  const auto file = std::find_if(
      candidates.begin(), candidates.end(),
      [&](const std::string& candidate) -> bool { return isProgramFile(program, candidate); });
  if (file != candidates.end()) {
    return *file;
  }
  if (candidates.size() == 1) {
    return text;
  }
  const auto like = std::find_if(candidates.begin(), candidates.end(), endsLikeProgram);
  const bool only = std::count_if(candidates.begin(), candidates.end(), endsLikeProgram) == 1;
  return only ? *like : std::string();
}

// --- The guard

/// A full path taken apart as the system reads it.
struct Place {
  /// "C:" or "\\server\share".
  std::string volume;
  std::vector<std::string> levels;
};

std::vector<std::string> split(const std::string& path) {
  std::vector<std::string> levels;
  for (std::size_t at = 0; at < path.size();) {
    const std::size_t end = std::min(path.find('\\', at), path.size());
    if (end > at) {
      levels.push_back(path.substr(at, end - at));
    }
    at = end + 1;
  }
  return levels;
}

/// One more level onto those before it. False for what nobody can name a folder of.
bool addLevel(std::vector<std::string>& levels, std::string level) {
  if (level == ".") {
    return true;
  }
  if (level == "..") {
    if (!levels.empty()) {
      levels.pop_back();
    }
    return true;
  }
  // The system drops blanks and points at the end of a name.
  level.erase(level.find_last_not_of(" .") + 1);
  levels.push_back(level);
  return !level.empty() && level.find(':') == std::string::npos;
}

/// Nothing for a device path, and for an administrative share, which is another name of a folder
/// that this guard knows by its drive.
std::optional<std::string> takeShare(std::vector<std::string>& levels) {
  if (levels.size() < 2 || levels[0] == "?" || levels[0] == "." || levels[1].back() == '$') {
    return std::nullopt;
  }
  std::string volume = "\\\\" + levels[0] + "\\" + levels[1];
  levels.erase(levels.begin(), levels.begin() + 2);
  return volume;
}

std::optional<std::string> takeDrive(const std::string& path, std::vector<std::string>& levels) {
  if (path.size() < 3 || path[1] != ':' || path[2] != '\\') {
    return std::nullopt;
  }
  std::string volume = path.substr(0, 2);
  levels.erase(levels.begin());
  return volume;
}

/// Nothing for what is not a full path.
std::optional<Place> placeOf(const std::string& text) {
  const std::string path = replaceAll(trim(text), "/", "\\");
  std::vector<std::string> raw = split(path);
  const bool share = path.compare(0, 2, "\\\\") == 0;
  const std::optional<std::string> volume = share ? takeShare(raw) : takeDrive(path, raw);
  if (!volume) {
    return std::nullopt;
  }
  Place place{*volume, {}};
  const bool sound = std::all_of(raw.begin(), raw.end(), [&](const std::string& level) -> bool {
    return addLevel(place.levels, level);
  });
  return sound ? std::optional<Place>(place) : std::nullopt;
}

/// Is the name one that needs no short form beside it?
bool isShortEnough(const std::string& name) {
  constexpr std::size_t kName = 8;
  constexpr std::size_t kExtension = 3;
  const std::size_t point = std::min(name.find('.'), name.size());
  return point <= kName && name.size() - point <= kExtension + 1 &&
         name.find_first_of(" +,;=[]") == std::string::npos &&
         std::count(name.begin(), name.end(), '.') <= 1;
}

bool isShortForm(const std::string& name) {
  const std::size_t tilde = name.find('~');
  return tilde != std::string::npos && tilde + 1 < name.size() && name[tilde + 1] >= '0' &&
         name[tilde + 1] <= '9';
}

/// A short form counts as every long name that has one: which one it is, only the disk knows.
bool mayBeNamed(const std::string& name, const std::string& guarded) {
  return equalNoCase(name, guarded) || (isShortForm(name) && !isShortEnough(guarded));
}

/// Does `holder` hold `inner`, or is it the same folder?
bool holds(const Place& holder, const Place& inner) {
  return equalNoCase(holder.volume, inner.volume) && holder.levels.size() <= inner.levels.size() &&
         std::equal(holder.levels.begin(), holder.levels.end(), inner.levels.begin(), mayBeNamed);
}

bool liesIn(const Place& place, const Place& folder) {
  return equalNoCase(place.volume, folder.volume) && place.levels.size() >= folder.levels.size() &&
         std::equal(folder.levels.begin(), folder.levels.end(), place.levels.begin(),
                    [](const std::string& guarded, const std::string& name) -> bool {
                      return mayBeNamed(name, guarded);
                    });
}

/// One of the folders that many products share, or what holds one: the server path too.
bool isHostFolderByName(const Place& place, const Place& server) {
  constexpr auto kShared = hostPaths::kSharedFolders;
  return std::any_of(kShared.begin(), kShared.end(), [&](const char* name) -> bool {
    const std::vector<std::string> tail = split(name);
    Place folder = server;
    folder.levels.insert(folder.levels.end(), tail.begin(), tail.end());
    // Two levels or more of this name are the host's, whatever the server path is called here.
    const bool sameTail =
        tail.size() > 1 && place.levels.size() >= tail.size() &&
        std::equal(tail.rbegin(), tail.rend(), place.levels.rbegin(), equalNoCase);
    return sameTail || holds(place, folder);
  });
}

/// Is the file in the folder, or in folders below it that are named like those on its way? Then the
/// folder is one of its holders, by whatever name.
bool leadsTo(Program& program, const std::string& folder, const std::string& file) {
  FileSystemObject& files = program.fileSystem;
  const std::optional<Place> place = placeOf(file);
  std::string rest;
  return place && std::any_of(place->levels.rbegin(), place->levels.rend(),
                              [&](const std::string& level) -> bool {
                                rest = "\\" + level + rest;
                                return files.mayExist(folder + rest);
                              });
}

std::string joined(const Place& place) {
  std::string path = place.volume;
  for (const std::string& level : place.levels) {
    path += "\\" + level;
  }
  return path;
}

bool holdsManager(Program& program, const Place& place) {
  const std::string manager = program.machine.system.executablePath();
  const std::optional<Place> folder = placeOf(modLibrary::ParentPath(manager) + "\\");
  return folder && (holds(place, *folder) || leadsTo(program, joined(place), manager));
}

/// The folder of all products' programs, whatever the server path beside it is called here.
bool isFolderOfPrograms(Program& program, const std::string& serverPath, Place place) {
  if (place.levels.empty() || !equalNoCase(place.levels.back(), hostPaths::kProducts)) {
    return false;
  }
  place.levels.pop_back();
  return leadsTo(program, joined(place), hostPaths::catalogue(serverPath));
}

bool isOfHost(Program& program, const std::string& serverPath, const Place& server,
              const Place& place) {
  return isHostFolderByName(place, server) || holdsManager(program, place) ||
         isFolderOfPrograms(program, serverPath, place) ||
         leadsTo(program, joined(place), hostPaths::catalogue(serverPath)) ||
         leadsTo(program, joined(place), hostPaths::serverVersionRecord(serverPath));
}

/// True also when the system's folders cannot be told.
bool isOfSystem(Program& program, const Place& place) {
  const std::optional<Place> windows = placeOf(modLibrary::WindowsFolder(program));
  const std::optional<Place> ofUser = placeOf(modLibrary::GetWinDir(program));
  const std::optional<Place> programs = placeOf(modLibrary::ProgramFilesFolder(program));
  if (!windows || !programs) {
    return true;
  }
  // On a 64-bit Windows this program's own Program Files has the other one beside it.
  const std::string both = joined(*programs);
  const std::optional<Place> other = placeOf(both.substr(0, both.rfind(" (x86)")));
  return holds(place, *windows) || liesIn(place, *windows) ||
         (ofUser && (holds(place, *ofUser) || liesIn(place, *ofUser))) || holds(place, *programs) ||
         (other && holds(place, *other));
}

/// A literal path in its usual form, with a backslash behind it so that a root is one.
std::string usualForm(const std::string& path) {
  const std::string unc = "\\\\?\\UNC\\";
  const std::string literal = "\\\\?\\";
  if (equalNoCase(path.substr(0, unc.size()), unc)) {
    return "\\\\" + path.substr(unc.size()) + "\\";
  }
  return (path.rfind(literal, 0) == 0 ? path.substr(literal.size()) : path) + "\\";
}

void add(std::vector<Place>& places, const std::string& path) {
  const std::optional<Place> place = placeOf(usualForm(path));
  if (place) {
    places.push_back(*place);
  }
}

Place parentOf(Place place) {
  if (!place.levels.empty()) {
    place.levels.pop_back();
  }
  return place;
}

/// A shell folder; nothing where this Windows has none of that number.
std::optional<Place> shellPlace(Program& program, int number) {
  std::string folder;
  return program.machine.system.shellFolder(number, folder) == system_code::kSuccess
             ? placeOf(folder + "\\")
             : std::nullopt;
}

/// The user's profile, as the system and as the session name it.
std::vector<Place> profiles(Program& program) {
  std::vector<Place> found;
  std::string ofSession;
  program.machine.environment.get("USERPROFILE", ofSession);
  add(found, ofSession);
  if (const auto ofUser = shellPlace(program, machine::kUserProfileFolder)) {
    found.push_back(*ofUser);
  }
  // The profile that all users share lies beside them, also where this user's own lies elsewhere.
  if (const auto desktop = shellPlace(program, machine::kCommonDesktopFolder)) {
    found.push_back(parentOf(*desktop));
  }
  return found;
}

/// Folders of users, of this workstation and of the installation that are no product's.
std::vector<Place> sharedFolders(Program& program, const InstallationPaths& paths) {
  std::vector<Place> shared = profiles(program);
  for (const int number : {machine::kCommonDataFolder, machine::kCommonFilesFolder}) {
    if (const auto place = shellPlace(program, number)) {
      shared.push_back(*place);
    }
  }
  add(shared, replaceAll(modLibrary::ProgramFilesFolder(program), " (x86)", "") + "\\Common Files");
  add(shared, modLibrary::WindowsFolder(program));
  add(shared, modLibrary::ProgramFilesFolder(program));
  add(shared, modLibrary::GetTempDirectory(program));
  add(shared, paths.programs);
  for (const std::string& root : {paths.integration, paths.server}) {
    add(shared, root);
    add(shared, hostPaths::productsFolder(root));
  }
  for (const char* const name : hostPaths::kSharedFolders) {
    add(shared, paths.server + "\\" + name);
  }
  return shared;
}

/// The folders that profiles lie in. A root is none: other folders lie there too.
std::vector<Place> foldersOfProfiles(Program& program) {
  std::vector<Place> folders;
  for (const Place& profile : profiles(program)) {
    if (profile.levels.size() > 1) {
      folders.push_back(parentOf(profile));
    }
  }
  return folders;
}

bool isProfile(const Place& place, const std::vector<Place>& foldersOfProfiles) {
  return std::any_of(
      foldersOfProfiles.begin(), foldersOfProfiles.end(), [&](const Place& folder) -> bool {
        return liesIn(place, folder) && place.levels.size() == folder.levels.size() + 1;
      });
}

/// Full paths of a folder and of all that hold it, roots included.
std::vector<std::string> withHolders(Place place) {
  std::vector<std::string> paths;
  for (; !place.levels.empty(); place = parentOf(place)) {
    paths.push_back(joined(place));
  }
  paths.push_back(place.volume + "\\");
  return paths;
}

/// Which folders two paths lead to tells what their names do not: short ones, drive and share,
/// links. What cannot be looked at counts as one that leads there.
class Identities {
 public:
  explicit Identities(Program& program) : files_(program.machine.files) {}

  bool leadsToOneOf(const std::string& folder, const std::vector<std::string>& others) {
    machine::FileIdentity own;
    const SystemCode code = files_.identify(folder, own);
    return !meansMissing(code) && (code != system_code::kSuccess || isOneOf(own, others));
  }

 private:
  bool isOneOf(const machine::FileIdentity& own, const std::vector<std::string>& others) {
    return std::any_of(others.begin(), others.end(), [&](const std::string& other) -> bool {
      machine::FileIdentity its;
      return files_.identify(other, its) == system_code::kSuccess && its == own;
    });
  }

  machine::Files& files_;
};

/// Does the folder hold a shared one, or is it one, by whatever name? Or lies it in Windows?
bool isSharedByAnotherName(Program& program, const Place& place, const std::vector<Place>& shared) {
  std::vector<std::string> guarded;
  for (const Place& one : shared) {
    for (const std::string& path : withHolders(one)) {
      if (std::find(guarded.begin(), guarded.end(), path) == guarded.end()) {
        guarded.push_back(path);
      }
    }
  }
  Identities identities(program);
  const std::string windows = modLibrary::WindowsFolder(program);
  std::vector<std::string> ofProfiles;
  for (const Place& folder : foldersOfProfiles(program)) {
    ofProfiles.push_back(joined(folder));
  }
  const std::vector<std::string> way = withHolders(place);
  return identities.leadsToOneOf(way[0], guarded) || identities.leadsToOneOf(way[1], ofProfiles) ||
         identities.leadsToOneOf(windows, way);
}

bool isShared(Program& program, const InstallationPaths& paths, const Place& place) {
  const std::vector<Place> shared = sharedFolders(program, paths);
  return isProfile(place, foldersOfProfiles(program)) ||
         std::any_of(shared.begin(), shared.end(),
                     [&](const Place& folder) -> bool { return holds(place, folder); }) ||
         isSharedByAnotherName(program, place, shared);
}

}  // namespace

std::string FolderOfCommand(Program& program, const std::string& command) {
  const std::string text = replaceAll(trim(command), "/", "\\");
  if (text.empty()) {
    return {};
  }
  const bool quoted = text.front() == '"';
  const std::size_t begin = quoted ? 1 : 0;
  const std::string untilQuote = trim(text.substr(begin, text.find('"', begin) - begin));
  return modLibrary::ParentPath(quoted ? untilQuote : programOfUnquoted(program, untilQuote));
}

bool IsRemovableSetupFolder(Program& program, const InstallationPaths& paths,
                            const std::string& folder) {
  const std::optional<Place> place = placeOf(folder);
  const std::optional<Place> server = placeOf(paths.server + "\\");
  return place && server && !place->levels.empty() && !isOfSystem(program, *place) &&
         !isOfHost(program, paths.server, *server, *place) && !isShared(program, paths, *place);
}

}  // namespace trelv::modProdTrelvManager
