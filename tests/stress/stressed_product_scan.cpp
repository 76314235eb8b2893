// Its driver: what a scan must have found, and what a clean must have done.

#include "stress/stressed_product_scan.h"

#include <algorithm>
#include <map>
#include <utility>

#include "support/text.h"

namespace quastel::stress {
namespace {

std::vector<std::uint64_t> SizesFor(std::uint32_t kind) {
  switch (kind) {
    case QS_SCAN_KIND_LARGE_FILES:
      return {kLargestSmallFile, kLargestSmallFile + 1, 7, 20'000'000};
    case QS_SCAN_KIND_DUPLICATES:
      return {100, 5'000, 150, 20'000, 151};
    default:
      return {0, 1, 4'096, 20'000};
  }
}

// Two categories over the folder; together they reach every file once.
std::string RulesFor(const Text& root) {
  const std::string folder = support::Utf8(root);
  std::string text = "<Root><Category DisplayName=\"first\">";
  for (const char* part : {"\\d0", "\\d1", "\\d2"}) {
    text += "<Folder Path=\"" + folder + part + "\" Pattern=\"*.tmp\"/>";
  }
  return text + "</Category><Category DisplayName=\"second\"><Folder Path=\"" + folder +
         "\\d3\"/><Folder Path=\"" + folder + "\\d4\"/></Category></Root>";
}

}  // namespace

StressedProductScan::StressedProductScan(simulated::SimulatedWindows& machine, std::uint32_t kind,
                                         std::string_view name)
    : machine_(machine),
      kind_(kind),
      home_(u"C:\\Users\\" + support::Wide(name)),
      rules_(u"C:\\rules\\" + support::Wide(name) + u".xml"),
      folder_(machine, u"C:\\data\\" + support::Wide(name), SizesFor(kind)) {
  machine_.AddFolder(home_);
  machine_.AddFile(rules_, RulesFor(folder_.root()));
  Create();
}

void StressedProductScan::Create() {
  QS_DEMAND(qs_product_scan_create(&scan_) == QS_OK);
}

void StressedProductScan::Destroy() {
  // An observer who has left the library by now cannot be why it is busy.
  QS_DEMAND(qs_product_scan_destroy(scan_) == QS_OK);
  scan_ = nullptr;
}

void StressedProductScan::DemandBusyInside() {
  QS_DEMAND(qs_product_scan_destroy(scan_) == QS_BUSY);
  QS_DEMAND(qs_product_scan_start(scan_, nullptr) == QS_BUSY);
  QS_DEMAND(qs_product_scan_start_clean(scan_, nullptr, 0) == QS_BUSY);
}

qs_status StressedProductScan::Scan() {
  const Char* const root = folder_.root().c_str();
  qs_product_scan_request request = {};
  request.size = sizeof(request);
  request.kind = kind_;
  request.roots = &root;
  request.root_count = 1;
  request.user_home = home_.c_str();
  request.system_root = u"C:\\";
  request.rules_path = rules_.c_str();
  DrivenHandle() = this;
  const qs_status status = Persist([&] { return qs_product_scan_start(scan_, &request); });
  DrivenHandle() = nullptr;
  return status;
}

bool StressedProductScan::IsExpected(const StressedFile& file) const {
  return file.present && (kind_ != QS_SCAN_KIND_LARGE_FILES || file.size > kLargestSmallFile);
}

StressedProductScan::Rows StressedProductScan::ReadReport() const {
  std::uint64_t count = 0;
  QS_DEMAND(qs_product_scan_report_count(scan_, &count) == QS_OK);
  Rows items;
  for (std::uint64_t i = 0; i < count; ++i) {
    Row row;
    QS_DEMAND(ReadRow(i, row) == QS_OK);
    DemandGoodRow(i, row);
    if (row.numbers.kind == QS_ROW_GROUP) {
      continue;
    }
    QS_DEMAND(row.numbers.item_id == items.size());
    QS_DEMAND(row.numbers.deletable == 1 && row.numbers.deleted == 0);
    items.push_back(std::move(row));
  }
  return items;
}

void StressedProductScan::DemandComplete(const Rows& items) const {
  if (kind_ == QS_SCAN_KIND_DUPLICATES) {
    DemandSets(items);
    return;
  }
  std::set<Text> found;
  for (const Row& item : items) {
    QS_DEMAND_SEEN(found.insert(item.path).second, support::Utf8(item.path));
  }
  for (const auto& [path, file] : folder_.files()) {
    QS_DEMAND_SEEN(found.contains(path) == IsExpected(file), support::Utf8(path));
  }
}

void StressedProductScan::DemandSets(const Rows& items) const {
  using Content = std::pair<std::uint64_t, std::uint32_t>;
  std::map<Content, std::set<Text>> expected;
  for (const auto& [path, file] : folder_.files()) {
    expected[{file.size, file.seed}].insert(path);
  }
  std::erase_if(expected, [](const auto& set) { return set.second.size() < 2; });
  std::map<std::uint64_t, std::set<Text>> found;
  for (const Row& item : items) {
    found[item.numbers.group_id].insert(item.path);
  }
  QS_DEMAND(found.size() == expected.size());
  for (const auto& [id, paths] : found) {
    const StressedFile& file = folder_.files().at(*paths.begin());
    const auto set = expected.find({file.size, file.seed});
    QS_DEMAND(set != expected.end() && set->second == paths);
  }
}

std::vector<std::uint64_t> StressedProductScan::Choose(const Rows& items, Random& random) const {
  std::map<std::uint64_t, std::uint64_t> left;
  for (const Row& item : items) {
    ++left[item.numbers.group_id];
  }
  std::vector<std::uint64_t> ids;
  for (const Row& item : items) {
    std::uint64_t& of_group = left[item.numbers.group_id];
    if (random() % 3 == 0 && (kind_ != QS_SCAN_KIND_DUPLICATES || of_group > 1)) {
      ids.push_back(item.numbers.item_id);
      --of_group;
    }
  }
  std::shuffle(ids.begin(), ids.end(), random);
  return ids;
}

void StressedProductScan::DemandLastCopiesStay(const Rows& items) {
  if (kind_ != QS_SCAN_KIND_DUPLICATES || items.empty()) {
    return;
  }
  std::vector<std::uint64_t> ids;
  for (const Row& item : items) {
    if (item.numbers.group_id == items.front().numbers.group_id) {
      ids.push_back(item.numbers.item_id);
    }
  }
  // A scan that was cancelled may have reported only one file of its last set: that one is the last
  // copy that is known.
  QS_DEMAND(Persist([&] { return qs_product_scan_start_clean(scan_, ids.data(), ids.size()); }) ==
            QS_INVALID_ARGUMENT);
  ++tally().cleans_refused;
}

void StressedProductScan::Clean(const Rows& items, Random& random) {
  const std::vector<std::uint64_t> ids = Choose(items, random);
  std::set<Text> changed;
  for (const std::uint64_t id : ids) {
    if (random() % 8 == 0) {
      folder_.Change(items[id].path, random);
      changed.insert(items[id].path);
    }
  }
  const qs_status status =
      Persist([&] { return qs_product_scan_start_clean(scan_, ids.data(), ids.size()); });
  ++tally().cleans;
  DemandCleaned(items, ids, changed, status);
}

void StressedProductScan::DemandCleaned(const Rows& items, const std::vector<std::uint64_t>& ids,
                                        const std::set<Text>& changed, qs_status status) {
  qs_product_clean_detail detail = {};
  detail.size = sizeof(detail);
  QS_DEMAND(qs_product_scan_poll_clean_detailed(scan_, &detail) == QS_OK);
  std::set<std::uint64_t> marked;
  std::uint64_t bytes = 0;
  std::uint64_t count = 0;
  QS_DEMAND(qs_product_scan_report_count(scan_, &count) == QS_OK);
  for (std::uint64_t i = 0; i < count; ++i) {
    Row row;
    QS_DEMAND(ReadRow(i, row) == QS_OK);
    if (row.numbers.deleted != 0) {
      marked.insert(row.numbers.item_id);
      bytes += static_cast<std::uint64_t>(row.numbers.size);
      QS_DEMAND(!changed.contains(row.path));
      folder_.NoteDeleted(row.path);
    }
  }
  const std::set<std::uint64_t> named(ids.begin(), ids.end());
  QS_DEMAND(std::includes(named.begin(), named.end(), marked.begin(), marked.end()));
  folder_.DemandUnharmed();
  QS_DEMAND(detail.requested == ids.size() && detail.status == status);
  QS_DEMAND(detail.deleted == marked.size() && detail.bytes_freed == bytes);
  QS_DEMAND(detail.processed == detail.deleted + detail.failed);
  tally().deleted += marked.size();
  if (status == QS_CANCELLED) {
    QS_DEMAND(detail.state == QS_STATE_CANCELLED && detail.processed <= ids.size());
    ++tally().cleans_cancelled;
    return;
  }
  QS_DEMAND(detail.failed == changed.size() && detail.processed == ids.size());
  const bool failed = marked.empty() && !ids.empty();
  QS_DEMAND(status == (failed ? QS_FAILED : QS_OK));
  QS_DEMAND(detail.state == (failed ? QS_STATE_FAILED : QS_STATE_DONE));
  QS_DEMAND(items.size() >= marked.size());
}

void StressedProductScan::Drive(Random& random) {
  folder_.Refresh(random);
  const qs_status status = Scan();
  ++tally().scans;
  const Rows items = ReadReport();
  if (status == QS_OK) {
    DemandComplete(items);
  } else {
    QS_DEMAND(status == QS_CANCELLED);
    ++tally().scans_cancelled;
  }
  folder_.DemandUnharmed();
  DemandLastCopiesStay(items);
  folder_.DemandUnharmed();
  Clean(items, random);
}

}  // namespace quastel::stress
