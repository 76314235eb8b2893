// What holds for the whole interface whatever calls are made, in whatever order.

#ifndef QUASTEL_TESTS_FUZZ_CALL_SEQUENCES_CHECK_H_
#define QUASTEL_TESTS_FUZZ_CALL_SEQUENCES_CHECK_H_

#include <cstdint>
#include <string_view>

namespace quastel::fuzz {

// How far a run got, so that a corpus can be asked what it reaches.
struct CallSequenceSeen {
  std::uint64_t scans[3] = {};  // of each kind, undisturbed and with rows
  std::uint64_t session_scans = 0;
  std::uint64_t cancelled = 0;     // scans and cleans
  std::uint64_t failed_scans = 0;  // undisturbed, with a status of their own
  std::uint64_t deleted = 0;       // files that cleans removed
  std::uint64_t kept = 0;          // files that cleans could not remove
  std::uint64_t refused = 0;       // starts and cleans
  std::uint64_t met = 0;           // calls into a running scan or clean
  std::uint64_t direct = 0;        // files and folders removed one by one
};

// The bytes choose the calls on two product scans and two sessions, the changes that others make to
// the disks between and during them, and the faults. Ends the process when a rule is broken.
CallSequenceSeen CheckCallSequence(std::string_view bytes);

}  // namespace quastel::fuzz

#endif  // QUASTEL_TESTS_FUZZ_CALL_SEQUENCES_CHECK_H_
