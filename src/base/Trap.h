#pragma once

#include <exception>
#include <new>
#include <string>
#include <utility>

#include "base/ErrorReporter.h"
#include "base/RunLog.h"
#include "base/RuntimeError.h"

namespace trelv {

/// Runs `body`; on a failure calls `handler(const RuntimeError&)` and gives its result instead.
/// Failures of the C++ library (no memory left, a text too long) arrive as RuntimeError too.
/// A failure inside the handler travels to the caller.
template <class Body, class Handler>
auto trap(Body&& body, Handler&& handler) -> decltype(body()) {
  RuntimeError failure;
  try {
    return std::forward<Body>(body)();
  } catch (const RuntimeError& error) {
    failure = error;
  } catch (const std::bad_alloc&) {
    failure = RuntimeError(runtime_number::kOutOfMemory, "TrelvManager", "Memoria insufficiente");
  } catch (const std::exception& error) {
    failure = RuntimeError(runtime_number::kApplicationDefined, "TrelvManager", error.what());
  }
  return std::forward<Handler>(handler)(failure);
}

/// The usual trap of a procedure, told before its body what to do: a failure is reported as a
/// program error of `module`.`procedure` with the text `message`, leaves its line in the run log,
/// `message` with the failure's description behind it, and the procedure answers `onFailure`. The
/// report comes first, so that it still shows the line before the failure as its trace.
template <class Result, class Body>
Result loggedTrap(RunLog& log, ErrorReporter& errors, const char* module, const char* procedure,
                  const std::string& message, Result onFailure, Body&& body) {
  return trap(std::forward<Body>(body), [&](const RuntimeError& failure) -> Result {
    errors.VisualizzaErrore(module, procedure, message, ReportKind::ProgramError, failure);
    log.WriteLog("Gestione ProdTrelv - " + message + failure.description());
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
