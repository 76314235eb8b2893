/* Calls every function of the interface from C, through the import library: once as it is meant and
   once with each null argument. */
#include <stdio.h>
#include <windows.h>

#include "expect.h"
#include "parts.h"
#include "scratch.h"

int main(void) {
  /* A hold in the environment would only slow the scans down. */
  SetEnvironmentVariableW(L"QUASTEL_SCAN_HOLD_MS", NULL);
  make_scratch();
  EXPECT_TEXT(QUASTEL_TEST_VERSION, qs_version());
  call_path_exports();
  call_enumeration_exports();
  call_filter_exports();
  call_deletion_exports();
  call_session_exports();
  call_product_scan_exports();
  call_product_clean_exports();
  call_large_file_exports();
  call_junk_exports();
  call_hash_exports();
  call_duplicate_exports();
  remove_scratch();
  CHECK(!is_there(L""));
  printf("%d expectations, %d failed\n", expectation_count(), failure_count());
  return failure_count() == 0 ? 0 : 1;
}
