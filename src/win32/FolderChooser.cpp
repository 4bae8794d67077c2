#include "win32/FolderChooser.h"

// The shell's header needs the system's, which ours brings.
#include <shlobj.h>

#include <array>

#include "win32/Components.h"
#include "win32/Owned.h"
#include "win32/Win32Text.h"

namespace trelv::win32 {
namespace {

struct ShellItemKind {
  using Handle = LPITEMIDLIST;
  static Handle none() { return nullptr; }
  static void close(Handle item) { CoTaskMemFree(item); }
};

/// The dialog stands: opens it at the folder that `first` (a text) names.
int CALLBACK opened(HWND dialog, UINT message, LPARAM, LPARAM first) {
  if (message == BFFM_INITIALIZED) {
    SendMessageW(dialog, BFFM_SETSELECTIONW, TRUE, first);
  }
  return 0;
}

}  // namespace

std::optional<std::string> chooseFolder(HWND owner, const std::string& sentence,
                                        const std::string& first) {
  const Components components;
  const std::wstring title = wide(sentence);
  const std::wstring begin = wide(first);
  BROWSEINFOW question{};
  question.hwndOwner = owner;
  question.lpszTitle = title.c_str();
  question.ulFlags = BIF_RETURNONLYFSDIRS | BIF_NEWDIALOGSTYLE | BIF_NONEWFOLDERBUTTON;
  question.lpfn = &opened;
  question.lParam = reinterpret_cast<LPARAM>(begin.c_str());
  const Owned<ShellItemKind> chosen(SHBrowseForFolderW(&question));
  std::array<wchar_t, MAX_PATH> path{};
  if (!chosen || SHGetPathFromIDListW(chosen.get(), path.data()) == FALSE) {
    return std::nullopt;
  }
  return utf8(path.data());
}

}  // namespace trelv::win32
