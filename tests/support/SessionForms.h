#pragma once

#include "sim/SimDesktop.h"

namespace trelv::tests {

/// Declares the forms of the session with the controls that their windows have.
void declareSessionForms(sim::SimDesktop& desktop);

}  // namespace trelv::tests
