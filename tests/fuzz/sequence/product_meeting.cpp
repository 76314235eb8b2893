// What a caller does with a product scan while it runs.

#include "fuzz/demand.h"
#include "fuzz/sequence/product_player.h"
#include "fuzz/sequence/text_query.h"

namespace quastel::fuzz::sequence {

void ProductPlayer::Meet(Input& input, bool racing, bool cleaning, Outside& outside) {
  for (std::size_t n = 1 + input.Below(4); n > 0; --n) {
    MeetOnce(input, racing, cleaning, outside);
  }
}

// In a race the operation may not have begun, or may have ended already.
void ProductPlayer::MeetOnce(Input& input, bool racing, bool cleaning, Outside& outside) {
  switch (input.Below(racing ? 7 : 11)) {
    case 0: {
      qs_product_scan_status status = {};
      Demand(qs_product_scan_poll(scan_, &status) == QS_OK, "a running scan can be polled");
      if (!racing && !cleaning) {
        Demand(status.state == QS_STATE_RUNNING && status.status == QS_OK,
               "a running scan says that it runs");
      }
      qs_product_clean_status clean = {};
      Demand(qs_product_scan_poll_clean(scan_, &clean) == QS_OK, "a clean can be polled");
      if (!racing) {
        Demand(
            clean.state == (cleaning ? QS_STATE_RUNNING : QS_STATE_IDLE) && clean.status == QS_OK,
            "a running clean says that it runs");
      }
      break;
    }
    case 1: {
      const qs_status status =
          cleaning ? qs_product_scan_cancel_clean(scan_) : qs_product_scan_cancel(scan_);
      Demand(status == QS_OK, "what runs can be cancelled");
      outside.cancelled = true;
      break;
    }
    case 2: {
      std::uint64_t count = 0;
      Demand(qs_product_scan_report_count(scan_, &count) == QS_OK, "rows can be counted");
      if (!racing) {
        Demand(count >= outside.rows_seen, "rows are only added");
        outside.rows_seen = count;
      }
      break;
    }
    case 3: {
      std::uint64_t count = 0;
      Demand(qs_product_scan_report_count(scan_, &count) == QS_OK, "rows can be counted");
      if (count > 0 && !racing && !cleaning) {
        const std::uint64_t index = input.Below(static_cast<std::size_t>(count));
        const Row row = ReadRow(scan_, index);
        outside.read.emplace_back(index, row);
        ReadRowSomehow(scan_, index, row, input);
      }
      break;
    }
    case 4:
      (void)TextFrom([this](Char* out, std::uint64_t capacity, std::uint64_t* needed) {
        return qs_product_scan_current_path(scan_, out, capacity, needed);
      });
      (void)TextFrom([this](Char* out, std::uint64_t capacity, std::uint64_t* needed) {
        return qs_product_scan_current_group(scan_, out, capacity, needed);
      });
      break;
    case 5: {
      qs_product_scan_performance performance = {};
      performance.size = sizeof performance;
      Demand(qs_product_scan_get_performance(scan_, &performance) == QS_OK &&
                 performance.size == sizeof performance,
             "a running scan has its performance");
      break;
    }
    case 6: {
      qs_product_clean_detail detail = {};
      detail.size = sizeof detail;
      Demand(qs_product_scan_poll_clean_detailed(scan_, &detail) == QS_OK &&
                 detail.processed == detail.deleted + detail.failed &&
                 detail.processed <= detail.requested,
             "the counters of a clean fit each other");
      break;
    }
    case 7: {
      const Char* const root = u"C:\\t";
      qs_product_scan_request request = {};
      request.size = sizeof request;
      request.kind = static_cast<std::uint32_t>(input.Below(5));
      request.roots = &root;
      request.root_count = 1;
      Demand(qs_product_scan_start(scan_, input.OneIn(3) ? nullptr : &request) == QS_BUSY,
             "nothing is started while something runs");
      break;
    }
    case 8: {
      const std::uint64_t id = input.Below(4);
      Demand(qs_product_scan_start_clean(scan_, &id, input.Below(2)) == QS_BUSY,
             "nothing is cleaned while something runs");
      Demand(qs_product_scan_start_clean(scan_, nullptr, 1) == QS_INVALID_ARGUMENT,
             "missing ids come first");
      break;
    }
    case 9:
      Demand(qs_product_scan_destroy(scan_) == QS_BUSY,
             "nothing is destroyed while something runs");
      break;
    default:
      // A change may only move the clock, which the current path follows.
      outside.clock_moved = true;
      world_.Change(input);
      break;
  }
}

}  // namespace quastel::fuzz::sequence
