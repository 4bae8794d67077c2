#include "kit/GivenPath.h"

#include <algorithm>

#include "kit/Failure.h"
#include "platform/FileSystemObject.h"

namespace trelv::kit {
namespace {

bool isSeparator(char character) { return character == '\\' || character == '/'; }

std::string withoutTrailing(std::string text) {
  while (text.size() > 1 && isSeparator(text.back()) && text[text.size() - 2] != ':') {
    text.pop_back();
  }
  return text;
}

}  // namespace

GivenPath::GivenPath(machine::GivenPaths& paths, const std::string& given)
    : given_(withoutTrailing(given)), separator_(paths.separator()) {
  const SystemCode code = paths.fullPath(given, full_);
  if (code != system_code::kSuccess) {
    throw Failure(given.empty() ? "\"\"" : given, code);
  }
}

std::string GivenPath::shown(const std::string& fullPath) const {
  if (!FileSystemObject::liesAtOrIn(fullPath, full_)) {
    return fullPath;
  }
  std::string rest = fullPath.substr(std::min(full_.size(), fullPath.size()));
  std::replace(rest.begin(), rest.end(), '\\', separator_);
  if (!rest.empty() && !given_.empty() && isSeparator(given_.back())) {
    return given_ + (isSeparator(rest.front()) ? rest.substr(1) : rest);
  }
  return !rest.empty() && !isSeparator(rest.front()) ? given_ + separator_ + rest : given_ + rest;
}

}  // namespace trelv::kit
