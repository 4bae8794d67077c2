#pragma once

#include <array>
#include <string_view>

/// Reports of the auxiliary tools that are known and harmless: a report that contains one of these
/// names (upper case; the report is upper-cased before the comparison) is not shown.
namespace trelv::harmlessReports {

/// Component libraries of the host suite whose registration fails without consequence. Which six
/// they are is the site's choice: this table is the one place to change. An empty name is no entry.
constexpr std::array<std::string_view, 6> kHostLibraries{
    "LUMOCTRL.OCX", "LUMOGRID.OCX", "LUMOEDIT.OCX", "LUMOPRN.DLL", "LUMODATA.DLL", "LUMONET.DLL",
};

/// Marker that stands for an empty folder of the medium.
constexpr std::string_view kMarkerFile = "DIRVUOTA.TXT";

/// Libraries that newer systems bring themselves and protect: harmless there only.
constexpr std::array<std::string_view, 2> kSystemLibraries{"DAO360.DLL", "MSXML4.DLL"};

}  // namespace trelv::harmlessReports
