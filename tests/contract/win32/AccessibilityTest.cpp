#include <gtest/gtest.h>
#include <windows.h>
// The headers of controls and accessibility need the one above first.
#include <commctrl.h>
#include <oleacc.h>
#include <oleauto.h>

#include <bit>
#include <map>
#include <string>
#include <vector>

#include "contract/win32/TestForm.h"
#include "win32/ButtonControl.h"
#include "win32/Components.h"
#include "win32/Owned.h"
#include "win32/Win32Desktop.h"
#include "win32/Win32Text.h"
#include "win32/WindowClass.h"

// What a screen reader is told of each control of each form: the accessibility interface is asked,
// as it asks.
namespace trelv::win32 {
namespace {

struct Told {
  std::string name;
  long role = 0;
};

/// A control's own name and role; role 0 where the interface does not answer.
Told told(HWND control) {
  static HMODULE const library = LoadLibraryW(L"oleacc.dll");
  using Ask = HRESULT WINAPI(HWND, DWORD, REFIID, void**);
  auto* const ask = std::bit_cast<Ask*>(GetProcAddress(library, "AccessibleObjectFromWindow"));
  void* found = nullptr;
  Told answer;
  if (ask == nullptr ||
      FAILED(ask(control, static_cast<DWORD>(OBJID_CLIENT), IID_IAccessible, &found))) {
    return answer;
  }
  const Owned<ObjectKind<IAccessible>> object(static_cast<IAccessible*>(found));
  VARIANT self{};
  self.vt = VT_I4;
  VARIANT role{};
  BSTR name = nullptr;
  object.get()->get_accName(self, &name);
  if (SUCCEEDED(object.get()->get_accRole(self, &role)) && role.vt == VT_I4) {
    answer.role = role.lVal;
  }
  answer.name = name != nullptr ? utf8(name) : std::string();
  SysFreeString(name);
  return answer;
}

/// The role that belongs to a control's kind.
long roleOf(HWND control) {
  const LONG style = GetWindowLongW(control, GWL_STYLE);
  switch (buttonKind(control)) {
    case ButtonKind::Push:
      return ROLE_SYSTEM_PUSHBUTTON;
    case ButtonKind::Option:
      return ROLE_SYSTEM_RADIOBUTTON;
    case ButtonKind::Check:
      return ROLE_SYSTEM_CHECKBUTTON;
    case ButtonKind::None:
      break;
  }
  if (isOfClass(control, L"Static")) {
    const LONG kind = style & SS_TYPEMASK;
    return kind == SS_BITMAP || kind == SS_ICON ? ROLE_SYSTEM_GRAPHIC : ROLE_SYSTEM_STATICTEXT;
  }
  const std::vector<std::pair<const wchar_t*, long>> classes{
      {L"Button", ROLE_SYSTEM_GROUPING},
      {L"Edit", ROLE_SYSTEM_TEXT},
      {L"ListBox", ROLE_SYSTEM_LIST},
      {L"ComboBox", ROLE_SYSTEM_COMBOBOX},
      {PROGRESS_CLASSW, ROLE_SYSTEM_PROGRESSBAR},
      {WC_TABCONTROLW, ROLE_SYSTEM_PAGETABLIST}};
  for (const auto& [name, role] : classes) {
    if (isOfClass(control, name)) {
      return role;
    }
  }
  return 0;
}

/// The label that stands before a control, which names it where its class has no text of its own.
std::string labelBefore(HWND control) {
  HWND const before = GetWindow(control, GW_HWNDPREV);
  std::wstring text = isOfClass(before, L"Static") ? textOf(before) : std::wstring();
  std::erase(text, L'&');
  return utf8(text);
}

bool isLine(HWND control) {
  return isOfClass(control, L"Static") &&
         (GetWindowLongW(control, GWL_STYLE) & SS_TYPEMASK) == SS_ETCHEDHORZ;
}

void expectTold(HWND control, const std::string& where) {
  const Told answer = told(control);
  const std::string name =
      isOfClass(control, L"ComboBox") && answer.name.empty() ? labelBefore(control) : answer.name;
  EXPECT_NE("", name) << where;
  // Wine knows text boxes only and calls all others windows; their role goes by their class.
  const bool unknown = answer.role == ROLE_SYSTEM_CLIENT && !isOfClass(control, L"Edit");
  EXPECT_TRUE(unknown || answer.role == roleOf(control)) << where << " has role " << answer.role;
  EXPECT_NE(0, roleOf(control)) << where << " is of no class that a screen reader knows";
}

TEST(Accessibility, EachControlOfEachFormHasANameAndARole) {
  ASSERT_LE(9U, dialogs().size());
  const Components components;
  Win32Desktop desktop;
  for (const std::string& dialog : dialogs()) {
    lookAt(desktop, dialog, [&dialog](machine::FormWindow& window) {
      for (HWND const child : childrenOf(handleOf(window))) {
        const std::string name = controlName(GetDlgCtrlID(child));
        // The program fills these.
        if (isOfClass(child, L"Static") && window.hasControl(name) && window.text(name).empty()) {
          window.setText(name, "Testo");
        }
        if (!isLine(child)) {
          expectTold(child, dialog + " " + name);
        }
      }
    });
  }
}

TEST(Accessibility, ListsAndBoxesAreCalledAsTheirLabels) {
  const std::map<std::string, std::map<std::string, std::string>> expected{
      {"frmSelectInstall",
       {{"ListAmb", "Tipo di installazione"},
        {"prgProgress", "Avanzamento"},
        {"cmdExec", "Avanti >"}}},
      {"frmProdTrelvStandalone", {{"ListProd", "Prodotti"}, {"labTab", "Pagine"}}},
      {"frmProdTrelvIntegrated", {{"ListProd", "Prodotti"}, {"cmdback", "< Indietro"}}},
      {"frmProdTrelvSinglePack", {{"ListProd", "Versioni"}, {"cmdExit", "Esci"}}},
      {"FrmInfo", {{"Label1_1", "Data Ultima modifica"}, {"Command1", "Esci"}}}};
  const Components components;
  Win32Desktop desktop;
  for (const auto& [dialog, names] : expected) {
    lookAt(desktop, dialog, [&controls = names](machine::FormWindow& window) {
      for (const auto& [control, name] : controls) {
        EXPECT_EQ(name, told(controlOf(window, control)).name) << control;
      }
    });
  }
}

}  // namespace
}  // namespace trelv::win32
