// Listing a folder: FindFirstFileExW, FindFirstFileW, FindNextFileW, FindClose.

#ifndef QUASTEL_PLATFORM_SEARCH_H_
#define QUASTEL_PLATFORM_SEARCH_H_

#include <cstdint>

#include "base/text.h"
#include "platform/attributes.h"
#include "platform/error.h"
#include "platform/handle.h"

namespace quastel::platform {

// A directory entry with the layout of WIN32_FIND_DATAW, so that no entry is copied on its way up.
struct FindData {
  Attributes attributes;
  std::uint32_t creation_time[2];
  std::uint32_t last_access_time[2];
  std::uint32_t last_write_time[2];  // FILETIME, UTC, low half first
  std::uint32_t size_high;
  std::uint32_t size_low;
  std::uint32_t reparse_tag;
  std::uint32_t reserved;
  Char name[260];
  Char short_name[14];

  std::uint64_t size() const { return std::uint64_t{size_high} << 32 | size_low; }
  std::uint64_t last_write() const {
    return std::uint64_t{last_write_time[1]} << 32 | last_write_time[0];
  }
};
static_assert(sizeof(FindData) == 592);

struct SearchPolicy {
  static constexpr RawHandle kInvalid = -1;
  static void Close(RawHandle raw) noexcept;
};
using SearchHandle = UniqueHandle<SearchPolicy>;

enum class SearchOperation : std::uint32_t {
  kNameMatch = 0,
  kLimitToDirectories = 1,  // advisory: file systems may return files as well
};

// FindFirstFileExW with FindExInfoBasic, no filter and no additional flags.
Result<SearchHandle> FindFirstBasic(const Char* pattern, SearchOperation operation,
                                    FindData& entry) noexcept;

// FindFirstFileW.
Result<SearchHandle> FindFirst(const Char* pattern, FindData& entry) noexcept;

// FindNextFileW; Error::kNoMoreFiles at the end.
[[nodiscard]] Error FindNext(const SearchHandle& search, FindData& entry) noexcept;

}  // namespace quastel::platform

#endif  // QUASTEL_PLATFORM_SEARCH_H_
