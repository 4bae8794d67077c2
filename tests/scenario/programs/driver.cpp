// The scenarios' hand inside Windows. One driver per prefix stays alive, so that the prefix stays
// warm. It reads one request per line from standard input, UTF-8, words separated by tabs, and
// answers each with lines of JSON, the last of which is {"done": …}:
//
//   run LIMIT KILL RESTRICTED PAUSE FOLDER ANSWERS PROGRAM COMMANDLINE
//       starts PROGRAM with the raw COMMANDLINE in FOLDER (empty: the driver's own) and answers
//       its boxes. LIMIT: seconds after which it is ended. KILL: a file, or a pattern of its name;
//       the program is ended as soon as it exists (empty: never). RESTRICTED: 1 takes the
//       administrators from its token. PAUSE: milliseconds that a box stays before it is answered.
//       ANSWERS: captions of buttons to press, one for each box, separated by "|"; "OK" when there
//       are no more; "-" leaves a box to whoever sits before the screen. One line for each box as
//       it shows ({"box": true, …}) and one for each window without buttons, which is not answered
//       ({"notice": true, …}), then
//       {"done": true, "exit": …, "milliseconds": …}.
//   registry-set HIVE KEY NAME VALUE      a text; the key is made
//   registry-get HIVE KEY NAME            {"done": true, "value": text or null}
//   registry-delete HIVE KEY              the key with all below it
//   facts                                 folders, code page, WoW64 of a 32-bit program
//   boxes                                 the dialogs of all programs of this desktop
//   press CAPTION                         presses the first button of that caption and waits until
//                                         its box has gone; tells that box before ({"box": true,
//                                         …})
//   close CLASS                           closes the top window of a class, waits for it first;
//                                         {"done": true, "title": …}
//   form TITLE                            the dialog of that title, waited for: where it stands on
//                                         the screen, which control has the keyboard, and each
//                                         control with its place and state
//   click TITLE ID                        clicks a control, as soon as the dialog takes it
//   choose TITLE ID INDEX                 selects an item of a list or combo, as the user does
//   dismiss TITLE                         presses the close box of a dialog
//   end TITLE                             ends the program of a dialog by force
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace {

using Words = std::vector<std::wstring>;

constexpr UINT kEndedByForce = 99;

std::string utf8(const std::wstring& text) {
  const int length = static_cast<int>(text.size());
  const int size =
      WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
  std::string bytes(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), length, bytes.data(), size, nullptr, nullptr);
  return bytes;
}

std::wstring wide(const std::string& bytes) {
  const int length = static_cast<int>(bytes.size());
  const int size = MultiByteToWideChar(CP_UTF8, 0, bytes.data(), length, nullptr, 0);
  std::wstring text(static_cast<std::size_t>(size), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, bytes.data(), length, text.data(), size);
  return text;
}

std::string quoted(const std::wstring& text) {
  std::string result = "\"";
  for (const char c : utf8(text)) {
    if (c == '"' || c == '\\') {
      result += '\\';
      result += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      char code[8];
      std::snprintf(code, sizeof code, "\\u%04x", static_cast<unsigned>(c));
      result += code;
    } else {
      result += c;
    }
  }
  return result + "\"";
}

void answer(const std::string& line) {
  std::fwrite(line.data(), 1, line.size(), stdout);
  std::fwrite("\n", 1, 1, stdout);
  std::fflush(stdout);
}

void done(const std::string& more = "") { answer("{\"done\": true" + more + "}"); }

void failed(const std::string& what) {
  answer("{\"done\": false, \"failure\": \"" + what +
         "\", \"code\": " + std::to_string(GetLastError()) + "}");
}

Words split(const std::wstring& text, wchar_t separator) {
  Words words(1);
  for (const wchar_t c : text) {
    if (c == separator) {
      words.emplace_back();
    } else {
      words.back() += c;
    }
  }
  return words;
}

// --- Windows

/// A window's text, asked from its own thread; empty where that does not answer.
std::wstring textOf(HWND window) {
  std::wstring text(70000, L'\0');
  DWORD_PTR length = 0;
  if (SendMessageTimeoutW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()),
                          SMTO_ABORTIFHUNG, 2000, &length) == 0) {
    length = 0;
  }
  text.resize(length);
  return text;
}

/// A window's text as the system keeps it: also where its program is busy.
std::wstring keptTextOf(HWND window) {
  wchar_t text[1024] = {};
  InternalGetWindowText(window, text, 1024);
  return text;
}

