// What this process holds of the system.

#ifndef QUASTEL_TESTS_STRESS_PROCESS_METERS_H_
#define QUASTEL_TESTS_STRESS_PROCESS_METERS_H_

#include <cstdint>

namespace quastel::stress {

struct ProcessMeters {
  std::uint64_t handles = 0;
  std::uint64_t threads = 0;
  std::uint64_t allocated = 0;  // bytes that somebody asked a heap for and has not freed
  std::uint64_t held_back = 0;  // bytes that a heap has got back and keeps for later
  std::uint64_t committed = 0;  // bytes of memory, all of it
};

ProcessMeters ReadMeters();

// Ends the program unless each meter shows what is taken now: one that stands still proves nothing.
void DemandMetersMove();

}  // namespace quastel::stress

#endif  // QUASTEL_TESTS_STRESS_PROCESS_METERS_H_
