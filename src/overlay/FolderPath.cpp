#include "overlay/FolderPath.h"

#include <algorithm>

#include "base/Text.h"

namespace trelv::overlay {
namespace {

constexpr std::size_t kMark = 4;

bool isLiteral(const std::string& path) { return path.compare(0, kMark, "\\\\?\\") == 0; }

/// Position behind "server\share" that begins at `from`.
std::size_t endOfShare(const std::string& path, std::size_t from) {
  const std::size_t share = path.find('\\', from);
  const std::size_t end = share == std::string::npos ? share : path.find('\\', share + 1);
  return std::min(end, path.size());
}

/// Position behind what no one can make.
std::size_t endOfRoot(const std::string& path) {
  if (isLiteral(path)) {
    const bool share = equalNoCase(path.substr(kMark, 4), "UNC\\");
    return share ? endOfShare(path, kMark + 4) : std::min(path.find('\\', kMark), path.size());
  }
  if (path.compare(0, 2, "\\\\") == 0) {
    return endOfShare(path, 2);
  }
  return path.size() > 1 && path[1] == ':' ? 2 : 0;
}

/// Full roots of drives have their backslash; a drive or nothing before a name means the current
/// folder.
std::string rootOf(const std::string& path, std::size_t end) {
  std::string begun = path.substr(0, end);
  const bool share = begun.compare(0, 2, "\\\\") == 0 && (begun.empty() || begun.back() != ':');
  if (share) {
    return begun;
  }
  const bool fromRoot = end < path.size() && path[end] == '\\';
  return begun + (fromRoot ? "\\" : ".");
}

std::string cleanName(std::string name) {
  while (!name.empty() && (name.back() == ' ' || name.back() == '.')) {
    name.pop_back();
  }
  return name;
}

void addLevel(std::vector<std::string>& levels, const std::string& level) {
  if (level == "..") {
    if (!levels.empty()) {
      levels.pop_back();
    }
  } else if (!cleanName(level).empty()) {
    levels.push_back(cleanName(level));
  }
}

}  // namespace

FolderPath folderPath(const std::string& path) {
  const bool literal = isLiteral(path);
  const std::string text = literal ? path : replaceAll(path, "/", "\\");
  FolderPath parsed;
  const std::size_t end = endOfRoot(text);
  parsed.root = rootOf(text, end);
  for (std::size_t at = end; at < text.size();) {
    const std::size_t next = std::min(text.find('\\', at), text.size());
    const std::string level = text.substr(at, next - at);
    if (!literal) {
      addLevel(parsed.levels, level);
    } else if (!level.empty()) {
      parsed.levels.push_back(level);
    }
    at = next + 1;
  }
  parsed.namesFolder = !parsed.levels.empty() && text.back() == '\\';
  return parsed;
}

std::string joined(const std::string& folder, const std::string& name) {
  return folder.empty() || folder.back() == '\\' ? folder + name : folder + "\\" + name;
}

}  // namespace trelv::overlay
