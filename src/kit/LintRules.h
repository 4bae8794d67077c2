#pragma once

#include <span>
#include <string>
#include <variant>
#include <vector>

#include "kit/Finding.h"
#include "kit/LintRule.h"

namespace trelv::kit {

/// The one table of rules, by code.
std::span<const Rule> lintRules();

/// Which of the rules are asked for.
class RuleChoice {
 public:
  /// Empty lists: all, none. Raises WrongUsage for a code that no rule has.
  RuleChoice(std::vector<std::string> only, std::vector<std::string> ignored);

  /// Has every chosen rule of its kind look at the subject.
  template <class Subject>
  void judge(const Subject& subject, std::vector<Finding>& findings) const {
    for (const Rule& rule : lintRules()) {
      const auto* const check = std::get_if<Check<Subject>>(&rule.check);
      if (check != nullptr && isChosen(rule.code)) {
        Report report(rule, findings);
        (*check)(subject, report);
      }
    }
  }

 private:
  bool isChosen(const std::string& code) const;

  std::vector<std::string> only_;
  std::vector<std::string> ignored_;
};

}  // namespace trelv::kit
