#include "integrated/SessionForm.h"

#include <array>
#include <utility>

#include "base/ProductName.h"
#include "base/Trap.h"
#include "platform/modLibrary.h"

namespace trelv {
namespace {

using machine::BoxAnswer;
using machine::BoxButtons;
using machine::FormWindow;

/// What the user cannot use while packs are opened.
constexpr std::array kControls{"labTab",  "ListProd", "ListAmb", "cmdExec",
                               "cmdback", "cmdExit",  "cmdhelp"};

}  // namespace

void showPicture(Program& program, FormWindow& window, const FormPicture& picture) {
  const std::string folder = modLibrary::ParentPath(program.machine.system.executablePath());
  window.setPicture(picture.control, folder + "\\images\\" + picture.file);
}

SessionForm::Installing::Installing(SessionForm& form)
    : installing_(form.installing_), shown_(form.program_.machine.desktop.showModeless(form)) {}

SessionForm::SessionForm(Program& program, modProdTrelvInteractive::Help& help,
                         const FormPicture& picture)
    : program_(program), help_(help), picture_(picture) {}

void SessionForm::showModal() {
  if (!program_.machine.desktop.showModal(*this)) {
    program_.log.WriteLog("Gestione ProdTrelv - Impossibile visualizzare la finestra " + name());
    session().userAction = UserAction::Exit;
  }
}

void SessionForm::loaded(FormWindow& window) {
  run(window, "Form_Load", [&]() -> void { load(window); });
}

void SessionForm::load(FormWindow& window) {
  showPicture(program_, window, picture_);
  window.setEnabled("cmdback", !backDisable_);
  fill(window);
  if (installing_) {
    window.setTitle(window.title() + " - Installazione in corso");
    for (const char* const control : kControls) {
      window.setEnabled(control, false);
    }
  }
}

void SessionForm::clicked(FormWindow& window, const std::string& control) {
  handle(window, control + "_Click", [&]() -> void {
    if (control == "cmdExec") {
      confirm(window);
    } else if (control == "cmdback") {
      leave(window, UserAction::Back);
    } else if (control == "cmdExit") {
      leave(window, UserAction::Exit);
    } else if (control == "cmdhelp") {
      help_.ShowHelp(name());
    }
  });
}

void SessionForm::selectionChanged(FormWindow& window, const std::string& control) {
  if (busy_) {
    missed_ = true;
    return;
  }
  handle(window, control + "_Click", [&]() -> void { follow(window); });
}

void SessionForm::doubleClicked(FormWindow& window, const std::string& control) {
  handle(window, control + "_DblClick", [&]() -> void { confirmByDoubleClick(window); });
}

void SessionForm::closeRequested(FormWindow& window) {
  handle(window, "Form_QueryUnload", [&]() -> void { leave(window, UserAction::Exit); });
}

void SessionForm::handle(FormWindow& window, const std::string& handler,
                         const std::function<void()>& body) {
  if (!busy_ && !installing_) {
    run(window, handler, body);
  }
}

void SessionForm::run(FormWindow& window, const std::string& handler,
                      const std::function<void()>& body) {
  const Marked busy(busy_);
  const auto trapped = [&](const std::function<void()>& step) -> void {
    loggedTrap(program_.log, program_.errors, name().c_str(), handler.c_str(),
               "Errore in gestione finestra: ", false, [&]() -> bool {
                 step();
                 return true;
               });
  };
  trapped(body);
  while (std::exchange(missed_, false)) {
    trapped([&]() -> void { follow(window); });
  }
}

void SessionForm::leave(FormWindow& window, UserAction action) {
  session().userAction = action;
  window.close();
}

void SessionForm::show(machine::BoxIcon icon, const std::string& text) {
  program_.machine.desktop.messageBox(TRELV_PRODUCT_NAME, text, icon, BoxButtons::Ok);
}

bool SessionForm::ask(machine::BoxIcon icon, const std::string& question) {
  return program_.machine.desktop.messageBox(TRELV_PRODUCT_NAME, question, icon,
                                             BoxButtons::YesNo) == BoxAnswer::Yes;
}

}  // namespace trelv
