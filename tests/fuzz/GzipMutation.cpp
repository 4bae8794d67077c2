// Changes packs, or what is in them and packs it again: most stay packs.
#include <algorithm>
#include <cstdint>
#include <string>

#include "fuzz/PackBytes.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned seed);
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned seed) {
  using namespace trelv::fuzz;
  // The first byte is the length of the pieces.
  const auto content = unpacked({reinterpret_cast<const char*>(data) + 1, size > 1 ? size - 1 : 0});
  if (seed % 4 == 0 || !content || size < 1) {
    return LLVMFuzzerMutate(data, size, most);
  }
  std::string bytes = *content;
  const std::size_t room = bytes.size() + 64;
  const std::size_t length = bytes.size();
  bytes.resize(room);
  bytes.resize(LLVMFuzzerMutate(reinterpret_cast<std::uint8_t*>(bytes.data()), length, room));
  // Compression costs more than all the rest.
  std::string pack = seed % 16 == 1 ? compressed(bytes) : stored(bytes);
  if (seed % 5 == 0) {
    pack += stored(bytes.substr(bytes.size() / 2));
  }
  pack.append(seed % 7 == 0 ? seed % 32 : 0, '\0');
  size = std::min(pack.size() + 1, most);
  std::copy_n(pack.begin(), size - 1, data + 1);
  return size;
}
