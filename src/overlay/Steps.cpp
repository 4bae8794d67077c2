#include "overlay/Steps.h"

#include <utility>

namespace trelv::overlay {

std::size_t Steps::add(Step step) {
  if (pauses_ == 0) {
    if (observer_) {
      observer_(step);
    }
    steps_.push_back(std::move(step));
  }
  return steps_.size() - 1;
}

void Steps::markWaits(std::size_t place) {
  if (place < steps_.size()) {
    steps_[place].waits = true;
  }
}

}  // namespace trelv::overlay
