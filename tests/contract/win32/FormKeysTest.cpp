#include <gtest/gtest.h>
#include <windows.h>
// The common controls' header needs the one above first.
#include <commctrl.h>

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "contract/ContractMachine.h"
#include "contract/win32/TestForm.h"
#include "win32/TextSize.h"
#include "win32/Win32Desktop.h"

// Work by keyboard alone, in lists of several choices and tab controls.
namespace trelv::win32 {
namespace {

using Names = std::vector<std::string>;

/// Ctrl, and Shift too, held down as long as this lives.
class HeldDown {
 public:
  explicit HeldDown(bool shift = false) {
    GetKeyboardState(before_.data());
    std::array<BYTE, 256> keys = before_;
    keys[VK_CONTROL] = 0x80;
    keys[VK_SHIFT] = shift ? 0x80 : 0;
    SetKeyboardState(keys.data());
  }
  ~HeldDown() { SetKeyboardState(before_.data()); }
  HeldDown(const HeldDown&) = delete;
  HeldDown& operator=(const HeldDown&) = delete;

 private:
  std::array<BYTE, 256> before_{};
};

class FormKeys : public testing::Test {
 protected:
  /// Shows the stage with all its controls, and lets the test play there.
  void play(std::function<void(machine::FormWindow&)> user) {
    form_.onLoaded = [this, user](machine::FormWindow& window) {
      side_->makeControls(window);
      user(window);
      window.close();
    };
    EXPECT_TRUE(desktop_.showModal(form_));
  }
  void press(machine::FormWindow& window, const std::string& control, WPARAM key,
             UINT message = WM_KEYDOWN) {
    SetFocus(controlOf(window, control));
    PostMessageW(controlOf(window, control), message, key, 0);
    desktop_.processEvents();
  }

  static constexpr const char* kTabs = contract::stage::kTabs;
  static constexpr const char* kMultiList = contract::stage::kMultiList;
  static constexpr const char* kButton = contract::stage::kButton;

  Win32Desktop desktop_;
  std::unique_ptr<contract::ContractMachine> side_ = contract::makeContractMachine();
  TestForm form_{contract::stage::kForm};
};

// --- F10

LRESULT CALLBACK countMenuCalls(HWND dialog, UINT message, WPARAM first, LPARAM second) {
  auto* const before = reinterpret_cast<WNDPROC>(GetPropW(dialog, L"before"));
  if (message == WM_SYSCOMMAND && (first & 0xFFF0U) == SC_KEYMENU) {
    SetPropW(
        dialog, L"menu calls",
        reinterpret_cast<HANDLE>(reinterpret_cast<INT_PTR>(GetPropW(dialog, L"menu calls")) + 1));
    return 0;
  }
  return CallWindowProcW(before, dialog, message, first, second);
}

TEST_F(FormKeys, F10OpensTheSystemMenuWhereTheFormDoesNotDealWithIt) {
  play([this](machine::FormWindow& window) {
    HWND const dialog = handleOf(window);
    SetPropW(dialog, L"before",
             reinterpret_cast<HANDLE>(SetWindowLongPtrW(
                 dialog, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&countMenuCalls))));
    const auto menuCalls = [dialog] {
      return reinterpret_cast<INT_PTR>(GetPropW(dialog, L"menu calls"));
    };
    press(window, kButton, VK_F10, WM_SYSKEYDOWN);
    press(window, kButton, VK_F10, WM_SYSKEYUP);
    EXPECT_EQ(0, menuCalls());
    form_.dealsWithF10 = false;
    press(window, kButton, VK_F10, WM_SYSKEYDOWN);
    press(window, kButton, VK_F10, WM_SYSKEYUP);
    EXPECT_EQ(1, menuCalls());
    {
      const HeldDown control;
      press(window, kButton, VK_F10, WM_SYSKEYDOWN);
    }
    SetWindowLongPtrW(dialog, GWLP_WNDPROC,
                      reinterpret_cast<LONG_PTR>(GetPropW(dialog, L"before")));
  });
  const std::string heard = std::string("F10 in ") + kButton;
  EXPECT_EQ((Names{heard, heard}), form_.events) << "Ctrl+F10 is another key";
}

// --- The window's menu

int menusOpened = 0;

LRESULT CALLBACK countMenus(HWND dialog, UINT message, WPARAM first, LPARAM second) {
  if (message == WM_ENTERMENULOOP) {
    ++menusOpened;
  }
  auto* const before = reinterpret_cast<WNDPROC>(GetPropW(dialog, L"before"));
  return CallWindowProcW(before, dialog, message, first, second);
}

void CALLBACK leaveMenu(HWND, UINT, UINT_PTR, DWORD) { EndMenu(); }

/// Asks for the window's menu by key and by mouse; whatever opens is left again.
int menusThatOpen(HWND dialog) {
  menusOpened = 0;
  SetPropW(dialog, L"before",
           reinterpret_cast<HANDLE>(
               SetWindowLongPtrW(dialog, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&countMenus))));
  const UINT_PTR timer = SetTimer(nullptr, 0, 50, &leaveMenu);
  SendMessageW(dialog, WM_SYSCOMMAND, SC_KEYMENU, L' ');
  SendMessageW(dialog, WM_SYSCOMMAND, SC_MOUSEMENU, 0);
  KillTimer(nullptr, timer);
  SetWindowLongPtrW(dialog, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(GetPropW(dialog, L"before")));
  return menusOpened;
}

