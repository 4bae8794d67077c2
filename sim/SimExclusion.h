#pragma once

#include <functional>
#include <memory>
#include <string>

#include "machine/Exclusion.h"
#include "sim/SimCalls.h"
#include "sim/SimFiles.h"
#include "sim/SimSystem.h"

namespace trelv::sim {

/// Marks of one machine: files of its disks. Machines that share a disk exclude each other there,
/// and so do two programs of one machine.
class SimExclusion : public machine::Exclusion {
 public:
  using Hook = std::function<void()>;

  SimExclusion(SimVolumes& volumes, SimFiles& files, SimCalls& calls, SimClock& clock)
      : volumes_(volumes), files_(files), calls_(calls), clock_(clock) {}

  SystemCode take(const std::string& path, const std::string& text, std::uint32_t milliseconds,
                  std::unique_ptr<machine::Mark>& mark) override;

  /// Runs `hook` once when a program next waits for a mark; then the mark is asked for again. While
  /// it waits the clock moves on; a wait in which nobody frees the mark lasts until its end.
  void onWait(Hook hook) { hook_ = std::move(hook); }
  /// Somebody else takes a mark, for as long as the answer lives.
  [[nodiscard]] std::unique_ptr<machine::Mark> takeForAnother(const std::string& path,
                                                              const std::string& text);

 private:
  SystemCode open(const std::string& path, const std::string& text,
                  std::unique_ptr<machine::Mark>& mark);

  SimVolumes& volumes_;
  SimFiles& files_;
  SimCalls& calls_;
  SimClock& clock_;
  Hook hook_;
};

}  // namespace trelv::sim
