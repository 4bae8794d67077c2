// The program's own reader of ini files answers what the platform's functions answer, before and
// after these wrote a value.
#include "records/IniDocument.h"

#include <algorithm>
#include <optional>

#include "fuzz/Property.h"
#include "fuzz/Targets.h"
#include "sim/SimIniText.h"
#include "sim/SimText.h"

namespace trelv::fuzz {
namespace {

constexpr const char* kMissing = "<missing>";
/// So many of its sections, and of its other names, are asked for.
constexpr std::size_t kMostSections = 3;
constexpr std::size_t kMostOthers = 3;
constexpr std::uint32_t kRoom = 70'000;

using Names = std::vector<std::string>;

/// Texts between every two of these characters: sections, and keys, values and their parts.
struct AllNames {
  Names sections;
  Names others;
};

AllNames allNamesIn(std::string_view bytes) {
  constexpr std::string_view kEnds = "\r\n[]=;";
  AllNames names;
  for (bool ofSection = false; !bytes.empty();) {
    const std::size_t end = std::min(bytes.find_first_of(kEnds), bytes.size());
    if (end > 0 && IniDocument::canFind(bytes.substr(0, end), "")) {
      (ofSection ? names.sections : names.others).emplace_back(bytes.substr(0, end));
    }
    ofSection = end < bytes.size() && bytes[end] == '[';
    bytes.remove_prefix(std::min(end + 1, bytes.size()));
  }
  return names;
}

/// Some names of all of the text: inputs of other lengths have others.
void add(Names& names, const Names& all, std::size_t most, std::size_t from) {
  const std::size_t step = all.size() / most + 1;
  for (std::size_t i = from % step; i < all.size(); i += step) {
    names.push_back(all[i]);
  }
}

/// What is asked for: names of the text, and one that need not be there.
struct Question {
  Names sections{""};
  Names keys{"s"};
};

Question questionOf(std::string_view bytes) {
  const AllNames all = allNamesIn(bytes);
  Question question;
  add(question.sections, all.sections, kMostSections, bytes.size());
  add(question.keys, all.others, kMostOthers, bytes.size());
  // A name of the one kind may be one of the other too.
  add(question.sections, all.others, 1, bytes.size());
  add(question.keys, all.sections, 1, bytes.size());
  return question;
}

void compare(const std::string& bytes, const Question& question) {
  const IniDocument document(bytes);
  for (const std::string& section : question.sections) {
    for (const std::string& key : question.keys) {
      const std::string ours =
          sim::textOfAnsi(std::string(document.value(section, key).value_or(kMissing)));
      const std::string platform = sim::iniValue(&bytes, section, key, kMissing, kRoom);
      require(ours == platform, "our reader answers as the platform does",
              {"section " + section, "key " + key, "ours " + ours, "the platform's " + platform});
    }
  }
}

/// What a write leaves is read as the platform reads it.
void compareWritten(const std::string& bytes, const Question& question) {
  const std::string& section = question.sections[question.sections.size() / 2];
  const std::string& key = question.keys.back();
  const std::optional<std::string> written =
      sim::withIniValue(bytes, section, key, question.keys[question.keys.size() / 2]);
  if (written && IniDocument::understands(*written)) {
    compare(*written, {{section, question.sections.back()}, {key, question.keys.front()}});
  }
}

}  // namespace

void checkIniDocument(std::string_view input) {
  const std::string bytes(input);
  if (!IniDocument::understands(bytes)) {
    // What is left to the platform must not lead out of the text all the same.
    const IniDocument document(bytes);
    const std::optional<std::string_view> value = document.value("s", "k");
    require(!value || bytes.find(*value) != std::string::npos, "a value stands in the text");
    return;
  }
  const Question question = questionOf(bytes);
  compare(bytes, question);
  // Costly: of inputs that differ in their length only, one is enough.
  if (bytes.size() % 4 == 0) {
    compareWritten(bytes, question);
  }
}

}  // namespace trelv::fuzz
