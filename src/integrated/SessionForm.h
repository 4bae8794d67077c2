#pragma once

#include <functional>
#include <memory>
#include <string>

#include "base/Marked.h"
#include "integrated/Help.h"
#include "machine/Desktop.h"
#include "machine/Form.h"
#include "platform/Program.h"

namespace trelv {

/// A form's picture: the control that shows it, and the file in the folder "images" beside the
/// program.
struct FormPicture {
  const char* control;
  const char* file;
};

/// Shows a picture; without its file the control stays empty.
void showPicture(Program& program, machine::FormWindow& window, const FormPicture& picture);

/// What the forms of the session from a medium have in common: picture, help, the ways out, and
/// that they hear of one thing at a time. Each says in SessionState::userAction how it was closed.
class SessionForm : public machine::Form {
 public:
  /// The form while the packs that were chosen in it are opened: it shows what the log says and how
  /// far it is, and takes nothing from the user. Where it cannot be shown nothing is.
  class Installing {
   public:
    explicit Installing(SessionForm& form);
    Installing(const Installing&) = delete;
    Installing& operator=(const Installing&) = delete;

   private:
    /// In the order of their making: the form takes nothing before it is shown and until it is
    /// gone.
    Marked installing_;
    std::unique_ptr<machine::ShownForm> shown_;
  };

  /// Shows the form modally and returns when it is closed. One that cannot be shown counts as left
  /// and is told in one log line.
  void showModal();

  /// The button back cannot be pressed. Takes effect when the form is shown.
  bool BackDisable() const { return backDisable_; }
  void setBackDisable(bool disable) { backDisable_ = disable; }

  void loaded(machine::FormWindow& window) final;
  void clicked(machine::FormWindow& window, const std::string& control) final;
  void selectionChanged(machine::FormWindow& window, const std::string& control) final;
  void doubleClicked(machine::FormWindow& window, const std::string& control) final;
  void closeRequested(machine::FormWindow& window) final;

 protected:
  SessionForm(Program& program, modProdTrelvInteractive::Help& help, const FormPicture& picture);

  /// Fills a window that is being loaded and sets its focus.
  virtual void fill(machine::FormWindow& window) = 0;
  /// The user wants to go on: the button was pressed.
  virtual void confirm(machine::FormWindow& window) = 0;
  /// The user double-clicked in the list, which means nothing where a form does not say otherwise.
  virtual void confirmByDoubleClick(machine::FormWindow& /*window*/) {}
  /// The user changed what is selected, or the page. Called once for several changes that came
  /// while something else ran.
  virtual void follow(machine::FormWindow& /*window*/) {}

  /// Runs a handler of the form, unless another one runs or packs are being opened. A failure is
  /// reported with the form's and the handler's names, and the form stays open.
  void handle(machine::FormWindow& window, const std::string& handler,
              const std::function<void()>& body);
  void leave(machine::FormWindow& window, UserAction action);
  /// Packs are being opened: what was chosen stays to be seen.
  bool installing() const { return installing_; }

  void show(machine::BoxIcon icon, const std::string& text);
  bool ask(machine::BoxIcon icon, const std::string& question);
  Program& program() { return program_; }
  SessionState& session() { return program_.state.session; }

 private:
  void load(machine::FormWindow& window);
  void run(machine::FormWindow& window, const std::string& handler,
           const std::function<void()>& body);

  Program& program_;
  modProdTrelvInteractive::Help& help_;
  FormPicture picture_;
  bool backDisable_ = false;
  /// One of the handlers runs.
  bool busy_ = false;
  /// A choice came meanwhile.
  bool missed_ = false;
  bool installing_ = false;
};

}  // namespace trelv
