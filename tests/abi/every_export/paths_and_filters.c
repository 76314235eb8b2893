/* Paths, enumeration, filters, matchers. */
#include <string.h>
#include <wchar.h>

#include "expect.h"
#include "parts.h"
#include "scratch.h"

enum { kUnits = 1024 };

/* What a buffer holds before a call that must not touch it. */
static const qs_char kUntouched[] = L"untouched";

void call_path_exports(void) {
  qs_char out[kUnits];
  uint64_t needed = 0;
  EXPECT(QS_OK, qs_normalize_path(L"C:\\a", out, kUnits, &needed));
  CHECK(wcscmp(out, L"C:\\a") == 0);
  CHECK(needed == 5);
  wcscpy(out, kUntouched);
  EXPECT(QS_INVALID_ARGUMENT, qs_normalize_path(NULL, out, kUnits, &needed));
  CHECK(wcscmp(out, kUntouched) == 0);
  needed = 0;
  EXPECT(QS_BUFFER_TOO_SMALL, qs_normalize_path(L"C:\\a", NULL, 0, &needed));
  CHECK(needed == 5);
  EXPECT(QS_OK, qs_normalize_path(L"C:\\a", out, 5, NULL));
  CHECK(wcscmp(out, L"C:\\a") == 0);

  EXPECT(QS_OK, qs_path_combine(L"C:\\a\\", L"b", out, kUnits, &needed));
  CHECK(wcscmp(out, L"C:\\a\\b") == 0);
  CHECK(needed == 7);
  wcscpy(out, kUntouched);
  EXPECT(QS_INVALID_ARGUMENT, qs_path_combine(NULL, L"b", out, kUnits, &needed));
  EXPECT(QS_INVALID_ARGUMENT, qs_path_combine(L"C:\\a", NULL, out, kUnits, &needed));
  CHECK(wcscmp(out, kUntouched) == 0);
  needed = 0;
  EXPECT(QS_BUFFER_TOO_SMALL, qs_path_combine(L"C:\\a", L"b", NULL, 0, &needed));
  CHECK(needed == 7);
  EXPECT(QS_OK, qs_path_combine(L"C:\\a", L"b", out, kUnits, NULL));
  CHECK(wcscmp(out, L"C:\\a\\b") == 0);

  EXPECT(1, qs_path_contains(L"C:\\alpha", L"lph"));
  EXPECT(0, qs_path_contains(L"C:\\alpha", L"LPH"));
  EXPECT(0, qs_path_contains(NULL, L"lph"));
  EXPECT(1, qs_path_contains(L"C:\\alpha", NULL));

  EXPECT(1, qs_is_in_same_directory(L"C:\\a\\one", L"c:\\A\\two"));
  EXPECT(0, qs_is_in_same_directory(L"C:\\a\\one", L"C:\\b\\one"));
  EXPECT(0, qs_is_in_same_directory(NULL, L"C:\\a\\two"));
  EXPECT(0, qs_is_in_same_directory(L"C:\\a\\one", NULL));

  EXPECT(1, qs_directory_exists(in_scratch(L"")));
  EXPECT(0, qs_directory_exists(in_scratch(L"nowhere")));
  EXPECT(0, qs_directory_exists(NULL));
}

typedef struct heard {
  int files;
  int folders;
  uint64_t bytes;
  qs_char last_name[64];
} heard;

static void hear_file(void* user, const qs_char* path, uint64_t size, uint64_t last_write,
                      const qs_char* name) {
  heard* into = (heard*)user;
  ++into->files;
  into->bytes += size;
  wcscpy(into->last_name, name);
  CHECK(last_write > 0);
  CHECK(wcsstr(path, name) != NULL);
}

static void hear_folder(void* user, const qs_char* path) {
  heard* into = (heard*)user;
  ++into->folders;
  CHECK(wcsstr(path, L"walk\\deeper") != NULL);
}

/* For a walk whose user pointer is null. */
static int unaddressed_calls;

static void hear_unaddressed_file(void* user, const qs_char* path, uint64_t size,
                                  uint64_t last_write, const qs_char* name) {
  (void)path;
  (void)size;
  (void)last_write;
  (void)name;
  unaddressed_calls += user == NULL ? 1 : 100;
}

static void hear_unaddressed_folder(void* user, const qs_char* path) {
  (void)path;
  unaddressed_calls += user == NULL ? 1 : 100;
}

