// A program of the demonstration's products: writes what it was started with into the file of its
// own name with the ending ".avvio.txt" (UTF-8) and ends. The file appears whole or not at all.
#include <windows.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

std::wstring ownPath() {
  std::wstring path(32768, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
  return path;
}

std::wstring currentFolder() {
  std::wstring folder(32768, L'\0');
  folder.resize(GetCurrentDirectoryW(static_cast<DWORD>(folder.size()), folder.data()));
  return folder;
}

/// The variables through which the manager tells a product that it runs hosted.
std::vector<std::wstring> hostVariables() {
  std::vector<std::wstring> variables;
  wchar_t* const block = GetEnvironmentStringsW();
  for (const wchar_t* entry = block; *entry != L'\0'; entry += std::wstring(entry).size() + 1) {
    const std::wstring variable = entry;
    if (variable.starts_with(L"MVQ2_") || variable.starts_with(L"MVBil_") ||
        variable.starts_with(L"LUDA")) {
      variables.push_back(variable);
    }
  }
  FreeEnvironmentStringsW(block);
  std::sort(variables.begin(), variables.end());
  return variables;
}

std::string utf8(const std::wstring& text) {
  const int length = static_cast<int>(text.size());
  const int size =
      WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
  std::string bytes(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), length, bytes.data(), size, nullptr, nullptr);
  return bytes;
}

bool writeWhole(const std::wstring& file, const std::string& bytes) {
  const std::wstring unfinished = file + L".new";
  const HANDLE handle = CreateFileW(unfinished.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle == INVALID_HANDLE_VALUE) {
    return false;
  }
  DWORD written = 0;
  const bool done =
      WriteFile(handle, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) != 0;
  CloseHandle(handle);
  return done && MoveFileExW(unfinished.c_str(), file.c_str(), MOVEFILE_REPLACE_EXISTING) != 0;
}

}  // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, LPWSTR, int) {
  std::wstring report = std::wstring(L"Linea di comando: ") + GetCommandLineW() +
                        L"\r\nCartella: " + currentFolder() + L"\r\n";
  for (const std::wstring& variable : hostVariables()) {
    report += variable + L"\r\n";
  }
  const std::wstring program = ownPath();
  return writeWhole(program.substr(0, program.size() - 4) + L".avvio.txt", utf8(report)) ? 0 : 1;
}
