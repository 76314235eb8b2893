/* The product scan and its clean. */
#include <string.h>
#include <wchar.h>

#include "expect.h"
#include "parts.h"
#include "scratch.h"

enum { kUnits = 1024 };

static const char kRules[] =
    "<Root><Category DisplayName=\"Some junk\">"
    "<Folder Path=\"{UserHome}\\junk\" DisplayName=\"A folder\"/></Category></Root>";

static qs_product_scan_request junk_request(void) {
  qs_product_scan_request request = {0};
  request.size = sizeof(request);
  request.kind = QS_SCAN_KIND_JUNK_RULES;
  request.user_home = in_scratch(L"product");
  request.system_root = L"C:\\";
  request.rules_path = in_scratch(L"product\\rules.xml");
  return request;
}

static void read_texts(qs_product_scan* scan) {
  qs_char out[kUnits];
  uint64_t needed = 0;
  EXPECT(QS_OK, qs_product_scan_current_group(scan, out, kUnits, &needed));
  CHECK(wcscmp(out, L"Some junk") == 0 && needed == 10);
  EXPECT(QS_INVALID_ARGUMENT, qs_product_scan_current_group(NULL, out, kUnits, &needed));
  EXPECT(QS_BUFFER_TOO_SMALL, qs_product_scan_current_group(scan, NULL, 0, &needed));
  EXPECT(QS_OK, qs_product_scan_current_group(scan, out, kUnits, NULL));

  EXPECT(QS_OK, qs_product_scan_current_path(scan, out, kUnits, &needed));
  CHECK(wcsstr(out, L"\\product\\junk\\") != NULL && needed == wcslen(out) + 1);
  EXPECT(QS_INVALID_ARGUMENT, qs_product_scan_current_path(NULL, out, kUnits, &needed));
  EXPECT(QS_BUFFER_TOO_SMALL, qs_product_scan_current_path(scan, NULL, 0, &needed));
  CHECK(needed == wcslen(out) + 1);
  EXPECT(QS_OK, qs_product_scan_current_path(scan, out, kUnits, NULL));
}

static void read_numbers(qs_product_scan* scan) {
  qs_product_scan_status status;
  memset(&status, 0xEE, sizeof(status));
  EXPECT(QS_OK, qs_product_scan_poll(scan, &status));
  CHECK(status.state == QS_STATE_DONE && status.status == QS_OK && status.reserved == 0);
  CHECK(status.files_visited == 2 && status.bytes_visited == 5);
  CHECK(status.item_count == 2 && status.total_bytes == 5);
  EXPECT(QS_INVALID_ARGUMENT, qs_product_scan_poll(NULL, &status));
  EXPECT(QS_INVALID_ARGUMENT, qs_product_scan_poll(scan, NULL));

  qs_product_scan_performance performance;
  memset(&performance, 0xEE, sizeof(performance));
  performance.size = sizeof(performance);
  EXPECT(QS_OK, qs_product_scan_get_performance(scan, &performance));
  CHECK(performance.size == 192 && performance.kind == QS_SCAN_KIND_JUNK_RULES);
  CHECK(performance.row_count == 4 && performance.item_count == 2);
  CHECK(performance.reserved[0] == 0 && performance.reserved[8] == 0);
  EXPECT(QS_INVALID_ARGUMENT, qs_product_scan_get_performance(NULL, &performance));
  EXPECT(QS_INVALID_ARGUMENT, qs_product_scan_get_performance(scan, NULL));
  performance.size = 191;
  EXPECT(QS_INVALID_ARGUMENT, qs_product_scan_get_performance(scan, &performance));

  uint64_t count = 0;
  EXPECT(QS_OK, qs_product_scan_report_count(scan, &count));
  CHECK(count == 4);
  EXPECT(QS_INVALID_ARGUMENT, qs_product_scan_report_count(NULL, &count));
  EXPECT(QS_INVALID_ARGUMENT, qs_product_scan_report_count(scan, NULL));

  uint64_t parent = 99;
  EXPECT(QS_OK, qs_product_scan_report_row_parent_group_id(scan, 2, &parent));
  CHECK(parent == 1);
  EXPECT(QS_INVALID_ARGUMENT, qs_product_scan_report_row_parent_group_id(NULL, 2, &parent));
  EXPECT(QS_INVALID_ARGUMENT, qs_product_scan_report_row_parent_group_id(scan, 2, NULL));
}

