#include <gtest/gtest.h>
#include <windows.h>
// The common controls' header needs the one above first.
#include <commctrl.h>

#include <algorithm>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "contract/win32/Gallery.h"
#include "contract/win32/TestForm.h"
#include "win32/ButtonControl.h"
#include "win32/TextSize.h"
#include "win32/Win32Desktop.h"
#include "win32/Win32Text.h"
#include "win32/WindowClass.h"
#include "win32/WindowContext.h"

// How the forms look, measured at the resolution of the system that this runs on. For another one
// set LogPixels under HKEY_CURRENT_USER, "Control Panel\Desktop", and start the prefix anew.
namespace trelv::win32 {
namespace {

using Names = std::vector<std::string>;

std::wstring withoutMarks(std::wstring text) {
  std::erase(text, L'&');
  return text;
}

RECT placeOf(HWND control) {
  RECT place{};
  GetWindowRect(control, &place);
  MapWindowPoints(nullptr, GetParent(control), reinterpret_cast<POINT*>(&place), 2);
  return place;
}

LONG styleOf(HWND control) { return GetWindowLongW(control, GWL_STYLE); }

bool isLabel(HWND control) {
  const LONG kind = styleOf(control) & SS_TYPEMASK;
  return isOfClass(control, L"Static") &&
         (kind == SS_LEFT || kind == SS_RIGHT || kind == SS_CENTER);
}

/// What a label needs, broken into lines where it has room for several.
SIZE neededBy(HWND label) {
  const std::wstring text = withoutMarks(textOf(label));
  const WindowContext context(label);
  RECT needed{0, 0, roomOf(label).right, 0};
  DrawTextW(context.get(), text.c_str(), static_cast<int>(text.size()), &needed,
            DT_CALCRECT | DT_WORDBREAK | DT_NOPREFIX);
  return {needed.right, needed.bottom};
}

/// What a button needs: its text, what is drawn before it (of an option or a check box), the edges.
SIZE neededBy(HWND button, ButtonKind kind) {
  SIZE needed = textSize(button, withoutMarks(textOf(button)));
  const int edge = GetSystemMetrics(SM_CXEDGE);
  if (kind == ButtonKind::Push) {
    needed.cx += 4 * edge;
    needed.cy += 2 * edge;
  } else {
    needed.cx += GetSystemMetrics(SM_CXMENUCHECK) + edge;
  }
  return needed;
}

std::string nameOf(HWND control) {
  const std::string name = controlName(GetDlgCtrlID(control));
  return name.empty() ? utf8(textOf(control)) : name;
}

/// Labels and buttons whose text is larger than they are.
Names cutIn(HWND dialog) {
  Names cut;
  for (HWND const child : childrenOf(dialog)) {
    const ButtonKind kind = buttonKind(child);
    if (!isLabel(child) && kind == ButtonKind::None) {
      continue;
    }
    const SIZE needed = kind == ButtonKind::None ? neededBy(child) : neededBy(child, kind);
    const RECT room = roomOf(child);
    if (needed.cx > room.right || needed.cy > room.bottom) {
      cut.push_back(nameOf(child));
    }
  }
  return cut;
}

bool holdsOthers(HWND control) {
  return isOfClass(control, WC_TABCONTROLW) ||
         (isOfClass(control, L"Button") && (styleOf(control) & BS_TYPEMASK) == BS_GROUPBOX);
}

/// Controls that lie over another one, or reach over the dialog's edge.
Names crowdedIn(HWND dialog) {
  Names crowded;
  const RECT whole = roomOf(dialog);
  const std::vector<HWND> all = childrenOf(dialog);
  for (auto one = all.begin(); one != all.end(); ++one) {
    const RECT place = placeOf(*one);
    RECT shared{};
    IntersectRect(&shared, &place, &whole);
    if (EqualRect(&shared, &place) == FALSE) {
      crowded.push_back(nameOf(*one) + " over the edge");
    }
    for (auto other = one + 1; other != all.end(); ++other) {
      const RECT otherPlace = placeOf(*other);
      if (!holdsOthers(*one) && !holdsOthers(*other) &&
          IntersectRect(&shared, &place, &otherPlace) != FALSE) {
        crowded.push_back(nameOf(*one) + " over " + nameOf(*other));
      }
    }
  }
  return crowded;
}

/// The letters that are pressed with Alt, in the order of the controls.
std::wstring lettersIn(HWND dialog) {
  std::wstring letters;
  for (HWND const child : childrenOf(dialog)) {
    const std::wstring text = textOf(child);
    const std::size_t mark = text.find(L'&');
    const bool plain = isLabel(child) && (styleOf(child) & SS_NOPREFIX) != 0;
    if (!plain && mark != std::wstring::npos && mark + 1 < text.size()) {
      letters += static_cast<wchar_t>(
          reinterpret_cast<UINT_PTR>(CharUpperW(reinterpret_cast<LPWSTR>(text[mark + 1]))));
    }
  }
  return letters;
}

/// Names of the controls that the Tab key goes to, from the first.
Names keyboardOrder(HWND dialog) {
  Names order;
  for (HWND const child : childrenOf(dialog)) {
    if ((styleOf(child) & WS_TABSTOP) != 0) {
      order.push_back(nameOf(child));
    }
  }
  return order;
}

/// Looks at every dialog (its name in capitals), filled as in daily use.
void lookAtAll(const std::function<void(HWND dialog, const std::string& name)>& look) {
  ASSERT_LE(9U, dialogs().size());
  Win32Desktop desktop;
  for (const std::string& dialog : dialogs()) {
    lookAt(desktop, dialog, [&](machine::FormWindow& window) {
      fillGallery(window, dialog, "");
      look(handleOf(window), dialog);
    });
  }
}

TEST(Looks, NoTextIsCut) {
  lookAtAll(
      [](HWND dialog, const std::string& name) { EXPECT_EQ(Names{}, cutIn(dialog)) << name; });
}

TEST(Looks, NothingLiesOverAnything) {
  lookAtAll(
      [](HWND dialog, const std::string& name) { EXPECT_EQ(Names{}, crowdedIn(dialog)) << name; });
}

TEST(Looks, EachDialogFitsOnASmallScreenOfItsResolution) {
  HDC const screen = GetDC(nullptr);
  const int resolution = GetDeviceCaps(screen, LOGPIXELSX);
  ReleaseDC(nullptr, screen);
  lookAtAll([resolution](HWND dialog, const std::string& name) {
    RECT place{};
    GetWindowRect(dialog, &place);
    // 800 by 600 points, less the task bar.
    EXPECT_GE(MulDiv(800, resolution, 96), place.right - place.left) << name;
    EXPECT_GE(MulDiv(570, resolution, 96), place.bottom - place.top) << name;
  });
}

TEST(Looks, NoTwoControlsOfADialogHaveTheSameLetter) {
  lookAtAll([](HWND dialog, const std::string& name) {
    const std::wstring letters = lettersIn(dialog);
    EXPECT_EQ(letters.size(), std::set<wchar_t>(letters.begin(), letters.end()).size())
        << name << ": " << utf8(letters);
  });
}

TEST(Looks, ThePagesOfTheSessionGoOnByEnter) {
  lookAtAll([](HWND dialog, const std::string& name) {
    if (GetDlgItem(dialog, controlId("cmdExec")) != nullptr) {
      EXPECT_EQ(static_cast<LRESULT>(MAKELONG(controlId("cmdExec"), DC_HASDEFID)),
                SendMessageW(dialog, DM_GETDEFID, 0, 0))
          << name;
    }
  });
}

TEST(Looks, TheKeyboardGoesFromWhatIsChosenToTheButtons) {
  const std::map<std::string, Names> expected{
      {"FRMSELECTINSTALL", {"ListAmb", "txtProgress", "cmdExec", "cmdExit", "cmdhelp"}},
      {"FRMPRODTRELVSTANDALONE",
       {"ListProd", "txtProgress", "cmdback", "cmdExec", "cmdExit", "cmdhelp", "labTab"}},
      {"FRMPRODTRELVINTEGRATED",
       {"ListProd", "txtProgress", "cmdback", "cmdExec", "cmdExit", "cmdhelp"}},
      {"FRMPRODTRELVSINGLEPACK", {"ListProd", "txtProgress", "cmdExec", "cmdExit"}},
      {"FRMINFO", {"Command1"}},
      {"FRMINPUT", {"txtInput", "btnBrowse", "btnOk", "btnCancel"}}};
  std::size_t seen = 0;
  lookAtAll([&](HWND dialog, const std::string& name) {
    if (const auto found = expected.find(name); found != expected.end()) {
      ++seen;
      EXPECT_EQ(found->second, keyboardOrder(dialog)) << name;
    }
  });
  EXPECT_EQ(expected.size(), seen);
}

}  // namespace
}  // namespace trelv::win32
