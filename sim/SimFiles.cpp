#include "sim/SimFiles.h"

#include <algorithm>
#include <optional>
#include <stdexcept>

#include "base/Text.h"

namespace trelv::sim {
namespace {

using machine::FileFacts;
using machine::FolderEntry;
using namespace system_code;

constexpr SystemCode kNotSameDevice = 17;
constexpr int kMostLinks = 32;

bool isShare(std::string_view path) { return path.starts_with("\\\\"); }

bool isLiteral(const std::string& path) { return path.compare(0, 4, "\\\\?\\") == 0; }

// The usual form of a literal path.
std::string withoutMark(const std::string& path) {
  return equalNoCase(path.substr(4, 4), "UNC\\") ? "\\\\" + path.substr(8) : path.substr(4);
}

std::string withoutTrailing(std::string text, char c) {
  while (!text.empty() && text.back() == c) {
    text.pop_back();
  }
  return text;
}

// The volume part of a full path: "S:" or "\\server\share".
std::string_view volumeOf(std::string_view full) {
  if (!isShare(full)) {
    return full.substr(0, 2);
  }
  const std::size_t share = full.find('\\', 2);
  const std::size_t end = share == std::string::npos ? share : full.find('\\', share + 1);
  return full.substr(0, end);
}

std::string_view cleanName(std::string_view name) {
  while (!name.empty() && (name.back() == ' ' || name.back() == '.')) {
    name.remove_suffix(1);
  }
  return name;
}

// Levels of a path without volume, with "." and ".." resolved as text. They stand in `rest`, which
// has to outlive them.
std::vector<std::string_view> resolvedLevels(std::string_view rest) {
  std::vector<std::string_view> levels;
  for (std::size_t at = 0; at <= rest.size();) {
    const std::size_t end = std::min(rest.find('\\', at), rest.size());
    const std::string_view level = rest.substr(at, end - at);
    if (level == "..") {
      if (!levels.empty()) {
        levels.pop_back();
      }
    } else if (!cleanName(level).empty()) {
      levels.push_back(cleanName(level));
    }
    at = end + 1;
  }
  return levels;
}

bool isInvalidName(std::string_view name) {
  return name.find_first_of("<>|?*:\"") != std::string::npos;
}

/// What the short name beside a long one ends with: ".TMP" of "A.TMPX".
std::string shortExtension(const std::string& name) {
  constexpr std::size_t kPointAndThree = 4;
  const std::size_t point = std::min(name.rfind('.'), name.size());
  return name.substr(point, kPointAndThree);
}

FileFacts factsOf(const SimNode& node) {
  FileFacts facts;
  facts.folder = node.folder;
  facts.readOnly = node.readOnly;
  facts.hidden = node.hidden;
  facts.system = node.system;
  facts.reparsePoint = !node.linkTarget.empty();
  facts.size = node.folder ? 0 : node.bytes.size();
  facts.modified = static_cast<std::uint64_t>(node.modified);
  return facts;
}

bool shares(const SimNode& node, Sharing way) {
  return !node.held || (static_cast<unsigned>(*node.held) & static_cast<unsigned>(way)) != 0;
}

// Why an existing file cannot be opened for writing.
SystemCode writeRefusal(const SimNode& node) {
  if (node.folder || node.readOnly || node.leaving) {
    return kAccessDenied;
  }
  return node.running() || !shares(node, Sharing::Write) ? kSharingViolation : kSuccess;
}

// Making a file anew takes the attributes that it is to have: what is hidden stays so or is
// refused.
bool wouldBeShown(const SimNode& target, bool hidden, bool system) {
  return (target.hidden && !hidden) || (target.system && !system);
}

// Why a file cannot be replaced by another one in one step.
SystemCode replaceRefusal(const SimNode& node) {
  return node.folder || node.readOnly || node.leaving || node.held || node.running() ? kAccessDenied
                                                                                     : kSuccess;
}

std::unique_ptr<SimNode> takeOut(SimNode& node) {
  auto& siblings = node.parent->children;
  const auto at = std::find_if(siblings.begin(), siblings.end(),
                               [&](const auto& child) { return child.get() == &node; });
  std::unique_ptr<SimNode> taken = std::move(*at);
  siblings.erase(at);
  return taken;
}

std::string_view partOf(std::string_view bytes, Unfinished left) {
  return left == Unfinished::Half ? bytes.substr(0, bytes.size() / 2) : std::string_view();
}

// Makes the call known; where the program is killed in it after it began, lets `leave` do its part.
template <class Enter, class Leave>
std::optional<SystemCode> unlessKilled(Enter&& enter, Leave&& leave) {
  try {
    return enter();
  } catch (const Killed& killed) {
    if (killed.left() != Unfinished::NotBegun) {
      leave(killed.left());
    }
    throw;
  }
}

// Takes a file out of its folder and puts it under another name.
void rename(SimNode& node, SimNode& folder, const std::string& name) {
  std::unique_ptr<SimNode> moved = takeOut(node);
  moved->name = name;
  moved->parent = &folder;
  folder.children.push_back(std::move(moved));
}

// Why what stands at a place cannot even be opened.
SystemCode usable(const SimVolumes::Place& place) {
  return place.code == kSuccess && place.node->leaving ? kAccessDenied : place.code;
}

// What a missing folder answers: always "path", never "file".
SystemCode asFolder(SystemCode code) { return code == kFileNotFound ? kPathNotFound : code; }

}  // namespace

// --- Volumes

void SimVolumes::mount(const std::string& name, std::shared_ptr<SimDisk> disk) {
  unmount(name);
  mounts_.emplace_back(withoutTrailing(name, '\\'), std::move(disk));
}

void SimVolumes::unmount(const std::string& name) {
  const std::string plain = withoutTrailing(name, '\\');
  std::erase_if(mounts_, [&](const auto& mounted) { return equalNoCase(mounted.first, plain); });
}

std::shared_ptr<SimDisk> SimVolumes::diskOf(const std::string& path) const {
  const std::string_view volume = volumeOf(path);
  for (const auto& [name, disk] : mounts_) {
    if (equalNoCase(name, volume)) {
      return disk;
    }
  }
  return nullptr;
}

SimDisk& SimVolumes::disk(const std::string& path) const {
  const std::shared_ptr<SimDisk> found = diskOf(fullPath(path));
  if (found == nullptr) {
    throw std::out_of_range("no disk is mounted for " + path);
  }
  return *found;
}

std::string SimVolumes::fullPath(const std::string& path) const {
  std::string text = isLiteral(path) ? withoutMark(path) : replaceAll(path, "/", "\\");
  const bool hasDrive = text.size() >= 2 && text[1] == ':';
  if (!isShare(text) && !hasDrive) {
    const bool fromRoot = !text.empty() && text[0] == '\\';
    text.insert(0, fromRoot ? std::string(volumeOf(currentFolder_)) : currentFolder_ + "\\");
  }
  const std::string_view volume = volumeOf(text);
  std::string full(volume);
  for (const std::string_view level :
       resolvedLevels(std::string_view(text).substr(volume.size()))) {
    full.append("\\").append(level);
  }
  return full == volume && !isShare(full) ? full + "\\" : full;
}

SimVolumes::Place SimVolumes::find(const std::string& path, bool followLast) const {
  Place place;
  if (path.empty()) {
    return place;
  }
  std::string full = fullPath(path);
  for (int links = 0; links < kMostLinks; ++links) {
    std::string redirect;
    place = findOnce(full, followLast, redirect);
    if (redirect.empty()) {
      break;
    }
    full = fullPath(redirect);
  }
  const bool namesFolder = path.back() == '\\' || path.back() == '/';
  if (place.node != nullptr && !place.node->folder && namesFolder) {
    place.code = kPathNotFound;
    place.node = nullptr;
  }
  return place;
}

SimVolumes::Place SimVolumes::findOnce(const std::string& full, bool followLast,
                                       std::string& redirect) const {
  Place place;
  place.disk = diskOf(full).get();
  if (place.disk == nullptr || place.disk->disconnected() != kSuccess) {
    place.code = place.disk != nullptr ? place.disk->disconnected()
                                       : (isShare(full) ? kBadNetPath : kPathNotFound);
    return place;
  }
  place.diskPath = SimDisk::pathOnDisk(full);
  const SystemCode denied = place.disk->denied(place.diskPath, false);
  if (denied != kSuccess) {
    place.code = denied;
    return place;
  }
  place.node = &place.disk->root();
  const std::vector<std::string_view> levels = resolvedLevels(place.diskPath);
  for (std::size_t i = 0; i < levels.size(); ++i) {
    const bool last = i + 1 == levels.size();
    if (isInvalidName(levels[i])) {
      place = Place{kInvalidName, place.disk, nullptr, nullptr, "", place.diskPath};
      return place;
    }
    if (!place.node->folder) {
      place = Place{kPathNotFound, place.disk, nullptr, nullptr, "", place.diskPath};
      return place;
    }
    place.folder = place.node;
    place.name = levels[i];
    place.node = place.folder->child(levels[i]);
    if (place.node == nullptr) {
      place.code = last ? kFileNotFound : kPathNotFound;
      place.folder = last ? place.folder : nullptr;
      return place;
    }
    if (!place.node->linkTarget.empty() && (!last || followLast)) {
      redirect = place.node->linkTarget;
      for (std::size_t rest = i + 1; rest < levels.size(); ++rest) {
        redirect.append("\\").append(levels[rest]);
      }
      return place;
    }
  }
  place.code = kSuccess;
  return place;
}

// --- Files

SimFiles::SimFiles(SimVolumes& volumes, SimCalls& calls, SimClock& clock)
    : volumes_(volumes), calls_(calls), clock_(clock) {}

SystemCode SimFiles::look(const std::string& path, FileFacts& facts) {
  if (const auto injected = calls_.enter(CallKind::FileLook, "files.look", path)) {
    return *injected;
  }
  const SimVolumes::Place place = volumes_.find(path, false);
  const SystemCode code = usable(place);
  if (code == kSuccess) {
    facts = factsOf(*place.node);
  }
  return code;
}

SystemCode SimFiles::identify(const std::string& path, machine::FileIdentity& identity) {
  if (const auto injected = calls_.enter(CallKind::FileLook, "files.identify", path)) {
    return *injected;
  }
  const SimVolumes::Place place = volumes_.find(path, true);
  const SystemCode code = usable(place);
  if (code == kSuccess) {
    identity = {place.disk->serial(), place.node->number};
  }
  return code;
}

SystemCode SimFiles::read(const std::string& path, std::size_t limit, std::string& content) {
  if (const auto injected = calls_.enter(CallKind::FileRead, "files.read", path)) {
    return *injected;
  }
  std::string whole;
  const SystemCode code = quietRead(path, whole);
  if (code == kSuccess) {
    content = whole.substr(0, limit);
  }
  return code;
}

SystemCode SimFiles::readPart(const std::string& path, std::uint64_t offset, std::size_t size,
                              std::string& content) {
  if (const auto injected = calls_.enter(CallKind::FileRead, "files.readPart", path)) {
    return *injected;
  }
  std::string whole;
  const SystemCode code = quietRead(path, whole);
  if (code == kSuccess) {
    content = offset < whole.size() ? whole.substr(static_cast<std::size_t>(offset), size) : "";
  }
  return code;
}

SystemCode SimFiles::quietRead(const std::string& path, std::string& content) {
  const SimVolumes::Place place = volumes_.find(path, true);
  if (place.code != kSuccess) {
    return place.code;
  }
  if (place.node->folder || place.node->leaving) {
    return kAccessDenied;
  }
  if (!place.node->allows(volumes_.user(), Right::Read) || !place.node->opensFor(volumes_.user())) {
    return kAccessDenied;
  }
  if (!shares(*place.node, Sharing::Read)) {
    return kSharingViolation;
  }
  content = place.node->bytes;
  return kSuccess;
}

SystemCode SimFiles::write(const std::string& path, std::string_view bytes) {
  const auto injected =
      unlessKilled([&] { return calls_.enter(CallKind::FileWrite, "files.write", path); },
                   [&](Unfinished left) { quietWrite(path, partOf(bytes, left)); });
  if (injected && *injected == kDiskFull) {
    // The file is opened, and with that emptied, before its bytes find no room.
    const SystemCode code = quietWrite(path, "");
    return code == kSuccess ? kDiskFull : code;
  }
  const SimNode* const node = injected ? nullptr : volumes_.find(path, true).node;
  if (node != nullptr && wouldBeShown(*node, false, false)) {
    return kAccessDenied;
  }
  return injected ? *injected : quietWrite(path, bytes);
}

SystemCode SimFiles::writable(const std::string& path, SimVolumes::Place& place) {
  place = volumes_.find(path, true);
  if (place.code != kSuccess && place.code != kFileNotFound) {
    return place.code;
  }
  if (place.node != nullptr) {
    const SystemCode refusal = writeRefusal(*place.node);
    if (refusal != kSuccess) {
      return refusal;
    }
    return place.node->opensFor(volumes_.user()) ? changeable(place, Right::Change) : kAccessDenied;
  }
  return addable(place);
}

// Why the user may not do this with what stands at the place.
SystemCode SimFiles::changeable(const SimVolumes::Place& place, Right right) const {
  const SystemCode denied = place.disk->denied(place.diskPath, true);
  const bool allowed = !place.node->leaving && place.node->allows(volumes_.user(), right);
  return denied != kSuccess || allowed ? denied : kAccessDenied;
}

// Why a file may not be renamed, whatever its new name.
SystemCode SimFiles::renamable(const SimVolumes::Place& place) const {
  return shares(*place.node, Sharing::Delete) ? changeable(place, Right::Remove)
                                              : kSharingViolation;
}

// Why nothing may be made at the place.
SystemCode SimFiles::addable(const SimVolumes::Place& place) const {
  const SystemCode denied = place.disk->denied(place.diskPath, true);
  const bool allowed = place.folder == nullptr || place.folder->allows(volumes_.user(), Right::Add);
  return denied != kSuccess || allowed ? denied : kAccessDenied;
}

SimNode& SimFiles::add(SimVolumes::Place& place, bool folder) {
  SimNode& made = place.disk->addChild(*place.folder, place.name, folder);
  made.owner = volumes_.user();
  if (!made.encryptedFor.empty()) {
    made.encryptedFor = volumes_.user();
  }
  return made;
}

SimNode& SimFiles::nodeToWrite(SimVolumes::Place& place) {
  if (place.node == nullptr) {
    place.node = &add(place, false);
  }
  place.node->modified = ticksOf(clock_.now());
  place.node->program = nullptr;
  place.node->version.reset();
  return *place.node;
}

SystemCode SimFiles::quietWrite(const std::string& path, std::string_view bytes) {
  SimVolumes::Place place;
  const SystemCode code = writable(path, place);
  if (code != kSuccess) {
    return code;
  }
  SimNode& node = nodeToWrite(place);
  node.bytes.clear();
  if (!place.disk->hasRoom(bytes.size(), 0)) {
    return kDiskFull;
  }
  node.bytes = bytes;
  return kSuccess;
}

SystemCode SimFiles::append(const std::string& path, std::string_view bytes) {
  const auto injected =
      unlessKilled([&] { return calls_.enter(CallKind::FileAppend, "files.append", path); },
                   [&](Unfinished left) { doAppend(path, partOf(bytes, left)); });
  return injected ? *injected : doAppend(path, bytes);
}

SystemCode SimFiles::doAppend(const std::string& path, std::string_view bytes) {
  SimVolumes::Place place;
  const SystemCode code = writable(path, place);
  if (code != kSuccess) {
    return code;
  }
  SimNode& node = nodeToWrite(place);
  if (!place.disk->hasRoom(bytes.size(), 0)) {
    return kDiskFull;
  }
  node.bytes += bytes;
  return kSuccess;
}

SystemCode SimFiles::removeFile(const std::string& path) {
  const auto injected = calls_.enter(CallKind::FileRemove, "files.removeFile", path);
  return injected ? *injected : doRemoveFile(path);
}

SystemCode SimFiles::doRemoveFile(const std::string& path) {
  const SimVolumes::Place place = volumes_.find(path, false);
  if (place.code != kSuccess) {
    return place.code;
  }
  const SimNode& node = *place.node;
  if (node.folder || node.readOnly || node.leaving || node.running()) {
    return kAccessDenied;
  }
  if (!shares(node, Sharing::Delete)) {
    return kSharingViolation;
  }
  const SystemCode denied = changeable(place, Right::Remove);
  if (denied == kSuccess && node.held) {
    place.node->leaving = true;
  } else if (denied == kSuccess) {
    takeOut(*place.node);
  }
  return denied;
}

SystemCode SimFiles::setReadOnly(const std::string& path, bool readOnly) {
  const std::string method = readOnly ? "files.setReadOnly" : "files.clearReadOnly";
  if (const auto injected = calls_.enter(CallKind::FileSetReadOnly, method, path)) {
    return *injected;
  }
  return changeAttributes(path, [readOnly](SimNode& node) { node.readOnly = readOnly; });
}

SystemCode SimFiles::changeAttributes(const std::string& path,
                                      const std::function<void(SimNode&)>& change) {
  const SimVolumes::Place place = volumes_.find(path, false);
  if (place.code != kSuccess) {
    return place.code;
  }
  const SystemCode denied = changeable(place, Right::Change);
  if (denied == kSuccess) {
    change(*place.node);
  }
  return denied;
}

SystemCode SimFiles::makeFolder(const std::string& path) {
  const auto injected = calls_.enter(CallKind::FolderMake, "files.makeFolder", path);
  return injected ? *injected : doMakeFolder(path);
}

SystemCode SimFiles::doMakeFolder(const std::string& path) {
  SimVolumes::Place place = volumes_.find(path, false);
  if (place.code == kSuccess) {
    return kAlreadyExists;
  }
  if (place.code != kFileNotFound) {
    return place.code;
  }
  const SystemCode denied = addable(place);
  if (denied == kSuccess) {
    add(place, true).modified = ticksOf(clock_.now());
  }
  return denied;
}

SystemCode SimFiles::removeFolder(const std::string& path) {
  const auto injected = calls_.enter(CallKind::FolderRemove, "files.removeFolder", path);
  return injected ? *injected : doRemoveFolder(path);
}

SystemCode SimFiles::doRemoveFolder(const std::string& path) {
  const SimVolumes::Place place = volumes_.find(path, false);
  if (place.code != kSuccess) {
    return place.code;
  }
  const SimNode& node = *place.node;
  if (!node.folder) {
    return kDirectoryName;
  }
  if (node.parent == nullptr || node.readOnly) {
    return kAccessDenied;
  }
  if (!node.children.empty()) {
    return kDirectoryNotEmpty;
  }
  const SystemCode denied = changeable(place, Right::Remove);
  if (denied == kSuccess) {
    takeOut(*place.node);
  }
  return denied;
}

SystemCode SimFiles::list(const std::string& folder, const std::string& ending,
                          std::vector<FolderEntry>& entries) {
  const auto injected = calls_.enter(CallKind::FolderList, "files.list", folder);
  return injected ? *injected : doList(folder, ending, entries);
}

SystemCode SimFiles::doList(const std::string& folder, const std::string& ending,
                            std::vector<FolderEntry>& entries) {
  const SimVolumes::Place place = volumes_.find(folder, true);
  if (place.code != kSuccess) {
    return asFolder(place.code);
  }
  if (!place.node->folder) {
    return kDirectoryName;
  }
  if (!place.node->allows(volumes_.user(), Right::Read)) {
    return kAccessDenied;
  }
  const std::string wanted = upperCase(ending);
  entries.clear();
  for (const auto& child : place.node->children) {
    const std::string name = upperCase(child->name);
    if (name.ends_with(wanted) || shortExtension(name).ends_with(wanted)) {
      entries.push_back({child->name, factsOf(*child)});
    }
  }
  return kSuccess;
}

SystemCode SimFiles::copyFile(const std::string& source, const std::string& target) {
  const auto injected = unlessKilled(
      [&] { return calls_.enter(CallKind::FileCopy, "files.copyFile", source, target); },
      [&](Unfinished left) { leavePartOfCopy(left, source, target); });
  return injected ? *injected : doCopy(source, target);
}

void SimFiles::leavePartOfCopy(Unfinished left, const std::string& source,
                               const std::string& target) {
  std::string bytes;
  const bool onItself = volumes_.find(source, true).node == volumes_.find(target, true).node;
  if (quietRead(source, bytes) == kSuccess && !onItself) {
    quietWrite(target, partOf(bytes, left));
  }
}

SystemCode SimFiles::doCopy(const std::string& source, const std::string& target) {
  std::string bytes;
  const SystemCode readCode = quietRead(source, bytes);
  if (readCode != kSuccess) {
    return readCode;
  }
  const SimNode* from = volumes_.find(source, true).node;
  SimVolumes::Place place;
  const SystemCode writeCode = writable(target, place);
  if (writeCode != kSuccess) {
    return writeCode;
  }
  if (place.node == from) {
    return kSharingViolation;
  }
  if (place.node != nullptr && wouldBeShown(*place.node, from->hidden, from->system)) {
    return kAccessDenied;
  }
  if (!place.disk->hasRoom(bytes.size(), place.node == nullptr ? 0 : place.node->bytes.size())) {
    return kDiskFull;
  }
  SimNode& to = nodeToWrite(place);
  to.bytes = bytes;
  to.modified = from->modified;
  to.readOnly = from->readOnly;
  to.hidden = from->hidden;
  to.system = from->system;
  to.program = from->program;
  to.version = from->version;
  to.streams = from->streams;
  return kSuccess;
}

SystemCode SimFiles::replaceFile(const std::string& source, const std::string& target) {
  const auto injected = calls_.enter(CallKind::FileReplace, "files.replaceFile", source, target);
  return injected ? *injected : doReplace(source, target);
}

SystemCode SimFiles::doReplace(const std::string& source, const std::string& target) {
  const SimVolumes::Place from = volumes_.find(source, false);
  if (from.code != kSuccess) {
    return from.code;
  }
  const SimVolumes::Place to = volumes_.find(target, false);
  if (to.code != kSuccess && to.code != kFileNotFound) {
    return to.code;
  }
  if (from.disk != to.disk) {
    return kNotSameDevice;
  }
  const SystemCode kept = renamable(from);
  if (kept != kSuccess) {
    return kept;
  }
  const bool other = to.node != nullptr && to.node != from.node;
  const SystemCode denied = std::max(addable(to), other ? changeable(to, Right::Remove) : kSuccess);
  const SystemCode refusal = other ? replaceRefusal(*to.node) : kSuccess;
  if (denied != kSuccess || refusal != kSuccess) {
    return denied != kSuccess ? denied : refusal;
  }
  if (other) {
    takeOut(*to.node);
  }
  rename(*from.node, *to.folder, to.name);
  return kSuccess;
}

SystemCode SimFiles::moveFile(const std::string& source, const std::string& target) {
  const auto injected = calls_.enter(CallKind::FileMove, "files.moveFile", source, target);
  return injected ? *injected : doMove(source, target);
}

SystemCode SimFiles::doMove(const std::string& source, const std::string& target) {
  const SimVolumes::Place from = volumes_.find(source, false);
  const SimVolumes::Place to = volumes_.find(target, false);
  if (from.code == kSuccess && to.code == kSuccess && to.node != from.node) {
    // The file is opened before its new name is looked at.
    const SystemCode kept = renamable(from);
    return kept != kSuccess ? kept : kAlreadyExists;
  }
  return doReplace(source, target);
}

SystemCode SimFiles::copyRights(const std::string& source, const std::string& target) {
  const auto injected = calls_.enter(CallKind::FileRights, "files.copyRights", source, target);
  return injected ? *injected : doCopyRights(source, target);
}

SystemCode SimFiles::doCopyRights(const std::string& source, const std::string& target) {
  const SimVolumes::Place from = volumes_.find(source, true);
  const SimVolumes::Place to = volumes_.find(target, true);
  if (usable(from) != kSuccess || usable(to) != kSuccess) {
    return usable(from) != kSuccess ? usable(from) : usable(to);
  }
  // Whoever made a file may always look at its list and change it.
  if (from.node->owner != volumes_.user() && !from.node->allows(volumes_.user(), Right::Read)) {
    return kAccessDenied;
  }
  if (from.node->rights == to.node->rights) {
    return kSuccess;
  }
  const bool own = to.node->owner == volumes_.user();
  const SystemCode denied =
      own ? to.disk->denied(to.diskPath, true) : changeable(to, Right::Change);
  if (denied == kSuccess) {
    to.node->rights = from.node->rights;
  }
  return denied;
}

SystemCode SimFiles::mayAddFile(const std::string& folder) {
  const auto injected = calls_.enter(CallKind::FolderProbe, "files.mayAddFile", folder);
  return injected ? *injected : doProbe(folder);
}

SystemCode SimFiles::doProbe(const std::string& folder) {
  const SimVolumes::Place place = volumes_.find(folder, true);
  return place.code == kSuccess ? changeable(place, Right::Add) : place.code;
}

SystemCode SimFiles::removeStream(const std::string& path, const std::string& stream) {
  const auto injected =
      calls_.enter(CallKind::FileStreamRemove, "files.removeStream", path, "", stream);
  return injected ? *injected : doRemoveStream(path, stream);
}

SystemCode SimFiles::doRemoveStream(const std::string& path, const std::string& stream) {
  const SimVolumes::Place place = volumes_.find(path, true);
  if (usable(place) != kSuccess || place.node->streams.count(stream) == 0) {
    return usable(place) != kSuccess ? usable(place) : kFileNotFound;
  }
  const SystemCode denied = changeable(place, Right::Change);
  if (denied == kSuccess) {
    place.node->streams.erase(stream);
  }
  return denied;
}

}  // namespace trelv::sim
