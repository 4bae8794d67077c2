#include "base/Trap.h"

#include <exception>
#include <new>

namespace trelv {

RuntimeError caughtFailure() {
  try {
    throw;
  } catch (const RuntimeError& error) {
    return error;
  } catch (const std::bad_alloc&) {
    return {runtime_number::kOutOfMemory, "TrelvManager", "Memoria insufficiente"};
  } catch (const std::exception& error) {
    return {runtime_number::kApplicationDefined, "TrelvManager", error.what()};
  }
}

void leaveTrapped(RunLog& log, ErrorReporter& errors, const char* module, const char* procedure,
                  const std::string& message, const RuntimeError& failure) {
  errors.VisualizzaErrore(module, procedure, message, ReportKind::ProgramError, failure);
  log.WriteLog("Gestione ProdTrelv - " + message + failure.description());
}

}  // namespace trelv
