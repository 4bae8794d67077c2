#pragma once

#include "machine/Automation.h"

namespace trelv::win32 {

/// Other programs' objects. None can be reached yet: each counts as not registered.
class Win32Automation : public machine::Automation {
 public:
  machine::AutomationAnswer startWord(std::unique_ptr<machine::WordProcessor>& word) override;
};

}  // namespace trelv::win32
