#include "fuzz/hash_cache_check.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "duplicate/hash_cache.h"
#include "fuzz/demand.h"
#include "fuzz/hash_cache_model.h"
#include "quastel_core.h"
#include "simulated_windows/simulated_windows.h"

namespace quastel::fuzz {
namespace {

using model::CacheEntry;
using model::CacheMap;
using model::Entries;
using simulated::SimulatedWindows;

constexpr std::uint64_t kNow = 133'500'000'000'000'000;
constexpr const Char* kHome = u"C:\\u";
const Text kLocation =
    u"C:\\u\\AppData\\Local\\Vantrelloc\\Ferrowynd\\cache\\duplicate-hashes-v1.bin";

CacheMap Load(std::uint32_t* cancel) {
  return model::EntriesOf(duplicate::LoadDuplicateCache(kLocation, cancel));
}

void Save(const CacheMap& cache, std::uint32_t* cancel) {
  duplicate::SaveDuplicateCache(kLocation, model::CacheOf(cache), cancel);
}

bool Same(const CacheEntry& a, const CacheEntry& b) {
  return a.size == b.size && a.last_write == b.last_write && a.confirmed_time == b.confirmed_time &&
         a.sample == b.sample && a.full_hash == b.full_hash;
}

bool Same(const CacheMap& a, const CacheMap& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto& x, const auto& y) {
    return x.first == y.first && Same(x.second, y.second);
  });
}

// ---- Reading and writing.

void DemandLoaded(const CacheMap& loaded, const Entries& entries) {
  for (const auto& [key, entry] : loaded) {
    bool known = false;
    const auto [first, last] = entries.equal_range(key);
    for (auto at = first; at != last; ++at) {
      known |= Same(at->second, entry);
    }
    Demand(known, "an entry is one of the file's");
  }
  for (const auto& [key, entry] : entries) {
    Demand(loaded.contains(key), "every entry that holds is loaded");
  }
}

CacheMap CheckReading(SimulatedWindows& machine, std::string_view bytes, HashCacheSeen& seen) {
  const std::string before = machine.Describe();
  const CacheMap loaded = Load(nullptr);
  const std::optional<Entries> entries = model::ReadCacheFile(bytes, kNow, seen.dropped);
  seen.whole = entries.has_value();
  seen.entries = loaded.size();
  DemandLoaded(loaded, entries.value_or(Entries()));
  std::uint32_t cancel = 1;
  Demand(Load(&cancel).empty(), "a cancel leaves nothing");
  Demand(machine.Describe() == before, "reading changes nothing");
  Demand(machine.open_handles() == 0, "the file is closed");
  return loaded;
}

void CheckWriting(SimulatedWindows& machine, const CacheMap& cache) {
  const std::string before = machine.Describe();
  std::uint32_t cancel = 1;
  Save(cache, &cancel);
  Demand(machine.Describe() == before, "a cancelled save leaves the old file");
  Save(cache, nullptr);
  Demand(machine.ContentOf(kLocation) == model::CacheFileOf(cache),
         "the file is written as its format is");
  Demand(!machine.Exists(kLocation + u".tmp"), "the temporary file has become the other one");
  Demand(Same(Load(nullptr), cache), "what was written is read back");
  Demand(machine.open_handles() == 0, "the files are closed");
}

// ---- The scan that uses what the file says.

const std::vector<Text>& ScannedPaths() {
  static const std::vector<Text>* const paths = new std::vector<Text>{
      u"C:\\d\\a", u"C:\\d\\b", u"C:\\d\\c", u"C:\\d\\e", u"C:\\d\\f", u"C:\\d\\g"};
  return *paths;
}

// Two equal files of more than 150 bytes and two of less, with a third one of the same size each.
void AddFiles(SimulatedWindows& machine) {
  const std::string large(5000, 'L');
  const std::string small(100, 's');
  machine.AddFile(u"C:\\d\\a", large);
  machine.AddFile(u"C:\\d\\b", large);
  machine.AddFile(u"C:\\d\\c", large.substr(1) + 'x');
  machine.AddFile(u"C:\\d\\e", small);
  machine.AddFile(u"C:\\d\\f", small);
  machine.AddFile(u"C:\\d\\g", small.substr(1) + 'y');
}

