#pragma once

#include <optional>
#include <string>

#include "machine/FileUse.h"
#include "machine/Files.h"
#include "sim/SimCalls.h"
#include "sim/SimFiles.h"

namespace trelv::sim {

/// Owners and openers of the files of one machine's disks.
class SimFileUse : public machine::FileUse {
 public:
  SimFileUse(SimVolumes& volumes, machine::Files& files, SimCalls& calls)
      : volumes_(volumes), files_(files), calls_(calls) {}

  SystemCode owner(const std::string& path, std::string& account) override;
  std::optional<bool> isOpen(const std::string& path) override;
  SystemCode removeUnused(const std::string& path, const machine::FileFacts& seen) override;

  /// The system does not tell who has files open: those of another computer.
  void hideOpeners(bool hidden = true) { openersHidden_ = hidden; }

 private:
  SimNode* find(const std::string& path, SystemCode& code) const;

  SimVolumes& volumes_;
  machine::Files& files_;
  SimCalls& calls_;
  bool openersHidden_ = false;
};

}  // namespace trelv::sim
