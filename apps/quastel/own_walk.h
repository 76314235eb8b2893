#ifndef QUASTEL_APPS_QUASTEL_OWN_WALK_H_
#define QUASTEL_APPS_QUASTEL_OWN_WALK_H_

#include <quastel_core.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>

#include "console.h"
#include "interrupt.h"
#include "progress_line.h"

namespace quastel::client {

// What a walk that the client makes by itself, without a product scan, tells the thread that draws
// the progress, and is told by it.
class WalkState {
 public:
  WalkState() = default;
  WalkState(const WalkState&) = delete;
  WalkState& operator=(const WalkState&) = delete;

  void Cancel() { std::atomic_ref<std::uint32_t>(cancel_).store(1); }
  bool IsCancelled() const { return std::atomic_ref<std::uint32_t>(cancel_).load() != 0; }
  // For the library's functions that can be cancelled.
  std::uint32_t* cancel_flag() { return &cancel_; }

  // One more thing was seen, of so many bytes.
  void Count(std::wstring_view path, std::uint64_t bytes);

  std::uint64_t count() const { return count_; }
  std::uint64_t bytes() const { return bytes_; }
  std::wstring CurrentPath() const;

 private:
  mutable std::uint32_t cancel_ = 0;  // atomic accesses only: the library reads it meanwhile
  std::atomic<std::uint64_t> count_{0};
  std::atomic<std::uint64_t> bytes_{0};
  std::atomic<std::int64_t> next_update_ms_{0};
  mutable std::mutex mutex_;
  std::wstring current_path_;  // guarded by mutex_
};

// What the progress line of a walk says.
struct WalkWords {
  const char* stage;     // "Scanning"
  const char* singular;  // "folder"
  const char* plural;
  bool sizes;  // whether the bytes mean something
};

struct WalkEnd {
  qs_status status;
  std::uint64_t elapsed_us;
};

// Runs `walk` on a thread of its own from start to end: draws the progress line, and cancels when
// the user interrupts. An exception of `walk` counts as QS_FAILED.
WalkEnd RunWalk(const std::function<qs_status()>& walk, WalkState& state, const WalkWords& words,
                const InterruptGuard& interrupt, Console& console);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_OWN_WALK_H_
