// What the two sampling stages read of one file.

#ifndef QUASTEL_DUPLICATE_FILE_SAMPLE_H_
#define QUASTEL_DUPLICATE_FILE_SAMPLE_H_

#include <cstdint>
#include <span>

#include "base/text.h"
#include "duplicate/digest_text.h"
#include "duplicate/sample.h"

namespace quastel::duplicate {

// The digits of a whole small file, which are kept in `digits`. Empty when it cannot be read.
DigestText SampleSmallFile(const Char* path, std::int64_t size,
                           std::span<char, kSampleTextLength> digits);

// The hash of the first bytes of a larger file; empty when they cannot be read.
DigestText SampleHead(const Char* path, std::int64_t size);

// The same of the last bytes. The head of a short file was the whole of it and stands for its tail.
DigestText SampleTail(const Char* path, std::int64_t size, const DigestText& head);

}  // namespace quastel::duplicate

#endif  // QUASTEL_DUPLICATE_FILE_SAMPLE_H_
