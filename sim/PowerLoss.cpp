#include "sim/PowerLoss.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace trelv::sim {
namespace {

/// The least that a disk writes at once.
constexpr std::size_t kSector = 512;

/// An entry with all that is below it.
std::unique_ptr<SimNode> copyOf(const SimNode& node) {
  auto copy = std::make_unique<SimNode>();
  copy->name = node.name;
  copy->number = node.number;
  copy->folder = node.folder;
  copy->readOnly = node.readOnly;
  copy->hidden = node.hidden;
  copy->system = node.system;
  copy->leaving = node.leaving;
  copy->linkTarget = node.linkTarget;
  copy->modified = node.modified;
  copy->bytes = node.bytes;
  copy->program = node.program;
  copy->version = node.version;
  copy->encryptedFor = node.encryptedFor;
  copy->rights = node.rights;
  copy->owner = node.owner;
  copy->streams = node.streams;
  copy->held = node.held;
  copy->runners = node.runners;
  for (const auto& child : node.children) {
    copy->children.push_back(copyOf(*child));
    copy->children.back()->parent = copy.get();
  }
  return copy;
}

bool changesContents(CallKind kind) {
  return kind == CallKind::FileWrite || kind == CallKind::FileAppend ||
         kind == CallKind::FileCopy || kind == CallKind::ProfileWrite;
}

bool changesFolders(CallKind kind) {
  return kind == CallKind::FileRemove || kind == CallKind::FolderMake ||
         kind == CallKind::FolderRemove || kind == CallKind::FileSetReadOnly ||
         kind == CallKind::FileRights || kind == CallKind::FileStreamRemove ||
         kind == CallKind::MarkTake;
}

bool renames(CallKind kind) { return kind == CallKind::FileReplace || kind == CallKind::FileMove; }

/// Behind these others may have been at work: programs that ran, users.
bool letsOthersWork(CallKind kind) {
  switch (kind) {
    case CallKind::ProcessStart:
    case CallKind::ProcessWait:
    case CallKind::ProcessReady:
    case CallKind::BoxShow:
    case CallKind::FormShow:
    case CallKind::InputShow:
      return true;
    default:
      return false;
  }
}

/// Of some sectors the new content, of the others the old one; zeros where neither has come.
std::string mixed(const std::string& before, const std::string& after,
                  const PowerLoss::Choose& choose) {
  std::string bytes = before;
  bytes.resize(choose(2) == 0 ? before.size() : after.size(), '\0');
  for (std::size_t at = 0; at < std::min(bytes.size(), after.size()); at += kSector) {
    if (choose(2) == 0) {
      const std::size_t size = std::min({kSector, bytes.size() - at, after.size() - at});
      bytes.replace(at, size, after, at, size);
    }
  }
  return bytes;
}

std::string survivor(const std::string& before, bool emptied, const std::string& after,
                     const PowerLoss::Choose& choose) {
  switch (choose(4)) {
    case 0:
      return after;
    case 1:
      return before;
    case 2:
      return emptied ? "" : mixed(before, after, choose);
    default:
      return mixed(emptied ? "" : before, after, choose);
  }
}

template <class Node, class Visit>
void eachFile(Node& node, const Visit& visit) {
  if (!node.folder) {
    visit(node);
  }
  for (const auto& child : node.children) {
    eachFile<Node>(*child, visit);
  }
}

const std::string& writtenBy(const SimCall& call) {
  return call.kind == CallKind::FileCopy ? call.target : call.path;
}

template <class Visit>
void eachPath(const SimNode& node, const std::string& path, const Visit& visit) {
  for (const auto& child : node.children) {
    const std::string name = path + "\\" + child->name;
    if (!child->folder) {
      visit(*child, name);
    }
    eachPath(*child, name, visit);
  }
}

}  // namespace

PowerLoss::PowerLoss(SimMachine& simMachine, std::vector<std::string> volumes, std::size_t number,
                     Unfinished left)
    : machine_(simMachine), number_(simMachine.callLog().count() + number), left_(left) {
  for (std::string& volume : volumes) {
    SimDisk& disk = machine_.diskOf(volume + "\\");
    disks_.push_back({std::move(volume), &disk, {}, {}});
    disks_.back().states.push_back(copyOf(disk.root()));
  }
  last_.kind = CallKind::FileLook;
  machine_.callLog().setInjector([this](const SimCall& call) -> std::optional<SystemCode> {
    look(call);
    return std::nullopt;
  });
}

PowerLoss::~PowerLoss() {
  machine_.callLog().setInjector(nullptr);
  if (reached()) {
    machine_.startSession();
  }
}

bool PowerLoss::matters(CallKind kind) {
  // Nothing but logs and reports is appended to.
  return kind != CallKind::FileAppend &&
         (changesContents(kind) || changesFolders(kind) || renames(kind) || letsOthersWork(kind));
}

void PowerLoss::look(const SimCall& call) {
  takeIn();
  last_ = call;
  if (changesContents(call.kind)) {
    lookAtWritten();
  } else if (renames(call.kind)) {
    // What a flush keeps is what stands now.
    for (Disk& disk : disks_) {
      disk.states.back() = copyOf(disk.disk->root());
    }
  }
  if (call.number == number_) {
    deadlyCall_ = call.text;
  }
  // A second program of the machine ends with the first.
  if (reached()) {
    if (left_ == Unfinished::NotBegun || !changesContents(call.kind)) {
      last_.kind = CallKind::FileLook;
    }
    machine_.callLog().setDead(true);
    throw Killed(left_);
  }
}

