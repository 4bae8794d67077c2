#include <memory>
#include <string>

#include "prove/Gathering.h"
#include "prove/Meetings.h"
#include "support/kit/Trelv.h"
#include "support/kit/ZipPacks.h"

namespace trelv::tests {
namespace {

constexpr const char* kGivenPack = "C:\\Consegne\\zb-09.94.zip";

/// A pack is published while a workstation starts.
class StartAndPublish : public Gathering {
 public:
  StartAndPublish();

 protected:
  void judgeMore(Findings& findings) override;

 private:
  std::unique_ptr<Trelv> trelv_;
  int exitCode_ = -1;
};

StartAndPublish::StartAndPublish() {
  starts(addComputer(), kStartOfBilancio, kBilancio);
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

void StartAndPublish::judgeMore(Findings& findings) {
  expect(findings, Invariant::ToldForAReason, exitCode_ == 0,
         "not published: " + trelv_->console.errors + trelv_->console.output);
}

}  // namespace

Meeting startAndPublish() {
  return {"start-publish", [] { return std::make_unique<StartAndPublish>(); }};
}

}  // namespace trelv::tests
