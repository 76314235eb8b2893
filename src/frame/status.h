// The statuses of the interface: number, name and text in one table.

#ifndef QUASTEL_FRAME_STATUS_H_
#define QUASTEL_FRAME_STATUS_H_

#include <array>

#include "quastel_core.h"

namespace quastel {

struct StatusInfo {
  qs_status number;
  const char* name;
  const char* text;
};

inline constexpr std::array<StatusInfo, 8> kStatuses = {{
    {QS_OK, "QS_OK", "success"},
    {QS_INVALID_ARGUMENT, "QS_INVALID_ARGUMENT", "an argument is missing or not allowed"},
    {QS_BUFFER_TOO_SMALL, "QS_BUFFER_TOO_SMALL", "a text buffer is missing or too short"},
    {QS_FAILED, "QS_FAILED", "the operation failed"},
    {QS_NOT_FOUND, "QS_NOT_FOUND", "no such row or document"},
    {QS_CANCELLED, "QS_CANCELLED", "cancelled"},
    {QS_UNSUPPORTED, "QS_UNSUPPORTED", "not possible in this state or build"},
    {QS_BUSY, "QS_BUSY", "the handle is in use"},
}};

// The table is indexed by the number.
static_assert([] {
  for (qs_status i = 0; i < kStatuses.size(); ++i) {
    if (kStatuses[i].number != i) {
      return false;
    }
  }
  return true;
}());

}  // namespace quastel

#endif  // QUASTEL_FRAME_STATUS_H_
