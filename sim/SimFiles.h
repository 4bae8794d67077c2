#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "machine/Files.h"
#include "sim/SimCalls.h"
#include "sim/SimDisk.h"
#include "sim/SimSystem.h"

namespace trelv::sim {

/// The disks of one machine by their names, and the ways through them: what a path leads to.
class SimVolumes {
 public:
  /// `name` is a drive ("S:") or a share ("\\server\share").
  void mount(const std::string& name, std::shared_ptr<SimDisk> disk);
  void unmount(const std::string& name);
  /// The disk of a full path; null when nothing is mounted there.
  std::shared_ptr<SimDisk> diskOf(const std::string& path) const;

  /// The disk of any path; raises std::out_of_range when nothing is mounted there.
  SimDisk& disk(const std::string& path) const;

  /// Whose rights count on the disks: the user whom this machine's programs run for.
  const std::string& user() const { return user_; }
  void setUser(const std::string& name) { user_ = name; }

  const std::string& currentFolder() const { return currentFolder_; }
  void setCurrentFolder(const std::string& folder) { currentFolder_ = folder; }

  /// Full path as the system makes it: "/" becomes "\", relative ones start at the current folder,
  /// "." and ".." are resolved as text, trailing blanks and points of names are dropped.
  std::string fullPath(const std::string& path) const;

  /// Where a path leads.
  struct Place {
    /// 0: the node is there. 2: only the last level is missing. Else why it cannot be reached.
    SystemCode code = system_code::kPathNotFound;
    SimDisk* disk = nullptr;
    SimNode* node = nullptr;
    /// Folder and name of the last level; null for a root.
    SimNode* folder = nullptr;
    std::string name;
    /// Path on the disk after links.
    std::string diskPath;
  };
  /// Finds a place; a link at the end is followed on demand, links on the way always.
  Place find(const std::string& path, bool followLast) const;

 private:
  Place findOnce(const std::string& full, bool followLast, std::string& redirect) const;

  std::vector<std::pair<std::string, std::shared_ptr<SimDisk>>> mounts_;
  std::string currentFolder_;
  std::string user_ = "mario";
};

/// The file calls of one machine.
class SimFiles : public machine::Files {
 public:
  SimFiles(SimVolumes& volumes, SimCalls& calls, SimClock& clock);

  SystemCode look(const std::string& path, machine::FileFacts& facts) override;
  SystemCode identify(const std::string& path, machine::FileIdentity& identity) override;
  SystemCode read(const std::string& path, std::size_t limit, std::string& content) override;
  SystemCode readPart(const std::string& path, std::uint64_t offset, std::size_t size,
                      std::string& content) override;
  SystemCode write(const std::string& path, std::string_view bytes) override;
  SystemCode append(const std::string& path, std::string_view bytes) override;
  SystemCode removeFile(const std::string& path) override;
  SystemCode setReadOnly(const std::string& path, bool readOnly) override;
  SystemCode makeFolder(const std::string& path) override;
  SystemCode removeFolder(const std::string& path) override;
  SystemCode list(const std::string& folder, const std::string& ending,
                  std::vector<machine::FolderEntry>& entries) override;
  SystemCode copyFile(const std::string& source, const std::string& target) override;
  SystemCode replaceFile(const std::string& source, const std::string& target) override;
  SystemCode moveFile(const std::string& source, const std::string& target) override;
  SystemCode copyRights(const std::string& source, const std::string& target) override;
  SystemCode mayAddFile(const std::string& folder) override;
  SystemCode removeStream(const std::string& path, const std::string& stream) override;

  // The same without a trace in the calls, for other parts of the machine.
  SystemCode quietRead(const std::string& path, std::string& content);
  SystemCode quietWrite(const std::string& path, std::string_view bytes);
  /// 0 when the file at the path, or a new one, could be written.
  SystemCode writable(const std::string& path, SimVolumes::Place& place);

 private:
  void leavePartOfCopy(Unfinished left, const std::string& source, const std::string& target);
  SystemCode doAppend(const std::string& path, std::string_view bytes);
  SystemCode changeAttributes(const std::string& path, const std::function<void(SimNode&)>& change);
  SystemCode doRemoveFile(const std::string& path);
  SystemCode doRemoveFolder(const std::string& path);
  SystemCode doMakeFolder(const std::string& path);
  SystemCode doList(const std::string& folder, const std::string& ending,
                    std::vector<machine::FolderEntry>& entries);
  SystemCode doCopy(const std::string& source, const std::string& target);
  SystemCode doReplace(const std::string& source, const std::string& target);
  SystemCode doMove(const std::string& source, const std::string& target);
  SystemCode doCopyRights(const std::string& source, const std::string& target);
  SystemCode doProbe(const std::string& folder);
  SystemCode doRemoveStream(const std::string& path, const std::string& stream);
  SystemCode changeable(const SimVolumes::Place& place, Right right) const;
  SystemCode renamable(const SimVolumes::Place& place) const;
  SystemCode addable(const SimVolumes::Place& place) const;
  SimNode& add(SimVolumes::Place& place, bool folder);
  SimNode& nodeToWrite(SimVolumes::Place& place);

  SimVolumes& volumes_;
  SimCalls& calls_;
  SimClock& clock_;
};

}  // namespace trelv::sim
