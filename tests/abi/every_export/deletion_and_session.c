/* Deletion and the session. */
#include <string.h>
#include <wchar.h>

#include "expect.h"
#include "parts.h"
#include "scratch.h"

enum { kUnits = 1024 };

void call_deletion_exports(void) {
  put_file(L"gone.txt", "gone");
  EXPECT(1, qs_delete_permanently(in_scratch(L"gone.txt")));
  CHECK(!is_there(L"gone.txt"));
  EXPECT(0, qs_delete_permanently(NULL));

  /* An empty folder is the one thing that is removed without a Recycle Bin. */
  put_folder(L"emptied");
  EXPECT(1, qs_move_to_recycle_bin(in_scratch(L"emptied")));
  CHECK(!is_there(L"emptied"));
  EXPECT(0, qs_move_to_recycle_bin(NULL));

  put_file(L"same.txt", "same");
  const snapshot same = snapshot_of(L"", L"same.txt");
  const int64_t size = (int64_t)same.size;
  const int64_t time = (int64_t)same.last_write;
  CHECK(size == 4);
  EXPECT(1, qs_file_matches_snapshot(in_scratch(L"same.txt"), size, time));
  EXPECT(0, qs_file_matches_snapshot(in_scratch(L"same.txt"), size, time + 1));
  EXPECT(0, qs_file_matches_snapshot(NULL, size, time));

  EXPECT(0, qs_delete_snapshot_permanently(in_scratch(L"same.txt"), size + 1, time));
  CHECK(is_there(L"same.txt"));
  EXPECT(0, qs_delete_snapshot_permanently(NULL, size, time));
  EXPECT(1, qs_delete_snapshot_permanently(in_scratch(L"same.txt"), size, time));
  CHECK(!is_there(L"same.txt"));

  put_file(L"recycled.txt", "recycled");
  const snapshot recycled = snapshot_of(L"", L"recycled.txt");
  EXPECT(0, qs_move_snapshot_to_recycle_bin(in_scratch(L"recycled.txt"), 1,
                                            (int64_t)recycled.last_write));
  CHECK(is_there(L"recycled.txt"));
  EXPECT(0, qs_move_snapshot_to_recycle_bin(NULL, 8, (int64_t)recycled.last_write));
  EXPECT(1, qs_move_snapshot_to_recycle_bin(in_scratch(L"recycled.txt"), (int64_t)recycled.size,
                                            (int64_t)recycled.last_write));
  CHECK(!is_there(L"recycled.txt"));
}

static void clean_with_session(qs_session* session) {
  const uint64_t indexes[] = {0};
  qs_session_clean_status cleaned;
  memset(&cleaned, 0xEE, sizeof(cleaned));
  EXPECT(QS_INVALID_ARGUMENT, qs_session_start_clean(NULL, indexes, 1));
  EXPECT(QS_INVALID_ARGUMENT, qs_session_start_clean(session, NULL, 1));
  CHECK(is_there(L"session\\one.txt"));
  EXPECT(QS_OK, qs_session_start_clean(session, indexes, 1));
  CHECK(!is_there(L"session\\one.txt"));
  EXPECT(QS_OK, qs_session_start_clean(session, NULL, 0));
  EXPECT(QS_OK, qs_session_start_clean(session, indexes, 0));

  EXPECT(QS_OK, qs_session_poll_clean(session, &cleaned));
  CHECK(cleaned.state == QS_STATE_DONE && cleaned.status == QS_OK && cleaned.reserved == 0);
  CHECK(cleaned.requested == 0 && cleaned.processed == 0);
  EXPECT(QS_INVALID_ARGUMENT, qs_session_poll_clean(NULL, &cleaned));
  EXPECT(QS_INVALID_ARGUMENT, qs_session_poll_clean(session, NULL));

  EXPECT(QS_OK, qs_session_cancel_clean(session));
  EXPECT(QS_INVALID_ARGUMENT, qs_session_cancel_clean(NULL));
}