int menusOfWaitingForm = -1;

/// Arrives when the form waits for its user.
void CALLBACK askWaitingForm(HWND dialog, UINT, UINT_PTR timer, DWORD) {
  KillTimer(dialog, timer);
  menusOfWaitingForm = menusThatOpen(dialog);
  PostMessageW(GetDlgItem(dialog, controlId("btnOk")), BM_CLICK, 0, 0);
}

TEST_F(FormKeys, TheWindowsMenuOpensUnlessTheFormWorks) {
  int menusOfWorkingForm = -1;
  TestForm form("frmError");
  form.onLoaded = [](machine::FormWindow& window) {
    SetTimer(handleOf(window), 1, 50, &askWaitingForm);
  };
  form.onClicked = [&menusOfWorkingForm](machine::FormWindow& window, const std::string&) {
    menusOfWorkingForm = menusThatOpen(handleOf(window));
    window.close();
  };
  EXPECT_TRUE(desktop_.showModal(form));
  EXPECT_LT(0, menusOfWaitingForm);
  EXPECT_EQ(0, menusOfWorkingForm);
}

TEST_F(FormKeys, AClosedFormHearsNoKey) {
  play([this](machine::FormWindow& window) {
    window.addItem(kTabs, "a");
    window.addItem(kTabs, "b");
    PostMessageW(controlOf(window, kButton), WM_SYSKEYDOWN, VK_F10, 0);
    window.close();
    desktop_.processEvents();
  });
  EXPECT_TRUE(form_.events.empty());
}

// --- Pages

class PageKeys : public FormKeys {
 protected:
  /// Five pages, the second and the last of them disabled; gives the pages that are turned to.
  std::vector<int> turnedTo(std::function<void(machine::FormWindow&)> user) {
    std::vector<int> pages;
    play([&](machine::FormWindow& window) {
      for (const char* const page : {"a", "b", "c", "d", "e"}) {
        window.addItem(kTabs, page);
      }
      window.setItemEnabled(kTabs, 1, false);
      window.setItemEnabled(kTabs, 4, false);
      turned_ = [&pages, &window] { pages.push_back(window.selected(kTabs)); };
      user(window);
    });
    return pages;
  }
  void turn(machine::FormWindow& window, const std::string& control, WPARAM key) {
    press(window, control, key);
    turned_();
  }

 private:
  std::function<void()> turned_;
};

TEST_F(PageKeys, CtrlTabAndCtrlPageTurnPagesFromEveryControlAndPassOverDisabledOnes) {
  const std::vector<int> pages = turnedTo([this](machine::FormWindow& window) {
    const HeldDown control;
    turn(window, kButton, VK_TAB);
    turn(window, kMultiList, VK_TAB);
    turn(window, kButton, VK_TAB);
    turn(window, kTabs, VK_NEXT);
    turn(window, kButton, VK_PRIOR);
    EXPECT_EQ(controlOf(window, kButton), GetFocus()) << "the focus stays";
  });
  EXPECT_EQ((std::vector<int>{2, 3, 0, 2, 0}), pages);
  EXPECT_EQ(Names(5, std::string("changed ") + kTabs), form_.events);
}

TEST_F(PageKeys, WithShiftTheyTurnBackwardsRoundTheBegin) {
  const std::vector<int> pages = turnedTo([this](machine::FormWindow& window) {
    const HeldDown control(true);
    turn(window, kButton, VK_TAB);
    turn(window, kButton, VK_TAB);
  });
  EXPECT_EQ((std::vector<int>{3, 2}), pages);
}

TEST_F(PageKeys, ArrowsHomeAndEndPassOverDisabledPagesAndStopAtTheEnds) {
  const std::vector<int> pages = turnedTo([this](machine::FormWindow& window) {
    for (const WPARAM key : {VK_LEFT, VK_RIGHT, VK_RIGHT, VK_RIGHT, VK_LEFT, VK_HOME, VK_END}) {
      turn(window, kTabs, key);
    }
    window.setItemEnabled(kTabs, 0, false);
    turn(window, kTabs, VK_HOME);
  });
  EXPECT_EQ((std::vector<int>{0, 2, 3, 3, 2, 0, 3, 2}), pages);
}

