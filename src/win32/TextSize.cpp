#include "win32/TextSize.h"

#include "win32/WindowContext.h"

namespace trelv::win32 {

SIZE textSize(HWND control, const std::wstring& text) {
  const WindowContext context(control);
  SIZE size{};
  GetTextExtentPoint32W(context.get(), text.c_str(), static_cast<int>(text.size()), &size);
  return size;
}

}  // namespace trelv::win32
