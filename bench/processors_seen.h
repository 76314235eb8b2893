// Another number of processors than the machine has, as far as the library can see.

#ifndef QUASTEL_BENCH_PROCESSORS_SEEN_H_
#define QUASTEL_BENCH_PROCESSORS_SEEN_H_

#include <windows.h>

namespace quastel::bench {

// While it lives, a duplicate scan starts at most this many workers for a stage. The interface has
// no such setting, and an affinity does not change the number of processors that the system tells,
// so the entry of the DLL's import table for that question leads here. One at a time.
class ProcessorsSeen {
 public:
  explicit ProcessorsSeen(DWORD count);
  ~ProcessorsSeen();
  ProcessorsSeen(const ProcessorsSeen&) = delete;
  ProcessorsSeen& operator=(const ProcessorsSeen&) = delete;

 private:
  ULONG_PTR* const entry_;
  const ULONG_PTR real_;
};

}  // namespace quastel::bench

#endif  // QUASTEL_BENCH_PROCESSORS_SEEN_H_
