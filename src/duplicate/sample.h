// What the duplicate finder looks at before it hashes a file in full, and the keys that it groups
// files by.

#ifndef QUASTEL_DUPLICATE_SAMPLE_H_
#define QUASTEL_DUPLICATE_SAMPLE_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/text.h"

namespace quastel::duplicate {

inline constexpr std::size_t kSampleSize = 150;
inline constexpr std::size_t kSampleTextLength = 2 * kSampleSize;

// 50 bytes each from the start, the middle and the end, or the whole of a file of 150 bytes or
// less, as hexadecimal digits. `size` is what the caller knows: bytes that are not there any more
// read as zeros. QS_FAILED when the file cannot be opened or read; `text` is written for QS_OK
// only.
qs_status SampleFile(const Char* path, std::int64_t size, std::string& text);

// size, a space, sample.
std::string SampleGroupKey(std::int64_t size, std::string_view sample);

// sample group key, a space, hash text.
std::string HashGroupKey(std::string_view sample_group_key, std::string_view full_hash);

}  // namespace quastel::duplicate

#endif  // QUASTEL_DUPLICATE_SAMPLE_H_
