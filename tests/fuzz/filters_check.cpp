#include "fuzz/filters_check.h"

#include <algorithm>
#include <memory>
#include <vector>

#include "fs/protection.h"
#include "fuzz/demand.h"
#include "fuzz/guarded_buffer.h"
#include "fuzz/input.h"
#include "fuzz/path_model.h"
#include "fuzz/text_protocol.h"
#include "quastel_core.h"
#include "simulated_windows/simulated_windows.h"

namespace quastel::fuzz {
namespace {

constexpr std::size_t kMostPaths = 10;
// Long enough for the longer forms of paths; more is only slow.
constexpr std::size_t kMostUnits = 400;
constexpr std::int64_t kLarge = 10'485'761;

struct Surroundings {
  Text system_root;
  Text user_home;
  ProtectedFolders folders;
};

void CheckProtection(const Text& path, const Surroundings& around, FiltersSeen& seen) {
  const ExactText given(path);
  const ExactText root(around.system_root);
  const ExactText home(around.user_home);
  const bool expected = model::IsProtected(path, around.system_root, around.user_home);
  Demand(qs_is_in_whitelist(given.get(), root.get(), home.get()) == (expected ? 1 : 0),
         "being protected");
  Demand(around.folders.Contains(path) == expected, "prepared folders protect the same");
  if (expected) {
    Demand(qs_is_in_whitelist((model::Comparable(path) + u"\\below").c_str(), root.get(),
                              home.get()) == 1,
           "what lies below a protected path is protected");
  }
  Demand(qs_is_in_whitelist(nullptr, root.get(), home.get()) == 0 &&
             qs_is_in_whitelist(given.get(), nullptr, home.get()) == 0 &&
             qs_is_in_whitelist(given.get(), root.get(), nullptr) == 0,
         "nothing is protected without all three");
  seen.protected_ones += expected ? 1 : 0;
}

// The tests of the two scans, which are made of the other two.
void CheckInclusion(const Text& path, const Surroundings& around, FiltersSeen& seen) {
  const ExactText given(path);
  const Char* const root = around.system_root.c_str();
  const Char* const home = around.user_home.c_str();
  const bool ignored = model::IsIgnored(path);
  const bool kept_out = model::IsProtected(path, around.system_root, around.user_home);
  Demand(qs_is_ignored(given.get()) == (ignored ? 1 : 0), "being ignored");
  for (const std::uint32_t protect : {0u, 1u, 0x80000000u}) {
    const bool included = !ignored && !(protect != 0 && kept_out);
    Demand(qs_duplicate_scan_include(given.get(), protect, root, home) == (included ? 1 : 0),
           "being considered for duplicates");
    Demand(qs_large_scan_include(given.get(), kLarge, protect, root, home) == (included ? 1 : 0),
           "being reported as large");
    Demand(qs_large_scan_include(given.get(), kLarge - 1, protect, root, home) == 0,
           "10 MiB are not large");
    Demand(
        qs_duplicate_scan_include(given.get(), protect, nullptr, home) == (ignored ? 0 : 1) &&
            qs_large_scan_include(given.get(), kLarge, protect, root, nullptr) == (ignored ? 0 : 1),
        "protection needs both folders");
  }
  Demand(qs_is_ignored(nullptr) == 0 && qs_duplicate_scan_include(nullptr, 0, root, home) == 0 &&
             qs_large_scan_include(nullptr, kLarge, 0, root, home) == 0,
         "no path is no file");
  seen.ignored += ignored ? 1 : 0;
}

struct Listed {
  Text given;
  Text comparable;
};

// Every folder against every other one, with nothing left out for speed.
std::vector<Listed> Outermost(const std::vector<Text>& paths) {
  std::vector<Listed> sorted;
  for (const Text& path : paths) {
    const Text comparable = model::Comparable(path);
    auto at = sorted.begin();
    while (at != sorted.end() && at->comparable.size() <= comparable.size()) {
      ++at;
    }
    sorted.insert(at, {path, comparable});
  }
  std::vector<Listed> kept;
  for (const Listed& entry : sorted) {
    const bool inside = std::any_of(kept.begin(), kept.end(), [&](const Listed& outer) {
      return !outer.comparable.empty() && model::IsUnder(entry.comparable, outer.comparable);
    });
    if (!inside) {
      kept.push_back(entry);
    }
  }
  return kept;
}

void CheckFolderFilter(const std::vector<Text>& paths, FiltersSeen& seen) {
  std::vector<std::unique_ptr<ExactText>> texts;
  std::vector<const Char*> given;
  for (const Text& path : paths) {
    texts.push_back(std::make_unique<ExactText>(path));
    given.push_back(texts.back()->get());
  }
  const std::vector<Listed> kept = Outermost(paths);
  Text expected;
  for (const Listed& entry : kept) {
    expected += entry.given;
    expected += Char{};
  }
  // The list is a text with NULs in it, and its last NUL is the terminator.
  std::uint64_t kept_count = 0;
  DemandText<Char>(expected, [&](Char* out, std::uint64_t capacity, std::uint64_t* needed) {
    kept_count = 99;
    const qs_status status =
        qs_filter_dir(given.data(), given.size(), out, capacity, &kept_count, needed);
    Demand(kept_count == kept.size(), "the number of folders comes with every answer");
    return status;
  });

  for (std::size_t i = 0; i < given.size(); ++i) {
    std::vector<const Char*> holed = given;
    holed[i] = nullptr;
    std::uint64_t needed = kept_count = 99;
    GuardedBuffer<Char> buffer(expected.size() + 1);
    Demand(qs_filter_dir(holed.data(), holed.size(), buffer.data(), buffer.capacity(), &kept_count,
                         &needed) == QS_INVALID_ARGUMENT,
           "every folder of the list is required");
    Demand(kept_count == 0 && needed == 0, "a refused list counts nothing");
    buffer.DemandUntouched("a refused list writes nothing");
  }
  std::uint64_t needed = 99;
  Demand(
      qs_filter_dir(nullptr, 1, nullptr, 0, nullptr, &needed) == QS_INVALID_ARGUMENT && needed == 0,
      "a list is required when it is to have folders");
  seen.kept += kept.size();
  seen.dropped += paths.size() - kept.size();
}

}  // namespace

FiltersSeen CheckFilters(std::string_view bytes) {
  Input input(bytes);
  simulated::SimulatedWindows machine;
  machine.AddFolder(u"C:\\Users\\u");
  machine.SetCurrentFolder(input.OneIn(2) ? u"C:\\Users\\u" : u"C:\\");
  const Text root = input.TakeText(kMostUnits);
  const Text home = input.TakeText(kMostUnits);
  const Surroundings around = {root, home, ProtectedFolders(root, home)};
  std::vector<Text> paths;
  while (!input.empty() && paths.size() < kMostPaths) {
    paths.push_back(input.TakeText(kMostUnits));
  }
  FiltersSeen seen;
  for (const Text& path : paths) {
    CheckProtection(path, around, seen);
    CheckInclusion(path, around, seen);
  }
  CheckFolderFilter(paths, seen);
  Demand(machine.open_handles() == 0, "asking leaves nothing open");
  return seen;
}

}  // namespace quastel::fuzz
