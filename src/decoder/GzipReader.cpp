#include "decoder/GzipReader.h"

#include <zlib.h>

#include <cstring>
#include <new>
#include <string>

#include "decoder/Refusal.h"

namespace trelv::decoder {
namespace {

// Large enough that calls of the system and of the tar reader are few.
constexpr std::size_t kPackedBuffer = std::size_t{128} * 1024;
constexpr std::size_t kUnpackedBuffer = std::size_t{256} * 1024;
/// zlib: a gzip header and trailer are expected, the window is the largest.
constexpr int kGzipWindow = 15 + 16;

constexpr const char* kEmpty = "pacco vuoto";
constexpr const char* kNotGzip = "il file non è un pacco gzip";
constexpr const char* kCutShort = "pacco troncato";
constexpr const char* kDamaged = "pacco danneggiato";
constexpr const char* kGarbage = "dati estranei dopo la fine del pacco";
constexpr const char* kTooLarge = "il contenuto supera il limite di dimensione";

constexpr unsigned char kMagic = 0x1F;

/// Each byte is compared with its neighbour, which the C library does many at a time.
bool allZero(std::string_view bytes) {
  return bytes.empty() ||
         (bytes[0] == '\0' && std::memcmp(bytes.data(), bytes.data() + 1, bytes.size() - 1) == 0);
}

}  // namespace

struct GzipReader::Inflation {
  Inflation() {
    if (inflateInit2(&stream, kGzipWindow) != Z_OK) {
      throw std::bad_alloc();
    }
  }
  Inflation(const Inflation&) = delete;
  Inflation& operator=(const Inflation&) = delete;
  ~Inflation() { inflateEnd(&stream); }

  z_stream stream{};
};

GzipReader::GzipReader(PackInput& input, std::uint64_t limit)
    : input_(input),
      limit_(limit),
      packed_(std::make_unique_for_overwrite<char[]>(kPackedBuffer)),
      unpacked_(std::make_unique_for_overwrite<char[]>(kUnpackedBuffer)),
      inflation_(std::make_unique<Inflation>()) {
  if (!fill()) {
    refuse(kEmpty);
  }
  if (static_cast<unsigned char>(packed_[0]) != kMagic) {
    refuse(kNotGzip);
  }
  inMember_ = true;
}

GzipReader::~GzipReader() = default;

/// Reads on when all that was read is used; false at the end of the pack.
bool GzipReader::fill() {
  z_stream& stream = inflation_->stream;
  if (stream.avail_in > 0) {
    return true;
  }
  std::size_t got = 0;
  require(input_.read(packed_.get(), kPackedBuffer, got), input_.path());
  stream.next_in = reinterpret_cast<Bytef*>(packed_.get());
  stream.avail_in = static_cast<uInt>(got);
  return got > 0;
}

void GzipReader::requireInput() {
  if (!fill()) {
    refuse(kCutShort);
  }
}

/// Behind a member: another one, zeros to the end, or the end.
void GzipReader::beginMember() {
  if (!fill()) {
    ended_ = true;
    return;
  }
  const unsigned char first = *inflation_->stream.next_in;
  if (first == 0) {
    passPadding();
    return;
  }
  if (first != kMagic) {
    refuse(kGarbage);
  }
  inflateReset(&inflation_->stream);
  inMember_ = true;
}

void GzipReader::passPadding() {
  z_stream& stream = inflation_->stream;
  do {
    if (!allZero({reinterpret_cast<const char*>(stream.next_in), stream.avail_in})) {
      refuse(kGarbage);
    }
    stream.avail_in = 0;
  } while (fill());
  ended_ = true;
}

/// One member's bytes, up to a full buffer or its end.
std::string_view GzipReader::inflateSome() {
  z_stream& stream = inflation_->stream;
  stream.next_out = reinterpret_cast<Bytef*>(unpacked_.get());
  stream.avail_out = static_cast<uInt>(kUnpackedBuffer);
  while (inMember_ && stream.avail_out > 0) {
    requireInput();
    const int result = inflate(&stream, Z_NO_FLUSH);
    if (result == Z_MEM_ERROR) {
      throw std::bad_alloc();
    }
    if (result != Z_OK && result != Z_STREAM_END) {
      refuse(std::string(kDamaged) + " (" + (stream.msg != nullptr ? stream.msg : "zlib") + ")");
    }
    inMember_ = result == Z_OK;
  }
  return {unpacked_.get(), kUnpackedBuffer - stream.avail_out};
}

void GzipReader::count(std::string_view bytes) {
  if (!allZero(bytes)) {
    contentEnd_ = position_ + bytes.find_last_not_of('\0') + 1;
  }
  position_ += bytes.size();
  if (position_ > limit_) {
    refuse(kTooLarge);
  }
}

std::string_view GzipReader::next() {
  std::string_view bytes;
  while (bytes.empty() && !ended_) {
    if (inMember_) {
      bytes = inflateSome();
    } else {
      beginMember();
    }
  }
  count(bytes);
  return bytes;
}

}  // namespace trelv::decoder
