#include "support/decoder/MemoryTree.h"

#include <gtest/gtest.h>

#include "base/Text.h"

namespace trelv::decoder {
namespace {

std::string parentOf(const std::string& name) {
  const std::size_t end = name.rfind('/');
  return end == std::string::npos ? "" : name.substr(0, end);
}

bool isBelow(const std::string& name, const std::string& folder) {
  return folder.empty() ||
         (name.size() > folder.size() && name.rfind(folder, 0) == 0 && name[folder.size()] == '/');
}

}  // namespace

class MemoryTree::File : public OutputFile {
 public:
  File(MemoryTree& tree, std::string key) : tree_(tree), key_(std::move(key)) {
    tree_.nodes_[key_].open = true;
  }
  ~File() override { tree_.nodes_[key_].open = false; }

  SystemCode write(std::string_view bytes) override {
    const SystemCode code = tree_.call("write");
    std::string& content = tree_.nodes_[key_].content;
    // A disk that fills up takes a part.
    content += code == system_code::kSuccess ? bytes : bytes.substr(0, bytes.size() / 2);
    return code;
  }
  SystemCode finish(std::uint64_t modified) override {
    const SystemCode code = tree_.call("finish");
    if (code == system_code::kSuccess) {
      tree_.nodes_[key_].modified = modified;
      tree_.nodes_[key_].open = false;
    }
    return code;
  }

