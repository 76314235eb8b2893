// The hash cache of the duplicate scan as a file, read and written without the library.

#ifndef QUASTEL_TESTS_STRESS_CACHE_FILE_H_
#define QUASTEL_TESTS_STRESS_CACHE_FILE_H_

#include <cstddef>
#include <optional>
#include <string>

namespace quastel::stress {

// The number of entries; nothing unless the file is whole, in order and ends with its last entry.
std::optional<std::size_t> CountCacheEntries(const std::wstring& path);

// A cache of so many fresh entries for files that do not exist. They stay in it for 72 hours, so
// that reading and writing it takes its time. Its folder must be there.
void WriteCacheOfGhosts(const std::wstring& path, std::size_t entries);

}  // namespace quastel::stress

#endif  // QUASTEL_TESTS_STRESS_CACHE_FILE_H_
