// The command line is taken apart as a second, simpler reader does it; quoted again it gives the
// same arguments.
#include "startup/CommandLine.h"

#include <array>
#include <cstdint>

#include "base/Text.h"
#include "fuzz/Property.h"
#include "fuzz/Targets.h"

namespace trelv::fuzz {
namespace {

using Arguments = std::vector<std::string>;

const std::string kOwnPath = "C:\\Lumo Programmi\\TrelvManager.exe";

Arguments parsed(const std::string& raw) {
  std::uint8_t count = 99;
  Arguments arguments{"left over"};
  require(modMain::ParseCommandLine(raw, count, arguments), "a command line can be read");
  require(count == arguments.size(), "the count is that of the arguments");
  return arguments;
}

void addWords(std::string_view text, Arguments& arguments) {
  constexpr std::string_view kSeparators = " \t";
  for (std::size_t at = text.find_first_not_of(kSeparators); at != std::string_view::npos;) {
    const std::size_t end = std::min(text.find_first_of(kSeparators, at), text.size());
    arguments.emplace_back(text.substr(at, end - at));
    at = text.find_first_not_of(kSeparators, end);
  }
}

/// Every second piece between quotes is one argument, the others are words.
Arguments expected(std::string_view raw) {
  Arguments arguments;
  bool quoted = false;
  for (std::size_t at = 0; at <= raw.size(); quoted = !quoted) {
    const std::size_t end = std::min(raw.find('"', at), raw.size());
    const std::string_view piece = raw.substr(at, end - at);
    if (!quoted) {
      addWords(piece, arguments);
    } else if (!piece.empty()) {
      arguments.emplace_back(piece);
    }
    at = end + 1;
  }
  arguments.resize(std::min(arguments.size(), modMain::kMostArguments));
  return arguments;
}

std::string quoted(const Arguments& arguments) {
  std::string text;
  for (const std::string& argument : arguments) {
    text += " \"" + argument + "\"";
  }
  return text;
}

std::string withoutLeadingBlanks(const std::string& text) {
  return text.substr(std::min(text.find_first_not_of(' '), text.size()));
}

void checkOwnPath(const std::string& raw) {
  const std::string rest = withoutLeadingBlanks(raw);
  const std::string withoutEnding = kOwnPath.substr(0, kOwnPath.rfind('.'));
  for (const std::string& line : {"\"" + kOwnPath + "\"" + raw, kOwnPath + " " + raw,
                                  withoutEnding + " " + raw, upperCase(kOwnPath) + " " + raw}) {
    require(modMain::argumentsOf(line, {kOwnPath}) == rest, "all behind the own path is arguments",
            {line, rest});
  }
  require(modMain::argumentsOf("a" + raw, {}).size() <= raw.size(), "the first word is no argument",
          {raw});
}

void checkMode(const std::string& keyword) {
  constexpr std::array<std::string_view, 5> kModes = {
      "SINGLEINSTALL", "INTEGRATEDRUN", "INTEGRATEDMAINTAIN", "INTERACTIVE", "STANDALONEINSTALL"};
  const std::string bare = trim(keyword);
  const bool known = std::any_of(kModes.begin(), kModes.end(), [&](std::string_view mode) -> bool {
    return mode.size() == bare.size() && equalNoCase(mode, bare);
  });
  require(known == (modMain::ConvertModeToNumber(keyword) != RunMode::None),
          "keywords are modes, nothing else is", {keyword});
}

}  // namespace

void checkCommandLine(std::string_view bytes) {
  const std::string raw(bytes);
  const Arguments arguments = parsed(raw);
  require(arguments == expected(bytes), "the arguments are those of a second reader", {raw});
  require(parsed(quoted(arguments)) == arguments, "arguments in quotes are read as they are",
          {raw});
  checkOwnPath(raw);
  checkMode(arguments.empty() ? raw : arguments.front());
}

}  // namespace trelv::fuzz
