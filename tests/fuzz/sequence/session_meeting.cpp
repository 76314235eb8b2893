// What a caller does with a session while it runs.

#include "fuzz/demand.h"
#include "fuzz/sequence/session_player.h"
#include "fuzz/sequence/text_query.h"

namespace quastel::fuzz::sequence {

void SessionPlayer::Meet(Input& input, bool racing, bool cleaning, bool& cancelled) {
  for (std::size_t n = 1 + input.Below(4); n > 0; --n) {
    MeetOnce(input, racing, cleaning, cancelled);
  }
}

void SessionPlayer::MeetOnce(Input& input, bool racing, bool cleaning, bool& cancelled) {
  switch (input.Below(racing ? 4 : 8)) {
    case 0: {
      qs_session_scan_status status = {};
      qs_session_clean_status clean = {};
      Demand(qs_session_poll_scan(session_, &status) == QS_OK &&
                 qs_session_poll_clean(session_, &clean) == QS_OK,
             "a running session can be polled");
      if (!racing) {
        Demand((cleaning ? clean.state : status.state) == QS_STATE_RUNNING,
               "a running session says that it runs");
        Demand((cleaning ? clean.status : status.status) == QS_OK, "what runs has no status yet");
      }
      break;
    }
    case 1:
      Demand((cleaning ? qs_session_cancel_clean(session_) : qs_session_cancel_scan(session_)) ==
                 QS_OK,
             "what runs can be cancelled");
      cancelled = true;
      break;
    case 2: {
      std::uint64_t count = 0;
      Demand(qs_session_report_count(session_, &count) == QS_OK, "rows can be counted");
      if (count > 0 && !racing) {
        (void)ReadRow(input.Below(static_cast<std::size_t>(count)));
      }
      break;
    }
    case 3:
      (void)TextFrom([this](Char* out, std::uint64_t capacity, std::uint64_t* needed) {
        return qs_session_scan_current_path(session_, out, capacity, needed);
      });
      break;
    case 4:
      Demand(qs_session_start_scan(session_, u"C:\\t", 0) == QS_BUSY,
             "nothing is started while a session runs");
      Demand(qs_session_start_scan(session_, u"C:\\t", 3) == QS_INVALID_ARGUMENT,
             "the arguments of a session come first");
      break;
    case 5: {
      const std::uint64_t index = input.Byte();
      Demand(qs_session_start_clean(session_, &index, 1) == QS_BUSY,
             "nothing is cleaned while a session runs");
      break;
    }
    case 6:
      Demand(qs_session_destroy(session_) == QS_BUSY, "nothing is destroyed while a session runs");
      break;
    default:
      world_.Change(input);
      break;
  }
}

}  // namespace quastel::fuzz::sequence
