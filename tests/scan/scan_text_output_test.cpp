#include <functional>
#include <vector>

#include "scan/scan_fixture.h"
#include "support/named_case.h"

namespace quastel::scan_tests {
namespace {

constexpr Char kCanary = 0xA5A5;

// The six texts that a scan hands out. Path C:\data\a.zip, name a.zip, title Archives, location
// C:\data; the current path is the last file looked at; there is no current group.
struct TextCase {
  const char* name;
  Text expected;
  std::function<qs_status(qs_product_scan*, Char*, std::uint64_t, std::uint64_t*)> query;
};
void PrintTo(const TextCase& c, std::ostream* out) {
  *out << c.name;
}

// One text of row 0, with room enough for the others.
std::function<qs_status(qs_product_scan*, Char*, std::uint64_t, std::uint64_t*)> RowText(int at) {
  return [at](qs_product_scan* scan, Char* out, std::uint64_t capacity, std::uint64_t* needed) {
    Char room[4][64];
    Char* buffers[4] = {room[0], room[1], room[2], room[3]};
    std::uint64_t capacities[4] = {64, 64, 64, 64};
    std::uint64_t* lengths[4] = {};
    buffers[at] = out;
    capacities[at] = capacity;
    lengths[at] = needed;
    qs_product_scan_row row = {};
    const qs_status status = qs_product_scan_report_row(
        scan, 0, buffers[0], capacities[0], lengths[0], buffers[1], capacities[1], lengths[1],
        buffers[2], capacities[2], lengths[2], buffers[3], capacities[3], lengths[3], &row);
    EXPECT_EQ(row.size, static_cast<std::int64_t>(kLarge)) << "the numbers come in any case";
    return status;
  };
}

class ScanText : public ::testing::TestWithParam<TextCase> {
 protected:
  ScanText() {
    machine_.AddSizedFile(u"C:\\data\\a.zip", kLarge);
    EXPECT_EQ(scan_.Start(Request::LargeFiles({u"C:\\data"})), QS_OK);
  }

  qs_status Query(Char* out, std::uint64_t capacity, std::uint64_t* needed) {
    return GetParam().query(scan_, out, capacity, needed);
  }

