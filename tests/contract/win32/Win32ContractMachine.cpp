#include <windows.h>
// The common controls' header needs the one above first.
#include <commctrl.h>
#include <tlhelp32.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <functional>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <utility>
#include <vector>

#include "contract/ContractMachine.h"
#include "contract/win32/TestForm.h"
#include "contract/win32/TestProgram.h"
#include "win32/ControlNames.h"
#include "win32/Owned.h"
#include "win32/Win32FileUse.h"
#include "win32/Win32Machine.h"
#include "win32/Win32Text.h"

/// The suite's side on a real Windows.
namespace trelv::contract {
namespace {

using win32::controlOf;
using win32::handleOf;
using win32::utf8;
using win32::wide;

void require(bool done, const std::string& what) {
  if (!done) {
    throw std::runtime_error(what + ": " + std::to_string(GetLastError()));
  }
}

void require(LSTATUS status, const std::string& what) {
  SetLastError(static_cast<DWORD>(status));
  require(status == ERROR_SUCCESS, what);
}

std::string uniqueName() {
  static int made = 0;
  return "trelv-contract-" + std::to_string(GetTickCount()) + "-" +
         std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++made);
}

win32::OwnedFile openFile(const std::string& path, DWORD access, DWORD sharing, DWORD disposition) {
  win32::OwnedFile file(CreateFileW(wide(path).c_str(), access, sharing, nullptr, disposition,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
  require(static_cast<bool>(file), "opening " + path);
  return file;
}

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

std::string readBytes(const std::string& path) {
  const win32::OwnedFile file = openFile(path, GENERIC_READ, kShareAll, OPEN_EXISTING);
  std::string bytes(GetFileSize(file.get(), nullptr), '\0');
  DWORD got = 0;
  require(ReadFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &got, nullptr) !=
                  FALSE &&
              got == bytes.size(),
          "reading " + path);
  return bytes;
}

void writeBytes(const std::string& path, std::string_view bytes) {
  const win32::OwnedFile file = openFile(path, GENERIC_WRITE, 0, CREATE_ALWAYS);
  DWORD written = 0;
  require(WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written,
                    nullptr) != FALSE &&
              written == bytes.size(),
          "writing " + path);
}

template <class Function>
Function* kernelFunction(const char* name) {
  return std::bit_cast<Function*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), name));
}

/// The name of a path on the Unix side, where this Windows is Wine; empty elsewhere.
std::string unixName(const std::string& path) {
  using UnixName = char* CDECL(const wchar_t* path);
  auto* const ask = kernelFunction<UnixName>("wine_get_unix_file_name");
  char* const found = ask != nullptr ? ask(wide(path).c_str()) : nullptr;
  const std::string result = found != nullptr ? found : "";
  HeapFree(GetProcessHeap(), 0, found);
  return result;
}

win32::OwnedProcess start(std::wstring commandLine) {
  STARTUPINFOW startup{};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION started{};
  require(CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                         &startup, &started) != FALSE,
          "starting " + utf8(commandLine));
  const win32::OwnedProcess thread(started.hThread);
  return win32::OwnedProcess(started.hProcess);
}

