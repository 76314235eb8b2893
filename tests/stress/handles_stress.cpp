// handles_stress [SECONDS [SEED]]: eight handles at once, product scans of each kind and sessions,
// each with a driver that scans and cleans and two observers that ask, cancel and get in the way,
// all on one simulated Windows.
//
// Ends with 1 at the first wrong answer, and when too little happened for the run to mean anything.

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <random>
#include <thread>
#include <vector>

#include "quastel_core.h"
#include "simulated_windows/simulated_windows.h"
#include "stress/demand.h"
#include "stress/stressed_handle.h"
#include "stress/stressed_product_scan.h"
#include "stress/stressed_session.h"

namespace quastel::stress {
namespace {

constexpr unsigned kObservers = 2;

using Handles = std::vector<std::unique_ptr<StressedHandle>>;

Handles MakeHandles(simulated::SimulatedWindows& machine) {
  Handles handles;
  const auto scan = [&](std::uint32_t kind, const char* name) {
    handles.push_back(std::make_unique<StressedProductScan>(machine, kind, name));
  };
  const auto session = [&](std::uint32_t mode, const char* name) {
    handles.push_back(std::make_unique<StressedSession>(machine, mode, name));
  };
  scan(QS_SCAN_KIND_LARGE_FILES, "large1");
  scan(QS_SCAN_KIND_LARGE_FILES, "large2");
  scan(QS_SCAN_KIND_DUPLICATES, "copies1");
  scan(QS_SCAN_KIND_DUPLICATES, "copies2");
  scan(QS_SCAN_KIND_JUNK_RULES, "junk1");
  scan(QS_SCAN_KIND_JUNK_RULES, "junk2");
  session(QS_SESSION_ALL_FILES, "all");
  session(QS_SESSION_LARGE_FILES, "big");
  return handles;
}

void Drive(StressedHandle& handle, std::uint32_t seed, const std::atomic<bool>& stop) {
  Random random(seed);
  while (!stop) {
    handle.Drive(random);
    if (random() % 4 == 0) {
      handle.Renew();
    }
  }
}

void Observe(StressedHandle& handle, std::uint32_t seed, const std::atomic<bool>& stop) {
  Random random(seed);
  while (!stop) {
    handle.Observing([&] {
      handle.Query(random);
      switch (random() % 64) {
        case 0:
          handle.CancelScan();
          break;
        case 1:
        case 2:
          handle.CancelClean();
          break;
        case 3:
        case 4:
        case 5:
        case 6:
          handle.GetInTheWay();
          break;
        default:
          break;
      }
    });
    // Mostly the observers sleep, or nobody else would get anything done.
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 3'000));
  }
}

// From inside a scan, on the thread that made it.
void GetInTheWayFromInside(const simulated::CallRecord& call) {
  thread_local unsigned count = 0;
  if (StressedHandle* const driven = DrivenHandle();
      driven != nullptr && call.call == simulated::Call::kFindNext && ++count % 32 == 0) {
    driven->DemandBusyInside();
  }
}

void RunFor(std::chrono::seconds duration, std::uint32_t seed, simulated::SimulatedWindows& machine,
            Handles& handles) {
  std::atomic<bool> stop{false};
  std::vector<std::thread> threads;
  for (const auto& handle : handles) {
    threads.emplace_back([&, number = ++seed] { Drive(*handle, number, stop); });
    for (unsigned i = 0; i < kObservers; ++i) {
      threads.emplace_back([&, number = ++seed] { Observe(*handle, number, stop); });
    }
  }
  const auto end = std::chrono::steady_clock::now() + duration;
  for (unsigned i = 0; std::chrono::steady_clock::now() < end; ++i) {
    // Now and then every scan is held for a while at its start.
    machine.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS",
                           i % 4 == 3 ? std::optional<Text>(u"60") : std::nullopt);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  stop = true;
  for (std::thread& thread : threads) {
    thread.join();
  }
}

std::uint64_t Sum(const Handles& handles, std::atomic<std::uint64_t> Tally::*member) {
  std::uint64_t sum = 0;
  for (const auto& handle : handles) {
    sum += handle->tally().*member;
  }
  return sum;
}

void Print(const Handles& handles) {
  const struct {
    const char* what;
    std::atomic<std::uint64_t> Tally::*member;
  } kLines[] = {
      {"scans", &Tally::scans},
      {"scans cancelled", &Tally::scans_cancelled},
      {"cleans", &Tally::cleans},
      {"cleans cancelled", &Tally::cleans_cancelled},
      {"cleans refused", &Tally::cleans_refused},
      {"files deleted", &Tally::deleted},
      {"rows read meanwhile", &Tally::rows_read},
      {"answers of busy", &Tally::busy},
      {"handles destroyed", &Tally::destroyed},
  };
  for (const auto& line : kLines) {
    const std::uint64_t sum = Sum(handles, line.member);
    std::printf("%8llu %s\n", static_cast<unsigned long long>(sum), line.what);
    // A run in which something never happened has shown nothing about it.
    QS_DEMAND_SEEN(sum > 0, line.what);
  }
  for (const auto& handle : handles) {
    QS_DEMAND(handle->tally().scans > handle->tally().scans_cancelled);
    QS_DEMAND(handle->tally().deleted > 0);
  }
}

int Main(int argument_count, char** arguments) {
  const long seconds = argument_count > 1 ? std::strtol(arguments[1], nullptr, 10) : 10;
  const unsigned long seed =
      argument_count > 2 ? std::strtoul(arguments[2], nullptr, 10) : std::random_device()();
  if (seconds <= 0) {
    std::fputs("usage: handles_stress [SECONDS [SEED]]\n", stderr);
    return 2;
  }
  std::printf("%ld seconds, seed %lu\n", seconds, seed);
  std::fflush(stdout);

  // The machine ends the process when it goes away with a handle open.
  simulated::SimulatedWindows machine;
  machine.SetProcessorCount(4);
  Handles handles = MakeHandles(machine);
  machine.SetHook(GetInTheWayFromInside);
  RunFor(std::chrono::seconds(seconds), static_cast<std::uint32_t>(seed), machine, handles);
  machine.SetHook(nullptr);
  QS_DEMAND(machine.open_handles() == 0);
  Print(handles);
  return 0;
}

}  // namespace
}  // namespace quastel::stress

int main(int argument_count, char** arguments) {
  return quastel::stress::Main(argument_count, arguments);
}
