/* Large files, junk rules, hashes, samples and keys. */
#include <string.h>
#include <wchar.h>

#include "expect.h"
#include "parts.h"
#include "scratch.h"

enum { kUnits = 1024 };

void call_large_file_exports(void) {
  const int64_t large = INT64_C(10485761);
  EXPECT(1, qs_large_scan_include(L"D:\\film.mkv", large, 1, L"C:\\", L"C:\\Users\\me"));
  EXPECT(0, qs_large_scan_include(L"C:\\Windows\\film.mkv", large, 1, L"C:\\", L"C:\\Users\\me"));
  EXPECT(0, qs_large_scan_include(NULL, large, 1, L"C:\\", L"C:\\Users\\me"));
  EXPECT(1, qs_large_scan_include(L"C:\\Windows\\film.mkv", large, 1, NULL, L"C:\\Users\\me"));
  EXPECT(1, qs_large_scan_include(L"C:\\Windows\\film.mkv", large, 1, L"C:\\", NULL));

  EXPECT(QS_LARGE_MEDIA, qs_large_file_classify(L"D:\\film.MKV"));
  EXPECT(QS_LARGE_OTHER, qs_large_file_classify(NULL));

  EXPECT(1, qs_large_file_included(large));
  EXPECT(0, qs_large_file_included(large - 1));

  EXPECT_TEXT("Huge", qs_summary_bucket(INT64_C(1073741825)));
  EXPECT_TEXT("None", qs_summary_bucket(INT64_C(1073741824)));
}

void call_junk_exports(void) {
  qs_char out[kUnits];
  uint64_t needed = 0;
  EXPECT(QS_OK, qs_expand_junk_path(L"{UserHome}\\x", L"C:\\me", L"C:\\", out, kUnits, &needed));
  CHECK(wcscmp(out, L"C:\\me\\x") == 0);
  CHECK(needed == 8);
  EXPECT(QS_INVALID_ARGUMENT, qs_expand_junk_path(NULL, L"C:\\me", L"C:\\", out, kUnits, &needed));
  EXPECT(QS_INVALID_ARGUMENT, qs_expand_junk_path(L"{Root}x", NULL, L"C:\\", out, kUnits, &needed));
  EXPECT(QS_INVALID_ARGUMENT,
         qs_expand_junk_path(L"{Root}x", L"C:\\me", NULL, out, kUnits, &needed));
  EXPECT(QS_BUFFER_TOO_SMALL,
         qs_expand_junk_path(L"{Root}x", L"C:\\me", L"C:\\", NULL, 0, &needed));
  CHECK(needed == 5);
  EXPECT(QS_OK, qs_expand_junk_path(L"{Root}x", L"C:\\me", L"C:\\", out, kUnits, NULL));
  CHECK(wcscmp(out, L"C:\\x") == 0);

  put_folder(L"hollow");
  put_folder(L"hollow\\inner");
  EXPECT(1, qs_empty_directory_eligible(in_scratch(L"hollow")));
  put_file(L"hollow\\inner\\file.txt", "");
  EXPECT(0, qs_empty_directory_eligible(in_scratch(L"hollow")));
  EXPECT(0, qs_empty_directory_eligible(NULL));
}

void call_hash_exports(void) {
  put_file(L"hashed.txt", "");
  const qs_char* path = in_scratch(L"hashed.txt");
  char out[9] = "........";
  uint32_t cancel = 0;
  EXPECT(QS_OK, qs_xxhash32_file(path, out, sizeof(out)));
  CHECK(strcmp(out, "055dcc02") == 0);
  strcpy(out, "........");
  EXPECT(QS_INVALID_ARGUMENT, qs_xxhash32_file(NULL, out, sizeof(out)));
  EXPECT(QS_BUFFER_TOO_SMALL, qs_xxhash32_file(path, NULL, sizeof(out)));
  EXPECT(QS_BUFFER_TOO_SMALL, qs_xxhash32_file(path, out, sizeof(out) - 1));
  CHECK(strcmp(out, "........") == 0);

  EXPECT(QS_OK, qs_xxhash32_file_cancelable(path, out, sizeof(out), &cancel));
  CHECK(strcmp(out, "055dcc02") == 0);
  strcpy(out, "........");
  EXPECT(QS_INVALID_ARGUMENT, qs_xxhash32_file_cancelable(NULL, out, sizeof(out), &cancel));
  EXPECT(QS_BUFFER_TOO_SMALL, qs_xxhash32_file_cancelable(path, NULL, sizeof(out), &cancel));
  CHECK(strcmp(out, "........") == 0);
  EXPECT(QS_OK, qs_xxhash32_file_cancelable(path, out, sizeof(out), NULL));
  CHECK(strcmp(out, "055dcc02") == 0);
  cancel = 1;
  strcpy(out, "........");
  EXPECT(QS_CANCELLED, qs_xxhash32_file_cancelable(path, out, sizeof(out), &cancel));
  CHECK(strcmp(out, "........") == 0);

  EXPECT(QS_OK, qs_xxhash32_hex("abc", 3, out, sizeof(out)));
  CHECK(strcmp(out, "ff53d132") == 0);
  EXPECT(QS_INVALID_ARGUMENT, qs_xxhash32_hex(NULL, 3, out, sizeof(out)));
  EXPECT(QS_BUFFER_TOO_SMALL, qs_xxhash32_hex("abc", 3, NULL, sizeof(out)));
  EXPECT(QS_OK, qs_xxhash32_hex(NULL, 0, out, sizeof(out)));
  CHECK(strcmp(out, "055dcc02") == 0);
}