bool isThere(const std::string& path) {
  return GetFileAttributesW(wide(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

/// Runs a program of the Unix side until `path` is there, or is gone. Its end cannot be waited for
/// from this side.
void runUnix(const std::string& commandLine, const std::string& path, bool there) {
  start(wide("Z:\\bin\\" + commandLine));
  for (int i = 0; i < 500 && isThere(path) != there; ++i) {
    Sleep(10);
  }
  require(isThere(path) == there, commandLine);
}

void removeLink(const std::string& path) {
  // Wine looks at the folder that the link leads to and refuses.
  if (RemoveDirectoryW(wide(path).c_str()) == FALSE && !unixName(path).empty()) {
    runUnix("rm " + unixName(path), path, false);
  }
}

/// Deletes a folder with its contents; links in it are removed, not followed. Failures leave it:
/// a test's rubbish is no failure of the next test, whose folder has another name.
void removeTree(const std::wstring& folder) {
  WIN32_FIND_DATAW data{};
  {
    const win32::OwnedSearch search(FindFirstFileW((folder + L"\\*").c_str(), &data));
    BOOL more = search ? TRUE : FALSE;
    for (; more != FALSE; more = FindNextFileW(search.get(), &data)) {
      const std::wstring name = data.cFileName;
      const std::wstring path = folder + L"\\" + name;
      const bool link = (data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
      if (name == L"." || name == L"..") {
        continue;
      }
      SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
      if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
        DeleteFileW(path.c_str());
      } else if (link) {
        removeLink(utf8(path));
      } else {
        removeTree(path);
      }
    }
  }
  RemoveDirectoryW(folder.c_str());
}

/// Deletes a key with its sub-keys.
void removeKeys(HKEY parent, const std::wstring& path) {
  {
    HKEY opened = nullptr;
    if (RegOpenKeyExW(parent, path.c_str(), 0, KEY_READ, &opened) != ERROR_SUCCESS) {
      return;
    }
    const win32::OwnedKey key(opened);
    std::array<wchar_t, 256> name{};
    auto length = static_cast<DWORD>(name.size());
    while (RegEnumKeyExW(key.get(), 0, name.data(), &length, nullptr, nullptr, nullptr, nullptr) ==
           ERROR_SUCCESS) {
      removeKeys(key.get(), name.data());
      length = static_cast<DWORD>(name.size());
    }
  }
  RegDeleteKeyW(parent, path.c_str());
}

/// Opens a key for writing; makes it when it is missing.
win32::OwnedKey makeKey(HKEY hive, const std::wstring& path) {
  HKEY made = nullptr;
  require(RegCreateKeyExW(hive, path.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &made, nullptr),
          "making " + utf8(path));
  return win32::OwnedKey(made);
}

/// Makes a key of the machine with this text as its default value.
void setText(const std::wstring& path, const std::wstring& text) {
  require(RegSetValueExW(makeKey(HKEY_LOCAL_MACHINE, path).get(), nullptr, 0, REG_SZ,
                         reinterpret_cast<const BYTE*>(text.c_str()),
                         static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t))),
          "setting " + utf8(path));
}

class Win32HeldFile : public HeldFile {
 public:
  explicit Win32HeldFile(win32::OwnedFile file) : file_(std::move(file)) {}

 private:
  win32::OwnedFile file_;
};

/// The small program, which waits for an event; ended and waited for when destroyed.
class Win32RunningProgram : public RunningProgram {
 public:
  explicit Win32RunningProgram(const std::string& path);
  ~Win32RunningProgram() override {
    SetEvent(event_.get());
    WaitForSingleObject(process_.get(), 10000);
  }
  Win32RunningProgram(const Win32RunningProgram&) = delete;
  Win32RunningProgram& operator=(const Win32RunningProgram&) = delete;

 private:
  const std::wstring eventName_ = wide(uniqueName());
  const win32::OwnedProcess event_{CreateEventW(nullptr, TRUE, FALSE, eventName_.c_str())};
  win32::OwnedProcess process_;
};

Win32RunningProgram::Win32RunningProgram(const std::string& path) {
  SetEnvironmentVariableW(kWaitForEvent, eventName_.c_str());
  process_ = start(wide(path));
  SetEnvironmentVariableW(kWaitForEvent, nullptr);
}

struct ControlPlan {
  const char* name;
  const wchar_t* kind;
  DWORD style;
  SIZE size;
};

constexpr std::array<ControlPlan, 10> kControlPlans{{
    {stage::kButton, L"Button", WS_GROUP | WS_TABSTOP | BS_PUSHBUTTON, {60, 20}},
    {stage::kOtherButton, L"Button", WS_TABSTOP | BS_PUSHBUTTON, {60, 20}},
    {stage::kList, L"ListBox", WS_TABSTOP | LBS_NOTIFY | LBS_SORT, {60, 60}},
    {stage::kCombo, L"ComboBox", WS_TABSTOP | CBS_DROPDOWNLIST | CBS_SORT, {60, 100}},
    {stage::kFirstOption, L"Button", WS_GROUP | WS_TABSTOP | BS_AUTORADIOBUTTON, {60, 20}},
    {stage::kSecondOption, L"Button", BS_AUTORADIOBUTTON, {60, 20}},
    {stage::kCheckBox, L"Button", WS_GROUP | WS_TABSTOP | BS_AUTOCHECKBOX, {60, 20}},
    {stage::kPicture, L"Static", SS_BITMAP, {80, 40}},
    {stage::kMultiList, L"ListBox", WS_TABSTOP | LBS_NOTIFY | LBS_MULTIPLESEL, {60, 60}},
    {stage::kTabs, WC_TABCONTROLW, WS_TABSTOP, {500, 60}},
}};

/// What waits for the next modal form. A timer without window runs in its message loop.
class UserTimer {
 public:
  using Play = std::function<void(machine::FormWindow&)>;

  static void set(machine::Desktop& desktop, Play play) {
    desktop_ = &desktop;
    play_ = std::move(play);
    SetTimer(nullptr, 0, 10, &UserTimer::ring);
  }

 private:
  static void CALLBACK ring(HWND, UINT, UINT_PTR timer, DWORD) {
    KillTimer(nullptr, timer);
    const Play play = std::exchange(play_, nullptr);
    if (play && desktop_->activeForm() != nullptr) {
      play(*desktop_->activeForm());
    }
  }

  static inline machine::Desktop* desktop_ = nullptr;
  static inline Play play_;
};

/// The middle of a list's row or a page's tab (asked for by this message), or (-1) a place in the
/// room below the rows.
LPARAM placeOf(HWND list, int index, UINT question) {
  RECT place{};
  if (index < 0) {
    GetClientRect(list, &place);
    place.top = place.bottom - 4;
  } else {
    SendMessageW(list, question, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&place));
  }
  return MAKELPARAM((place.left + place.right) / 2, (place.top + place.bottom) / 2);
}

