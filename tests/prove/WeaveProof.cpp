#include "prove/WeaveProof.h"

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>

#include "prove/Meetings.h"
#include "prove/Week.h"

namespace trelv::tests {
namespace {

/// Learned once for all seeds of a process.
const Interleavings& interleavingsOf(const Meeting& meeting, bool thorough) {
  static std::mutex mutex;
  static std::map<std::pair<const Meeting*, bool>, std::unique_ptr<Interleavings>> known;
  const std::scoped_lock lock(mutex);
  std::unique_ptr<Interleavings>& all = known[{&meeting, thorough}];
  if (all == nullptr) {
    all = std::make_unique<Interleavings>(meeting, thorough);
  }
  return *all;
}

/// One part of the schedules of one meeting.
class PartOfMeeting {
 public:
  PartOfMeeting(const Job& job, Tally& tally)
      : job_(job),
        tally_(tally),
        meeting_(meetings().at((job.seed - 1) % kMeetings)),
        part_((job.seed - 1) / kMeetings % kPartsOfAMeeting) {}

  void run();

 private:
  void runOnly();
  void runAll(const Interleavings& all);
  void runSome(const Interleavings& all);
  void runDrawn(const Interleavings& all);
  Woven runOne(const Interleavings& all, const Schedule& schedule);
  void note(const Schedule& schedule, const Woven& woven, const std::string& kind);

  const Job& job_;
  Tally& tally_;
  const Meeting& meeting_;
  std::size_t part_;
};

void PartOfMeeting::run() {
  if (!job_.only.empty()) {
    runOnly();
    return;
  }
  const Interleavings& all = interleavingsOf(meeting_, job_.enough == 0);
  if (part_ == 0 || job_.enough > 0) {
    for (const Schedule& serial : all.serial()) {
      runOne(all, serial);
    }
  }
  if (job_.enough > 0) {
    runSome(all);
  } else {
    runAll(all);
    runDrawn(all);
  }
}

/// "update-update AB A137>B": the meeting's name, a blank and the schedule.
void PartOfMeeting::runOnly() {
  const std::string beginning = std::string(meeting_.name) + " ";
  if (!job_.only.starts_with(beginning)) {
    throw std::invalid_argument("this seed is of the meeting " + beginning);
  }
  runOne(interleavingsOf(meeting_, false), Schedule::of(job_.only.substr(beginning.size())));
}

void PartOfMeeting::runAll(const Interleavings& all) {
  const std::vector<Schedule> first = all.withOneSwitch();
  for (std::size_t i = part_; i < first.size(); i += kPartsOfAMeeting) {
    const Woven woven = runOne(all, first[i]);
    for (const Schedule& second : Interleavings::oneMore(first[i], woven, false)) {
      runOne(all, second);
    }
  }
}

/// Evenly spread, elsewhere with each seed.
void PartOfMeeting::runSome(const Interleavings& all) {
  const std::vector<Schedule> first = all.withOneSwitch();
  const std::size_t step = std::max<std::size_t>(1, first.size() / job_.enough);
  for (std::size_t i = job_.seed % step; i < first.size(); i += step) {
    runOne(all, first[i]);
  }
}

/// Some meetings have next to no schedules with three switches: one of them waits for the other
/// from the first call that both mind to the last.
void PartOfMeeting::runDrawn(const Interleavings& all) {
  constexpr std::size_t kSwitches = 3;
  if (all.serial().front().order.size() > 2) {
    return;
  }
  constexpr std::size_t kWanted = kDrawnOfAMeeting / kPartsOfAMeeting;
  std::size_t whole = 0;
  for (std::size_t i = 0; i < 3 * kWanted && whole < kWanted; ++i) {
    Schedule drawn;
    const Woven woven = all.runDrawn(kSwitches, i * kPartsOfAMeeting + part_, drawn);
    const bool isWhole = drawn.switches.size() == kSwitches;
    whole += isWhole ? 1U : 0U;
    note(drawn, woven, isWhole ? "drawn-with-3-switches" : "drawn-with-fewer");
  }
}

Woven PartOfMeeting::runOne(const Interleavings& all, const Schedule& schedule) {
  Woven woven = all.run(schedule);
  note(schedule, woven, meeting_.name);
  return woven;
}

void PartOfMeeting::note(const Schedule& schedule, const Woven& woven, const std::string& kind) {
  tally_.count("runs");
  tally_.count(kind);
  for (const std::string& finding : woven.findings) {
    tally_.found(std::string(meeting_.name) + " " + schedule.text(), finding);
  }
}

}  // namespace

void proveInterleavings(const Job& job, Tally& tally) { PartOfMeeting(job, tally).run(); }

void proveWeeks(const Job& job, Tally& tally) {
  WeekSize size;
  if (job.enough > 0) {
    size.startsOfADay = job.enough;
  }
  Findings findings;
  Week week(job.seed, size);
  week.run(findings);
  for (const std::string& finding : findings.sentences()) {
    tally.found("week", finding);
  }
  const WeekCounts& counts = week.counts();
  tally.count("runs");
  tally.count("starts", counts.starts);
  tally.count("packs", counts.packs);
  tally.count("single-installations", counts.installs);
  tally.count("removals", counts.removals);
  tally.count("faults", counts.faults);
  tally.count("kills", counts.kills);
  tally.count("outages-of-the-share", counts.outages);
  tally.count("locks-removed-by-hand", counts.locksRemovedByHand);
  tally.count("packs-delivered-again", counts.packsDeliveredAgain);
  tally.count("versions-written-back", counts.versionsWrittenBack);
}

}  // namespace trelv::tests
