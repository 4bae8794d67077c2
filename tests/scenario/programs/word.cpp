// Stands for the word processor: a program that others drive by automation. Its command line names
// the file that it writes each call to, a line each, then the bookmarks of its documents; the
// system adds "-Embedding". It shows nothing and ends when it is told to quit or nobody holds it
// any more.
#include <windows.h>
// The headers of automation need the one above first.
#include <oaidl.h>
#include <objbase.h>
#include <oleauto.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using Words = std::vector<std::wstring>;

// Any one: a program finds this one by its name.
constexpr CLSID kClass = {
    0x5d3c1a70, 0x6b1e, 0x4c8e, {0x9a, 0x51, 0x0e, 0x27, 0x63, 0xd4, 0x8b, 0x12}};

/// Until the answer to the call that ends this program has reached the caller, in milliseconds.
constexpr UINT kUntilAnswered = 300;

std::wstring logFile;
Words bookmarks;
LONG holders = 0;

void note(const std::wstring& line) {
  const int size = WideCharToMultiByte(CP_UTF8, 0, line.c_str(), -1, nullptr, 0, nullptr, nullptr);
  std::string bytes(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, line.c_str(), -1, bytes.data(), size, nullptr, nullptr);
  bytes.back() = '\n';
  const HANDLE file = CreateFileW(logFile.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ, nullptr,
                                  OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  DWORD written = 0;
  WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
  CloseHandle(file);
}

/// As the word processor tells of a failure.
HRESULT failed(EXCEPINFO* failure, SCODE number, const wchar_t* description) {
  if (failure != nullptr) {
    *failure = {};
    failure->scode = number;
    failure->bstrSource = SysAllocString(L"Microsoft Word");
    failure->bstrDescription = SysAllocString(description);
  }
  return DISP_E_EXCEPTION;
}

std::wstring textOf(const VARIANTARG& argument) {
  return argument.vt == VT_BSTR ? std::wstring(argument.bstrVal, SysStringLen(argument.bstrVal))
                                : L"(no text)";
}

/// The application, its documents, its selection: one object each, told apart by what it can.
enum class Part { Application, Documents, Selection };

class Object : public IDispatch {
 public:
  explicit Object(Part part) : part_(part) { InterlockedIncrement(&holders); }
  virtual ~Object() {
    if (InterlockedDecrement(&holders) == 0) {
      PostQuitMessage(0);
    }
  }
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID kind, void** object) override {
    *object = nullptr;
    if (kind != IID_IUnknown && kind != IID_IDispatch) {
      return E_NOINTERFACE;
    }
    *object = this;
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override {
    return static_cast<ULONG>(InterlockedIncrement(&references_));
  }
  ULONG STDMETHODCALLTYPE Release() override {
    const LONG left = InterlockedDecrement(&references_);
    if (left == 0) {
      delete this;
    }
    return static_cast<ULONG>(left);
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    *count = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID,
                                          DISPID* numbers) override {
    const Words known = members();
    const auto found = std::find_if(known.begin(), known.end(), [names](const std::wstring& each) {
      return lstrcmpiW(each.c_str(), names[0]) == 0;
    });
    if (found == known.end()) {
      return DISP_E_UNKNOWNNAME;
    }
    numbers[0] = static_cast<DISPID>(found - known.begin()) + 1;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID number, REFIID, LCID, WORD kind, DISPPARAMS* arguments,
                                   VARIANT* result, EXCEPINFO* failure, UINT*) override {
    const std::wstring member = members().at(static_cast<std::size_t>(number) - 1);
    switch (part_) {
      case Part::Application:
        return application(member, kind, *arguments, result);
      case Part::Documents:
        return open(*arguments, failure);
      case Part::Selection:
        return goTo(*arguments, failure);
    }
    return E_FAIL;
  }

 private:
  Words members() const {
    switch (part_) {
      case Part::Application:
        return {L"Documents", L"Selection", L"Visible", L"Activate", L"Quit"};
      case Part::Documents:
        return {L"Open"};
      case Part::Selection:
        return {L"GoTo"};
    }
    return {};
  }

  static HRESULT application(const std::wstring& member, WORD kind, const DISPPARAMS& arguments,
                             VARIANT* result) {
    if (member == L"Documents" || member == L"Selection") {
      result->vt = VT_DISPATCH;
      result->pdispVal = new Object(member == L"Documents" ? Part::Documents : Part::Selection);
      result->pdispVal->AddRef();
      return S_OK;
    }
    if (member == L"Visible") {
      if (kind != DISPATCH_PROPERTYPUT || arguments.rgvarg[0].vt != VT_BOOL) {
        return DISP_E_TYPEMISMATCH;
      }
      note(arguments.rgvarg[0].boolVal == VARIANT_TRUE ? L"Visible = True" : L"Visible = False");
      return S_OK;
    }
    note(member);
    if (member == L"Quit") {
      SetTimer(nullptr, 0, kUntilAnswered, &quit);
    }
    return S_OK;
  }

  static void CALLBACK quit(HWND, UINT, UINT_PTR, DWORD) { PostQuitMessage(0); }

  static HRESULT open(const DISPPARAMS& arguments, EXCEPINFO* failure) {
    const std::wstring path = arguments.cArgs == 1 ? textOf(arguments.rgvarg[0]) : L"";
    note(L"Documents.Open " + path);
    if (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES) {
      return failed(failure, static_cast<SCODE>(0x800A1436), L"Impossibile trovare il file.");
    }
    return S_OK;
  }

  /// The arguments come from the last: name, count, which, what. Those in the middle are left out.
  static HRESULT goTo(const DISPPARAMS& arguments, EXCEPINFO* failure) {
    const auto leftOut = [](const VARIANTARG& argument) {
      return argument.vt == VT_ERROR && argument.scode == DISP_E_PARAMNOTFOUND;
    };
    if (arguments.cArgs != 4 || !leftOut(arguments.rgvarg[1]) || !leftOut(arguments.rgvarg[2]) ||
        arguments.rgvarg[3].vt != VT_I4) {
      return DISP_E_BADPARAMCOUNT;
    }
    const std::wstring name = textOf(arguments.rgvarg[0]);
    note(L"Selection.GoTo " + std::to_wstring(arguments.rgvarg[3].lVal) + L" " + name);
    if (std::find(bookmarks.begin(), bookmarks.end(), name) == bookmarks.end()) {
      return failed(failure, static_cast<SCODE>(0x800A16D4), L"Il segnalibro non esiste.");
    }
    return S_OK;
  }

  Part part_;
  LONG references_ = 0;
};

/// Makes the one application of this process.
class Factory : public IClassFactory {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID kind, void** object) override {
    const bool known = kind == IID_IUnknown || kind == IID_IClassFactory;
    *object = known ? this : nullptr;
    return known ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID kind, void** object) override {
    auto* const made = new Object(Part::Application);
    made->AddRef();
    const HRESULT outcome = made->QueryInterface(kind, object);
    made->Release();
    return outcome;
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

}  // namespace

int wmain(int count, wchar_t** words) {
  if (count < 3) {
    return 2;
  }
  logFile = words[1];
  bookmarks.assign(words + 2, words + count);
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  Factory factory;
  DWORD registered = 0;
  if (FAILED(CoRegisterClassObject(kClass, &factory, CLSCTX_LOCAL_SERVER, REGCLS_SINGLEUSE,
                                   &registered))) {
    return 3;
  }
  MSG message;
  while (GetMessageW(&message, nullptr, 0, 0) > 0) {
    DispatchMessageW(&message);
  }
  CoRevokeClassObject(registered);
  CoUninitialize();
  return 0;
}
