#pragma once

#include <string>

#include "machine/Form.h"

namespace trelv::win32 {

/// What a form is filled with: contents like those of daily use, or the longest that sites have.
enum class Contents { Daily, Long };

/// Fills a form's controls. The picture (full path) goes where it has a place for one.
void fillGallery(machine::FormWindow& window, const std::string& form, const std::string& picture,
                 Contents contents = Contents::Daily);

/// Shows a form's dialog, filled in this way, until it is closed: to be looked at and pictured
/// without the work that leads to it. False when there is no such dialog.
bool showGallery(const std::string& form, const std::string& picture, Contents contents);

}  // namespace trelv::win32
