#include "overlay/ProgramSearch.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "base/Text.h"
#include "overlay/FolderPath.h"

namespace trelv::overlay {
namespace {

using namespace system_code;

constexpr std::size_t kLongestCommandLine = 32767;

bool hasFolder(const std::string& name) { return name.find_first_of("\\/:") != std::string::npos; }

bool endsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && equalNoCase(text.substr(text.size() - end.size()), end);
}

bool isFull(const std::string& folder) {
  return folder.find(":\\") == 1 || folder.compare(0, 2, "\\\\") == 0;
}

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::string part;
  for (const char c : text + separator) {
    if (c != separator) {
      part += c;
    } else if (!part.empty()) {
      parts.push_back(std::exchange(part, ""));
    }
  }
  return parts;
}

std::size_t characterCount(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) -> bool {
    return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
  }));
}

}  // namespace

SystemCode ProgramSearch::find(const std::string& commandLine, std::string& program) {
  if (characterCount(commandLine) > kLongestCommandLine) {
    return kInvalidParameter;
  }
  if (commandLine.empty() || commandLine.front() == ' ') {
    return kFileNotFound;
  }
  return commandLine.front() == '"' ? findQuoted(commandLine, program)
                                    : findByCuts(commandLine, program);
}

SystemCode ProgramSearch::findTool(const std::string& commandLine, std::string& program) {
  const std::string name = commandLine.substr(0, commandLine.find(' '));
  if (hasFolder(name) || name.find('"') != std::string::npos) {
    return find(commandLine, program);
  }
  program = search(name, false);
  return program.empty() ? kFileNotFound : kSuccess;
}

SystemCode ProgramSearch::findQuoted(const std::string& commandLine, std::string& program) {
  const std::size_t end = std::min(commandLine.find('"', 1), commandLine.size());
  const std::string name = commandLine.substr(1, end - 1);
  return name.empty() ? kInvalidParameter : candidate(name, program);
}

/// Every cut at a blank is tried, the shortest first.
SystemCode ProgramSearch::findByCuts(const std::string& commandLine, std::string& program) {
  SystemCode code = kFileNotFound;
  for (std::size_t end = 0; code == kFileNotFound && end < commandLine.size();) {
    end = std::min(commandLine.find_first_of(" \t", end + 1), commandLine.size());
    code = candidate(commandLine.substr(0, end), program);
  }
  return code;
}

SystemCode ProgramSearch::candidate(const std::string& name, std::string& program) {
  const std::string path = hasFolder(name) ? existing(name) : search(name, true);
  if (path.empty()) {
    return kFileNotFound;
  }
  std::string beginning;
  const SystemCode code = files_.readPart(path, 0, 2, beginning);
  if (code != kSuccess) {
    return code;
  }
  program = path;
  const bool script = endsWith(path, ".bat") || endsWith(path, ".cmd");
  return script || beginning == "MZ" ? kSuccess : kBadExeFormat;
}

std::string ProgramSearch::search(const std::string& name, bool currentFolder) {
  std::string windows;
  system_.systemWindowsFolder(windows);
  const std::string own = system_.executablePath();
  std::vector<std::string> folders{own.substr(0, own.rfind('\\'))};
  if (currentFolder) {
    folders.emplace_back(".");
  }
  folders.push_back(joined(windows, "system32"));
  if (currentFolder) {
    folders.push_back(joined(windows, "system"));
  }
  folders.push_back(windows);
  std::string path;
  environment_.get("PATH", path);
  for (const std::string& folder : split(path, ';')) {
    if (currentFolder || isFull(folder)) {
      folders.push_back(folder);
    }
  }
  for (const std::string& folder : folders) {
    std::string found = existing(joined(folder, name));
    if (!found.empty()) {
      return found;
    }
  }
  return "";
}

/// The file of that path, or with ".exe" where its name has no extension; empty when there is none.
std::string ProgramSearch::existing(const std::string& path) {
  const std::string name = path.substr(path.find_last_of("\\/") + 1);
  for (const char* const extension : {"", ".exe"}) {
    machine::FileFacts facts;
    std::string tried = path + extension;
    if (files_.look(tried, facts) == kSuccess && !facts.folder) {
      return tried;
    }
    if (name.find('.') != std::string::npos) {
      break;
    }
  }
  return "";
}

}  // namespace trelv::overlay
