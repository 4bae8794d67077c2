#pragma once

#include <string>

#include "platform/Program.h"

/// The product report "ProdInfo.txt" in the log folder: what the presence checks found, line by
/// line, for support staff to read.
namespace trelv::modProdTrelvInfo {

/// Begins an empty report, in the place of an earlier one; makes the log folder when missing.
/// Never raises: where the report cannot be made, one log line tells it and its lines are dropped.
void CreateProductReport(Program& program);

/// Appends one line (`text` in UTF-8, without date and line end) to the report. Dropped in silence
/// when there is no report. Never raises: a line that cannot be written is told in the log.
void WriteProductReport(Program& program, const std::string& text);

}  // namespace trelv::modProdTrelvInfo
