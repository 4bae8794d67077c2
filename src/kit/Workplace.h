#pragma once

#include "machine/Console.h"
#include "machine/FileUse.h"
#include "machine/FinishedFiles.h"
#include "machine/GivenPaths.h"
#include "machine/Machine.h"

namespace trelv::kit {

/// What a verb works with. References only: the composition root, or a test, owns the parts.
struct Workplace {
  machine::Machine& machine;
  machine::Console& console;
  machine::GivenPaths& paths;
  machine::FileUse& fileUse;
  machine::FinishedFiles& finished;
};

}  // namespace trelv::kit
