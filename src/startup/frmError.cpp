#include "startup/frmError.h"

#include <utility>

#include "base/ProductName.h"
#include "base/Text.h"
#include "platform/modLibrary.h"

namespace trelv {
namespace {

/// "05 marzo 2009  09:07": the month in the user's language, two blanks before the hour.
std::string titleDate(machine::Locale& locale, const machine::LocalTime& time) {
  return twoDigits(time.day) + " " + locale.monthName(time.month) + " " +
         std::to_string(time.year) + "  " + twoDigits(time.hour) + ":" + twoDigits(time.minute);
}

void warn(Program& program, const std::string& text) {
  program.machine.desktop.messageBox(TRELV_PRODUCT_NAME, text, machine::BoxIcon::Exclamation,
                                     machine::BoxButtons::Ok);
}

}  // namespace

frmError::frmError(Program& program, ErrorRecord record)
    : program_(program), record_(std::move(record)) {}

void frmError::loaded(machine::FormWindow& window) {
  machine::Machine& machine = program_.machine;
  window.setTitle(window.title() + " - " + titleDate(machine.locale, machine.clock.now()));
  window.setText("txtErrLabel", record_.label);
  window.setText("txtProgetto", record_.project);
  window.setText("txtModulo", record_.module);
  window.setText("txtProcedura", record_.procedure);
  window.setText("txtErrSource", record_.source);
  window.setText("txtErrCodice", record_.code);
  window.setText("txtErrDescrizione", record_.description);
  window.setText("txtErrDescrizioneInterna", record_.internalDescription);
  window.setText("txtErrTrace", record_.trace);
}

void frmError::clicked(machine::FormWindow& window, const std::string& control) {
  if (control == "btnOk") {
    window.close();
  } else if (control == "cmdDettagli") {
    openLog();
  }
}

void frmError::closeRequested(machine::FormWindow& window) { window.close(); }

void frmError::openLog() {
  const std::string& logFile = program_.state.runLog.logFile;
  if (logFile.empty()) {
    warn(program_, "File di log non disponibile");
  } else if (modLibrary::FileExists(program_, logFile)) {
    modLibrary::ExecuteTool(program_, "notepad.exe " + logFile, false);
  } else {
    warn(program_, "File di log: '" + logFile + "' non disponibile");
  }
}

}  // namespace trelv
