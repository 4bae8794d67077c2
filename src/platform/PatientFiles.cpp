#include "platform/PatientFiles.h"

#include <algorithm>

#include "base/Text.h"
#include "platform/FileSystemObject.h"

namespace trelv {
namespace {

using machine::FileFacts;

// What a look shows to be refused for good. A path that cannot be looked at shows nothing: a file
// that is being deleted is one.

FileFacts factsOf(machine::Files& files, const std::string& path) {
  FileFacts facts;
  return files.look(path, facts) == system_code::kSuccess ? facts : FileFacts();
}

bool isFolder(machine::Files& files, const std::string& path) {
  return factsOf(files, path).folder;
}

bool isFolderOrReadOnly(machine::Files& files, const std::string& path) {
  const FileFacts facts = factsOf(files, path);
  return facts.folder || facts.readOnly;
}

/// Its folder still lists a file that is being deleted, but even a look at it is refused: who may
/// list a folder may look at all that is in it.
bool isBeingDeleted(machine::Files& files, const std::string& path) {
  FileFacts facts;
  std::vector<machine::FolderEntry> entries;
  const std::string name = path.substr(path.rfind('\\') + 1);
  return files.look(path, facts) == system_code::kAccessDenied &&
         files.list(FileSystemObject::parentFolderName(path), name, entries) ==
             system_code::kSuccess &&
         std::any_of(entries.begin(), entries.end(),
                     [&](const machine::FolderEntry& entry) -> bool {
                       return equalNoCase(entry.name, name);
                     });
}

/// What says of a share that its server was there a moment ago.
bool wasDropped(SystemCode code) {
  constexpr SystemCode kUnexpectedNetworkError = 59;
  return code == kUnexpectedNetworkError || code == system_code::kNetNameDeleted;
}

/// "S:" or "\\SERVER\SHARE", in upper case.
std::string volumeOf(const std::string& path) {
  std::size_t end = path.find('\\');
  if (path.rfind("\\\\", 0) == 0) {
    end = path.find('\\', 2);
    end = end == std::string::npos ? end : path.find('\\', end + 1);
  }
  return upperCase(path.substr(0, end));
}

/// Makes an attempt to read or write a file. Both are done many times over a share: who is refused
/// the right is not to wait each time.
SystemCode open(machine::Files& files, Patience& patience, const std::string& path,
                const std::function<SystemCode()>& attempt) {
  return patience.change(path, attempt, [&]() -> bool { return !isBeingDeleted(files, path); });
}

/// Makes an attempt that can be made twice without harm. The next use of a share whose connection
/// was dropped makes it anew; where the server stays away, each of its shares is waited for once.
SystemCode reach(Patience& patience, const std::string& path,
                 const std::function<SystemCode()>& attempt) {
  SystemCode code = attempt();
  if (wasDropped(code) && !patience.wasInVain(volumeOf(path))) {
    patience.change(
        volumeOf(path),
        [&]() -> SystemCode {
          code = attempt();
          return wasDropped(code) ? system_code::kSharingViolation : system_code::kSuccess;
        },
        []() -> bool { return false; });
  }
  return code;
}

bool refusesCopies(machine::Files& files, const std::string& path) {
  const FileFacts facts = factsOf(files, path);
  return facts.folder || facts.readOnly || facts.hidden || facts.system;
}

}  // namespace

PatientFiles::PatientFiles(machine::Files& files, machine::Clock& clock)
    : files_(files),
      patience_([&clock](std::uint32_t milliseconds) -> void { clock.pause(milliseconds); }) {}

SystemCode PatientFiles::look(const std::string& path, FileFacts& facts) {
  return reach(patience_, path, [&]() -> SystemCode { return files_.look(path, facts); });
}

SystemCode PatientFiles::identify(const std::string& path, machine::FileIdentity& identity) {
  return files_.identify(path, identity);
}

SystemCode PatientFiles::read(const std::string& path, std::size_t limit, std::string& content) {
  return reach(patience_, path, [&]() -> SystemCode {
    return open(files_, patience_, path,
                [&]() -> SystemCode { return files_.read(path, limit, content); });
  });
}

SystemCode PatientFiles::readPart(const std::string& path, std::uint64_t offset, std::size_t size,
                                  std::string& content) {
  return reach(patience_, path, [&]() -> SystemCode {
    return open(files_, patience_, path,
                [&]() -> SystemCode { return files_.readPart(path, offset, size, content); });
  });
}

SystemCode PatientFiles::write(const std::string& path, std::string_view bytes) {
  return reach(patience_, path, [&]() -> SystemCode {
    return makeAnew(path, [&]() -> SystemCode { return files_.write(path, bytes); });
  });
}

SystemCode PatientFiles::append(const std::string& path, std::string_view bytes) {
  return makeAnew(path, [&]() -> SystemCode { return files_.append(path, bytes); });
}

SystemCode PatientFiles::makeAnew(const std::string& path,
                                  const std::function<SystemCode()>& attempt) {
  return open(files_, patience_, path, attempt);
}

SystemCode PatientFiles::removeFile(const std::string& path) {
  return patience_.change(
      path, [&]() -> SystemCode { return files_.removeFile(path); },
      [&]() -> bool { return isFolderOrReadOnly(files_, path); });
}

SystemCode PatientFiles::setReadOnly(const std::string& path, bool readOnly) {
  return files_.setReadOnly(path, readOnly);
}

SystemCode PatientFiles::makeFolder(const std::string& path) {
  return patience_.change(
      path, [&]() -> SystemCode { return files_.makeFolder(path); },
      []() -> bool { return false; });
}

SystemCode PatientFiles::removeFolder(const std::string& path) {
  return patience_.change(
      path, [&]() -> SystemCode { return files_.removeFolder(path); },
      [&]() -> bool { return factsOf(files_, path).readOnly; });
}

SystemCode PatientFiles::list(const std::string& folder, const std::string& ending,
                              std::vector<machine::FolderEntry>& entries) {
  return reach(patience_, folder,
               [&]() -> SystemCode { return files_.list(folder, ending, entries); });
}

SystemCode PatientFiles::copyFile(const std::string& source, const std::string& target) {
  return patience_.change(
      target, [&]() -> SystemCode { return files_.copyFile(source, target); },
      [&]() -> bool { return refusesCopies(files_, target) || isFolder(files_, source); });
}

SystemCode PatientFiles::replaceFile(const std::string& source, const std::string& target) {
  return patience_.change(
      target, [&]() -> SystemCode { return files_.replaceFile(source, target); },
      [&]() -> bool { return isFolderOrReadOnly(files_, target); });
}

SystemCode PatientFiles::moveFile(const std::string& source, const std::string& target) {
  const bool inUse = patience_.wasInVain(source);
  const SystemCode code = patience_.change(
      source, [&]() -> SystemCode { return files_.moveFile(source, target); },
      [&]() -> bool { return isFolder(files_, source); });
  if (inUse && code == system_code::kSuccess) {
    // A program that runs and was put aside: it runs on under its new name.
    patience_.expectInVain(target);
  }
  return code;
}

SystemCode PatientFiles::copyRights(const std::string& source, const std::string& target) {
  return files_.copyRights(source, target);
}

SystemCode PatientFiles::mayAddFile(const std::string& folder) { return files_.mayAddFile(folder); }

SystemCode PatientFiles::removeStream(const std::string& path, const std::string& stream) {
  return patience_.change(
      path, [&]() -> SystemCode { return files_.removeStream(path, stream); },
      []() -> bool { return false; });
}

}  // namespace trelv
