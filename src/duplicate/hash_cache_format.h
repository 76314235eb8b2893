// The layout of the duplicate hash cache file, for reader and writer alike.
//
//   file  = magic, count (u32, at most kMaxEntries), count times entry; what follows is not read
//   entry = path length n in code units (u32), n code units (UTF-16),
//           size (u64), last-write time (u64), confirmed time (u64),
//           sample length s (u32), s bytes, hash length h (u32), h bytes
//
// All integers are little-endian. docs/cache-format.md describes the file for other programs.

#ifndef QUASTEL_DUPLICATE_HASH_CACHE_FORMAT_H_
#define QUASTEL_DUPLICATE_HASH_CACHE_FORMAT_H_

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "base/text.h"

namespace quastel::duplicate {

inline constexpr std::string_view kCacheMagic = "FWDCACH3";
inline constexpr std::uint32_t kMaxEntries = 200'000;
inline constexpr std::uint32_t kMaxPathLength = 32'767;
inline constexpr std::uint32_t kMaxSampleLength = 300;
inline constexpr std::uint32_t kMaxHashLength = 8;

// The bytes of an entry whose texts are empty, and of one whose texts are as long as they may be.
inline constexpr std::size_t kEmptyEntry = 3 * sizeof(std::uint32_t) + 3 * sizeof(std::uint64_t);
inline constexpr std::size_t kLongestEntry =
    kEmptyEntry + kMaxPathLength * sizeof(Char) + kMaxSampleLength + kMaxHashLength;

// 72 hours in 100-nanosecond units: how long an entry holds after it was last confirmed.
inline constexpr std::uint64_t kLifetime = 2'592'000'000'000;

// Below the profile folder.
inline constexpr TextView kCachePath =
    QS_TEXT("AppData\\Local\\Vantrelloc\\Ferrowynd\\cache\\duplicate-hashes-v1.bin");
inline constexpr TextView kTemporarySuffix = QS_TEXT(".tmp");

}  // namespace quastel::duplicate

#endif  // QUASTEL_DUPLICATE_HASH_CACHE_FORMAT_H_
