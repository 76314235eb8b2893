#include <algorithm>
#include <array>
#include <cstring>

#include "scan/scan_fixture.h"

namespace quastel::scan_tests {
namespace {

// Room for a record with canaries on both sides.
class Arena {
 public:
  explicit Arena(unsigned char fill) : fill_(fill) { bytes_.fill(fill); }

  template <typename Record>
  Record* record() {
    return reinterpret_cast<Record*>(bytes_.data() + kFront);
  }

  // Whether everything but the first `size` bytes of the record is as it was.
  bool OnlyChangedUpTo(std::size_t size) const {
    const auto untouched = [this](unsigned char byte) { return byte == fill_; };
    return std::all_of(bytes_.begin(), bytes_.begin() + kFront, untouched) &&
           std::all_of(bytes_.begin() + kFront + static_cast<std::ptrdiff_t>(size), bytes_.end(),
                       untouched);
  }

  std::string Bytes(std::size_t size) const {
    return std::string(reinterpret_cast<const char*>(bytes_.data()) + kFront, size);
  }

 private:
  static constexpr std::ptrdiff_t kFront = 64;

  const unsigned char fill_;
  alignas(16) std::array<unsigned char, 1024> bytes_;
};

class ScanRecords : public ::testing::Test {
 protected:
  ScanRecords() {
    machine_.AddSizedFile(u"C:\\data\\a.zip", kLarge);
    EXPECT_EQ(scan_.Start(Request::LargeFiles({u"C:\\data"})), QS_OK);
  }

  qs_status FillRow(std::uint64_t index, qs_product_scan_row* row) {
    return qs_product_scan_report_row(scan_, index, nullptr, 0, nullptr, nullptr, 0, nullptr,
                                      nullptr, 0, nullptr, nullptr, 0, nullptr, row);
  }

