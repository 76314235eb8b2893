#include "session/session_fixture.h"

#include <algorithm>
#include <iterator>
#include <ostream>
#include <sstream>

namespace quastel::session_tests {
namespace {

template <typename Number>
void AppendNumber(std::string& bytes, Number number) {
  bytes.append(reinterpret_cast<const char*>(&number), sizeof(number));
}

}  // namespace

void PrintTo(const Row& row, std::ostream* out) {
  *out << Utf8(row.path) << " (" << Utf8(row.name) << "), " << row.size << " bytes, "
       << row.modified << (row.deleted == 0 ? "" : ", deleted ");
  if (row.deleted != 0) {
    *out << row.deleted;
  }
}

void PrintTo(const ScanBlock& block, std::ostream* out) {
  *out << "state " << block.state << ", files " << block.files_visited << ", bytes "
       << block.bytes_visited << ", rows " << block.row_count << ", status " << block.status;
}

void PrintTo(const CleanBlock& block, std::ostream* out) {
  *out << "state " << block.state << ", requested " << block.requested << ", processed "
       << block.processed << ", status " << block.status;
}

std::uint32_t StateAfter(qs_status status) {
  return status == QS_OK          ? QS_STATE_DONE
         : status == QS_CANCELLED ? QS_STATE_CANCELLED
                                  : QS_STATE_FAILED;
}

CleanBlock Ended(qs_status status, std::uint64_t requested, std::uint64_t processed) {
  return {StateAfter(status), requested, processed, status};
}

SessionHandle::SessionHandle() {
  EXPECT_EQ(qs_session_create(&session_), QS_OK);
}

SessionHandle::~SessionHandle() {
  EXPECT_EQ(qs_session_destroy(session_), QS_OK);
}

qs_status SessionHandle::Scan(const Text& root, std::uint32_t mode) const {
  return qs_session_start_scan(session_, root.c_str(), mode);
}

qs_status SessionHandle::Clean(const Ids& ids) const {
  return qs_session_start_clean(session_, ids.data(), ids.size());
}

std::uint64_t RowCountOf(qs_session* session) {
  std::uint64_t count = 99;
  EXPECT_EQ(qs_session_report_count(session, &count), QS_OK);
  return count;
}

Row ReadRow(qs_session* session, std::uint64_t index) {
  qs_session_row numbers = {};
  std::uint64_t path_needed = 0;
  std::uint64_t name_needed = 0;
  EXPECT_EQ(qs_session_report_row(session, index, nullptr, 0, &path_needed, nullptr, 0,
                                  &name_needed, &numbers),
            QS_BUFFER_TOO_SMALL);
  Text path(path_needed, Char{'?'});
  Text name(name_needed, Char{'?'});
  EXPECT_EQ(qs_session_report_row(session, index, path.data(), path_needed, nullptr, name.data(),
                                  name_needed, nullptr, &numbers),
            QS_OK);
  path.resize(path.empty() ? 0 : path.size() - 1);
  name.resize(name.empty() ? 0 : name.size() - 1);
  return {path, name, numbers.size, numbers.modified, numbers.deleted};
}

std::vector<Row> ReadReport(qs_session* session) {
  std::vector<Row> rows;
  const std::uint64_t count = RowCountOf(session);
  for (std::uint64_t i = 0; i < count; ++i) {
    rows.push_back(ReadRow(session, i));
  }
  return rows;
}

Paths PathsOf(const std::vector<Row>& rows) {
  Paths paths;
  for (const Row& row : rows) {
    paths.push_back(row.path);
  }
  return paths;
}

Ids MarksOf(qs_session* session) {
  Ids marks;
  const std::vector<Row> rows = ReadReport(session);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (rows[i].deleted != 0) {
      EXPECT_EQ(rows[i].deleted, 1u);
      marks.push_back(i);
    }
  }
  return marks;
}

Ids IdsOf(qs_session* session, const Paths& paths) {
  const Paths all = PathsOf(ReadReport(session));
  Ids ids;
  for (const Text& path : paths) {
    const auto found = std::find(all.begin(), all.end(), path);
    EXPECT_EQ(std::count(all.begin(), all.end(), path), 1) << Utf8(path);
    ids.push_back(static_cast<std::uint64_t>(found - all.begin()));
  }
  return ids;
}

