#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "base/Codes.h"
#include "platform/Program.h"

namespace trelv::kit {

/// What becomes of one product on one side.
struct UpdateRow {
  std::string product;
  Side side = Side::None;
  /// Recorded versions before and after; empty where none is.
  std::string recorded;
  std::string becomes;
  /// Why, in the words of the run log.
  std::string because;

  friend bool operator==(const UpdateRow&, const UpdateRow&) = default;
};

/// What the run log says of each product and side, which are walked in the catalogue's order, the
/// server's side first. Told line by line.
class LogOfUpdates {
 public:
  /// A line of the run log without its date.
  void add(const std::string& line);

  /// Sentence about the walk's run of that number, from 0; of those that were not reached why,
  /// also where the products were not walked at all.
  std::string because(std::size_t run) const;

 private:
  /// A sentence for each run that began.
  std::vector<std::string> runs_;
  /// The run ended early or never began: the newest sentence of all.
  std::string last_;
  bool walking_ = false;
};

/// Recorded versions of all products of the catalogue, both sides of each, as they stand on a
/// machine; the sentences stay empty.
std::vector<UpdateRow> recordedVersions(Program& program, const std::string& serverPath);

}  // namespace trelv::kit
