#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/decoder/DecoderPacks.h"

namespace trelv::fuzz {
namespace {

using decoder::MemoryTree;
using decoder::TarBytes;

/// Archives of every kind of header; what is fuzzed starts from these.
const std::vector<std::string>& seeds() {
  static const std::vector<std::string> archives = {
      TarBytes()
          .folder("prg/")
          .file("prg/a.zip", "content")
          .file("b", std::string(1500, 'b'))
          .whole(),
      TarBytes().gnuName(std::string(150, 'g')).file("x", "1").file("y", "2").whole(),
      TarBytes().pax({{"path", "perché/così"}, {"mtime", "1.5"}}).file("x", "1").whole(),
      TarBytes()
          .pax({{"GNU.sparse.major", "1"}, {"GNU.sparse.minor", "0"}, {"GNU.sparse.realsize", "9"}})
          .file("s", "1\n0\n9\n" + std::string(506, '\0') + "123456789")
          .whole(),
      TarBytes().file("f", "1").entry("l", '1', "", "f").entry("s", '2', "", "/").whole()};
  return archives;
}

class Mutation {
 public:
  explicit Mutation(std::uint64_t seed) : state_(seed * 0x9E3779B97F4A7C15U + 1) {}

  std::string archive() {
    std::string bytes = seeds()[below(seeds().size())];
    for (std::size_t steps = 1 + below(6); steps > 0; --steps) {
      change(bytes);
    }
    if (below(4) != 0) {
      repairSums(bytes);
    }
    return bytes;
  }

  std::string pack() {
    std::string bytes = decoder::gzip(archive());
    for (std::size_t steps = below(3); steps > 0 && !bytes.empty(); --steps) {
      bytes[below(bytes.size())] = static_cast<char>(below(256));
    }
    if (below(5) == 0) {
      bytes.resize(below(bytes.size() + 1));
    }
    return bytes;
  }

 private:
  std::size_t below(std::size_t count) {
    state_ ^= state_ >> 12U;
    state_ ^= state_ << 25U;
    state_ ^= state_ >> 27U;
    return static_cast<std::size_t>((state_ * 0x2545F4914F6CDD1DU) >> 33U) % count;
  }

  void change(std::string& bytes) {
    static const std::vector<std::string> pieces = {
        "../", "/",    "C:",    "\\", "NUL", std::string(4, '\0'),
        "777", "\xFF", "path=", "x",  "L",   "\x80"};
    const std::size_t block = below(bytes.size() / 512) * 512;
    switch (below(5)) {
      case 0:
        bytes[block + below(512)] = static_cast<char>(below(256));
        break;
      case 1:
        bytes[block + 156] = "0123456789gxLKSDMVNA\0"[below(21)];
        break;
      case 2:
        bytes.insert(block, bytes.substr(below(bytes.size() / 512) * 512, 512));
        break;
      case 3: {
        const std::string& piece = pieces[below(pieces.size())];
        bytes.replace(block + below(500), piece.size(), piece);
        bytes.resize((bytes.size() + 511) / 512 * 512);
        break;
      }
      default:
        bytes.erase(block, 512 * below(3));
        bytes.resize((bytes.size() + 1023) / 512 * 512);
    }
  }

  /// Makes headers of what was changed, so that more than their sums is looked at.
  static void repairSums(std::string& bytes) {
    for (std::size_t at = 0; at + 512 <= bytes.size(); at += 512) {
      if (bytes.compare(at + 257, 5, "ustar") != 0) {
        continue;
      }
      bytes.replace(at + 148, 8, "        ");
      unsigned sum = 0;
      for (std::size_t index = 0; index < 512; ++index) {
        sum += static_cast<unsigned char>(bytes[at + index]);
      }
      std::string text(7, '0');
      for (std::size_t digit = 6; digit-- > 0; sum /= 8) {
        text[digit] = static_cast<char>('0' + sum % 8);
      }
      text[6] = '\0';
      bytes.replace(at + 148, 7, text);
    }
  }

  std::uint64_t state_;
};

/// Unpacks and checks what must hold of any pack.
bool unpacksWithoutHarm(const std::string& bytes) {
  MemoryTree tree;
  tree.putFolder("prg");
  tree.put("prg/mine", "mine");
  tree.putLink("prg/link");
  const std::vector<std::string> before = tree.names();
  const std::string refusal = decoder::extracted(bytes, tree, 1U << 20U);
  EXPECT_EQ(refusal.find('\n'), std::string::npos);
  if (!refusal.empty()) {
    EXPECT_EQ(tree.names(), before) << refusal;
  }
  EXPECT_EQ(tree.at("prg/mine").content, "mine");
  EXPECT_TRUE(tree.stands("prg/link"));
  for (const std::string& name : tree.names()) {
    EXPECT_EQ(name.find(".."), std::string::npos) << name;
    EXPECT_EQ(name.find_first_of("\\:"), std::string::npos) << name;
    EXPECT_NE(name.rfind("~qalbunex", 0), 0U) << name;
  }
  return refusal.empty();
}

TEST(DecoderFuzz, MutatedPacksAreUnpackedWholeOrLeaveNothing) {
  int accepted = 0;
  for (std::uint64_t seed = 1; seed <= 3000; ++seed) {
    Mutation mutation(seed);
    SCOPED_TRACE("seed " + std::to_string(seed));
    if (unpacksWithoutHarm(decoder::gzip(mutation.archive()))) {
      ++accepted;
    }
    ASSERT_FALSE(testing::Test::HasFailure());
  }
  // Many mutations only change a content or a field that nobody needs.
  EXPECT_GT(accepted, 200);
  EXPECT_LT(accepted, 2000);
}

TEST(DecoderFuzz, DamagedBytesOfThePackItselfLeaveNothing) {
  for (std::uint64_t seed = 1; seed <= 2000; ++seed) {
    Mutation mutation(seed);
    SCOPED_TRACE("seed " + std::to_string(seed));
    unpacksWithoutHarm(mutation.pack());
    ASSERT_FALSE(testing::Test::HasFailure());
  }
}

}  // namespace
}  // namespace trelv::fuzz