  SimulatedWindows machine_;
  ScanHandle scan_;
};

TEST_P(ScanText, Is_refused_without_a_buffer_and_tells_the_capacity_that_it_needs) {
  const std::uint64_t required = GetParam().expected.size() + 1;
  for (const std::uint64_t capacity : {std::uint64_t{0}, required, UINT64_MAX}) {
    SCOPED_TRACE(capacity);
    std::uint64_t needed = 99;
    EXPECT_EQ(Query(nullptr, capacity, &needed), QS_BUFFER_TOO_SMALL);
    EXPECT_EQ(needed, required);
  }
}

TEST_P(ScanText, Is_refused_by_every_shorter_capacity_and_writes_nothing) {
  const std::uint64_t required = GetParam().expected.size() + 1;
  for (std::uint64_t capacity = 0; capacity < required; ++capacity) {
    SCOPED_TRACE(capacity);
    std::vector<Char> buffer(required + 4, kCanary);
    std::uint64_t needed = 99;
    EXPECT_EQ(Query(buffer.data(), capacity, &needed), QS_BUFFER_TOO_SMALL);
    EXPECT_EQ(needed, required);
    EXPECT_EQ(buffer, std::vector<Char>(required + 4, kCanary));
  }
}

TEST_P(ScanText, Is_copied_with_its_terminator_and_nothing_behind_it) {
  const std::uint64_t required = GetParam().expected.size() + 1;
  for (const std::uint64_t capacity : {required, required + 4, UINT64_MAX}) {
    SCOPED_TRACE(capacity);
    std::vector<Char> buffer(required + 4, kCanary);
    std::uint64_t needed = 99;
    EXPECT_EQ(Query(buffer.data(), capacity, &needed), QS_OK);
    EXPECT_EQ(needed, required);
    std::vector<Char> expected(GetParam().expected.begin(), GetParam().expected.end());
    expected.push_back(0);
    expected.resize(required + 4, kCanary);
    EXPECT_EQ(buffer, expected);
  }
}

TEST_P(ScanText, Needs_no_pointer_for_the_capacity) {
  const std::uint64_t required = GetParam().expected.size() + 1;
  std::vector<Char> buffer(required, kCanary);
  EXPECT_EQ(Query(nullptr, 0, nullptr), QS_BUFFER_TOO_SMALL);
  EXPECT_EQ(Query(buffer.data(), required - 1, nullptr), QS_BUFFER_TOO_SMALL);
  EXPECT_EQ(buffer, std::vector<Char>(required, kCanary));
  EXPECT_EQ(Query(buffer.data(), required, nullptr), QS_OK);
  EXPECT_EQ(Text(buffer.data()), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    All, ScanText,
    ::testing::Values(TextCase{"current_path", u"C:\\data\\a.zip", qs_product_scan_current_path},
                      TextCase{"current_group", u"", qs_product_scan_current_group},
                      TextCase{"row_path", u"C:\\data\\a.zip", RowText(0)},
                      TextCase{"row_name", u"a.zip", RowText(1)},
                      TextCase{"row_title", u"Archives", RowText(2)},
                      TextCase{"row_location", u"C:\\data", RowText(3)}),
    support::CaseName());

TEST(RowTexts, Are_each_copied_or_refused_by_themselves) {
  SimulatedWindows machine;
  machine.AddSizedFile(u"C:\\data\\a.zip", kLarge);
  ScanHandle scan;
  ASSERT_EQ(scan.Start(Request::LargeFiles({u"C:\\data"})), QS_OK);
  const Text expected[4] = {u"C:\\data\\a.zip", u"a.zip", u"Archives", u"C:\\data"};

  for (unsigned refused = 0; refused < 16; ++refused) {
    SCOPED_TRACE(refused);
    std::vector<Char> buffers[4];
    std::uint64_t capacities[4] = {};
    std::uint64_t needed[4] = {};
    for (unsigned i = 0; i < 4; ++i) {
      buffers[i].assign(32, kCanary);
      capacities[i] = expected[i].size() + ((refused >> i & 1) != 0 ? 0 : 1);
    }
    qs_product_scan_row row = {};
    EXPECT_EQ(qs_product_scan_report_row(scan, 0, buffers[0].data(), capacities[0], &needed[0],
                                         buffers[1].data(), capacities[1], &needed[1],
                                         buffers[2].data(), capacities[2], &needed[2],
                                         buffers[3].data(), capacities[3], &needed[3], &row),
              refused == 0 ? QS_OK : QS_BUFFER_TOO_SMALL);
    EXPECT_EQ(row.size, static_cast<std::int64_t>(kLarge));
    EXPECT_EQ(row.modified, kDefaultModified);
    for (unsigned i = 0; i < 4; ++i) {
      SCOPED_TRACE(i);
      EXPECT_EQ(needed[i], expected[i].size() + 1);
      if ((refused >> i & 1) != 0) {
        EXPECT_EQ(buffers[i], std::vector<Char>(32, kCanary));
      } else {
        EXPECT_EQ(Text(buffers[i].data()), expected[i]);
      }
    }
  }
}

TEST(CurrentGroup, Is_delivered_like_every_text) {
  SimulatedWindows machine;
  OwnKindScan own;
  ASSERT_EQ(own.Run([](ProductScan& scan, const OwnedRequest&) {
    scan.SetCurrentGroup(u"Browsers");
    return QS_OK;
  }),
            QS_OK);
  std::vector<Char> buffer(12, kCanary);
  std::uint64_t needed = 0;
  EXPECT_EQ(own.scan.CopyCurrentGroup({buffer.data(), 8, &needed}), QS_BUFFER_TOO_SMALL);
  EXPECT_EQ(needed, 9u);
  EXPECT_EQ(buffer, std::vector<Char>(12, kCanary));
  EXPECT_EQ(own.scan.CopyCurrentGroup({buffer.data(), 9, &needed}), QS_OK);
  EXPECT_EQ(Text(buffer.data()), u"Browsers");
  EXPECT_EQ(buffer[9], kCanary);
}

}  // namespace
}  // namespace quastel::scan_tests
