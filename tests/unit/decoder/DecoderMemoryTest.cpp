// What a pack costs in memory, whatever is in it: the decoder runs beside the host's programs on
// small machines, and a pack of some kilobytes must not be able to fill them.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/RuntimeError.h"
#include "decoder/Extraction.h"
#include "decoder/Placement.h"
#include "support/Allocated.h"
#include "support/decoder/DecoderPacks.h"

namespace trelv::decoder {
namespace {

using tests::allocated;

class Peak {
 public:
  void sample() { peak_ = std::max(peak_, allocated()); }
  std::size_t growth() const { return peak_ - begin_; }

 private:
  std::size_t begin_ = allocated();
  std::size_t peak_ = begin_;
};

/// Forgets what it is given; nothing ever stands there.
class ForgettingTree : public OutputTree {
 public:
  explicit ForgettingTree(Peak& peak) : peak_(peak) {}

  std::size_t made() const { return made_; }

  std::string path(const std::string& name) const override { return "C:\\T\\" + name; }
  std::size_t longestName() const override { return 250; }
  SystemCode look(const std::string& /*name*/, Standing& standing) override {
    standing = Standing::kNothing;
    return system_code::kSuccess;
  }
  SystemCode visit(const std::string& /*folder*/, const Visitor& /*visitor*/) override {
    return system_code::kSuccess;
  }
  SystemCode makeFolder(const std::string& /*name*/) override { return count(); }
  SystemCode createFile(const std::string& /*name*/, std::unique_ptr<OutputFile>& file) override {
    file = std::make_unique<File>(peak_);
    return count();
  }
  SystemCode replaceFile(const std::string&, const std::string&) override { return count(); }
  SystemCode moveFolder(const std::string&, const std::string&) override { return count(); }
  SystemCode removeFile(const std::string& /*name*/) override { return system_code::kSuccess; }
  SystemCode removeFolder(const std::string& /*name*/) override { return system_code::kSuccess; }

 private:
  class File : public OutputFile {
   public:
    explicit File(Peak& peak) : peak_(peak) {}
    SystemCode write(std::string_view /*bytes*/) override {
      peak_.sample();
      return system_code::kSuccess;
    }
    SystemCode finish(std::uint64_t /*modified*/) override { return system_code::kSuccess; }

   private:
    Peak& peak_;
  };

  SystemCode count() {
    peak_.sample();
    ++made_;
    return system_code::kSuccess;
  }

  Peak& peak_;
  std::size_t made_ = 0;
};

/// Looks at the memory whenever more of the pack is asked for.
class WatchedPack : public MemoryPack {
 public:
  WatchedPack(std::string bytes, Peak& peak) : MemoryPack(std::move(bytes), 4096), peak_(peak) {}

  SystemCode read(char* buffer, std::size_t size, std::size_t& count) override {
    peak_.sample();
    return MemoryPack::read(buffer, size, count);
  }

