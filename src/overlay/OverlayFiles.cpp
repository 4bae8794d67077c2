#include "overlay/OverlayFiles.h"

#include "base/Text.h"

namespace trelv::overlay {
namespace {

using machine::FileFacts;
using namespace system_code;

constexpr SystemCode kNotSameDevice = 17;

/// Making a file anew takes the attributes that it is to have: what is hidden stays so or is
/// refused.
bool wouldBeShown(const Place& target, const FileFacts& facts) {
  return target.isThere() &&
         ((target.facts.hidden && !facts.hidden) || (target.facts.system && !facts.system));
}

bool isSame(const Place& left, const Place& right) {
  return left.isThere() && right.isThere() && left.folder == right.folder &&
         equalNoCase(left.name, right.name);
}

bool areOnOneVolume(const Place& left, const Place& right) {
  return !left.folder->volume || !right.folder->volume ||
         left.folder->volume == right.folder->volume;
}

}  // namespace

SystemCode OverlayFiles::look(const std::string& path, FileFacts& facts) {
  const Place place = tree_.find(path);
  if (place.isThere()) {
    facts = place.facts;
  }
  return place.code;
}

SystemCode OverlayFiles::identify(const std::string& path, machine::FileIdentity& identity) {
  return tree_.identify(path, identity);
}

SystemCode OverlayFiles::read(const std::string& path, std::size_t limit, std::string& content) {
  return tree_.read(path, 0, limit, content);
}

SystemCode OverlayFiles::readPart(const std::string& path, std::uint64_t offset, std::size_t size,
                                  std::string& content) {
  return tree_.read(path, offset, size, content);
}

SystemCode OverlayFiles::write(const std::string& path, std::string_view bytes) {
  const Place place = tree_.find(path);
  const SystemCode refusal =
      wouldBeShown(place, FileFacts()) ? kAccessDenied : tree_.refusalToWrite(place);
  if (refusal == kSuccess) {
    tree_.putFile(place, tree_.writtenNow(bytes.size())).bytes = bytes;
    steps_.add({.kind = StepKind::Write, .subject = path, .value = std::string(bytes)});
  }
  return refusal;
}

SystemCode OverlayFiles::append(const std::string& path, std::string_view bytes) {
  const Place place = tree_.find(path);
  const SystemCode refusal = tree_.refusalToWrite(place);
  if (refusal != kSuccess) {
    return refusal;
  }
  Entry& entry = place.isThere() ? tree_.entryOf(place) : tree_.putFile(place, FileFacts());
  std::string& all = tree_.bytesOf(entry);
  all += bytes;
  const FileFacts now = tree_.writtenNow(all.size());
  entry.facts.size = now.size;
  entry.facts.modified = now.modified;
  steps_.add({.kind = StepKind::Append, .subject = path, .value = std::string(bytes)});
  return kSuccess;
}

SystemCode OverlayFiles::removeFile(const std::string& path) {
  const Place place = tree_.find(path);
  const SystemCode refusal = tree_.refusalToRemove(place);
  if (refusal == kSuccess) {
    tree_.remove(place);
    steps_.add({.kind = StepKind::Delete, .subject = path});
  }
  return refusal;
}

SystemCode OverlayFiles::setReadOnly(const std::string& path, bool readOnly) {
  const Place place = tree_.find(path);
  const SystemCode refusal = tree_.refusalToChange(place);
  if (refusal == kSuccess && place.facts.readOnly != readOnly) {
    tree_.entryOf(place).facts.readOnly = readOnly;
  }
  return refusal;
}

SystemCode OverlayFiles::makeFolder(const std::string& path) {
  const Place place = tree_.find(path);
  if (place.isThere()) {
    return kAlreadyExists;
  }
  if (place.code != kFileNotFound) {
    return place.code;
  }
  const SystemCode refusal = tree_.mayAdd(*place.folder);
  if (refusal == kSuccess) {
    tree_.putFolder(place, tree_.writtenNow(0), nullptr);
    steps_.add({.kind = StepKind::Make, .subject = path});
  }
  return refusal;
}

SystemCode OverlayFiles::removeFolder(const std::string& path) {
  const Place place = tree_.find(path);
  if (!place.isThere()) {
    return place.code;
  }
  if (!place.facts.folder) {
    return kDirectoryName;
  }
  if (place.folder == nullptr || place.facts.readOnly) {
    return kAccessDenied;
  }
  std::vector<machine::FolderEntry> entries;
  if (!place.facts.reparsePoint &&
      (tree_.list(path, "", entries) != kSuccess || !entries.empty())) {
    return kDirectoryNotEmpty;
  }
  const SystemCode refusal = tree_.refusalToChange(place);
  if (refusal == kSuccess) {
    tree_.remove(place);
    steps_.add({.kind = StepKind::Delete, .subject = path});
  }
  return refusal;
}

SystemCode OverlayFiles::list(const std::string& folder, const std::string& ending,
                              std::vector<machine::FolderEntry>& entries) {
  return tree_.list(folder, ending, entries);
}

SystemCode OverlayFiles::copyFile(const std::string& source, const std::string& target) {
  const Place from = tree_.find(source);
  std::string nothing;
  const SystemCode unread = tree_.read(source, 0, 0, nothing);
  if (unread != kSuccess) {
    return unread;
  }
  const Place to = tree_.find(target);
  const SystemCode refusal = tree_.refusalToWrite(to);
  if (refusal != kSuccess) {
    return refusal;
  }
  if (isSame(from, to)) {
    return kSharingViolation;
  }
  if (wouldBeShown(to, from.facts)) {
    return kAccessDenied;
  }
  // The bytes of a file below do not change: they need not be copied.
  const Entry copied = from.entry != nullptr ? *from.entry : Entry();
  Entry& entry = tree_.putFile(to, from.facts);
  entry.source = from.entry != nullptr ? copied.source : from.below;
  entry.bytes = copied.bytes;
  steps_.add({.kind = StepKind::Copy, .subject = source, .target = target});
  return kSuccess;
}

/// A read-only file can be renamed.
SystemCode OverlayFiles::refusalToTake(Place from) {
  from.facts.readOnly = false;
  return tree_.refusalToRemove(from);
}

SystemCode OverlayFiles::refusalToRename(const Place& from, const Place& to) {
  if (!from.isThere()) {
    return from.code;
  }
  if (!to.isThere() && to.code != kFileNotFound) {
    return to.code;
  }
  if (from.folder == nullptr || to.folder == nullptr) {
    return kAccessDenied;
  }
  if (!areOnOneVolume(from, to)) {
    return kNotSameDevice;
  }
  const SystemCode refusal = refusalToTake(from);
  return refusal != kSuccess ? refusal : tree_.mayAdd(*to.folder);
}

SystemCode OverlayFiles::replaceFile(const std::string& source, const std::string& target) {
  const Place from = tree_.find(source);
  const Place to = tree_.find(target);
  SystemCode refusal = refusalToRename(from, to);
  if (refusal == kSuccess && to.isThere() && !isSame(from, to)) {
    // The system does not say "in use" of a target.
    const SystemCode kept = tree_.refusalToRemove(to);
    refusal = kept == kSharingViolation ? kAccessDenied : kept;
  }
  if (refusal == kSuccess) {
    tree_.rename(from, to);
    steps_.add({.kind = StepKind::Rename, .subject = source, .target = target});
  }
  return refusal;
}

SystemCode OverlayFiles::moveFile(const std::string& source, const std::string& target) {
  const Place from = tree_.find(source);
  const Place to = tree_.find(target);
  if (from.isThere() && to.isThere() && !isSame(from, to)) {
    // The file is opened before its new name is looked at.
    const SystemCode kept = refusalToTake(from);
    return kept != kSuccess ? kept : kAlreadyExists;
  }
  return replaceFile(source, target);
}

SystemCode OverlayFiles::copyRights(const std::string& source, const std::string& target) {
  const Place from = tree_.find(source);
  const Place to = tree_.find(target);
  if (!from.isThere() || !to.isThere()) {
    return from.isThere() ? to.code : from.code;
  }
  // Whoever made a file may always change its list.
  const bool own = to.entry != nullptr && !to.entry->inPlace;
  const SystemCode refusal = own ? kSuccess : tree_.refusalToChange(to);
  if (refusal == kSuccess && to.folder != nullptr) {
    tree_.entryOf(to).refusal = tree_.refusalToChange(from);
  }
  return refusal;
}

SystemCode OverlayFiles::mayAddFile(const std::string& folder) {
  const Place place = tree_.find(folder);
  if (!place.isThere()) {
    return place.code;
  }
  SystemCode code = kSuccess;
  const std::shared_ptr<Folder> found = tree_.findFolder(folder, code);
  // The question would open a file in its place for writing.
  return found != nullptr ? tree_.mayAdd(*found) : tree_.refusalToChange(place);
}

/// Which streams a file has cannot be told; who removes one learns that there was none.
SystemCode OverlayFiles::removeStream(const std::string& path, const std::string& /*stream*/) {
  const Place place = tree_.find(path);
  const SystemCode refusal = tree_.refusalToChange(place);
  return refusal == kSuccess ? kFileNotFound : refusal;
}

}  // namespace trelv::overlay
