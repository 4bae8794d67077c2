#include "overlay/OverlayExclusion.h"

#include <utility>

namespace trelv::overlay {
namespace {

using namespace system_code;

class OverlayMark : public machine::Mark {
 public:
  OverlayMark(Tree& tree, std::string path) : tree_(tree), path_(std::move(path)) {}
  OverlayMark(const OverlayMark&) = delete;
  OverlayMark& operator=(const OverlayMark&) = delete;
  ~OverlayMark() override {
    const Place place = tree_.find(path_);
    if (place.isThere() && place.entry != nullptr) {
      tree_.remove(place);
    }
  }

 private:
  Tree& tree_;
  std::string path_;
};

}  // namespace

SystemCode OverlayExclusion::take(const std::string& path, const std::string& text,
                                  std::uint32_t milliseconds,
                                  std::unique_ptr<machine::Mark>& mark) {
  const Place place = tree_.find(path);
  if (place.isThere() && !place.facts.folder) {
    clock_.pause(milliseconds);
    return kSharingViolation;
  }
  const SystemCode refusal = tree_.refusalToWrite(place);
  if (refusal != kSuccess) {
    return refusal;
  }
  Entry& entry = tree_.putFile(place, tree_.writtenNow(text.size()));
  entry.bytes = text;
  entry.held = true;
  mark = std::make_unique<OverlayMark>(tree_, path);
  return kSuccess;
}

}  // namespace trelv::overlay
