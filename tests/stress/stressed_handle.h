// One handle under stress: a driver scans and cleans with it and checks what comes out, while
// observers ask, cancel and get in the way. Drivers and observers are threads of their own.

#ifndef QUASTEL_TESTS_STRESS_STRESSED_HANDLE_H_
#define QUASTEL_TESTS_STRESS_STRESSED_HANDLE_H_

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <random>
#include <shared_mutex>

#include "quastel_core.h"
#include "stress/demand.h"

namespace quastel::stress {

using Random = std::mt19937;

inline constexpr std::uint64_t kLargestSmallFile = 10'485'760;
inline constexpr std::size_t kCapacity = 300;  // longer than any text here

// What happened, to show that there was stress at all.
struct Tally {
  std::atomic<std::uint64_t> scans{0};
  std::atomic<std::uint64_t> scans_cancelled{0};
  std::atomic<std::uint64_t> cleans{0};
  std::atomic<std::uint64_t> cleans_cancelled{0};
  std::atomic<std::uint64_t> cleans_refused{0};
  std::atomic<std::uint64_t> deleted{0};
  std::atomic<std::uint64_t> rows_read{0};
  std::atomic<std::uint64_t> busy{0};
  std::atomic<std::uint64_t> destroyed{0};
};

class StressedHandle {
 public:
  StressedHandle() = default;
  virtual ~StressedHandle() = default;
  StressedHandle(const StressedHandle&) = delete;
  StressedHandle& operator=(const StressedHandle&) = delete;

  // One round of the driver: changes files, scans, checks the report, cleans, checks the disk.
  virtual void Drive(Random& random) = 0;

  // What observers do meanwhile. They must be inside Observing().
  virtual void Query(Random& random) = 0;
  virtual void CancelScan() = 0;
  virtual void CancelClean() = 0;
  // Starts that have to be refused whatever runs.
  virtual void GetInTheWay() = 0;

  // Called on the driver's own thread from inside its scan: nothing may be started or destroyed.
  virtual void DemandBusyInside() = 0;

  // Makes another handle. Nobody is inside the library with the old one.
  void Renew();

  // Keeps the handle alive for what the observer does in it.
  void Observing(const std::function<void()>& action);

  Tally& tally() { return tally_; }

 protected:
  virtual void Destroy() = 0;
  virtual void Create() = 0;

  // Repeats a start until it is not refused because an observer was inside for a moment.
  template <typename Start>
  qs_status Persist(Start&& start) {
    for (;;) {
      const qs_status status = start();
      if (status != QS_BUSY) {
        return status;
      }
      ++tally_.busy;
    }
  }

 private:
  std::shared_mutex lifetime_;
  std::atomic<bool> ending_{false};
  Tally tally_;
};

// The handle that the calling thread is scanning with, if it is a driver.
StressedHandle*& DrivenHandle();

}  // namespace quastel::stress

#endif  // QUASTEL_TESTS_STRESS_STRESSED_HANDLE_H_
