#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kit/PackContent.h"
#include "sim/SimMachine.h"
#include "support/kit/Archives.h"
#include "support/kit/ZipPacks.h"

namespace trelv::tests {
namespace {

std::vector<std::string> pathsIn(const std::string& bytes) {
  sim::SimMachine machine;
  machine.putFile("C:\\a.zip", bytes);
  std::vector<std::string> paths;
  for (const kit::PackedFile& file : kit::packContent(machine.files(), "C:\\a.zip")) {
    paths.push_back(file.path);
  }
  return paths;
}

TEST(PackContent, FingerprintOfAFileIsThatOfItsBytes) {
  ASSERT_EQ(kit::fingerprintOf("abc").size, 3U);
  sim::SimMachine machine;
  constexpr std::size_t kMega = std::size_t{1} << 20U;
  for (const std::size_t size : {std::size_t{0}, kMega - 1, kMega, kMega + 1, 3 * kMega}) {
    std::string bytes(size, 'a');
    for (std::size_t at = 0; at < size; at += 1000) {
      bytes[at] = static_cast<char>(at >> 10U);
    }
    machine.putFile("C:\\a.zip", bytes);
    EXPECT_EQ(kit::fingerprintOfFile(machine.files(), "C:\\a.zip"), kit::fingerprintOf(bytes))
        << size;
  }
}

TEST(PackContent, HoldsTheFilesOfTheSetUpFolderAlone) {
  const std::string setup = "prg/com/setup/aggdovra/";
  EXPECT_EQ(pathsIn(zipBytes({{setup + "zb/", ""},
                              {setup + "zb/a.txt", "a"},
                              {setup + "zb/legame.txt", "", "a.txt"},
                              {"prg/com/altro.txt", "altro"},
                              {"leggimi.txt", "leggimi"}})),
            (std::vector<std::string>{"zb\\a.txt"}));
}

/// A pack in a pack, so many one in the other.
std::string nested(int count) {
  const std::string name = std::to_string(count) + ".txt";
  return count == 1 ? zipPack({{name, "x"}})
                    : zipPack({{"interno.zip", nested(count - 1)}, {name, "x"}});
}

TEST(PackContent, PacksAreLookedIntoThreeDeep) {
  EXPECT_EQ(pathsIn(nested(3)),
            (std::vector<std::string>{"interno.zip", "3.txt", "interno.zip", "2.txt", "1.txt"}));
  EXPECT_EQ(pathsIn(nested(5)), (std::vector<std::string>{"interno.zip", "5.txt", "interno.zip",
                                                          "4.txt", "interno.zip", "3.txt"}));
}

}  // namespace
}  // namespace trelv::tests
