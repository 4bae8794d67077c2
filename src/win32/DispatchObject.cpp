#include "win32/DispatchObject.h"

// The header of automation's texts and values needs the system's, which ours brings.
#include <oleauto.h>

#include <algorithm>
#include <utility>

#include "win32/Win32Text.h"

namespace trelv::win32 {
namespace {

using machine::AutomationAnswer;

/// A value of automation that frees what it holds.
class Value {
 public:
  Value() { VariantInit(&value_); }
  explicit Value(const DispatchArgument& argument) : Value() {
    std::visit([this](const auto& given) { set(given); }, argument);
  }
  explicit Value(bool truth) : Value() {
    value_.vt = VT_BOOL;
    value_.boolVal = truth ? VARIANT_TRUE : VARIANT_FALSE;
  }
  ~Value() { VariantClear(&value_); }
  Value(const Value&) = delete;
  Value& operator=(const Value&) = delete;
  Value(Value&& other) noexcept : Value() { std::swap(value_, other.value_); }
  Value& operator=(Value&&) = delete;

  VARIANT* address() { return &value_; }

  /// Hands the object over that it holds; null when it holds none.
  IDispatch* takeObject() {
    if (value_.vt != VT_DISPATCH) {
      return nullptr;
    }
    value_.vt = VT_EMPTY;
    return value_.pdispVal;
  }

 private:
  void set(LeftOut) {
    value_.vt = VT_ERROR;
    value_.scode = DISP_E_PARAMNOTFOUND;
  }
  void set(long number) {
    value_.vt = VT_I4;
    value_.lVal = number;
  }
  void set(const std::wstring& text) {
    value_.vt = VT_BSTR;
    value_.bstrVal = SysAllocStringLen(text.c_str(), static_cast<UINT>(text.size()));
  }

  VARIANT value_;
};

std::string takeText(BSTR text) {
  std::string taken =
      text != nullptr ? utf8(std::wstring(text, SysStringLen(text))) : std::string();
  SysFreeString(text);
  return taken;
}

/// What the other program said of its failure. Programs number their failures in one of two ways.
AutomationAnswer answerOf(EXCEPINFO& failure) {
  if (failure.pfnDeferredFillIn != nullptr) {
    failure.pfnDeferredFillIn(&failure);
  }
  SysFreeString(failure.bstrHelpFile);
  constexpr SystemCode kNumbered = 0x800A0000U;
  AutomationAnswer answer;
  answer.code = failure.scode != 0 ? static_cast<SystemCode>(failure.scode)
                                   : kNumbered | static_cast<SystemCode>(failure.wCode);
  answer.source = takeText(failure.bstrSource);
  answer.description = takeText(failure.bstrDescription);
  return answer;
}

AutomationAnswer answerOf(HRESULT outcome) {
  return {SUCCEEDED(outcome) ? 0U : static_cast<SystemCode>(outcome), "", ""};
}

/// Arguments travel from the last to the first.
std::vector<Value> values(const std::vector<DispatchArgument>& arguments) {
  std::vector<Value> reversed;
  reversed.reserve(arguments.size());
  std::for_each(arguments.rbegin(), arguments.rend(),
                [&reversed](const DispatchArgument& each) { reversed.emplace_back(each); });
  return reversed;
}

}  // namespace

AutomationAnswer DispatchObject::start(const wchar_t* program, DispatchObject& object) {
  CLSID kind{};
  HRESULT outcome = CLSIDFromProgID(program, &kind);
  if (FAILED(outcome)) {
    return answerOf(outcome);
  }
  void* started = nullptr;
  outcome = CoCreateInstance(kind, nullptr, CLSCTX_SERVER, IID_IDispatch, &started);
  object.object_ = Owned<ObjectKind<IDispatch>>(static_cast<IDispatch*>(started));
  return answerOf(outcome);
}

AutomationAnswer DispatchObject::get(const wchar_t* member, DispatchObject& value) const {
  DISPPARAMS none{};
  Value result;
  AutomationAnswer answer = invoke(member, DISPATCH_PROPERTYGET, none, result.address());
  if (answer.code != 0) {
    return answer;
  }
  value.object_ = Owned<ObjectKind<IDispatch>>(result.takeObject());
  return value.object_ ? answer : answerOf(DISP_E_TYPEMISMATCH);
}

AutomationAnswer DispatchObject::put(const wchar_t* member, bool value) const {
  Value given(value);
  DISPID name = DISPID_PROPERTYPUT;
  DISPPARAMS arguments{given.address(), &name, 1, 1};
  return invoke(member, DISPATCH_PROPERTYPUT, arguments, nullptr);
}

AutomationAnswer DispatchObject::call(const wchar_t* member,
                                      const std::vector<DispatchArgument>& arguments) const {
  std::vector<Value> given = values(arguments);
  // A value is nothing but the variant in it.
  static_assert(sizeof(Value) == sizeof(VARIANT));
  DISPPARAMS passed{given.empty() ? nullptr : given.front().address(), nullptr,
                    static_cast<UINT>(given.size()), 0};
  Value result;
  return invoke(member, DISPATCH_METHOD, passed, result.address());
}

AutomationAnswer DispatchObject::invoke(const wchar_t* member, WORD kind, DISPPARAMS& arguments,
                                        VARIANT* result) const {
  std::wstring name = member;
  LPOLESTR names = name.data();
  DISPID number = 0;
  HRESULT outcome = object_.get()->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &number);
  if (FAILED(outcome)) {
    return answerOf(outcome);
  }
  EXCEPINFO failure{};
  outcome = object_.get()->Invoke(number, IID_NULL, LOCALE_USER_DEFAULT, kind, &arguments, result,
                                  &failure, nullptr);
  return outcome == DISP_E_EXCEPTION ? answerOf(failure) : answerOf(outcome);
}

}  // namespace trelv::win32