std::wstring classOf(HWND window) {
  wchar_t name[128] = {};
  GetClassNameW(window, name, 128);
  return name;
}

BOOL CALLBACK collect(HWND window, LPARAM list) {
  reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
  return TRUE;
}

std::vector<HWND> childrenOf(HWND window) {
  std::vector<HWND> children;
  EnumChildWindows(window, collect, reinterpret_cast<LPARAM>(&children));
  return children;
}

/// The visible dialogs of one process, of all for 0. One without controls is just coming or going.
std::vector<HWND> boxesOf(DWORD process) {
  std::vector<HWND> all;
  EnumWindows(collect, reinterpret_cast<LPARAM>(&all));
  std::vector<HWND> boxes;
  for (const HWND window : all) {
    DWORD owner = 0;
    GetWindowThreadProcessId(window, &owner);
    if ((process == 0 || owner == process) && IsWindowVisible(window) &&
        classOf(window) == L"#32770" && !childrenOf(window).empty()) {
      boxes.push_back(window);
    }
  }
  return boxes;
}

std::wstring withoutMark(const std::wstring& caption) {
  std::wstring result;
  for (const wchar_t c : caption) {
    if (c != L'&') {
      result += c;
    }
  }
  return result;
}

HWND buttonOf(HWND box, const std::wstring& caption) {
  for (const HWND child : childrenOf(box)) {
    if (classOf(child) == L"Button" &&
        lstrcmpiW(withoutMark(textOf(child)).c_str(), caption.c_str()) == 0) {
      return child;
    }
  }
  return nullptr;
}

/// Whether a window only tells something: it has no button and goes by itself.
bool asksNothing(HWND box) {
  for (const HWND child : childrenOf(box)) {
    if (classOf(child) == L"Button") {
      return false;
    }
  }
  return true;
}

std::string describe(const std::string& kind, HWND box, std::wstring (*text)(HWND) = textOf) {
  std::string controls;
  for (const HWND child : childrenOf(box)) {
    controls += std::string(controls.empty() ? "" : ", ") +
                "{\"id\": " + std::to_string(GetDlgCtrlID(child) & 0xFFFF) +
                ", \"class\": " + quoted(classOf(child)) + ", \"text\": " + quoted(text(child)) +
                "}";
  }
  return "{\"" + kind + "\": true, \"title\": " + quoted(text(box)) + ", \"controls\": [" +
         controls + "]}";
}

// --- Running the manager

bool readLine(std::string& line) {
  line.clear();
  for (int c = std::getchar(); c != EOF; c = std::getchar()) {
    if (c == '\n') {
      return true;
    }
    line += static_cast<char>(c);
  }
  return false;
}

struct Run {
  DWORD limit = 0;
  std::wstring killFile;
  bool restricted = false;
  /// Each box waits for a line of its own before it is answered.
  bool boxesWait = false;
  std::wstring folder;
  Words answers;
  std::wstring program;
  std::wstring commandLine;
};

HANDLE tokenWithoutAdministrators() {
  HANDLE own = nullptr;
  OpenProcessToken(GetCurrentProcess(), TOKEN_ALL_ACCESS, &own);
  SID_IDENTIFIER_AUTHORITY authority = {SECURITY_NT_AUTHORITY};
  PSID administrators = nullptr;
  AllocateAndInitializeSid(&authority, 2, SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_ADMINS, 0,
                           0, 0, 0, 0, 0, &administrators);
  SID_AND_ATTRIBUTES disabled = {administrators, 0};
  HANDLE restricted = nullptr;
  CreateRestrictedToken(own, 0, 1, &disabled, 0, nullptr, 0, nullptr, &restricted);
  FreeSid(administrators);
  CloseHandle(own);
  return restricted;
}

