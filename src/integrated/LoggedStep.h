#pragma once

#include <utility>

#include "base/Trap.h"
#include "platform/Program.h"

namespace trelv::modProdTrelvManager {

/// Runs one statement of the update of all products that may raise. A run-time failure in it is
/// told in one log line and the caller goes on with the statement after this call.
template <class Step>
void orGoOn(Program& program, Step&& step) {
  resumeNext(std::forward<Step>(step), [&program](const RuntimeError& failure) -> void {
    program.log.WriteLog("Gestione ProdTrelv - Errore in GestioneProdottiComplementari (" +
                         failure.description() + ")");
  });
}

}  // namespace trelv::modProdTrelvManager
