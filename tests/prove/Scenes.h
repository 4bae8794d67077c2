#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "prove/Invariants.h"
#include "sweep/Sweep.h"

namespace trelv::tests {

/// Files that must be whole and that the worlds of prove/Worlds write seldom or never.
enum class Subject {
  /// The configuration store, several settings one after the other.
  Store,
  /// The client copy and the environment file.
  SelfUpdate,
  /// The ini files that the repairs on a Terminal Server copy and make.
  Repairs,
  /// What a publication keeps and puts in its place.
  Publication,
  /// What it takes back.
  Withdrawal
};

inline constexpr std::array kEverySubject{Subject::Store, Subject::SelfUpdate, Subject::Repairs,
                                          Subject::Publication, Subject::Withdrawal};

const char* nameOf(Subject subject);

/// What an undisturbed run of a scene does: what disturbed ones are measured by.
struct Past {
  std::vector<sim::SimCall> calls;
  Picture before;
  Picture healed;
  /// All that the files held meanwhile.
  Known known;
};

/// A small world around one kind of file, made up from a number, and the work that writes it, which
/// can be done again. The same number gives the same scene.
class Scene : public SweptWorld {
 public:
  /// `past` may be null where the run is the undisturbed one; it outlives the scene.
  static std::unique_ptr<Scene> make(Subject subject, unsigned seed, const Past* past);

  void run() override;
  void powerFailed(const std::vector<sim::OnItsWay>& onTheirWay) override {
    onTheirWay_ = onTheirWay;
  }
  void judge(const Fault& fault, Findings& findings) override;
  /// To be asked for once, behind run().
  Past takePast();

 protected:
  Scene(unsigned seed, const Past* past) : random_(seed), past_(past) {}

  virtual void work() = 0;
  /// Paths that the work may take away, as Judge::nothingElseDeleted has them.
  virtual std::vector<std::string> mayGo() { return {"*.TMP"}; }
  /// What the world is compared by when all is done again.
  virtual Picture comparable(Picture picture) { return picture; }
  virtual void judgeMore(Judge& /*judge*/) {}

  std::size_t below(std::size_t count) { return random_() % count; }
  bool oneIn(unsigned count) { return random_() % count == 0; }
  std::string oneOf(const std::vector<std::string>& texts) { return texts[below(texts.size())]; }
  /// Up to some sectors of text.
  std::string someText();
  Picture picture() { return pictureOf(machine(), {"C:", "S:"}); }
  /// A step of the work is done: what stands now is right.
  void note();

 private:
  Picture workUntilNothingChanges(bool& rests);

  std::mt19937 random_;
  const Past* const past_;
  Picture before_;
  Known known_;
  std::vector<sim::OnItsWay> onTheirWay_;
};

/// The undisturbed run of a scene.
Past pastOf(Subject subject, unsigned seed);

/// Those of the second program.
std::unique_ptr<Scene> makePublication(unsigned seed, const Past* past);
std::unique_ptr<Scene> makeWithdrawal(unsigned seed, const Past* past);

}  // namespace trelv::tests
