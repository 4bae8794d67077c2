#include "fuzz/PackBytes.h"

#include <zlib.h>

#include <algorithm>
#include <array>

namespace trelv::fuzz {
namespace {

constexpr std::size_t kBlock = 512;
constexpr std::size_t kHeader = 10;
constexpr std::size_t kTrailer = 8;
constexpr int kRaw = -15;

/// Optional parts of a gzip header.
enum Flag : unsigned { kCheck = 2, kExtra = 4, kName = 8, kComment = 16, kReserved = 0xE0 };

unsigned byteAt(std::string_view bytes, std::size_t at) {
  return at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0;
}

std::uint32_t numberAt(std::string_view bytes, std::size_t at) {
  return byteAt(bytes, at) | byteAt(bytes, at + 1) << 8U | byteAt(bytes, at + 2) << 16U |
         byteAt(bytes, at + 3) << 24U;
}

uLong sumOf(std::string_view bytes) {
  return crc32(0, reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uInt>(bytes.size()));
}

/// Length of a member's header; 0 where it is none.
std::size_t headerLength(std::string_view member) {
  const unsigned flags = byteAt(member, 3);
  if (member.size() < kHeader || !member.starts_with("\x1F\x8B\x08") || (flags & kReserved) != 0) {
    return 0;
  }
  std::size_t length = kHeader;
  if ((flags & kExtra) != 0) {
    length += 2 + (byteAt(member, length) | byteAt(member, length + 1) << 8U);
  }
  for (const unsigned text : {kName, kComment}) {
    if ((flags & text) != 0) {
      const std::size_t end = member.find('\0', std::min(length, member.size()));
      length = end == std::string_view::npos ? member.size() + 1 : end + 1;
    }
  }
  if ((flags & kCheck) != 0) {
    const uLong sum = sumOf(member.substr(0, length)) & 0xFFFFU;
    const bool right = sum == (byteAt(member, length) | byteAt(member, length + 1) << 8U);
    length = right ? length + 2 : member.size() + 1;
  }
  return length <= member.size() ? length : 0;
}

/// Takes one member away and adds what it holds; false where it is damaged.
bool takeMember(std::string_view& pack, std::string& content) {
  const std::size_t header = headerLength(pack);
  if (header == 0) {
    return false;
  }
  z_stream stream{};
  if (inflateInit2(&stream, kRaw) != Z_OK) {
    return false;
  }
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(pack.data() + header));
  stream.avail_in = static_cast<uInt>(pack.size() - header);
  std::string bytes;
  std::array<char, 4096> piece{};
  int result = Z_OK;
  while (result == Z_OK) {
    stream.next_out = reinterpret_cast<Bytef*>(piece.data());
    stream.avail_out = static_cast<uInt>(piece.size());
    result = inflate(&stream, Z_NO_FLUSH);
    bytes.append(piece.data(), piece.size() - stream.avail_out);
  }
  pack.remove_prefix(pack.size() - stream.avail_in);
  inflateEnd(&stream);
  if (result != Z_STREAM_END || pack.size() < kTrailer || numberAt(pack, 0) != sumOf(bytes) ||
      numberAt(pack, 4) != bytes.size()) {
    return false;
  }
  pack.remove_prefix(kTrailer);
  content += bytes;
  return true;
}

void addNumber(std::string& bytes, std::size_t number, unsigned count) {
  for (unsigned index = 0; index < count; ++index) {
    bytes += static_cast<char>(number >> (8 * index) & 0xFFU);
  }
}

}  // namespace

std::string stored(std::string_view bytes) {
  constexpr std::size_t kMost = 0xFFFF;
  std::string pack("\x1F\x8B\x08\0\0\0\0\0\0\x03", kHeader);
  const uLong sum = sumOf(bytes);
  const std::size_t size = bytes.size();
  bool last = false;
  while (!last) {
    const std::size_t count = std::min(bytes.size(), kMost);
    last = count == bytes.size();
    pack += static_cast<char>(last);
    addNumber(pack, count, 2);
    addNumber(pack, ~count, 2);
    pack += bytes.substr(0, count);
    bytes.remove_prefix(count);
  }
  addNumber(pack, sum, 4);
  addNumber(pack, size, 4);
  return pack;
}

std::string compressed(std::string_view bytes) {
  z_stream stream{};
  deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
  std::string result(deflateBound(&stream, static_cast<uLong>(bytes.size())) + 32, '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
  stream.avail_in = static_cast<uInt>(bytes.size());
  stream.next_out = reinterpret_cast<Bytef*>(result.data());
  stream.avail_out = static_cast<uInt>(result.size());
  deflate(&stream, Z_FINISH);
  result.resize(result.size() - stream.avail_out);
  deflateEnd(&stream);
  return result;
}

std::optional<std::string> unpacked(std::string_view pack) {
  std::string content;
  do {
    if (!takeMember(pack, content)) {
      return std::nullopt;
    }
  } while (!pack.empty() && pack.front() != '\0');
  const bool padded = std::all_of(pack.begin(), pack.end(), [](char c) { return c == '\0'; });
  return padded ? std::optional(content) : std::nullopt;
}

void repairSums(std::string& archive) {
  for (std::size_t at = 0; at + kBlock <= archive.size(); at += kBlock) {
    if (archive.compare(at + 257, 5, "ustar") != 0) {
      continue;
    }
    archive.replace(at + 148, 8, "        ");
    unsigned sum = 0;
    for (std::size_t index = 0; index < kBlock; ++index) {
      sum += static_cast<unsigned char>(archive[at + index]);
    }
    std::string text(7, '0');
    for (std::size_t digit = 6; digit-- > 0; sum /= 8) {
      text[digit] = static_cast<char>('0' + sum % 8);
    }
    text[6] = '\0';
    archive.replace(at + 148, 7, text);
  }
}

}  // namespace trelv::fuzz
