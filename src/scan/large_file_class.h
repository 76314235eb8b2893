// What counts as a large file, and the classes that large files are reported in.

#ifndef QUASTEL_SCAN_LARGE_FILE_CLASS_H_
#define QUASTEL_SCAN_LARGE_FILE_CLASS_H_

#include <cstdint>

#include "base/text.h"

namespace quastel {

enum class LargeFileCategory : std::uint32_t {
  kArchives = 0,
  kDocuments = 1,
  kImages = 2,
  kMedia = 3,
  kOther = 4,
};

// Strictly more than 10 MiB.
bool IsLargeFile(std::int64_t size);

// By the extension: the text from the last dot of the last component on.
LargeFileCategory ClassifyLargeFile(TextView path);

// "Archives", "Documents", "Images", "Media files" or "Other".
TextView GroupWordOf(LargeFileCategory category);

// "Huge", "Medium", "Small", or "None" for the two sizes that are in no bucket.
const char* SummaryBucketOf(std::int64_t size);

}  // namespace quastel

#endif  // QUASTEL_SCAN_LARGE_FILE_CLASS_H_