/* Row 0 is the category, row 1 the folder, rows 2 and 3 are its files. */
static void read_row(qs_product_scan* scan) {
  qs_char p[kUnits];
  qs_char n[kUnits];
  qs_char t[kUnits];
  qs_char l[kUnits];
  uint64_t pn = 0;
  uint64_t nn = 0;
  uint64_t tn = 0;
  uint64_t ln = 0;
  qs_product_scan_row row;
  memset(&row, 0xEE, sizeof(row));
  const uint64_t u = kUnits;
  EXPECT(QS_OK,
         qs_product_scan_report_row(scan, 2, p, u, &pn, n, u, &nn, t, u, &tn, l, u, &ln, &row));
  CHECK(wcsstr(p, L"\\product\\junk\\") != NULL && pn == wcslen(p) + 1);
  CHECK(nn == wcslen(n) + 1 && wcsstr(n, L".tmp") != NULL);
  CHECK(wcscmp(t, L"A folder") == 0 && tn == 9);
  CHECK(wcscmp(l, L"A folder") == 0 && ln == 9);
  CHECK(row.kind == QS_ROW_JUNK && row.item_id == 0 && row.reserved == 0);
  CHECK(row.deletable == 1 && row.preselect == 1 && row.deleted == 0);
  CHECK(row.large_class == QS_LARGE_OTHER);

  EXPECT(QS_INVALID_ARGUMENT,
         qs_product_scan_report_row(NULL, 2, p, u, &pn, n, u, &nn, t, u, &tn, l, u, &ln, &row));
  EXPECT(QS_INVALID_ARGUMENT,
         qs_product_scan_report_row(scan, 2, p, u, &pn, n, u, &nn, t, u, &tn, l, u, &ln, NULL));
  /* One text left out: the rest is there all the same. */
  const qs_status refused = QS_BUFFER_TOO_SMALL;
  row.item_id = 99;
  EXPECT(refused,
         qs_product_scan_report_row(scan, 2, NULL, 0, &pn, n, u, &nn, t, u, &tn, l, u, &ln, &row));
  CHECK(row.item_id == 0 && pn == wcslen(p) + 1);
  EXPECT(refused,
         qs_product_scan_report_row(scan, 2, p, u, &pn, NULL, 0, &nn, t, u, &tn, l, u, &ln, &row));
  EXPECT(refused,
         qs_product_scan_report_row(scan, 2, p, u, &pn, n, u, &nn, NULL, 0, &tn, l, u, &ln, &row));
  EXPECT(refused,
         qs_product_scan_report_row(scan, 2, p, u, &pn, n, u, &nn, t, u, &tn, NULL, 0, &ln, &row));
  CHECK(nn == wcslen(n) + 1 && tn == 9 && ln == 9);
  EXPECT(QS_OK,
         qs_product_scan_report_row(scan, 2, p, u, NULL, n, u, &nn, t, u, &tn, l, u, &ln, &row));
  EXPECT(QS_OK,
         qs_product_scan_report_row(scan, 2, p, u, &pn, n, u, NULL, t, u, &tn, l, u, &ln, &row));
  EXPECT(QS_OK,
         qs_product_scan_report_row(scan, 2, p, u, &pn, n, u, &nn, t, u, NULL, l, u, &ln, &row));
  EXPECT(QS_OK,
         qs_product_scan_report_row(scan, 2, p, u, &pn, n, u, &nn, t, u, &tn, l, u, NULL, &row));
  EXPECT(QS_NOT_FOUND,
         qs_product_scan_report_row(scan, 4, p, u, &pn, n, u, &nn, t, u, &tn, l, u, &ln, &row));
}