/// Takes what programs print, and what those print that they start: it must not come between our
/// answers. A file, because Wine lets nothing else replace the output of a program's programs.
HANDLE outputFile() {
  static const HANDLE file = [] {
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    return CreateFileW(L"driver.out", FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                       &inherited, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  }();
  return file;
}

bool start(const Run& run, PROCESS_INFORMATION& process) {
  STARTUPINFOW startup = {};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdOutput = startup.hStdError = outputFile();
  std::wstring line = run.commandLine;
  const wchar_t* const folder = run.folder.empty() ? nullptr : run.folder.c_str();
  if (!run.restricted) {
    return CreateProcessW(run.program.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                          folder, &startup, &process) != 0;
  }
  const HANDLE token = tokenWithoutAdministrators();
  const bool started =
      CreateProcessAsUserW(token, run.program.c_str(), line.data(), nullptr, nullptr, TRUE, 0,
                           nullptr, folder, &startup, &process) != 0;
  CloseHandle(token);
  return started;
}

/// A box that has just been made visible may still fill its controls.
void letItSettle(HWND box) {
  DWORD_PTR ignored = 0;
  SendMessageTimeoutW(box, WM_NULL, 0, 0, SMTO_NORMAL, 2000, &ignored);
  Sleep(30);
}

bool shows(HWND box) { return IsWindow(box) && IsWindowVisible(box); }

void leaveToTheUser(HWND box, HANDLE process) {
  while (shows(box) && WaitForSingleObject(process, 50) == WAIT_TIMEOUT) {
  }
}

void waitWhileItShows(HWND box, int milliseconds) {
  for (int passed = 0; passed < milliseconds && shows(box); passed += 10) {
    Sleep(10);
  }
}

void press(HWND box, const std::wstring& caption) {
  HWND button = buttonOf(box, caption);
  if (button == nullptr) {
    answer("{\"missing button\": " + quoted(caption) + "}");
    PostMessageW(box, WM_CLOSE, 0, 0);
    return;
  }
  PostMessageW(button, BM_CLICK, 0, 0);
  waitWhileItShows(box, 1000);
}

bool isThere(const std::wstring& pattern) {
  WIN32_FIND_DATAW found;
  const HANDLE search = FindFirstFileW(pattern.c_str(), &found);
  if (search != INVALID_HANDLE_VALUE) {
    FindClose(search);
  }
  return search != INVALID_HANDLE_VALUE;
}

/// Ends a process as soon as a file exists, whatever its boxes are asked or answered meanwhile, as
/// long as this lives.
class Executioner {
 public:
  Executioner(std::wstring pattern, HANDLE process)
      : pattern_(std::move(pattern)), process_(process) {
    thread_ = pattern_.empty() ? nullptr : CreateThread(nullptr, 0, watch, this, 0, nullptr);
  }
  Executioner(const Executioner&) = delete;
  Executioner& operator=(const Executioner&) = delete;
  /// The process has ended.
  ~Executioner() {
    if (thread_ != nullptr) {
      WaitForSingleObject(thread_, INFINITE);
      CloseHandle(thread_);
    }
  }

 private:
  static DWORD WINAPI watch(void* self) {
    const auto& own = *static_cast<const Executioner*>(self);
    while (WaitForSingleObject(own.process_, 3) == WAIT_TIMEOUT) {
      if (isThere(own.pattern_)) {
        TerminateProcess(own.process_, kEndedByForce);
      }
    }
    return 0;
  }

  std::wstring pattern_;
  HANDLE process_;
  HANDLE thread_;
};

bool endIfLate(const Run& run, HANDLE process, DWORD began) {
  const bool late = GetTickCount() - began > run.limit * 1000;
  if (late) {
    answer("{\"late\": true}");
    TerminateProcess(process, kEndedByForce);
  }
  return late;
}

/// The first dialog of the process that asks something. Those that do not are told once each.
HWND nextBox(DWORD process, std::vector<HWND>& told) {
  for (const HWND box : boxesOf(process)) {
    if (std::find(told.begin(), told.end(), box) != told.end()) {
      continue;
    }
    if (!asksNothing(box)) {
      return box;
    }
    answer(describe("notice", box, keptTextOf));
    told.push_back(box);
  }
  return nullptr;
}

void answerBox(const Run& run, HWND box, const std::wstring& caption, HANDLE process) {
  letItSettle(box);
  answer(describe("box", box));
  if (std::string line; run.boxesWait && !readLine(line)) {
    return;
  }
  if (caption == L"-") {
    leaveToTheUser(box, process);
  } else {
    press(box, caption);
  }
}

void attend(const Run& run, const PROCESS_INFORMATION& process) {
  const DWORD began = GetTickCount();
  std::size_t next = 0;
  std::vector<HWND> told;
  const Executioner executioner(run.killFile, process.hProcess);
  while (WaitForSingleObject(process.hProcess, 10) == WAIT_TIMEOUT) {
    if (endIfLate(run, process.hProcess, began)) {
      WaitForSingleObject(process.hProcess, 5000);
      break;
    }
    if (const HWND box = nextBox(process.dwProcessId, told); box != nullptr) {
      answerBox(run, box, next < run.answers.size() ? run.answers[next] : L"OK", process.hProcess);
      ++next;
    }
  }
  DWORD code = 0;
  GetExitCodeProcess(process.hProcess, &code);
  done(", \"exit\": " + std::to_string(code) +
       ", \"milliseconds\": " + std::to_string(GetTickCount() - began));
}

void runProgram(const Words& words) {
  Run run;
  run.limit = static_cast<DWORD>(_wtoi(words[1].c_str()));
  run.killFile = words[2];
  run.restricted = words[3] == L"1";
  run.boxesWait = words[4] == L"1";
  run.folder = words[5];
  if (!words[6].empty()) {
    run.answers = split(words[6], L'|');
  }
  run.program = words[7];
  run.commandLine = words[8];
  // What stands in the raw command line may be a tab as well.
  for (std::size_t i = 9; i < words.size(); ++i) {
    run.commandLine += L"\t" + words[i];
  }
  PROCESS_INFORMATION process = {};
  if (!start(run, process)) {
    failed("not started");
    return;
  }
  attend(run, process);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
}

// --- Registry

HKEY hiveOf(const std::wstring& name) {
  return name == L"HKLM" ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
}

void setValue(const Words& words) {
  HKEY key = nullptr;
  if (RegCreateKeyExW(hiveOf(words[1]), words[2].c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                      &key, nullptr) != ERROR_SUCCESS) {
    failed("key not made");
    return;
  }
  RegSetValueExW(key, words[3].c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(words[4].c_str()),
                 static_cast<DWORD>((words[4].size() + 1) * sizeof(wchar_t)));
  RegCloseKey(key);
  done();
}

void getValue(const Words& words) {
  HKEY key = nullptr;
  std::wstring value(4096, L'\0');
  auto size = static_cast<DWORD>(value.size() * sizeof(wchar_t));
  bool found = false;
  if (RegOpenKeyExW(hiveOf(words[1]), words[2].c_str(), 0, KEY_QUERY_VALUE, &key) ==
      ERROR_SUCCESS) {
    found = RegQueryValueExW(key, words[3].c_str(), nullptr, nullptr,
                             reinterpret_cast<BYTE*>(value.data()), &size) == ERROR_SUCCESS;
    RegCloseKey(key);
  }
  done(", \"value\": " + (found ? quoted(value.c_str()) : std::string("null")));
}

void deleteTree(HKEY hive, const std::wstring& path) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(hive, path.c_str(), 0, KEY_ENUMERATE_SUB_KEYS, &key) != ERROR_SUCCESS) {
    return;
  }
  Words names;
  wchar_t name[256];
  DWORD length = 256;
  for (DWORD i = 0;
       RegEnumKeyExW(key, i, name, &length, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
       ++i, length = 256) {
    names.emplace_back(name);
  }
  RegCloseKey(key);
  for (const std::wstring& child : names) {
    deleteTree(hive, path + L"\\" + child);
  }
  RegDeleteKeyW(hive, path.c_str());
}

