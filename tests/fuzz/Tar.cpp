// An archive is unpacked whole below the output folder or leaves nothing, what stands there stays,
// and what was unpacked can be packed and unpacked again.
#include "fuzz/PackBytes.h"
#include "fuzz/Property.h"
#include "fuzz/Targets.h"
#include "support/decoder/DecoderPacks.h"

namespace trelv::fuzz {
namespace {

using decoder::MemoryTree;
using Names = std::vector<std::string>;

constexpr std::uint64_t kLimit = std::uint64_t{1} << 20U;

void checkName(const std::string& name) {
  require(("/" + name + "/").find("/../") == std::string::npos, "no name leads up", {name});
  require(name.find_first_of("\\:") == std::string::npos, "no name has a drive", {name});
  require(!name.starts_with("~qalbunex"), "nothing temporary is left", {name});
  require(!name.starts_with('/'), "no name begins at the root", {name});
}

/// The tree as an archive, without what stood there before.
std::string repacked(const MemoryTree& tree, const Names& before) {
  decoder::TarBytes archive;
  for (const std::string& name : tree.names()) {
    if (std::find(before.begin(), before.end(), name) != before.end()) {
      continue;
    }
    archive.pax({{"path", name}});
    if (name.ends_with('/')) {
      archive.folder("f/");
    } else {
      archive.file("f", tree.at(name).content);
    }
  }
  return archive.whole();
}

void checkAgain(const MemoryTree& tree, const Names& before) {
  MemoryTree again;
  const std::string refusal = decoder::extracted(packed(repacked(tree, before)), again, 2 * kLimit);
  require(refusal.empty(), "what was unpacked can be packed and unpacked again", {refusal});
  for (const std::string& name : tree.names()) {
    const bool wasThere = std::find(before.begin(), before.end(), name) != before.end();
    if (!wasThere && !name.ends_with('/')) {
      require(again.stands(name) && again.at(name).content == tree.at(name).content,
              "the second unpacking gives the same", {name});
    }
  }
}

}  // namespace

void checkTar(std::string_view bytes) {
  MemoryTree tree;
  tree.putFolder("prg");
  tree.put("prg/mine", "mine");
  tree.putLink("prg/link");
  const Names before = tree.names();
  const std::string refusal = decoder::extracted(packed(bytes), tree, kLimit);
  require(refusal.find('\n') == std::string::npos, "a refusal is one line", {refusal});
  require(refusal.empty() || tree.names() == before, "a refused archive leaves nothing", {refusal});
  require(tree.stands("prg/link"), "a link stays");
  for (const std::string& name : tree.names()) {
    checkName(name);
  }
  if (refusal.empty()) {
    checkAgain(tree, before);
  }
}

}  // namespace trelv::fuzz
