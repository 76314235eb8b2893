// The session as its caller sees it, on real files.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "quastel_core.h"
#include "real_tree.h"
#include "text_query.h"

namespace quastel::dll_test {
namespace {

constexpr std::uint64_t kLimit = 10'485'760;

class Session {
 public:
  Session() { EXPECT_EQ(QS_OK, qs_session_create(&session_)); }
  ~Session() { EXPECT_EQ(QS_OK, qs_session_destroy(session_)); }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  qs_session* get() const { return session_; }
  qs_status Scan(const std::wstring& root, std::uint32_t mode = QS_SESSION_ALL_FILES) const {
    return qs_session_start_scan(session_, root.c_str(), mode);
  }
  qs_status Clean(const std::vector<std::uint64_t>& indexes) const {
    return qs_session_start_clean(session_, indexes.data(), indexes.size());
  }

 private:
  qs_session* session_ = nullptr;
};

struct Row {
  std::wstring path;
  std::wstring name;
  std::uint64_t size = 0;
  std::uint64_t modified = 0;
  std::uint32_t deleted = 0;
};

Row ReadRow(const Session& session, std::uint64_t index) {
  std::uint64_t path_needed = 0;
  std::uint64_t name_needed = 0;
  qs_session_row numbers{};
  EXPECT_EQ(QS_BUFFER_TOO_SMALL,
            qs_session_report_row(session.get(), index, nullptr, 0, &path_needed, nullptr, 0,
                                  &name_needed, &numbers));
  std::wstring path(path_needed, L'?');
  std::wstring name(name_needed, L'?');
  EXPECT_EQ(QS_OK, qs_session_report_row(session.get(), index, path.data(), path_needed, nullptr,
                                         name.data(), name_needed, nullptr, &numbers));
  EXPECT_EQ(L'\0', path.back());
  EXPECT_EQ(L'\0', name.back());
  path.pop_back();
  name.pop_back();
  return {path, name, numbers.size, numbers.modified, numbers.deleted};
}

std::vector<Row> ReadRows(const Session& session) {
  std::uint64_t count = 0;
  EXPECT_EQ(QS_OK, qs_session_report_count(session.get(), &count));
  std::vector<Row> rows;
  for (std::uint64_t i = 0; i < count; ++i) {
    rows.push_back(ReadRow(session, i));
  }
  return rows;
}

qs_session_scan_status PollScan(const Session& session) {
  qs_session_scan_status status{};
  EXPECT_EQ(QS_OK, qs_session_poll_scan(session.get(), &status));
  return status;
}

// Compares the numbers of the clean's record.
void ExpectClean(const Session& session, std::uint32_t state, std::uint64_t requested,
                 std::uint64_t processed, qs_status result) {
  qs_session_clean_status status{};
  EXPECT_EQ(QS_OK, qs_session_poll_clean(session.get(), &status));
  EXPECT_EQ(state, status.state);
  EXPECT_EQ(requested, std::uint64_t{status.requested});
  EXPECT_EQ(processed, std::uint64_t{status.processed});
  EXPECT_EQ(result, status.status);
}

// The row of the file with this name.
std::uint64_t IndexOf(const std::vector<Row>& rows, const std::wstring& name) {
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (rows[i].name == name) {
      return i;
    }
  }
  ADD_FAILURE() << "there is no such row";
  return UINT64_MAX;
}

TEST(Session, Reports_every_file_of_a_tree_with_its_size_and_time) {
  const RealTree tree;
  tree.AddFile(L"a.txt", "12345");
  tree.AddFile(L"sub\\\u00e4.txt", "");
  tree.AddFolder(L"empty");
  const Session session;
  ASSERT_EQ(QS_OK, session.Scan(tree.root()));
  const std::vector<Row> rows = ReadRows(session);
  ASSERT_EQ(2u, rows.size());
  EXPECT_EQ(tree.Path(L"a.txt"), rows[0].path);
  EXPECT_EQ(L"a.txt", rows[0].name);
  EXPECT_EQ(5u, rows[0].size);
  EXPECT_GT(rows[0].modified, 504'911'232'000'000'000u);
  EXPECT_EQ(0u, rows[0].deleted);
  EXPECT_EQ(1, qs_file_matches_snapshot(rows[0].path.c_str(), 5,
                                        static_cast<std::int64_t>(rows[0].modified)));
  EXPECT_EQ(tree.Path(L"sub\\\u00e4.txt"), rows[1].path);
  EXPECT_EQ(0u, rows[1].size);

  const qs_session_scan_status status = PollScan(session);
  EXPECT_EQ(QS_STATE_DONE, status.state);
  EXPECT_EQ(0u, status.reserved);
  EXPECT_EQ(2u, std::uint64_t{status.files_visited});
  EXPECT_EQ(5u, std::uint64_t{status.bytes_visited});
  EXPECT_EQ(2u, std::uint64_t{status.row_count});
  EXPECT_EQ(QS_OK, status.status);
  EXPECT_EQ(rows[1].path,
            QueryText([&](qs_char* out, std::uint64_t capacity, std::uint64_t* needed) {
              return qs_session_scan_current_path(session.get(), out, capacity, needed);
            }));
}

TEST(Session, Keeps_only_files_above_the_limit_in_the_mode_for_large_files) {
  const RealTree tree;
  tree.AddSparseFile(L"exact.bin", kLimit);
  tree.AddSparseFile(L"above.bin", kLimit + 1);
  const Session session;
  ASSERT_EQ(QS_OK, session.Scan(tree.root(), QS_SESSION_LARGE_FILES));
  const std::vector<Row> rows = ReadRows(session);
  ASSERT_EQ(1u, rows.size());
  EXPECT_EQ(L"above.bin", rows[0].name);
  EXPECT_EQ(2u, std::uint64_t{PollScan(session).files_visited});
}

TEST(Session, Deletes_the_named_files_and_no_others) {
  const RealTree tree;
  for (const wchar_t* name : {L"a", L"b", L"sub\\c", L"sub\\d"}) {
    tree.AddFile(name, "x");
  }
  const Session session;
  ASSERT_EQ(QS_OK, session.Scan(tree.root()));
  const std::vector<Row> rows = ReadRows(session);
  ASSERT_EQ(4u, rows.size());
  EXPECT_EQ(QS_OK, session.Clean({IndexOf(rows, L"c"), IndexOf(rows, L"a")}));
  ExpectClean(session, QS_STATE_DONE, 2, 2, QS_OK);
  EXPECT_FALSE(std::filesystem::exists(tree.Path(L"a")));
  EXPECT_TRUE(std::filesystem::exists(tree.Path(L"b")));
  EXPECT_FALSE(std::filesystem::exists(tree.Path(L"sub\\c")));
  EXPECT_TRUE(std::filesystem::exists(tree.Path(L"sub\\d")));
  for (const Row& row : ReadRows(session)) {
    EXPECT_EQ(row.name == L"a" || row.name == L"c" ? 1u : 0u, row.deleted);
  }
  EXPECT_EQ(QS_OK, session.Clean({IndexOf(rows, L"d")}));
  EXPECT_TRUE(std::filesystem::is_directory(tree.Path(L"sub"))) << "a folder is never removed";
}

TEST(Session, Stops_its_clean_at_a_file_that_changed_since_the_scan) {
  const RealTree tree;
  for (const wchar_t* name : {L"a", L"b", L"c"}) {
    tree.AddFile(name, "x");
  }
  const Session session;
  ASSERT_EQ(QS_OK, session.Scan(tree.root()));
  const std::vector<Row> rows = ReadRows(session);
  tree.AddFile(L"b", "longer");
  EXPECT_EQ(QS_FAILED,
            session.Clean({IndexOf(rows, L"a"), IndexOf(rows, L"b"), IndexOf(rows, L"c")}));
  ExpectClean(session, QS_STATE_FAILED, 3, 1, QS_FAILED);
  EXPECT_FALSE(std::filesystem::exists(tree.Path(L"a")));
  EXPECT_TRUE(std::filesystem::exists(tree.Path(L"b")));
  EXPECT_TRUE(std::filesystem::exists(tree.Path(L"c")));
}

TEST(Session, Refuses_indexes_that_are_unknown_or_repeated_and_scans_that_only_inspect) {
  const RealTree tree;
  tree.AddFile(L"a", "x");
  const Session session;
  EXPECT_EQ(QS_UNSUPPORTED, session.Clean({}));
  ASSERT_EQ(QS_OK, session.Scan(tree.root()));
  EXPECT_EQ(QS_NOT_FOUND, session.Clean({1}));
  EXPECT_EQ(QS_INVALID_ARGUMENT, session.Clean({0, 0}));
  EXPECT_EQ(QS_INVALID_ARGUMENT, qs_session_start_clean(session.get(), nullptr, 1));
  EXPECT_EQ(QS_INVALID_ARGUMENT, session.Scan(L""));
  EXPECT_EQ(QS_INVALID_ARGUMENT, session.Scan(tree.root(), 3));
  ASSERT_EQ(QS_OK, session.Scan(tree.root(), QS_SESSION_INSPECT));
  EXPECT_EQ(QS_UNSUPPORTED, session.Clean({0}));
  EXPECT_TRUE(std::filesystem::exists(tree.Path(L"a")));
  ExpectClean(session, QS_STATE_IDLE, 0, 0, QS_OK);
}

TEST(Session, Does_not_report_what_is_behind_a_link) {
  const RealTree scratch;
  const std::wstring tree = LinkedTree(scratch);
  const Session session;
  ASSERT_EQ(QS_OK, session.Scan(tree));
  const std::vector<Row> rows = ReadRows(session);
  ASSERT_EQ(1u, rows.size());
  EXPECT_EQ(L"inside.txt", rows[0].name);
}

TEST(Session, Is_cancelled_from_another_thread_and_refuses_all_else_meanwhile) {
  const RealTree tree;
  tree.AddFile(L"a", "x");
  ASSERT_EQ(0, _wputenv_s(L"QUASTEL_SCAN_HOLD_MS", L"5000"));
  const Session session;
  qs_status result = QS_OK;
  std::thread runner([&] { result = session.Scan(tree.root()); });
  const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (PollScan(session).state != QS_STATE_RUNNING && std::chrono::steady_clock::now() < limit) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  EXPECT_EQ(QS_STATE_RUNNING, PollScan(session).state);
  EXPECT_EQ(QS_BUSY, session.Scan(tree.root()));
  EXPECT_EQ(QS_BUSY, session.Clean({}));
  EXPECT_EQ(QS_BUSY, qs_session_destroy(session.get()));
  EXPECT_EQ(QS_OK, qs_session_cancel_scan(session.get()));
  runner.join();
  EXPECT_EQ(0, _wputenv_s(L"QUASTEL_SCAN_HOLD_MS", L""));
  EXPECT_EQ(QS_CANCELLED, result);
  EXPECT_EQ(QS_STATE_CANCELLED, PollScan(session).state);
  EXPECT_TRUE(ReadRows(session).empty());
  EXPECT_EQ(QS_UNSUPPORTED, session.Clean({}));
  EXPECT_EQ(QS_OK, session.Scan(tree.root()));
  EXPECT_EQ(QS_OK, session.Clean({0}));
}

TEST(Session, Can_be_read_while_it_cleans) {
  constexpr std::uint64_t kFiles = 400;
  const RealTree tree;
  std::vector<std::uint64_t> all;
  for (std::uint64_t i = 0; i < kFiles; ++i) {
    tree.AddFile(L"d" + std::to_wstring(i % 4) + L"\\f" + std::to_wstring(i), "x");
    all.push_back(i);
  }
  const Session session;
  ASSERT_EQ(QS_OK, session.Scan(tree.root()));
  qs_status result = QS_FAILED;
  std::atomic<bool> ended{false};
  std::thread runner([&] {
    result = session.Clean(all);
    ended = true;
  });
  std::uint64_t processed = 0;
  while (!ended) {
    qs_session_clean_status status{};
    EXPECT_EQ(QS_OK, qs_session_poll_clean(session.get(), &status));
    EXPECT_GE(std::uint64_t{status.processed}, processed);
    processed = status.processed;
    if (processed > 0) {
      EXPECT_EQ(1u, ReadRow(session, processed - 1).deleted);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  runner.join();
  EXPECT_EQ(QS_OK, result);
  ExpectClean(session, QS_STATE_DONE, kFiles, kFiles, QS_OK);
}

}  // namespace
}  // namespace quastel::dll_test
