#pragma once

#include <utility>

#include "base/Trap.h"
#include "platform/Program.h"

namespace trelv::modProdTrelvManager {

/// Runs one statement of the update of all products. A run-time failure in it is told in one log
/// line and the caller goes on with the statement after this call.
template <class Step>
void orGoOn(Program& program, Step&& step) {
  resumeNext(std::forward<Step>(step), [&program](const RuntimeError& failure) -> void {
    program.log.WriteLog("Gestione ProdTrelv - Errore in GestioneProdottiComplementari (" +
                         failure.description() + ")");
  });
}

/// The same for a test: one that fails counts as false.
template <class Test>
bool holdsOrGoOn(Program& program, Test&& test) {
  bool holds = false;
  orGoOn(program, [&]() -> void { holds = std::forward<Test>(test)(); });
  return holds;
}

}  // namespace trelv::modProdTrelvManager
