#include "win32/ListControl.h"

#include <algorithm>

#include "win32/TextSize.h"
#include "win32/Win32Text.h"
#include "win32/WindowClass.h"

namespace trelv::win32 {

bool takesSeveralChoices(HWND listBox) {
  return (GetWindowLongW(listBox, GWL_STYLE) & (LBS_MULTIPLESEL | LBS_EXTENDEDSEL)) != 0;
}

struct ListControl::Messages {
  UINT clear;
  UINT insert;
  UINT count;
  UINT textLength;
  UINT text;
  UINT setData;
  UINT data;
  UINT select;
  UINT selected;
};

const ListControl::Messages ListControl::kListBox{LB_RESETCONTENT, LB_INSERTSTRING, LB_GETCOUNT,
                                                  LB_GETTEXTLEN,   LB_GETTEXT,      LB_SETITEMDATA,
                                                  LB_GETITEMDATA,  LB_SETCURSEL,    LB_GETCURSEL};

const ListControl::Messages ListControl::kComboBox{CB_RESETCONTENT, CB_INSERTSTRING, CB_GETCOUNT,
                                                   CB_GETLBTEXTLEN, CB_GETLBTEXT,    CB_SETITEMDATA,
                                                   CB_GETITEMDATA,  CB_SETCURSEL,    CB_GETCURSEL};

ListControl::ListControl(HWND window)
    : window_(window), messages_(isOfClass(window, L"ListBox") ? &kListBox : &kComboBox) {}

LRESULT ListControl::send(UINT message, WPARAM first, LPARAM second) const {
  return SendMessageW(window_, message, first, second);
}

void ListControl::clear() {
  send(messages_->clear);
  width_ = 0;
  makeRoomFor({});
}

void ListControl::add(const std::string& text, int data) {
  const std::wstring shown = wide(text);
  // Inserting at -1 appends: the message that adds would sort.
  const LRESULT at =
      send(messages_->insert, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(shown.c_str()));
  if (at >= 0) {
    send(messages_->setData, static_cast<WPARAM>(at), data);
    makeRoomFor(shown);
  }
}

/// The list box itself would cut what is longer than it is wide.
void ListControl::makeRoomFor(const std::wstring& text) {
  if (messages_ == &kListBox) {
    const LONG margin = 2 * GetSystemMetrics(SM_CXEDGE);
    width_ = std::max(width_, text.empty() ? 0 : textSize(window_, text).cx + margin);
    send(LB_SETHORIZONTALEXTENT, static_cast<WPARAM>(width_));
  }
}

int ListControl::count() const { return static_cast<int>(send(messages_->count)); }

std::string ListControl::text(int index) const {
  if (!has(index)) {
    return {};
  }
  const auto item = static_cast<WPARAM>(index);
  std::wstring buffer(static_cast<std::size_t>(send(messages_->textLength, item)) + 1, L'\0');
  const LRESULT length = send(messages_->text, item, reinterpret_cast<LPARAM>(buffer.data()));
  buffer.resize(static_cast<std::size_t>(length));
  return utf8(buffer);
}

int ListControl::data(int index) const {
  return has(index) ? static_cast<int>(send(messages_->data, static_cast<WPARAM>(index))) : 0;
}

void ListControl::setSelected(int index, bool selected) {
  if (has(index) && selected != isSelected(index)) {
    select(selected ? index : -1);
  }
}

int ListControl::selected() const { return static_cast<int>(send(messages_->selected)); }

void ListControl::select(int index) {
  if (index == -1 || has(index)) {
    send(messages_->select, static_cast<WPARAM>(index));
  }
}

bool MultiListControl::isSelected(int index) const {
  return has(index) && send(LB_GETSEL, static_cast<WPARAM>(index)) > 0;
}

void MultiListControl::setSelected(int index, bool selected) {
  if (has(index)) {
    send(LB_SETSEL, selected ? TRUE : FALSE, index);
  }
}

int MultiListControl::selected() const {
  for (int i = 0; i < count(); ++i) {
    if (isSelected(i)) {
      return i;
    }
  }
  return -1;
}

void MultiListControl::select(int index) {
  if (index == -1 || has(index)) {
    send(LB_SETSEL, FALSE, -1);
    setSelected(index, true);
  }
}

LRESULT MultiListControl::receive(UINT message, WPARAM first, LPARAM second) {
  if (message == WM_LBUTTONDBLCLK) {
    doubleClicked({static_cast<short>(LOWORD(second)), static_cast<short>(HIWORD(second))});
    return 0;
  }
  const LRESULT result = passOn(message, first, second);
  if ((message == WM_KEYDOWN || message == WM_CHAR) && first == VK_SPACE) {
    tellDialog(LBN_SELCHANGE);
  }
  return result;
}

/// The second of two clicks deselects the item again on some systems and does nothing on others.
void MultiListControl::doubleClicked(POINT point) {
  for (int i = 0; i < count(); ++i) {
    RECT row{};
    send(LB_GETITEMRECT, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&row));
    if (PtInRect(&row, point) != FALSE) {
      setSelected(i, true);
      tellDialog(LBN_SELCHANGE);
      break;
    }
  }
  tellDialog(LBN_DBLCLK);
}

void MultiListControl::tellDialog(WORD notification) const {
  HWND const list = window();
  SendMessageW(GetParent(list), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(list), notification),
               reinterpret_cast<LPARAM>(list));
}

}  // namespace trelv::win32
