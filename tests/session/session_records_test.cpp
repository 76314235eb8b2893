#include <algorithm>
#include <array>
#include <cstring>

#include "session/session_fixture.h"

namespace quastel::session_tests {
namespace {

static_assert(sizeof(qs_session_scan_status) == 36);
static_assert(sizeof(qs_session_row) == 20);
static_assert(sizeof(qs_session_clean_status) == 28);

// Room for a record with canaries on both sides. A caller aligns these records to 4 bytes.
class Arena {
 public:
  Arena(unsigned char fill, std::size_t front) : fill_(fill), front_(front) { bytes_.fill(fill); }

  template <typename Record>
  Record* record() {
    return reinterpret_cast<Record*>(bytes_.data() + front_);
  }

  // Whether everything but the first `size` bytes of the record is as it was.
  bool OnlyChangedUpTo(std::size_t size) const {
    const auto untouched = [this](unsigned char byte) { return byte == fill_; };
    const auto record = bytes_.begin() + static_cast<std::ptrdiff_t>(front_);
    return std::all_of(bytes_.begin(), record, untouched) &&
           std::all_of(record + static_cast<std::ptrdiff_t>(size), bytes_.end(), untouched);
  }

  std::string Bytes(std::size_t size) const {
    return std::string(reinterpret_cast<const char*>(bytes_.data()) + front_, size);
  }

  std::uint64_t NumberAt(std::size_t offset, std::size_t width) const {
    std::uint64_t number = 0;
    std::memcpy(&number, bytes_.data() + front_ + offset, width);
    return number;
  }

 private:
  const unsigned char fill_;
  const std::size_t front_;
  alignas(16) std::array<unsigned char, 256> bytes_;
};

// Three files of 1, 2 and 3 bytes; the clean of all of them stops at the last one.
class SessionRecords : public SessionTest {
 protected:
  SessionRecords() {
    AddFiles(3);
    ScanTree();
    machine_.SetAttributes(u"C:\\t\\f002", platform::kAttributeReadOnly);
    EXPECT_EQ(session_.Clean({0, 1, 2}), QS_FAILED);
  }

