#include "overlay/OverlayDesktop.h"

namespace trelv::overlay {
namespace {

using machine::BoxAnswer;
using machine::BoxButtons;

/// Keeps a window among those that are shown while it lives.
class Shown {
 public:
  Shown(std::vector<QuietWindow*>& windows, QuietWindow& window)
      : windows_(windows), window_(window) {
    windows_.push_back(&window_);
  }
  ~Shown() { std::erase(windows_, &window_); }
  Shown(const Shown&) = delete;
  Shown& operator=(const Shown&) = delete;

 private:
  std::vector<QuietWindow*>& windows_;
  QuietWindow& window_;
};

class ModelessForm : public machine::ShownForm {
 public:
  explicit ModelessForm(std::vector<QuietWindow*>& windows) : shown_(windows, window_) {}

  QuietWindow& window() { return window_; }

 private:
  QuietWindow window_;
  Shown shown_;
};

}  // namespace

BoxAnswer OverlayDesktop::messageBox(const std::string& title, const std::string& text,
                                     machine::BoxIcon icon, BoxButtons buttons) {
  const BoxAnswer answer = buttons == BoxButtons::YesNo ? BoxAnswer::Yes : BoxAnswer::Ok;
  steps_.add({.kind = StepKind::Box,
              .subject = title,
              .value = text,
              .icon = icon,
              .buttons = buttons,
              .answer = answer});
  return answer;
}

std::optional<std::string> OverlayDesktop::inputBox(const std::string& title,
                                                    const std::string& prompt) {
  steps_.add({.kind = StepKind::Box,
              .subject = title,
              .value = prompt,
              .buttons = BoxButtons::OkCancel,
              .answer = BoxAnswer::Cancel});
  return std::nullopt;
}

bool OverlayDesktop::showModal(machine::Form& form) {
  steps_.add({.kind = StepKind::Form, .subject = form.name()});
  QuietWindow window;
  const Shown shown(windows_, window);
  form.loaded(window);
  if (window.isOpen() && user_) {
    user_(form, window);
  }
  if (window.isOpen()) {
    form.closeRequested(window);
  }
  return true;
}

std::unique_ptr<machine::ShownForm> OverlayDesktop::showModeless(machine::Form& form) {
  steps_.add({.kind = StepKind::Form, .subject = form.name()});
  auto shown = std::make_unique<ModelessForm>(windows_);
  form.loaded(shown->window());
  return shown;
}

machine::FormWindow* OverlayDesktop::activeForm() {
  return windows_.empty() ? nullptr : windows_.back();
}

}  // namespace trelv::overlay
