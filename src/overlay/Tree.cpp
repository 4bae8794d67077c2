#include "overlay/Tree.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <utility>

namespace trelv::overlay {
namespace {

using machine::FileFacts;
using machine::FileIdentity;
using machine::FolderEntry;
using namespace system_code;

constexpr std::size_t kAll = std::numeric_limits<std::size_t>::max();
/// Volume of what is on top only.
constexpr std::uint32_t kTopVolume = std::numeric_limits<std::uint32_t>::max();

/// What a missing folder answers: always "path", never "file".
SystemCode asFolder(SystemCode code) { return code == kFileNotFound ? kPathNotFound : code; }

/// Units of 100 ns since 1601 of a date that is taken as universal time.
std::uint64_t unitsOf(const machine::LocalTime& time) {
  using namespace std::chrono;
  constexpr sys_days kBegin = year{1601} / 1 / 1;
  const sys_days day = year_month_day{year{time.year}, month{static_cast<unsigned>(time.month)},
                                      std::chrono::day{static_cast<unsigned>(time.day)}};
  const seconds passed =
      (day - kBegin) + hours{time.hour} + minutes{time.minute} + seconds{time.second};
  constexpr std::uint64_t kUnitsPerSecond = 10'000'000;
  return static_cast<std::uint64_t>(passed.count()) * kUnitsPerSecond;
}

bool isInvalidName(const std::string& name) {
  return name.find_first_of("<>|?*:\"") != std::string::npos;
}

/// An entry that takes its place where it was made, not where something stood below.
bool isAdded(const Entry& entry) { return entry.kind != Entry::Kind::Gone && !entry.inPlace; }

}  // namespace

Tree::Tree(machine::Files& below, machine::Clock& clock, machine::Locale& locale,
           PrivateFolder& privateFolder, ListingOrder order)
    : below_(below), clock_(clock), locale_(locale), privateFolder_(privateFolder), order_(order) {}

// --- Folders by whatever name

std::shared_ptr<Folder> Tree::folderBelow(const std::string& path, SystemCode& code) {
  const bool isRoot = folderPath(path).levels.empty();
  const std::string name = locale_.upperCase(path);
  const auto known = byPath_.find(name);
  if (known != byPath_.end()) {
    return known->second;
  }
  FileIdentity identity;
  code = below_.identify(path, identity);
  if (meansMissing(code)) {
    return nullptr;
  }
  // A file system without such numbers, or a folder that refuses to be opened: its name must do.
  const bool identified = code == kSuccess && (isRoot || identity.number != 0);
  code = kSuccess;
  std::shared_ptr<Folder> folder;
  if (identified) {
    folder = byIdentity_[{identity.volume, identity.number}];
  }
  if (folder == nullptr) {
    folder = std::make_shared<Folder>();
    folder->below = path;
  }
  if (identified) {
    folder->volume = identity.volume;
    byIdentity_[{identity.volume, identity.number}] = folder;
  }
  byPath_[name] = folder;
  return folder;
}

std::shared_ptr<Folder> Tree::child(Folder& folder, const std::string& name, SystemCode& code) {
  const Entry* const entry = entryIn(folder, name);
  if (entry != nullptr) {
    code = entry->folder == nullptr ? kPathNotFound : kSuccess;
    return entry->folder;
  }
  code = kPathNotFound;
  return folder.below.empty() ? nullptr : folderBelow(joined(folder.below, name), code);
}

std::shared_ptr<Folder> Tree::descend(const FolderPath& path, std::size_t levels,
                                      SystemCode& code) {
  code = kSuccess;
  std::shared_ptr<Folder> folder = folderBelow(path.root, code);
  for (std::size_t i = 0; folder != nullptr && i < levels; ++i) {
    folder = child(*folder, path.levels[i], code);
  }
  code = asFolder(code);
  return folder;
}

Entry* Tree::entryIn(Folder& folder, const std::string& name) {
  if (folder.entries.empty()) {
    return nullptr;
  }
  const auto found = folder.entries.find(locale_.upperCase(name));
  return found == folder.entries.end() ? nullptr : &found->second;
}

// --- Looking

Place Tree::find(const std::string& path) {
  Place place;
  if (path.empty()) {
    return place;
  }
  const FolderPath parsed = folderPath(path);
  if (parsed.levels.empty()) {
    place.below = parsed.root;
    place.code = below_.look(parsed.root, place.facts);
    return place;
  }
  place.folder = descend(parsed, parsed.levels.size() - 1, place.code);
  if (place.folder == nullptr) {
    return place;
  }
  place.name = parsed.levels.back();
  if (isInvalidName(place.name)) {
    place.code = kInvalidName;
    return place;
  }
  place.entry = entryIn(*place.folder, place.name);
  place.below = place.folder->below.empty() ? "" : joined(place.folder->below, place.name);
  if (place.entry != nullptr) {
    place.code = place.entry->kind == Entry::Kind::Gone ? kFileNotFound : kSuccess;
    place.facts = place.entry->facts;
  } else {
    place.code = place.below.empty() ? kFileNotFound : below_.look(place.below, place.facts);
  }
  if (place.isThere() && !place.facts.folder && parsed.namesFolder) {
    place.code = kPathNotFound;
  }
  return place;
}

std::shared_ptr<Folder> Tree::findFolder(const std::string& path, SystemCode& code) {
  const Place place = find(path);
  code = asFolder(place.code);
  if (code == kSuccess && !place.facts.folder) {
    code = kDirectoryName;
  }
  if (code != kSuccess) {
    return nullptr;
  }
  const FolderPath parsed = folderPath(path);
  return descend(parsed, parsed.levels.size(), code);
}

SystemCode Tree::list(const std::string& folder, const std::string& ending,
                      std::vector<FolderEntry>& entries) {
  SystemCode code = kSuccess;
  const std::shared_ptr<Folder> found = findFolder(folder, code);
  if (found == nullptr) {
    return code;
  }
  std::vector<FolderEntry> all;
  if (!found->below.empty()) {
    code = below_.list(found->below, ending, all);
  }
  if (code != kSuccess) {
    return code;
  }
  const std::string wanted = locale_.upperCase(ending);
  listByMaking(*found, all);
  std::erase_if(all, [&](const FolderEntry& entry) -> bool {
    const Entry* const top = entryIn(*found, entry.name);
    return top != nullptr && !locale_.upperCase(entry.name).ends_with(wanted);
  });
  if (order_ == ListingOrder::ByName && !found->entries.empty()) {
    std::stable_sort(all.begin(), all.end(),
                     [this](const FolderEntry& left, const FolderEntry& right) -> bool {
                       return locale_.upperCase(left.name) < locale_.upperCase(right.name);
                     });
  }
  entries = std::move(all);
  return kSuccess;
}

/// What stands below, as it was changed in its place, then what was added.
void Tree::listByMaking(Folder& folder, std::vector<FolderEntry>& entries) {
  std::vector<FolderEntry> merged;
  for (const FolderEntry& entry : entries) {
    const Entry* const top = entryIn(folder, entry.name);
    if (top == nullptr) {
      merged.push_back(entry);
    } else if (top->kind != Entry::Kind::Gone && top->inPlace) {
      merged.push_back({entry.name, top->facts});
    }
  }
  std::vector<const Entry*> added;
  for (const auto& [name, entry] : folder.entries) {
    if (isAdded(entry)) {
      added.push_back(&entry);
    }
  }
  std::sort(added.begin(), added.end(), [](const Entry* left, const Entry* right) -> bool {
    return left->number < right->number;
  });
  for (const Entry* const entry : added) {
    merged.push_back({entry->name, entry->facts});
  }
  entries = std::move(merged);
}

SystemCode Tree::identify(const std::string& path, FileIdentity& identity) {
  const Place place = find(path);
  if (!place.isThere()) {
    return place.code;
  }
  const Entry* const entry = place.entry;
  if (entry == nullptr || entry->inPlace) {
    return below_.identify(place.below, identity);
  }
  identity = {kTopVolume, entry->number};
  return kSuccess;
}

SystemCode Tree::read(const std::string& path, std::uint64_t offset, std::size_t size,
                      std::string& content) {
  const Place place = find(path);
  if (!place.isThere()) {
    return place.code;
  }
  if (place.facts.folder) {
    return kAccessDenied;
  }
  const Entry* const entry = place.entry;
  if (entry != nullptr && entry->source.empty()) {
    const std::string& bytes = entry->bytes;
    content = offset < bytes.size() ? bytes.substr(static_cast<std::size_t>(offset), size) : "";
    return kSuccess;
  }
  const std::string& source = entry == nullptr ? place.below : entry->source;
  return offset == 0 ? below_.read(source, size, content)
                     : below_.readPart(source, offset, size, content);
}

std::string Tree::realPath(const std::string& path) {
  const Place place = find(path);
  if (!place.isThere()) {
    return privateFolder_.newPath();
  }
  Entry* const entry = place.entry;
  if (entry == nullptr) {
    return place.below;
  }
  if (entry->kind == Entry::Kind::File && entry->source.empty()) {
    // With its name behind: a tool may go by the ending.
    std::string real = privateFolder_.newPath() + "-" + entry->name;
    if (below_.write(real, entry->bytes) == kSuccess) {
      entry->source = real;
      entry->bytes.clear();
    }
    return real;
  }
  return entry->source;
}

// --- What would be refused

SystemCode Tree::mayAdd(Folder& folder) {
  if (folder.below.empty()) {
    return kSuccess;
  }
  if (!folder.mayAdd) {
    folder.mayAdd = below_.mayAddFile(folder.below);
  }
  return *folder.mayAdd;
}

/// What a file that another program keeps to itself answers.
SystemCode Tree::heldBelow(const Place& place) {
  std::string nothing;
  return below_.readPart(place.below, 0, 0, nothing);
}

SystemCode Tree::refusalToWrite(const Place& place) {
  if (place.code == kFileNotFound && place.folder != nullptr) {
    return mayAdd(*place.folder);
  }
  return refusalToRemove(place);
}

SystemCode Tree::refusalToRemove(const Place& place) {
  if (!place.isThere()) {
    return place.code;
  }
  if (place.facts.folder || place.facts.readOnly) {
    return kAccessDenied;
  }
  // An entry that has only other attributes than the file below it is that file.
  const bool isOther =
      place.entry != nullptr && (place.below.empty() || place.entry->source != place.below);
  if (isOther || (place.entry != nullptr && place.entry->refusal != kSuccess)) {
    return place.entry->held ? kSharingViolation : place.entry->refusal;
  }
  const SystemCode held = heldBelow(place);
  return held == kSuccess ? mayAdd(*place.folder) : held;
}

SystemCode Tree::refusalToChange(const Place& place) {
  if (!place.isThere()) {
    return place.code;
  }
  if (place.folder == nullptr) {
    return kAccessDenied;
  }
  if (place.entry != nullptr && (!place.entry->inPlace || place.entry->refusal != kSuccess)) {
    return place.entry->refusal;
  }
  // A folder has rights of its own; those of a link are not those of what it leads to.
  SystemCode code = kSuccess;
  const std::shared_ptr<Folder> itself =
      place.facts.folder && !place.facts.reparsePoint ? folderBelow(place.below, code) : nullptr;
  return mayAdd(itself != nullptr ? *itself : *place.folder);
}

// --- Changing

Entry& Tree::newEntry(Folder& folder, const std::string& name) {
  Entry& entry = folder.entries[locale_.upperCase(name)];
  entry = Entry();
  entry.name = name;
  entry.number = ++made_;
  return entry;
}

Entry& Tree::putFile(const Place& place, const FileFacts& facts) {
  const bool wasFile = place.isThere() && !place.facts.folder;
  const Entry before = wasFile && place.entry != nullptr ? *place.entry : Entry();
  Entry& entry = newEntry(*place.folder, place.name);
  if (wasFile) {
    entry.inPlace = place.entry == nullptr || before.inPlace;
    entry.name = place.entry == nullptr ? place.name : before.name;
    entry.number = place.entry == nullptr ? entry.number : before.number;
  }
  entry.kind = Entry::Kind::File;
  entry.facts = facts;
  return entry;
}

Entry& Tree::putFolder(const Place& place, const FileFacts& facts, std::shared_ptr<Folder> folder) {
  Entry& entry = newEntry(*place.folder, place.name);
  entry.kind = Entry::Kind::Folder;
  entry.facts = facts;
  entry.facts.folder = true;
  entry.folder = std::move(folder);
  if (entry.folder == nullptr) {
    entry.folder = std::make_shared<Folder>();
    entry.folder->volume = place.folder->volume;
  }
  return entry;
}

void Tree::remove(const Place& place) {
  if (place.folder->below.empty()) {
    place.folder->entries.erase(locale_.upperCase(place.name));
  } else {
    newEntry(*place.folder, place.name);
  }
}

void Tree::rename(const Place& source, const Place& target) {
  Entry moved = source.entry != nullptr ? *source.entry : Entry();
  if (source.entry == nullptr) {
    moved.kind = Entry::Kind::File;
    moved.facts = source.facts;
    moved.source = source.below;
  }
  remove(source);
  Entry& entry = newEntry(*target.folder, target.name);
  moved.name = target.name;
  moved.number = entry.number;
  moved.inPlace = false;
  entry = std::move(moved);
}

Entry& Tree::entryOf(const Place& place) {
  if (place.entry != nullptr) {
    return *place.entry;
  }
  if (!place.facts.folder) {
    Entry& entry = putFile(place, place.facts);
    entry.source = place.below;
    return entry;
  }
  SystemCode code = kSuccess;
  Entry& entry = putFolder(place, place.facts, folderBelow(place.below, code));
  entry.inPlace = true;
  return entry;
}

std::string& Tree::bytesOf(Entry& entry) {
  if (!entry.source.empty()) {
    below_.read(entry.source, kAll, entry.bytes);
    entry.source.clear();
  }
  return entry.bytes;
}

FileFacts Tree::writtenNow(std::size_t size) {
  const std::uint64_t local = unitsOf(clock_.now());
  FileFacts facts;
  facts.size = size;
  facts.modified = local - (unitsOf(clock_.localTime(local)) - local);
  return facts;
}

// --- Mounting

void Tree::mount(const std::string& realFolder, const std::string& path) {
  const FolderPath parsed = folderPath(path);
  std::string folder = parsed.root;
  for (const std::string& level : parsed.levels) {
    folder = joined(folder, level);
    const Place place = find(folder);
    if (place.code == kFileNotFound) {
      putFolder(place, writtenNow(0), nullptr);
    }
  }
  mountInto(realFolder, path);
}

void Tree::mountInto(const std::string& realFolder, const std::string& path) {
  std::vector<FolderEntry> entries;
  below_.list(realFolder, "", entries);
  for (const FolderEntry& entry : entries) {
    const Place place = find(joined(path, entry.name));
    const std::string real = joined(realFolder, entry.name);
    // A folder in a file's place, or the other way round, stays as it is.
    if (place.isThere() && place.facts.folder != entry.facts.folder) {
      continue;
    }
    if (!place.isThere() && place.code != kFileNotFound) {
      continue;
    }
    if (!entry.facts.folder) {
      putFile(place, entry.facts).source = real;
      continue;
    }
    if (!place.isThere()) {
      putFolder(place, entry.facts, nullptr);
    }
    // What a link leads to is not part of it.
    if (!entry.facts.reparsePoint) {
      mountInto(real, joined(path, entry.name));
    }
  }
}

}  // namespace trelv::overlay
