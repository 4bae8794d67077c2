#pragma once

#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "kit/Finding.h"
#include "kit/Progress.h"
#include "kit/Syntax.h"
#include "kit/Workplace.h"

namespace trelv::kit {

/// How the program ends.
namespace exit_code {
/// Nothing found, nothing to do, done.
constexpr int kGood = 0;
/// Findings, something to do, differences.
constexpr int kFindings = 1;
constexpr int kFailed = 2;
constexpr int kUsage = 64;
}  // namespace exit_code

/// What a verb hands back; the command line prints it in the form that was asked for.
struct Answer {
  int exitCode = exit_code::kGood;
  std::vector<Finding> findings;
  /// The verb's part of the JSON document, keys in the order of their making; paths as the verb was
  /// given them. Its default is an empty object.
  std::shared_ptr<nlohmann::ordered_json> result;
  /// What a reader gets behind the findings: Italian, whole lines, may be empty.
  std::string text;
};

/// One of the program's verbs, for one command line. A new one is a file of this folder with a
/// class of this kind and a row in kit/Verbs.
class Verb {
 public:
  virtual ~Verb() = default;

  /// Declares the verb's own arguments and options, which are read into this object.
  virtual void declare(Syntax& syntax) = 0;

  /// Does the work. Raises Failure or WrongUsage.
  virtual Answer run(Workplace& workplace, Progress& progress) = 0;
};

}  // namespace trelv::kit
