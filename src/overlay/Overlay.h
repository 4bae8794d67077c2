#pragma once

#include <cstddef>
#include <string>

#include "machine/Machine.h"
#include "overlay/OverlayDesktop.h"
#include "overlay/OverlayExclusion.h"
#include "overlay/OverlayFiles.h"
#include "overlay/OverlayProcesses.h"
#include "overlay/OverlayProfileFiles.h"
#include "overlay/OverlayRegistry.h"
#include "overlay/OverlayStore.h"
#include "overlay/OverlaySystem.h"
#include "overlay/PrivateFolder.h"
#include "overlay/ProgramSearch.h"
#include "overlay/Steps.h"
#include "overlay/Tree.h"

namespace trelv::overlay {

/// How a program runs on an overlay.
struct Settings {
  Process process = {};
  /// Full path of a folder, without trailing backslash, in which the private folder is made.
  std::string privateParent = {};
  ListingOrder order = ListingOrder::ByName;
  FindUnpacking findUnpacking = {};
  FormUser formUser = {};
  /// Which program cannot be started, from 1; 0: none.
  std::size_t fails = 0;
};

/// A machine over another one: what a program reads falls through, what it changes stays on top and
/// is gone with this object. Nothing below is changed but a private folder, which goes too.
class Overlay {
 public:
  /// `below` is the machine itself, without anything that tries again. Raises RuntimeError where
  /// the private folder cannot be made.
  Overlay(const machine::Machine& below, const Settings& settings);
  Overlay(const Overlay&) = delete;
  Overlay& operator=(const Overlay&) = delete;

  /// What the program gets.
  machine::Machine& machine() { return machine_; }
  Steps& steps() { return steps_; }

 private:
  Steps steps_;
  PrivateFolder privateFolder_;
  OverlayClock clock_;
  OverlaySystem system_;
  Tree tree_;
  OverlayFiles files_;
  OverlayProfileFiles profiles_;
  OverlayRegistry registry_;
  OverlayEnvironment environment_;
  ProgramSearch search_;
  OverlayProcesses processes_;
  OverlayVersions versions_;
  OverlayStore store_;
  OverlaySupport support_;
  OverlayDesktop desktop_;
  OverlayAutomation automation_;
  OverlayExclusion exclusion_;
  machine::Machine machine_;
};

}  // namespace trelv::overlay
