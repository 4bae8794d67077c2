#include "kit/ArchiveSurroundings.h"

#include <clocale>
#include <cstdlib>
#include <ctime>

namespace trelv::kit {
namespace {

constexpr const char* kZone = "TZ";
constexpr const char* kUniversal = "UTC0";

// The C library's own environment counts: that of the system is read once, when the process begins.
// A text without value takes the name away.
void setZone(const char* value) {
#ifdef _WIN32
  // The call with a length is not in the C library of Windows XP.
  _putenv((std::string(kZone) + "=" + (value != nullptr ? value : "")).c_str());
  _tzset();
#else
  if (value != nullptr) {
    setenv(kZone, value, 1);
  } else {
    unsetenv(kZone);
  }
  tzset();
#endif
}

}  // namespace

ArchiveSurroundings::ArchiveSurroundings() {
  const char* const zone = std::getenv(kZone);
  hadZone_ = zone != nullptr;
  zone_ = hadZone_ ? zone : "";
  setZone(kUniversal);
  const char* const characters = std::setlocale(LC_CTYPE, nullptr);
  characters_ = characters != nullptr ? characters : "C";
#ifndef _WIN32
  std::setlocale(LC_CTYPE, "C.UTF-8");
#endif
}

ArchiveSurroundings::~ArchiveSurroundings() {
  std::setlocale(LC_CTYPE, characters_.c_str());
  setZone(hadZone_ ? zone_.c_str() : nullptr);
}

}  // namespace trelv::kit