// --- Facts

void facts() {
  wchar_t temporary[MAX_PATH] = {};
  wchar_t windows[MAX_PATH] = {};
  wchar_t programs[MAX_PATH] = {};
  GetTempPathW(MAX_PATH, temporary);
  GetWindowsDirectoryW(windows, MAX_PATH);
  GetEnvironmentVariableW(L"ProgramFiles", programs, MAX_PATH);
  BOOL wow = FALSE;
  IsWow64Process(GetCurrentProcess(), &wow);
  done(", \"temporary\": " + quoted(temporary) + ", \"windows\": " + quoted(windows) +
       ", \"program files\": " + quoted(programs) + ", \"code page\": " + std::to_string(GetACP()) +
       ", \"wow64\": " + (wow ? "true" : "false"));
}

void listBoxes() {
  for (const HWND box : boxesOf(0)) {
    answer(describe("box", box));
  }
  done();
}

void pressAnywhere(const Words& words) {
  for (const HWND box : boxesOf(0)) {
    if (buttonOf(box, words[1]) != nullptr) {
      letItSettle(box);
      answer(describe("box", box));
      press(box, words[1]);
      waitWhileItShows(box, 9000);
      shows(box) ? failed("the box stays") : done();
      return;
    }
  }
  failed("no such button");
}