void call_enumeration_exports(void) {
  put_folder(L"walk");
  put_folder(L"walk\\deeper");
  put_file(L"walk\\one.txt", "1");
  put_file(L"walk\\deeper\\two.txt", "22");
  const qs_char* root = in_scratch(L"walk");
  uint32_t cancel = 0;
  heard found = {0};

  EXPECT(QS_OK, qs_enumerate_files(root, L"*.txt", 1, hear_file, &found, &cancel));
  CHECK(found.files == 2 && found.bytes == 3);
  CHECK(wcscmp(found.last_name, L"two.txt") == 0);
  found.files = 0;
  EXPECT(QS_INVALID_ARGUMENT, qs_enumerate_files(NULL, L"*", 1, hear_file, &found, &cancel));
  EXPECT(QS_INVALID_ARGUMENT, qs_enumerate_files(root, L"*", 1, NULL, &found, &cancel));
  CHECK(found.files == 0);
  EXPECT(QS_OK, qs_enumerate_files(root, NULL, 0, hear_file, &found, &cancel));
  CHECK(found.files == 1);
  EXPECT(QS_OK, qs_enumerate_files(root, L"*", 1, hear_unaddressed_file, NULL, &cancel));
  CHECK(unaddressed_calls == 2);
  EXPECT(QS_OK, qs_enumerate_files(root, L"*", 1, hear_file, &found, NULL));
  CHECK(found.files == 3);

  found.files = 0;
  EXPECT(QS_OK, qs_enumerate_files_ex(root, L"*", 1, 1, L"C:\\", L"C:\\nobody", hear_file, &found,
                                      &cancel));
  CHECK(found.files == 2);
  /* The tree as somebody's AppData: protected with both folders given, and not with one of them. */
  put_folder(L"home");
  put_folder(L"home\\AppData");
  put_file(L"home\\AppData\\kept.txt", "kept");
  const qs_char* home = in_scratch(L"home");
  found.files = 0;
  EXPECT(QS_OK, qs_enumerate_files_ex(home, L"*", 1, 1, L"C:\\", home, hear_file, &found, &cancel));
  CHECK(found.files == 0);
  EXPECT(QS_OK, qs_enumerate_files_ex(home, L"*", 1, 1, NULL, home, hear_file, &found, &cancel));
  CHECK(found.files == 1);
  EXPECT(QS_OK, qs_enumerate_files_ex(home, L"*", 1, 1, L"C:\\", NULL, hear_file, &found, &cancel));
  CHECK(found.files == 2);
  EXPECT(QS_OK, qs_enumerate_files_ex(root, NULL, 0, 0, L"C:\\", home, hear_file, &found, NULL));
  CHECK(found.files == 3);
  EXPECT(QS_INVALID_ARGUMENT,
         qs_enumerate_files_ex(NULL, L"*", 1, 0, L"C:\\", home, hear_file, &found, &cancel));
  EXPECT(QS_INVALID_ARGUMENT,
         qs_enumerate_files_ex(root, L"*", 1, 0, L"C:\\", home, NULL, &found, &cancel));
  CHECK(found.files == 3);
  unaddressed_calls = 0;
  EXPECT(QS_OK, qs_enumerate_files_ex(root, L"*", 1, 0, L"C:\\", home, hear_unaddressed_file, NULL,
                                      &cancel));
  CHECK(unaddressed_calls == 2);

  EXPECT(QS_OK, qs_enumerate_directories(root, hear_folder, &found, &cancel));
  CHECK(found.folders == 1);
  EXPECT(QS_INVALID_ARGUMENT, qs_enumerate_directories(NULL, hear_folder, &found, &cancel));
  EXPECT(QS_INVALID_ARGUMENT, qs_enumerate_directories(root, NULL, &found, &cancel));
  CHECK(found.folders == 1);
  unaddressed_calls = 0;
  EXPECT(QS_OK, qs_enumerate_directories(root, hear_unaddressed_folder, NULL, &cancel));
  CHECK(unaddressed_calls == 1);
  EXPECT(QS_OK, qs_enumerate_directories(root, hear_folder, &found, NULL));
  CHECK(found.folders == 2);

  cancel = 1;
  EXPECT(QS_CANCELLED, qs_enumerate_files(root, L"*", 1, hear_file, &found, &cancel));
  CHECK(cancel == 1);
}

void call_filter_exports(void) {
  EXPECT(1, qs_is_ignored(L"D:\\PageFile.sys"));
  EXPECT(0, qs_is_ignored(L"D:\\pagefile.sys.txt"));
  EXPECT(0, qs_is_ignored(NULL));

  EXPECT(1, qs_is_in_whitelist(L"C:\\windows\\a.txt", L"C:\\", L"C:\\Users\\me"));
  EXPECT(0, qs_is_in_whitelist(L"C:\\other\\a.txt", L"C:\\", L"C:\\Users\\me"));
  EXPECT(0, qs_is_in_whitelist(NULL, L"C:\\", L"C:\\Users\\me"));
  EXPECT(0, qs_is_in_whitelist(L"C:\\Windows\\a.txt", NULL, L"C:\\Users\\me"));
  EXPECT(0, qs_is_in_whitelist(L"C:\\Windows\\a.txt", L"C:\\", NULL));

  const qs_char* const paths[] = {L"C:\\a\\inner", L"C:\\a", L"D:\\b"};
  const qs_char* const with_null[] = {L"C:\\a", NULL};
  qs_char out[kUnits];
  uint64_t kept = 0;
  uint64_t needed = 0;
  EXPECT(QS_OK, qs_filter_dir(paths, 3, out, kUnits, &kept, &needed));
  CHECK(kept == 2 && needed == 11);
  CHECK(memcmp(out, L"C:\\a\0D:\\b\0", 11 * sizeof(qs_char)) == 0);
  EXPECT(QS_INVALID_ARGUMENT, qs_filter_dir(NULL, 3, out, kUnits, &kept, &needed));
  CHECK(kept == 0 && needed == 0);
  EXPECT(QS_INVALID_ARGUMENT, qs_filter_dir(with_null, 2, out, kUnits, &kept, &needed));
  EXPECT(QS_BUFFER_TOO_SMALL, qs_filter_dir(paths, 3, NULL, 0, &kept, &needed));
  CHECK(kept == 2 && needed == 11);
  EXPECT(QS_OK, qs_filter_dir(paths, 3, out, kUnits, NULL, &needed));
  EXPECT(QS_OK, qs_filter_dir(paths, 3, out, kUnits, &kept, NULL));
  CHECK(wcscmp(out, L"C:\\a") == 0);

  EXPECT(1, qs_matches_size(INT64_C(1073741825), 1));
  EXPECT(0, qs_matches_size(INT64_C(1073741824), 1));

  const int64_t day = INT64_C(864000000000);
  const int64_t now = INT64_C(638000000000000000); /* a day of 2022 */
  EXPECT(1, qs_matches_date(now - 400 * day, now, 1));
  EXPECT(0, qs_matches_date(now - 300 * day, now, 1));
}
