#include "win32/ListControl.h"

#include "win32/Win32Text.h"
#include "win32/WindowClass.h"

namespace trelv::win32 {

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

ListControl::ListControl(HWND window) : window_(window) {
  if (isOfClass(window, L"ListBox")) {
    messages_ = &kListBox;
  } else if (isOfClass(window, L"ComboBox")) {
    messages_ = &kComboBox;
  }
}

LRESULT ListControl::send(UINT message, WPARAM first, LPARAM second) const {
  return SendMessageW(window_, message, first, second);
}

void ListControl::clear() const {
  if (messages_ != nullptr) {
    send(messages_->clear);
  }
}

void ListControl::add(const std::string& text, int data) const {
  if (messages_ == nullptr) {
    return;
  }
  // Inserting at -1 appends: the message that adds would sort.
  const LRESULT at = send(messages_->insert, static_cast<WPARAM>(-1),
                          reinterpret_cast<LPARAM>(wide(text).c_str()));
  if (at >= 0) {
    send(messages_->setData, static_cast<WPARAM>(at), data);
  }
}

int ListControl::count() const {
  return messages_ != nullptr ? static_cast<int>(send(messages_->count)) : 0;
}

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

int ListControl::selected() const {
  return messages_ != nullptr ? static_cast<int>(send(messages_->selected)) : -1;
}

void ListControl::select(int index) const {
  if (messages_ != nullptr && (index == -1 || has(index))) {
    send(messages_->select, static_cast<WPARAM>(index));
  }
}

}  // namespace trelv::win32
