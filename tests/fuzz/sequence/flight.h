// A call that blocks, with something done in the middle of it: inside, on the same thread; on
// another thread while it is stopped at a certain call; or on another thread at any time.

#ifndef QUASTEL_TESTS_FUZZ_SEQUENCE_FLIGHT_H_
#define QUASTEL_TESTS_FUZZ_SEQUENCE_FLIGHT_H_

#include <cstdint>
#include <functional>

#include "fuzz/input.h"
#include "fuzz/sequence/watch.h"

namespace quastel::fuzz::sequence {

enum class Meeting { kNone, kInside, kParked, kRacing };

struct Plan {
  Meeting meeting = Meeting::kNone;
  std::uint64_t nth = 0;  // the call about the disks at which they meet

  static Plan From(Input& input);
  bool IsRace() const { return meeting == Meeting::kRacing; }
};

// `meanwhile` is done once at most; whether it was. In a race it may be done before or after.
bool Fly(Watch& watch, const Plan& plan, const std::function<void()>& operation,
         const std::function<void()>& meanwhile);

}  // namespace quastel::fuzz::sequence

#endif  // QUASTEL_TESTS_FUZZ_SEQUENCE_FLIGHT_H_
