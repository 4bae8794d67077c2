#pragma once

#include "machine/Automation.h"

namespace trelv::win32 {

/// Other programs by automation. Its library is touched only when one is started.
class Win32Automation : public machine::Automation {
 public:
  machine::AutomationAnswer startWord(std::unique_ptr<machine::WordProcessor>& word) override;
};

}  // namespace trelv::win32
