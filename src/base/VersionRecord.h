#pragma once

#include <cstdint>
#include <string>

namespace trelv {

/// What a version query fills: OSVERSIONINFO, or OSVERSIONINFOEX.
struct VersionRecord {
  /// Tells the query which of the two is meant: kShortVersionRecord or kExtendedVersionRecord.
  std::uint32_t size = 0;
  std::uint32_t major = 0;
  std::uint32_t minor = 0;
  std::uint32_t build = 0;
  /// 2 for NT and all that came of it, 1 for Windows 95, 98 and Me, 0 before a query.
  std::uint32_t platform = 0;
  std::string servicePack;
  /// From here on the extended query alone fills in, the short one leaves 0. A product type of 1 is
  /// a workstation, 2 a domain controller, any other server 3.
  std::uint16_t servicePackMajor = 0;
  std::uint16_t servicePackMinor = 0;
  std::uint16_t suiteMask = 0;
  std::uint8_t productType = 0;
};

constexpr std::uint32_t kShortVersionRecord = 148;
constexpr std::uint32_t kExtendedVersionRecord = 156;

}  // namespace trelv
