#pragma once

#include <functional>
#include <optional>
#include <string>

#include "machine/Form.h"

namespace trelv::win32 {

/// The form of the input box: a prompt, a field, OK, Cancel and a button that chooses a folder.
class InputForm : public machine::Form {
 public:
  /// Asks the user for a folder, beginning at the given one; nothing when there is no choice.
  using FolderChooser = std::function<std::optional<std::string>(const std::string& first)>;

  InputForm(std::string title, std::string prompt, FolderChooser chooseFolder);

  std::string name() const override { return "frmInput"; }
  void loaded(machine::FormWindow& window) override;
  void clicked(machine::FormWindow& window, const std::string& control) override;
  void closeRequested(machine::FormWindow& window) override { window.close(); }

  /// What stood in the field at OK; nothing when the user cancelled.
  const std::optional<std::string>& answer() const { return answer_; }

 private:
  void browse(machine::FormWindow& window) const;

  std::string title_;
  std::string prompt_;
  FolderChooser chooseFolder_;
  std::optional<std::string> answer_;
};

}  // namespace trelv::win32
