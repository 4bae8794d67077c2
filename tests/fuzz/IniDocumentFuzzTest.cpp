#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/IniDifference.h"
#include "records/IniDocument.h"

namespace trelv::fuzz {
namespace {

/// Files as a host installation has them; what is fuzzed starts from these.
const std::vector<std::string>& seeds() {
  static const std::vector<std::string> files = {
      "[prod01]\r\nconf=prg\\com\\setup\\zb.ini\r\nid=ZB\r\nname=Nerio\r\n\r\n"
      "[prod02]\r\nconf=\r\nid=Q2\r\n",
      "; versions\r\n[NERIO]\r\nversion=03.20.30.00\r\n[ZB]\r\nversion=09.93.00.00\r\n",
      "[Setup01]\nversion = 10.00.00.00\nServer01 = \"%PATHSERVER%\\a b\\setup.exe\" /s \"x y\"\n"
      "Client01='setup.exe'\n[Update01]\nversion=10.01\nServer01=a=b;c\n",
      "k=v\n[s]\nk\nk=1\n=2\n[]\nx=3\n[s] junk\nk=4\n[t\nz=perch\xE9 \x80\n",
  };
  return files;
}

class Mutation {
 public:
  explicit Mutation(std::uint64_t seed) : state_(seed * 0x9E3779B97F4A7C15U + 1) {}

  std::string next() {
    std::string bytes = seeds()[below(seeds().size())];
    for (std::size_t steps = 1 + below(8); steps > 0; --steps) change(bytes);
    return bytes;
  }

 private:
  std::size_t below(std::size_t count) {
    state_ ^= state_ >> 12U;
    state_ ^= state_ << 25U;
    state_ ^= state_ >> 27U;
    return static_cast<std::size_t>((state_ * 0x2545F4914F6CDD1DU) >> 33U) % count;
  }

  std::string piece() {
    static const std::vector<std::string> pieces = {
        "[",    "]",  "=",   ";",  "\"", "'",    " ", "\t",
        "\r\n", "\n", "[s]", "k=", "=v", "\"\"", "K", "s"};
    if (below(40) == 0) return std::string(1, static_cast<char>(below(256)));
    return pieces[below(pieces.size())];
  }

  void change(std::string& bytes) {
    const std::size_t at = below(bytes.size() + 1);
    const std::size_t length = below(20);
    switch (below(5)) {
      case 0:
        bytes.erase(at, length);
        break;
      case 1:
        bytes.insert(below(bytes.size() + 1), bytes.substr(at, length));
        break;
      case 2: {
        const std::string& other = seeds()[below(seeds().size())];
        bytes.insert(at, other, below(other.size()), length * 3);
        break;
      }
      case 3:
        bytes.replace(at, 1, piece());
        break;
      default:
        bytes.insert(at, piece());
    }
  }

  std::uint64_t state_;
};

TEST(IniDocumentFuzz, MutatedFilesReadAsThePlatformReadsThem) {
  int understood = 0;
  for (std::uint64_t seed = 1; seed <= 500; ++seed) {
    const std::string bytes = Mutation(seed).next();
    if (IniDocument::understands(bytes)) ++understood;
    const std::optional<std::string> difference = iniDifference(bytes);
    ASSERT_FALSE(difference) << "seed " << seed << ": " << *difference;
  }
  // The others have a stray control character.
  EXPECT_GT(understood, 300);
}

TEST(IniDocumentFuzz, AnyBytesAreReadWithoutHarm) {
  for (std::uint64_t seed = 1; seed <= 3000; ++seed) {
    const std::string bytes = Mutation(seed + 100000).next();
    // Also what understands() refuses must not lead out of the text.
    const IniDocument document(bytes);
    for (const char* section : {"s", "", "Setup01"}) {
      const std::optional<std::string_view> value = document.value(section, "k");
      EXPECT_TRUE(!value || bytes.find(*value) != std::string::npos) << seed;
    }
  }
}

}  // namespace
}  // namespace trelv::fuzz
