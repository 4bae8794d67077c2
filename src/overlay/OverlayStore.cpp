#include "overlay/OverlayStore.h"

#include <algorithm>

#include "base/Text.h"

namespace trelv::overlay {
namespace {

using Names = std::array<std::string, 4>;

Names namesOf(const std::string& product, const std::string& section, const std::string& key,
              const std::string& attribute) {
  return {upperCase(product), upperCase(section), upperCase(key), upperCase(attribute)};
}

/// The store was read and has no such setting.
bool meansNotFound(std::int32_t code) {
  constexpr std::int32_t kFirst = -3001;
  constexpr std::int32_t kLast = -3999;
  return code <= kFirst && code >= kLast;
}

}  // namespace

std::int32_t OverlayStore::getParameter(const std::string& product, const std::string& section,
                                        const std::string& key, const std::string& attribute,
                                        const std::string& defaultValue, std::int32_t size,
                                        std::string& buffer) {
  const auto found = set_.find(namesOf(product, section, key, attribute));
  if (found == set_.end()) {
    return below_.getParameter(product, section, key, attribute, defaultValue, size, buffer);
  }
  std::string ansi = locale_.toAnsi(buffer);
  const std::string value = locale_.toAnsi(found->second);
  const auto most = static_cast<std::size_t>(std::max(size, 0));
  const std::size_t count = std::min({value.size(), most, ansi.size()});
  ansi.replace(0, count, value, 0, count);
  buffer = locale_.fromAnsi(ansi);
  return 0;
}

std::int32_t OverlayStore::setParameter(const std::string& product, const std::string& section,
                                        const std::string& key, const std::string& attribute,
                                        std::int32_t /*type*/, const std::string& value) {
  constexpr std::int32_t kSize = 511;
  std::string buffer(kSize, '\0');
  const std::int32_t code = getParameter(product, section, key, attribute, "", kSize, buffer);
  if (code != 0 && !meansNotFound(code)) {
    return code;
  }
  set_[namesOf(product, section, key, attribute)] = locale_.fromAnsi(locale_.toAnsi(value));
  steps_.add({.kind = StepKind::Store, .value = value});
  return 0;
}

std::int32_t OverlayStore::getConfigPath(std::int32_t kind, std::string& buffer) {
  return below_.getConfigPath(kind, buffer);
}

std::int32_t StoreOverFiles::getParameter(const std::string& product, const std::string& section,
                                          const std::string& key, const std::string& attribute,
                                          const std::string& defaultValue, std::int32_t size,
                                          std::string& buffer) {
  return store_.getParameter(product, section, key, attribute, defaultValue, size, buffer);
}

std::int32_t StoreOverFiles::setParameter(const std::string& product, const std::string& section,
                                          const std::string& key, const std::string& attribute,
                                          std::int32_t type, const std::string& value) {
  std::int32_t code = 0;
  {
    const Steps::Pause pause(steps_);
    code = store_.setParameter(product, section, key, attribute, type, value);
  }
  if (code == 0) {
    steps_.add({.kind = StepKind::Store, .value = value});
  }
  return code;
}

std::int32_t StoreOverFiles::getConfigPath(std::int32_t kind, std::string& buffer) {
  return store_.getConfigPath(kind, buffer);
}

}  // namespace trelv::overlay
