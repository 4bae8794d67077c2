#pragma once

#include <memory>
#include <string>

#include "base/SystemCode.h"

namespace trelv::machine {

/// What another program answered to a call of its objects.
struct AutomationAnswer {
  /// 0: done. Else the number that the program gave its failure (its low 16 bits are those of the
  /// Basic runtime's numbers), or the code of the call that did not get that far.
  SystemCode code = 0;
  /// Who failed and why, in the program's words; empty where it said nothing.
  std::string source;
  std::string description;
};

/// The codes that callers or tests tell apart.
namespace automation_code {
/// No such program is registered.
constexpr SystemCode kNotRegistered = 0x800401F3U;
/// The object has no such member.
constexpr SystemCode kUnknownName = 0x80020006U;
/// The program has ended.
constexpr SystemCode kServerGone = 0x800706BAU;
}  // namespace automation_code

/// A word processor that was started for this program. Destroying it lets go of it: a visible one
/// stays open, with what the user has in it.
class WordProcessor {
 public:
  virtual ~WordProcessor() = default;

  /// Opens a document (full path, UTF-8) beside those that are open; it becomes the active one.
  virtual AutomationAnswer openDocument(const std::string& path) = 0;
  /// Shows the application's window; it starts hidden.
  virtual AutomationAnswer makeVisible() = 0;
  /// Brings the application's window to the front.
  virtual AutomationAnswer activate() = 0;
  /// Moves the selection of the active document to a bookmark (go-to kind -1).
  virtual AutomationAnswer goToBookmark(const std::string& name) = 0;
  /// Tells the application to quit.
  virtual AutomationAnswer quit() = 0;
};

/// Other programs that are driven through their objects, by names that are looked up at each call.
class Automation {
 public:
  virtual ~Automation() = default;

  /// Starts a "Word.Application" of its own; `word` is set when the answer's code is 0.
  virtual AutomationAnswer startWord(std::unique_ptr<WordProcessor>& word) = 0;
};

}  // namespace trelv::machine