static void read_session(qs_session* session) {
  qs_char path[kUnits];
  qs_char name[kUnits];
  uint64_t path_needed = 0;
  uint64_t name_needed = 0;
  uint64_t count = 0;
  EXPECT(QS_OK, qs_session_scan_current_path(session, path, kUnits, &path_needed));
  CHECK(wcscmp(path, in_scratch(L"session\\one.txt")) == 0);
  EXPECT(QS_INVALID_ARGUMENT, qs_session_scan_current_path(NULL, path, kUnits, &path_needed));
  EXPECT(QS_INVALID_ARGUMENT, qs_session_scan_current_path(session, path, kUnits, NULL));
  EXPECT(QS_BUFFER_TOO_SMALL, qs_session_scan_current_path(session, NULL, 0, &path_needed));
  CHECK(path_needed == wcslen(path) + 1);

  EXPECT(QS_OK, qs_session_report_count(session, &count));
  CHECK(count == 1);
  EXPECT(QS_INVALID_ARGUMENT, qs_session_report_count(NULL, &count));
  EXPECT(QS_INVALID_ARGUMENT, qs_session_report_count(session, NULL));

  qs_session_row row;
  memset(&row, 0xEE, sizeof(row));
  EXPECT(QS_OK, qs_session_report_row(session, 0, path, kUnits, &path_needed, name, kUnits,
                                      &name_needed, &row));
  CHECK(wcscmp(name, L"one.txt") == 0 && name_needed == 8 && path_needed == wcslen(path) + 1);
  CHECK(row.size == 3 && row.modified > 0 && row.deleted == 0);
  EXPECT(QS_INVALID_ARGUMENT, qs_session_report_row(NULL, 0, path, kUnits, &path_needed, name,
                                                    kUnits, &name_needed, &row));
  EXPECT(QS_INVALID_ARGUMENT, qs_session_report_row(session, 0, path, kUnits, &path_needed, name,
                                                    kUnits, &name_needed, NULL));
  row.size = 0;
  EXPECT(QS_BUFFER_TOO_SMALL, qs_session_report_row(session, 0, NULL, 0, &path_needed, name, kUnits,
                                                    &name_needed, &row));
  CHECK(row.size == 3);
  EXPECT(QS_BUFFER_TOO_SMALL, qs_session_report_row(session, 0, path, kUnits, &path_needed, NULL, 0,
                                                    &name_needed, &row));
  CHECK(name_needed == 8);
  EXPECT(QS_OK,
         qs_session_report_row(session, 0, path, kUnits, NULL, name, kUnits, &name_needed, &row));
  EXPECT(QS_OK,
         qs_session_report_row(session, 0, path, kUnits, &path_needed, name, kUnits, NULL, &row));
  EXPECT(QS_NOT_FOUND, qs_session_report_row(session, 1, path, kUnits, &path_needed, name, kUnits,
                                             &name_needed, &row));
}

void call_session_exports(void) {
  put_folder(L"session");
  put_file(L"session\\one.txt", "one");
  qs_session* session = NULL;
  EXPECT(QS_INVALID_ARGUMENT, qs_session_create(NULL));
  EXPECT(QS_OK, qs_session_create(&session));
  CHECK(session != NULL);

  EXPECT(QS_INVALID_ARGUMENT,
         qs_session_start_scan(NULL, in_scratch(L"session"), QS_SESSION_ALL_FILES));
  EXPECT(QS_INVALID_ARGUMENT, qs_session_start_scan(session, NULL, QS_SESSION_ALL_FILES));
  EXPECT(QS_OK, qs_session_start_scan(session, in_scratch(L"session"), QS_SESSION_ALL_FILES));

  /* Behind the record lies what must stay as it is: with other packing it would be overwritten. */
  struct {
    qs_session_scan_status status;
    uint32_t guard;
  } polled;
  memset(&polled, 0xEE, sizeof(polled));
  EXPECT(QS_OK, qs_session_poll_scan(session, &polled.status));
  CHECK(polled.status.state == QS_STATE_DONE && polled.status.status == QS_OK);
  CHECK(polled.status.files_visited == 1 && polled.status.bytes_visited == 3);
  CHECK(polled.status.row_count == 1 && polled.status.reserved == 0);
  CHECK(polled.guard == UINT32_C(0xEEEEEEEE));
  EXPECT(QS_INVALID_ARGUMENT, qs_session_poll_scan(NULL, &polled.status));
  EXPECT(QS_INVALID_ARGUMENT, qs_session_poll_scan(session, NULL));

  EXPECT(QS_OK, qs_session_cancel_scan(session));
  EXPECT(QS_INVALID_ARGUMENT, qs_session_cancel_scan(NULL));

  read_session(session);
  clean_with_session(session);
  EXPECT(QS_OK, qs_session_destroy(session));
  EXPECT(QS_INVALID_ARGUMENT, qs_session_destroy(NULL));
}
