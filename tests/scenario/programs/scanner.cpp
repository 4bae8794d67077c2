// A virus scanner: scanner.exe MILLISECONDS RUNNING STOP HELD FOLDER...
//
// Opens each file that comes new into one of the folders or below without sharing it, and keeps it
// so long. Makes the file RUNNING when it has begun, ends once the file STOP is there, or after two
// minutes (exit code 1), and then writes what it held into the file HELD, a path a line. Texts
// (*.txt) are left alone: the set-ups of the tests note there what they did.
#include <windows.h>

#include <set>
#include <string>
#include <vector>

namespace {

struct Held {
  HANDLE file;
  DWORD since;
};

bool exists(const wchar_t* path) { return GetFileAttributesW(path) != INVALID_FILE_ATTRIBUTES; }

bool isText(const std::wstring& name) {
  return name.size() > 4 && name.substr(name.size() - 4) == L".txt";
}

void findFiles(const std::wstring& folder, std::vector<std::wstring>& found) {
  WIN32_FIND_DATAW data{};
  const HANDLE search = FindFirstFileW((folder + L"\\*").c_str(), &data);
  if (search == INVALID_HANDLE_VALUE) {
    return;
  }
  do {
    const std::wstring name = data.cFileName;
    if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
      if (!isText(name)) {
        found.push_back(folder + L"\\" + name);
      }
    } else if (name != L"." && name != L"..") {
      findFiles(folder + L"\\" + name, found);
    }
  } while (FindNextFileW(search, &data) != FALSE);
  FindClose(search);
}

std::vector<std::wstring> filesIn(int count, wchar_t** folders) {
  std::vector<std::wstring> found;
  for (int i = 0; i < count; ++i) {
    findFiles(folders[i], found);
  }
  return found;
}

std::string utf8(const std::wstring& text) {
  std::string bytes(text.size() * 3, '\0');
  bytes.resize(static_cast<std::size_t>(
      WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), bytes.data(),
                          static_cast<int>(bytes.size()), nullptr, nullptr)));
  return bytes;
}

void writeText(const wchar_t* path, const std::string& text) {
  const HANDLE file =
      CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  DWORD written = 0;
  WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
  CloseHandle(file);
}

void letGo(std::vector<Held>& held, DWORD longest) {
  for (std::size_t i = held.size(); i > 0; --i) {
    if (GetTickCount() - held[i - 1].since >= longest) {
      CloseHandle(held[i - 1].file);
      held.erase(held.begin() + static_cast<std::ptrdiff_t>(i - 1));
    }
  }
}

}  // namespace

int wmain(int count, wchar_t** words) {
  if (count < 6) {
    return 2;
  }
  const DWORD longest = std::stoul(words[1]);
  const std::vector<std::wstring> before = filesIn(count - 5, words + 5);
  std::set<std::wstring> known(before.begin(), before.end());
  std::vector<Held> held;
  std::string told;
  writeText(words[2], "");
  const DWORD begun = GetTickCount();
  while (!exists(words[3]) && GetTickCount() - begun < 120000) {
    for (const std::wstring& path : filesIn(count - 5, words + 5)) {
      // What its writer still has open is tried at the next look.
      const HANDLE file = known.count(path) != 0
                              ? INVALID_HANDLE_VALUE
                              : CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                            FILE_ATTRIBUTE_NORMAL, nullptr);
      if (file != INVALID_HANDLE_VALUE) {
        known.insert(path);
        held.push_back({file, GetTickCount()});
        told += utf8(path) + "\n";
      }
    }
    letGo(held, longest);
    Sleep(1);
  }
  letGo(held, 0);
  writeText(words[4], told);
  return exists(words[3]) ? 0 : 1;
}
