#include "overlay/OverlayRegistry.h"

#include <algorithm>
#include <utility>

#include "base/Text.h"

namespace trelv::overlay {

using machine::Hive;
using machine::RegistryKey;
using namespace system_code;

namespace {

constexpr std::uint32_t kCreateSubKey = 0x4;
/// Longer than any name of a key, with its closing NUL.
constexpr std::uint32_t kLongestName = 257;

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

std::string pathOf(const std::vector<std::string>& levels, std::size_t count) {
  std::string path;
  for (std::size_t i = 0; i < count; ++i) {
    path += (i == 0 ? "" : "\\") + levels[i];
  }
  return path;
}

std::string shownName(Hive hive, const std::string& path) {
  return (hive == Hive::LocalMachine ? "HKLM\\" : "HKCU\\") + path;
}

std::string nameOf(Hive hive, const std::vector<std::string>& levels, std::size_t count) {
  return upperCase(shownName(hive, pathOf(levels, count)));
}

bool isText(std::uint32_t type) {
  return type == machine::value_type::kText || type == machine::value_type::kExpandText ||
         type == machine::value_type::kMultiText;
}

}  // namespace

/// An open key: what was written to it, over the key below where there is one.
class OverlayKey : public RegistryKey {
 public:
  OverlayKey(OverlayRegistry& registry, Hive hive, const std::string& path, std::uint32_t access,
             std::unique_ptr<RegistryKey> below)
      : registry_(registry),
        hive_(hive),
        path_(path),
        name_(nameOf(hive, levelsOf(path), levelsOf(path).size())),
        access_(access),
        below_(std::move(below)) {}

  SystemCode describeValue(const std::string& name, std::uint32_t& type,
                           std::uint32_t& size) override {
    const WrittenValue* const value = written(name);
    if (!may(machine::key_access::kQueryValue)) {
      return kAccessDenied;
    }
    if (value != nullptr) {
      type = value->type;
      size = static_cast<std::uint32_t>(value->data.size());
      return kSuccess;
    }
    return below_ == nullptr ? kFileNotFound : below_->describeValue(name, type, size);
  }

  SystemCode readValue(const std::string& name, std::string& data) override {
    const WrittenValue* const value = written(name);
    if (!may(machine::key_access::kQueryValue)) {
      return kAccessDenied;
    }
    if (value == nullptr) {
      return below_ == nullptr ? kFileNotFound : below_->readValue(name, data);
    }
    if (value->data.size() > data.size()) {
      return kMoreData;
    }
    data = value->data;
    return kSuccess;
  }

  SystemCode writeValue(const std::string& name, std::uint32_t type,
                        const std::string& data) override {
    if (!may(machine::key_access::kSetValue)) {
      return kAccessDenied;
    }
    WrittenValue value{type, data};
    // A text that comes without its closing NUL gets it.
    if (isText(type) && !data.empty() && data.back() != '\0') {
      value.data += '\0';
    }
    const std::optional<WrittenValue> before = registry_.read(hive_, path_, name);
    if (!before || before->type != value.type || before->data != value.data) {
      registry_.write(name_, shownName(hive_, path_), name, value);
    }
    return kSuccess;
  }

  SystemCode subKeyName(std::uint32_t index, std::uint32_t size, std::string& name) override {
    if (!may(machine::key_access::kEnumerate)) {
      return kAccessDenied;
    }
    const auto found = registry_.written_.find(name_);
    if (found == registry_.written_.end() || found->second.keys.empty()) {
      return below_ == nullptr ? kNoMoreItems : below_->subKeyName(index, size, name);
    }
    const std::vector<std::string> names = allNames(found->second);
    if (index >= names.size()) {
      return kNoMoreItems;
    }
    if (names[index].size() + 1 > size) {
      return kMoreData;
    }
    name = names[index];
    return kSuccess;
  }

 private:
  bool may(std::uint32_t right) const { return (access_ & right) != 0; }

  const WrittenValue* written(const std::string& name) const {
    const auto key = registry_.written_.find(name_);
    if (key == registry_.written_.end()) {
      return nullptr;
    }
    const auto value = key->second.values.find(upperCase(name));
    return value == key->second.values.end() ? nullptr : &value->second;
  }

