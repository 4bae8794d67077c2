// The set-up of the demonstration's products:
//
//   setup.exe PRODUCT VERSION SIDE FOLDER PROGRAM...
//   setup.exe -rimuovi PRODUCT SIDE FOLDER PROGRAM...    takes them away again
//   setup.exe                                            all of it as "setup.ini" beside it says
//
// puts each program into the folder (a copy of product.exe, which stands beside the set-up), notes
// the version in the folder and in the registry, and adds its own command line to the list
// "installazioni.txt" in the folder above the set-up's own. Exit code 0, or 1 with nothing noted.
#include <windows.h>

#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::wstring ownPath() {
  std::wstring path(32768, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
  return path;
}

std::wstring parent(const std::wstring& path) {
  const std::size_t end = path.find_last_of(L'\\');
  return end == std::wstring::npos ? std::wstring() : path.substr(0, end);
}

bool folderExists(const std::wstring& folder) {
  const DWORD attributes = GetFileAttributesW(folder.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool makeFolder(const std::wstring& folder) {
  if (folderExists(folder)) {
    return true;
  }
  const std::wstring above = parent(folder);
  return !above.empty() && (above.back() == L':' || makeFolder(above)) &&
         (CreateDirectoryW(folder.c_str(), nullptr) != 0 || folderExists(folder));
}

std::string utf8(const std::wstring& text) {
  const int length = static_cast<int>(text.size());
  const int size =
      WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
  std::string bytes(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), length, bytes.data(), size, nullptr, nullptr);
  return bytes;
}

bool writeLine(const std::wstring& file, const std::wstring& line, bool append) {
  const HANDLE handle =
      CreateFileW(file.c_str(), append ? FILE_APPEND_DATA : GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                  append ? OPEN_ALWAYS : CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle == INVALID_HANDLE_VALUE) {
    return false;
  }
  const std::string bytes = utf8(line) + "\r\n";
  DWORD written = 0;
  const bool done =
      WriteFile(handle, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) != 0;
  CloseHandle(handle);
  return done;
}

bool noteInRegistry(const std::wstring& product, const std::wstring& side,
                    const std::wstring& version) {
  HKEY key = nullptr;
  const std::wstring path = L"SOFTWARE\\LUMO\\Prodotti\\" + product;
  if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr, 0, KEY_SET_VALUE, nullptr, &key,
                      nullptr) != ERROR_SUCCESS) {
    return false;
  }
  const auto size = static_cast<DWORD>((version.size() + 1) * sizeof(wchar_t));
  const bool done =
      RegSetValueExW(key, side.c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(version.c_str()),
                     size) == ERROR_SUCCESS;
  RegCloseKey(key);
  return done;
}

std::vector<std::wstring> arguments() {
  std::vector<std::wstring> result;
  for (int i = 1; i < __argc; ++i) {
    result.emplace_back(__wargv[i]);
  }
  return result;
}

std::wstring configured(const wchar_t* key) {
  std::wstring value(1024, L'\0');
  const std::wstring file = parent(ownPath()) + L"\\setup.ini";
  value.resize(GetPrivateProfileStringW(L"Standalone", key, L"", value.data(),
                                        static_cast<DWORD>(value.size()), file.c_str()));
  return value;
}

std::wstring withVariables(const std::wstring& text) {
  std::wstring result(32768, L'\0');
  const DWORD length =
      ExpandEnvironmentStringsW(text.c_str(), result.data(), static_cast<DWORD>(result.size()));
  result.resize(length == 0 ? 0 : length - 1);
  return result;
}

/// The arguments that a set-up on its own stands for; none where it is not told.
std::vector<std::wstring> configuredArguments() {
  std::vector<std::wstring> result = {configured(L"Product"), configured(L"Version"), L"Standalone",
                                      withVariables(configured(L"Folder"))};
  if (result[0].empty() || result[3].empty()) {
    return {};
  }
  std::wistringstream programs(configured(L"Programs"));
  for (std::wstring program; programs >> program;) {
    result.push_back(program);
  }
  return result;
}

bool install(const std::vector<std::wstring>& words) {
  const std::wstring& version = words[1];
  const std::wstring& folder = words[3];
  const std::wstring ownFolder = parent(ownPath());
  if (!makeFolder(folder)) {
    return false;
  }
  for (std::size_t i = 4; i < words.size(); ++i) {
    const std::wstring target = folder + L"\\" + words[i];
    if (CopyFileW((ownFolder + L"\\product.exe").c_str(), target.c_str(), FALSE) == 0) {
      return false;
    }
  }
  return writeLine(folder + L"\\versione.txt", version, false) &&
         noteInRegistry(words[0], words[2], version) &&
         writeLine(parent(ownFolder) + L"\\installazioni.txt", GetCommandLineW(), true);
}

/// What is not there any more need not be removed; what else stands in the folder stays.
bool uninstall(const std::vector<std::wstring>& words) {
  const std::wstring& folder = words[3];
  for (std::size_t i = 4; i < words.size(); ++i) {
    DeleteFileW((folder + L"\\" + words[i]).c_str());
  }
  DeleteFileW((folder + L"\\versione.txt").c_str());
  RemoveDirectoryW(folder.c_str());
  return true;
}

}  // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, LPWSTR, int) {
  std::vector<std::wstring> words = arguments();
  if (words.empty()) {
    words = configuredArguments();
  }
  const bool removal = !words.empty() && words[0] == L"-rimuovi";
  return words.size() >= 4 && (removal ? uninstall(words) : install(words)) ? 0 : 1;
}