void closeWindow(const Words& words) {
  for (int i = 0; i < 1000; ++i) {
    const HWND window = FindWindowW(words[1].c_str(), nullptr);
    const std::wstring title = window == nullptr ? std::wstring() : textOf(window);
    if (!title.empty()) {
      PostMessageW(window, WM_CLOSE, 0, 0);
      done(", \"title\": " + quoted(title));
      return;
    }
    Sleep(10);
  }
  failed("no such window");
}

// --- Forms

bool isWine10OrLater() {
  using VersionOfWine = const char*(CDECL*)();
  const HMODULE system = GetModuleHandleW(L"ntdll.dll");
  const auto version = reinterpret_cast<VersionOfWine>(
      reinterpret_cast<void*>(GetProcAddress(system, "wine_get_version")));
  return version != nullptr && std::atoi(version()) >= 10;
}

/// Under Wine 10 its own desktop may be what is active when a command has run, although the form of
/// the program stands there and nobody left it. A window manager would give the keyboard back, but
/// here none is.
void giveTheKeyboardBack(HWND box) {
  const HWND active = GetForegroundWindow();
  const bool lost = active == nullptr || active == GetDesktopWindow();
  if (lost && isWine10OrLater() && IsWindowEnabled(box)) {
    SetForegroundWindow(box);
  }
}

/// The dialog of a title once it shows and answers; null when it does not come.
HWND formOf(const std::wstring& title) {
  for (int i = 0; i < 1000; ++i) {
    for (const HWND box : boxesOf(0)) {
      // As the system keeps it: a program that is busy must not be disturbed.
      if (keptTextOf(box) == title) {
        letItSettle(box);
        giveTheKeyboardBack(box);
        return box;
      }
    }
    Sleep(10);
  }
  return nullptr;
}

LRESULT ask(HWND window, UINT message, WPARAM first = 0, LPARAM second = 0) {
  DWORD_PTR result = 0;
  SendMessageTimeoutW(window, message, first, second, SMTO_ABORTIFHUNG, 2000, &result);
  return static_cast<LRESULT>(result);
}

std::string describePlace(const RECT& place) {
  return "[" + std::to_string(place.left) + ", " + std::to_string(place.top) + ", " +
         std::to_string(place.right) + ", " + std::to_string(place.bottom) + "]";
}

/// Where the rows of a list stand on the screen, and which of them are selected.
std::string describeRows(HWND list) {
  std::string rows;
  std::string chosen;
  const LRESULT count = ask(list, LB_GETCOUNT);
  for (LRESULT i = 0; i < count; ++i) {
    RECT row = {};
    ask(list, LB_GETITEMRECT, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&row));
    MapWindowPoints(list, nullptr, reinterpret_cast<POINT*>(&row), 2);
    rows += (rows.empty() ? "" : ", ") + describePlace(row);
    if (ask(list, LB_GETSEL, static_cast<WPARAM>(i)) > 0) {
      chosen += (chosen.empty() ? "" : ", ") + std::to_string(i);
    }
  }
  return ", \"rows\": [" + rows + "], \"chosen\": [" + chosen + "]";
}

/// Items and selection of a list or combo.
std::string describeItems(HWND list, bool combo) {
  std::string items;
  const LRESULT count = ask(list, combo ? CB_GETCOUNT : LB_GETCOUNT);
  for (LRESULT i = 0; i < count; ++i) {
    std::wstring text(1000, L'\0');
    const LRESULT length = ask(list, combo ? CB_GETLBTEXT : LB_GETTEXT, static_cast<WPARAM>(i),
                               reinterpret_cast<LPARAM>(text.data()));
    text.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    items += (items.empty() ? "" : ", ") + quoted(text);
  }
  const auto selected = static_cast<int>(ask(list, combo ? CB_GETCURSEL : LB_GETCURSEL));
  return ", \"items\": [" + items + "], \"selected\": " + std::to_string(selected);
}

std::string describeState(HWND control) {
  const std::wstring kind = classOf(control);
  std::string state =
      std::string(", \"enabled\": ") + (IsWindowEnabled(control) ? "true" : "false");
  if (kind == L"Button") {
    state += std::string(", \"checked\": ") +
             (ask(control, BM_GETCHECK) == BST_CHECKED ? "true" : "false");
  } else if (kind == L"ComboBox" || kind == L"ListBox") {
    state += describeItems(control, kind == L"ComboBox");
  }
  if (kind == L"ListBox") {
    state += describeRows(control);
  }
  return state;
}

