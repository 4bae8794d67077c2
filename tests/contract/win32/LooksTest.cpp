#include <gtest/gtest.h>
#include <windows.h>
// The common controls' header needs the one above first.
#include <commctrl.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cwchar>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "contract/win32/Gallery.h"
#include "contract/win32/TestForm.h"
#include "contract/win32/TestProgram.h"
#include "win32/ButtonControl.h"
#include "win32/Owned.h"
#include "win32/TextSize.h"
#include "win32/Win32Desktop.h"
#include "win32/Win32Text.h"
#include "win32/WindowClass.h"
#include "win32/WindowContext.h"

// How the forms look, measured at the resolution and in the colours of the system that this runs
// on. The last tests repeat it in a process of its own at other resolutions and in high contrast,
// which a new process takes from the user's settings.
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

bool isBoxOfLines(HWND control) {
  return isOfClass(control, L"Edit") && (styleOf(control) & ES_MULTILINE) != 0;
}

/// Labels, buttons and text boxes whose text is larger than they are.
Names cutIn(HWND dialog) {
  Names cut;
  for (HWND const child : childrenOf(dialog)) {
    if (isBoxOfLines(child) && hidesLines(child)) {
      cut.push_back(nameOf(child));
    }
    const ButtonKind kind = buttonKind(child);
    if (!isLabel(child) && kind == ButtonKind::None) {
      continue;
    }
    const SIZE needed = kind == ButtonKind::None ? neededBy(child) : neededBy(child, kind);
    const RECT room = roomOf(child);
    // What a path lacks is told by the dots in it.
    const bool shortened = isLabel(child) && (styleOf(child) & SS_ELLIPSISMASK) == SS_PATHELLIPSIS;
    if (!shortened && (needed.cx > room.right || needed.cy > room.bottom)) {
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

int resolution() {
  HDC const screen = GetDC(nullptr);
  const int found = GetDeviceCaps(screen, LOGPIXELSX);
  ReleaseDC(nullptr, screen);
  return found;
}

/// Looks at every dialog (its name in capitals), filled as in daily use.
void lookAtAll(const std::function<void(HWND dialog, const std::string& name)>& look,
               Contents contents = Contents::Daily) {
  ASSERT_LE(9U, dialogs().size());
  Win32Desktop desktop;
  for (const std::string& dialog : dialogs()) {
    lookAt(desktop, dialog, [&](machine::FormWindow& window) {
      fillGallery(window, dialog, "", contents);
      look(handleOf(window), dialog);
    });
  }
}

TEST(Looks, NoTextIsCut) {
  for (const Contents contents : {Contents::Daily, Contents::Long}) {
    lookAtAll(
        [](HWND dialog, const std::string& name) { EXPECT_EQ(Names{}, cutIn(dialog)) << name; },
        contents);
  }
}

// The texts are Italian on every Windows.
TEST(Looks, NothingIsMirrored) {
  DWORD layout = LAYOUT_RTL;
  GetProcessDefaultLayout(&layout);
  EXPECT_EQ(0U, layout);
  lookAtAll([](HWND dialog, const std::string& name) {
    EXPECT_EQ(0, GetWindowLongW(dialog, GWL_EXSTYLE) & WS_EX_LAYOUTRTL) << name;
  });
}

TEST(Looks, NothingLiesOverAnything) {
  lookAtAll(
      [](HWND dialog, const std::string& name) { EXPECT_EQ(Names{}, crowdedIn(dialog)) << name; });
}

TEST(Looks, EachDialogFitsOnASmallScreenOfItsResolution) {
  lookAtAll([](HWND dialog, const std::string& name) {
    RECT place{};
    GetWindowRect(dialog, &place);
    // 800 by 600 points, less the task bar.
    EXPECT_GE(MulDiv(800, resolution(), 96), place.right - place.left) << name;
    EXPECT_GE(MulDiv(570, resolution(), 96), place.bottom - place.top) << name;
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

// --- Colours

/// How often each colour stands in a part of a control as it was painted.
std::map<COLORREF, int> coloursOf(HWND control, const RECT& area) {
  const SIZE room{area.right - area.left, area.bottom - area.top};
  HDC const window = GetDC(control);
  HDC const memory = CreateCompatibleDC(window);
  BITMAPINFO format{};
  format.bmiHeader = {sizeof(BITMAPINFOHEADER), room.cx, -room.cy, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
  void* bits = nullptr;
  HBITMAP const bitmap = CreateDIBSection(window, &format, DIB_RGB_COLORS, &bits, nullptr, 0);
  HGDIOBJ const before = SelectObject(memory, bitmap);
  BitBlt(memory, 0, 0, room.cx, room.cy, window, area.left, area.top, SRCCOPY);
  GdiFlush();
  std::map<COLORREF, int> found;
  for (LONG i = 0; i < room.cx * room.cy; ++i) {
    ++found[static_cast<const DWORD*>(bits)[i] & 0xFFFFFFU];
  }
  SelectObject(memory, before);
  DeleteObject(bitmap);
  DeleteDC(memory);
  ReleaseDC(control, window);
  return found;
}

/// How light a colour is to the eye, 0 to 1.
double lightness(COLORREF colour) {
  const auto part = [colour](unsigned shift) -> double {
    const double value = ((colour >> shift) & 0xFFU) / 255.0;
    return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * part(16) + 0.7152 * part(8) + 0.0722 * part(0);
}

/// Of the colours that differ most from the ground, which is what most of the area has: 1 for the
/// same, 21 for black on white. A few points do not count.
double contrastIn(HWND control, const RECT& area) {
  const std::map<COLORREF, int> colours = coloursOf(control, area);
  const auto ground = std::max_element(
      colours.begin(), colours.end(),
      [](const auto& one, const auto& other) { return one.second < other.second; });
  double most = 1;
  for (const auto& [colour, points] : colours) {
    const double one = lightness(colour) + 0.05;
    const double other = lightness(ground->first) + 0.05;
    most = points < 4 ? most : std::max(most, std::max(one, other) / std::min(one, other));
  }
  return most;
}

bool showsText(HWND control) {
  return !textOf(control).empty() && IsWindowEnabled(control) != FALSE &&
         (isLabel(control) || buttonKind(control) != ButtonKind::None ||
          isOfClass(control, L"Edit") || isOfClass(control, L"ListBox"));
}

/// Half of a group box's caption, from a quarter on: where no line of the box is.
RECT captionOf(HWND box) {
  constexpr LONG kIndent = 9;
  const SIZE size = textSize(box, withoutMarks(textOf(box)));
  return {kIndent + size.cx / 4, 0, kIndent + size.cx * 3 / 4, size.cy};
}

/// The inner parts of the tabs of all pages.
std::vector<RECT> pagesOf(HWND tabs) {
  std::vector<RECT> pages;
  const auto count = SendMessageW(tabs, TCM_GETITEMCOUNT, 0, 0);
  for (int i = 0; i < count; ++i) {
    RECT& place = pages.emplace_back();
    SendMessageW(tabs, TCM_GETITEMRECT, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&place));
    InflateRect(&place, -3, -3);
  }
  return pages;
}

/// Where a control shows texts.
std::vector<RECT> textsOf(HWND control) {
  if (isOfClass(control, WC_TABCONTROLW)) {
    return pagesOf(control);
  }
  if (holdsOthers(control)) {
    return {captionOf(control)};
  }
  return showsText(control) ? std::vector<RECT>{roomOf(control)} : std::vector<RECT>{};
}

TEST(Looks, EachTextStandsOutFromItsGround) {
  lookAtAll([](HWND dialog, const std::string& name) {
    ShowWindow(dialog, SW_SHOW);
    RedrawWindow(dialog, nullptr, nullptr,
                 RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
    for (HWND const child : childrenOf(dialog)) {
      for (const RECT& area : textsOf(child)) {
        // Disabled pages are as grey as the system's own.
        const double least = isOfClass(child, WC_TABCONTROLW) ? 2 : 4.5;
        EXPECT_LE(least, contrastIn(child, area)) << name << ": " << nameOf(child);
      }
    }
  });
}

// --- Other settings of the user

/// A value below HKEY_CURRENT_USER, as long as this lives.
class UserSetting {
 public:
  UserSetting(const std::wstring& key, const wchar_t* name, DWORD type, const void* data,
              DWORD size)
      : name_(name) {
    HKEY opened = nullptr;
    RegCreateKeyExW(HKEY_CURRENT_USER, key.c_str(), 0, nullptr, 0, KEY_QUERY_VALUE | KEY_SET_VALUE,
                    nullptr, &opened, nullptr);
    key_ = OwnedKey(opened);
    had_ = RegQueryValueExW(key_.get(), name, nullptr, &type_, before_.data(), &length_) ==
           ERROR_SUCCESS;
    RegSetValueExW(key_.get(), name, 0, type, static_cast<const BYTE*>(data), size);
  }
  ~UserSetting() {
    if (had_) {
      RegSetValueExW(key_.get(), name_, 0, type_, before_.data(), length_);
    } else {
      RegDeleteValueW(key_.get(), name_);
    }
  }
  UserSetting(const UserSetting&) = delete;
  UserSetting& operator=(const UserSetting&) = delete;

 private:
  OwnedKey key_;
  const wchar_t* name_;
  bool had_ = false;
  std::array<BYTE, 256> before_{};
  DWORD type_ = 0;
  DWORD length_ = 256;
};

/// Exit code of these tests in a process of their own, which prints what fails.
DWORD outcomeOf(const std::wstring& tests) {
  std::wstring command =
      L"\"" + contract::testProgramPath() + L"\" --gtest_brief=1 --gtest_filter=" + tests;
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  DWORD code = 99;
  if (CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                     &process) != FALSE) {
    WaitForSingleObject(process.hProcess, 120000);
    GetExitCodeProcess(process.hProcess, &code);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
  }
  return code;
}

/// These fail unless the process has the settings that it was started for, and are run by the tests
/// below only.
constexpr const wchar_t* kExpected = L"TRELV_LOOKS_AT";

std::wstring expected() {
  wchar_t value[16] = {};
  GetEnvironmentVariableW(kExpected, value, 16);
  return value;
}

TEST(LooksElsewhere, TheProcessHasTheSettingsThatItWasStartedFor) {
  const std::wstring settings = expected();
  if (settings == L"contrast") {
    EXPECT_EQ(RGB(0, 0, 0), GetSysColor(COLOR_WINDOW));
    EXPECT_EQ(RGB(255, 255, 255), GetSysColor(COLOR_WINDOWTEXT));
  } else if (!settings.empty()) {
    EXPECT_EQ(settings, std::to_wstring(resolution()));
  }
}

class LooksAtResolution : public testing::TestWithParam<DWORD> {};

TEST_P(LooksAtResolution, NothingIsCutOrCrowded) {
  const DWORD dots = GetParam();
  const UserSetting setting(L"Control Panel\\Desktop", L"LogPixels", REG_DWORD, &dots, sizeof dots);
  SetEnvironmentVariableW(kExpected, std::to_wstring(dots).c_str());
  EXPECT_EQ(0U, outcomeOf(L"LooksElsewhere.*:Looks.NoTextIsCut:Looks.NothingLiesOverAnything:"
                          L"Looks.EachDialogFits*"));
  SetEnvironmentVariableW(kExpected, nullptr);
}

// 100, 125, 150 and 200 %.
INSTANTIATE_TEST_SUITE_P(Sizes, LooksAtResolution, testing::Values(96, 120, 144, 192));

TEST(LooksInHighContrast, EachTextStandsOut) {
  const std::map<const wchar_t*, std::vector<const wchar_t*>> colours{
      {L"0 0 0",
       {L"Window", L"ButtonFace", L"Menu", L"Scrollbar", L"InfoWindow", L"ButtonAlternateFace"}},
      {L"255 255 255",
       {L"WindowText", L"ButtonText", L"MenuText", L"InfoText", L"WindowFrame", L"ButtonHilight",
        L"ButtonShadow", L"ButtonLight", L"ButtonDkShadow", L"HilightText"}},
      {L"0 255 0", {L"GrayText"}},
      {L"0 0 255", {L"Hilight"}}};
  // The colours are not those of a theme: the system draws without one.
  const UserSetting withoutTheme(L"Software\\Microsoft\\Windows\\CurrentVersion\\ThemeManager",
                                 L"ThemeActive", REG_SZ, L"0", 2 * sizeof(wchar_t));
  std::vector<std::unique_ptr<UserSetting>> settings;
  for (const auto& [value, names] : colours) {
    for (const wchar_t* const name : names) {
      settings.push_back(std::make_unique<UserSetting>(
          L"Control Panel\\Colors", name, REG_SZ, value,
          static_cast<DWORD>((std::wcslen(value) + 1) * sizeof(wchar_t))));
    }
  }
  SetEnvironmentVariableW(kExpected, L"contrast");
  EXPECT_EQ(0U, outcomeOf(L"LooksElsewhere.*:Looks.*"));
  SetEnvironmentVariableW(kExpected, nullptr);
}

}  // namespace
}  // namespace trelv::win32