  /// In alphabetical order, as the system enumerates.
  std::vector<std::string> allNames(const WrittenKey& key) {
    std::map<std::string, std::string> names = key.keys;
    std::string name;
    for (std::uint32_t i = 0;
         below_ != nullptr && below_->subKeyName(i, kLongestName, name) == kSuccess; ++i) {
      names.emplace(upperCase(name), name);
    }
    std::vector<std::string> sorted;
    sorted.reserve(names.size());
    for (const auto& [upper, spelt] : names) {
      sorted.push_back(spelt);
    }
    return sorted;
  }

  OverlayRegistry& registry_;
  Hive hive_;
  std::string path_;
  std::string name_;
  std::uint32_t access_;
  std::unique_ptr<RegistryKey> below_;
};

SystemCode OverlayRegistry::openKey(Hive hive, const std::string& path, std::uint32_t access,
                                    std::unique_ptr<RegistryKey>& key) {
  std::unique_ptr<RegistryKey> opened;
  SystemCode code = below_.openKey(hive, path, access, opened);
  if (code == kFileNotFound) {
    const std::vector<std::string> levels = levelsOf(path);
    const auto found = written_.find(nameOf(hive, levels, levels.size()));
    code = found != written_.end() && found->second.made ? kSuccess : code;
  }
  if (code == kSuccess) {
    key = std::make_unique<OverlayKey>(*this, hive, path, access, std::move(opened));
  }
  return code;
}

SystemCode OverlayRegistry::createKey(Hive hive, const std::string& path, std::uint32_t access,
                                      std::unique_ptr<RegistryKey>& key) {
  SystemCode code = openKey(hive, path, access, key);
  if (code != kFileNotFound) {
    return code;
  }
  const std::vector<std::string> levels = levelsOf(path);
  code = mayMake(hive, levels);
  if (code == kSuccess) {
    make(hive, levels);
    steps_.add({.kind = StepKind::Registry, .subject = shownName(hive, path)});
    code = openKey(hive, path, access, key);
  }
  return code;
}

SystemCode OverlayRegistry::mayMake(Hive hive, const std::vector<std::string>& levels) {
  SystemCode code = kFileNotFound;
  for (std::size_t count = levels.size(); code == kFileNotFound && count > 0; --count) {
    std::unique_ptr<RegistryKey> above;
    code = openKey(hive, pathOf(levels, count - 1), kCreateSubKey, above);
  }
  return code;
}

void OverlayRegistry::make(Hive hive, const std::vector<std::string>& levels) {
  for (std::size_t count = levels.size(); count > 0; --count) {
    std::unique_ptr<RegistryKey> there;
    if (openKey(hive, pathOf(levels, count), 0, there) != kFileNotFound) {
      return;
    }
    written_[nameOf(hive, levels, count)].made = true;
    written_[nameOf(hive, levels, count - 1)].keys[upperCase(levels[count - 1])] =
        levels[count - 1];
  }
}

std::optional<WrittenValue> OverlayRegistry::read(Hive hive, const std::string& path,
                                                  const std::string& name) {
  std::unique_ptr<RegistryKey> key;
  WrittenValue value;
  std::uint32_t size = 0;
  if (openKey(hive, path, machine::key_access::kQueryValue, key) != kSuccess ||
      key->describeValue(name, value.type, size) != kSuccess) {
    return std::nullopt;
  }
  value.data.assign(size, '\0');
  return key->readValue(name, value.data) == kSuccess ? std::optional(value) : std::nullopt;
}

void OverlayRegistry::write(const std::string& name, const std::string& shownKey,
                            const std::string& valueName, const WrittenValue& value) {
  written_[name].values[upperCase(valueName)] = value;
  steps_.add({.kind = StepKind::Registry,
              .subject = shownKey,
              .name = valueName,
              .value = shownData(value)});
}

/// Texts without what follows their end, numbers in decimal, anything else as its bytes.
std::string OverlayRegistry::shownData(const WrittenValue& value) {
  if (isText(value.type)) {
    return locale_.fromAnsi(value.data.substr(0, value.data.find('\0')));
  }
  if (value.type != machine::value_type::kNumber) {
    return value.data;
  }
  std::uint32_t number = 0;
  for (std::size_t i = std::min<std::size_t>(value.data.size(), 4); i > 0; --i) {
    number = (number << 8U) | static_cast<unsigned char>(value.data[i - 1]);
  }
  return std::to_string(number);
}

}  // namespace trelv::overlay
