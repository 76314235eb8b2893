// The boundary of the exported interface: the only place that catches exceptions for the caller.
//
// Nothing may leave an export but its answer: callers are C programs and foreign runtimes that
// cannot unwind a C++ exception.

#ifndef QUASTEL_FRAME_BOUNDARY_H_
#define QUASTEL_FRAME_BOUNDARY_H_

#include <cstdint>
#include <utility>

#include "quastel_core.h"

namespace quastel {

template <typename Operation>
qs_status StatusBoundary(Operation&& operation) noexcept {
  try {
    return std::forward<Operation>(operation)();
  } catch (...) {
    return QS_FAILED;
  }
}

// Records the end of a long-running call, which takes a lock. If that fails, the call has failed,
// and it is tried again: without a recorded end the handle could never be used or freed any more.
template <typename Finish>
qs_status FinishSurely(qs_status status, Finish&& finish) {
  bool recorded = false;
  const qs_status end = StatusBoundary([&] {
    const qs_status answer = finish(status);
    recorded = true;
    return answer;
  });
  return recorded ? end : finish(QS_FAILED);
}

// For the exports that answer yes or no: whatever goes wrong inside is a no.
template <typename Operation>
std::int32_t PredicateBoundary(Operation&& operation) noexcept {
  try {
    return std::forward<Operation>(operation)() ? 1 : 0;
  } catch (...) {
    return 0;
  }
}

}  // namespace quastel

#endif  // QUASTEL_FRAME_BOUNDARY_H_
