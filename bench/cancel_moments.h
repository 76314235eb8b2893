// How long a scan goes on after it was cancelled, at random moments of it.

#ifndef QUASTEL_BENCH_CANCEL_MOMENTS_H_
#define QUASTEL_BENCH_CANCEL_MOMENTS_H_

#include <functional>
#include <vector>

namespace quastel::bench {

// A kind of scan, on a handle that is kept.
struct CancellableScan {
  std::function<void()> run;  // returns when the scan has ended
  std::function<void()> cancel;
  std::function<bool()> is_running;
};

// Milliseconds from the cancel to the end of the scan, for 20 moments between its start and `span`
// milliseconds later; 0: for as long as a whole scan takes. A moment at which the scan had ended
// says nothing and another one is drawn; fewer than 20 come back when that happens all the time.
std::vector<double> CancelLatencies(const CancellableScan& scan, double span);

}  // namespace quastel::bench

#endif  // QUASTEL_BENCH_CANCEL_MOMENTS_H_
