// The proofs at size: see tools/prove, which builds this optimised and keeps what was done.

#include <array>

#include "prove/ChanceExceptions.h"
#include "prove/CommandLine.h"
#include "prove/Faults.h"
#include "prove/WeaveProof.h"

namespace trelv::tests {
namespace {

/// Every proof, in the order in which they are made and shown. A new one is a row here.
constexpr std::array kProofs{
    Proof{"faults", "a call that fails is told, and costs nothing but what it was for",
          "every call of every mode in worlds made up by chance, every code that it can answer",
          330, 15, 420, proveFaults,
          []() -> std::vector<std::string> { return namesOfExceptions(Trouble::FailsOnce); }},
    Proof{"pairs", "two failures in one run cost no more than both of them",
          "a second fault anywhere behind the first, sampled", 200, 0, 0, provePairs},
    Proof{"kills",
          "a program that is ended by force leaves nothing that the next starts do not mend",
          "ended before each call and within each that writes, then started until nothing is left "
          "to do",
          200, 2, 180, proveKills},
    Proof{
        "power", "a power failure leaves whole what must be whole",
        "the power fails before and within each call that changes a disk, and behind the end: what "
        "was not flushed is lost, zeros or there in part, renames lost or there; then started "
        "until nothing is left to do",
        200, 2, 110, provePower},
    Proof{
        "weave", "programs that run at once do each other no harm, and end as one after the other",
        "meetings of two and of three workstations, sessions and processes: the turn changes "
        "before any call that another one minds, once and twice, and with two of them three times, "
        "drawn by chance",
        kSeedsOfMeetings, kMeetings, 100, proveInterleavings},
    Proof{
        "weeks", "a week of forty workstations and sixty sessions leaves nothing to mend",
        "starts at once, packs in the middle of them, installations, removals, failures, kills and "
        "a share that vanishes, all from a seed; then everybody starts once more",
        2000, 20, 30, proveWeeks},
};

}  // namespace
}  // namespace trelv::tests

int main(int count, char** arguments) {
  return trelv::tests::runProofs({trelv::tests::kProofs.begin(), trelv::tests::kProofs.end()},
                                 {arguments + 1, arguments + count});
}
