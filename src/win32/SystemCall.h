#pragma once

#include <windows.h>

#include <string>

#include "base/SystemCode.h"
#include "win32/Owned.h"

/// Calls of Windows that leave the code of their failure in GetLastError. Whatever is destroyed
/// behind such a call may overwrite the code, a converted text as well as a handle: so the call is
/// made in here and its code is taken before anything else happens. No other place asks
/// GetLastError (tools/lint-includes). Texts are handed over whole, as std::string or std::wstring.
namespace trelv::win32 {

/// What a call answered, and the code that it left behind: 0 for none. The code says something only
/// where the answer is the function's way of failing; calls that succeed leave some too.
template <class Answer>
struct Called {
  Answer answer;
  SystemCode left;

  /// The code of a call that failed; never 0, which would be taken for success.
  SystemCode failure() const { return left != ERROR_SUCCESS ? left : ERROR_GEN_FAILURE; }
};

namespace system_call {
inline const wchar_t* plain(const std::wstring& text) { return text.c_str(); }
inline const char* plain(const std::string& text) { return text.c_str(); }
template <class Argument>
const Argument& plain(const Argument& argument) {
  return argument;
}
}  // namespace system_call

/// Calls a function of Windows: `called(GetFileAttributesW, wide(path))`.
template <class Function, class... Arguments>
auto called(Function function, const Arguments&... arguments) {
  SetLastError(ERROR_SUCCESS);
  const auto answer = function(system_call::plain(arguments)...);
  const SystemCode left = GetLastError();
  return Called<std::remove_const_t<decltype(answer)>>{answer, left};
}

/// The same for a function that answers FALSE when it failed: 0, or the code of the failure.
template <class Function, class... Arguments>
SystemCode codeOf(Function function, const Arguments&... arguments) {
  const Called<BOOL> call = called(function, arguments...);
  return call.answer != FALSE ? system_code::kSuccess : call.failure();
}

/// The same for a function that gives a handle: 0 and the handle, or the code of the failure and
/// none.
template <class Kind, class Function, class... Arguments>
SystemCode obtain(Owned<Kind>& handle, Function function, const Arguments&... arguments) {
  const auto call = called(function, arguments...);
  handle = Owned<Kind>(call.answer);
  return handle ? system_code::kSuccess : call.failure();
}

}  // namespace trelv::win32
