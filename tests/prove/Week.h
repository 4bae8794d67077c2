#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "prove/Weave.h"
#include "prove/WeaveHost.h"
#include "sweep/Sweep.h"

namespace trelv::tests {

/// How large a week is.
struct WeekSize {
  std::size_t computers = 40;
  std::size_t sessions = 60;
  std::size_t startsOfADay = 300;
};

/// What happened in a week.
struct WeekCounts {
  std::size_t starts = 0;
  std::size_t commands = 0;
  std::size_t packs = 0;
  std::size_t installs = 0;
  std::size_t removals = 0;
  std::size_t faults = 0;
  std::size_t kills = 0;
  std::size_t outages = 0;
  std::size_t locksRemovedByHand = 0;
  std::size_t packsDeliveredAgain = 0;
  std::size_t versionsWrittenBack = 0;
};

/// A working week of one server: workstations and the sessions of a Terminal Server, at which users
/// start programs, install single products and remove others, several at once, while packs come,
/// calls fail, programs are ended by force and the share is gone for seconds. All of it comes from
/// a seed.
class Week {
 public:
  Week(std::uint64_t seed, const WeekSize& size);

  /// From Monday morning to the starts of the weekend, which find nothing left to do.
  void run(Findings& findings);
  const WeekCounts& counts() const { return counts_; }

 private:
  /// What disturbs one program.
  struct Trouble;
  enum class Work { Start, Install, Removal };
  struct Started {
    Workplace* workplace = nullptr;
    Work work = Work::Start;
    const char* product = nullptr;
    /// Of a removal.
    Side side = Side::Client;
    std::unique_ptr<Trouble> trouble;
    std::size_t programs = 0;
    /// Somebody has left the workplace's lock before.
    bool lockBefore = false;
  };

  void putWorkplaces();
  void day(int number);
  void hour(std::size_t starts);
  void meet(std::size_t programs);
  std::vector<Started> someStarts(std::size_t programs);
  Started someStart(Workplace& workplace);
  void takeUpWork(Started& started);
  void disturb(Started& started);
  void workAt(const Started& started);
  Weave::Turn choose(Weave& weave, std::size_t program, std::size_t programs);
  void deliver();
  void deliverInTheMiddle();
  void deliverAnew(const std::string& id);
  void deliverMissing();
  void evening();
  void installWhereCopiesWereLeft();
  void weekend();
  void loseShare();
  void judge(const std::vector<Started>& started, bool outage);
  void judgeWork(const Started& started);
  void judgeTold(const Started& started);
  void judgeLocks(const Started& started);
  bool isOfRemoval(const Started& started, const std::string& text) const;
  void countTrouble(const Started& started);
  void judgeRecords(const std::vector<Started>& started);
  void judgeVersion(const std::string& where, const std::string& side, const std::string& id,
                    const std::string& version);
  void judgeFiles();
  void expect(Invariant invariant, bool holds, const std::string& otherwise);
  std::size_t below(std::size_t count) { return random_() % count; }
  bool oneIn(std::size_t count) { return below(count) == 0; }

  std::mt19937_64 random_;
  WeekSize size_;
  Installation installation_;
  std::deque<Workplace> workplaces_;
  Findings* findings_ = nullptr;
  WeekCounts counts_;
  /// The moment, told with each finding.
  machine::LocalTime now_{2026, 11, 16, 8, 0, 0};
  /// Release of each product that was delivered last; the pack that brought it.
  std::map<std::string, int> release_;
  std::map<std::string, PackContent> delivered_;
  /// The commands that were ever started: product, side and version.
  std::set<std::string> brought_;
  std::map<std::string, std::string> recorded_;
  /// Products that were ever removed from a side: product and side.
  std::set<std::string> removed_;
  /// Products that are removed from the server, or half of them, and after how many meetings they
  /// are delivered anew.
  std::map<std::string, std::size_t> missing_;
  /// Somebody has left the server's lock before the present meeting.
  bool lockBefore_ = false;
  /// Calls until a pack comes, 0: none does.
  std::size_t untilPack_ = 0;
  /// Calls until the share goes, 0: it does not; and until it is back, 0: it is there.
  std::size_t untilOutage_ = 0;
  std::size_t gone_ = 0;
};

}  // namespace trelv::tests