 private:
  Peak& peak_;
};

struct Cost {
  std::size_t bytes = 0;
  /// Files and folders made, the temporary folder included.
  std::size_t made = 0;
  std::string refusal;
};

Cost costOf(std::string packBytes) {
  Peak peak;
  ForgettingTree tree(peak);
  WatchedPack pack(std::move(packBytes), peak);
  Cost cost;
  try {
    extractPack(pack, tree);
  } catch (const RuntimeError& failure) {
    cost.refusal = failure.description();
  }
  cost.bytes = peak.growth();
  cost.made = tree.made();
  return cost;
}

/// What two buffers and the libraries' own state come to.
constexpr std::size_t kLittle = std::size_t{1} << 20U;
/// With room for the program and its stack this is half of what the decoder may use.
constexpr std::size_t kMost = std::size_t{16} << 20U;

TEST(DecoderMemory, DoesNotGrowWithTheLengthOfAFile) {
  const Cost cost = costOf(pack(TarBytes().file("zeros", std::string(64U << 20U, '\0'))));
  EXPECT_EQ(cost.refusal, "");
  EXPECT_LT(cost.bytes, kLittle);
}

TEST(DecoderMemory, DoesNotGrowWithTheNumberOfEntries) {
  TarBytes archive;
  for (int number = 0; number < 30000; ++number) {
    archive.file("f" + std::to_string(number), "").folder("d" + std::to_string(number));
  }
  const Cost cost = costOf(pack(archive));
  EXPECT_EQ(cost.refusal, "");
  EXPECT_EQ(cost.made, 60001U);
  EXPECT_LT(cost.bytes, kLittle);
}

TEST(DecoderMemory, DoesNotGrowWithTheNumberOfMembers) {
  const std::string none = gzip("");
  std::string bytes;
  for (int number = 0; number < 30000; ++number) {
    bytes += none;
  }
  const Cost cost = costOf(bytes + pack(TarBytes().file("a", "1")));
  EXPECT_EQ(cost.refusal, "");
  EXPECT_LT(cost.bytes, kLittle);
}

constexpr const char* kLongHeader = "archivio tar con un'intestazione troppo lunga";

TEST(DecoderMemory, DoesNotGrowWithTheMapOfASparseFile) {
  std::string map = "2000000\n";
  for (int part = 0; part < 2000000; ++part) {
    map += "0\n0\n";
  }
  const Cost cost = costOf(pack(
      TarBytes()
          .pax({{"GNU.sparse.major", "1"}, {"GNU.sparse.minor", "0"}, {"GNU.sparse.realsize", "1"}})
          .file("s", map)));
  EXPECT_EQ(cost.refusal, kLongHeader);
  EXPECT_LT(cost.bytes, kMost);
}

TEST(DecoderMemory, DoesNotGrowWithTheMapInOlderHeaders) {
  // 21 parts of no length in each block, and the mark that another block follows.
  std::string block(512, '\0');
  for (std::size_t at = 0; at < 504; at += 12) {
    block.replace(at, 11, "00000000000");
  }
  block[504] = '\1';
  TarBytes archive = TarBytes().gnuSparse("s");
  for (int number = 0; number < 100000; ++number) {
    archive.bytes(block);
  }
  const Cost cost = costOf(pack(archive));
  EXPECT_EQ(cost.refusal, kLongHeader);
  EXPECT_LT(cost.bytes, kMost);
}

TEST(DecoderMemory, DoesNotGrowWithWhatStandsBeforeAnEntry) {
  const std::string value(900000, 'v');
  EXPECT_LT(costOf(pack(TarBytes().gnuName(value).file("x", ""))).bytes, kMost);
  EXPECT_LT(costOf(pack(TarBytes().pax({{"path", value}}).file("x", ""))).bytes, kMost);
  EXPECT_LT(costOf(pack(TarBytes().pax({{"SCHILY.xattr.a", value}}).file("x", ""))).bytes, kMost);
  TarBytes many;
  for (int number = 0; number < 20000; ++number) {
    many.entry("g", 'g', "9 a=1234\n");
  }
  const Cost cost = costOf(pack(many.file("x", "")));
  EXPECT_NE(cost.refusal, "");
  EXPECT_LT(cost.bytes, kMost);
}

/// Folders one in the other, each with many files of long names behind the next folder, as far as
/// they are not removed yet.
class DeepTree : public ForgettingTree {
 public:
  explicit DeepTree(Peak& peak) : ForgettingTree(peak), peak_(peak) {}

  bool isEmpty() const { return folders_ == 0; }

  SystemCode visit(const std::string& folder, const Visitor& visitor) override {
    const std::size_t level = levelOf(folder);
    if (level + 1 < folders_ && !visitor("d", Standing::kFolder)) {
      return system_code::kSuccess;
    }
    for (std::size_t number = files_[level]; number > 0; --number) {
      if (!visitor(std::string(150, 'f') + std::to_string(number), Standing::kFile)) {
        break;
      }
    }
    return system_code::kSuccess;
  }
  SystemCode removeFile(const std::string& name) override {
    peak_.sample();
    --files_[levelOf(name) - 1];
    return system_code::kSuccess;
  }
  SystemCode removeFolder(const std::string& name) override {
    EXPECT_EQ(levelOf(name), folders_ - 1);
    EXPECT_EQ(files_[folders_ - 1], 0U);
    --folders_;
    return system_code::kSuccess;
  }

 private:
  static constexpr std::size_t kLevels = 40;

  static std::size_t levelOf(const std::string& name) {
    return static_cast<std::size_t>(std::count(name.begin(), name.end(), '/'));
  }

  Peak& peak_;
  std::size_t folders_ = kLevels;
  std::vector<std::size_t> files_ = std::vector<std::size_t>(kLevels, 4000);
};

TEST(DecoderMemory, DoesNotGrowWithTheFilesBesideEachOfManyFolders) {
  Peak peak;
  DeepTree tree(peak);
  { const TemporaryFolder folder(tree); }
  EXPECT_TRUE(tree.isEmpty());
  EXPECT_LT(peak.growth(), kMost);
}

}  // namespace
}  // namespace trelv::decoder
