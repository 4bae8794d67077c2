#include "prove/Ledger.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

namespace trelv::tests {
namespace {

constexpr const char* kSeed = "seed ";
constexpr const char* kFinding = "finding ";
constexpr const char* kNeeded = "needed ";
/// Behind the last word of a line that was written whole.
constexpr const char* kEnd = " .";

std::string onOneLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(),
      [](char c) -> bool { return c == '\n' || c == '\r' || c == '\t' || c == '\0'; }, ' ');
  return text;
}

}  // namespace

Ledger::Ledger(const std::string& path) {
  if (path.empty()) {
    return;
  }
  read(path);
  file_.open(path, std::ios::app | std::ios::binary);
  if (!file_) {
    throw std::runtime_error("cannot be written: " + path);
  }
  // What follows begins a line of its own, also behind one that was cut off.
  file_ << "\n" << std::flush;
}

// Lines "finding SEED<tab>RUN<tab>SENTENCE ." stand before the line "seed SEED NAME=COUNT … ." that
// closes their seed, lines "needed EXCEPTION ." anywhere.
void Ledger::read(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::vector<LedgerFinding> pending;
  for (std::string line; std::getline(file, line);) {
    if (!line.ends_with(kEnd)) {
      continue;
    }
    line.resize(line.size() - std::string(kEnd).size());
    if (line.starts_with(kSeed)) {
      readSeed(line.substr(std::string(kSeed).size()), pending);
    } else if (line.starts_with(kNeeded)) {
      needed_.insert(line.substr(std::string(kNeeded).size()));
    } else if (line.starts_with(kFinding)) {
      std::istringstream words(line.substr(std::string(kFinding).size()));
      LedgerFinding found;
      words >> found.seed;
      words.ignore();
      std::getline(words, found.finding.run, '\t');
      std::getline(words, found.finding.sentence);
      pending.push_back(found);
    }
  }
}

void Ledger::readSeed(const std::string& line, std::vector<LedgerFinding>& pending) {
  std::istringstream words(line);
  unsigned seed = 0;
  words >> seed;
  const bool isNew = seeds_.insert(seed).second;
  for (std::string word; isNew && words >> word;) {
    const std::size_t equals = word.find('=');
    counts_[word.substr(0, equals)] += std::stoull(word.substr(equals + 1));
  }
  for (const LedgerFinding& found : pending) {
    if (isNew && found.seed == seed) {
      findings_.push_back(found);
    }
  }
  pending.clear();
}

void Ledger::add(unsigned seed, const Tally& tally) {
  const std::lock_guard lock(mutex_);
  std::string text;
  for (const Tally::Finding& finding : tally.findings()) {
    text += kFinding + std::to_string(seed) + "\t" + finding.run + "\t" +
            onOneLine(finding.sentence) + kEnd + "\n";
    findings_.push_back({seed, finding});
  }
  for (const std::string& exception : tally.needed()) {
    if (needed_.insert(exception).second) {
      text += kNeeded + onOneLine(exception) + kEnd + "\n";
    }
  }
  text += kSeed + std::to_string(seed);
  for (const auto& [what, count] : tally.counts()) {
    text += " " + what + "=" + std::to_string(count);
    counts_[what] += count;
  }
  seeds_.insert(seed);
  if (file_.is_open()) {
    file_ << text << kEnd << "\n" << std::flush;
  }
}

}  // namespace trelv::tests
