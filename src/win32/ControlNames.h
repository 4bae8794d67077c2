#pragma once

#include <string>

namespace trelv::win32 {

/// Identifier in the dialog resources of a control name; 0 for a name that no form uses.
int controlId(const std::string& name);

/// Name of an identifier; empty when it names no control.
std::string controlName(int id);

}  // namespace trelv::win32
