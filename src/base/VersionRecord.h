#pragma once

#include <cstdint>
#include <string>

namespace trelv {

/// The operating system's version block (OSVERSIONINFO and its extended form).
struct VersionRecord {
  /// Size in bytes that the query is made with: 148 short form, 156 extended form.
  std::uint32_t size = 0;
  std::uint32_t major = 0;
  std::uint32_t minor = 0;
  std::uint32_t build = 0;
  /// 1 the Windows 95 family, 2 the NT family, 0 never filled.
  std::uint32_t platform = 0;
  std::string servicePack;
  /// Extended form only (else 0): service pack, suite mask, product type (1 workstation, 2 domain
  /// controller, 3 server).
  std::uint16_t servicePackMajor = 0;
  std::uint16_t servicePackMinor = 0;
  std::uint16_t suiteMask = 0;
  std::uint8_t productType = 0;
};

constexpr std::uint32_t kShortVersionRecord = 148;
constexpr std::uint32_t kExtendedVersionRecord = 156;

}  // namespace trelv
