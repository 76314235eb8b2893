#include "real_scan.h"

#include <map>
#include <utility>

#include "demand.h"

namespace quastel::stress {
namespace {

constexpr std::uint64_t kCapacity = 1024;  // longer than any path here

}  // namespace

std::wstring CacheFileOf(const Places& places) {
  return places.profile +
         L"\\AppData\\Local\\Vantrelloc\\Ferrowynd\\cache\\duplicate-hashes-v1.bin";
}

qs_status StartScan(qs_product_scan* scan, std::uint32_t kind, const Places& places) {
  const qs_char* const root = places.root.c_str();
  qs_product_scan_request request{};
  request.size = sizeof(request);
  request.kind = kind;
  request.roots = &root;
  request.root_count = 1;
  request.user_home = places.profile.c_str();
  request.system_root = L"C:\\";
  request.rules_path = places.rules.c_str();
  return qs_product_scan_start(scan, &request);
}

Items ItemsOf(qs_product_scan* scan) {
  std::uint64_t count = 0;
  QS_DEMAND(qs_product_scan_report_count(scan, &count) == QS_OK);
  Items items;
  for (std::uint64_t i = 0; i < count; ++i) {
    qs_char path[kCapacity];
    std::uint64_t needed = 0;
    qs_product_scan_row row{};
    // The other texts are left out, and that is what the answer says.
    QS_DEMAND(qs_product_scan_report_row(scan, i, path, kCapacity, &needed, nullptr, 0, nullptr,
                                         nullptr, 0, nullptr, nullptr, 0, nullptr,
                                         &row) == QS_BUFFER_TOO_SMALL);
    QS_DEMAND(needed <= kCapacity);
    if (row.kind != QS_ROW_GROUP) {
      items.push_back({std::wstring(path, needed - 1), row.item_id, row.group_id});
    }
  }
  return items;
}

Items ItemsOf(qs_session* session) {
  std::uint64_t count = 0;
  QS_DEMAND(qs_session_report_count(session, &count) == QS_OK);
  Items items;
  for (std::uint64_t i = 0; i < count; ++i) {
    qs_char path[kCapacity];
    std::uint64_t needed = 0;
    qs_session_row row{};
    QS_DEMAND(qs_session_report_row(session, i, path, kCapacity, &needed, nullptr, 0, nullptr,
                                    &row) == QS_BUFFER_TOO_SMALL);
    QS_DEMAND(needed <= kCapacity);
    items.push_back({std::wstring(path, needed - 1), i, 0});
  }
  return items;
}

std::set<std::set<std::wstring>> SetsOf(const Items& items) {
  std::map<std::uint64_t, std::set<std::wstring>> by_group;
  for (const Item& item : items) {
    by_group[item.group_id].insert(item.path);
  }
  std::set<std::set<std::wstring>> sets;
  for (auto& [id, paths] : by_group) {
    QS_DEMAND(paths.size() > 1);
    sets.insert(std::move(paths));
  }
  return sets;
}

}  // namespace quastel::stress
