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

/// A text as one of Windows' functions takes it.
template <class Letter>
class TextArgument {
 public:
  // NOLINTBEGIN(google-explicit-constructor): a call reads as if it were made directly.
  TextArgument(const Letter* text) : text_(text) {}
  TextArgument(const std::basic_string<Letter>& text) : text_(text.c_str()) {}
  operator const Letter*() const { return text_; }
  // NOLINTEND(google-explicit-constructor)

 private:
  const Letter* text_;
};

/// What is handed over for a parameter: the same, but whole texts too.
template <class Parameter>
struct ArgumentFor {
  using Type = Parameter;
};
template <>
struct ArgumentFor<LPCWSTR> {
  using Type = TextArgument<wchar_t>;
};
template <>
struct ArgumentFor<LPCSTR> {
  using Type = TextArgument<char>;
};

/// Calls a function of Windows: `called(GetFileAttributesW, wide(path))`.
template <class Answer, class... Parameters>
Called<Answer> called(Answer(WINAPI* function)(Parameters...),
                      typename ArgumentFor<Parameters>::Type... arguments) {
  SetLastError(ERROR_SUCCESS);
  const Answer answer = function(arguments...);
  const SystemCode left = GetLastError();
  return {answer, left};
}

/// The same for a function that answers FALSE when it failed: 0, or the code of the failure.
template <class... Parameters>
SystemCode codeOf(BOOL(WINAPI* function)(Parameters...),
                  typename ArgumentFor<Parameters>::Type... arguments) {
  const Called<BOOL> call = called(function, arguments...);
  return call.answer != FALSE ? system_code::kSuccess : call.failure();
}

/// The same for a function that gives a handle: 0 and the handle, or the code of the failure and
/// none.
template <class Kind, class... Parameters>
SystemCode obtain(Owned<Kind>& handle, typename Kind::Handle(WINAPI* function)(Parameters...),
                  typename ArgumentFor<Parameters>::Type... arguments) {
  const Called<typename Kind::Handle> call = called(function, arguments...);
  handle = Owned<Kind>(call.answer);
  return handle ? system_code::kSuccess : call.failure();
}

}  // namespace trelv::win32