void clickAt(HWND control, LPARAM place, UINT press = WM_LBUTTONDOWN) {
  SendMessageW(control, press, MK_LBUTTON, place);
  SendMessageW(control, WM_LBUTTONUP, 0, place);
}

/// Presses buttons when its message's turn comes; a disabled one does not feel it, as it does not
/// feel the mouse (a message posted to the button itself would reach it all the same).
class Finger {
 public:
  static void press(HWND button) {
    static HWND const hand = made();
    PostMessageW(hand, WM_APP, reinterpret_cast<WPARAM>(button), 0);
  }

 private:
  static HWND made() {
    HWND const hand = CreateWindowExW(0, L"Static", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                      GetModuleHandleW(nullptr), nullptr);
    SetWindowLongPtrW(hand, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&Finger::receive));
    return hand;
  }

  static LRESULT CALLBACK receive(HWND hand, UINT message, WPARAM first, LPARAM second) {
    HWND const button = reinterpret_cast<HWND>(first);
    if (message != WM_APP) {
      return DefWindowProcW(hand, message, first, second);
    }
    if (IsWindowEnabled(button) != FALSE) {
      SendMessageW(button, BM_CLICK, 0, 0);
    }
    return 0;
  }
};

class Win32ContractMachine : public ContractMachine {
 public:
  Win32ContractMachine();
  ~Win32ContractMachine() override;

