#pragma once

#include <memory>
#include <optional>
#include <string>

#include "machine/Form.h"

namespace trelv::machine {

enum class BoxIcon { None, Critical, Question, Exclamation, Information };
enum class BoxButtons { Ok, OkCancel, YesNo };
/// None: the box could not be shown.
enum class BoxAnswer { None, Ok, Cancel, Yes, No };

/// A modeless form that is shown; unloaded when destroyed.
class ShownForm {
 public:
  virtual ~ShownForm() = default;
};

/// What the user sees: boxes and forms.
class Desktop {
 public:
  virtual ~Desktop() = default;

  /// Shows a message box (UTF-8, CR LF between lines) over the active form and waits for its
  /// answer. Without a desktop it answers None at once.
  virtual BoxAnswer messageBox(const std::string& title, const std::string& text, BoxIcon icon,
                               BoxButtons buttons) = 0;

  /// Asks for one line of text over the active form: a prompt, a field (empty at first), OK, Cancel
  /// and a button that chooses a folder, whose path goes into the field. The field's text as it
  /// stands (UTF-8, may be empty), or nothing when the user cancelled or it cannot be shown.
  virtual std::optional<std::string> inputBox(const std::string& title,
                                              const std::string& prompt) = 0;

  /// Loads the form's window, shows it modally over the active form and returns when it is closed.
  /// False when it could not be made (nothing of the form was called then).
  virtual bool showModal(Form& form) = 0;

  /// Loads the form's window, shows it modeless over the active form, lets it paint (no other
  /// message runs) and returns. It is the active form until the answer is destroyed, which must be
  /// before `form` and this desktop are. Null when it could not be made (nothing of the form was
  /// called then). A failure that escapes one of its handlers later closes it and reaches the
  /// caller of processEvents(). The forms that stand over it end with it.
  virtual std::unique_ptr<ShownForm> showModeless(Form& form) = 0;

  /// The active form of this program, or null when none is open. Not owned by the caller; valid
  /// until the form closes.
  virtual FormWindow* activeForm() = 0;

  /// Lets pending window messages run, clicks included, and returns.
  virtual void processEvents() = 0;

  /// Makes the mouse pointer an hourglass over all forms of this program, or the default again.
  virtual void setHourglass(bool on) = 0;
};

}  // namespace trelv::machine