  // Fills two arenas of different canaries with one query.
  template <typename Query>
  Arena Filled(std::size_t size, std::size_t front, Query query) {
    Arena a(0xA5, front);
    Arena b(0x5A, front);
    query(a);
    query(b);
    EXPECT_TRUE(a.OnlyChangedUpTo(size));
    EXPECT_TRUE(b.OnlyChangedUpTo(size));
    EXPECT_EQ(a.Bytes(size), b.Bytes(size)) << "every byte of the record is written";
    return a;
  }
};

TEST_F(SessionRecords, Poll_scan_writes_every_one_of_36_bytes_and_no_other) {
  for (const std::size_t front : {64u, 68u}) {
    const Arena record = Filled(36, front, [&](Arena& arena) {
      EXPECT_EQ(qs_session_poll_scan(session_, arena.record<qs_session_scan_status>()), QS_OK);
    });
    EXPECT_EQ(record.NumberAt(0, 4), QS_STATE_DONE);
    EXPECT_EQ(record.NumberAt(4, 4), 0u);   // reserved
    EXPECT_EQ(record.NumberAt(8, 8), 3u);   // files visited
    EXPECT_EQ(record.NumberAt(16, 8), 6u);  // bytes visited
    EXPECT_EQ(record.NumberAt(24, 8), 3u);  // rows
    EXPECT_EQ(record.NumberAt(32, 4), QS_OK);
  }
}

TEST_F(SessionRecords, Poll_clean_writes_every_one_of_28_bytes_and_no_other) {
  for (const std::size_t front : {64u, 68u}) {
    const Arena record = Filled(28, front, [&](Arena& arena) {
      EXPECT_EQ(qs_session_poll_clean(session_, arena.record<qs_session_clean_status>()), QS_OK);
    });
    EXPECT_EQ(record.NumberAt(0, 4), QS_STATE_FAILED);
    EXPECT_EQ(record.NumberAt(4, 4), 0u);   // reserved
    EXPECT_EQ(record.NumberAt(8, 8), 3u);   // requested
    EXPECT_EQ(record.NumberAt(16, 8), 2u);  // processed
    EXPECT_EQ(record.NumberAt(24, 4), QS_FAILED);
  }
}

TEST_F(SessionRecords, A_row_writes_every_one_of_20_bytes_and_no_other) {
  for (const std::size_t front : {64u, 68u}) {
    for (std::uint64_t index = 0; index < 3; ++index) {
      const Arena record = Filled(20, front, [&](Arena& arena) {
        EXPECT_EQ(qs_session_report_row(session_, index, nullptr, 0, nullptr, nullptr, 0, nullptr,
                                        arena.record<qs_session_row>()),
                  QS_BUFFER_TOO_SMALL);
      });
      EXPECT_EQ(record.NumberAt(0, 8), index + 1);         // size
      EXPECT_EQ(record.NumberAt(8, 8), kDefaultModified);  // modified
      EXPECT_EQ(record.NumberAt(16, 4), index < 2 ? 1u : 0u);
    }
  }
}

TEST_F(SessionRecords, A_status_of_a_scan_other_than_zero_stands_at_its_offset) {
  InsideCall(machine_, Call::kFindNext, 1, [&] { qs_session_cancel_scan(session_); });
  EXPECT_EQ(session_.Scan(u"C:\\t"), QS_CANCELLED);
  machine_.SetHook(nullptr);
  Arena record(0xA5, 64);
  EXPECT_EQ(qs_session_poll_scan(session_, record.record<qs_session_scan_status>()), QS_OK);
  EXPECT_EQ(record.NumberAt(0, 4), QS_STATE_CANCELLED);
  EXPECT_EQ(record.NumberAt(32, 4), QS_CANCELLED);
}

TEST_F(SessionRecords, A_size_of_more_than_32_bits_is_whole_in_its_row_and_the_bytes_visited) {
  AddFile(u"huge", (std::uint64_t{1} << 40) + 5);
  AddFile(u"zero", 0);
  ASSERT_EQ(session_.Scan(u"C:\\t"), QS_OK);
  EXPECT_EQ(ReadRow(session_, 1).size, (std::uint64_t{1} << 40) + 5);
  EXPECT_EQ(ReadRow(session_, 2).size, 0u);
  EXPECT_EQ(ScanOf(session_).bytes_visited, (std::uint64_t{1} << 40) + 5 + 3);
}

TEST_F(SessionRecords, A_row_index_out_of_range_stores_nothing_at_all) {
  for (const std::uint64_t index : {std::uint64_t{3}, std::uint64_t{4}, UINT64_MAX}) {
    SCOPED_TRACE(index);
    Arena record(0xA5, 64);
    Char texts[2][32];
    std::memset(texts, 0xA5, sizeof(texts));
    std::uint64_t needed[2] = {11, 22};
    EXPECT_EQ(qs_session_report_row(session_, index, texts[0], 32, &needed[0], texts[1], 32,
                                    &needed[1], record.record<qs_session_row>()),
              QS_NOT_FOUND);
    EXPECT_TRUE(record.OnlyChangedUpTo(0));
    for (const auto& text : texts) {
      EXPECT_TRUE(std::all_of(text, text + 32, [](Char unit) { return unit == 0xA5A5; }));
    }
    EXPECT_EQ(needed[0], 11u);
    EXPECT_EQ(needed[1], 22u);
  }
}

TEST(SessionEmptyReport, Has_no_first_row) {
  SimulatedWindows machine;
  SessionHandle session;
  qs_session_row row = {};
  EXPECT_EQ(qs_session_report_row(session, 0, nullptr, 0, nullptr, nullptr, 0, nullptr, &row),
            QS_NOT_FOUND);
}

TEST_F(SessionRecords, A_refused_query_writes_nothing) {
  Arena record(0xA5, 64);
  EXPECT_EQ(qs_session_poll_scan(nullptr, record.record<qs_session_scan_status>()),
            QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_session_poll_clean(nullptr, record.record<qs_session_clean_status>()),
            QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_session_report_count(nullptr, record.record<std::uint64_t>()), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_session_report_row(nullptr, 0, nullptr, 0, record.record<std::uint64_t>(), nullptr,
                                  0, nullptr, record.record<qs_session_row>()),
            QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_session_scan_current_path(nullptr, record.record<Char>(), 8,
                                         record.record<std::uint64_t>()),
            QS_INVALID_ARGUMENT);
  EXPECT_TRUE(record.OnlyChangedUpTo(0));
}

}  // namespace
}  // namespace quastel::session_tests
