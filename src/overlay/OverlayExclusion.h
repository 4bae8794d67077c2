#pragma once

#include <memory>
#include <string>

#include "machine/Clock.h"
#include "machine/Exclusion.h"
#include "overlay/Tree.h"

namespace trelv::overlay {

/// Marks that are taken on top only: nothing is taken below. A mark file that stands below is
/// somebody else's (it goes with its process; one that a power failure left cannot be told from
/// it), and waiting for it takes no time.
class OverlayExclusion : public machine::Exclusion {
 public:
  OverlayExclusion(Tree& tree, machine::Clock& clock) : tree_(tree), clock_(clock) {}

  SystemCode take(const std::string& path, const std::string& text, std::uint32_t milliseconds,
                  std::unique_ptr<machine::Mark>& mark) override;

 private:
  Tree& tree_;
  machine::Clock& clock_;
};

}  // namespace trelv::overlay
