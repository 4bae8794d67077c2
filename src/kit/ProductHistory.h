#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "kit/HostProducts.h"
#include "kit/StartLog.h"
#include "platform/Program.h"

namespace trelv::kit {

/// Where something can be read that tells why.
struct Evidence {
  /// Full path.
  std::string file;
  /// From 1; nothing for folders, packs and missing files.
  std::optional<std::size_t> line;
  std::string text;
};

/// What stopped a product: in which step of the start, and what shows it.
struct Stop {
  std::string step;
  Evidence evidence;
};

/// What the newest start in a log says of one product, beside the host as it stands now.
class ProductHistory {
 public:
  /// `product` as the manager writes its identifier; the host's full server path; the log's full
  /// path. All references outlive this object.
  ProductHistory(Program& program, const std::string& serverPath, std::string product,
                 std::string logFile, const StartLog& start);

  Program& program() const { return program_; }
  const StartLog& start() const { return start_; }
  const std::string& product() const { return product_; }
  const std::string& serverPath() const { return serverPath_; }

  /// The entries that a start walks through, and the product's place among them.
  const std::vector<CatalogueEntry>& entries() const { return entries_; }
  const std::optional<std::size_t>& place() const { return place_; }
  const CatalogueEntry& entry() const { return entries_.at(*place_); }
  /// The product's run on a side, null where the start did not come to it.
  const SideRun* run(Side side) const;
  /// Both runs of the product are whole: the start came further.
  bool isBehindBothRuns() const;
  /// Did a command of the product run on some side?
  bool wasUpdated() const;
  /// The entry that a run is of.
  const CatalogueEntry* entryOf(const SideRun& run) const;

  /// The version that is recorded for a side now.
  std::string recorded(Side side) const;
  Evidence inLog(const LogLine& line) const { return {logFile_, line.number, line.whole}; }
  const std::string& logFile() const { return logFile_; }

 private:
  Program& program_;
  const std::string& serverPath_;
  const std::string product_;
  const std::string logFile_;
  const StartLog& start_;
  std::vector<CatalogueEntry> entries_;
  std::optional<std::size_t> place_;
};

/// Evidence in an ini file: the line of a key, of the section's header where `key` is empty.
/// Without line where the file or the section is missing.
Evidence inIniFile(Program& program, const std::string& file, const std::string& section,
                   const std::string& key);

}  // namespace trelv::kit
