#include "scratch.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <wchar.h>
#include <windows.h>

#include "expect.h"

enum { kPathUnits = 1024, kPathsInUse = 8 };

static wchar_t folder[kPathUnits];

static void stop(const char* what) {
  printf("cannot %s: error %lu\n", what, GetLastError());
  exit(1);
}

void make_scratch(void) {
  wchar_t temporary[MAX_PATH + 1];
  if (GetTempPathW(MAX_PATH + 1, temporary) == 0) {
    stop("find the temporary folder");
  }
  swprintf(folder, kPathUnits, L"%lsquastel-every-export-%lu-%llu", temporary,
           GetCurrentProcessId(), (unsigned long long)GetTickCount64());
  /* Fails when there is such a folder already. */
  if (!CreateDirectoryW(folder, NULL)) {
    stop("make a folder");
  }
}

/* Deletes what lies in a folder, and the folder. Links are removed and never entered. */
static void remove_tree(const wchar_t* path) {
  wchar_t pattern[kPathUnits];
  swprintf(pattern, kPathUnits, L"%ls\\*", path);
  WIN32_FIND_DATAW found;
  const HANDLE search = FindFirstFileW(pattern, &found);
  if (search != INVALID_HANDLE_VALUE) {
    do {
      if (wcscmp(found.cFileName, L".") == 0 || wcscmp(found.cFileName, L"..") == 0) {
        continue;
      }
      wchar_t child[kPathUnits];
      swprintf(child, kPathUnits, L"%ls\\%ls", path, found.cFileName);
      const bool is_link = (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
      if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
        DeleteFileW(child);
      } else if (is_link) {
        RemoveDirectoryW(child);
      } else {
        remove_tree(child);
      }
    } while (FindNextFileW(search, &found));
    FindClose(search);
  }
  RemoveDirectoryW(path);
}

void remove_scratch(void) {
  remove_tree(folder);
}

const qs_char* in_scratch(const qs_char* name) {
  static wchar_t paths[kPathsInUse][kPathUnits];
  static int next;
  wchar_t* path = paths[next];
  next = (next + 1) % kPathsInUse;
  swprintf(path, kPathUnits, L"%ls%ls%ls", folder, name[0] == L'\0' ? L"" : L"\\", name);
  return path;
}

void put_folder(const qs_char* name) {
  if (!CreateDirectoryW(in_scratch(name), NULL)) {
    stop("make a folder in it");
  }
}

static HANDLE new_file(const qs_char* name) {
  const HANDLE file = CreateFileW(in_scratch(name), GENERIC_WRITE, 0, NULL, CREATE_NEW,
                                  FILE_ATTRIBUTE_NORMAL, NULL);
  if (file == INVALID_HANDLE_VALUE) {
    stop("make a file");
  }
  return file;
}

void put_file(const qs_char* name, const char* content) {
  const HANDLE file = new_file(name);
  DWORD written = 0;
  if (!WriteFile(file, content, (DWORD)strlen(content), &written, NULL)) {
    stop("write a file");
  }
  CloseHandle(file);
}

void put_sized_file(const qs_char* name, int64_t size) {
  const HANDLE file = new_file(name);
  LARGE_INTEGER end;
  end.QuadPart = size;
  if (!SetFilePointerEx(file, end, NULL, FILE_BEGIN) || !SetEndOfFile(file)) {
    stop("size a file");
  }
  CloseHandle(file);
}

bool is_there(const qs_char* name) {
  return GetFileAttributesW(in_scratch(name)) != INVALID_FILE_ATTRIBUTES;
}

static void keep_snapshot(void* user, const qs_char* path, uint64_t size, uint64_t last_write,
                          const qs_char* name) {
  (void)path;
  (void)name;
  snapshot* kept = (snapshot*)user;
  kept->size = size;
  kept->last_write = last_write;
}

snapshot snapshot_of(const qs_char* parent, const qs_char* file_name) {
  snapshot kept = {0, 0};
  EXPECT(QS_OK, qs_enumerate_files(in_scratch(parent), file_name, 0, keep_snapshot, &kept, NULL));
  CHECK(kept.last_write != 0);
  return kept;
}
