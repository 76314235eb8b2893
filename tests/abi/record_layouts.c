/* Where every field of every record lies. Compiled as C and as C++, on every compiler that there
   is: a caller built by one of them reads what a library built by another has written. */
#include "quastel_core.h"

#include <stddef.h>

#ifdef __cplusplus
#define ABI_ASSERT(condition) static_assert(condition, #condition)
#define ABI_ALIGNOF(type) alignof(type)
#else
#define ABI_ASSERT(condition) _Static_assert(condition, #condition)
#define ABI_ALIGNOF(type) _Alignof(type)
#endif

#define RECORD(type, size, alignment) \
  ABI_ASSERT(sizeof(type) == (size)); \
  ABI_ASSERT(ABI_ALIGNOF(type) == (alignment))
#define FIELD(type, field, offset, width)        \
  ABI_ASSERT(offsetof(type, field) == (offset)); \
  ABI_ASSERT(sizeof(((type*)0)->field) == (width))

ABI_ASSERT(sizeof(qs_char) == 2);
ABI_ASSERT(sizeof(qs_status) == 4);
ABI_ASSERT(sizeof(void*) == 8);

RECORD(qs_session_scan_status, 36, 4);
FIELD(qs_session_scan_status, state, 0, 4);
FIELD(qs_session_scan_status, reserved, 4, 4);
FIELD(qs_session_scan_status, files_visited, 8, 8);
FIELD(qs_session_scan_status, bytes_visited, 16, 8);
FIELD(qs_session_scan_status, row_count, 24, 8);
FIELD(qs_session_scan_status, status, 32, 4);

RECORD(qs_session_row, 20, 4);
FIELD(qs_session_row, size, 0, 8);
FIELD(qs_session_row, modified, 8, 8);
FIELD(qs_session_row, deleted, 16, 4);

RECORD(qs_session_clean_status, 28, 4);
FIELD(qs_session_clean_status, state, 0, 4);
FIELD(qs_session_clean_status, reserved, 4, 4);
FIELD(qs_session_clean_status, requested, 8, 8);
FIELD(qs_session_clean_status, processed, 16, 8);
FIELD(qs_session_clean_status, status, 24, 4);

RECORD(qs_product_scan_request, 56, 8);
FIELD(qs_product_scan_request, size, 0, 4);
FIELD(qs_product_scan_request, kind, 4, 4);
FIELD(qs_product_scan_request, roots, 8, 8);
FIELD(qs_product_scan_request, root_count, 16, 8);
FIELD(qs_product_scan_request, user_home, 24, 8);
FIELD(qs_product_scan_request, system_root, 32, 8);
FIELD(qs_product_scan_request, protect_system, 40, 4);
FIELD(qs_product_scan_request, reserved, 44, 4);
FIELD(qs_product_scan_request, rules_path, 48, 8);

RECORD(qs_product_scan_row, 56, 8);
FIELD(qs_product_scan_row, item_id, 0, 8);
FIELD(qs_product_scan_row, group_id, 8, 8);
FIELD(qs_product_scan_row, kind, 16, 4);
FIELD(qs_product_scan_row, reserved, 20, 4);
FIELD(qs_product_scan_row, size, 24, 8);
FIELD(qs_product_scan_row, modified, 32, 8);
FIELD(qs_product_scan_row, deletable, 40, 4);
FIELD(qs_product_scan_row, preselect, 44, 4);
FIELD(qs_product_scan_row, deleted, 48, 4);
FIELD(qs_product_scan_row, large_class, 52, 4);

RECORD(qs_product_scan_status, 48, 8);
FIELD(qs_product_scan_status, state, 0, 4);
FIELD(qs_product_scan_status, path_published, 4, 4);
FIELD(qs_product_scan_status, files_visited, 8, 8);
FIELD(qs_product_scan_status, bytes_visited, 16, 8);
FIELD(qs_product_scan_status, total_bytes, 24, 8);
FIELD(qs_product_scan_status, item_count, 32, 8);
FIELD(qs_product_scan_status, status, 40, 4);
FIELD(qs_product_scan_status, reserved, 44, 4);