/// Looks at what the last call has done.
void PowerLoss::takeIn() {
  if (changesContents(last_.kind)) {
    noteWritten();
  } else if (renames(last_.kind)) {
    noteRename();
  } else if (changesFolders(last_.kind)) {
    if (Disk* const disk = diskOf(machine_.volumes().find(last_.path, false))) {
      disk->states.push_back(copyOf(disk->disk->root()));
    }
  } else if (letsOthersWork(last_.kind)) {
    for (Disk& disk : disks_) {
      noteOthers(disk);
    }
  }
}

/// Null where the place is on none of the disks that lose anything.
PowerLoss::Disk* PowerLoss::diskOf(const SimVolumes::Place& place) {
  const auto found = std::find_if(disks_.begin(), disks_.end(), [&](const Disk& disk) -> bool {
    return disk.disk == place.disk;
  });
  return found == disks_.end() ? nullptr : &*found;
}

void PowerLoss::lookAtWritten() {
  const SimVolumes::Place place = machine_.volumes().find(writtenBy(last_), true);
  written_ = {diskOf(place), 0, "", 0};
  if (place.node != nullptr && !place.node->folder) {
    written_.number = place.node->number;
    written_.bytes = place.node->bytes;
    written_.modified = place.node->modified;
  }
}

void PowerLoss::noteWritten() {
  const SimVolumes::Place place = machine_.volumes().find(writtenBy(last_), true);
  Disk* const disk = written_.disk;
  if (disk == nullptr || place.node == nullptr || place.node->folder) {
    return;
  }
  const SimNode& file = *place.node;
  const bool made = file.number != written_.number;
  if (!made && file.bytes == written_.bytes && file.modified == written_.modified) {
    return;
  }
  Content& content =
      disk->onTheirWay.try_emplace(file.number, Content{made ? "" : written_.bytes, file.bytes})
          .first->second;
  content.after = file.bytes;
  content.emptied =
      content.emptied || last_.kind == CallKind::FileWrite || last_.kind == CallKind::FileCopy;
  content.writing = std::min(content.writing, last_.kind != CallKind::ProfileWrite ? Writing::Anew
                                              : made ? Writing::ByValues
                                                     : Writing::InPlace);
  if (made) {
    disk->states.push_back(copyOf(disk->disk->root()));
  }
}

/// The file that was renamed, or was to be: flushed before, and with it what was done to folders.
void PowerLoss::noteRename() {
  // What was refused stands under its old name.
  for (const std::string& path : {last_.path, last_.target}) {
    const SimVolumes::Place place = machine_.volumes().find(path, false);
    Disk* const disk = place.node == nullptr ? nullptr : diskOf(place);
    if (disk != nullptr) {
      disk->onTheirWay.erase(place.node->number);
      disk->states.erase(disk->states.begin(), disk->states.end() - 1);
      disk->states.push_back(copyOf(disk->disk->root()));
      return;
    }
  }
}

/// What others have written is there, and all changes of folders before.
void PowerLoss::noteOthers(Disk& disk) {
  disk.states.clear();
  disk.states.push_back(copyOf(disk.disk->root()));
  if (!disk.onTheirWay.empty()) {
    eachFile(disk.disk->root(), [&](const SimNode& file) -> void {
      const auto content = disk.onTheirWay.find(file.number);
      if (content != disk.onTheirWay.end() && content->second.after != file.bytes) {
        disk.onTheirWay.erase(content);
      }
    });
  }
}

void PowerLoss::lose(Disk& disk, const Choose& choose) {
  SimNode& left = *disk.states[disk.states.size() - 1 - choose(disk.states.size())];
  SimNode& root = disk.disk->root();
  root.children = std::move(left.children);
  for (const auto& child : root.children) {
    child->parent = &root;
  }
  eachFile(root, [&](SimNode& file) -> void {
    // Nobody has a file open any more.
    file.held.reset();
    file.leaving = false;
    const auto content = disk.onTheirWay.find(file.number);
    if (content != disk.onTheirWay.end()) {
      file.bytes =
          survivor(content->second.before, content->second.emptied, content->second.after, choose);
    }
  });
}

std::vector<OnItsWay> PowerLoss::cut(const Choose& choose) {
  takeIn();
  last_.kind = CallKind::FileLook;
  std::vector<OnItsWay> files;
  for (Disk& disk : disks_) {
    eachPath(disk.disk->root(), disk.volume,
             [&](const SimNode& file, const std::string& path) -> void {
               const auto content = disk.onTheirWay.find(file.number);
               if (content != disk.onTheirWay.end()) {
                 files.push_back({path, content->second.writing});
               }
             });
    // The server and the workstation seldom lose their power together.
    if (choose(3) != 0) {
      lose(disk, choose);
    }
  }
  std::sort(files.begin(), files.end(), [](const OnItsWay& left, const OnItsWay& right) -> bool {
    return left.path < right.path;
  });
  return files;
}

}  // namespace trelv::sim
