// Changes archives so that most stay archives: the sums of their headers are made right again.
#include <algorithm>
#include <cstdint>
#include <string>

#include "fuzz/PackBytes.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned seed);
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned seed) {
  size = LLVMFuzzerMutate(data, size, most);
  if (seed % 8 == 0) {
    return size;
  }
  std::string archive(reinterpret_cast<const char*>(data), size);
  if (seed % 8 < 3) {
    archive.resize((archive.size() + 511) / 512 * 512 + 1024, '\0');
  }
  trelv::fuzz::repairSums(archive);
  size = std::min(archive.size(), most);
  std::copy_n(archive.begin(), size, data);
  return size;
}
