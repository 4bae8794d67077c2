#include "startup/CommandLine.h"

#include <algorithm>
#include <array>

#include "base/Text.h"

namespace trelv::modMain {
namespace {

struct Keyword {
  const char* text;
  RunMode mode;
};

constexpr std::array<Keyword, 5> kKeywords{{
    {"SINGLEINSTALL", RunMode::SingleInstall},
    {"INTEGRATEDRUN", RunMode::IntegratedRun},
    {"INTEGRATEDMAINTAIN", RunMode::IntegratedMaintain},
    {"INTERACTIVE", RunMode::Interactive},
    {"STANDALONEINSTALL", RunMode::StandaloneInstall},
}};

constexpr char kQuote = '"';

bool isSeparator(char c) { return c == ' ' || c == '\t'; }

bool beginsWithProgram(const std::string& commandLine, const std::string& path) {
  return !path.empty() && equalNoCase(commandLine.substr(0, path.size()), path) &&
         (commandLine.size() == path.size() || isSeparator(commandLine[path.size()]));
}

/// Who starts a program without quotes may name a path with blanks all the same, and leave ".exe"
/// out: the system finds it.
std::size_t endOfUnquotedProgram(const std::string& commandLine,
                                 const std::vector<std::string>& ownPaths) {
  for (const std::string& path : ownPaths) {
    for (const std::string& name : {path, path.substr(0, path.rfind('.'))}) {
      if (beginsWithProgram(commandLine, name)) {
        return name.size();
      }
    }
  }
  return std::min(commandLine.find_first_of(" \t"), commandLine.size());
}

}  // namespace

std::string argumentsOf(const std::string& commandLine, const std::vector<std::string>& ownPaths) {
  std::size_t end = 0;
  if (!commandLine.empty() && commandLine.front() == kQuote) {
    const std::size_t closing = commandLine.find(kQuote, 1);
    end = closing == std::string::npos ? commandLine.size() : closing + 1;
  } else {
    end = endOfUnquotedProgram(commandLine, ownPaths);
  }
  return trimLeft(std::string_view(commandLine).substr(end));
}

bool ParseCommandLine(const std::string& raw, std::uint8_t& count, std::vector<std::string>& args) {
  args.clear();
  bool insideQuotes = false;
  bool insideArgument = false;
  for (const char c : raw) {
    if (c == kQuote) {
      insideQuotes = !insideQuotes;
    }
    if (c == kQuote || (isSeparator(c) && !insideQuotes)) {
      insideArgument = false;
      continue;
    }
    if (!insideArgument) {
      if (args.size() == kMostArguments) {
        break;
      }
      args.emplace_back();
      insideArgument = true;
    }
    args.back() += c;
  }
  count = static_cast<std::uint8_t>(args.size());
  return true;
}

RunMode ConvertModeToNumber(const std::string& keyword) {
  const std::string wanted = upperCase(trim(keyword));
  const auto* const found =
      std::find_if(kKeywords.begin(), kKeywords.end(),
                   [&wanted](const Keyword& known) { return wanted == known.text; });
  return found == kKeywords.end() ? RunMode::None : found->mode;
}

}  // namespace trelv::modMain
