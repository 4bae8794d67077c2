#include "win32/WindowItems.h"

// The common controls' header needs the system's, which ours brings.
#include <commctrl.h>

#include "win32/ListControl.h"
#include "win32/TabControl.h"
#include "win32/WindowClass.h"

namespace trelv::win32 {

std::unique_ptr<ItemControl> itemsOf(HWND window) {
  if (isOfClass(window, L"ListBox")) {
    return takesSeveralChoices(window) ? std::make_unique<MultiListControl>(window)
                                       : std::make_unique<ListControl>(window);
  }
  if (isOfClass(window, L"ComboBox")) {
    return std::make_unique<ListControl>(window);
  }
  if (isOfClass(window, WC_TABCONTROLW)) {
    return std::make_unique<TabControl>(window);
  }
  return std::make_unique<NoItems>();
}

}  // namespace trelv::win32
