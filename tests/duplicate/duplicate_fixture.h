// What the tests of the duplicate scan share: contents, keys and cache files made without the
// library, scans as values, and what the record of calls says about opened files.

#ifndef QUASTEL_TESTS_DUPLICATE_DUPLICATE_FIXTURE_H_
#define QUASTEL_TESTS_DUPLICATE_DUPLICATE_FIXTURE_H_

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "scan/scan_fixture.h"
#include "simulated_windows/simulated_windows.h"
#include "support/text.h"

namespace quastel::duplicate_tests {

using scan_tests::kDefaultModified;
using scan_tests::PerformanceOf;
using scan_tests::Poll;
using scan_tests::ReadReport;
using scan_tests::Request;
using scan_tests::Row;
using scan_tests::RowCountOf;
using scan_tests::ScanHandle;
using simulated::Call;
using simulated::CallRecord;
using simulated::SimulatedWindows;
using support::Utf8;
using support::Wide;

inline constexpr TextView kHome = u"C:\\Users\\u";
inline constexpr TextView kCacheFolder =
    u"C:\\Users\\u\\AppData\\Local\\Vantrelloc\\Ferrowynd\\cache";
inline constexpr TextView kCacheFile =
    u"C:\\Users\\u\\AppData\\Local\\Vantrelloc\\Ferrowynd\\cache\\duplicate-"
    u"hashes-v1.bin";
inline constexpr TextView kTemporaryFile =
    u"C:\\Users\\u\\AppData\\Local\\Vantrelloc\\Ferrowynd\\cache\\duplicate-"
    u"hashes-v1.bin.tmp";

// The machine's clock before anything advances it.
inline constexpr std::uint64_t kClockAtFirst = 133'500'000'000'000'000;

// Without protection, with the profile kHome.
Request DuplicateRequest(std::vector<Text> roots);

// ---- Contents and what is known of them.

// Bytes that look random; another seed gives other bytes nearly everywhere.
std::string Bytes(std::size_t size, std::uint32_t seed = 0);
// The same content with one byte changed.
std::string ChangedAt(std::string content, std::size_t position);

// XXH32 with seed 0, the least significant byte first.
std::string HashOf(std::string_view content);
// The content, filled up with zeros to 150 bytes, in hexadecimal digits.
std::string HexOf(std::string_view content);
std::string HeadOf(std::string_view content);
// The complete sample: the hexadecimal digits up to 150 bytes, above head "|" tail.
std::string SampleOf(std::string_view content);
std::string SampleKeyOf(std::string_view content);
// The key of a group of such files.
std::string GroupKeyOf(std::string_view content);

// ---- Scans.

struct Outcome {
  qs_status status = QS_OK;
  std::vector<Row> rows;
  qs_product_scan_status poll = {};
  qs_product_scan_performance performance = {};
};

Outcome OutcomeOf(qs_product_scan* scan, qs_status status);
// Makes a handle, scans and destroys the handle.
Outcome Scan(Request request);
Outcome ScanData();  // of C:\data

// The whole row of a duplicate.
Row DuplicateRow(std::uint64_t item_id, std::uint64_t group_id, TextView path, TextView title,
                 std::string_view location, std::uint64_t size,
                 std::uint64_t modified = kDefaultModified);

// The paths of each group.
using Groups = std::vector<std::vector<std::string>>;
// Checks what holds for every report as well: groups count from 1, have two members or more, one
// key, one size, and the name of their first file as title; ids count from 0.
Groups GroupsOf(const std::vector<Row>& rows);

// ---- The cache file.

struct CacheRecord {
  Text key = {};
  std::uint64_t size = 0;
  std::uint64_t last_write = kDefaultModified;
  std::uint64_t confirmed = kClockAtFirst;
  std::string sample = {};
  std::string hash = {};

  friend bool operator==(const CacheRecord&, const CacheRecord&) = default;
};
void PrintTo(const CacheRecord& record, std::ostream* out);

using CacheRecords = std::vector<CacheRecord>;

std::string CacheBytes(const CacheRecords& records);
// Nothing unless the bytes are a whole cache file, up to the last one.
std::optional<CacheRecords> ParseCache(std::string_view bytes);

void AddCache(SimulatedWindows& machine, const CacheRecords& records);
// The entries of the machine's cache file, which must be there and whole.
CacheRecords CacheOf(const SimulatedWindows& machine);

// ---- The record of calls.

// How often each file was opened, devices and the cache left out.
std::map<std::string, int> OpensOf(const SimulatedWindows& machine);
int OpenCount(const SimulatedWindows& machine);
bool IsCachePath(TextView path);
// Is it the opening of a file that may be a duplicate?
bool OpensCandidate(const CallRecord& call);

}  // namespace quastel::duplicate_tests

#endif  // QUASTEL_TESTS_DUPLICATE_DUPLICATE_FIXTURE_H_
