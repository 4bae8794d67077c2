#include "win32/Win32Automation.h"

namespace trelv::win32 {

machine::AutomationAnswer Win32Automation::startWord(std::unique_ptr<machine::WordProcessor>&) {
  return {machine::automation_code::kNotRegistered, "", ""};
}

}  // namespace trelv::win32
