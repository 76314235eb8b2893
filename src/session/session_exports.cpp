// The exported session.

#include <new>

#include "frame/boundary.h"
#include "session/session.h"

using quastel::StatusBoundary;

// What stands behind the opaque handle.
struct qs_session final : quastel::Session {};

qs_status qs_session_create(qs_session** session_out) {
  if (session_out == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  *session_out = nullptr;
  return StatusBoundary([&] {
    *session_out = new qs_session;
    return QS_OK;
  });
}

qs_status qs_session_destroy(qs_session* session) {
  if (session == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  return StatusBoundary([&]() -> qs_status {
    if (!session->TryRetire()) {
      return QS_BUSY;
    }
    delete session;
    return QS_OK;
  });
}

qs_status qs_session_start_scan(qs_session* session, const qs_char* root, uint32_t mode) {
  if (session == nullptr || root == nullptr || *root == qs_char{} || mode > QS_SESSION_INSPECT) {
    return QS_INVALID_ARGUMENT;
  }
  return StatusBoundary(
      [&] { return session->StartScan(root, static_cast<quastel::SessionMode>(mode)); });
}

qs_status qs_session_poll_scan(qs_session* session, qs_session_scan_status* status) {
  if (session == nullptr || status == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  return StatusBoundary([&] {
    session->PollScan(*status);
    return QS_OK;
  });
}

qs_status qs_session_cancel_scan(qs_session* session) {
  if (session == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  return StatusBoundary([&] {
    session->CancelScan();
    return QS_OK;
  });
}

qs_status qs_session_scan_current_path(qs_session* session, qs_char* out, uint64_t capacity,
                                       uint64_t* needed) {
  if (session == nullptr || needed == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  return StatusBoundary([&] { return session->CopyCurrentPath({out, capacity, needed}); });
}

qs_status qs_session_report_count(qs_session* session, uint64_t* count) {
  if (session == nullptr || count == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  return StatusBoundary([&] {
    *count = session->RowCount();
    return QS_OK;
  });
}

qs_status qs_session_report_row(qs_session* session, uint64_t index, qs_char* path,
                                uint64_t path_capacity, uint64_t* path_needed, qs_char* name,
                                uint64_t name_capacity, uint64_t* name_needed,
                                qs_session_row* row) {
  if (session == nullptr || row == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  return StatusBoundary([&] {
    return session->CopyRow(index, {path, path_capacity, path_needed},
                            {name, name_capacity, name_needed}, *row);
  });
}

qs_status qs_session_start_clean(qs_session* session, const uint64_t* indexes, uint64_t count) {
  if (session == nullptr || (count > 0 && indexes == nullptr)) {
    return QS_INVALID_ARGUMENT;
  }
  return StatusBoundary([&] { return session->StartClean(indexes, count); });
}

qs_status qs_session_poll_clean(qs_session* session, qs_session_clean_status* status) {
  if (session == nullptr || status == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  return StatusBoundary([&] {
    session->PollClean(*status);
    return QS_OK;
  });
}

qs_status qs_session_cancel_clean(qs_session* session) {
  if (session == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  return StatusBoundary([&] {
    session->CancelClean();
    return QS_OK;
  });
}
