#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>

namespace trelv {

/// Names that belong to the host suite of a site and that no other file tells. A site that has
/// others names them in a file beside the program, see platform/SiteFile.h.
struct SiteNames {
  /// Libraries of the suite that no product misses when their registration fails, upper case. A
  /// report that holds one of them is not shown.
  std::array<std::string, 6> harmlessLibraries{"LUMOCTRL.OCX", "LUMOGRID.OCX", "LUMOEDIT.OCX",
                                               "LUMOPRN.DLL",  "LUMODATA.DLL", "LUMONET.DLL"};
  /// Names of the store's products by their code, upper case; those that the suite itself gives are
  /// not among them.
  std::map<std::int32_t, std::string> storeProducts{
      {2, "FADRO"},    {3, "TULMAR"}, {4, "ONVEXA"}, {5, "RISPEL"},   {6, "QUADRIN"},
      {7, "ZELVO"},    {8, "MIRTAN"}, {9, "COLBEX"}, {10, "SURVENA"}, {12, "ARDELO"},
      {13, "PENTRIS"}, {15, "VAXOL"}, {16, "NUBREL"}};
  /// Ini file of the suite Travolin; a bare name lies in the Windows folder.
  std::string travolinIniFile = "travolin.ini";
};

}  // namespace trelv
