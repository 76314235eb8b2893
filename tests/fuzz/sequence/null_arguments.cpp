#include "fuzz/sequence/null_arguments.h"

#include <cstdint>
#include <cstring>
#include <string_view>

#include "base/text.h"
#include "fuzz/demand.h"
#include "fuzz/guarded_buffer.h"
#include "quastel_core.h"

namespace quastel::fuzz::sequence {
namespace {

void Refuses(qs_status status) {
  Demand(status == QS_INVALID_ARGUMENT, "a null that is not allowed is refused");
}

void No(std::int32_t answer) {
  Demand(answer == 0, "the answer to a null is no");
}

// A record that the library must leave alone.
template <typename Record>
class Untouched {
 public:
  explicit Untouched(std::uint32_t size = 0) {
    std::memset(&record_, 0x5C, sizeof record_);
    std::memcpy(&record_, &size, size == 0 ? 0 : sizeof size);
    std::memcpy(&before_, &record_, sizeof record_);
  }
  ~Untouched() {
    Demand(std::memcmp(&record_, &before_, sizeof record_) == 0, "a refusal stores nothing");
  }
  Untouched(const Untouched&) = delete;
  Untouched& operator=(const Untouched&) = delete;

  Record* get() { return &record_; }

 private:
  Record record_;
  Record before_;
};

void CallSession() {
  qs_session* session = nullptr;
  Demand(qs_session_create(&session) == QS_OK, "a session can be made");
  Untouched<qs_session_scan_status> status;
  Untouched<qs_session_clean_status> clean;
  Untouched<qs_session_row> row;
  Untouched<std::uint64_t> number;
  GuardedBuffer<Char> buffer(4);
  Refuses(qs_session_create(nullptr));
  Refuses(qs_session_destroy(nullptr));
  Refuses(qs_session_start_scan(nullptr, u"C:\\t", 0));
  Refuses(qs_session_start_scan(session, nullptr, 0));
  Refuses(qs_session_poll_scan(nullptr, status.get()));
  Refuses(qs_session_poll_scan(session, nullptr));
  Refuses(qs_session_cancel_scan(nullptr));
  Refuses(qs_session_scan_current_path(nullptr, buffer.data(), 4, number.get()));
  Refuses(qs_session_scan_current_path(session, buffer.data(), 4, nullptr));
  Refuses(qs_session_report_count(nullptr, number.get()));
  Refuses(qs_session_report_count(session, nullptr));
  Refuses(qs_session_report_row(nullptr, 0, buffer.data(), 4, number.get(), buffer.data(), 4,
                                number.get(), row.get()));
  Refuses(qs_session_report_row(session, 0, buffer.data(), 4, number.get(), buffer.data(), 4,
                                number.get(), nullptr));
  const std::uint64_t index = 0;
  Refuses(qs_session_start_clean(nullptr, &index, 1));
  Refuses(qs_session_start_clean(session, nullptr, 1));
  Refuses(qs_session_poll_clean(nullptr, clean.get()));
  Refuses(qs_session_poll_clean(session, nullptr));
  Refuses(qs_session_cancel_clean(nullptr));
  Demand(qs_session_start_clean(session, &index, 1) == QS_UNSUPPORTED,
         "there is nothing to clean before a scan");
  Demand(qs_session_destroy(session) == QS_OK, "an idle session can be destroyed");
  buffer.DemandUntouched("a refusal writes nothing");
}

void CallProductScan(Input& input) {
  qs_product_scan* scan = nullptr;
  Demand(qs_product_scan_create(&scan) == QS_OK, "a scan can be made");
  Untouched<qs_product_scan_status> status;
  Untouched<qs_product_clean_status> clean;
  Untouched<qs_product_scan_performance> performance(
      static_cast<std::uint32_t>(1 + input.Below(191)));
  Untouched<qs_product_clean_detail> detail(static_cast<std::uint32_t>(1 + input.Below(55)));
  Untouched<qs_product_scan_row> row;
  Untouched<std::uint64_t> number;
  GuardedBuffer<Char> buffer(4);
  Char* const out = buffer.data();
  std::uint64_t* const needed = number.get();
  const qs_product_scan_request request = {};
  Refuses(qs_product_scan_create(nullptr));
  Refuses(qs_product_scan_destroy(nullptr));
  Refuses(qs_product_scan_start(nullptr, &request));
  Refuses(qs_product_scan_start(scan, nullptr));
  Refuses(qs_product_scan_cancel(nullptr));
  Refuses(qs_product_scan_poll(nullptr, status.get()));
  Refuses(qs_product_scan_poll(scan, nullptr));
  Refuses(qs_product_scan_current_group(nullptr, out, 4, needed));
  Refuses(qs_product_scan_current_path(nullptr, out, 4, needed));
  Refuses(qs_product_scan_get_performance(nullptr, performance.get()));
  Refuses(qs_product_scan_get_performance(scan, nullptr));
  Refuses(qs_product_scan_get_performance(scan, performance.get()));
  Refuses(qs_product_scan_report_count(nullptr, needed));
  Refuses(qs_product_scan_report_count(scan, nullptr));
  Refuses(qs_product_scan_report_row(nullptr, 0, out, 4, needed, out, 4, needed, out, 4, needed,
                                     out, 4, needed, row.get()));
  Refuses(qs_product_scan_report_row(scan, 0, out, 4, needed, out, 4, needed, out, 4, needed, out,
                                     4, needed, nullptr));
  Refuses(qs_product_scan_report_row_parent_group_id(nullptr, 0, needed));
  Refuses(qs_product_scan_report_row_parent_group_id(scan, 0, nullptr));
  const std::uint64_t id = 0;
  Refuses(qs_product_scan_start_clean(nullptr, &id, 1));
  Refuses(qs_product_scan_start_clean(scan, nullptr, 1));
  Refuses(qs_product_scan_poll_clean(nullptr, clean.get()));
  Refuses(qs_product_scan_poll_clean(scan, nullptr));
  Refuses(qs_product_scan_poll_clean_detailed(nullptr, detail.get()));
  Refuses(qs_product_scan_poll_clean_detailed(scan, nullptr));
  Refuses(qs_product_scan_poll_clean_detailed(scan, detail.get()));
  Refuses(qs_product_scan_cancel_clean(nullptr));
  Demand(qs_product_scan_start_clean(scan, &id, 1) == QS_UNSUPPORTED,
         "there is nothing to clean before a scan");
  Demand(qs_product_scan_destroy(scan) == QS_OK, "an idle scan can be destroyed");
  buffer.DemandUntouched("a refusal writes nothing");
}

void IgnoreFile(void*, const Char*, std::uint64_t, std::uint64_t, const Char*) {}
void IgnoreFolder(void*, const Char*) {}

void CallBuildingBlocks() {
  Untouched<std::uint64_t> number;
  GuardedBuffer<Char> buffer(4);
  GuardedBuffer<char> digits(400);
  Refuses(qs_enumerate_files(nullptr, nullptr, 1, IgnoreFile, nullptr, nullptr));
  Refuses(qs_enumerate_files(u"", nullptr, 1, IgnoreFile, nullptr, nullptr));
  Refuses(qs_enumerate_files(u"C:\\t", nullptr, 1, nullptr, nullptr, nullptr));
  Refuses(qs_enumerate_files_ex(nullptr, nullptr, 1, 0, nullptr, nullptr, IgnoreFile, nullptr,
                                nullptr));
  Refuses(
      qs_enumerate_files_ex(u"C:\\t", nullptr, 1, 0, nullptr, nullptr, nullptr, nullptr, nullptr));
  Refuses(qs_enumerate_directories(nullptr, IgnoreFolder, nullptr, nullptr));
  Refuses(qs_enumerate_directories(u"", IgnoreFolder, nullptr, nullptr));
  Refuses(qs_enumerate_directories(u"C:\\t", nullptr, nullptr, nullptr));
  for (const Char* const path : {static_cast<const Char*>(nullptr), u""}) {
    No(qs_delete_permanently(path));
    No(qs_move_to_recycle_bin(path));
    No(qs_file_matches_snapshot(path, 0, 0));
    No(qs_delete_snapshot_permanently(path, 0, 0));
    No(qs_move_snapshot_to_recycle_bin(path, 0, 0));
    No(qs_empty_directory_eligible(path));
  }
  Refuses(qs_xxhash32_file(nullptr, digits.data(), 9));
  Refuses(qs_xxhash32_file_cancelable(nullptr, digits.data(), 8, nullptr));
  Refuses(qs_xxhash32_hex(nullptr, 1, digits.data(), 9));
  Demand(qs_xxhash32_hex(nullptr, 1, digits.data(), 8) == QS_BUFFER_TOO_SMALL &&
             qs_xxhash32_hex("", 0, nullptr, 9) == QS_BUFFER_TOO_SMALL &&
             qs_xxhash32_file(u"C:\\t\\f0", nullptr, 9) == QS_BUFFER_TOO_SMALL,
         "a hash needs a buffer");
  Refuses(qs_duplicate_sample_hex(nullptr, 0, digits.data(), 301));
  Refuses(qs_duplicate_sample_hex(u"C:\\t\\f0", -1, digits.data(), 301));
  Refuses(qs_duplicate_sample_group_key(1, nullptr, digits.data(), 400, number.get()));
  Refuses(qs_duplicate_hash_group_key(nullptr, "", digits.data(), 400, number.get()));
  Refuses(qs_duplicate_hash_group_key("", nullptr, digits.data(), 400, number.get()));
  Demand(qs_large_file_classify(nullptr) == QS_LARGE_OTHER, "nothing is of the other class");
  Demand(qs_version() == qs_version() && std::string_view(qs_version()) == "0.4.0",
         "the version is one text");
  buffer.DemandUntouched("a refusal writes nothing");
  digits.DemandUntouched("a refusal writes nothing");
}

}  // namespace

void CallWithNulls(Input& input) {
  CallSession();
  CallProductScan(input);
  CallBuildingBlocks();
}

}  // namespace quastel::fuzz::sequence
