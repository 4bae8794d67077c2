#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "kit/Finding.h"
#include "kit/LintSubjects.h"

namespace trelv::kit {

struct Rule;

/// Where a rule tells what it found.
class Report {
 public:
  Report(const Rule& rule, std::vector<Finding>& findings) : rule_(rule), findings_(findings) {}

  /// `detail` follows the rule's own text: a name or a value; may be empty.
  void add(const std::string& shown, std::optional<std::size_t> line,
           const std::string& detail = {}) const;

 private:
  const Rule& rule_;
  std::vector<Finding>& findings_;
};

template <class Subject>
using Check = void (*)(const Subject& subject, Report& report);

/// A trap and how it is recognised.
struct Rule {
  const char* code;
  Severity severity;
  /// What is wrong and what follows, and what to do: Italian, one sentence each without its stop.
  const char* text;
  const char* remedy;
  std::variant<Check<IniFile>, Check<Catalogue>, Check<Configuration>, Check<VersionRecords>,
               Check<Share>, Check<Pack>, Check<Medium>>
      check;
};

inline void Report::add(const std::string& shown, std::optional<std::size_t> line,
                        const std::string& detail) const {
  findings_.push_back({rule_.code, rule_.severity, shown, line,
                       rule_.text + (detail.empty() ? std::string() : ": " + detail),
                       rule_.remedy});
}

}  // namespace trelv::kit
