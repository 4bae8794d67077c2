#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "sim/SimMachine.h"

namespace trelv::sim {

enum class FailureSpan { Once, FromThenOn };

/// Makes one machine's calls fail while it lives: the call of number `number` (from 1), counted
/// from here, or that one and all later ones. "Once" is longer than anybody tries: where a file is
/// read, written or changed again at once, looks at paths left out of account, it fails again. Each
/// fails in its own way, some by `variant`: writing, making and taking a mark 5, 32 or 112,
/// removing 5, 32 or 64, looking and reading 32, 5 or 64, a start 2, 5 or 740, the configuration
/// store -3000 or -9999, automation 0x800401F3 or 0x800706BA; the registry and questions to the
/// system 5, that for a drive's connection 1222, a wait 6; ini reading gives the default and
/// writing 0, version and truth queries false, boxes None, input boxes nothing, forms and pictures
/// cannot be shown. What fails has no effect; only a file that is written without room is left
/// empty.
class FailingMachine {
 public:
  FailingMachine(SimMachine& simMachine, std::size_t number, FailureSpan span = FailureSpan::Once,
                 std::size_t variant = 0);
  ~FailingMachine();
  FailingMachine(const FailingMachine&) = delete;
  FailingMachine& operator=(const FailingMachine&) = delete;

  /// The call fails with this code, one of codes(), in the place of its variant.
  void failWith(SystemCode code) { failure_.code = code; }
  /// The call of this number fails too, with this code where it can, and like the first one again
  /// where it is tried again.
  void failAlso(std::size_t number, SystemCode code);

  /// In how many ways a call of this kind can fail: variants 0 … less than this.
  static std::size_t variants(CallKind kind);
  /// All codes that a call of this kind can fail with: those of the variants and the rarer ones.
  /// One where nobody learns the code.
  static std::vector<SystemCode> codes(CallKind kind);

  /// Was there a call of that number? A sweep ends with the first run that answers false.
  bool reached() const { return seen_ >= failure_.number; }
  /// How many calls were made since.
  std::size_t calls() const { return seen_; }
  /// Text of the first call that failed; empty when none did.
  const std::string& failedCall() const { return failure_.call; }
  /// The same of the call of failAlso().
  const std::string& secondCall() const { return second_.call; }
  /// The code that it failed with; 0 when it did not.
  SystemCode secondCode() const { return second_.answered; }

 private:
  struct Failure {
    std::size_t number = 0;
    std::size_t variant = 0;
    /// 0: as the variant says.
    SystemCode code = system_code::kSuccess;
    /// Text of the call that it was.
    std::string call;
    /// Nothing else was done since the call failed.
    bool stillTried = false;
    /// The code that it failed with.
    SystemCode answered = system_code::kSuccess;
  };

  std::optional<SystemCode> look(const SimCall& call);
  std::optional<SystemCode> lookFor(Failure& failure, const SimCall& call) const;
  static SystemCode codeOf(const Failure& failure, CallKind kind);
  static bool isTriedAgain(Failure& failure, const SimCall& call);

  SimMachine& machine_;
  /// How many calls were made before.
  std::size_t before_;
  FailureSpan span_;
  Failure failure_;
  Failure second_;
  std::size_t seen_ = 0;
};

}  // namespace trelv::sim