/// Identifier of the control with the keyboard, which comes back a moment after a box has gone; 0
/// where none has it.
int focusOf(HWND form) {
  GUITHREADINFO info = {};
  info.cbSize = sizeof info;
  for (int i = 0; i < 50 && info.hwndFocus == nullptr; ++i) {
    Sleep(i == 0 ? 0 : 10);
    GetGUIThreadInfo(GetWindowThreadProcessId(form, nullptr), &info);
  }
  return info.hwndFocus == nullptr ? 0 : GetDlgCtrlID(info.hwndFocus) & 0xFFFF;
}

void describeForm(HWND form) {
  std::string controls;
  RECT place = {};
  for (const HWND child : childrenOf(form)) {
    GetWindowRect(child, &place);
    controls += std::string(controls.empty() ? "" : ", ") +
                "{\"id\": " + std::to_string(GetDlgCtrlID(child) & 0xFFFF) +
                ", \"text\": " + quoted(textOf(child)) + ", \"place\": " + describePlace(place) +
                describeState(child) + "}";
  }
  GetWindowRect(form, &place);
  done(", \"left\": " + std::to_string(place.left) + ", \"top\": " + std::to_string(place.top) +
       ", \"right\": " + std::to_string(place.right) +
       ", \"bottom\": " + std::to_string(place.bottom) +
       ", \"focus\": " + std::to_string(focusOf(form)) + ", \"controls\": [" + controls + "]");
}

void choose(HWND form, int id, int index) {
  const HWND list = GetDlgItem(form, id);
  const bool combo = classOf(list) == L"ComboBox";
  ask(list, combo ? CB_SETCURSEL : LB_SETCURSEL, static_cast<WPARAM>(index));
  // Selecting by message sends no notification.
  ask(form, WM_COMMAND,
      MAKEWPARAM(id, combo ? static_cast<int>(CBN_SELCHANGE) : static_cast<int>(LBN_SELCHANGE)),
      reinterpret_cast<LPARAM>(list));
  done();
}

void endProgramOf(HWND form) {
  DWORD process = 0;
  GetWindowThreadProcessId(form, &process);
  const HANDLE handle = OpenProcess(PROCESS_TERMINATE, FALSE, process);
  TerminateProcess(handle, kEndedByForce);
  CloseHandle(handle);
  done();
}

void serveForm(const Words& words) {
  const HWND form = formOf(words[1]);
  const int id = words.size() > 2 ? _wtoi(words[2].c_str()) : 0;
  if (form == nullptr) {
    failed("no such form");
  } else if (words[0] == L"form") {
    describeForm(form);
  } else if (words[0] == L"click") {
    PostMessageW(GetDlgItem(form, id), BM_CLICK, 0, 0);
    done();
  } else if (words[0] == L"dismiss") {
    PostMessageW(form, WM_SYSCOMMAND, SC_CLOSE, 0);
    done();
  } else if (words[0] == L"end") {
    endProgramOf(form);
  } else {
    choose(form, id, _wtoi(words[3].c_str()));
  }
}

bool isForForm(const Words& words) {
  const std::size_t count = words.size();
  return (words[0] == L"form" && count == 2) || (words[0] == L"click" && count == 3) ||
         ((words[0] == L"dismiss" || words[0] == L"end") && count == 2) ||
         (words[0] == L"choose" && count == 4);
}

void serve(const Words& words) {
  const std::size_t count = words.size();
  if (words[0] == L"run" && count >= 9) {
    runProgram(words);
  } else if (words[0] == L"registry-set" && count == 5) {
    setValue(words);
  } else if (words[0] == L"registry-get" && count == 4) {
    getValue(words);
  } else if (words[0] == L"registry-delete" && count == 3) {
    deleteTree(hiveOf(words[1]), words[2]);
    done();
  } else if (words[0] == L"facts") {
    facts();
  } else if (words[0] == L"boxes") {
    listBoxes();
  } else if (words[0] == L"press" && count == 2) {
    pressAnywhere(words);
  } else if (words[0] == L"close" && count == 2) {
    closeWindow(words);
  } else if (isForForm(words)) {
    serveForm(words);
  } else {
    failed("unknown request");
  }
}

}  // namespace

int wmain() {
  std::string line;
  while (readLine(line)) {
    if (!line.empty() && line.back() == '\r') {
      line.pop_back();
    }
    serve(split(wide(line), L'\t'));
  }
  return 0;
}
