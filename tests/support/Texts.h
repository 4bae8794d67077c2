#pragma once

#include <sstream>
#include <string>
#include <vector>

namespace trelv::tests {

/// The words of a text.
inline std::vector<std::string> wordsOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) {
    words.push_back(word);
  }
  return words;
}

/// The texts in one, a separator between them: short enough for a cell of a table.
inline std::string joined(const std::vector<std::string>& texts,
                          const std::string& separator = " ") {
  std::string all;
  for (const std::string& text : texts) {
    all += (all.empty() ? "" : separator) + text;
  }
  return all;
}

/// What follows `beginning` in each text that begins so.
inline std::vector<std::string> endsOf(const std::vector<std::string>& texts,
                                       const std::string& beginning) {
  std::vector<std::string> ends;
  for (const std::string& text : texts) {
    if (text.rfind(beginning, 0) == 0) {
      ends.push_back(text.substr(beginning.size()));
    }
  }
  return ends;
}

/// The texts, each without `beginning` where it begins so.
inline std::vector<std::string> without(const std::string& beginning,
                                        std::vector<std::string> texts) {
  for (std::string& text : texts) {
    text.erase(0, text.rfind(beginning, 0) == 0 ? beginning.size() : 0);
  }
  return texts;
}

}  // namespace trelv::tests
