#include "kit/ProductHistory.h"

#include <algorithm>
#include <utility>

#include "base/Text.h"
#include "kit/FileText.h"
#include "kit/TextLines.h"

namespace trelv::kit {
namespace {

constexpr std::size_t kMostIniBytes = 16U << 20U;

/// The name in a section's header; nothing for any other line.
std::optional<std::string> sectionIn(const std::string& line) {
  const std::string text = trim(line);
  const std::size_t end = text.find(']');
  if (text.empty() || text.front() != '[' || end == std::string::npos) {
    return std::nullopt;
  }
  return trim(text.substr(1, end - 1));
}

bool isKey(const std::string& line, const std::string& key) {
  const std::size_t at = line.find('=');
  return at != std::string::npos && equalNoCase(trim(line.substr(0, at)), key);
}

}  // namespace

ProductHistory::ProductHistory(Program& program, const std::string& serverPath, std::string product,
                               std::string logFile, const StartLog& start)
    : program_(program),
      serverPath_(serverPath),
      product_(std::move(product)),
      logFile_(std::move(logFile)),
      start_(start),
      entries_(walkedEntries(program, serverPath)) {
  const auto found = std::find_if(
      entries_.begin(), entries_.end(),
      [this](const CatalogueEntry& entry) -> bool { return equalNoCase(entry.id, product_); });
  if (found != entries_.end()) {
    place_ = static_cast<std::size_t>(found - entries_.begin());
  }
}

const SideRun* ProductHistory::run(Side side) const {
  if (!place_) {
    return nullptr;
  }
  const std::size_t index = *place_ * 2 + (side == Side::Client ? 1U : 0U);
  return index < start_.runs.size() ? &start_.runs[index] : nullptr;
}

bool ProductHistory::isBehindBothRuns() const {
  return run(Side::Client) != nullptr &&
         (start_.walked || &start_.runs.back() != run(Side::Client));
}

bool ProductHistory::wasUpdated() const {
  return std::any_of(start_.runs.begin(), start_.runs.end(), [this](const SideRun& each) -> bool {
    return (&each == run(Side::Server) || &each == run(Side::Client)) &&
           each.find(log_line::kDone) != nullptr;
  });
}

const CatalogueEntry* ProductHistory::entryOf(const SideRun& run) const {
  const auto index = static_cast<std::size_t>(&run - start_.runs.data()) / 2;
  return index < entries_.size() ? &entries_[index] : nullptr;
}

std::string ProductHistory::recorded(Side side) const {
  return recordedVersion(program_, versionRecord(program_, side, serverPath_),
                         place_ ? entry().id : product_);
}

Evidence inIniFile(Program& program, const std::string& file, const std::string& section,
                   const std::string& key) {
  std::string bytes;
  if (program.machine.files.read(file, kMostIniBytes, bytes) != system_code::kSuccess) {
    return {file, std::nullopt, ""};
  }
  bool inSection = section.empty();
  std::size_t number = 0;
  for (const std::string& line : textLines(textOfFile(program.machine.locale, bytes))) {
    ++number;
    const std::optional<std::string> begun = sectionIn(line);
    if (begun && inSection && !section.empty()) {
      break;
    }
    inSection = begun ? equalNoCase(*begun, section) : inSection;
    if (inSection && (key.empty() ? begun.has_value() : isKey(line, key))) {
      return {file, number, line};
    }
  }
  return {file, std::nullopt, ""};
}

}  // namespace trelv::kit