void call_product_scan_exports(void) {
  put_folder(L"product");
  put_folder(L"product\\junk");
  put_file(L"product\\rules.xml", kRules);
  put_file(L"product\\junk\\one.tmp", "11");
  put_file(L"product\\junk\\two.tmp", "222");
  qs_product_scan* scan = NULL;
  EXPECT(QS_INVALID_ARGUMENT, qs_product_scan_create(NULL));
  EXPECT(QS_OK, qs_product_scan_create(&scan));
  CHECK(scan != NULL);

  const qs_product_scan_request request = junk_request();
  EXPECT(QS_INVALID_ARGUMENT, qs_product_scan_start(NULL, &request));
  EXPECT(QS_INVALID_ARGUMENT, qs_product_scan_start(scan, NULL));
  EXPECT(QS_OK, qs_product_scan_start(scan, &request));
  EXPECT(QS_OK, qs_product_scan_cancel(scan));
  EXPECT(QS_INVALID_ARGUMENT, qs_product_scan_cancel(NULL));

  read_texts(scan);
  read_numbers(scan);
  read_row(scan);
  EXPECT(QS_OK, qs_product_scan_destroy(scan));
  EXPECT(QS_INVALID_ARGUMENT, qs_product_scan_destroy(NULL));
}

void call_product_clean_exports(void) {
  qs_product_scan* scan = NULL;
  EXPECT(QS_OK, qs_product_scan_create(&scan));
  const qs_product_scan_request request = junk_request();
  EXPECT(QS_OK, qs_product_scan_start(scan, &request));
  qs_product_scan_row row;
  memset(&row, 0xEE, sizeof(row));
  EXPECT(QS_BUFFER_TOO_SMALL, qs_product_scan_report_row(scan, 2, NULL, 0, NULL, NULL, 0, NULL,
                                                         NULL, 0, NULL, NULL, 0, NULL, &row));

  const uint64_t ids[] = {row.item_id};
  EXPECT(QS_INVALID_ARGUMENT, qs_product_scan_start_clean(NULL, ids, 1));
  EXPECT(QS_INVALID_ARGUMENT, qs_product_scan_start_clean(scan, NULL, 1));
  CHECK(is_there(L"product\\junk\\one.tmp") && is_there(L"product\\junk\\two.tmp"));
  EXPECT(QS_OK, qs_product_scan_start_clean(scan, ids, 1));
  CHECK(is_there(L"product\\junk\\one.tmp") != is_there(L"product\\junk\\two.tmp"));

  qs_product_clean_status status;
  memset(&status, 0xEE, sizeof(status));
  EXPECT(QS_OK, qs_product_scan_poll_clean(scan, &status));
  CHECK(status.state == QS_STATE_DONE && status.status == QS_OK);
  CHECK(status.requested == 1 && status.processed == 1);
  CHECK(status.reserved == 0 && status.reserved2 == 0);
  EXPECT(QS_INVALID_ARGUMENT, qs_product_scan_poll_clean(NULL, &status));
  EXPECT(QS_INVALID_ARGUMENT, qs_product_scan_poll_clean(scan, NULL));

  qs_product_clean_detail detail;
  memset(&detail, 0xEE, sizeof(detail));
  detail.size = sizeof(detail);
  EXPECT(QS_OK, qs_product_scan_poll_clean_detailed(scan, &detail));
  CHECK(detail.size == 56 && detail.state == QS_STATE_DONE && detail.status == QS_OK);
  CHECK(detail.requested == 1 && detail.processed == 1 && detail.deleted == 1);
  CHECK(detail.failed == 0 && detail.bytes_freed == (uint64_t)row.size && detail.reserved == 0);
  EXPECT(QS_INVALID_ARGUMENT, qs_product_scan_poll_clean_detailed(NULL, &detail));
  EXPECT(QS_INVALID_ARGUMENT, qs_product_scan_poll_clean_detailed(scan, NULL));

  EXPECT(QS_OK, qs_product_scan_cancel_clean(scan));
  EXPECT(QS_INVALID_ARGUMENT, qs_product_scan_cancel_clean(NULL));
  EXPECT(QS_OK, qs_product_scan_start_clean(scan, NULL, 0));
  EXPECT(QS_OK, qs_product_scan_destroy(scan));
}
