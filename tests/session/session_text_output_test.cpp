#include <vector>

#include "session/session_fixture.h"
#include "support/named_case.h"

namespace quastel::session_tests {
namespace {

constexpr Char kCanary = 0xA5A5;
constexpr std::uint64_t kSize = 7;

// The three texts that a session hands out: C:\data\a.zip as path and current path, and its name.
struct TextCase : support::NamedCase {
  Text expected;
  qs_status (*query)(qs_session* session, Char* out, std::uint64_t capacity, std::uint64_t* needed);
};

// Each text of row 0, with room enough for the other one.
qs_status QueryPath(qs_session* session, Char* out, std::uint64_t capacity, std::uint64_t* needed) {
  Char room[64];
  qs_session_row row = {};
  const qs_status status =
      qs_session_report_row(session, 0, out, capacity, needed, room, 64, nullptr, &row);
  EXPECT_EQ(Text(room), u"a.zip");
  EXPECT_EQ(std::uint64_t{row.size}, kSize) << "the numbers come in any case";
  return status;
}

qs_status QueryName(qs_session* session, Char* out, std::uint64_t capacity, std::uint64_t* needed) {
  Char room[64];
  qs_session_row row = {};
  const qs_status status =
      qs_session_report_row(session, 0, room, 64, nullptr, out, capacity, needed, &row);
  EXPECT_EQ(Text(room), u"C:\\data\\a.zip");
  EXPECT_EQ(std::uint64_t{row.size}, kSize) << "the numbers come in any case";
  return status;
}

class SessionText : public ::testing::TestWithParam<TextCase> {
 protected:
  SessionText() {
    machine_.AddSizedFile(u"C:\\data\\a.zip", kSize);
    EXPECT_EQ(session_.Scan(u"C:\\data"), QS_OK);
  }

  qs_status Query(Char* out, std::uint64_t capacity, std::uint64_t* needed) {
    return GetParam().query(session_, out, capacity, needed);
  }

  SimulatedWindows machine_;
  SessionHandle session_;
};

TEST_P(SessionText, Is_refused_without_a_buffer_and_tells_the_capacity_that_it_needs) {
  const std::uint64_t required = GetParam().expected.size() + 1;
  for (const std::uint64_t capacity : {std::uint64_t{0}, required, UINT64_MAX}) {
    SCOPED_TRACE(capacity);
    std::uint64_t needed = 99;
    EXPECT_EQ(Query(nullptr, capacity, &needed), QS_BUFFER_TOO_SMALL);
    EXPECT_EQ(needed, required);
  }
}

TEST_P(SessionText, Is_refused_by_every_shorter_capacity_and_writes_nothing) {
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

TEST_P(SessionText, Is_copied_with_its_terminator_and_nothing_behind_it) {
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

INSTANTIATE_TEST_SUITE_P(
    All, SessionText,
    ::testing::Values(TextCase{{"current_path"}, u"C:\\data\\a.zip", qs_session_scan_current_path},
                      TextCase{{"row_path"}, u"C:\\data\\a.zip", QueryPath},
                      TextCase{{"row_name"}, u"a.zip", QueryName}),
    support::CaseName());

class SessionTexts : public SessionTest {};

TEST_F(SessionTexts, The_current_path_cannot_be_had_without_the_pointer_for_its_capacity) {
  AddFile(u"a.zip", kSize);
  ScanTree();
  std::vector<Char> buffer(64, kCanary);
  EXPECT_EQ(qs_session_scan_current_path(session_, buffer.data(), 64, nullptr),
            QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_session_scan_current_path(session_, nullptr, 0, nullptr), QS_INVALID_ARGUMENT);
  EXPECT_EQ(buffer, std::vector<Char>(64, kCanary));
}

TEST_F(SessionTexts, An_empty_current_path_needs_room_for_its_terminator) {
  std::vector<Char> buffer(2, kCanary);
  std::uint64_t needed = 99;
  EXPECT_EQ(qs_session_scan_current_path(session_, nullptr, 0, &needed), QS_BUFFER_TOO_SMALL);
  EXPECT_EQ(needed, 1u);
  EXPECT_EQ(qs_session_scan_current_path(session_, buffer.data(), 0, &needed), QS_BUFFER_TOO_SMALL);
  EXPECT_EQ(buffer, std::vector<Char>(2, kCanary));
  EXPECT_EQ(qs_session_scan_current_path(session_, buffer.data(), 1, &needed), QS_OK);
  EXPECT_EQ(buffer, (std::vector<Char>{0, kCanary}));
}

TEST_F(SessionTexts, The_texts_of_a_row_need_no_pointers_for_their_capacities) {
  AddFile(u"a.zip", kSize);
  ScanTree();
  std::vector<Char> path(12, kCanary);
  std::vector<Char> name(6, kCanary);
  qs_session_row row = {};
  EXPECT_EQ(qs_session_report_row(session_, 0, nullptr, 0, nullptr, nullptr, 0, nullptr, &row),
            QS_BUFFER_TOO_SMALL);
  EXPECT_EQ(
      qs_session_report_row(session_, 0, path.data(), 11, nullptr, name.data(), 6, nullptr, &row),
      QS_OK);
  EXPECT_EQ(Text(path.data()), u"C:\\t\\a.zip");
  EXPECT_EQ(path[11], kCanary);
  EXPECT_EQ(Text(name.data()), u"a.zip");
}

TEST_F(SessionTexts, The_texts_of_a_row_are_each_copied_or_refused_by_themselves) {
  AddFile(u"a.zip", kSize);
  ScanTree();
  const Text expected[2] = {u"C:\\t\\a.zip", u"a.zip"};
  for (unsigned refused = 0; refused < 4; ++refused) {
    SCOPED_TRACE(refused);
    std::vector<Char> buffers[2];
    std::uint64_t capacities[2] = {};
    std::uint64_t needed[2] = {};
    for (unsigned i = 0; i < 2; ++i) {
      buffers[i].assign(32, kCanary);
      capacities[i] = expected[i].size() + ((refused >> i & 1) != 0 ? 0 : 1);
    }
    qs_session_row row = {};
    EXPECT_EQ(qs_session_report_row(session_, 0, buffers[0].data(), capacities[0], &needed[0],
                                    buffers[1].data(), capacities[1], &needed[1], &row),
              refused == 0 ? QS_OK : QS_BUFFER_TOO_SMALL);
    EXPECT_EQ(std::uint64_t{row.size}, kSize);
    EXPECT_EQ(std::uint64_t{row.modified}, kDefaultModified);
    for (unsigned i = 0; i < 2; ++i) {
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

}  // namespace
}  // namespace quastel::session_tests
