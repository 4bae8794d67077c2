#pragma once

#include <memory>
#include <string>
#include <vector>

#include "overlay/Overlay.h"
#include "sim/SimMachine.h"

namespace trelv::tests {

/// An overlay over a simulated machine, whose folders list in the order of making.
class OverlaidMachine {
 public:
  explicit OverlaidMachine(sim::SimMachine& machine, overlay::Settings settings = {})
      : machine_(machine), overlay_(machine.machine(), completed(std::move(settings))) {}

  machine::Machine& top() { return overlay_.machine(); }
  machine::Files& files() { return overlay_.machine().files; }
  const std::vector<overlay::Step>& steps() { return overlay_.steps().all(); }
  overlay::Steps& noted() { return overlay_.steps(); }

 private:
  overlay::Settings completed(overlay::Settings settings) {
    settings.privateParent = "C:\\Users\\mario\\Temp";
    settings.order = overlay::ListingOrder::ByMaking;
    settings.process.executable = machine_.system().executablePath();
    if (!settings.findUnpacking) {
      settings.findUnpacking = [](const std::string&) -> std::optional<overlay::Unpacking> {
        return std::nullopt;
      };
    }
    return settings;
  }

  sim::SimMachine& machine_;
  overlay::Overlay overlay_;
};

}  // namespace trelv::tests
