#include "sim/SimRegistry.h"

#include <utility>

#include "base/Text.h"
#include "sim/SimText.h"

namespace trelv::sim {
namespace {

using machine::Hive;
using namespace system_code;
namespace access_right = machine::key_access;

constexpr std::uint32_t kCreateSubKey = 0x4;
constexpr std::uint32_t kCreateLink = 0x20;
constexpr std::uint32_t kWritingRights = access_right::kSetValue | kCreateSubKey | kCreateLink;

bool isTextType(std::uint32_t type) {
  return type == machine::value_type::kText || type == machine::value_type::kExpandText ||
         type == machine::value_type::kMultiText;
}

// What the ANSI interface shows of a value.
std::string ansiData(const SimRegistryValue& value) {
  if (!isTextType(value.type)) {
    return value.stored;
  }
  return ansiOf(textOfWide(value.stored));
}

std::vector<std::string> levelsOf(const std::string& path) {
  std::vector<std::string> levels;
  std::string level;
  for (const char c : path + "\\") {
    if (c != '\\') {
      level += c;
    } else if (!level.empty()) {
      levels.push_back(std::exchange(level, ""));
    }
  }
  return levels;
}

std::string plainPath(const std::string& path) {
  std::string plain;
  for (const std::string& level : levelsOf(path)) {
    plain += "\\" + upperCase(level);
  }
  return plain;
}

std::string hiveName(Hive hive) { return hive == Hive::LocalMachine ? "HKLM" : "HKCU"; }

void dumpKey(const SimRegistryNode& node, const std::string& path, std::string& text) {
  text += node.values.empty() ? path + "\n" : "";
  for (const auto& [upper, value] : node.values) {
    std::string data = ansiData(value);
    data = isTextType(value.type) ? data.substr(0, data.find('\0')) : data;
    text += path + ": " + value.name + "=" + textOfAnsi(data) + "\n";
  }
  for (const auto& [upper, key] : node.keys) {
    dumpKey(*key, path + "\\" + key->name, text);
  }
}

class SimRegistryKey : public machine::RegistryKey {
 public:
  SimRegistryKey(SimCalls& calls, std::string path, std::shared_ptr<SimRegistryNode> node,
                 std::uint32_t access)
      : calls_(calls), path_(std::move(path)), node_(std::move(node)), access_(access) {}

  SystemCode describeValue(const std::string& name, std::uint32_t& type,
                           std::uint32_t& size) override {
    const SimRegistryValue* value = nullptr;
    const SystemCode code =
        query(CallKind::RegistryDescribe, "registry.describeValue", name, value);
    if (code == kSuccess) {
      type = value->type;
      size = static_cast<std::uint32_t>(ansiData(*value).size());
    }
    return code;
  }

  SystemCode readValue(const std::string& name, std::string& data) override {
    const SimRegistryValue* value = nullptr;
    const SystemCode code = query(CallKind::RegistryRead, "registry.readValue", name, value);
    if (code != kSuccess) {
      return code;
    }
    std::string whole = ansiData(*value);
    if (whole.size() > data.size()) {
      return kMoreData;
    }
    data = std::move(whole);
    return kSuccess;
  }

  SystemCode writeValue(const std::string& name, std::uint32_t type,
                        const std::string& data) override {
    const auto injected =
        calls_.enter(CallKind::RegistryWrite, "registry.writeValue", path_ + ": " + name);
    if (injected || (access_ & access_right::kSetValue) == 0) {
      return injected.value_or(kAccessDenied);
    }
    SimRegistryValue& value = node_->values[upperCase(name)];
    value.name = value.name.empty() ? name : value.name;
    value.type = type;
    value.stored = data;
    if (isTextType(type)) {
      // A text that comes without its closing NUL gets it.
      const bool open = !data.empty() && data.back() != '\0';
      value.stored = wideOf(textOfAnsi(data + (open ? std::string(1, '\0') : "")));
    }
    return kSuccess;
  }

  SystemCode subKeyName(std::uint32_t index, std::uint32_t size, std::string& name) override {
    const auto injected = calls_.enter(CallKind::RegistryEnumerate, "registry.subKeyName",
                                       path_ + ": " + std::to_string(index));
    if (injected || (access_ & access_right::kEnumerate) == 0) {
      return injected.value_or(kAccessDenied);
    }
    if (index >= node_->keys.size()) {
      return kNoMoreItems;
    }
    const std::string ansi = ansiOf(std::next(node_->keys.begin(), index)->second->name);
    if (ansi.size() + 1 > size) {
      return kMoreData;
    }
    name = textOfAnsi(ansi);
    return kSuccess;
  }

 private:
  SystemCode query(CallKind kind, const char* method, const std::string& name,
                   const SimRegistryValue*& value) {
    const auto injected = calls_.enter(kind, method, path_ + ": " + name);
    if (injected || (access_ & access_right::kQueryValue) == 0) {
      return injected.value_or(kAccessDenied);
    }
    const auto found = node_->values.find(upperCase(name));
    if (found == node_->values.end()) {
      return kFileNotFound;
    }
    value = &found->second;
    return kSuccess;
  }

