#pragma once

#include <deque>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "machine/Automation.h"
#include "sim/SimCalls.h"
#include "sim/SimFiles.h"

namespace trelv::sim {

/// One word processor that was started, and what became of it.
struct SimWord {
  /// Paths of the documents that were opened, in order.
  std::vector<std::string> documents;
  bool visible = false;
  bool activated = false;
  /// Where the selection stands; empty at a document's start.
  std::string bookmark;
  /// Told to quit, or ended by the user.
  bool ended = false;
  /// The program let go of it.
  bool released = false;
};

/// The word processor of this machine: not installed, unless a test installs it.
class SimAutomation : public machine::Automation {
 public:
  SimAutomation(SimCalls& calls, SimFiles& files) : calls_(calls), files_(files) {}

  machine::AutomationAnswer startWord(std::unique_ptr<machine::WordProcessor>& word) override;

  /// The word processor is installed; its documents have these bookmarks.
  void installWord(const std::vector<std::string>& bookmarks = {});
  /// The next call that is no start answers this (after it was recorded, without effect).
  void failNext(machine::AutomationAnswer answer) { failures_.push_back(std::move(answer)); }
  /// All that were started, in order.
  const std::vector<std::shared_ptr<SimWord>>& words() const { return words_; }

 private:
  friend class SimWordProcessor;

  /// A call of one word processor: the failure that it meets, if any.
  machine::AutomationAnswer call(const SimWord& word, const std::string& method,
                                 const std::string& about);

  SimCalls& calls_;
  SimFiles& files_;
  bool installed_ = false;
  std::set<std::string> bookmarks_;
  std::deque<machine::AutomationAnswer> failures_;
  std::vector<std::shared_ptr<SimWord>> words_;
};

}  // namespace trelv::sim