TEST_F(PageKeys, AProgramThatChoosesForTheUserIsRefusedADisabledPageToo) {
  const std::vector<int> pages = turnedTo([this](machine::FormWindow& window) {
    SendMessageW(controlOf(window, kTabs), TCM_SETCURFOCUS, 1, 0);
    EXPECT_EQ(0, window.selected(kTabs));
    SendMessageW(controlOf(window, kTabs), TCM_SETCURFOCUS, 2, 0);
    EXPECT_EQ(2, window.selected(kTabs));
  });
  EXPECT_EQ(Names{std::string("changed ") + kTabs}, form_.events);
}

TEST_F(PageKeys, ADisabledTabControlOrOneWhosePagesAreAllDisabledTurnsNone) {
  const std::vector<int> pages = turnedTo([this](machine::FormWindow& window) {
    const HeldDown control;
    window.setEnabled(kTabs, false);
    turn(window, kButton, VK_TAB);
    window.setEnabled(kTabs, true);
    for (const int page : {0, 2, 3}) window.setItemEnabled(kTabs, page, false);
    turn(window, kButton, VK_TAB);
  });
  EXPECT_EQ((std::vector<int>{0, 0}), pages);
  EXPECT_TRUE(form_.events.empty());
}

TEST_F(PageKeys, WithoutATabControlTheKeysDoNothing) {
  const HeldDown control;
  EXPECT_EQ(Names{}, lookAt(desktop_, "frmError", [this](machine::FormWindow& window) {
              press(window, "btnOk", VK_TAB);
            }));
}

/// How many points of a page's tab have this colour, after it was painted.
int pointsOf(HWND tabs, int page, COLORREF colour) {
  RECT place{};
  SendMessageW(tabs, TCM_GETITEMRECT, static_cast<WPARAM>(page), reinterpret_cast<LPARAM>(&place));
  RedrawWindow(tabs, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW);
  HDC const context = GetDC(tabs);
  int points = 0;
  for (LONG y = place.top + 3; y < place.bottom - 3; ++y) {
    for (LONG x = place.left + 3; x < place.right - 3; ++x) {
      points += GetPixel(context, x, y) == colour ? 1 : 0;
    }
  }
  ReleaseDC(tabs, context);
  return points;
}

TEST_F(PageKeys, ADisabledPageIsDrawnGrey) {
  constexpr const char* kPages = "labTab";
  TestForm form("frmProdTrelvStandalone");
  form.onLoaded = [](machine::FormWindow& window) {
    for (const char* const page : {"HHHHH", "HHHHH"}) {
      window.addItem(kPages, page);
    }
    clickLater(window, "cmdExit");
  };
  form.onClicked = [](machine::FormWindow& window, const std::string&) {
    HWND const tabs = controlOf(window, kPages);
    ShowWindow(handleOf(window), SW_SHOW);
    const COLORREF black = GetSysColor(COLOR_BTNTEXT);
    const COLORREF grey = GetSysColor(COLOR_GRAYTEXT);
    ASSERT_NE(black, grey);
    const int drawn = pointsOf(tabs, 1, black);
    EXPECT_LT(20, drawn);
    EXPECT_EQ(0, pointsOf(tabs, 1, grey));
    window.setItemEnabled(kPages, 1, false);
    EXPECT_EQ(0, pointsOf(tabs, 1, black));
    EXPECT_LT(20, pointsOf(tabs, 1, grey));
    EXPECT_LT(20, pointsOf(tabs, 0, black)) << "the other page is as before";
    window.setItemEnabled(kPages, 1, true);
    EXPECT_EQ(drawn, pointsOf(tabs, 1, black));
    window.close();
  };
  EXPECT_TRUE(desktop_.showModal(form));
}

// --- Lists of several choices

TEST_F(FormKeys, TheSpaceBarSelectsAndDeselectsTheItemThatTheArrowsGoTo) {
  play([this](machine::FormWindow& window) {
    for (const char* const item : {"a", "b", "c"}) {
      window.addItem(kMultiList, item);
    }
    press(window, kMultiList, VK_DOWN);
    EXPECT_EQ(-1, window.selected(kMultiList)) << "arrows select nothing";
    press(window, kMultiList, VK_SPACE);
    press(window, kMultiList, VK_DOWN);
    press(window, kMultiList, VK_SPACE);
    EXPECT_TRUE(window.itemSelected(kMultiList, 1));
    EXPECT_TRUE(window.itemSelected(kMultiList, 2));
    press(window, kMultiList, VK_SPACE);
    EXPECT_FALSE(window.itemSelected(kMultiList, 2));
  });
  EXPECT_EQ(Names(3, std::string("changed ") + kMultiList), form_.events);
}

// --- Long texts

