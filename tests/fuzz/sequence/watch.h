// Looks at every call that the library makes of the system: nothing may be removed or written that
// the running operation is not for. And it interrupts an operation at a call of one's choice.

#ifndef QUASTEL_TESTS_FUZZ_SEQUENCE_WATCH_H_
#define QUASTEL_TESTS_FUZZ_SEQUENCE_WATCH_H_

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <vector>

#include "base/text.h"
#include "fuzz/sequence/world.h"
#include "simulated_windows/simulated_windows.h"

namespace quastel::fuzz::sequence {

struct FileSnapshot {
  std::int64_t size = 0;
  std::uint64_t modified = 0;

  friend bool operator==(const FileSnapshot&, const FileSnapshot&) = default;
};

// What an operation may do to the disks.
struct Permission {
  std::multimap<Text, FileSnapshot> files = {};  // removed only while they look like this
  std::set<Text> paths = {};                     // removed whatever they are
  bool parents = false;                          // the folders of removed files as well
  bool recycles = false;
  bool cache = false;  // the hash cache is written
};

class Watch {
 public:
  explicit Watch(World& world);
  ~Watch();
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

  void Begin(Permission permission);
  // The interruption is made before the nth call from now on that looks at or changes the disks.
  void InterruptAt(std::uint64_t nth, std::function<void()> interruption);
  void End();

  // What this thread does meanwhile must not look at or change the disks at all.
  class Quiet {
   public:
    Quiet();
    ~Quiet();
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;
  };

 private:
  void OnCall(const simulated::CallRecord& record);
  void Check(const simulated::CallRecord& record);
  void DemandMatched(const Text& key);

  World& world_;
  std::mutex mutex_;
  Permission permission_;
  std::map<Text, FileSnapshot> looked_at_;  // when it was asked about last
  std::set<Text> removed_;
  std::uint64_t calls_ = 0;
  std::uint64_t interrupt_at_ = 0;
  std::function<void()> interruption_;
};

}  // namespace quastel::fuzz::sequence

#endif  // QUASTEL_TESTS_FUZZ_SEQUENCE_WATCH_H_
