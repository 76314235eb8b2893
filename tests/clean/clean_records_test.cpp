// What the two polls of a clean write, byte by byte.

#include <cstring>

#include "clean/clean_fixture.h"

namespace quastel::clean_tests {
namespace {

constexpr unsigned char kFill = 0xEE;
constexpr std::size_t kBytes = 600;

struct alignas(8) Buffer {
  unsigned char bytes[kBytes];

  Buffer() { std::memset(bytes, kFill, sizeof(bytes)); }
  template <typename Record>
  Record* As() {
    return reinterpret_cast<Record*>(bytes);
  }
  std::uint64_t Number(std::size_t offset, std::size_t width) const {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < width; ++i) {
      value |= std::uint64_t{bytes[offset + i]} << (8 * i);
    }
    return value;
  }
  void SetSize(std::uint32_t size) { std::memcpy(bytes, &size, sizeof(size)); }
  bool IsUntouchedFrom(std::size_t offset) const {
    for (std::size_t i = offset; i < kBytes; ++i) {
      if (bytes[i] != kFill) {
        return false;
      }
    }
    return true;
  }
};

class CleanRecords : public CleanTest {
 protected:
  // Two deleted, one failed: every member has another value.
  void CleanThree() {
    const Paths paths = AddFindings(4);
    ScanTree();
    const Ids ids = IdsOf({paths[0], paths[1], paths[2]});
    machine_.Lock(paths[1]);
    EXPECT_EQ(CleanIds(ids), QS_OK);
  }
};

TEST_F(CleanRecords, The_poll_fills_its_32_bytes_and_none_behind) {
  CleanThree();
  Buffer buffer;
  ASSERT_EQ(qs_product_scan_poll_clean(scan_, buffer.As<qs_product_clean_status>()), QS_OK);
  EXPECT_EQ(buffer.Number(0, 4), QS_STATE_DONE);
  EXPECT_EQ(buffer.Number(4, 4), 0u);
  EXPECT_EQ(buffer.Number(8, 8), 3u);
  EXPECT_EQ(buffer.Number(16, 8), 3u) << "a failed file was processed as well";
  EXPECT_EQ(buffer.Number(24, 4), QS_OK);
  EXPECT_EQ(buffer.Number(28, 4), 0u);
  EXPECT_TRUE(buffer.IsUntouchedFrom(32));
}

TEST_F(CleanRecords, The_detailed_poll_fills_its_56_bytes_and_none_behind) {
  CleanThree();
  Buffer buffer;
  buffer.SetSize(56);
  ASSERT_EQ(qs_product_scan_poll_clean_detailed(scan_, buffer.As<qs_product_clean_detail>()),
            QS_OK);
  EXPECT_EQ(buffer.Number(0, 4), 56u);
  EXPECT_EQ(buffer.Number(4, 4), QS_STATE_DONE);
  EXPECT_EQ(buffer.Number(8, 8), 3u);
  EXPECT_EQ(buffer.Number(16, 8), 3u);
  EXPECT_EQ(buffer.Number(24, 8), 2u);
  EXPECT_EQ(buffer.Number(32, 8), 1u);
  EXPECT_EQ(buffer.Number(40, 8), 2 * kLarge);
  EXPECT_EQ(buffer.Number(48, 4), QS_OK);
  EXPECT_EQ(buffer.Number(52, 4), 0u);
  EXPECT_TRUE(buffer.IsUntouchedFrom(56));
}

TEST_F(CleanRecords, The_status_of_a_failed_clean_stands_in_both) {
  const Text path = AddFinding(u"f");
  ScanTree();
  machine_.Lock(path);
  EXPECT_EQ(CleanPaths({path}), QS_FAILED);
  Buffer status;
  ASSERT_EQ(qs_product_scan_poll_clean(scan_, status.As<qs_product_clean_status>()), QS_OK);
  EXPECT_EQ(status.Number(0, 4), QS_STATE_FAILED);
  EXPECT_EQ(status.Number(24, 4), QS_FAILED);
  Buffer detail;
  detail.SetSize(56);
  ASSERT_EQ(qs_product_scan_poll_clean_detailed(scan_, detail.As<qs_product_clean_detail>()),
            QS_OK);
  EXPECT_EQ(detail.Number(4, 4), QS_STATE_FAILED);
  EXPECT_EQ(detail.Number(48, 4), QS_FAILED);
}

TEST_F(CleanRecords, A_detail_that_is_too_small_is_refused_and_left_alone) {
  CleanThree();
  for (const std::uint32_t size : {0u, 1u, 32u, 52u, 55u}) {
    SCOPED_TRACE(size);
    Buffer buffer;
    buffer.SetSize(size);
    EXPECT_EQ(qs_product_scan_poll_clean_detailed(scan_, buffer.As<qs_product_clean_detail>()),
              QS_INVALID_ARGUMENT);
    EXPECT_EQ(buffer.Number(0, 4), size);
    EXPECT_TRUE(buffer.IsUntouchedFrom(4));
  }
}

TEST_F(CleanRecords, A_larger_detail_is_filled_to_56_bytes_and_told_so) {
  CleanThree();
  for (const std::uint32_t size : {57u, 64u, 500u, UINT32_MAX}) {
    SCOPED_TRACE(size);
    Buffer buffer;
    buffer.SetSize(size);
    EXPECT_EQ(qs_product_scan_poll_clean_detailed(scan_, buffer.As<qs_product_clean_detail>()),
              QS_OK);
    EXPECT_EQ(buffer.Number(0, 4), 56u);
    EXPECT_EQ(buffer.Number(24, 8), 2u);
    EXPECT_TRUE(buffer.IsUntouchedFrom(56));
  }
}

TEST_F(CleanRecords, Null_is_an_invalid_argument) {
  Buffer buffer;
  buffer.SetSize(56);
  EXPECT_EQ(qs_product_scan_poll_clean(scan_, nullptr), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_product_scan_poll_clean_detailed(scan_, nullptr), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_product_scan_poll_clean(nullptr, buffer.As<qs_product_clean_status>()),
            QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_product_scan_poll_clean_detailed(nullptr, buffer.As<qs_product_clean_detail>()),
            QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_product_scan_poll_clean(nullptr, nullptr), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_product_scan_poll_clean_detailed(nullptr, nullptr), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_product_scan_cancel_clean(nullptr), QS_INVALID_ARGUMENT);
  EXPECT_EQ(buffer.Number(0, 4), 56u);
  EXPECT_TRUE(buffer.IsUntouchedFrom(4)) << "nothing is stored";
}

TEST_F(CleanRecords, A_new_handle_shows_an_idle_clean) {
  Buffer status;
  EXPECT_EQ(qs_product_scan_poll_clean(scan_, status.As<qs_product_clean_status>()), QS_OK);
  for (std::size_t i = 0; i < 32; ++i) {
    EXPECT_EQ(status.bytes[i], 0) << i;
  }
  Buffer detail;
  detail.SetSize(56);
  EXPECT_EQ(qs_product_scan_poll_clean_detailed(scan_, detail.As<qs_product_clean_detail>()),
            QS_OK);
  for (std::size_t i = 4; i < 56; ++i) {
    EXPECT_EQ(detail.bytes[i], 0) << i;
  }
}

}  // namespace
}  // namespace quastel::clean_tests
