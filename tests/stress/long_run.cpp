// long_run ROUNDS FILES WARM_UP [SEED]: one process scans and cleans a changing tree of real files
// again and again, each kind of scan in turn, and may not hold more of the system at the end than
// after WARM_UP rounds.
//
// Flat means: no later round leaves more handles or threads than round WARM_UP did, and the medians
// of two numbers are the same in both halves of the later rounds: of what is allocated, but for
// kAllocatedNoise, and of the committed memory without what the heaps hold back, but for
// kMemoryNoise. What they hold back is no measure: where something that lives on stands among what
// does not, it can grow for hundreds of rounds although every round frees all that it allocated.

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "../dll/real_tree.h"
#include "changing_tree.h"
#include "demand.h"
#include "process_meters.h"
#include "quastel_core.h"
#include "real_scan.h"

namespace quastel::stress {
namespace {

using Random = std::mt19937;

constexpr std::uint64_t kLargestSmallFile = 10'485'760;
constexpr std::uint64_t kAllocatedNoise = 16 * 1024;  // the lists of this program
constexpr std::uint64_t kMemoryNoise = 256 * 1024;
constexpr unsigned kKinds = 4;  // the three kinds of the product scan, and the session
constexpr std::uint32_t kSession = 3;
constexpr const char* kNames[kKinds] = {"junk", "large", "duplicates", "session"};

// One file in a hundred is large.
std::vector<std::uint64_t> Sizes() {
  std::vector<std::uint64_t> sizes = {kLargestSmallFile + 1};
  for (std::uint64_t i = 0; sizes.size() < 100; ++i) {
    sizes.push_back(std::vector<std::uint64_t>{0, 100, 151, 5'000, 20'000}[i % 5] + i / 5);
  }
  return sizes;
}

std::size_t ExpectedItems(std::uint32_t kind, const ChangingTree& tree) {
  std::size_t count = 0;
  if (kind == QS_SCAN_KIND_DUPLICATES) {
    for (const ChangingTree::Paths& set : tree.EqualSets()) {
      count += set.size();
    }
    return count;
  }
  for (const auto& [path, file] : tree.files()) {
    count += kind != QS_SCAN_KIND_LARGE_FILES || file.size > kLargestSmallFile ? 1 : 0;
  }
  return count;
}

// Up to `wanted` items; the first one of each set of duplicates stays.
Items Choose(std::uint32_t kind, const Items& items, std::size_t wanted, Random& random) {
  Items choice;
  for (std::size_t i = 0; i < items.size(); ++i) {
    const bool first = i == 0 || items[i].group_id != items[i - 1].group_id;
    if (kind != QS_SCAN_KIND_DUPLICATES || !first) {
      choice.push_back(items[i]);
    }
  }
  std::shuffle(choice.begin(), choice.end(), random);
  choice.resize(std::min(choice.size(), wanted));
  return choice;
}

std::vector<std::uint64_t> IdsOf(const Items& items) {
  std::vector<std::uint64_t> ids;
  for (const Item& item : items) {
    ids.push_back(item.id);
  }
  return ids;
}

// A handle of each family that lives as long as the process, besides those of one round.
class Handles {
 public:
  Handles() {
    QS_DEMAND(qs_product_scan_create(&scan_) == QS_OK);
    QS_DEMAND(qs_session_create(&session_) == QS_OK);
  }
  ~Handles() {
    QS_DEMAND(qs_product_scan_destroy(scan_) == QS_OK);
    QS_DEMAND(qs_session_destroy(session_) == QS_OK);
  }
  Handles(const Handles&) = delete;
  Handles& operator=(const Handles&) = delete;

  qs_product_scan* scan() const { return scan_; }
  qs_session* session() const { return session_; }

 private:
  qs_product_scan* scan_ = nullptr;
  qs_session* session_ = nullptr;
};

class LongRun {
 public:
  LongRun(Places places, std::size_t files, std::uint32_t seed)
      : random_(seed),
        places_(std::move(places)),
        tree_(places_.root, files, Sizes(), random_),
        per_round_(std::max<std::size_t>(files / 100, 2)) {}

  void Round(unsigned number) {
    const std::uint32_t kind = number % kKinds;
    if (number / kKinds % 2 == 0) {
      ScanAndClean(kind, lasting_);
    } else {
      ScanAndClean(kind, Handles());
    }
    tree_.DemandUnharmed(false);
    tree_.Change(per_round_, random_);
    tree_.Refill(random_);
  }

  std::uint64_t deleted() const { return deleted_; }

 private:
  void ScanAndClean(std::uint32_t kind, const Handles& handles) {
    Items items;
    if (kind == kSession) {
      QS_DEMAND(qs_session_start_scan(handles.session(), places_.root.c_str(),
                                      QS_SESSION_ALL_FILES) == QS_OK);
      items = ItemsOf(handles.session());
    } else {
      QS_DEMAND(StartScan(handles.scan(), kind, places_) == QS_OK);
      items = ItemsOf(handles.scan());
    }
    QS_DEMAND(items.size() == ExpectedItems(kind, tree_));
    const Items choice = Choose(kind, items, per_round_, random_);
    const std::vector<std::uint64_t> ids = IdsOf(choice);
    const qs_status cleaned =
        kind == kSession ? qs_session_start_clean(handles.session(), ids.data(), ids.size())
                         : qs_product_scan_start_clean(handles.scan(), ids.data(), ids.size());
    QS_DEMAND(cleaned == QS_OK);
    for (const Item& item : choice) {
      tree_.NoteDeleted(item.path);
    }
    deleted_ += choice.size();
  }