 private:
  MemoryTree& tree_;
  std::string key_;
};

void MemoryTree::put(const std::string& name, const std::string& content, bool readOnly) {
  nodes_[upperCase(name)] = {name, Standing::kFile, content, 0, readOnly, false};
}

void MemoryTree::putFolder(const std::string& name) {
  nodes_[upperCase(name)] = {name, Standing::kFolder, "", 0, false, false};
}

void MemoryTree::putLink(const std::string& name) {
  nodes_[upperCase(name)] = {name, Standing::kLink, "", 0, false, false};
}

void MemoryTree::failAt(int number, SystemCode code) {
  calls_ = 0;
  failing_ = number;
  code_ = code;
}

void MemoryTree::failAlways(const std::string& operation, SystemCode code) {
  always_[operation] = code;
}

void MemoryTree::before(const std::string& operation, std::function<void()> act) {
  before_[operation] = std::move(act);
}

SystemCode MemoryTree::call(const std::string& operation) {
  if (const auto found = before_.find(operation); found != before_.end()) {
    const std::function<void()> act = std::move(found->second);
    before_.erase(found);
    act();
  }
  if (++calls_ == failing_) {
    failed_ = operation;
    return code_;
  }
  const auto always = always_.find(operation);
  return always == always_.end() ? system_code::kSuccess : always->second;
}

MemoryTree::Node* MemoryTree::find(const std::string& name) {
  const auto found = nodes_.find(upperCase(name));
  return found == nodes_.end() ? nullptr : &found->second;
}

bool MemoryTree::stands(const std::string& name) const { return nodes_.count(upperCase(name)) > 0; }

const MemoryTree::Node& MemoryTree::at(const std::string& name) const {
  static const Node none;
  const auto found = nodes_.find(upperCase(name));
  EXPECT_NE(found, nodes_.end()) << name;
  return found == nodes_.end() ? none : found->second;
}

std::vector<std::string> MemoryTree::names() const {
  std::vector<std::string> result;
  for (const auto& [key, node] : nodes_) {
    const char* const end = node.standing == Standing::kFolder ? "/"
                            : node.standing == Standing::kLink ? "@"
                                                               : "";
    result.push_back(node.name + end);
  }
  return result;
}

std::string MemoryTree::path(const std::string& name) const {
  return "C:\\T\\" + replaceAll(name, "/", "\\");
}

SystemCode MemoryTree::look(const std::string& name, Standing& standing) {
  const SystemCode code = call("look");
  if (code == system_code::kSuccess) {
    const Node* const node = find(name);
    standing = node == nullptr ? Standing::kNothing : node->standing;
  }
  return code;
}

SystemCode MemoryTree::visit(const std::string& folder, const Visitor& visitor) {
  if (const SystemCode code = call("visit"); code != system_code::kSuccess) {
    return code;
  }
  const std::string key = upperCase(folder);
  std::vector<std::pair<std::string, Standing>> found;
  for (auto at = nodes_.lower_bound(key); at != nodes_.end(); ++at) {
    const std::string& name = at->second.name;
    if (isBelow(at->first, key) && parentOf(at->first) == key) {
      found.emplace_back(name.substr(name.rfind('/') + 1), at->second.standing);
    }
  }
  for (const auto& [name, standing] : found) {
    if (!visitor(name, standing)) {
      break;
    }
  }
  return system_code::kSuccess;
}

SystemCode MemoryTree::placeForNew(const std::string& name) {
  if (stands(name)) {
    return system_code::kAlreadyExists;
  }
  const std::string parent = parentOf(name);
  const Node* const folder = find(parent);
  if (parent.empty() || (folder != nullptr && folder->standing == Standing::kFolder)) {
    return system_code::kSuccess;
  }
  return system_code::kPathNotFound;
}

SystemCode MemoryTree::makeFolder(const std::string& name) {
  SystemCode code = call("makeFolder");
  if (code == system_code::kSuccess) {
    code = placeForNew(name);
  }
  if (code == system_code::kSuccess) {
    putFolder(name);
  }
  return code;
}

SystemCode MemoryTree::createFile(const std::string& name, std::unique_ptr<OutputFile>& file) {
  SystemCode code = call("createFile");
  if (code == system_code::kSuccess) {
    code = placeForNew(name);
  }
  if (code == system_code::kAlreadyExists) {
    code = system_code::kFileExists;
  }
  if (code == system_code::kSuccess) {
    put(name, "");
    file = std::make_unique<File>(*this, upperCase(name));
  }
  return code;
}

SystemCode MemoryTree::replaceFile(const std::string& from, const std::string& to) {
  if (const SystemCode code = call("replaceFile"); code != system_code::kSuccess) {
    return code;
  }
  const Node* const source = find(from);
  const Node* const target = find(to);
  if (source == nullptr || source->standing != Standing::kFile) {
    return system_code::kFileNotFound;
  }
  if (source->open || (target != nullptr && target->open)) {
    return system_code::kSharingViolation;
  }
  if (target != nullptr && target->standing != Standing::kFile) {
    return system_code::kAccessDenied;
  }
  Node moved = *source;
  moved.name = target != nullptr ? target->name : to;
  nodes_.erase(upperCase(from));
  nodes_[upperCase(to)] = moved;
  return system_code::kSuccess;
}

SystemCode MemoryTree::moveFolder(const std::string& from, const std::string& to) {
  SystemCode code = call("moveFolder");
  if (code == system_code::kSuccess) {
    code = placeForNew(to);
  }
  if (code != system_code::kSuccess) {
    return code;
  }
  const std::string key = upperCase(from);
  std::map<std::string, Node> kept;
  for (auto& [name, node] : nodes_) {
    Node moved = node;
    if (name == key || isBelow(name, key)) {
      moved.name = to + node.name.substr(from.size());
    }
    kept[upperCase(moved.name)] = moved;
  }
  nodes_ = kept;
  return system_code::kSuccess;
}

SystemCode MemoryTree::removeFile(const std::string& name) {
  if (const SystemCode code = call("removeFile"); code != system_code::kSuccess) {
    return code;
  }
  const Node* const node = find(name);
  if (node == nullptr || node->standing != Standing::kFile) {
    return system_code::kFileNotFound;
  }
  if (node->open) {
    return system_code::kSharingViolation;
  }
  nodes_.erase(upperCase(name));
  return system_code::kSuccess;
}

bool MemoryTree::isEmpty(const std::string& folder) const {
  const std::string key = upperCase(folder);
  for (const auto& [name, node] : nodes_) {
    if (isBelow(name, key)) {
      return false;
    }
  }
  return true;
}

SystemCode MemoryTree::removeFolder(const std::string& name) {
  if (const SystemCode code = call("removeFolder"); code != system_code::kSuccess) {
    return code;
  }
  const Node* const node = find(name);
  if (node == nullptr || node->standing != Standing::kFolder) {
    return system_code::kPathNotFound;
  }
  if (!isEmpty(name)) {
    return system_code::kDirectoryNotEmpty;
  }
  nodes_.erase(upperCase(name));
  return system_code::kSuccess;
}

}  // namespace trelv::decoder
