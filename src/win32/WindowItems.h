#pragma once

#include <windows.h>

#include <memory>

#include "win32/ItemControl.h"

namespace trelv::win32 {

/// The items of a window, by its class.
std::unique_ptr<ItemControl> itemsOf(HWND window);

}  // namespace trelv::win32
