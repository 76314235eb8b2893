#include "platform/search.h"

#include <cstddef>

#include "platform/win32/windows_api.h"

namespace quastel::platform {

namespace {

// The system writes straight into the seam's record; that is right only while both are laid out
// alike to the byte.
static_assert(sizeof(FindData) == sizeof(WIN32_FIND_DATAW));
static_assert(alignof(FindData) == alignof(WIN32_FIND_DATAW));
static_assert(offsetof(FindData, attributes) == offsetof(WIN32_FIND_DATAW, dwFileAttributes));
static_assert(offsetof(FindData, creation_time) == offsetof(WIN32_FIND_DATAW, ftCreationTime));
static_assert(offsetof(FindData, last_access_time) == offsetof(WIN32_FIND_DATAW, ftLastAccessTime));
static_assert(offsetof(FindData, last_write_time) == offsetof(WIN32_FIND_DATAW, ftLastWriteTime));
static_assert(offsetof(FindData, size_high) == offsetof(WIN32_FIND_DATAW, nFileSizeHigh));
static_assert(offsetof(FindData, size_low) == offsetof(WIN32_FIND_DATAW, nFileSizeLow));
static_assert(offsetof(FindData, reparse_tag) == offsetof(WIN32_FIND_DATAW, dwReserved0));
static_assert(offsetof(FindData, reserved) == offsetof(WIN32_FIND_DATAW, dwReserved1));
static_assert(offsetof(FindData, name) == offsetof(WIN32_FIND_DATAW, cFileName));
static_assert(offsetof(FindData, short_name) == offsetof(WIN32_FIND_DATAW, cAlternateFileName));
static_assert(sizeof(FindData::name) == sizeof(WIN32_FIND_DATAW::cFileName));
static_assert(sizeof(FindData::short_name) == sizeof(WIN32_FIND_DATAW::cAlternateFileName));

WIN32_FIND_DATAW* ToSystemRecord(FindData& entry) noexcept {
  return reinterpret_cast<WIN32_FIND_DATAW*>(&entry);
}

}  // namespace

void SearchPolicy::Close(RawHandle raw) noexcept {
  const LastErrorKeeper keeper;
  ::FindClose(ToSystemHandle(raw));
}

Result<SearchHandle> FindFirstBasic(const Char* pattern, SearchOperation operation,
                                    FindData& entry) noexcept {
  const HANDLE search = ::FindFirstFileExW(pattern, FindExInfoBasic, ToSystemRecord(entry),
                                           static_cast<FINDEX_SEARCH_OPS>(operation), nullptr, 0);
  if (search == INVALID_HANDLE_VALUE) {
    return FailureOfLastCall();
  }
  return SearchHandle(ToRawHandle(search));
}

Result<SearchHandle> FindFirst(const Char* pattern, FindData& entry) noexcept {
  const HANDLE search = ::FindFirstFileW(pattern, ToSystemRecord(entry));
  if (search == INVALID_HANDLE_VALUE) {
    return FailureOfLastCall();
  }
  return SearchHandle(ToRawHandle(search));
}

Error FindNext(const SearchHandle& search, FindData& entry) noexcept {
  return ErrorUnless(::FindNextFileW(ToSystemHandle(search.raw()), ToSystemRecord(entry)));
}

}  // namespace quastel::platform