  machine::Machine& machine() override { return machine_; }
  machine::FileUse& fileUse() override { return fileUse_; }
  bool can(Ability ability) const override;
  std::string folder() override { return folder_; }
  void putFile(const std::string& path, std::string_view bytes) override {
    writeBytes(path, bytes);
  }
  std::string fileBytes(const std::string& path) override { return readBytes(path); }
  bool exists(const std::string& path) override { return isThere(path); }
  void putFolder(const std::string& path) override {
    require(CreateDirectoryW(wide(path).c_str(), nullptr) != FALSE, "making " + path);
  }
  void putFolderLink(const std::string& link, const std::string& target) override;
  std::int64_t modifiedSeconds(const std::string& path) override;
  void makeOld(const std::string& path) override;
  void conceal(const std::string& path) override {
    require(SetFileAttributesW(wide(path).c_str(), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM) !=
                FALSE,
            "concealing " + path);
  }
  void putRights(const std::string& path) override;
  std::string rights(const std::string& path) override;
  std::unique_ptr<HeldFile> hold(const std::string& path, Sharing sharing) override;
  std::string otherVolumeFolder() override;
  std::string connectedDrive() override;
  std::string connectedShare() override;
  void passASecond() override { Sleep(1100); }
  std::string registryKey() override;
  void storeValue(const std::string& path, const std::string& name, std::uint32_t type,
                  std::string_view data) override;
  void putProgram(const std::string& path) override;
  void enterFolder(const std::string& path) override {
    require(SetCurrentDirectoryW(wide(path).c_str()) != FALSE, "entering " + path);
  }
  std::unique_ptr<RunningProgram> keepRunning(const std::string& path) override {
    return std::make_unique<Win32RunningProgram>(path);
  }
  void putVersionedFile(const std::string& path, const machine::FileVersion& version) override;
  void putUnversionedFile(const std::string& path) override;
  void makeControls(machine::FormWindow& window) override;
  void playUser(std::function<void(machine::FormWindow&)> play) override {
    UserTimer::set(windows_.desktop, std::move(play));
  }
  void click(machine::FormWindow& window, const std::string& control) override {
    SendMessageW(controlOf(window, control), BM_CLICK, 0, 0);
  }
  void choose(machine::FormWindow& window, const std::string& control, int index) override;
  void check(machine::FormWindow& window, const std::string& control) override {
    click(window, control);
  }
  void toggle(machine::FormWindow& window, const std::string& control, int index) override {
    HWND const list = controlOf(window, control);
    clickAt(list, placeOf(list, index, LB_GETITEMRECT));
  }
  void doubleClick(machine::FormWindow& window, const std::string& control, int index) override {
    HWND const list = controlOf(window, control);
    clickAt(list, placeOf(list, index, LB_GETITEMRECT));
    clickAt(list, placeOf(list, index, LB_GETITEMRECT), WM_LBUTTONDBLCLK);
  }
  void pressF10(machine::FormWindow& window, const std::string& control) override;
  void clickLater(machine::FormWindow& window, const std::string& control) override {
    Finger::press(controlOf(window, control));
  }
  bool hourglassOver(machine::FormWindow& window) override;
  void answerInput(std::optional<std::string> answer) override;
  std::string inputTitle() override { return inputTitle_; }
  std::string inputPrompt() override { return inputPrompt_; }
  void installWord(const std::vector<std::string>& bookmarks) override;
  std::vector<std::string> wordHeard() override;

 private:
  bool readOnlyRefusesWriting() const;
  bool copiesStayHidden() const;

  win32::Win32Machine windows_;
  win32::Win32FileUse fileUse_;
  machine::Machine machine_ = windows_.machine();
  std::string folder_;
  std::string otherFolder_;
  std::string key_;
  std::string inputTitle_;
  std::string inputPrompt_;
  bool wordInstalled_ = false;
};

/// Where a program is registered for automation: its name, and the class that tests/scenario/
/// programs/word.cpp offers.
constexpr const wchar_t* kWordName = L"SOFTWARE\\Classes\\Word.Application";
constexpr const wchar_t* kWordClass =
    L"SOFTWARE\\Classes\\CLSID\\{5D3C1A70-6B1E-4C8E-9A51-0E2763D48B12}";
constexpr const wchar_t* kWordClassId = L"{5D3C1A70-6B1E-4C8E-9A51-0E2763D48B12}";

/// A file system of the Unix side that is none of its disks.
constexpr const char* kOtherVolume = "Z:\\dev\\shm";

