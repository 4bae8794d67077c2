// A pack is unpacked as a second reader of the format does it, in whatever pieces it comes; what is
// damaged is refused by both.
#include "base/RuntimeError.h"
#include "decoder/GzipReader.h"
#include "fuzz/PackBytes.h"
#include "fuzz/Property.h"
#include "fuzz/Targets.h"
#include "support/decoder/DecoderPacks.h"

namespace trelv::fuzz {
namespace {

constexpr std::uint64_t kLimit = std::uint64_t{1} << 20U;

std::optional<std::string> byDecoder(std::string_view pack, std::size_t piece) {
  decoder::MemoryPack input{std::string(pack), piece};
  std::string content;
  try {
    decoder::GzipReader reader(input, kLimit);
    for (std::string_view bytes = reader.next(); !bytes.empty(); bytes = reader.next()) {
      content += bytes;
    }
    require(reader.position() == content.size(), "the position is behind what was given");
    require(reader.contentEnd() <= content.size(), "the content ends in what was given");
    require(content.find_last_not_of('\0') + 1 == reader.contentEnd(),
            "behind the content's end are zeros only");
  } catch (const RuntimeError& refused) {
    require(!refused.description().empty(), "a refusal tells why");
    return std::nullopt;
  }
  return content;
}

}  // namespace

void checkGzip(std::string_view bytes) {
  const std::size_t piece = 1 + takeNumber(bytes) % 64;
  const std::optional<std::string> whole = byDecoder(bytes, bytes.size() + 1);
  require(whole == byDecoder(bytes, piece), "the pieces in which a pack comes change nothing",
          {bytes});
  const std::optional<std::string> expected = unpacked(bytes);
  if (!expected || expected->size() <= kLimit) {
    require(whole == expected, "a pack is unpacked as by a second reader", {bytes});
  } else {
    require(!whole, "what is too large is refused");
  }
}

}  // namespace trelv::fuzz
