#include "win32/ControlNames.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace trelv::win32 {
namespace {

struct Control {
  std::string_view name;
  int id;
};

/// Rows of resource.h (cmake/ControlTable.cmake).
constexpr auto kControls = std::to_array<Control>({
#include <ControlTable.inc>
});

constexpr bool noneTwice() {
  for (auto control = kControls.begin(); control != kControls.end(); ++control) {
    for (auto other = control + 1; other != kControls.end(); ++other) {
      if (control->id == other->id || control->name == other->name) {
        return false;
      }
    }
  }
  return true;
}
static_assert(noneTwice(), "two controls of resource.h share a name or a number");

}  // namespace

int controlId(const std::string& name) {
  const auto* const found =
      std::find_if(kControls.begin(), kControls.end(),
                   [&name](const Control& control) { return control.name == name; });
  return found == kControls.end() ? 0 : found->id;
}

std::string controlName(int id) {
  const auto* const found = std::find_if(kControls.begin(), kControls.end(),
                                         [id](const Control& control) { return control.id == id; });
  return found == kControls.end() ? std::string() : std::string(found->name);
}

}  // namespace trelv::win32