  SimCalls& calls_;
  std::string path_;
  std::shared_ptr<SimRegistryNode> node_;
  std::uint32_t access_;
};

}  // namespace

SimRegistry::SimRegistry(SimCalls& calls)
    : calls_(calls),
      currentUser_(std::make_shared<SimRegistryNode>()),
      localMachine_(std::make_shared<SimRegistryNode>()) {}

void SimRegistry::shareKeysOf(const SimRegistry& other) {
  currentUser_ = other.currentUser_;
  localMachine_ = other.localMachine_;
}

SystemCode SimRegistry::openKey(Hive hive, const std::string& path, std::uint32_t access,
                                std::unique_ptr<machine::RegistryKey>& key) {
  const std::string full = hiveName(hive) + "\\" + path;
  if (const auto injected = calls_.enter(CallKind::RegistryOpen, "registry.openKey", full)) {
    return *injected;
  }
  if (!path.empty() && path.front() == '\\') {
    return kBadPathname;
  }
  std::shared_ptr<SimRegistryNode> node = find(hive, path);
  if (node == nullptr) {
    return kFileNotFound;
  }
  if (denied(hive, path, (access & kWritingRights) != 0)) {
    return kAccessDenied;
  }
  key = std::make_unique<SimRegistryKey>(calls_, full, std::move(node), access);
  return kSuccess;
}

SystemCode SimRegistry::createKey(Hive hive, const std::string& path, std::uint32_t access,
                                  std::unique_ptr<machine::RegistryKey>& key) {
  const std::string full = hiveName(hive) + "\\" + path;
  if (const auto injected = calls_.enter(CallKind::RegistryCreate, "registry.createKey", full)) {
    return *injected;
  }
  if (!path.empty() && path.front() == '\\') {
    return kBadPathname;
  }
  const bool writing = (access & kWritingRights) != 0 || find(hive, path) == nullptr;
  if (denied(hive, path, writing)) {
    return kAccessDenied;
  }
  key = std::make_unique<SimRegistryKey>(calls_, full, make(hive, path), access);
  return kSuccess;
}

void SimRegistry::makeKey(Hive hive, const std::string& path) { make(hive, path); }

void SimRegistry::setText(Hive hive, const std::string& path, const std::string& name,
                          const std::string& value) {
  setStored(hive, path, name, machine::value_type::kText, wideOf(value) + std::string(2, '\0'));
}

void SimRegistry::setStored(Hive hive, const std::string& path, const std::string& name,
                            std::uint32_t type, const std::string& stored) {
  make(hive, path)->values[upperCase(name)] = {name, type, stored};
}

std::optional<std::string> SimRegistry::text(Hive hive, const std::string& path,
                                             const std::string& name) const {
  const auto found = value(hive, path, name);
  if (!found) {
    return std::nullopt;
  }
  const std::string whole = textOfWide(found->stored);
  return whole.substr(0, whole.find('\0'));
}

std::optional<SimRegistryValue> SimRegistry::value(Hive hive, const std::string& path,
                                                   const std::string& name) const {
  const auto node = find(hive, path);
  if (node == nullptr || node->values.count(upperCase(name)) == 0) {
    return std::nullopt;
  }
  return node->values.at(upperCase(name));
}

bool SimRegistry::keyExists(Hive hive, const std::string& path) const {
  return find(hive, path) != nullptr;
}

void SimRegistry::removeKey(Hive hive, const std::string& path) {
  std::vector<std::string> levels = levelsOf(path);
  if (levels.empty() || find(hive, path) == nullptr) {
    return;
  }
  SimRegistryNode* parent = &hiveRoot(hive);
  for (std::size_t i = 0; i + 1 < levels.size(); ++i) {
    parent = parent->keys.at(upperCase(levels[i])).get();
  }
  parent->keys.erase(upperCase(levels.back()));
}

void SimRegistry::removeValue(Hive hive, const std::string& path, const std::string& name) {
  const auto node = find(hive, path);
  if (node != nullptr) {
    node->values.erase(upperCase(name));
  }
}

void SimRegistry::deny(Hive hive, const std::string& path) {
  denials_.push_back({hive, plainPath(path), false});
}

void SimRegistry::denyWriting(Hive hive, const std::string& path) {
  denials_.push_back({hive, plainPath(path), true});
}

void SimRegistry::allow(Hive hive, const std::string& path) {
  const std::string plain = plainPath(path);
  std::erase_if(denials_,
                [&](const Denial& denial) { return denial.hive == hive && denial.path == plain; });
}

std::string SimRegistry::dump() const {
  std::string text;
  for (const Hive hive : {Hive::CurrentUser, Hive::LocalMachine}) {
    for (const auto& [upper, key] : hiveRoot(hive).keys) {
      dumpKey(*key, hiveName(hive) + "\\" + key->name, text);
    }
  }
  return text;
}

SimRegistryNode& SimRegistry::hiveRoot(Hive hive) const {
  return hive == Hive::LocalMachine ? *localMachine_ : *currentUser_;
}

std::shared_ptr<SimRegistryNode> SimRegistry::find(Hive hive, const std::string& path) const {
  std::shared_ptr<SimRegistryNode> node = hive == Hive::LocalMachine ? localMachine_ : currentUser_;
  for (const std::string& level : levelsOf(path)) {
    const auto found = node->keys.find(upperCase(level));
    if (found == node->keys.end()) {
      return nullptr;
    }
    node = found->second;
  }
  return node;
}

std::shared_ptr<SimRegistryNode> SimRegistry::make(Hive hive, const std::string& path) {
  std::shared_ptr<SimRegistryNode> node = hive == Hive::LocalMachine ? localMachine_ : currentUser_;
  for (const std::string& level : levelsOf(path)) {
    std::shared_ptr<SimRegistryNode>& next = node->keys[upperCase(level)];
    if (next == nullptr) {
      next = std::make_shared<SimRegistryNode>();
      next->name = level;
    }
    node = next;
  }
  return node;
}

bool SimRegistry::denied(Hive hive, const std::string& path, bool writing) const {
  const std::string plain = plainPath(path) + "\\";
  for (const Denial& denial : denials_) {
    const bool below = plain.compare(0, denial.path.size() + 1, denial.path + "\\") == 0;
    if (denial.hive == hive && below && (writing || !denial.onlyWriting)) {
      return true;
    }
  }
  return false;
}

}  // namespace trelv::sim
