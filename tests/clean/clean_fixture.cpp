#include "clean/clean_fixture.h"

#include <map>
#include <ostream>
#include <utility>

#include "base/ascii.h"

namespace quastel::clean_tests {
namespace {

constexpr std::string_view kDuplicateContent = "the same in all of them";

// The handle is derived from the object behind it: both stand at one address.
ProductScan& ObjectOf(qs_product_scan* scan) {
  return *reinterpret_cast<ProductScan*>(scan);
}

}  // namespace

void PrintTo(const CleanBlock& block, std::ostream* out) {
  *out << "state " << block.state << ", requested " << block.requested << ", deleted "
       << block.deleted << ", failed " << block.failed << ", processed " << block.processed
       << ", bytes freed " << block.bytes_freed << ", status " << block.status;
}

CleanBlock Ended(qs_status status, std::uint64_t requested, std::uint64_t deleted,
                 std::uint64_t failed, std::uint64_t bytes_freed) {
  const std::uint32_t state = status == QS_OK          ? QS_STATE_DONE
                              : status == QS_CANCELLED ? QS_STATE_CANCELLED
                                                       : QS_STATE_FAILED;
  return {state, requested, deleted, failed, deleted + failed, bytes_freed, status};
}

CleanBlock DetailOf(qs_product_scan* scan) {
  qs_product_clean_detail detail = {};
  detail.size = sizeof(detail);
  EXPECT_EQ(qs_product_scan_poll_clean_detailed(scan, &detail), QS_OK);
  EXPECT_EQ(detail.size, 56u);
  EXPECT_EQ(detail.reserved, 0u);
  return {detail.state,     detail.requested,   detail.deleted, detail.failed,
          detail.processed, detail.bytes_freed, detail.status};
}

CleanBlock BlockOf(qs_product_scan* scan) {
  const CleanBlock block = DetailOf(scan);
  qs_product_clean_status status = {};
  EXPECT_EQ(qs_product_scan_poll_clean(scan, &status), QS_OK);
  EXPECT_EQ(status.state, block.state);
  EXPECT_EQ(status.reserved, 0u);
  EXPECT_EQ(status.requested, block.requested);
  EXPECT_EQ(status.processed, block.processed);
  EXPECT_EQ(status.status, block.status);
  EXPECT_EQ(status.reserved2, 0u);
  return block;
}

qs_status Clean(qs_product_scan* scan, const Ids& ids) {
  return qs_product_scan_start_clean(scan, ids.empty() ? nullptr : ids.data(), ids.size());
}

Ids MarksOf(qs_product_scan* scan) {
  Ids ids;
  for (const Row& row : scan_tests::ReadReport(scan)) {
    if (row.numbers.deleted != 0) {
      EXPECT_EQ(row.numbers.deleted, 1u);
      ids.push_back(row.numbers.item_id);
    }
  }
  return ids;
}

std::string ReportWithoutMarks(qs_product_scan* scan) {
  std::string text = Utf8(scan_tests::CurrentPathOf(scan)) + "\n";
  text += Utf8(scan_tests::CurrentGroupOf(scan)) + "\n";
  for (Row& row : scan_tests::ReadReport(scan)) {
    row.numbers.deleted = 0;
    text += ::testing::PrintToString(row) + "\n";
  }
  const qs_product_scan_status status = scan_tests::Poll(scan);
  text.append(reinterpret_cast<const char*>(&status), sizeof(status));
  const qs_product_scan_performance performance = scan_tests::PerformanceOf(scan);
  text.append(reinterpret_cast<const char*>(&performance), sizeof(performance));
  return text;
}

void AppendRows(qs_product_scan* scan, std::vector<ReportRow> rows) {
  for (ReportRow& row : rows) {
    ObjectOf(scan).AppendRow(std::move(row));
  }
}

ReportRow FindingOf(RowKind kind, std::uint64_t group_id, std::int64_t size, TextView path) {
  ReportRow row = scan_tests::RowOf(kind, group_id, size, path);
  row.modified = kDefaultModified;
  row.name = LeafOf(path);
  return row;
}

Lines RemovalsOf(const SimulatedWindows& machine) {
  Lines lines;
  for (const CallRecord& call : machine.record()) {
    if (call.call == Call::kRemoveFile || call.call == Call::kRemoveFolder) {
      lines.push_back(NameOf(call.call) + (" " + Utf8(call.path)) +
                      (call.result == platform::Error::kNone ? "" : " failed"));
    }
  }
  return lines;
}

Request DuplicateRequest(Paths roots) {
  // Without a profile there is no cache: the disk holds what the test put there.
  Request request = Request::LargeFiles(std::move(roots));
  request.kind = QS_SCAN_KIND_DUPLICATES;
  return request;
}

Request JunkRequest() {
  Request request;
  request.kind = QS_SCAN_KIND_JUNK_RULES;
  request.user_home = u"C:\\Users\\u";
  request.system_root = u"C:\\";
  request.rules_path = Text(kRulesPath);
  return request;
}

std::string FolderRules(const Paths& folders) {
  std::string document = "<Root><Category DisplayName=\"c\">";
  for (const Text& folder : folders) {
    document += "<Folder Path=\"" + Utf8(folder) + "\"/>";
  }
  return document + "</Category></Root>";
}

CleanTest::CleanTest(std::uint32_t kind) : kind_(kind) {
  machine_.AddDrive('D');
  machine_.AddFolder(kTree);
  if (kind_ == QS_SCAN_KIND_JUNK_RULES) {
    machine_.AddFile(kRulesPath, FolderRules({Text(kTree)}));
  }
  if (kind_ == QS_SCAN_KIND_DUPLICATES) {
    machine_.AddFile(kKeptCopy, kDuplicateContent);
  }
}

CleanTest::~CleanTest() {
  machine_.SetHook(nullptr);
  EXPECT_EQ(machine_.open_handles(), 0u);
}

std::uint64_t CleanTest::finding_size() const {
  return kind_ == QS_SCAN_KIND_LARGE_FILES ? kLarge : kDuplicateContent.size();
}

Text CleanTest::AddFinding(TextView name, FileOptions options) {
  const Text path = Text(kTree) + u"\\" + Text(name);
  if (kind_ == QS_SCAN_KIND_LARGE_FILES) {
    machine_.AddSizedFile(path, kLarge, 0, options);
  } else {
    machine_.AddFile(path, kDuplicateContent, options);
  }
  return path;
}

Paths CleanTest::AddFindings(std::size_t count) {
  Paths paths;
  for (std::size_t i = 0; i < count; ++i) {
    paths.push_back(AddFinding(Wide("f" + std::to_string(1000 + i).substr(1))));
  }
  return paths;
}

Request CleanTest::TreeRequest() {
  switch (kind_) {
    case QS_SCAN_KIND_JUNK_RULES:
      return JunkRequest();
    case QS_SCAN_KIND_DUPLICATES:
      return DuplicateRequest({Text(kTree), Text(kKept)});
    default:
      return Request::LargeFiles({Text(kTree)});
  }
}

void CleanTest::ScanTree() {
  ASSERT_EQ(scan_.Start(TreeRequest()), QS_OK);
  machine_.ClearFaults();
  machine_.ClearRecord();
  machine_.SetRecording(true);
}

Ids CleanTest::IdsOf(const Paths& paths) {
  std::map<Text, std::uint64_t> found;
  for (const Row& row : scan_tests::ReadReport(scan_)) {
    if (row.numbers.kind != QS_ROW_GROUP) {
      EXPECT_TRUE(found.emplace(row.path, row.numbers.item_id).second)
          << Utf8(row.path) << " was found twice";
    }
  }
  Ids ids;
  for (const Text& path : paths) {
    EXPECT_EQ(found.count(path), 1u) << Utf8(path) << " was not found";
    ids.push_back(found.count(path) == 1 ? found[path] : QS_NO_ITEM_ID);
  }
  return ids;
}

Ids CleanTest::IdsOfAll() {
  Ids ids;
  for (const Row& row : scan_tests::ReadReport(scan_)) {
    if (row.numbers.kind != QS_ROW_GROUP && row.path != kKeptCopy) {
      ids.push_back(row.numbers.item_id);
    }
  }
  return ids;
}

Lines CleanTest::LeftOf(const Paths& paths) const {
  Lines left;
  for (const Text& path : paths) {
    if (machine_.Exists(path)) {
      left.push_back(Utf8(path));
    }
  }
  return left;
}

}  // namespace quastel::clean_tests
