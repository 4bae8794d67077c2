#include "prove/WeaveAccess.h"

#include <algorithm>
#include <utility>

#include "base/Text.h"

namespace trelv::tests {
namespace {

using sim::CallKind;

// What a call does to a place.

/// Sees whether it is there, or what is in it.
constexpr std::uint8_t kReads = 1;
/// Sees which names a folder has.
constexpr std::uint8_t kLists = 2;
/// Adds to its end: two programs that do so do not mind who is first.
constexpr std::uint8_t kAppends = 4;
/// Makes, changes or removes it.
constexpr std::uint8_t kWrites = 8;
/// Makes or removes a folder, and with it the way to all that is below.
constexpr std::uint8_t kOpens = 16;
constexpr std::uint8_t kChanges = kWrites | kOpens;

bool mind(std::uint8_t left, std::uint8_t right) {
  const bool appended = ((left | right) & kAppends) != 0;
  return ((left | right) & kChanges) != 0 || (appended && left != right);
}

std::string parentOf(const std::string& place) {
  const std::size_t end = place.rfind('\\');
  return end == std::string::npos ? std::string() : place.substr(0, end);
}

std::uint8_t accessOf(CallKind kind) {
  switch (kind) {
    case CallKind::FolderList:
      return kLists;
    case CallKind::FileAppend:
      return kAppends;
    case CallKind::FolderMake:
    case CallKind::FolderRemove:
      return kOpens;
    case CallKind::FileWrite:
    case CallKind::FileRemove:
    case CallKind::FileSetReadOnly:
    case CallKind::FileReplace:
    case CallKind::FileMove:
    case CallKind::FileStreamRemove:
    case CallKind::ProfileWrite:
    case CallKind::RegistryCreate:
    case CallKind::RegistryWrite:
    case CallKind::MarkTake:
      return kWrites;
    case CallKind::FileLook:
    case CallKind::FileRead:
    case CallKind::FileCopy:
    case CallKind::FileRights:
    case CallKind::FolderProbe:
    case CallKind::ProfileRead:
    case CallKind::FileVersionRead:
    case CallKind::RegistryOpen:
    case CallKind::RegistryDescribe:
    case CallKind::RegistryRead:
    case CallKind::RegistryEnumerate:
      return kReads;
    default:
      return 0;
  }
}

bool isOfRegistry(CallKind kind) {
  return kind == CallKind::RegistryOpen || kind == CallKind::RegistryCreate ||
         kind == CallKind::RegistryDescribe || kind == CallKind::RegistryRead ||
         kind == CallKind::RegistryWrite || kind == CallKind::RegistryEnumerate;
}

}  // namespace

bool TouchedPlaces::isMinded(std::size_t program, const std::string& place, Accesses access) const {
  for (std::size_t other = 0; other < touched_.size(); ++other) {
    const Places& places = touched_[other];
    if (other == program) {
      continue;
    }
    const auto same = places.find(place);
    if (same != places.end() && mind(access, same->second)) {
      return true;
    }
    std::string folder = parentOf(place);
    const auto parent = places.find(folder);
    if ((access & kChanges) != 0 && parent != places.end() && (parent->second & kLists) != 0) {
      return true;
    }
    for (; !folder.empty(); folder = parentOf(folder)) {
      const auto above = places.find(folder);
      if (above != places.end() && (above->second & kOpens) != 0) {
        return true;
      }
    }
    const std::string below = place + "\\";
    for (auto at = places.lower_bound(below); at != places.end() && at->first.starts_with(below);
         ++at) {
      const bool direct = at->first.find('\\', below.size()) == std::string::npos;
      if ((access & kOpens) != 0 ||
          ((access & kLists) != 0 && direct && (at->second & kChanges) != 0)) {
        return true;
      }
    }
  }
  return false;
}

PlacesOfWorld::PlacesOfWorld(std::vector<sim::SimMachine*> machines)
    : machines_(std::move(machines)), places_(machines_.size()), shared_(machines_.size()) {
  for (sim::SimMachine* const machine : machines_) {
    for (char letter = 'A'; letter <= 'Z'; ++letter) {
      const std::shared_ptr<sim::SimDisk> disk =
          machine->volumes().diskOf(std::string(1, letter) + ":\\");
      if (disk != nullptr) {
        disks_.try_emplace(disk.get(), disks_.size());
      }
    }
  }
}

void PlacesOfWorld::note(std::size_t program, const sim::SimCall& call, TouchedPlaces& table) {
  for (const Touch& touch : touchesOf(program, call)) {
    table.touched_[program][touch.place] |= touch.access;
  }
}

bool PlacesOfWorld::isShared(std::size_t program, const sim::SimCall& call,
                             const TouchedPlaces& table) {
  for (const Touch& touch : touchesOf(program, call)) {
    const std::string key = touch.place + "|" + std::to_string(touch.access);
    const auto [known, isNew] = shared_[program].try_emplace(key, false);
    if (isNew) {
      known->second = table.isMinded(program, touch.place, touch.access);
    }
    if (known->second) {
      return true;
    }
  }
  return false;
}

std::vector<PlacesOfWorld::Touch> PlacesOfWorld::touchesOf(std::size_t program,
                                                           const sim::SimCall& call) {
  std::vector<Touch> touches;
  if (call.kind == CallKind::ProcessStart) {
    touchCommand(program, call.path, touches);
    return touches;
  }
  std::uint8_t access = accessOf(call.kind);
  if (call.kind == CallKind::FolderMake && isThere(program, call.path)) {
    access = kReads;
  }
  if (isOfRegistry(call.kind)) {
    touches.push_back({keyPlaceOf(program, call.path), access});
  } else if (access != 0) {
    touchFile(program, call.path, access, touches);
  }
  if (!call.target.empty()) {
    touchFile(program, call.target, kWrites, touches);
  }
  return touches;
}

void PlacesOfWorld::touchFile(std::size_t program, const std::string& path, std::uint8_t access,
                              std::vector<Touch>& touches) {
  touches.push_back({placeOf(program, path), access});
}

bool PlacesOfWorld::isThere(std::size_t program, const std::string& path) const {
  return machines_[program]->volumes().find(path, false).code == system_code::kSuccess;
}

/// The program of a command and the files that it names; what the program itself changes are calls
/// of its own.
void PlacesOfWorld::touchCommand(std::size_t program, const std::string& line,
                                 std::vector<Touch>& touches) {
  for (std::size_t at = line.find(":\\"); at != std::string::npos; at = line.find(":\\", at + 2)) {
    const std::size_t begin = at - std::min<std::size_t>(at, 1);
    const bool quoted = begin > 0 && line[begin - 1] == '"';
    const std::size_t end = line.find(quoted ? '"' : ' ', begin);
    touchFile(program, line.substr(begin, end == std::string::npos ? end : end - begin), kReads,
              touches);
  }
}

const std::string& PlacesOfWorld::placeOf(std::size_t program, const std::string& path) {
  const auto [known, isNew] = places_[program].try_emplace(path);
  if (isNew) {
    const sim::SimVolumes::Place place = machines_[program]->volumes().find(path, false);
    const auto disk = disks_.find(place.disk);
    known->second = disk == disks_.end()
                        ? std::to_string(program) + "?" + upperCase(path)
                        : std::to_string(disk->second) + ":\\" + upperCase(place.diskPath);
  }
  return known->second;
}

std::string PlacesOfWorld::keyPlaceOf(std::size_t program, const std::string& key) const {
  std::size_t first = 0;
  while (!machines_[program]->registry().sharesKeysOf(machines_[first]->registry())) {
    ++first;
  }
  return "registry " + std::to_string(first) + "\\" + upperCase(key);
}

}  // namespace trelv::tests
