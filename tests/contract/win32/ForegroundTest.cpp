#include <gtest/gtest.h>
#include <windows.h>

#include <functional>
#include <string>

#include "contract/win32/ReplacedFunction.h"
#include "contract/win32/TestForm.h"
#include "win32/Owned.h"
#include "win32/Win32Desktop.h"

// What becomes of windows while a set-up runs, and behind it. These tests want a screen.
namespace trelv::win32 {
namespace {

/// Another program with a window that has the foreground, as a set-up has.
class OtherProgram {
 public:
  OtherProgram() {
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION started{};
    std::wstring line = L"notepad.exe";
    if (CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                       &started) != FALSE) {
      const OwnedProcess thread(started.hThread);
      process_ = OwnedProcess(started.hProcess);
      takeForeground(started.dwProcessId);
    }
  }
  ~OtherProgram() {
    TerminateProcess(process_.get(), 0);
    WaitForSingleObject(process_.get(), 5000);
  }
  OtherProgram(const OtherProgram&) = delete;
  OtherProgram& operator=(const OtherProgram&) = delete;

  bool hasForeground() const { return window_ != nullptr && GetForegroundWindow() == window_; }

 private:
  void takeForeground(DWORD id) {
    for (int i = 0; i < 500 && !hasForeground(); ++i) {
      Sleep(10);
      HWND const found = FindWindowW(L"Notepad", nullptr);
      DWORD owner = 0;
      GetWindowThreadProcessId(found, &owner);
      if (owner == id && IsWindowVisible(found) != FALSE) {
        window_ = found;
        SetForegroundWindow(found);
      }
    }
  }

  OwnedProcess process_;
  HWND window_ = nullptr;
};

/// What a box is asked for, and the window that it belongs to; the system here does not keep to all
/// of it.
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
  /// Does the system's dialog that comes next have the foreground? Presses OK in it.
  bool hasIt(const std::function<void()>& show) {
    seen_ = false;
    const UINT_PTR timer = SetTimer(nullptr, 0, 300, &Foreground::look);
    show();
    KillTimer(nullptr, timer);
    return seen_;
  }

  Win32Desktop desktop_;

 private:
  static void CALLBACK look(HWND, UINT, UINT_PTR, DWORD) {
    HWND const box = FindWindowW(L"#32770", nullptr);
    HWND const button = box != nullptr ? FindWindowExW(box, nullptr, L"Button", L"OK") : nullptr;
    if (button != nullptr) {
      seen_ = GetForegroundWindow() == box;
      PostMessageW(button, BM_CLICK, 0, 0);
    }
  }

  static inline bool seen_ = false;
};

TEST_F(Foreground, BoxesAndFormsTakeItFromAProgramThatHasIt) {
  {
    const OtherProgram program;
    ASSERT_TRUE(program.hasForeground());
    EXPECT_TRUE(hasIt([this] { showBox(); }));
  }
  const OtherProgram program;
  ASSERT_TRUE(program.hasForeground());
  TestForm form("frmError");
  EXPECT_TRUE(hasIt([&] { desktop_.showModal(form); }));
}

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
