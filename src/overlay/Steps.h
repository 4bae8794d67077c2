#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "machine/Desktop.h"

namespace trelv::overlay {

/// What a program did to the machine that it believed to be the real one.
enum class StepKind {
  Command,
  Ini,
  Write,
  Append,
  Delete,
  Make,
  Rename,
  Copy,
  Registry,
  Store,
  Environment,
  Box,
  Form,
  /// A line of the run log: made of an Append by whoever knows where the log is.
  Log
};

/// One change that took effect, one program that was started, one thing that was shown. What was
/// refused, or left everything as it was, is no step.
struct Step {
  StepKind kind{};
  /// Command line; path as the program named it (ini file, file, folder); registry key with its
  /// hive
  /// ("HKLM\SOFTWARE\LUMO"); variable; title of a box; name of a form.
  std::string subject = {};
  /// Where a copy or a rename leads.
  std::string target = {};
  /// Section of an ini value.
  std::string section = {};
  /// Name of an ini or registry value; nothing for a registry key that was made.
  std::optional<std::string> name = std::nullopt;
  /// What an ini, registry or environment value became, what was stored, written or appended
  /// (bytes), logged or said in a box.
  std::optional<std::string> value = std::nullopt;
  /// The program waited for the command's end.
  bool waits = false;
  machine::BoxIcon icon = machine::BoxIcon::None;
  machine::BoxButtons buttons = machine::BoxButtons::Ok;
  machine::BoxAnswer answer = machine::BoxAnswer::None;

  friend bool operator==(const Step&, const Step&) = default;
};

/// The steps of one program, in order.
class Steps {
 public:
  /// Looks at a step as it is noted, and may change it.
  using Observer = std::function<void(Step&)>;

  /// Notes a step, unless a Pause lives. Its place, for markWaits().
  std::size_t add(Step step);
  /// The program waits for the command of that place.
  void markWaits(std::size_t place);
  void setObserver(Observer observer) { observer_ = std::move(observer); }
  const std::vector<Step>& all() const { return steps_; }

  /// Nothing is noted while one lives: what happens is part of a step of its own.
  class Pause {
   public:
    explicit Pause(Steps& steps) : steps_(steps) { ++steps_.pauses_; }
    ~Pause() { --steps_.pauses_; }
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;

   private:
    Steps& steps_;
  };

 private:
  std::vector<Step> steps_;
  Observer observer_;
  int pauses_ = 0;
};

}  // namespace trelv::overlay
