#include "sim/SimAutomation.h"

#include <utility>

namespace trelv::sim {
namespace {

using machine::AutomationAnswer;

constexpr const char* kWord = "Microsoft Word";
// As the program gives them: a document that is not there, a bookmark that is not there.
constexpr SystemCode kNoSuchDocument = 0x800A1436U;
constexpr SystemCode kNoSuchBookmark = 0x800A16D4U;

}  // namespace

/// A word processor in the program's hand.
class SimWordProcessor : public machine::WordProcessor {
 public:
  SimWordProcessor(SimAutomation& automation, std::shared_ptr<SimWord> word)
      : automation_(automation), word_(std::move(word)) {}
  ~SimWordProcessor() override { word_->released = true; }
  SimWordProcessor(const SimWordProcessor&) = delete;
  SimWordProcessor& operator=(const SimWordProcessor&) = delete;

  AutomationAnswer openDocument(const std::string& path) override {
    AutomationAnswer answer = automation_.call(*word_, "word.openDocument", path);
    std::string bytes;
    if (answer.code == 0 && automation_.files_.quietRead(path, bytes) != system_code::kSuccess) {
      answer = {kNoSuchDocument, kWord, "Impossibile trovare il file."};
    }
    if (answer.code == 0) {
      word_->documents.push_back(path);
      word_->bookmark.clear();
    }
    return answer;
  }
  AutomationAnswer makeVisible() override {
    AutomationAnswer answer = automation_.call(*word_, "word.makeVisible", "");
    word_->visible = word_->visible || answer.code == 0;
    return answer;
  }
  AutomationAnswer activate() override {
    AutomationAnswer answer = automation_.call(*word_, "word.activate", "");
    word_->activated = word_->activated || answer.code == 0;
    return answer;
  }
  AutomationAnswer goToBookmark(const std::string& name) override {
    AutomationAnswer answer = automation_.call(*word_, "word.goToBookmark", name);
    if (answer.code == 0 && (word_->documents.empty() || !automation_.bookmarks_.contains(name))) {
      answer = {kNoSuchBookmark, kWord, "Il segnalibro non esiste."};
    }
    if (answer.code == 0) {
      word_->bookmark = name;
    }
    return answer;
  }
  AutomationAnswer quit() override {
    AutomationAnswer answer = automation_.call(*word_, "word.quit", "");
    word_->ended = word_->ended || answer.code == 0;
    return answer;
  }

 private:
  SimAutomation& automation_;
  std::shared_ptr<SimWord> word_;
};

AutomationAnswer SimAutomation::startWord(std::unique_ptr<machine::WordProcessor>& word) {
  if (const auto injected = calls_.enter(CallKind::AutomationCall, "automation.startWord", "")) {
    return {*injected, "", ""};
  }
  if (!installed_) {
    return {machine::automation_code::kNotRegistered, "", ""};
  }
  words_.push_back(std::make_shared<SimWord>());
  word = std::make_unique<SimWordProcessor>(*this, words_.back());
  return {};
}

void SimAutomation::installWord(const std::vector<std::string>& bookmarks) {
  installed_ = true;
  bookmarks_ = {bookmarks.begin(), bookmarks.end()};
}

AutomationAnswer SimAutomation::call(const SimWord& word, const std::string& method,
                                     const std::string& about) {
  if (const auto injected = calls_.enter(CallKind::AutomationCall, method, about)) {
    return {*injected, "", ""};
  }
  if (!failures_.empty()) {
    AutomationAnswer failure = std::move(failures_.front());
    failures_.pop_front();
    return failure;
  }
  return word.ended ? AutomationAnswer{machine::automation_code::kServerGone, "", ""}
                    : AutomationAnswer{};
}

}  // namespace trelv::sim
