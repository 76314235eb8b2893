/* duplicates FOLDER SECONDS [--delete]
   Loads quastel_core.dll at run time, looks for duplicates for at most SECONDS, and shows the first
   two files of the first set; with --delete the second of them is deleted, once it was compared. */
#include <quastel_core.h>
#include <stdbool.h>
#include <stdio.h>
#include <string.h>
#include <windows.h>

static struct {
  qs_status (*create)(qs_product_scan**);
  qs_status (*destroy)(qs_product_scan*);
  qs_status (*start)(qs_product_scan*, const qs_product_scan_request*);
  qs_status (*cancel)(qs_product_scan*);
  qs_status (*poll)(qs_product_scan*, qs_product_scan_status*);
  qs_status (*row)(qs_product_scan*, uint64_t, qs_char*, uint64_t, uint64_t*, qs_char*, uint64_t,
                   uint64_t*, qs_char*, uint64_t, uint64_t*, qs_char*, uint64_t, uint64_t*,
                   qs_product_scan_row*);
  qs_status (*clean)(qs_product_scan*, const uint64_t*, uint64_t);
} qs;

static bool load(HMODULE dll, const char* name, void* function) {
  const FARPROC found = dll == NULL ? NULL : GetProcAddress(dll, name);
  memcpy(function, &found, sizeof(found)); /* C has no portable conversion between the two */
  return found != NULL;
}

static bool load_all(HMODULE dll) {
  return load(dll, "qs_product_scan_create", &qs.create) &&
         load(dll, "qs_product_scan_destroy", &qs.destroy) &&
         load(dll, "qs_product_scan_start", &qs.start) &&
         load(dll, "qs_product_scan_cancel", &qs.cancel) &&
         load(dll, "qs_product_scan_poll", &qs.poll) &&
         load(dll, "qs_product_scan_report_row", &qs.row) &&
         load(dll, "qs_product_scan_start_clean", &qs.clean);
}

static struct {
  qs_product_scan* scan;
  qs_product_scan_request request;
  qs_status status;
} work;

/* The start blocks until the scan has ended: it has a thread to itself. */
static DWORD WINAPI scan_thread(void* unused) {
  work.status = qs.start(work.scan, &work.request);
  return unused == NULL ? 0 : 1;
}

/* A set shares a 32-bit hash, and that is no proof. */
static bool equal_files(const qs_char* one, const qs_char* other) {
  FILE* files[2] = {_wfopen(one, L"rb"), _wfopen(other, L"rb")};
  int units[2] = {0, 0};
  bool equal = files[0] != NULL && files[1] != NULL;
  while (equal && units[0] != EOF) {
    units[0] = getc(files[0]);
    units[1] = getc(files[1]);
    equal = units[0] == units[1] && !ferror(files[0]) && !ferror(files[1]);
  }
  for (int i = 0; i < 2; ++i)
    if (files[i] != NULL)
      fclose(files[i]); /* an open file could not be deleted */
  return equal;
}

int wmain(int argc, wchar_t** argv) {
  const HMODULE dll = LoadLibraryExW(L"quastel_core.dll", NULL, LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
  const bool ready = argc > 2 && load_all(dll) && qs.create(&work.scan) == QS_OK;
  const qs_char* roots[] = {argv[1]};
  work.request = (qs_product_scan_request){.size = sizeof(work.request),
                                           .kind = QS_SCAN_KIND_DUPLICATES,
                                           .roots = roots,
                                           .root_count = 1};
  const HANDLE thread = ready ? CreateThread(NULL, 0, scan_thread, NULL, 0, NULL) : NULL;
  if (thread == NULL)
    return 2;
  const ULONGLONG limit = GetTickCount64() + 1000 * wcstoul(argv[2], NULL, 10);
  while (WaitForSingleObject(thread, 50) == WAIT_TIMEOUT) {
    qs_product_scan_status seen = {0};
    qs.poll(work.scan, &seen);
    printf("%llu files\n", (unsigned long long)seen.files_visited);
    if (GetTickCount64() >= limit)
      qs.cancel(work.scan); /* again and again, since it does nothing before the scan has begun */
  }
  printf("scan: %u\n", work.status);
  static qs_char paths[2][32768]; /* no path is longer; the other texts are left out */
  qs_product_scan_row rows[2] = {{0}, {0}};
  for (uint64_t i = 0; i < 2; ++i)
    qs.row(work.scan, i, paths[i], 32768, NULL, NULL, 0, NULL, NULL, 0, NULL, NULL, 0, NULL,
           &rows[i]);
  if (rows[1].group_id != 0 && rows[0].group_id == rows[1].group_id) {
    printf("equal: %ls = %ls\n", paths[0], paths[1]);
    if (argc > 3 && wcscmp(argv[3], L"--delete") == 0 && equal_files(paths[0], paths[1])) {
      printf("clean: %u\n", qs.clean(work.scan, &rows[1].item_id, 1));
    }
  }
  return qs.destroy(work.scan) == QS_OK ? 0 : 2;
}
