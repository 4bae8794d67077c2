#include "kit/Syntax.h"

#include <getopt.h>

#include <algorithm>

#include "kit/Failure.h"

namespace trelv::kit {
namespace {

constexpr std::size_t kHelpColumn = 26;

/// Letters, each of which is one column wide, of a text in UTF-8.
std::size_t widthOf(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char byte) -> bool {
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
  }));
}

std::string helpLine(const std::string& what, const std::string& help) {
  const std::size_t width = widthOf(what);
  const std::size_t blanks = width < kHelpColumn ? kHelpColumn - width : 1;
  return "  " + what + std::string(blanks, ' ') + help + "\n";
}

void splitAtCommas(const std::string& text, std::vector<std::string>& parts) {
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t end = std::min(text.find(',', at), text.size());
    parts.push_back(text.substr(at, end - at));
    at = end + 1;
  }
}

/// The arguments as the library wants them: it changes their order and needs a program's name in
/// front.
class ArgumentVector {
 public:
  explicit ArgumentVector(std::vector<std::string> arguments) : texts_(std::move(arguments)) {
    texts_.insert(texts_.begin(), "trelv");
    for (std::string& text : texts_) {
      pointers_.push_back(text.data());
    }
    pointers_.push_back(nullptr);
  }

  int count() const { return static_cast<int>(texts_.size()); }
  char** pointers() { return pointers_.data(); }
  std::vector<std::string> from(int index) const {
    return {pointers_.begin() + index, pointers_.end() - 1};
  }

 private:
  std::vector<std::string> texts_;
  std::vector<char*> pointers_;
};

/// The option that was found last as it stands on the command line, "--only" of "--only=TK102".
std::string writtenName(ArgumentVector& vector) {
  const bool valueApart = optarg != nullptr && optarg == vector.pointers()[optind - 1];
  const std::string text = vector.pointers()[optind - (valueApart ? 2 : 1)];
  return text.substr(0, text.find('='));
}

/// The library begins anew with the next call, and leaves the telling to us.
void restart() {
  opterr = 0;
  optind = 0;
}

}  // namespace

void Syntax::flag(const std::string& name, const std::string& help, bool& place) {
  options_.push_back({name, "", help, [&place](const std::string&) -> void { place = true; }});
}

void Syntax::value(const std::string& name, const std::string& valueName, const std::string& help,
                   std::string& place) {
  options_.push_back(
      {name, valueName, help, [&place](const std::string& text) -> void { place = text; }});
}

void Syntax::list(const std::string& name, const std::string& valueName, const std::string& help,
                  std::vector<std::string>& place) {
  options_.push_back({name, valueName, help,
                      [&place](const std::string& text) -> void { splitAtCommas(text, place); }});
}

void Syntax::argument(const std::string& name, const std::string& help, std::string& place) {
  arguments_.push_back(
      {name, help, 1, false, [&place](const std::string& text) -> void { place = text; }});
}

void Syntax::rest(const std::string& name, const std::string& help, std::size_t least,
                  std::vector<std::string>& place) {
  arguments_.push_back({name, help, least, true,
                        [&place](const std::string& text) -> void { place.push_back(text); }});
}

void Syntax::read(const std::vector<std::string>& arguments) const {
  std::vector<option> known;
  for (const Option& one : options_) {
    known.push_back({one.name.c_str(), one.valueName.empty() ? no_argument : required_argument,
                     nullptr, static_cast<int>(known.size()) + 1});
  }
  known.push_back({nullptr, 0, nullptr, 0});
  ArgumentVector vector(argumentsEndOptions_ ? optionsFirst(arguments) : arguments);
  const char* const kinds = argumentsEndOptions_ ? "+:" : ":";
  restart();
  for (;;) {
    // Asked before: behind the call the library may have moved on.
    const int before = std::max(optind, 1);
    const int found = getopt_long(vector.count(), vector.pointers(), kinds, known.data(), nullptr);
    if (found == -1) {
      break;
    }
    if (found == ':' || found == '?') {
      const std::string given = vector.pointers()[std::max(before, optind - 1)];
      throw WrongUsage((found == ':' ? "manca il valore dell'opzione " : "opzione non valida: ") +
                       given);
    }
    const Option& option = options_[static_cast<std::size_t>(found) - 1];
    // The library takes the beginning of a name too, which may be another option's tomorrow.
    if (writtenName(vector) != "--" + option.name) {
      throw WrongUsage("opzione non valida: " + writtenName(vector));
    }
    option.take(optarg != nullptr ? optarg : "");
  }
  place(vector.from(optind));
}

/// The declared options, written in full, before all other arguments; up to "--", which stays.
std::vector<std::string> Syntax::optionsFirst(const std::vector<std::string>& arguments) const {
  std::vector<std::string> options;
  std::vector<std::string> others;
  for (auto at = arguments.begin(); at != arguments.end(); ++at) {
    if (*at == "--") {
      others.insert(others.end(), at, arguments.end());
      break;
    }
    const std::string name = at->substr(0, at->find('='));
    const auto known =
        std::find_if(options_.begin(), options_.end(),
                     [&name](const Option& option) -> bool { return "--" + option.name == name; });
    std::vector<std::string>& group = known == options_.end() ? others : options;
    group.push_back(*at);
    const bool valueFollows = known != options_.end() && !known->valueName.empty() && name == *at;
    if (valueFollows && at + 1 != arguments.end()) {
      group.push_back(*++at);
    }
  }
  options.insert(options.end(), others.begin(), others.end());
  return options;
}

void Syntax::place(const std::vector<std::string>& arguments) const {
  auto next = arguments.begin();
  for (const Argument& one : arguments_) {
    std::size_t count = 0;
    while (next != arguments.end() && (one.many || count == 0)) {
      one.take(*next);
      ++next;
      ++count;
    }
    if (count < one.least) {
      throw WrongUsage("manca l'argomento " + one.name);
    }
  }
  if (next != arguments.end()) {
    throw WrongUsage("argomento di troppo: " + *next);
  }
}

std::string Syntax::help(const std::string& verb, const std::string& summary) const {
  std::string usage = "Uso: trelv " + verb + " [OPZIONI]";
  std::string meanings;
  for (const Argument& one : arguments_) {
    const std::string shown = one.name + (one.many ? "…" : "");
    usage += one.least == 0 ? " [" + shown + "]" : " " + shown;
    meanings += helpLine(one.name, one.help);
  }
  std::string optionLines;
  for (const Option& one : options_) {
    optionLines +=
        helpLine("--" + one.name + (one.valueName.empty() ? "" : " " + one.valueName), one.help);
  }
  return verb + ": " + summary + "\n\n" + usage + "\n\nArgomenti:\n" + meanings + "\nOpzioni:\n" +
         optionLines;
}

}  // namespace trelv::kit
