#include "cancel_moments.h"

#include <windows.h>

#include <atomic>
#include <cstddef>
#include <random>
#include <thread>

namespace quastel::bench {
namespace {

constexpr std::size_t kMoments = 20;
constexpr int kMostTries = 200;

double Milliseconds() {
  LARGE_INTEGER now;
  LARGE_INTEGER frequency;
  QueryPerformanceCounter(&now);
  QueryPerformanceFrequency(&frequency);
  return static_cast<double>(now.QuadPart) * 1e3 / static_cast<double>(frequency.QuadPart);
}

// The second one: the first may be slow for reasons that the others do not share.
double TimeOfWhole(const CancellableScan& scan) {
  scan.run();
  const double begin = Milliseconds();
  scan.run();
  return Milliseconds() - begin;
}

// Below 0 when the scan had ended before.
double LatencyAt(const CancellableScan& scan, double moment) {
  std::atomic<bool> has_ended{false};
  double ended = 0;
  std::thread scanning([&] {
    scan.run();
    ended = Milliseconds();
    has_ended = true;
  });
  // A cancel before the scan runs would have no effect.
  while (!has_ended && !scan.is_running()) {
    Sleep(0);
  }
  Sleep(static_cast<DWORD>(moment));
  const double cancelled = Milliseconds();
  scan.cancel();
  scanning.join();
  return ended - cancelled;
}

}  // namespace

std::vector<double> CancelLatencies(const CancellableScan& scan, double span) {
  std::mt19937 random(7);
  const double last = span > 0 ? span : TimeOfWhole(scan);
  std::vector<double> latencies;
  for (int tries = 0; tries < kMostTries && latencies.size() < kMoments; ++tries) {
    const double latency = LatencyAt(scan, last * (random() % 1000) / 1000);
    if (latency >= 0) {
      latencies.push_back(latency);
    }
  }
  return latencies;
}

}  // namespace quastel::bench