void call_duplicate_exports(void) {
  put_file(L"sampled.txt", "AB");
  const qs_char* path = in_scratch(L"sampled.txt");
  char sample[301];
  EXPECT(QS_OK, qs_duplicate_sample_hex(path, 2, sample, sizeof(sample)));
  CHECK(strlen(sample) == 300 && memcmp(sample, "414200", 6) == 0);
  EXPECT(QS_INVALID_ARGUMENT, qs_duplicate_sample_hex(NULL, 2, sample, sizeof(sample)));
  EXPECT(QS_BUFFER_TOO_SMALL, qs_duplicate_sample_hex(path, 2, NULL, sizeof(sample)));
  EXPECT(QS_BUFFER_TOO_SMALL, qs_duplicate_sample_hex(path, 2, sample, sizeof(sample) - 1));

  char key[kUnits];
  uint64_t needed = 0;
  EXPECT(QS_OK, qs_duplicate_sample_group_key(2, "4142", key, sizeof(key), &needed));
  CHECK(strcmp(key, "2 4142") == 0 && needed == 7);
  EXPECT(QS_INVALID_ARGUMENT, qs_duplicate_sample_group_key(2, NULL, key, sizeof(key), &needed));
  EXPECT(QS_BUFFER_TOO_SMALL, qs_duplicate_sample_group_key(2, "4142", NULL, 0, &needed));
  CHECK(needed == 7);
  EXPECT(QS_OK, qs_duplicate_sample_group_key(3, "4142", key, sizeof(key), NULL));
  CHECK(strcmp(key, "3 4142") == 0);

  EXPECT(QS_OK, qs_duplicate_hash_group_key("2 4142", "0a0b0c0d", key, sizeof(key), &needed));
  CHECK(strcmp(key, "2 4142 0a0b0c0d") == 0 && needed == 16);
  EXPECT(QS_INVALID_ARGUMENT,
         qs_duplicate_hash_group_key(NULL, "0a0b0c0d", key, sizeof(key), &needed));
  EXPECT(QS_INVALID_ARGUMENT,
         qs_duplicate_hash_group_key("2 4142", NULL, key, sizeof(key), &needed));
  EXPECT(QS_BUFFER_TOO_SMALL, qs_duplicate_hash_group_key("2 4142", "0a0b0c0d", NULL, 0, &needed));
  EXPECT(QS_OK, qs_duplicate_hash_group_key("3 4142", "0a0b0c0d", key, sizeof(key), NULL));
  CHECK(strcmp(key, "3 4142 0a0b0c0d") == 0);

  EXPECT(1, qs_duplicate_scan_include(L"D:\\a.txt", 1, L"C:\\", L"C:\\Users\\me"));
  EXPECT(0, qs_duplicate_scan_include(L"C:\\Windows\\a.txt", 1, L"C:\\", L"C:\\Users\\me"));
  EXPECT(0, qs_duplicate_scan_include(NULL, 1, L"C:\\", L"C:\\Users\\me"));
  EXPECT(1, qs_duplicate_scan_include(L"C:\\Windows\\a.txt", 1, NULL, L"C:\\Users\\me"));
  EXPECT(1, qs_duplicate_scan_include(L"C:\\Windows\\a.txt", 1, L"C:\\", NULL));
}
