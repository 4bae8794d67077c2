#include "win32/ControlNames.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "win32/resource.h"

namespace trelv::win32 {
namespace {

struct Control {
  std::string_view name;
  int id;
};

#define TRELV_CONTROL(name) \
  Control { #name, IDC_##name }

constexpr std::array kControls{
    TRELV_CONTROL(btnOk),
    TRELV_CONTROL(cmdDettagli),
    TRELV_CONTROL(picError),
    TRELV_CONTROL(prgProgress),
    TRELV_CONTROL(txtProgress),
    TRELV_CONTROL(lblProgress),
    TRELV_CONTROL(txtErrLabel),
    TRELV_CONTROL(txtProgetto),
    TRELV_CONTROL(txtModulo),
    TRELV_CONTROL(txtProcedura),
    TRELV_CONTROL(txtErrSource),
    TRELV_CONTROL(txtErrCodice),
    TRELV_CONTROL(txtErrDescrizione),
    TRELV_CONTROL(txtErrDescrizioneInterna),
    TRELV_CONTROL(txtErrTrace),
    TRELV_CONTROL(cmbProduct),
    TRELV_CONTROL(optClient),
    TRELV_CONTROL(optServer),
    TRELV_CONTROL(optSetup),
    TRELV_CONTROL(optUpdate),
    TRELV_CONTROL(lstVersion),
    TRELV_CONTROL(btnRemove),
    TRELV_CONTROL(btnRepair),
    TRELV_CONTROL(btnExit),
    TRELV_CONTROL(lblServerPath),
    TRELV_CONTROL(lblClientVersion),
    TRELV_CONTROL(lblServerVersion),
    TRELV_CONTROL(lblRemove),
    TRELV_CONTROL(lblRepair),
    TRELV_CONTROL(lblOutcome),
};

#undef TRELV_CONTROL

}  // namespace

int controlId(const std::string& name) {
  const auto* const found =
      std::find_if(kControls.begin(), kControls.end(),
                   [&name](const Control& control) { return control.name == name; });
  return found == kControls.end() ? 0 : found->id;
}

std::string controlName(int id) {
  const auto* const found = std::find_if(kControls.begin(), kControls.end(),
                                         [id](const Control& control) { return control.id == id; });
  return found == kControls.end() ? std::string() : std::string(found->name);
}

}  // namespace trelv::win32
