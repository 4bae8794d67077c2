#pragma once

#include <windows.h>
// The headers of automation need the one above first.
#include <oaidl.h>

#include <string>
#include <variant>
#include <vector>

#include "machine/Automation.h"
#include "win32/Components.h"
#include "win32/Owned.h"

namespace trelv::win32 {

/// An argument of a call: a text, a number, or one that is left out.
struct LeftOut {};
using DispatchArgument = std::variant<LeftOut, long, std::wstring>;

/// An object of another program. Its members are looked up by name at each call; the component
/// library must be in use as long as this lives.
class DispatchObject {
 public:
  DispatchObject() = default;

  /// Starts a program by the name that it is registered with, for this object alone.
  static machine::AutomationAnswer start(const wchar_t* program, DispatchObject& object);

  /// Reads a property that is an object.
  machine::AutomationAnswer get(const wchar_t* member, DispatchObject& value) const;
  machine::AutomationAnswer put(const wchar_t* member, bool value) const;
  /// Calls a method, and drops what it gives.
  machine::AutomationAnswer call(const wchar_t* member,
                                 const std::vector<DispatchArgument>& arguments = {}) const;

 private:
  machine::AutomationAnswer invoke(const wchar_t* member, WORD kind, DISPPARAMS& arguments,
                                   VARIANT* result) const;

  Owned<ObjectKind<IDispatch>> object_;
};

}  // namespace trelv::win32
