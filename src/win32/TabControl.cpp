#include "win32/TabControl.h"

// The headers of the common controls and of messages need the system's, which ours brings.
#include <commctrl.h>
#include <windowsx.h>

#include "win32/Win32Text.h"
#include "win32/WindowContext.h"

namespace trelv::win32 {
namespace {

/// What the control draws around a page's text, on each side, at least.
constexpr int kPadding = 4;

/// As the control takes it: a single "&" would underline the letter behind it.
std::wstring shownText(const std::string& text) {
  std::wstring shown;
  for (const wchar_t letter : wide(text)) {
    shown.append(letter == L'&' ? 2 : 1, letter);
  }
  return shown;
}

}  // namespace

LRESULT TabControl::receive(UINT message, WPARAM first, LPARAM second) {
  switch (message) {
    case WM_LBUTTONDOWN:
      if (const int page = pageAt(second); page >= 0 && !enabled(page)) {
        return 0;
      }
      break;
    case WM_KEYDOWN:
      if (arrow(first)) {
        return 0;
      }
      break;
    case TCM_SETCURFOCUS:
      // What the program behind a screen reader sends to choose a page.
      if (!enabled(static_cast<int>(first))) {
        return 0;
      }
      break;
    case WM_PAINT: {
      const LRESULT result = passOn(message, first, second);
      drawDisabledPages();
      return result;
    }
    default:
      break;
  }
  return passOn(message, first, second);
}

void TabControl::clear() {
  pages_.clear();
  SendMessageW(window(), TCM_DELETEALLITEMS, 0, 0);
}

void TabControl::add(const std::string& text, int data) {
  std::wstring shown = shownText(text);
  TCITEMW item{};
  item.mask = TCIF_TEXT;
  item.pszText = shown.data();
  pages_.push_back({text, data});
  SendMessageW(window(), TCM_INSERTITEMW, pages_.size() - 1, reinterpret_cast<LPARAM>(&item));
}

std::string TabControl::text(int index) const {
  return has(index) ? pages_[static_cast<std::size_t>(index)].text : std::string();
}

int TabControl::data(int index) const {
  return has(index) ? pages_[static_cast<std::size_t>(index)].data : 0;
}

void TabControl::setSelected(int index, bool selected) {
  if (selected) {
    select(index);
  }
}

int TabControl::selected() const {
  return static_cast<int>(SendMessageW(window(), TCM_GETCURSEL, 0, 0));
}

void TabControl::select(int index) {
  if (has(index)) {
    SendMessageW(window(), TCM_SETCURSEL, static_cast<WPARAM>(index), 0);
  }
}

void TabControl::setEnabled(int index, bool enabled) {
  if (has(index)) {
    pages_[static_cast<std::size_t>(index)].enabled = enabled;
    InvalidateRect(window(), nullptr, TRUE);
  }
}

bool TabControl::enabled(int index) const {
  return has(index) && pages_[static_cast<std::size_t>(index)].enabled;
}

// --- What the user does

void TabControl::turn(bool forwards) {
  const int step = forwards ? 1 : -1;
  int page = nextEnabled(selected(), step);
  if (page < 0) {
    page = nextEnabled(forwards ? -1 : count(), step);
  }
  choose(page);
}

/// The control itself would stop before a disabled page.
bool TabControl::arrow(WPARAM key) {
  switch (key) {
    case VK_LEFT:
      choose(nextEnabled(selected(), -1));
      return true;
    case VK_RIGHT:
      choose(nextEnabled(selected(), 1));
      return true;
    case VK_HOME:
      choose(nextEnabled(-1, 1));
      return true;
    case VK_END:
      choose(nextEnabled(count(), -1));
      return true;
    default:
      return false;
  }
}

/// -1: there is none in this direction.
int TabControl::nextEnabled(int from, int step) const {
  int page = from + step;
  while (has(page) && !enabled(page)) {
    page += step;
  }
  return has(page) ? page : -1;
}

/// As a click does it: the control tells its dialog.
void TabControl::choose(int index) {
  if (has(index) && index != selected()) {
    SendMessageW(window(), TCM_SETCURFOCUS, static_cast<WPARAM>(index), 0);
  }
}

int TabControl::pageAt(LPARAM place) const {
  TCHITTESTINFO test{};
  test.pt = {GET_X_LPARAM(place), GET_Y_LPARAM(place)};
  return static_cast<int>(SendMessageW(window(), TCM_HITTEST, 0, reinterpret_cast<LPARAM>(&test)));
}

// --- Drawing

/// Over what the control drew, so that all else looks as the system's style wants it.
void TabControl::drawDisabledPages() const {
  const WindowContext context(window());
  for (int i = 0; i < count(); ++i) {
    if (!enabled(i)) {
      drawGrey(context.get(), i);
    }
  }
}

void TabControl::drawGrey(HDC context, int index) const {
  RECT place{};
  SendMessageW(window(), TCM_GETITEMRECT, static_cast<WPARAM>(index),
               reinterpret_cast<LPARAM>(&place));
  InflateRect(&place, -kPadding, -2);
  // The column beside the text, drawn wide, takes the text away and keeps any shade from above.
  StretchBlt(context, place.left, place.top, place.right - place.left, place.bottom - place.top,
             context, place.left, place.top, 1, place.bottom - place.top, SRCCOPY);
  SetBkMode(context, TRANSPARENT);
  SetTextColor(context, GetSysColor(COLOR_GRAYTEXT));
  const std::wstring text = shownText(pages_[static_cast<std::size_t>(index)].text);
  DrawTextW(context, text.c_str(), static_cast<int>(text.size()), &place,
            DT_CENTER | DT_VCENTER | DT_SINGLELINE);
}

}  // namespace trelv::win32
