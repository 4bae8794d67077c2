#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "base/Text.h"

// A form asks for its controls by name, and its window answers a name that its dialog does not have
// with nothing: a mistyped name would show on no screen and fail no call. So the names in the
// sources are compared with the dialogs here, for all forms at once.
namespace trelv {
namespace {

namespace fs = std::filesystem;
using Names = std::set<std::string>;

const fs::path kSources = fs::path(TRELV_PROJECT_FOLDER) / "src";

std::string contentOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

Names allMatches(const std::string& text, const std::regex& pattern) {
  Names found;
  for (std::sregex_iterator match(text.begin(), text.end(), pattern), end; match != end; ++match) {
    found.insert((*match)[1]);
  }
  return found;
}

Names identifiersIn(const std::string& text, const std::string& before) {
  Names found = allMatches(text, std::regex(before + "\\bIDC_(\\w+)"));
  found.erase("STATIC");
  return found;
}

/// Names of the controls by dialog.
std::map<std::string, Names> dialogs() {
  std::map<std::string, Names> found;
  for (const fs::directory_entry& entry : fs::directory_iterator(kSources / "win32")) {
    const std::string name = entry.path().stem().string();
    const std::string script = entry.path().extension() == ".rc" ? contentOf(entry.path()) : "";
    if (script.find("\n" + name + " DIALOGEX ") != std::string::npos) {
      found[name] = identifiersIn(script, "");
    }
  }
  return found;
}

Names controlsOfAll(const std::map<std::string, Names>& dialogs) {
  Names all;
  for (const auto& [dialog, controls] : dialogs) {
    all.insert(controls.begin(), controls.end());
  }
  return all;
}

/// The texts in quotes of a C++ source, as they are written. Comments have none.
Names literalsOf(const fs::path& source) {
  Names found = allMatches(contentOf(source), std::regex("//[^\n]*|\"((?:[^\"\\\\\n]|\\\\.)*)\""));
  found.erase("");
  return found;
}

/// Controls are called by their kind in small letters, then a name with a capital: "btnOk". So are
/// modules and forms, which are not meant here.
std::string kindOf(const std::string& text) {
  std::smatch parts;
  static const std::regex kName("(?!mod|frm)([a-z]+)[A-Z][A-Za-z0-9]*");
  return std::regex_match(text, parts, kName) ? parts[1].str() : std::string();
}

/// Which texts of a form can only be meant as controls: whatever is called like one, and a control
/// of any dialog in other letters.
bool meantInForm(const std::string& text, const Names& controls) {
  return !kindOf(text).empty() ||
         std::any_of(controls.begin(), controls.end(), [&](const std::string& control) -> bool {
           return equalNoCase(control, text);
         });
}

/// Elsewhere: what begins like a control of some dialog.
bool meantElsewhere(const std::string& text, const Names& controls) {
  return std::any_of(controls.begin(), controls.end(), [&](const std::string& control) -> bool {
    return !kindOf(text).empty() && kindOf(text) == kindOf(control);
  });
}

/// The sources of what is above Windows: they know controls by name only.
std::vector<fs::path> portableSources() {
  std::vector<fs::path> found;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(kSources)) {
    const std::string folder = fs::relative(entry.path(), kSources).begin()->string();
    const std::string extension = entry.path().extension().string();
    if ((extension == ".h" || extension == ".cpp") && folder != "win32" && folder != "decoder") {
      found.push_back(entry.path());
    }
  }
  return found;
}

bool isForm(const fs::path& source) {
  return std::regex_match(source.stem().string(), std::regex("[fF]rm[A-Za-z]\\w*"));
}

TEST(Dialogs, EachFormHasTheOneOfItsName) {
  Names left;
  for (const auto& [dialog, controls] : dialogs()) {
    left.insert(dialog);
  }
  for (const fs::path& source : portableSources()) {
    const std::string form = source.stem().string();
    if (isForm(source) && source.extension() == ".h") {
      EXPECT_EQ(1U, left.erase(form)) << "src/win32/" << form << ".rc has no dialog";
      EXPECT_EQ(1U, literalsOf(source).count(form)) << form << " has another name()";
    }
  }
  for (const std::string& dialog : left) {
    EXPECT_FALSE(isForm(dialog)) << dialog << " is a dialog without a form";
  }
}

TEST(Dialogs, HaveEveryControlThatTheirFormNames) {
  const std::map<std::string, Names> found = dialogs();
  const Names all = controlsOfAll(found);
  for (const fs::path& source : portableSources()) {
    const std::string unit = source.stem().string();
    const Names& controls = isForm(source) ? found.at(unit) : all;
    for (const std::string& text : literalsOf(source)) {
      const bool meant = isForm(source) ? meantInForm(text, all) : meantElsewhere(text, all);
      EXPECT_TRUE(!meant || controls.count(text) == 1)
          << source.filename().string() << " names " << text << ", which no dialog of it has";
    }
  }
}

TEST(Dialogs, HaveEveryControlOfTheList) {
  EXPECT_EQ(identifiersIn(contentOf(kSources / "win32" / "resource.h"), "\n#define "),
            controlsOfAll(dialogs()));
}

}  // namespace
}  // namespace trelv
