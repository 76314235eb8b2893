#include "scan/scan_fixture.h"

#include <atomic>
#include <cstring>
#include <memory>
#include <ostream>
#include <utility>

namespace quastel::scan_tests {

namespace {

thread_local const OwnKindScan::Body* body_of_this_run = nullptr;

qs_status RunBody(ProductScan& scan, const OwnedRequest& request) {
  return (*body_of_this_run)(scan, request);
}

// Reads a text with the two calls that a caller makes.
template <typename Query>
Text ReadText(Query query) {
  for (;;) {
    std::uint64_t needed = 0;
    EXPECT_EQ(query(nullptr, std::uint64_t{0}, &needed), QS_BUFFER_TOO_SMALL);
    Text text(needed, Char{'?'});
    // The text may have grown in between while a scan runs.
    const qs_status status = query(text.data(), needed, &needed);
    if (status == QS_OK) {
      text.resize(needed - 1);
      return text;
    }
    EXPECT_EQ(status, QS_BUFFER_TOO_SMALL);
    if (status != QS_BUFFER_TOO_SMALL) {
      return Text();
    }
  }
}

template <typename Record>
void AppendBytes(std::string& bytes, const Record& record) {
  bytes.append(reinterpret_cast<const char*>(&record), sizeof(record));
}

void AppendText(std::string& bytes, const Text& text) {
  AppendBytes(bytes, text.size());
  bytes.append(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(Char));
}

}  // namespace

Request Request::LargeFiles(std::vector<Text> roots) {
  Request request;
  request.roots = std::move(roots);
  return request;
}

Request Request::ProtectedLargeFiles(std::vector<Text> roots) {
  Request request = LargeFiles(std::move(roots));
  request.protect_system = 1;
  request.system_root = u"C:\\";
  request.user_home = u"C:\\Users\\u";
  return request;
}

const qs_product_scan_request* Request::Get() {
  pointers_.clear();
  for (const Text& root : roots) {
    pointers_.push_back(root.c_str());
  }
  const auto pointer = [](const std::optional<Text>& text) {
    return text.has_value() ? text->c_str() : nullptr;
  };
  record_ = {size,
             kind,
             pointers_.empty() ? nullptr : pointers_.data(),
             pointers_.size(),
             pointer(user_home),
             pointer(system_root),
             protect_system,
             reserved,
             pointer(rules_path)};
  return &record_;
}

bool operator==(const Row& a, const Row& b) {
  return a.path == b.path && a.name == b.name && a.title == b.title && a.location == b.location &&
         std::memcmp(&a.numbers, &b.numbers, sizeof(a.numbers)) == 0 &&
         a.parent_group_id == b.parent_group_id;
}

void PrintTo(const Row& row, std::ostream* out) {
  const qs_product_scan_row& n = row.numbers;
  *out << "path " << ::testing::PrintToString(row.path) << " name "
       << ::testing::PrintToString(row.name) << " title " << ::testing::PrintToString(row.title)
       << " location " << ::testing::PrintToString(row.location) << " item " << n.item_id
       << " group " << n.group_id << " kind " << n.kind << " reserved " << n.reserved << " size "
       << n.size << " modified " << n.modified << " deletable " << n.deletable << " preselect "
       << n.preselect << " deleted " << n.deleted << " class " << n.large_class << " parent "
       << row.parent_group_id;
}

ScanHandle::ScanHandle() {
  EXPECT_EQ(qs_product_scan_create(&scan_), QS_OK);
}

ScanHandle::~ScanHandle() {
  EXPECT_EQ(qs_product_scan_destroy(scan_), QS_OK);
}

qs_status ScanHandle::Start(Request request) const {
  return qs_product_scan_start(scan_, request.Get());
}

std::uint64_t RowCountOf(qs_product_scan* scan) {
  std::uint64_t count = 0;
  EXPECT_EQ(qs_product_scan_report_count(scan, &count), QS_OK);
  return count;
}

Row ReadRow(qs_product_scan* scan, std::uint64_t index) {
  Row row;
  std::uint64_t needed[4] = {};
  EXPECT_EQ(
      qs_product_scan_report_row(scan, index, nullptr, 0, &needed[0], nullptr, 0, &needed[1],
                                 nullptr, 0, &needed[2], nullptr, 0, &needed[3], &row.numbers),
      QS_BUFFER_TOO_SMALL);
  Text* const texts[4] = {&row.path, &row.name, &row.title, &row.location};
  for (int i = 0; i < 4; ++i) {
    texts[i]->resize(needed[i]);
  }
  EXPECT_EQ(
      qs_product_scan_report_row(scan, index, row.path.data(), needed[0], nullptr, row.name.data(),
                                 needed[1], nullptr, row.title.data(), needed[2], nullptr,
                                 row.location.data(), needed[3], nullptr, &row.numbers),
      QS_OK);
  for (int i = 0; i < 4; ++i) {
    texts[i]->resize(needed[i] == 0 ? 0 : needed[i] - 1);
  }
  EXPECT_EQ(qs_product_scan_report_row_parent_group_id(scan, index, &row.parent_group_id), QS_OK);
  return row;
}

std::vector<Row> ReadReport(qs_product_scan* scan) {
  std::vector<Row> rows;
  const std::uint64_t count = RowCountOf(scan);
  for (std::uint64_t i = 0; i < count; ++i) {
    rows.push_back(ReadRow(scan, i));
  }
  return rows;
}

std::vector<Text> PathsOf(const std::vector<Row>& rows) {
  std::vector<Text> paths;
  for (const Row& row : rows) {
    paths.push_back(row.path);
  }
  return paths;
}

qs_product_scan_status Poll(qs_product_scan* scan) {
  qs_product_scan_status status = {};
  EXPECT_EQ(qs_product_scan_poll(scan, &status), QS_OK);
  return status;
}

qs_product_scan_performance PerformanceOf(qs_product_scan* scan) {
  qs_product_scan_performance performance = {};
  performance.size = sizeof(performance);
  EXPECT_EQ(qs_product_scan_get_performance(scan, &performance), QS_OK);
  return performance;
}

Text CurrentPathOf(qs_product_scan* scan) {
  return ReadText([&](Char* out, std::uint64_t capacity, std::uint64_t* needed) {
    return qs_product_scan_current_path(scan, out, capacity, needed);
  });
}

Text CurrentGroupOf(qs_product_scan* scan) {
  return ReadText([&](Char* out, std::uint64_t capacity, std::uint64_t* needed) {
    return qs_product_scan_current_group(scan, out, capacity, needed);
  });
}

std::string EverythingOf(qs_product_scan* scan) {
  std::string bytes;
  AppendBytes(bytes, Poll(scan));
  AppendBytes(bytes, PerformanceOf(scan));
  AppendText(bytes, CurrentPathOf(scan));
  AppendText(bytes, CurrentGroupOf(scan));
  for (const Row& row : ReadReport(scan)) {
    AppendText(bytes, row.path);
    AppendText(bytes, row.name);
    AppendText(bytes, row.title);
    AppendText(bytes, row.location);
    AppendBytes(bytes, row.numbers);
    AppendBytes(bytes, row.parent_group_id);
  }
  return bytes;
}

void InsideCall(SimulatedWindows& machine, Call call, std::uint64_t nth,
                std::function<void()> action) {
  InsideEveryCall(machine, call, [nth, action = std::move(action)](std::uint64_t number) {
    if (number == nth) {
      action();
    }
  });
}

void InsideEveryCall(SimulatedWindows& machine, Call call,
                     std::function<void(std::uint64_t)> action) {
  auto seen = std::make_shared<std::atomic<std::uint64_t>>(0);
  machine.SetHook([call, seen, action = std::move(action)](const CallRecord& record) {
    if (record.call == call) {
      action(++*seen);
    }
  });
}

OwnKindScan::OwnKindScan() : scan(ScanRunners{RunBody, RunBody, RunBody}) {}

qs_status OwnKindScan::Run(const Body& body) {
  return Run(Request::LargeFiles({u"C:\\"}), body);
}

qs_status OwnKindScan::Run(Request request, const Body& body) {
  body_of_this_run = &body;
  const qs_status status = scan.Start(request.Get());
  body_of_this_run = nullptr;
  return status;
}

std::vector<Row> OwnKindScan::Report() {
  std::vector<Row> rows;
  const std::uint64_t count = scan.RowCount();
  for (std::uint64_t i = 0; i < count; ++i) {
    Row row;
    Text* const texts[4] = {&row.path, &row.name, &row.title, &row.location};
    std::uint64_t needed[4] = {};
    for (Text* text : texts) {
      text->resize(1024);
    }
    const auto target = [&](int at) {
      return TextTarget{texts[at]->data(), texts[at]->size(), &needed[at]};
    };
    EXPECT_EQ(scan.CopyRow(i, {target(0), target(1), target(2), target(3)}, row.numbers), QS_OK);
    for (int at = 0; at < 4; ++at) {
      texts[at]->resize(needed[at] - 1);
    }
    EXPECT_EQ(scan.CopyParentGroupId(i, row.parent_group_id), QS_OK);
    rows.push_back(row);
  }
  return rows;
}

qs_product_scan_status OwnKindScan::Poll() {
  qs_product_scan_status status = {};
  scan.Poll(status);
  return status;
}

qs_product_scan_performance OwnKindScan::Performance() {
  qs_product_scan_performance performance = {};
  scan.CopyPerformance(performance);
  return performance;
}

Text OwnKindScan::CurrentPath() {
  return ReadText([this](Char* out, std::uint64_t capacity, std::uint64_t* needed) {
    return scan.CopyCurrentPath({out, capacity, needed});
  });
}

Text OwnKindScan::CurrentGroup() {
  return ReadText([this](Char* out, std::uint64_t capacity, std::uint64_t* needed) {
    return scan.CopyCurrentGroup({out, capacity, needed});
  });
}

ReportRow RowOf(RowKind kind, std::uint64_t group_id, std::int64_t size, TextView path) {
  ReportRow row;
  row.path = path;
  row.kind = kind;
  row.group_id = group_id;
  row.size = size;
  row.deletable = kind != RowKind::kGroup;
  return row;
}

}  // namespace quastel::scan_tests
