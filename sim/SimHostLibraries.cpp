#include "sim/SimHostLibraries.h"

#include <algorithm>

#include "base/RuntimeError.h"
#include "base/Text.h"
#include "sim/SimText.h"

namespace trelv::sim {
namespace {

using machine::SupportAnswer;

// What stands in the library's table: these codes come with the default value in the buffer.
constexpr std::int32_t kFirstNotFound = -3001;
constexpr std::int32_t kLastNotFound = -3999;
constexpr std::int32_t kClientFileNotFound = -4013;

bool givesDefault(std::int32_t code) {
  return (code <= kFirstNotFound && code >= kLastNotFound) || code == kClientFileNotFound;
}

// The buffer as an ANSI library leaves it: `text`, cut at `limit` characters, over what was there.
void overlay(std::string& buffer, const std::string& text, std::size_t limit) {
  std::string ansi = ansiOf(buffer);
  const std::string value = ansiOf(text);
  const std::size_t count = std::min({value.size(), limit, ansi.size()});
  ansi.replace(0, count, value, 0, count);
  buffer = textOfAnsi(ansi);
}

std::string addressText(const std::string& product, const std::string& section,
                        const std::string& key, const std::string& attribute) {
  return product + "|" + section + "|" + key + "|" + attribute;
}

}  // namespace

// --- The configuration store in memory

SimConfigurationLibrary::Address SimConfigurationLibrary::addressOf(const std::string& product,
                                                                    const std::string& section,
                                                                    const std::string& key,
                                                                    const std::string& attribute) {
  return {upperCase(product), upperCase(section), upperCase(key), upperCase(attribute)};
}

void SimConfigurationLibrary::demandCallable() const {
  if (!callable_) {
    throw RuntimeError(runtime_number::kFileNotFound, "TrelvManager",
                       "File non trovato: mviconf.dll");
  }
}

std::int32_t SimConfigurationLibrary::nextCode() {
  if (codes_.empty()) {
    return alwaysCode_;
  }
  const std::int32_t code = codes_.front();
  codes_.pop_front();
  return code;
}

// The first level of the address that no setting has: product -3001 down to attribute -3004.
std::int32_t SimConfigurationLibrary::missingCode(const Address& address) const {
  std::size_t common = 0;
  for (const auto& [other, setting] : settings_) {
    const auto differing = std::mismatch(address.begin(), address.end(), other.begin()).first;
    common = std::max(common, static_cast<std::size_t>(differing - address.begin()));
  }
  return kFirstNotFound - static_cast<std::int32_t>(common);
}

std::int32_t SimConfigurationLibrary::getParameter(const std::string& product,
                                                   const std::string& section,
                                                   const std::string& key,
                                                   const std::string& attribute,
                                                   const std::string& defaultValue,
                                                   std::int32_t size, std::string& buffer) {
  ++gets_;
  demandCallable();
  const Address address = addressOf(product, section, key, attribute);
  const auto found = settings_.find(address);
  std::int32_t code = nextCode();
  if (code == 0 && found == settings_.end()) {
    code = missingCode(address);
  }
  const auto limit = static_cast<std::size_t>(std::max(size, 0));
  if (code == 0) {
    overlay(buffer, found->second.value, limit);
  } else if (givesDefault(code)) {
    overlay(buffer, defaultValue, limit);
  }
  return code;
}

std::int32_t SimConfigurationLibrary::setParameter(const std::string& product,
                                                   const std::string& section,
                                                   const std::string& key,
                                                   const std::string& attribute, std::int32_t type,
                                                   const std::string& value) {
  ++sets_;
  demandCallable();
  const std::int32_t code = nextCode();
  if (code == 0) {
    settings_[addressOf(product, section, key, attribute)] = {textOfAnsi(ansiOf(value)), type};
  }
  return code;
}

std::int32_t SimConfigurationLibrary::getConfigPath(std::int32_t, std::string& buffer) {
  ++paths_;
  demandCallable();
  const std::int32_t code = nextCode();
  if (code == 0) {
    overlay(buffer, configPath_, buffer.size());
  }
  return code;
}

void SimConfigurationLibrary::put(const std::string& product, const std::string& section,
                                  const std::string& key, const std::string& attribute,
                                  const std::string& value) {
  settings_[addressOf(product, section, key, attribute)].value = value;
}

void SimConfigurationLibrary::remove(const std::string& product, const std::string& section,
                                     const std::string& key, const std::string& attribute) {
  settings_.erase(addressOf(product, section, key, attribute));
}

std::string SimConfigurationLibrary::value(const std::string& product, const std::string& section,
                                           const std::string& key,
                                           const std::string& attribute) const {
  const auto found = settings_.find(addressOf(product, section, key, attribute));
  return found == settings_.end() ? "" : found->second.value;
}

std::int32_t SimConfigurationLibrary::typeOf(const std::string& product, const std::string& section,
                                             const std::string& key,
                                             const std::string& attribute) const {
  const auto found = settings_.find(addressOf(product, section, key, attribute));
  return found == settings_.end() ? -1 : found->second.type;
}

void SimConfigurationLibrary::answerNext(std::initializer_list<std::int32_t> codes) {
  codes_.insert(codes_.end(), codes);
}

// --- Its place in a machine

std::int32_t ConfigurationSocket::getParameter(const std::string& product,
                                               const std::string& section, const std::string& key,
                                               const std::string& attribute,
                                               const std::string& defaultValue, std::int32_t size,
                                               std::string& buffer) {
  const auto injected = calls_.enter(CallKind::ConfigurationGet, "configuration.getParameter",
                                     addressText(product, section, key, attribute));
  return injected
             ? static_cast<std::int32_t>(*injected)
             : library_->getParameter(product, section, key, attribute, defaultValue, size, buffer);
}

std::int32_t ConfigurationSocket::setParameter(const std::string& product,
                                               const std::string& section, const std::string& key,
                                               const std::string& attribute, std::int32_t type,
                                               const std::string& value) {
  const auto injected =
      calls_.enter(CallKind::ConfigurationSet, "configuration.setParameter",
                   addressText(product, section, key, attribute), "", "= " + value);
  return injected ? static_cast<std::int32_t>(*injected)
                  : library_->setParameter(product, section, key, attribute, type, value);
}

std::int32_t ConfigurationSocket::getConfigPath(std::int32_t kind, std::string& buffer) {
  const auto injected = calls_.enter(CallKind::ConfigurationPath, "configuration.getConfigPath",
                                     std::to_string(kind));
  return injected ? static_cast<std::int32_t>(*injected) : library_->getConfigPath(kind, buffer);
}

// --- The support library

SupportAnswer SimSupportLibrary::isAdministrator() {
  if (administrator_ == SupportAnswer::Absent) {
    return SupportAnswer::Absent;
  }
  const auto injected = calls_.enter(CallKind::SupportAdministrator, "support.isAdministrator", "");
  return injected ? SupportAnswer::Failed : administrator_;
}

SupportAnswer SimSupportLibrary::temporaryPath(std::string& buffer) {
  if (temporary_ == SupportAnswer::Absent) {
    return SupportAnswer::Absent;
  }
  const auto injected = calls_.enter(CallKind::SupportTemporaryPath, "support.temporaryPath", "");
  if (injected) {
    return SupportAnswer::Failed;
  }
  if (temporary_ == SupportAnswer::Yes) {
    overlay(buffer, temporaryPath_ + std::string(1, '\0'), buffer.size());
  }
  return temporary_;
}

void SimSupportLibrary::setTemporaryPath(const std::string& text) {
  temporary_ = SupportAnswer::Yes;
  temporaryPath_ = text;
}

}  // namespace trelv::sim