Ids UpTo(std::uint64_t count) {
  Ids ids;
  for (std::uint64_t i = 0; i < count; ++i) {
    ids.push_back(i);
  }
  return ids;
}

ScanBlock ScanOf(qs_session* session) {
  qs_session_scan_status status = {};
  status.reserved = 99;
  EXPECT_EQ(qs_session_poll_scan(session, &status), QS_OK);
  EXPECT_EQ(std::uint32_t{status.reserved}, 0u);
  return {status.state, status.files_visited, status.bytes_visited, status.row_count,
          status.status};
}

CleanBlock CleanOf(qs_session* session) {
  qs_session_clean_status status = {};
  status.reserved = 99;
  EXPECT_EQ(qs_session_poll_clean(session, &status), QS_OK);
  EXPECT_EQ(std::uint32_t{status.reserved}, 0u);
  return {status.state, status.requested, status.processed, status.status};
}

Text CurrentPathOf(qs_session* session) {
  for (;;) {
    std::uint64_t needed = 0;
    EXPECT_EQ(qs_session_scan_current_path(session, nullptr, 0, &needed), QS_BUFFER_TOO_SMALL);
    Text text(needed, Char{'?'});
    // The path may be a longer one meanwhile.
    const qs_status status = qs_session_scan_current_path(session, text.data(), needed, &needed);
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

std::string EverythingOf(qs_session* session) {
  std::string bytes = ::testing::PrintToString(ScanOf(session)) + "\n" +
                      ::testing::PrintToString(CleanOf(session)) + "\n" +
                      Utf8(CurrentPathOf(session)) + "\n";
  for (const Row& row : ReadReport(session)) {
    bytes += Utf8(row.path) + "\n" + Utf8(row.name) + "\n";
    AppendNumber(bytes, row.size);
    AppendNumber(bytes, row.modified);
    AppendNumber(bytes, row.deleted);
  }
  return bytes;
}

Lines DiskOf(const SimulatedWindows& machine) {
  Lines lines;
  std::istringstream text(machine.Describe());
  for (std::string line; std::getline(text, line);) {
    lines.push_back(line);
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

Lines GoneSince(const Lines& before, const SimulatedWindows& machine) {
  const Lines now = DiskOf(machine);
  Lines gone;
  std::set_difference(before.begin(), before.end(), now.begin(), now.end(),
                      std::back_inserter(gone));
  for (std::string& line : gone) {
    // The names of these tests hold no blanks: the first one ends the path.
    line.resize(line.find(' '));
  }
  return gone;
}

Lines NewSince(const Lines& before, const SimulatedWindows& machine) {
  const Lines now = DiskOf(machine);
  Lines added;
  std::set_difference(now.begin(), now.end(), before.begin(), before.end(),
                      std::back_inserter(added));
  return added;
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

SessionTest::~SessionTest() {
  machine_.SetHook(nullptr);
  EXPECT_EQ(machine_.open_handles(), 0u);
}

Text SessionTest::AddFile(TextView name, std::uint64_t size, FileOptions options) {
  Text path = u"C:\\t\\" + Text(name);
  machine_.AddSizedFile(path, size, 0, options);
  return path;
}

Paths SessionTest::AddFiles(std::size_t count) {
  Paths paths;
  for (std::size_t i = 0; i < count; ++i) {
    paths.push_back(AddFile(Wide("f" + std::to_string(1000 + i).substr(1)), i + 1));
  }
  return paths;
}

void SessionTest::ScanTree(std::uint32_t mode) {
  ASSERT_EQ(session_.Scan(u"C:\\t", mode), QS_OK);
  machine_.ClearFaults();
  machine_.ClearRecord();
  machine_.SetRecording(true);
}

Lines SessionTest::LeftOf(const Paths& paths) const {
  Lines left;
  for (const Text& path : paths) {
    if (machine_.Exists(path)) {
      left.push_back(Utf8(path));
    }
  }
  return left;
}

}  // namespace quastel::session_tests
