#include "support/decoder/DecoderPacks.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstring>

#include "base/RuntimeError.h"

namespace trelv::decoder {
namespace {

constexpr std::size_t kBlock = 512;
/// 2026-01-02 03:04:05 UTC.
constexpr long long kTime = 1767323045;

std::string octal(unsigned long long number, int digits) {
  char text[24];
  std::snprintf(text, sizeof text, "%0*llo", digits, number);
  return text;
}

void place(std::string& header, std::size_t at, const std::string& text) {
  header.replace(at, text.size(), text);
}

std::string filled(const std::string& text) {
  const std::size_t blocks = (text.size() + kBlock - 1) / kBlock;
  std::string result = text;
  result.resize(blocks * kBlock, '\0');
  return result;
}

std::string paxRecord(const std::string& key, const std::string& value) {
  const std::string rest = " " + key + "=" + value + "\n";
  std::size_t length = rest.size() + 1;
  while (std::to_string(length).size() + rest.size() != length) {
    ++length;
  }
  return std::to_string(length) + rest;
}

/// Writes the check sum of a whole header.
void seal(std::string& header) {
  place(header, 148, std::string(8, ' '));
  unsigned long long sum = 0;
  for (const char byte : header) {
    sum += static_cast<unsigned char>(byte);
  }
  place(header, 148, octal(sum, 6) + '\0');
}

}  // namespace

TarBytes& TarBytes::entry(const std::string& name, char type, const std::string& content,
                          const std::string& link) {
  std::string header(kBlock, '\0');
  place(header, 0, name.substr(0, 100));
  place(header, 100, "0000644");
  place(header, 108, "0001750");
  place(header, 116, "0001750");
  place(header, 124, octal(content.size(), 11));
  place(header, 136, octal(kTime, 11));
  header[156] = type;
  place(header, 157, link.substr(0, 100));
  place(header, 257, std::string("ustar\00000", 8));
  seal(header);
  bytes_ += header + filled(content);
  return *this;
}

TarBytes& TarBytes::pax(const std::vector<std::pair<std::string, std::string>>& values) {
  std::string records;
  for (const auto& [key, value] : values) {
    records += paxRecord(key, value);
  }
  return entry("./PaxHeaders/x", 'x', records);
}

TarBytes& TarBytes::gnuName(const std::string& name) {
  return entry("././@LongLink", 'L', name + '\0');
}

TarBytes& TarBytes::gnuSparse(const std::string& name) {
  entry(name, 'S');
  std::string header = bytes_.substr(bytes_.size() - kBlock);
  place(header, 257, std::string("ustar  \0", 8));
  place(header, 386, "00000000000");
  place(header, 398, "00000000000");
  header[482] = '\1';
  seal(header);
  bytes_.replace(bytes_.size() - kBlock, kBlock, header);
  return *this;
}

TarBytes& TarBytes::bytes(const std::string& more) {
  bytes_ += more;
  return *this;
}

std::string TarBytes::whole() const {
  std::string result = bytes_ + std::string(2 * kBlock, '\0');
  result.resize((result.size() + 10239) / 10240 * 10240, '\0');
  return result;
}

std::string gzip(const std::string& bytes) {
  z_stream stream{};
  EXPECT_EQ(deflateInit2(&stream, 6, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY), Z_OK);
  std::string result(deflateBound(&stream, static_cast<uLong>(bytes.size())) + 32, '\0');
  std::string input = bytes;
  stream.next_in = reinterpret_cast<Bytef*>(input.data());
  stream.avail_in = static_cast<uInt>(input.size());
  stream.next_out = reinterpret_cast<Bytef*>(result.data());
  stream.avail_out = static_cast<uInt>(result.size());
  EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
  result.resize(result.size() - stream.avail_out);
  deflateEnd(&stream);
  return result;
}

MemoryPack::MemoryPack(std::string bytes, std::size_t piece)
    : bytes_(std::move(bytes)), piece_(piece) {}

SystemCode MemoryPack::read(char* buffer, std::size_t size, std::size_t& count) {
  count = std::min({size, piece_, bytes_.size() - at_});
  std::memcpy(buffer, bytes_.data() + at_, count);
  at_ += count;
  return count == 0 ? atEnd : system_code::kSuccess;
}

std::string extracted(const std::string& packBytes, MemoryTree& tree, std::uint64_t largest) {
  // The archive library takes names by way of the process's character set here.
  static const char* const characters = std::setlocale(LC_CTYPE, "C.UTF-8");
  EXPECT_NE(characters, nullptr);
  MemoryPack input(packBytes);
  try {
    extractPack(input, tree, largest);
  } catch (const RuntimeError& failure) {
    EXPECT_NE(failure.description(), "");
    return failure.description();
  }
  return "";
}

}  // namespace trelv::decoder
