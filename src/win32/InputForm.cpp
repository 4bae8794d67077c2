#include "win32/InputForm.h"

#include <utility>

namespace trelv::win32 {
namespace {

constexpr const char* kField = "txtInput";

}  // namespace

InputForm::InputForm(std::string title, std::string prompt, FolderChooser chooseFolder)
    : title_(std::move(title)),
      prompt_(std::move(prompt)),
      chooseFolder_(std::move(chooseFolder)) {}

void InputForm::loaded(machine::FormWindow& window) {
  window.setTitle(title_);
  window.setText("lblPrompt", prompt_);
  window.setFocus(kField);
}

void InputForm::clicked(machine::FormWindow& window, const std::string& control) {
  if (control == "btnBrowse") {
    browse(window);
    return;
  }
  if (control == "btnOk") {
    answer_ = window.text(kField);
  }
  window.close();
}

void InputForm::browse(machine::FormWindow& window) const {
  if (const auto folder = chooseFolder_(window.text(kField))) {
    window.setText(kField, *folder);
  }
  window.setFocus(kField);
}

}  // namespace trelv::win32
