#include <memory>
#include <string>

#include "prove/Gathering.h"
#include "prove/Meetings.h"
#include "support/kit/Trelv.h"
#include "support/kit/ZipPacks.h"

namespace trelv::tests {
namespace {

constexpr const char* kGivenPack = "C:\\Consegne\\zb-09.94.zip";

/// A pack is published while workstations start.
class StartsAndPublish : public Gathering {
 public:
  explicit StartsAndPublish(std::size_t computers);

 protected:
  void judgeMore(Findings& findings) override;

 private:
  std::unique_ptr<Trelv> trelv_;
  int exitCode_ = -1;
};

StartsAndPublish::StartsAndPublish(std::size_t computers) {
  for (std::size_t i = 0; i < computers; ++i) {
    starts(addComputer(), kStartOfBilancio, kBilancio);
  }
  Workplace& publishing = addComputer();
  std::vector<std::pair<std::string, std::string>> files;
  const std::string tree = "prg\\com\\setup\\aggdovra\\";
  for (const auto& [path, bytes] : packOf("ZB", kVersionOfPack)) {
    files.emplace_back(replaceAll(path.substr(tree.size()), "\\", "/"), bytes);
  }
  publishing.machine().putFile(kGivenPack, zipPack(files));
  for (Workplace& workplace : workplaces_) {
    putSevenZip(workplace.machine());
  }
  trelv_ = std::make_unique<Trelv>(publishing.machine());
  does(publishing, [this] { exitCode_ = trelv_->run({"publish", "S:\\Lumo", kGivenPack}); });
}

void StartsAndPublish::judgeMore(Findings& findings) {
  expect(findings, Invariant::ToldForAReason, exitCode_ == 0,
         "not published: " + trelv_->console.errors + trelv_->console.output);
}

}  // namespace

Meeting startsAndPublish(const char* name, std::size_t starts,
                         const std::vector<std::size_t>& alike) {
  return {name, [starts] { return std::make_unique<StartsAndPublish>(starts); }, alike};
}

}  // namespace trelv::tests
