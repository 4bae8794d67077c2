#include "sim/SimExclusion.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace trelv::sim {
namespace {

using namespace system_code;

class SimMark : public machine::Mark {
 public:
  SimMark(SimDisk& disk, std::string path) : disk_(disk), path_(std::move(path)) {}
  SimMark(const SimMark&) = delete;
  SimMark& operator=(const SimMark&) = delete;
  ~SimMark() override { disk_.removeTree(path_); }

 private:
  SimDisk& disk_;
  std::string path_;
};

}  // namespace

SystemCode SimExclusion::take(const std::string& path, const std::string& text,
                              std::uint32_t milliseconds, std::unique_ptr<machine::Mark>& mark) {
  if (const auto injected = calls_.enter(CallKind::MarkTake, "exclusion.take", path)) {
    return *injected;
  }
  SystemCode code = open(path, text, mark);
  if (code == kSharingViolation && milliseconds > 0 && hook_) {
    std::exchange(hook_, nullptr)();
    code = open(path, text, mark);
  }
  constexpr std::uint32_t kBetweenLooks = 100;
  for (std::uint32_t waited = 0; code == kSharingViolation && waited < milliseconds;
       waited += kBetweenLooks) {
    clock_.wait(std::min(kBetweenLooks, milliseconds - waited));
    code = open(path, text, mark);
  }
  return code;
}

SystemCode SimExclusion::open(const std::string& path, const std::string& text,
                              std::unique_ptr<machine::Mark>& mark) {
  SimVolumes::Place place;
  const SystemCode code = files_.writable(path, place);
  if (code != kSuccess) {
    return code;
  }
  // A full disk takes the file and not its text.
  files_.quietWrite(path, text);
  place = volumes_.find(path, true);
  place.node->held = Sharing::Read;
  mark = std::make_unique<SimMark>(*place.disk, place.diskPath);
  return kSuccess;
}

std::unique_ptr<machine::Mark> SimExclusion::takeForAnother(const std::string& path,
                                                            const std::string& text) {
  std::unique_ptr<machine::Mark> mark;
  if (open(path, text, mark) != kSuccess) {
    throw std::logic_error("the mark cannot be taken: " + path);
  }
  return mark;
}

}  // namespace trelv::sim
