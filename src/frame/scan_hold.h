// The scan hold: a delay at the start of every scan that the environment may ask for, so that a
// program can be tried with a scan that is certain to be still running.

#ifndef QUASTEL_FRAME_SCAN_HOLD_H_
#define QUASTEL_FRAME_SCAN_HOLD_H_

#include <cstdint>

#include "base/text.h"
#include "frame/cancel.h"

namespace quastel {

// Waits as long as QUASTEL_SCAN_HOLD_MS says, 5000 ms at most, in slices of 25 ms; ends at the
// first slice that finds `cancel` set.
void HoldScan(CancelFlag& cancel) noexcept;

// The number at the front of `text`, as the C runtime of Windows converts it to its 32-bit unsigned
// long: blanks, one sign, decimal digits; a minus wraps, too large a number is the largest one.
std::uint32_t ParseUnsigned32(TextView text) noexcept;

}  // namespace quastel

#endif  // QUASTEL_FRAME_SCAN_HOLD_H_
