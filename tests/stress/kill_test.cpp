// kill_test ROUNDS FILES SEED: ends a process at a random moment of its duplicate scan, again and
// again, while the files change, and looks at what is left: no file of the user's is missing or
// changed, the cache file is whole or absent, and the next scan is right and leaves no temporary
// file.
//
// kill_test --scan ROOT PROFILE EVENT is the process that is ended: it sets the event and scans.

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "../dll/real_tree.h"
#include "cache_file.h"
#include "changing_tree.h"
#include "demand.h"
#include "quastel_core.h"
#include "real_scan.h"

namespace quastel::stress {
namespace {

namespace fs = std::filesystem;
using Random = std::mt19937;

// So many that writing them takes long enough to be hit.
constexpr std::size_t kGhosts = 20'000;
constexpr DWORD kLongest = 120'000;
constexpr const wchar_t* kEventName = L"quastel-kill-test";

std::uint64_t Microseconds() {
  LARGE_INTEGER now{};
  LARGE_INTEGER per_second{};
  ::QueryPerformanceCounter(&now);
  ::QueryPerformanceFrequency(&per_second);
  return static_cast<std::uint64_t>(now.QuadPart) * 1'000'000 /
         static_cast<std::uint64_t>(per_second.QuadPart);
}

bool IsThere(const std::wstring& path) {
  return ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// ---- The process that is ended.

int ScanOnce(const Places& places, const wchar_t* event_name) {
  qs_product_scan* scan = nullptr;
  if (qs_product_scan_create(&scan) != QS_OK) {
    return 2;
  }
  const HANDLE event = ::OpenEventW(EVENT_MODIFY_STATE, FALSE, event_name);
  if (event == nullptr || ::SetEvent(event) == FALSE) {
    return 2;
  }
  return StartScan(scan, QS_SCAN_KIND_DUPLICATES, places) == QS_OK ? 0 : 1;
}

// ---- The process that ends it.

struct Outcomes {
  unsigned before_writing = 0;  // of the cache
  unsigned while_writing = 0;
  unsigned too_late = 0;  // the scan was over

  // A run that never hit the moments that matter has shown nothing.
  bool HaveShownSomething() const { return before_writing > 0 && while_writing > 0; }
};

class KillTest {
 public:
  KillTest(const dll_test::RealTree& scratch, std::size_t files, std::uint32_t seed)
      : random_(seed),
        places_{scratch.Path(L"tree"), scratch.Path(L"profile"), L""},
        cache_(CacheFileOf(places_)),
        temporary_(cache_ + L".tmp"),
        tree_(places_.root, files, {0, 100, 150, 151, 4'096, 5'000, 20'000, 300'000}, random_),
        per_round_(std::max<std::size_t>(files / 20, 4)),
        event_(::CreateEventW(nullptr, FALSE, FALSE, kEventName)) {
    QS_DEMAND(event_ != nullptr);
    fs::create_directories(fs::path(cache_).parent_path());
    ScanAndDemandRight();
  }
  ~KillTest() { ::CloseHandle(event_); }
  KillTest(const KillTest&) = delete;
  KillTest& operator=(const KillTest&) = delete;

  void Round(unsigned number) {
    // Every eighth scan has no cache to begin with, and every eighth one of many entries.
    if (number % 8 == 0) {
      QS_DEMAND(!IsThere(cache_) || ::DeleteFileW(cache_.c_str()) != FALSE);
    } else if (number % 8 == 1) {
      WriteCacheOfGhosts(cache_, kGhosts);
    }
    tree_.Change(per_round_, random_);
    EndWithinScan(number % 2 == 0);
    DemandNothingLost();
    ScanAndDemandRight();
    QS_DEMAND(!IsThere(temporary_));
    DemandNothingLost();
  }

  const Outcomes& outcomes() const { return outcomes_; }

 private:
  // Starts the other process, lets it scan for a while, and ends it.
  void EndWithinScan(bool anywhere) {
    const PROCESS_INFORMATION process = StartOther();
    QS_DEMAND(::WaitForSingleObject(event_, kLongest) == WAIT_OBJECT_0);
    if (anywhere) {
      WaitUntil(Microseconds() + random_() % (scan_time_ + scan_time_ / 8 + 1), process);
    } else {
      // The cache is written in a small part of the time, and that is the part that matters most.
      while (!IsThere(temporary_) && ::WaitForSingleObject(process.hProcess, 0) == WAIT_TIMEOUT) {
        // The other process may have no other processor.
        ::Sleep(0);
      }
      WaitUntil(Microseconds() + random_() % (scan_time_ / 8 + 1), process);
    }
    const bool over = ::WaitForSingleObject(process.hProcess, 0) == WAIT_OBJECT_0;
    ::TerminateProcess(process.hProcess, 9);
    QS_DEMAND(::WaitForSingleObject(process.hProcess, kLongest) == WAIT_OBJECT_0);
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    ++(over                  ? outcomes_.too_late
       : IsThere(temporary_) ? outcomes_.while_writing
                             : outcomes_.before_writing);
  }

  // The files go on changing while the other process scans them.
  void WaitUntil(std::uint64_t moment, const PROCESS_INFORMATION& process) {
    while (Microseconds() < moment && ::WaitForSingleObject(process.hProcess, 0) == WAIT_TIMEOUT) {
      if (random_() % 4 == 0) {
        tree_.Change(1, random_);
      }
      ::Sleep(0);
    }
  }

  PROCESS_INFORMATION StartOther() const {
    std::wstring self(MAX_PATH, L'\0');
    self.resize(::GetModuleFileNameW(nullptr, self.data(), MAX_PATH));
    std::wstring command = L"\"" + self + L"\" --scan \"" + places_.root + L"\" \"" +
                           places_.profile + L"\" " + kEventName;
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    // What starts processes is not what is tested here, and under Wine it failed once in a
    // thousand.
    for (int attempt = 1; ::CreateProcessW(self.c_str(), command.data(), nullptr, nullptr, FALSE, 0,
                                           nullptr, nullptr, &startup, &process) == FALSE;
         ++attempt) {
      QS_DEMAND_SEEN(attempt < 5, "error " + std::to_string(::GetLastError()));
      ::Sleep(200);
    }
    return process;
  }

  void DemandNothingLost() const {
    tree_.DemandUnharmed(true);
    QS_DEMAND(!IsThere(cache_) || CountCacheEntries(cache_).has_value());
    // Nothing else has come into the profile.
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(places_.profile)) {
      const std::wstring path = entry.path().wstring();
      QS_DEMAND_SEEN(entry.is_directory() || path == cache_ || path == temporary_,
                     entry.path().string());
    }
  }

  void ScanAndDemandRight() {
    qs_product_scan* scan = nullptr;
    QS_DEMAND(qs_product_scan_create(&scan) == QS_OK);
    const std::uint64_t began = Microseconds();
    QS_DEMAND(StartScan(scan, QS_SCAN_KIND_DUPLICATES, places_) == QS_OK);
    scan_time_ = Microseconds() - began;
    QS_DEMAND(SetsOf(ItemsOf(scan)) == tree_.EqualSets());
    QS_DEMAND(qs_product_scan_destroy(scan) == QS_OK);
    QS_DEMAND(CountCacheEntries(cache_).value_or(0) > 0);
  }

  Random random_;
  const Places places_;
  const std::wstring cache_;
  const std::wstring temporary_;
  ChangingTree tree_;
  const std::size_t per_round_;
  const HANDLE event_;
  std::uint64_t scan_time_ = 0;
  Outcomes outcomes_;
};

int Main(int count, wchar_t** arguments) {
  if (count == 5 && std::wstring(arguments[1]) == L"--scan") {
    return ScanOnce({arguments[2], arguments[3], L""}, arguments[4]);
  }
  const int rounds = count == 4 ? ::_wtoi(arguments[1]) : 0;
  const int files = count == 4 ? ::_wtoi(arguments[2]) : 0;
  if (rounds <= 0 || files <= 0) {
    std::fputs("usage: kill_test ROUNDS FILES SEED\n", stderr);
    return 2;
  }
  const auto seed = static_cast<std::uint32_t>(::_wtoi(arguments[3]));
  std::printf("%d rounds over %d files, seed %u\n", rounds, files, seed);
  std::fflush(stdout);
  const dll_test::RealTree scratch;
  KillTest test(scratch, static_cast<std::size_t>(files), seed);
  // A short run may miss a moment by chance, and then goes on for a while.
  for (int i = 0; i < rounds || (i < 20 * rounds && !test.outcomes().HaveShownSomething()); ++i) {
    test.Round(static_cast<unsigned>(i));
    if (i % 20 == 19) {
      std::printf("%d rounds done\n", i + 1);
      std::fflush(stdout);
    }
  }
  const Outcomes& outcomes = test.outcomes();
  std::printf("ended before the cache was written %u times, while it was %u times, too late %u\n",
              outcomes.before_writing, outcomes.while_writing, outcomes.too_late);
  QS_DEMAND(outcomes.HaveShownSomething());
  return 0;
}

}  // namespace
}  // namespace quastel::stress

int wmain(int count, wchar_t** arguments) {
  return quastel::stress::Main(count, arguments);
}