RECORD(qs_product_scan_performance, 192, 8);
FIELD(qs_product_scan_performance, size, 0, 4);
FIELD(qs_product_scan_performance, kind, 4, 4);
FIELD(qs_product_scan_performance, elapsed_us, 8, 8);
FIELD(qs_product_scan_performance, filter_roots_us, 16, 8);
FIELD(qs_product_scan_performance, load_rules_us, 24, 8);
FIELD(qs_product_scan_performance, walk_us, 32, 8);
FIELD(qs_product_scan_performance, group_by_size_us, 40, 8);
FIELD(qs_product_scan_performance, sample_us, 48, 8);
FIELD(qs_product_scan_performance, sample_keys_us, 56, 8);
FIELD(qs_product_scan_performance, plan_hashes_us, 64, 8);
FIELD(qs_product_scan_performance, hash_us, 72, 8);
FIELD(qs_product_scan_performance, group_by_hash_us, 80, 8);
FIELD(qs_product_scan_performance, files_visited, 88, 8);
FIELD(qs_product_scan_performance, bytes_visited, 96, 8);
FIELD(qs_product_scan_performance, candidates, 104, 8);
FIELD(qs_product_scan_performance, sampled_items, 112, 8);
FIELD(qs_product_scan_performance, hashed_items, 120, 8);
FIELD(qs_product_scan_performance, unhashed_groups, 128, 8);
FIELD(qs_product_scan_performance, row_count, 136, 8);
FIELD(qs_product_scan_performance, item_count, 144, 8);
FIELD(qs_product_scan_performance, status, 152, 4);
FIELD(qs_product_scan_performance, reserved, 156, 36);

RECORD(qs_product_clean_status, 32, 8);
FIELD(qs_product_clean_status, state, 0, 4);
FIELD(qs_product_clean_status, reserved, 4, 4);
FIELD(qs_product_clean_status, requested, 8, 8);
FIELD(qs_product_clean_status, processed, 16, 8);
FIELD(qs_product_clean_status, status, 24, 4);
FIELD(qs_product_clean_status, reserved2, 28, 4);

RECORD(qs_product_clean_detail, 56, 8);
FIELD(qs_product_clean_detail, size, 0, 4);
FIELD(qs_product_clean_detail, state, 4, 4);
FIELD(qs_product_clean_detail, requested, 8, 8);
FIELD(qs_product_clean_detail, processed, 16, 8);
FIELD(qs_product_clean_detail, deleted, 24, 8);
FIELD(qs_product_clean_detail, failed, 32, 8);
FIELD(qs_product_clean_detail, bytes_freed, 40, 8);
FIELD(qs_product_clean_detail, status, 48, 4);
FIELD(qs_product_clean_detail, reserved, 52, 4);

ABI_ASSERT(QS_OK == 0);
ABI_ASSERT(QS_INVALID_ARGUMENT == 1);
ABI_ASSERT(QS_BUFFER_TOO_SMALL == 2);
ABI_ASSERT(QS_FAILED == 3);
ABI_ASSERT(QS_NOT_FOUND == 4);
ABI_ASSERT(QS_CANCELLED == 5);
ABI_ASSERT(QS_UNSUPPORTED == 6);
ABI_ASSERT(QS_BUSY == 7);
ABI_ASSERT(QS_SCAN_KIND_JUNK_RULES == 0);
ABI_ASSERT(QS_SCAN_KIND_LARGE_FILES == 1);
ABI_ASSERT(QS_SCAN_KIND_DUPLICATES == 2);
ABI_ASSERT(QS_STATE_IDLE == 0);
ABI_ASSERT(QS_STATE_RUNNING == 1);
ABI_ASSERT(QS_STATE_DONE == 2);
ABI_ASSERT(QS_STATE_CANCELLED == 3);
ABI_ASSERT(QS_STATE_FAILED == 4);
ABI_ASSERT(QS_ROW_JUNK == 0);
ABI_ASSERT(QS_ROW_LARGE_FILE == 1);
ABI_ASSERT(QS_ROW_DUPLICATE == 2);
ABI_ASSERT(QS_ROW_GROUP == 3);
ABI_ASSERT(QS_NO_ITEM_ID == 0xFFFFFFFFFFFFFFFFu);
ABI_ASSERT(QS_LARGE_ARCHIVES == 0);
ABI_ASSERT(QS_LARGE_DOCUMENTS == 1);
ABI_ASSERT(QS_LARGE_IMAGES == 2);
ABI_ASSERT(QS_LARGE_MEDIA == 3);
ABI_ASSERT(QS_LARGE_OTHER == 4);
ABI_ASSERT(QS_SESSION_ALL_FILES == 0);
ABI_ASSERT(QS_SESSION_LARGE_FILES == 1);
ABI_ASSERT(QS_SESSION_INSPECT == 2);

#ifdef QUASTEL_ABI_PROVE_THAT_IT_CAN_FAIL
FIELD(qs_product_scan_row, size, 20, 8);
#endif

int quastel_record_layouts(void);
int quastel_record_layouts(void) {
  return 0;
}
