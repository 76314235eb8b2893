// The buffer protocol of the exports that return a text, tried at every capacity that matters.

#ifndef QUASTEL_TESTS_FUZZ_TEXT_PROTOCOL_H_
#define QUASTEL_TESTS_FUZZ_TEXT_PROTOCOL_H_

#include <cstdint>
#include <string_view>

#include "fuzz/demand.h"
#include "fuzz/guarded_buffer.h"
#include "quastel_core.h"

namespace quastel::fuzz {

// `call(out, capacity, needed)` is the export with its other arguments, and `expected` the text
// that it must give.
template <typename C, typename Call>
void DemandText(std::basic_string_view<C> expected, Call call) {
  const std::uint64_t length = expected.size();
  const std::uint64_t exact = length + 1;

  std::uint64_t needed = 0;
  Demand(call(static_cast<C*>(nullptr), std::uint64_t{0}, &needed) == QS_BUFFER_TOO_SMALL,
         "without a buffer it is too small");
  Demand(needed == exact, "the needed capacity is the length and one");
  needed = 0;
  Demand(call(static_cast<C*>(nullptr), exact + 7, &needed) == QS_BUFFER_TOO_SMALL,
         "a capacity does not stand for a buffer");
  Demand(needed == exact, "the needed capacity comes without a buffer as well");
  Demand(call(static_cast<C*>(nullptr), std::uint64_t{0}, static_cast<std::uint64_t*>(nullptr)) ==
             QS_BUFFER_TOO_SMALL,
         "neither buffer nor pointer is too small");

  for (const std::uint64_t capacity : {std::uint64_t{0}, length / 2, length}) {
    GuardedBuffer<C> small(static_cast<std::size_t>(capacity));
    needed = 0;
    Demand(call(small.data(), capacity, &needed) == QS_BUFFER_TOO_SMALL,
           "a buffer without room for the terminator is too small");
    Demand(needed == exact, "the needed capacity comes with a refusal");
    small.DemandUntouched("a refusal writes nothing");
  }
  for (const std::uint64_t capacity : {exact, exact + 1, exact + 40}) {
    GuardedBuffer<C> enough(static_cast<std::size_t>(capacity));
    needed = 0;
    Demand(call(enough.data(), capacity, &needed) == QS_OK, "a buffer of the needed capacity does");
    Demand(needed == exact, "the needed capacity comes with the text");
    enough.DemandHolds(expected, "the text, its terminator, and nothing behind");
  }
  GuardedBuffer<C> alone(static_cast<std::size_t>(exact));
  Demand(call(alone.data(), exact, static_cast<std::uint64_t*>(nullptr)) == QS_OK,
         "the pointer may be left out");
  alone.DemandHolds(expected, "the text is the same without the pointer");
}

}  // namespace quastel::fuzz

#endif  // QUASTEL_TESTS_FUZZ_TEXT_PROTOCOL_H_
