#include <gtest/gtest.h>
#include <windows.h>

#include <string>

#include "contract/win32/ReplacedFunction.h"
#include "contract/win32/TestForm.h"
#include "win32/Win32Desktop.h"

// What becomes of windows while a set-up runs, and behind it. These tests want a screen.
namespace trelv::win32 {
namespace {

/// What a box is asked for, and the window that it belongs to: Wine hands the foreground out to
/// whoever comes last, and keeps no box above other windows.
UINT asked = 0;
HWND askedOver = nullptr;

int WINAPI noteBox(HWND owner, LPCWSTR /*text*/, LPCWSTR /*title*/, UINT style) {
  asked = style;
  askedOver = owner;
  return IDOK;
}

class Foreground : public testing::Test {
 protected:
  void showBox() {
    desktop_.messageBox("Titolo", "Testo", machine::BoxIcon::None, machine::BoxButtons::Ok);
  }

  Win32Desktop desktop_;
};

TEST_F(Foreground, ABoxWithoutAFormBelowIsToStandAboveAllWindowsSinceItMayBeRefused) {
  const ReplacedFunction replaced(L"user32.dll", "MessageBoxW", &noteBox);
  showBox();
  EXPECT_EQ(nullptr, askedOver);
  EXPECT_EQ(UINT{MB_SETFOREGROUND | MB_TOPMOST}, asked & (MB_SETFOREGROUND | MB_TOPMOST));
  TestForm form("frmwait");
  const auto shown = desktop_.showModeless(form);
  ASSERT_NE(nullptr, shown);
  showBox();
  EXPECT_NE(nullptr, askedOver);
  EXPECT_EQ(UINT{MB_SETFOREGROUND}, asked & (MB_SETFOREGROUND | MB_TOPMOST));
}

TEST_F(Foreground, EveryFormButTheOneThatOnlyTellsAsksForIt) {
  for (const std::string& name : dialogs()) {
    lookAt(desktop_, name, [&](machine::FormWindow& window) {
      const bool asks = (GetWindowLongW(handleOf(window), GWL_STYLE) & DS_SETFOREGROUND) != 0;
      EXPECT_EQ(name != "FRMWAIT", asks) << name;
    });
  }
}

// --- Forms that do not paint for a while

bool keptFromBeingReplaced = false;

void WINAPI noteThatItIsAsked() { keptFromBeingReplaced = true; }

TEST(Ghosts, BeforeTheFirstFormStandsWindowsIsToldNotToReplaceAny) {
  const ReplacedFunction replaced(L"user32.dll", "DisableProcessWindowsGhosting",
                                  &noteThatItIsAsked);
  keptFromBeingReplaced = false;
  Win32Desktop desktop;
  EXPECT_FALSE(keptFromBeingReplaced) << "a start without windows has none to keep";
  TestForm form("frmwait");
  bool whenLoaded = false;
  form.onLoaded = [&](machine::FormWindow&) { whenLoaded = keptFromBeingReplaced; };
  const auto shown = desktop.showModeless(form);
  EXPECT_TRUE(whenLoaded);
}

}  // namespace
}  // namespace trelv::win32
