#include "kit/IsoDates.h"

#include <array>
#include <utility>

namespace trelv::kit {
namespace {

constexpr std::size_t kSector = 2048;
constexpr std::uint32_t kFirstVolume = 16;

// Where a volume descriptor has its parts.
constexpr std::string_view kVolumeMark = "CD001";
constexpr char kPrimary = 1;
constexpr char kSupplementary = 2;
constexpr unsigned char kLastVolume = 0xFF;
constexpr std::size_t kRootRecord = 156;
/// Names of the system and of the program that made it.
struct VolumeText {
  std::size_t at;
  std::size_t size;
};
constexpr std::array kMakers{VolumeText{8, 32}, VolumeText{574, 128}};
/// Creation, modification, effective since.
constexpr std::array<std::size_t, 3> kVolumeDates{813, 830, 864};

// Where the record of a file or folder has them.
constexpr std::size_t kRecordPlace = 2;
constexpr std::size_t kRecordSize = 10;
constexpr std::size_t kRecordDate = 18;
constexpr std::size_t kRecordFlags = 25;
constexpr std::size_t kShortestRecord = 34;
constexpr unsigned char kFolderFlag = 2;

unsigned char byteAt(const std::string& text, std::size_t at) {
  return static_cast<unsigned char>(text[at]);
}

std::uint32_t numberAt(const std::string& text, std::size_t at) {
  return byteAt(text, at) | static_cast<std::uint32_t>(byteAt(text, at + 1)) << 8U |
         static_cast<std::uint32_t>(byteAt(text, at + 2)) << 16U |
         static_cast<std::uint32_t>(byteAt(text, at + 3)) << 24U;
}

/// A text of blanks, in Joliet's letters of two bytes.
std::string blanks(std::size_t size, bool joliet) {
  std::string text(size, ' ');
  for (std::size_t i = 0; joliet && i < size; i += 2) {
    text[i] = '\0';
  }
  return text;
}

int digits(const std::string& text, std::size_t at, std::size_t length) {
  return std::stoi(text.substr(at, length));
}

}  // namespace

void IsoDates::take(std::string_view bytes) {
  waiting_ += bytes;
  std::size_t done = 0;
  for (; waiting_.size() - done >= kSector; done += kSector) {
    std::string sector = waiting_.substr(done, kSector);
    mend(sector);
    ++number_;
    sink_(sector);
  }
  waiting_.erase(0, done);
}

void IsoDates::finish() {
  if (!waiting_.empty()) {
    sink_(std::exchange(waiting_, ""));
  }
}

void IsoDates::mend(std::string& sector) {
  if (number_ >= kFirstVolume && !volumesEnded_) {
    mendVolume(sector);
  } else if (volumesEnded_ && folders_.empty()) {
    return;
  } else if (folders_.erase(number_) != 0) {
    mendFolder(sector);
  } else if (sector.starts_with("INFO ")) {
    sector.assign(kSector, '\0');
  }
}

void IsoDates::mendVolume(std::string& sector) {
  volumesEnded_ = byteAt(sector, 0) == kLastVolume ||
                  std::string_view(sector).substr(1, kVolumeMark.size()) != kVolumeMark;
  if (volumesEnded_ || (sector[0] != kPrimary && sector[0] != kSupplementary)) {
    return;
  }
  std::string text;
  for (const char character : momentText(moment_)) {
    text += character >= '0' && character <= '9' ? std::string(1, character) : "";
  }
  // Hundredths of a second, then the zone.
  text += "00";
  text += '\0';
  for (const std::size_t place : kVolumeDates) {
    sector.replace(place, text.size(), text);
  }
  for (const VolumeText& maker : kMakers) {
    sector.replace(maker.at, maker.size, blanks(maker.size, sector[0] == kSupplementary));
  }
  putRecordDate(sector, kRootRecord);
  noteFolder(sector, kRootRecord);
}

void IsoDates::mendFolder(std::string& sector) {
  for (std::size_t at = 0; at + kShortestRecord <= kSector && byteAt(sector, at) != 0;
       at += byteAt(sector, at)) {
    if ((byteAt(sector, at + kRecordFlags) & kFolderFlag) != 0) {
      putRecordDate(sector, at);
      noteFolder(sector, at);
    }
  }
}

void IsoDates::putRecordDate(std::string& sector, std::size_t record) {
  const std::string text = momentText(moment_);
  const std::size_t at = record + kRecordDate;
  sector[at] = static_cast<char>(digits(text, 0, 4) - 1900);
  sector[at + 1] = static_cast<char>(digits(text, 5, 2));
  sector[at + 2] = static_cast<char>(digits(text, 8, 2));
  sector[at + 3] = static_cast<char>(digits(text, 11, 2));
  sector[at + 4] = static_cast<char>(digits(text, 14, 2));
  sector[at + 5] = static_cast<char>(digits(text, 17, 2));
  sector[at + 6] = 0;
}

/// Its own record and that of the folder above name what has come by already.
void IsoDates::noteFolder(const std::string& sector, std::size_t record) {
  const std::uint32_t first = numberAt(sector, record + kRecordPlace);
  const auto sectors =
      static_cast<std::uint32_t>((numberAt(sector, record + kRecordSize) + kSector - 1) / kSector);
  for (std::uint32_t i = 0; i < sectors; ++i) {
    if (first + i > number_) {
      folders_.insert(first + i);
    }
  }
}

}  // namespace trelv::kit