  SimulatedWindows machine_;
  ScanHandle scan_;
};

TEST_F(ScanRecords, Poll_writes_every_one_of_48_bytes_and_no_other) {
  Arena a(0xA5);
  Arena b(0x5A);
  EXPECT_EQ(qs_product_scan_poll(scan_, a.record<qs_product_scan_status>()), QS_OK);
  EXPECT_EQ(qs_product_scan_poll(scan_, b.record<qs_product_scan_status>()), QS_OK);
  EXPECT_TRUE(a.OnlyChangedUpTo(48));
  EXPECT_TRUE(b.OnlyChangedUpTo(48));
  EXPECT_EQ(a.Bytes(48), b.Bytes(48));
}

TEST_F(ScanRecords, A_row_writes_every_one_of_56_bytes_and_no_other) {
  Arena a(0xA5);
  Arena b(0x5A);
  EXPECT_EQ(FillRow(0, a.record<qs_product_scan_row>()), QS_BUFFER_TOO_SMALL);
  EXPECT_EQ(FillRow(0, b.record<qs_product_scan_row>()), QS_BUFFER_TOO_SMALL);
  EXPECT_TRUE(a.OnlyChangedUpTo(56));
  EXPECT_TRUE(b.OnlyChangedUpTo(56));
  EXPECT_EQ(a.Bytes(56), b.Bytes(56));
}

TEST_F(ScanRecords, Performance_writes_192_bytes_whatever_larger_size_is_given) {
  for (const std::uint32_t size : {192u, 193u, 500u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(size);
    Arena a(0xA5);
    Arena b(0x5A);
    a.record<qs_product_scan_performance>()->size = size;
    b.record<qs_product_scan_performance>()->size = size;
    EXPECT_EQ(qs_product_scan_get_performance(scan_, a.record<qs_product_scan_performance>()),
              QS_OK);
    EXPECT_EQ(qs_product_scan_get_performance(scan_, b.record<qs_product_scan_performance>()),
              QS_OK);
    EXPECT_TRUE(a.OnlyChangedUpTo(192));
    EXPECT_TRUE(b.OnlyChangedUpTo(192));
    EXPECT_EQ(a.Bytes(192), b.Bytes(192));
    EXPECT_EQ(a.record<qs_product_scan_performance>()->size, 192u);
  }
}

TEST_F(ScanRecords, Performance_refuses_a_shorter_size_and_writes_nothing) {
  for (const std::uint32_t size : {0u, 1u, 191u}) {
    SCOPED_TRACE(size);
    Arena arena(0xA5);
    std::memcpy(arena.record<unsigned char>(), &size, sizeof(size));
    EXPECT_EQ(qs_product_scan_get_performance(scan_, arena.record<qs_product_scan_performance>()),
              QS_INVALID_ARGUMENT);
    EXPECT_TRUE(arena.OnlyChangedUpTo(4));
    EXPECT_EQ(arena.record<qs_product_scan_performance>()->size, size);
  }
}

TEST_F(ScanRecords, The_reserved_fields_are_zero) {
  EXPECT_EQ(Poll(scan_).reserved, 0u);
  EXPECT_EQ(ReadRow(scan_, 0).numbers.reserved, 0u);
  for (const std::uint32_t reserved : PerformanceOf(scan_).reserved) {
    EXPECT_EQ(reserved, 0u);
  }
}

TEST_F(ScanRecords, The_fields_stand_at_their_offsets) {
  Arena status(0xA5);
  ASSERT_EQ(qs_product_scan_poll(scan_, status.record<qs_product_scan_status>()), QS_OK);
  const auto number_at = [](const Arena& arena, std::size_t offset, std::size_t width) {
    std::uint64_t number = 0;
    std::memcpy(&number, arena.Bytes(192).data() + offset, width);
    return number;
  };
  EXPECT_EQ(number_at(status, 0, 4), QS_STATE_DONE);
  EXPECT_EQ(number_at(status, 4, 4), 0u);       // path published
  EXPECT_EQ(number_at(status, 8, 8), 1u);       // files visited
  EXPECT_EQ(number_at(status, 16, 8), kLarge);  // bytes visited
  EXPECT_EQ(number_at(status, 24, 8), kLarge);  // total bytes
  EXPECT_EQ(number_at(status, 32, 8), 1u);      // items
  EXPECT_EQ(number_at(status, 40, 4), QS_OK);   // status

  Arena row(0xA5);
  ASSERT_EQ(FillRow(0, row.record<qs_product_scan_row>()), QS_BUFFER_TOO_SMALL);
  EXPECT_EQ(number_at(row, 0, 8), 0u);  // item id
  EXPECT_EQ(number_at(row, 8, 8), 1u);  // group id
  EXPECT_EQ(number_at(row, 16, 4), QS_ROW_LARGE_FILE);
  EXPECT_EQ(number_at(row, 24, 8), kLarge);
  EXPECT_EQ(number_at(row, 32, 8), kDefaultModified);
  EXPECT_EQ(number_at(row, 40, 4), 1u);  // deletable
  EXPECT_EQ(number_at(row, 44, 4), 0u);  // preselect
  EXPECT_EQ(number_at(row, 48, 4), 0u);  // deleted
  EXPECT_EQ(number_at(row, 52, 4), QS_LARGE_ARCHIVES);

  Arena performance(0xA5);
  performance.record<qs_product_scan_performance>()->size = 192;
  ASSERT_EQ(
      qs_product_scan_get_performance(scan_, performance.record<qs_product_scan_performance>()),
      QS_OK);
  EXPECT_EQ(number_at(performance, 0, 4), 192u);
  EXPECT_EQ(number_at(performance, 4, 4), QS_SCAN_KIND_LARGE_FILES);
  EXPECT_EQ(number_at(performance, 88, 8), 1u);      // files visited
  EXPECT_EQ(number_at(performance, 96, 8), kLarge);  // bytes visited
  EXPECT_EQ(number_at(performance, 136, 8), 1u);     // rows
  EXPECT_EQ(number_at(performance, 144, 8), 1u);     // items
  EXPECT_EQ(number_at(performance, 152, 4), QS_OK);  // status
}

TEST_F(ScanRecords, A_row_index_out_of_range_stores_nothing_at_all) {
  for (const std::uint64_t index : {std::uint64_t{1}, std::uint64_t{2}, UINT64_MAX}) {
    SCOPED_TRACE(index);
    Arena record(0xA5);
    Char texts[4][16];
    std::memset(texts, 0xA5, sizeof(texts));
    std::uint64_t needed[4] = {11, 22, 33, 44};
    EXPECT_EQ(qs_product_scan_report_row(scan_, index, texts[0], 16, &needed[0], texts[1], 16,
                                         &needed[1], texts[2], 16, &needed[2], texts[3], 16,
                                         &needed[3], record.record<qs_product_scan_row>()),
              QS_NOT_FOUND);
    EXPECT_TRUE(record.OnlyChangedUpTo(0));
    for (const auto& text : texts) {
      for (const Char unit : text) {
        EXPECT_EQ(unit, Char{0xA5A5});
      }
    }
    EXPECT_EQ(needed[0], 11u);
    EXPECT_EQ(needed[1], 22u);
    EXPECT_EQ(needed[2], 33u);
    EXPECT_EQ(needed[3], 44u);

    std::uint64_t parent = 55;
    EXPECT_EQ(qs_product_scan_report_row_parent_group_id(scan_, index, &parent), QS_NOT_FOUND);
    EXPECT_EQ(parent, 55u);
  }
}

TEST(EmptyReport, Has_no_first_row) {
  SimulatedWindows machine;
  ScanHandle scan;
  qs_product_scan_row row = {};
  std::uint64_t parent = 0;
  EXPECT_EQ(qs_product_scan_report_row(scan, 0, nullptr, 0, nullptr, nullptr, 0, nullptr, nullptr,
                                       0, nullptr, nullptr, 0, nullptr, &row),
            QS_NOT_FOUND);
  EXPECT_EQ(qs_product_scan_report_row_parent_group_id(scan, 0, &parent), QS_NOT_FOUND);
}

}  // namespace
}  // namespace quastel::scan_tests
