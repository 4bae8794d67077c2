#include "kit/FileText.h"

#include <algorithm>

namespace trelv::kit {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kWideMark = "\xFF\xFE";
constexpr std::string_view kSwappedMark = "\xFE\xFF";
/// Even, so that no letter of two bytes is cut.
constexpr std::size_t kPiece = std::size_t{4} << 20U;

bool isContinuation(char character) {
  return (static_cast<unsigned char>(character) & 0xC0U) == 0x80U;
}

void put(std::string& text, char32_t character) {
  if (character < 0x80) {
    text += static_cast<char>(character);
  } else if (character < 0x800) {
    text += static_cast<char>(0xC0U | (character >> 6U));
    text += static_cast<char>(0x80U | (character & 0x3FU));
  } else {
    text += static_cast<char>(0xE0U | (character >> 12U));
    text += static_cast<char>(0x80U | ((character >> 6U) & 0x3FU));
    text += static_cast<char>(0x80U | (character & 0x3FU));
  }
}

std::string textOfLines(machine::Locale& locale, std::string_view bytes) {
  std::string text;
  while (!bytes.empty()) {
    const std::size_t end = std::min(bytes.find('\n'), bytes.size() - 1) + 1;
    const std::string line(bytes.substr(0, end));
    text += holdsUtf8(line) ? line : locale.fromAnsi(line);
    bytes.remove_prefix(end);
  }
  return text;
}

std::size_t lineEndsIn(std::string_view text) {
  return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

/// Counts the lines that end before an offset.
SystemCode countLines(machine::Files& files, const std::string& path, const std::string& mark,
                      std::uint64_t before, std::size_t& count) {
  for (std::uint64_t at = 0; at < before; at += kPiece) {
    std::string piece;
    const SystemCode code = files.readPart(
        path, at, static_cast<std::size_t>(std::min<std::uint64_t>(kPiece, before - at)), piece);
    if (code != system_code::kSuccess) {
      return code;
    }
    count += lineEndsIn(isWide(mark) ? utf8OfWide(mark + piece) : piece);
  }
  return system_code::kSuccess;
}

}  // namespace

bool isWide(std::string_view bytes) {
  return bytes.starts_with(kWideMark) || bytes.starts_with(kSwappedMark);
}

std::string utf8OfWide(std::string_view bytes) {
  const std::size_t low = bytes.starts_with(kWideMark) ? 0 : 1;
  std::string text;
  for (std::size_t at = kWideMark.size(); at + 1 < bytes.size(); at += 2) {
    put(text, static_cast<char32_t>(static_cast<unsigned char>(bytes[at + low]) |
                                    (static_cast<unsigned char>(bytes[at + 1 - low]) << 8U)));
  }
  return text;
}

bool holdsUtf8(std::string_view line) {
  for (std::size_t at = 0; at + 1 < line.size(); ++at) {
    const auto lead = static_cast<unsigned char>(line[at]);
    const bool two = lead >= 0xC2 && lead <= 0xDF;
    const bool three =
        lead >= 0xE2 && lead <= 0xEF && at + 2 < line.size() && isContinuation(line[at + 2]);
    if ((two || three) && isContinuation(line[at + 1])) {
      return true;
    }
  }
  return false;
}

std::string textOfFile(machine::Locale& locale, const std::string& bytes) {
  if (isWide(bytes)) {
    return utf8OfWide(bytes);
  }
  const std::string_view all = bytes;
  return textOfLines(locale, all.substr(all.starts_with(kUtf8Mark) ? kUtf8Mark.size() : 0));
}

SystemCode readFileEnd(machine::Machine& machine, const std::string& path, std::uint64_t most,
                       FileEnd& end) {
  machine::FileFacts facts;
  SystemCode code = machine.files.look(path, facts);
  const std::uint64_t left = facts.size > most ? facts.size - most + facts.size % 2 : 0;
  std::string mark;
  std::string bytes;
  if (code == system_code::kSuccess) {
    code = machine.files.readPart(path, 0, kWideMark.size(), mark);
  }
  if (code == system_code::kSuccess) {
    code = countLines(machine.files, path, mark, left, end.linesBefore);
  }
  if (code == system_code::kSuccess) {
    code = machine.files.readPart(path, left, static_cast<std::size_t>(most), bytes);
  }
  if (code != system_code::kSuccess || left == 0) {
    end.text = textOfFile(machine.locale, bytes);
    return code;
  }
  end.text = isWide(mark) ? utf8OfWide(mark + bytes) : textOfLines(machine.locale, bytes);
  // The line that was cut.
  end.text.erase(0, std::min(end.text.find('\n'), end.text.size() - 1) + 1);
  ++end.linesBefore;
  return code;
}

}  // namespace trelv::kit
