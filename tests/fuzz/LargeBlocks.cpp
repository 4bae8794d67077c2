// The sanitizer asks the system anew for each block as large as the decoder's buffers, which takes
// longer than unpacking what a fuzzer makes: they are kept, and no one may touch them meanwhile.
#include <sanitizer/asan_interface.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

constexpr std::size_t kLarge = std::size_t{64} * 1024;

struct Block {
  void* memory = nullptr;
  std::size_t size = 0;
  bool used = false;
};

std::array<Block, 8> blocks;

void* fromSystem(std::size_t size) {
  void* const memory = std::malloc(std::max<std::size_t>(size, 1));
  return memory != nullptr ? memory : throw std::bad_alloc();
}

/// A kept block of this size that nobody uses, or the place of one to come; null where all are
/// used.
Block* freeBlock(std::size_t size) {
  auto* const found = std::find_if(blocks.begin(), blocks.end(), [&](const Block& block) -> bool {
    return !block.used && (block.size == size || block.memory == nullptr);
  });
  return found == blocks.end() ? nullptr : found;
}

}  // namespace

void* operator new[](std::size_t size) {
  Block* const block = size < kLarge ? nullptr : freeBlock(size);
  if (block == nullptr) {
    return fromSystem(size);
  }
  if (block->memory == nullptr) {
    *block = {fromSystem(size), size, false};
  }
  block->used = true;
  ASAN_UNPOISON_MEMORY_REGION(block->memory, size);
  return block->memory;
}

void operator delete[](void* memory) noexcept {
  auto* const block = std::find_if(blocks.begin(), blocks.end(), [&](const Block& one) -> bool {
    return memory != nullptr && one.memory == memory;
  });
  if (block == blocks.end()) {
    std::free(memory);
    return;
  }
  ASAN_POISON_MEMORY_REGION(memory, block->size);
  block->used = false;
}

void operator delete[](void* memory, std::size_t /*size*/) noexcept { operator delete[](memory); }
