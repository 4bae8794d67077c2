#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Patience.h"
#include "machine/Clock.h"
#include "machine/Files.h"

namespace trelv {

/// The files of a machine, with patience in all that reads, writes, deletes, copies, renames, puts
/// in place or makes a folder: who else has a file in hand for a moment does not make it fail. Who
/// reads or writes does not wait for a right (5), and only looks, lists, reads or writes whole
/// files anew where a connection was dropped (59, 64), which is waited for once on each share.
/// Every other call is handed on, also where it is refused.
class PatientFiles : public machine::Files {
 public:
  PatientFiles(machine::Files& files, machine::Clock& clock);

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

 private:
  SystemCode makeAnew(const std::string& path, const std::function<SystemCode()>& attempt);

  machine::Files& files_;
  Patience patience_;
};

}  // namespace trelv
