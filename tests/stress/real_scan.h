// Scans of a real folder through the public header, with answers that must be right.

#ifndef QUASTEL_TESTS_STRESS_REAL_SCAN_H_
#define QUASTEL_TESTS_STRESS_REAL_SCAN_H_

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "quastel_core.h"

namespace quastel::stress {

// Where a scan looks, and what it needs besides.
struct Places {
  std::wstring root;
  std::wstring profile;
  std::wstring rules;
};

struct Item {
  std::wstring path;
  std::uint64_t id = 0;  // of the item in a product scan, of the row in a session
  std::uint64_t group_id = 0;
};

using Items = std::vector<Item>;

std::wstring CacheFileOf(const Places& places);

qs_status StartScan(qs_product_scan* scan, std::uint32_t kind, const Places& places);

// The items of the report in its order, headers left out.
Items ItemsOf(qs_product_scan* scan);
Items ItemsOf(qs_session* session);

// The sets of a duplicate scan's report.
std::set<std::set<std::wstring>> SetsOf(const Items& items);

}  // namespace quastel::stress

#endif  // QUASTEL_TESTS_STRESS_REAL_SCAN_H_
