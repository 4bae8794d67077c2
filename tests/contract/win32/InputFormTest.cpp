#include <gtest/gtest.h>
#include <windows.h>

#include <functional>
#include <memory>
#include <string>

#include "contract/ContractMachine.h"
#include "contract/win32/BoxPlayer.h"
#include "contract/win32/TestForm.h"
#include "win32/FolderChooser.h"
#include "win32/InputForm.h"
#include "win32/Win32Desktop.h"
#include "win32/Win32Text.h"

namespace trelv::win32 {
namespace {

using Folder = std::optional<std::string>;

/// Plays in the input box as soon as it is shown.
class InputBox : public testing::Test {
 protected:
  Folder show(InputForm::FolderChooser chooser, std::function<void(machine::FormWindow&)> user) {
    InputForm form("Titolo", "Prompt", std::move(chooser));
    side_->playUser(std::move(user));
    EXPECT_TRUE(desktop().showModal(form));
    return form.answer();
  }
  machine::Desktop& desktop() { return side_->machine().desktop; }

  std::unique_ptr<contract::ContractMachine> side_ = contract::makeContractMachine();
};

Folder noFolder(const std::string&) { return std::nullopt; }

TEST_F(InputBox, AChosenFolderGoesIntoTheField) {
  std::string begin;
  const Folder answer = show(
      [&begin](const std::string& first) -> Folder {
        begin = first;
        return "S:\\Lumo";
      },
      [this](machine::FormWindow& window) {
        window.setText("txtInput", "C:\\Vecchia");
        side_->click(window, "btnBrowse");
        EXPECT_EQ(GetFocus(), controlOf(window, "txtInput"));
        side_->click(window, "btnOk");
      });
  EXPECT_EQ("S:\\Lumo", answer);
  EXPECT_EQ("C:\\Vecchia", begin) << "the choice begins at what the field names";
}

TEST_F(InputBox, WithoutAChoiceTheFieldKeepsItsText) {
  EXPECT_EQ("C:\\Vecchia", show(noFolder, [this](machine::FormWindow& window) {
              window.setText("txtInput", "C:\\Vecchia");
              side_->click(window, "btnBrowse");
              side_->click(window, "btnOk");
            }));
}

TEST_F(InputBox, EnterIsOkAndEscIsCancel) {
  const auto press = [](WPARAM key) {
    return [key](machine::FormWindow& window) {
      EXPECT_EQ(GetFocus(), controlOf(window, "txtInput"));
      window.setText("txtInput", "testo");
      PostMessageW(controlOf(window, "txtInput"), WM_KEYDOWN, key, 0);
    };
  };
  EXPECT_EQ("testo", show(noFolder, press(VK_RETURN)));
  EXPECT_EQ(std::nullopt, show(noFolder, press(VK_ESCAPE)));
}

// --- The system's dialog for folders

TEST(FolderChooser, OpensAtTheGivenFolderAndGivesWhatIsChosen) {
  const auto side = contract::makeContractMachine();
  const std::string folder = side->folder() + "\\Contabilit\u00E0";
  side->putFolder(folder);
  wchar_t real[MAX_PATH] = {};
  GetLongPathNameW(wide(folder).c_str(), real, MAX_PATH);
  // The dialog's tree reads its folders while it is shown already; on a busy machine OK may come
  // first.
  constexpr int kMostTries = 5;
  Folder chosen;
  for (int tries = 0; tries < kMostTries && chosen != utf8(real); ++tries) {
    // One player presses once.
    const BoxPlayer ok(IDOK);
    chosen = chooseFolder(nullptr, "Indicare il path", folder);
    ASSERT_FALSE(BoxPlayer::texts().empty());
  }
  EXPECT_EQ(utf8(real), chosen);
}

TEST(FolderChooser, CancelChoosesNothing) {
  const BoxPlayer cancel(IDCANCEL);
  EXPECT_EQ(std::nullopt, chooseFolder(nullptr, "Indicare il path", ""));
  EXPECT_FALSE(BoxPlayer::texts().empty());
}

}  // namespace
}  // namespace trelv::win32
