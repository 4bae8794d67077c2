#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "machine/Desktop.h"
#include "win32/KeyFilter.h"
#include "win32/Win32FormWindow.h"

namespace trelv::win32 {

/// Boxes and dialogs. The window libraries are touched only when something is shown.
class Win32Desktop : public machine::Desktop {
 public:
  machine::BoxAnswer messageBox(const std::string& title, const std::string& text,
                                machine::BoxIcon icon, machine::BoxButtons buttons) override;
  std::optional<std::string> inputBox(const std::string& title, const std::string& prompt) override;
  bool showModal(machine::Form& form) override;
  std::unique_ptr<machine::ShownForm> showModeless(machine::Form& form) override;
  machine::FormWindow* activeForm() override;
  void processEvents() override;
  void setHourglass(bool on) override;

 private:
  /// The topmost form that is not closed, or null.
  Win32FormWindow* topmost() const;
  HWND owner() const;
  void prepare();
  bool takenByDialog(MSG& message) const;
  void rethrowModelessFailure() const;

  /// The forms that are shown, in the order of their opening.
  std::vector<Win32FormWindow*> forms_;
  bool hourglass_ = false;
  /// From the first form on.
  std::optional<KeyFilter> keys_;
};

}  // namespace trelv::win32
