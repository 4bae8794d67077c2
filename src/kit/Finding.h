#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace trelv::kit {

/// How bad a finding is.
enum class Severity {
  /// A start stops, loses or damages something.
  Error,
  /// Something is passed over in silence, or done twice.
  Warning,
  Note
};

/// One thing that a verb found.
struct Finding {
  /// "TK102".
  std::string code;
  Severity severity = Severity::Error;
  /// As the user named the path; of an entry in a pack "PACK!inner\path".
  std::string file;
  /// From 1; nothing for missing files, folders and packs.
  std::optional<std::size_t> line;
  /// What was found, what to do: Italian, one line each.
  std::string text;
  std::string remedy;
};

/// "error", "warning" or "note", as the JSON document has it.
std::string severityName(Severity severity);

/// The findings for a reader: two lines each, in Italian.
std::string findingsText(const std::vector<Finding>& findings);

}  // namespace trelv::kit
