#pragma once

#include <string>
#include <utility>

#include "base/ErrorReporter.h"
#include "base/RunLog.h"
#include "base/RuntimeError.h"

namespace trelv {

/// Called while anything at all is caught: what is caught as the failure that it stands for.
/// Failures of the C++ library (no memory left, a text too long) become one too; what is no
/// failure travels on to the caller.
RuntimeError caughtFailure();

/// Runs `body`; on a failure calls `handler(const RuntimeError&)` and gives its result instead.
/// Failures of the C++ library (no memory left, a text too long) arrive as RuntimeError too.
/// A failure inside the handler travels to the caller.
template <class Body, class Handler>
auto trap(Body&& body, Handler&& handler) -> decltype(body()) {
  try {
    return std::forward<Body>(body)();
  } catch (...) {
    return std::forward<Handler>(handler)(caughtFailure());
  }
}

/// What a procedure's trap leaves behind: the report of a program error of `module`.`procedure`
/// with the text `message`, and its line in the run log, `message` with the failure's description
/// behind it. The report comes first, so that it still shows the line before the failure as its
/// trace.
void leaveTrapped(RunLog& log, ErrorReporter& errors, const char* module, const char* procedure,
                  const std::string& message, const RuntimeError& failure);

/// The usual trap of a procedure, told before its body what to do: on a failure it leaves report
/// and log line as leaveTrapped does, and the procedure answers `onFailure`.
template <class Result, class Body>
Result loggedTrap(RunLog& log, ErrorReporter& errors, const char* module, const char* procedure,
                  const std::string& message, Result onFailure, Body&& body) {
  return trap(std::forward<Body>(body), [&](const RuntimeError& failure) -> Result {
    leaveTrapped(log, errors, module, procedure, message, failure);
    return onFailure;
  });
}

/// "Goes on with the next statement": runs one `step`; a failure is handed to
/// `onFailure(const RuntimeError&)` and the caller continues after this call.
template <class Step, class Handler>
void resumeNext(Step&& step, Handler&& onFailure) {
  trap([&]() -> void { std::forward<Step>(step)(); },
       [&](const RuntimeError& failure) -> void { std::forward<Handler>(onFailure)(failure); });
}

}  // namespace trelv
