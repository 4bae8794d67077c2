#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
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

bool isSmallLetter(char c) { return c >= 'a' && c <= 'z'; }
bool isCapital(char c) { return c >= 'A' && c <= 'Z'; }
bool isLetterOrDigit(char c) { return isSmallLetter(c) || isCapital(c) || (c >= '0' && c <= '9'); }

std::string contentOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// What follows each `mark` as a word.
Names wordsAfter(const std::string& mark, const std::string& text) {
  Names found;
  for (std::size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at + 1)) {
    const std::size_t begin = at + mark.size();
    std::size_t end = begin;
    while (end < text.size() && isLetterOrDigit(text[end])) {
      ++end;
    }
    found.insert(text.substr(begin, end - begin));
  }
  return found;
}

Names identifiersIn(const std::string& text, const std::string& before) {
  Names found = wordsAfter(before + "IDC_", text);
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
  Names found;
  const std::string code = contentOf(source);
  for (std::size_t at = code.find_first_of("\"/"); at != std::string::npos;
       at = code.find_first_of("\"/", at + 1)) {
    const std::size_t begin = at + 1;
    if (code[at] == '"') {
      while (++at < code.size() && code[at] != '"' && code[at] != '\n') {
        // What stands behind a backslash does not end the text.
        at += code[at] == '\\' ? 1 : 0;
      }
      found.insert(code.substr(begin, at - begin));
    } else if (code.compare(at, 2, "//") == 0) {
      at = std::min(code.find('\n', at), code.size());
    }
  }
  return found;
}

/// Controls are called by their kind in small letters, then a name with a capital: "btnOk". So are
/// modules and forms, which are not meant here. Empty for any other text.
std::string kindOf(const std::string& text) {
  const auto capital = std::find_if_not(text.begin(), text.end(), isSmallLetter);
  const std::string kind(text.begin(), capital);
  const bool called = !kind.empty() && capital != text.end() && isCapital(*capital) &&
                      std::all_of(capital, text.end(), isLetterOrDigit);
  return called && kind != "mod" && kind != "frm" ? kind : std::string();
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
  const std::string name = source.stem().string();
  return name.rfind("frm", 0) == 0 || name.rfind("Frm", 0) == 0;
}

/// The window library's own.
const Names kOfWindows{"frmInput"};

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
    EXPECT_EQ(1U, kOfWindows.count(dialog)) << dialog << " is a dialog without a form";
  }
}

TEST(Dialogs, HaveEveryControlThatTheirFormNames) {
  std::map<std::string, Names> found = dialogs();
  const Names all = controlsOfAll(found);
  for (const fs::path& source : portableSources()) {
    const std::string unit = source.stem().string();
    const Names& controls = isForm(source) ? found[unit] : all;
    for (const std::string& text : literalsOf(source)) {
      const bool meant = isForm(source) ? meantInForm(text, all) : meantElsewhere(text, all);
      EXPECT_TRUE(!meant || controls.count(text) == 1)
          << source.filename().string() << " names " << text << ": there is no such control";
    }
  }
}

TEST(Dialogs, HaveEveryControlOfTheList) {
  EXPECT_EQ(identifiersIn(contentOf(kSources / "win32" / "resource.h"), "\n#define "),
            controlsOfAll(dialogs()));
}

}  // namespace
}  // namespace trelv
