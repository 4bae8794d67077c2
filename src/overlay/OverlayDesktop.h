#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "machine/Desktop.h"
#include "overlay/QuietWindow.h"
#include "overlay/Steps.h"

namespace trelv::overlay {

/// What the user does in a modal form. Without anything he closes it by its close box.
using FormUser = std::function<void(machine::Form&, QuietWindow&)>;

/// A desktop that shows nothing: boxes and forms are noted and answered with their default, OK or
/// yes of a box, cancel of an input box, the close box of a form.
class OverlayDesktop : public machine::Desktop {
 public:
  OverlayDesktop(Steps& steps, FormUser user) : steps_(steps), user_(std::move(user)) {}

  machine::BoxAnswer messageBox(const std::string& title, const std::string& text,
                                machine::BoxIcon icon, machine::BoxButtons buttons) override;
  std::optional<std::string> inputBox(const std::string& title, const std::string& prompt) override;
  bool showModal(machine::Form& form) override;
  std::unique_ptr<machine::ShownForm> showModeless(machine::Form& form) override;
  machine::FormWindow* activeForm() override;
  void processEvents() override {}
  void setHourglass(bool /*on*/) override {}

 private:
  Steps& steps_;
  FormUser user_;
  std::vector<QuietWindow*> windows_;
};

}  // namespace trelv::overlay
