#include "own_walk.h"

#include <chrono>

#include "work_thread.h"

namespace quastel::client {
namespace {

using Clock = std::chrono::steady_clock;

// Oftener than the line is drawn, and far less often than files come by.
constexpr std::int64_t kPathUpdateMs = 20;

std::int64_t Milliseconds() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now().time_since_epoch())
      .count();
}

}  // namespace

void WalkState::Count(std::wstring_view path, std::uint64_t bytes) {
  ++count_;
  bytes_ += bytes;
  const std::int64_t now = Milliseconds();
  if (now >= next_update_ms_) {
    next_update_ms_ = now + kPathUpdateMs;
    const std::lock_guard<std::mutex> lock(mutex_);
    current_path_ = path;
  }
}

std::wstring WalkState::CurrentPath() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return current_path_;
}

WalkEnd RunWalk(const std::function<qs_status()>& walk, WalkState& state, const WalkWords& words,
                const InterruptGuard& interrupt, Console& console) {
  const Clock::time_point begin = Clock::now();
  const auto elapsed = [begin] {
    return static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - begin).count());
  };
  ProgressLine line(console.err);
  WorkThread work;
  work.Start(walk);
  while (!work.WaitFor(kPollInterval)) {
    const bool cancelling = interrupt.Requested();
    if (cancelling) {
      state.Cancel();
    }
    line.Draw({cancelling ? kCancellingStage : words.stage, state.count(), state.bytes(), elapsed(),
               state.CurrentPath(), words.singular, words.plural, words.sizes});
  }
  line.Erase();
  const qs_status status = work.Finish();
  return {status, elapsed()};
}

}  // namespace quastel::client