const std::string kLongPath = "\\\\SRVLUMO\\" + std::string(200, 'c');

bool hasScrollBar(HWND box) { return (GetWindowLongW(box, GWL_STYLE) & WS_VSCROLL) != 0; }

/// The number of the line that the box shows at its top, from 0.
int firstLine(HWND box) {
  return static_cast<int>(SendMessageW(box, EM_GETFIRSTVISIBLELINE, 0, 0));
}

/// How many lines a box shows at once.
int linesOf(HWND box) {
  RECT room{};
  SendMessageW(box, EM_GETRECT, 0, reinterpret_cast<LPARAM>(&room));
  return static_cast<int>((room.bottom - room.top) / textSize(box, L"X").cy);
}

/// What a form with the progress controls shows of a text.
class LongTexts : public FormKeys, public testing::WithParamInterface<const char*> {
 protected:
  void look(const std::function<void(machine::FormWindow& window, HWND box)>& user) {
    lookAt(desktop_, GetParam(), [&user](machine::FormWindow& window) {
      ShowWindow(handleOf(window), SW_SHOW);
      user(window, controlOf(window, kBox));
    });
  }

  static constexpr const char* kBox = "txtProgress";
};

TEST_P(LongTexts, ABoxHasAScrollBarWhereItsTextHasMoreLinesThanItShows) {
  look([](machine::FormWindow& window, HWND box) {
    EXPECT_FALSE(hasScrollBar(box)) << "empty at first";
    window.setText(kBox, "Apro lo zip " + kLongPath + " in  " + kLongPath);
    EXPECT_TRUE(hasScrollBar(box));
    EXPECT_GE(linesOf(box), 3);
    window.setText(kBox, "Avvio apertura pacco.");
    EXPECT_FALSE(hasScrollBar(box));
    window.setText(
        kBox,
        "Apro lo zip D:\\prodotti\\packs\\bilancio\\bilancio-09.94.00.00.zip in  "
        "C:\\Documents and Settings\\mario.rossi\\Impostazioni locali\\Temp\\~pacchi1.tmp");
    EXPECT_FALSE(hasScrollBar(box)) << "two paths of daily use have room";
  });
}

TEST_P(LongTexts, ArrowsAndTheScrollBarReachTheLastLine) {
  look([this](machine::FormWindow& window, HWND box) {
    window.setText(kBox, "Apro lo zip " + kLongPath + kLongPath + " in  " + kLongPath);
    const auto count = static_cast<int>(SendMessageW(box, EM_GETLINECOUNT, 0, 0));
    const int last = count - linesOf(box);
    ASSERT_LE(1, last);
    SCROLLINFO bar{};
    bar.cbSize = sizeof bar;
    bar.fMask = SIF_RANGE | SIF_PAGE;
    ASSERT_TRUE(GetScrollInfo(box, SB_VERT, &bar));
    EXPECT_GT(bar.nMax - bar.nMin + 1, static_cast<int>(bar.nPage)) << "something can be scrolled";
    EXPECT_EQ(0, firstLine(box));
    SendMessageW(box, WM_VSCROLL, SB_BOTTOM, 0);
    EXPECT_EQ(last, firstLine(box));
    SendMessageW(box, WM_VSCROLL, SB_TOP, 0);
    for (int i = 1; i < count; ++i) {
      press(window, kBox, VK_DOWN);
    }
    EXPECT_EQ(last, firstLine(box));
    window.setText(kBox, kLongPath + kLongPath + kLongPath);
    EXPECT_EQ(0, firstLine(box)) << "each text begins at its top";
  });
}

INSTANTIATE_TEST_SUITE_P(Forms, LongTexts,
                         testing::Values("frmSelectInstall", "frmProdTrelvStandalone",
                                         "frmProdTrelvIntegrated", "frmProdTrelvSinglePack",
                                         "frmProdTrelvMaintain"));

// --- Long items

TEST_F(FormKeys, AListScrollsAsFarAsItsLongestItemWants) {
  lookAt(desktop_, "frmSelectInstall", [](machine::FormWindow& window) {
    HWND const list = controlOf(window, "ListAmb");
    const auto extent = [list] { return SendMessageW(list, LB_GETHORIZONTALEXTENT, 0, 0); };
    const RECT room = roomOf(list);
    window.addItem("ListAmb", "Installazione Standard");
    EXPECT_GT(room.right, extent());
    window.addItem("ListAmb",
                   "Installazione Integrata ( \\\\server\\" + std::string(200, 'm') + " )");
    const LRESULT longest = extent();
    EXPECT_LT(2 * room.right, longest);
    window.addItem("ListAmb", "breve");
    EXPECT_EQ(longest, extent());
    window.clearItems("ListAmb");
    EXPECT_EQ(0, extent());
  });
}

}  // namespace
}  // namespace trelv::win32