  Random random_;
  const Places places_;
  ChangingTree tree_;
  const std::size_t per_round_;
  const Handles lasting_;
  std::uint64_t deleted_ = 0;
};

// A thread that was joined may still be on its way out of the system's lists.
ProcessMeters ReadSettledMeters(const ProcessMeters& limit) {
  ProcessMeters meters = ReadMeters();
  for (int i = 0; i < 50 && (meters.handles > limit.handles || meters.threads > limit.threads);
       ++i) {
    ::Sleep(20);
    meters = ReadMeters();
  }
  return meters;
}

std::uint64_t Allocated(const ProcessMeters& meters) {
  return meters.allocated;
}

std::uint64_t InUse(const ProcessMeters& meters) {
  return meters.committed - std::min(meters.committed, meters.held_back);
}

using Number = std::uint64_t (*)(const ProcessMeters&);

std::uint64_t Median(Number number, const ProcessMeters* begin, const ProcessMeters* end) {
  std::vector<std::uint64_t> values(static_cast<std::size_t>(end - begin));
  std::transform(begin, end, values.begin(), number);
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

void DemandSameInHalves(const char* what, Number number, std::uint64_t noise,
                        const std::vector<ProcessMeters>& all, std::size_t half) {
  const ProcessMeters* const end = all.data() + all.size();
  const std::uint64_t first = Median(number, end - 2 * half, end - half);
  const std::uint64_t second = Median(number, end - half, end);
  std::printf("%s: %llu bytes in the first half, %llu in the second\n", what,
              static_cast<unsigned long long>(first), static_cast<unsigned long long>(second));
  QS_DEMAND_SEEN(second <= first + noise, what);
}

void DemandFlat(const std::vector<ProcessMeters>& all, std::size_t warm_up) {
  const ProcessMeters& limit = all[warm_up - 1];
  for (std::size_t i = warm_up; i < all.size(); ++i) {
    const std::string where = "round " + std::to_string(i + 1);
    QS_DEMAND_SEEN(all[i].handles <= limit.handles, where);
    QS_DEMAND_SEEN(all[i].threads <= limit.threads, where);
  }
  // Halves of whole turns, so that both hold every kind equally often.
  const std::size_t half = (all.size() - warm_up) / (2 * 2 * kKinds) * 2 * kKinds;
  QS_DEMAND(half > 0);
  DemandSameInHalves("allocated", Allocated, kAllocatedNoise, all, half);
  DemandSameInHalves("committed and in use", InUse, kMemoryNoise, all, half);
}

int Main(int count, char** arguments) {
  const unsigned rounds = count > 3 ? static_cast<unsigned>(std::atoi(arguments[1])) : 0;
  const auto files = static_cast<std::size_t>(count > 3 ? std::atoi(arguments[2]) : 0);
  const auto warm_up = static_cast<std::size_t>(count > 3 ? std::atoi(arguments[3]) : 0);
  if (files == 0 || warm_up == 0 || rounds < warm_up + std::size_t{4} * kKinds) {
    std::fputs("usage: long_run ROUNDS FILES WARM_UP [SEED]\n", stderr);
    return 2;
  }
  const auto seed = static_cast<std::uint32_t>(count > 4 ? std::atoi(arguments[4]) : 1);
  DemandMetersMove();

  const dll_test::RealTree scratch;
  const Places places = {scratch.Path(L"tree"), scratch.Path(L"profile"),
                         scratch.Path(L"rules.xml")};
  scratch.AddFolder(L"profile\\AppData");
  scratch.AddFile(L"rules.xml", "<Root><Category DisplayName=\"all\"><Folder Path=\"" +
                                    std::filesystem::path(places.root).string() +
                                    "\" Pattern=\"*.tmp\"/></Category></Root>");
  LongRun run(places, files, seed);
  std::vector<ProcessMeters> all;
  all.reserve(rounds);
  for (unsigned i = 0; i < rounds; ++i) {
    const auto began = ::GetTickCount64();
    run.Round(i);
    all.push_back(ReadSettledMeters(
        all.size() < warm_up ? ProcessMeters{.handles = UINT64_MAX, .threads = UINT64_MAX}
                             : all[warm_up - 1]));
    const auto as_number = [](std::uint64_t number) {
      return static_cast<unsigned long long>(number);
    };
    std::printf(
        "%4u %-10s %6llu ms %4llu handles %3llu threads %9llu bytes allocated %7llu KiB "
        "committed %7llu KiB held back\n",
        i + 1, kNames[i % kKinds], as_number(::GetTickCount64() - began),
        as_number(all.back().handles), as_number(all.back().threads),
        as_number(all.back().allocated), as_number(all.back().committed / 1024),
        as_number(all.back().held_back / 1024));
    std::fflush(stdout);
  }
  DemandFlat(all, warm_up);
  std::printf("%u rounds over %llu files, %llu deleted: flat\n", rounds,
              static_cast<unsigned long long>(files),
              static_cast<unsigned long long>(run.deleted()));
  return 0;
}

}  // namespace
}  // namespace quastel::stress

int main(int count, char** arguments) {
  return quastel::stress::Main(count, arguments);
}
