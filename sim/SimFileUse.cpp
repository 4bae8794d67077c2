#include "sim/SimFileUse.h"

namespace trelv::sim {

SimNode* SimFileUse::find(const std::string& path, SystemCode& code) const {
  const SimVolumes::Place place = volumes_.find(path, true);
  code = place.code;
  if (code == system_code::kSuccess && place.disk != nullptr) {
    code = place.disk->denied(place.diskPath, false);
  }
  return code == system_code::kSuccess ? place.node : nullptr;
}

SystemCode SimFileUse::owner(const std::string& path, std::string& account) {
  if (const auto injected = calls_.enter(CallKind::FileLook, "fileUse.owner", path)) {
    return *injected;
  }
  SystemCode code = system_code::kSuccess;
  const SimNode* const node = find(path, code);
  if (node == nullptr) {
    return code;
  }
  constexpr SystemCode kNoSuchAccount = 1332;
  if (node->owner.empty()) {
    return kNoSuchAccount;
  }
  account = node->owner;
  return system_code::kSuccess;
}

std::optional<bool> SimFileUse::isOpen(const std::string& path) {
  if (calls_.enter(CallKind::FileLook, "fileUse.isOpen", path) || openersHidden_) {
    return std::nullopt;
  }
  SystemCode code = system_code::kSuccess;
  const SimNode* const node = find(path, code);
  return node == nullptr ? std::nullopt : std::optional<bool>(node->held.has_value());
}

SystemCode SimFileUse::removeUnused(const std::string& path, const machine::FileFacts& seen) {
  if (const auto injected = calls_.enter(CallKind::FileRemove, "fileUse.removeUnused", path)) {
    return *injected;
  }
  SystemCode code = system_code::kSuccess;
  const SimNode* const node = find(path, code);
  if (node == nullptr) {
    return code;
  }
  if (node->held) {
    return system_code::kSharingViolation;
  }
  const bool changed = !node->folder && !node->readOnly &&
                       (static_cast<std::uint64_t>(node->modified) != seen.modified ||
                        node->bytes.size() != seen.size);
  return changed ? machine::kFileChanged : files_.removeFile(path);
}

}  // namespace trelv::sim
