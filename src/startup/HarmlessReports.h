#pragma once

#include <array>
#include <string_view>

/// What the auxiliary tools complain of without need: whoever reads a report upper-cases it, and
/// drops it when one of these names is in it, or one of SiteNames::harmlessLibraries.
namespace trelv::harmlessReports {

/// Marker that stands for an empty folder of the medium.
constexpr std::string_view kMarkerFile = "DIRVUOTA.TXT";

/// Libraries that newer systems bring themselves and protect: harmless there only.
constexpr std::array<std::string_view, 2> kSystemLibraries{"DAO360.DLL", "MSXML4.DLL"};

}  // namespace trelv::harmlessReports