bool wordRuns() {
  const win32::OwnedFile processes(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
  PROCESSENTRY32W process{};
  process.dwSize = sizeof process;
  for (BOOL more = Process32FirstW(processes.get(), &process); more != FALSE;
       more = Process32NextW(processes.get(), &process)) {
    if (lstrcmpiW(process.szExeFile, L"word.exe") == 0) {
      return true;
    }
  }
  return false;
}

/// One that is still ending could be met by who starts the next one.
void waitUntilWordHasEnded() {
  constexpr int kMostTries = 200;
  constexpr DWORD kPause = 50;
  for (int i = 0; i < kMostTries && wordRuns(); ++i) {
    Sleep(kPause);
  }
}

Win32ContractMachine::Win32ContractMachine() {
  std::array<wchar_t, MAX_PATH> temporary{};
  std::array<wchar_t, MAX_PATH> withoutBlanks{};
  GetTempPathW(static_cast<DWORD>(temporary.size()), temporary.data());
  require(GetShortPathNameW(temporary.data(), withoutBlanks.data(),
                            static_cast<DWORD>(withoutBlanks.size())) != 0,
          "the temporary folder");
  folder_ = utf8(withoutBlanks.data()) + uniqueName();
  putFolder(folder_);
}

Win32ContractMachine::~Win32ContractMachine() {
  // A folder that is the current one cannot be removed.
  SetCurrentDirectoryW(L"C:\\");
  if (wordInstalled_) {
    waitUntilWordHasEnded();
  }
  // What lies there may have any length of path.
  removeTree(L"\\\\?\\" + wide(folder_));
  if (!otherFolder_.empty()) {
    removeTree(wide(otherFolder_));
  }
  if (!key_.empty()) {
    removeKeys(HKEY_CURRENT_USER, wide(key_));
  }
  if (wordInstalled_) {
    removeKeys(HKEY_LOCAL_MACHINE, kWordName);
    removeKeys(HKEY_LOCAL_MACHINE, kWordClass);
  }
}

bool Win32ContractMachine::can(Ability ability) const {
  switch (ability) {
    case Ability::ReadOnlyRefusesWriting:
      return readOnlyRefusesWriting();
    case Ability::FolderLinks:
      // Under Wine links are made on the Unix side; on Windows their making needs rights that a
      // test run does not have.
      return !unixName("C:\\").empty();
    case Ability::HoldFiles:
      return true;
    case Ability::OtherVolume:
      return isThere(kOtherVolume);
    case Ability::CopiesStayHidden:
      return copiesStayHidden();
  }
  return false;
}

bool Win32ContractMachine::readOnlyRefusesWriting() const {
  const std::string path = folder_ + "\\read-only-probe";
  writeBytes(path, "x");
  SetFileAttributesW(wide(path).c_str(), FILE_ATTRIBUTE_READONLY);
  const bool refused =
      !win32::OwnedFile(CreateFileW(wide(path).c_str(), GENERIC_WRITE, kShareAll, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  SetFileAttributesW(wide(path).c_str(), FILE_ATTRIBUTE_NORMAL);
  DeleteFileW(wide(path).c_str());
  return refused;
}

bool Win32ContractMachine::copiesStayHidden() const {
  const std::wstring source = wide(folder_ + "\\hidden-probe");
  const std::wstring copy = source + L"-copy";
  writeBytes(folder_ + "\\hidden-probe", "x");
  SetFileAttributesW(source.c_str(), FILE_ATTRIBUTE_HIDDEN);
  CopyFileW(source.c_str(), copy.c_str(), FALSE);
  const bool hidden = (GetFileAttributesW(copy.c_str()) & FILE_ATTRIBUTE_HIDDEN) != 0;
  for (const std::wstring& each : {source, copy}) {
    SetFileAttributesW(each.c_str(), FILE_ATTRIBUTE_NORMAL);
    DeleteFileW(each.c_str());
  }
  return hidden;
}

void Win32ContractMachine::putFolderLink(const std::string& link, const std::string& target) {
  runUnix("ln -s " + unixName(target) + " " + unixName(link), link, true);
}

std::int64_t Win32ContractMachine::modifiedSeconds(const std::string& path) {
  WIN32_FILE_ATTRIBUTE_DATA data{};
  require(GetFileAttributesExW(wide(path).c_str(), GetFileExInfoStandard, &data) != FALSE,
          "looking at " + path);
  return static_cast<std::int64_t>(std::bit_cast<std::uint64_t>(data.ftLastWriteTime) / 10000000U);
}

void Win32ContractMachine::makeOld(const std::string& path) {
  const SYSTEMTIME day{2001, 5, 0, 4, 3, 2, 1, 0};
  FILETIME time{};
  SystemTimeToFileTime(&day, &time);
  const win32::OwnedFile file = openFile(path, FILE_WRITE_ATTRIBUTES, kShareAll, OPEN_EXISTING);
  require(SetFileTime(file.get(), nullptr, nullptr, &time) != FALSE, "dating " + path);
}

/// Everything for the owner, nothing for anybody else; as a text of rights, "P" keeps what comes
/// down from the folder away.
void Win32ContractMachine::putRights(const std::string& path) {
  std::array<BYTE, SECURITY_MAX_SID_SIZE> user{};
  auto size = static_cast<DWORD>(user.size());
  std::array<wchar_t, 256> domain{};
  auto domainSize = static_cast<DWORD>(domain.size());
  std::array<wchar_t, 256> name{};
  auto nameSize = static_cast<DWORD>(name.size());
  SID_NAME_USE use{};
  GetUserNameW(name.data(), &nameSize);
  require(LookupAccountNameW(nullptr, name.data(), user.data(), &size, domain.data(), &domainSize,
                             &use) != FALSE,
          "looking the user up");
  std::array<std::uint32_t, 64> list{};
  auto* const rightsList = reinterpret_cast<ACL*>(list.data());
  require(InitializeAcl(rightsList, sizeof(list), ACL_REVISION) != FALSE, "making a rights list");
  require(AddAccessAllowedAce(rightsList, ACL_REVISION, FILE_ALL_ACCESS, user.data()) != FALSE,
          "filling a rights list");
  SECURITY_DESCRIPTOR descriptor{};
  InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION);
  SetSecurityDescriptorDacl(&descriptor, TRUE, rightsList, FALSE);
  require(SetFileSecurityW(wide(path).c_str(), DACL_SECURITY_INFORMATION, &descriptor) != FALSE,
          "giving rights to " + path);
}

std::string Win32ContractMachine::rights(const std::string& path) {
  DWORD size = 0;
  GetFileSecurityW(wide(path).c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &size);
  std::vector<std::uint32_t> list((size + 3) / 4);
  require(GetFileSecurityW(wide(path).c_str(), DACL_SECURITY_INFORMATION, list.data(), size,
                           &size) != FALSE,
          "reading the rights of " + path);
  return {reinterpret_cast<const char*>(list.data()), size};
}

std::unique_ptr<HeldFile> Win32ContractMachine::hold(const std::string& path, Sharing sharing) {
  const DWORD shared = (sharing.read ? FILE_SHARE_READ : 0U) |
                       (sharing.write ? FILE_SHARE_WRITE : 0U) |
                       (sharing.remove ? FILE_SHARE_DELETE : 0U);
  return std::make_unique<Win32HeldFile>(openFile(path, GENERIC_READ, shared, OPEN_EXISTING));
}

std::string Win32ContractMachine::registryKey() {
  if (key_.empty()) {
    key_ = "Software\\" + uniqueName();
    makeKey(HKEY_CURRENT_USER, wide(key_));
  }
  return key_;
}

void Win32ContractMachine::storeValue(const std::string& path, const std::string& name,
                                      std::uint32_t type, std::string_view data) {
  const win32::OwnedKey key = makeKey(HKEY_CURRENT_USER, wide(path));
  require(
      RegSetValueExW(key.get(), wide(name).c_str(), 0, type,
                     reinterpret_cast<const BYTE*>(data.data()), static_cast<DWORD>(data.size())),
      "storing " + name);
}

void Win32ContractMachine::putProgram(const std::string& path) {
  require(CopyFileW(testProgramPath().c_str(), wide(path).c_str(), FALSE) != FALSE,
          "copying to " + path);
}

void Win32ContractMachine::putVersionedFile(const std::string& path,
                                            const machine::FileVersion& version) {
  // This program has a version resource; only its numbers are changed, behind its signature.
  std::string bytes = readBytes(utf8(testProgramPath()));
  const std::string signature("\xBD\x04\xEF\xFE\x00\x00\x01\x00", 8);
  const std::size_t at = bytes.rfind(signature);
  require(at != std::string::npos, "no version resource in the test program");
  const std::array<std::uint16_t, 4> stored{version[1], version[0], version[3], version[2]};
  std::memcpy(bytes.data() + at + signature.size(), stored.data(), sizeof(stored));
  writeBytes(path, bytes);
}

void Win32ContractMachine::putUnversionedFile(const std::string& path) {
  std::string bytes = readBytes(utf8(testProgramPath()));
  std::uint32_t headers = 0;
  std::memcpy(&headers, bytes.data() + offsetof(IMAGE_DOS_HEADER, e_lfanew), sizeof(headers));
  const std::size_t resources = headers + offsetof(IMAGE_NT_HEADERS32, OptionalHeader) +
                                offsetof(IMAGE_OPTIONAL_HEADER32, DataDirectory) +
                                IMAGE_DIRECTORY_ENTRY_RESOURCE * sizeof(IMAGE_DATA_DIRECTORY);
  const IMAGE_DATA_DIRECTORY none{};
  std::memcpy(bytes.data() + resources, &none, sizeof(none));
  writeBytes(path, bytes);
}

std::string Win32ContractMachine::otherVolumeFolder() {
  if (otherFolder_.empty()) {
    otherFolder_ = std::string(kOtherVolume) + "\\" + uniqueName();
    putFolder(otherFolder_);
  }
  return otherFolder_;
}

std::string Win32ContractMachine::connectedDrive() {
  require(GetDriveTypeW(L"N:\\") == DRIVE_REMOTE, "no network drive N:, see tools/wine-share");
  return "N:";
}

std::string Win32ContractMachine::connectedShare() { return "\\\\SRVLUMO\\Dati"; }

void Win32ContractMachine::makeControls(machine::FormWindow& window) {
  int top = 0;
  for (const ControlPlan& plan : kControlPlans) {
    HWND const made =
        CreateWindowExW(0, plan.kind, L"", WS_CHILD | WS_VISIBLE | plan.style, 0, top, plan.size.cx,
                        plan.size.cy, handleOf(window),
                        reinterpret_cast<HMENU>(static_cast<INT_PTR>(win32::controlId(plan.name))),
                        GetModuleHandleW(nullptr), nullptr);
    require(made != nullptr, std::string("making ") + plan.name);
    top += 20;
  }
}

/// As the user does it the control tells its dialog; only by message it does not.
void Win32ContractMachine::choose(machine::FormWindow& window, const std::string& control,
                                  int index) {
  HWND const list = controlOf(window, control);
  if (control == stage::kTabs) {
    clickAt(list, placeOf(list, index, TCM_GETITEMRECT));
    return;
  }
  const bool combo = control == stage::kCombo;
  SendMessageW(list, combo ? CB_SETCURSEL : LB_SETCURSEL, static_cast<WPARAM>(index), 0);
  const int notification = combo ? CBN_SELCHANGE : LBN_SELCHANGE;
  SendMessageW(handleOf(window), WM_COMMAND, MAKEWPARAM(win32::controlId(control), notification),
               reinterpret_cast<LPARAM>(list));
}

void Win32ContractMachine::pressF10(machine::FormWindow& window, const std::string& control) {
  HWND const pressed = controlOf(window, control);
  SetFocus(pressed);
  PostMessageW(pressed, WM_SYSKEYDOWN, VK_F10, 0);
  machine_.desktop.processEvents();
}

void Win32ContractMachine::answerInput(std::optional<std::string> answer) {
  playUser([this, answer](machine::FormWindow& box) {
    inputTitle_ = box.title();
    inputPrompt_ = box.text("lblPrompt");
    if (box.text("txtInput").empty()) {
      box.setText("txtInput", answer.value_or("Annullato"));
    }
    click(box, answer ? "btnOk" : "btnCancel");
  });
}

void Win32ContractMachine::installWord(const std::vector<std::string>& bookmarks) {
  const std::string own = utf8(testProgramPath());
  std::string command = "\"" + own.substr(0, own.rfind('\\')) + "\\programs\\word.exe\" \"" +
                        folder_ + "\\word.log\"";
  for (const std::string& bookmark : bookmarks) {
    command += " \"" + bookmark + "\"";
  }
  wordInstalled_ = true;
  setText(kWordName + std::wstring(L"\\CLSID"), kWordClassId);
  setText(kWordClass + std::wstring(L"\\LocalServer32"), wide(command));
}

std::vector<std::string> Win32ContractMachine::wordHeard() {
  std::istringstream log(readBytes(folder_ + "\\word.log"));
  std::vector<std::string> heard;
  for (std::string line; std::getline(log, line);) {
    heard.push_back(line);
  }
  return heard;
}

bool Win32ContractMachine::hourglassOver(machine::FormWindow& window) {
  HWND const button = controlOf(window, stage::kButton);
  SendMessageW(button, WM_SETCURSOR, reinterpret_cast<WPARAM>(button),
               MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
  return GetCursor() == LoadCursorW(nullptr, win32::kHourglassPointer);
}

}  // namespace

std::unique_ptr<ContractMachine> makeContractMachine() {
  return std::make_unique<Win32ContractMachine>();
}

}  // namespace trelv::contract
