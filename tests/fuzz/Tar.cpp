// An archive is unpacked whole below the output folder or leaves nothing, what stands there stays,
// and what was unpacked can be packed and unpacked again.
#include <map>
#include <optional>

#include "fuzz/PackBytes.h"
#include "fuzz/Property.h"
#include "fuzz/Targets.h"
#include "support/decoder/DecoderPacks.h"

namespace trelv::fuzz {
namespace {

using decoder::MemoryTree;
using Names = std::vector<std::string>;

constexpr std::uint64_t kLimit = std::uint64_t{1} << 20U;
constexpr std::size_t kBlock = 512;
const std::string kEnd(2 * kBlock, '\0');

void checkName(const std::string& name) {
  require(("/" + name + "/").find("/../") == std::string::npos, "no name leads up", {name});
  require(name.find_first_of("\\:") == std::string::npos, "no name has a drive", {name});
  require(!name.starts_with("~qalbunex"), "nothing temporary is left", {name});
  require(!name.starts_with('/'), "no name begins at the root", {name});
}

// --- A second reader, for archives of plain headers only

/// The digits in front of the NUL that ends a number's field; nothing for any other field.
std::optional<std::size_t> octal(std::string_view field) {
  std::size_t number = 0;
  for (const char digit : field.substr(0, field.size() - 1)) {
    if (digit < '0' || digit > '7') {
      return std::nullopt;
    }
    number = number * 8 + static_cast<std::size_t>(digit - '0');
  }
  return field.back() == '\0' ? std::optional(number) : std::nullopt;
}

/// Levels of small letters and digits, which no rule of names changes.
bool isPlainName(std::string_view name) {
  return !name.empty() && name.front() != '/' && name.back() != '/' &&
         name.find("//") == std::string_view::npos &&
         name.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789/") == std::string_view::npos;
}

bool isPlainHeader(std::string_view header) {
  return header.substr(257, 8) == std::string_view("ustar\00000", 8) && header[156] == '0' &&
         header[157] == '\0' && header[345] == '\0';
}

/// Contents by names; nothing where the archive has anything but files under plain names.
std::optional<std::map<std::string, std::string>> plainFiles(std::string_view archive) {
  std::map<std::string, std::string> files;
  while (archive.size() >= kBlock && archive[0] != '\0') {
    const std::string_view header = archive.substr(0, kBlock);
    const std::string_view name = header.substr(0, std::min<std::size_t>(header.find('\0'), 100));
    const std::optional<std::size_t> size = octal(header.substr(124, 12));
    if (!isPlainHeader(header) || !isPlainName(name) || !size || *size > archive.size() - kBlock) {
      return std::nullopt;
    }
    files[std::string(name)] = archive.substr(kBlock, *size);
    const std::size_t length = kBlock + (*size + kBlock - 1) / kBlock * kBlock;
    archive.remove_prefix(std::min(length, archive.size()));
  }
  return files;
}

/// Files of one letter each, in their order, in headers as packing makes them, and a whole end.
bool mustBeTaken(const std::map<std::string, std::string>& files, const std::string& archive) {
  decoder::TarBytes packed;
  for (const auto& [name, content] : files) {
    if (name.size() > 1) {
      return false;
    }
    packed.file(name, content);
  }
  return !files.empty() && packed.withoutEnd() + kEnd == archive;
}

/// What was unpacked is what such an archive holds.
void checkContents(const MemoryTree& tree, const std::string& refusal, const std::string& archive) {
  const auto files = plainFiles(archive);
  if (!files) {
    return;
  }
  require(refusal.empty() || !mustBeTaken(*files, archive), "a plain archive is unpacked",
          {refusal});
  for (const auto& [name, content] : *files) {
    require(!refusal.empty() || (tree.stands(name) && tree.at(name).content == content),
            "a file has the bytes of its entry", {name});
  }
}

// --- Packing again

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
  return archive.withoutEnd() + kEnd;
}

void checkAgain(const MemoryTree& tree, const Names& before) {
  MemoryTree again;
  const std::string refusal = decoder::extracted(stored(repacked(tree, before)), again, 2 * kLimit);
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
  const std::string refusal = decoder::extracted(stored(bytes), tree, kLimit);
  require(refusal.find('\n') == std::string::npos, "a refusal is one line", {refusal});
  require(refusal.empty() || tree.names() == before, "a refused archive leaves nothing", {refusal});
  require(tree.stands("prg/link"), "a link stays");
  for (const std::string& name : tree.names()) {
    checkName(name);
  }
  require(refusal.empty() || tree.at("prg/mine").content == "mine",
          "a refused archive changes nothing", {refusal});
  checkContents(tree, refusal, std::string(bytes));
  if (refusal.empty()) {
    checkAgain(tree, before);
  }
}

}  // namespace trelv::fuzz