struct Finding {
  Text path;
  std::uint64_t group = 0;
  std::int64_t size = 0;
};

std::vector<Finding> ScanForDuplicates() {
  qs_product_scan* scan = nullptr;
  Demand(qs_product_scan_create(&scan) == QS_OK, "a scan is made");
  const Char* const root = u"C:\\d";
  qs_product_scan_request request = {};
  request.size = sizeof(request);
  request.kind = QS_SCAN_KIND_DUPLICATES;
  request.roots = &root;
  request.root_count = 1;
  request.user_home = kHome;
  Demand(qs_product_scan_start(scan, &request) == QS_OK, "no cache file fails a scan");
  std::uint64_t count = 0;
  Demand(qs_product_scan_report_count(scan, &count) == QS_OK, "the rows are counted");
  std::vector<Finding> findings;
  for (std::uint64_t i = 0; i < count; ++i) {
    Char path[16] = {};
    qs_product_scan_row row = {};
    Demand(qs_product_scan_report_row(scan, i, path, 16, nullptr, nullptr, 0, nullptr, nullptr, 0,
                                      nullptr, nullptr, 0, nullptr, &row) == QS_BUFFER_TOO_SMALL,
           "a row without its other texts");
    findings.push_back({path, row.group_id, row.size});
  }
  Demand(qs_product_scan_destroy(scan) == QS_OK, "the scan is destroyed");
  return findings;
}

void DemandGroups(const std::vector<Finding>& findings) {
  std::map<std::uint64_t, std::vector<Finding>> groups;
  std::map<Text, int> met;
  for (const Finding& finding : findings) {
    groups[finding.group].push_back(finding);
    Demand(++met[finding.path] == 1, "a file is in one set");
  }
  std::uint64_t number = 0;
  for (const auto& [id, files] : groups) {
    Demand(id == ++number, "sets are numbered from 1 on");
    Demand(files.size() >= 2, "a set has two files or more");
    for (const Finding& file : files) {
      Demand(file.size == files[0].size, "files of a set have one size");
    }
  }
}

void CheckScan(SimulatedWindows& machine, const CacheMap& cache, HashCacheSeen& seen) {
  AddFiles(machine);
  for (const Text& path : ScannedPaths()) {
    Text key = path;
    key[0] = u'c';
    seen.about_files |= cache.contains(key);
  }
  const std::vector<Finding> findings = ScanForDuplicates();
  DemandGroups(findings);
  // Of files that the cache knows nothing about it cannot say anything wrong.
  if (!seen.about_files) {
    Demand(findings.size() == 4 && findings[0].path == u"C:\\d\\e" &&
               findings[1].path == u"C:\\d\\f" && findings[2].path == u"C:\\d\\a" &&
               findings[3].path == u"C:\\d\\b",
           "the files of equal content are found");
  }
  std::size_t dropped = 0;
  const auto left = model::ReadCacheFile(machine.ContentOf(kLocation).value_or(""), kNow, dropped);
  Demand(left.has_value(), "a scan leaves a whole file");
  Demand(dropped == 0, "a scan writes nothing that does not hold");
  for (const auto& [key, entry] : cache) {
    Demand(left->contains(key), "what a scan did not meet stays");
  }
  Demand(machine.open_handles() == 0, "a scan leaves nothing open");
}

}  // namespace

HashCacheSeen CheckHashCache(std::string_view bytes) {
  SimulatedWindows machine;
  machine.SetSystemFileTime(kNow);
  machine.SetProcessorCount(2);
  machine.AddFile(kLocation, bytes);
  HashCacheSeen seen;
  const CacheMap loaded = CheckReading(machine, bytes, seen);
  // Threads are slow to start: a scan is made where the file says something.
  if (seen.entries > 0) {
    CheckScan(machine, loaded, seen);
  }
  CheckWriting(machine, loaded);
  return seen;
}

}  // namespace quastel::fuzz
