// What the tests of the product scan share: requests, reports as values, and calls made from inside
// a running scan.

#ifndef QUASTEL_TESTS_SCAN_SCAN_FIXTURE_H_
#define QUASTEL_TESTS_SCAN_SCAN_FIXTURE_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "base/text.h"
#include "base/ticks.h"
#include "quastel_core.h"
#include "scan/product_scan.h"
#include "simulated_windows/simulated_windows.h"

namespace quastel::scan_tests {

using simulated::Call;
using simulated::CallRecord;
using simulated::LinkKind;
using simulated::SimulatedWindows;

// The smallest size that is reported, and the largest that is not.
inline constexpr std::uint64_t kLarge = 10'485'761;
inline constexpr std::uint64_t kNotLarge = 10'485'760;

// What a file that the simulation made without a time of its own is reported with.
inline constexpr std::uint64_t kDefaultModified = 133'000'000'000'000'000 + kTicksAt1601;

// A request whose texts live as long as it does.
class Request {
 public:
  static Request LargeFiles(std::vector<Text> roots);
  // Protection on, with C:\ and C:\Users\u.
  static Request ProtectedLargeFiles(std::vector<Text> roots);

  std::uint32_t size = sizeof(qs_product_scan_request);
  std::uint32_t kind = QS_SCAN_KIND_LARGE_FILES;
  std::vector<Text> roots;
  std::optional<Text> user_home;
  std::optional<Text> system_root;
  std::uint32_t protect_system = 0;
  std::uint32_t reserved = 0;
  std::optional<Text> rules_path;

  // The record; it stays true until the next change.
  const qs_product_scan_request* Get();

 private:
  std::vector<const Char*> pointers_;
  qs_product_scan_request record_ = {};
};

// A whole row of a report.
struct Row {
  Text path;
  Text name;
  Text title;
  Text location;
  qs_product_scan_row numbers = {};
  std::uint64_t parent_group_id = 0;

  friend bool operator==(const Row& a, const Row& b);
};
void PrintTo(const Row& row, std::ostream* out);

// One handle; destroying it must work.
class ScanHandle {
 public:
  ScanHandle();
  ~ScanHandle();
  ScanHandle(const ScanHandle&) = delete;
  ScanHandle& operator=(const ScanHandle&) = delete;

  operator qs_product_scan*() const { return scan_; }
  qs_status Start(Request request) const;

 private:
  qs_product_scan* scan_ = nullptr;
};

std::uint64_t RowCountOf(qs_product_scan* scan);
Row ReadRow(qs_product_scan* scan, std::uint64_t index);
std::vector<Row> ReadReport(qs_product_scan* scan);
std::vector<Text> PathsOf(const std::vector<Row>& rows);
qs_product_scan_status Poll(qs_product_scan* scan);
qs_product_scan_performance PerformanceOf(qs_product_scan* scan);
Text CurrentPathOf(qs_product_scan* scan);
Text CurrentGroupOf(qs_product_scan* scan);

// Everything that a handle shows, as bytes: equal texts mean that nothing changed.
std::string EverythingOf(qs_product_scan* scan);

// Calls `action` once, inside the nth call of that kind from now on, before it is made.
void InsideCall(SimulatedWindows& machine, Call call, std::uint64_t nth,
                std::function<void()> action);

// Calls `action` inside every call of that kind; it gets 1, 2, 3, ...
void InsideEveryCall(SimulatedWindows& machine, Call call,
                     std::function<void(std::uint64_t)> action);

// A scan object whose three kinds are whatever the test says at the time.
class OwnKindScan {
 public:
  using Body = std::function<qs_status(ProductScan&, const OwnedRequest&)>;

  OwnKindScan();

  qs_status Run(const Body& body);
  qs_status Run(Request request, const Body& body);

  std::vector<Row> Report();
  qs_product_scan_status Poll();
  qs_product_scan_performance Performance();
  Text CurrentPath();
  Text CurrentGroup();

  ProductScan scan;
};

// A row as a scan kind would hand it over.
ReportRow RowOf(RowKind kind, std::uint64_t group_id, std::int64_t size, TextView path);

}  // namespace quastel::scan_tests

#endif  // QUASTEL_TESTS_SCAN_SCAN_FIXTURE_H_
