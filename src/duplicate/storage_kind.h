// What kind of storage a scan works on, and how many threads that bears.

#ifndef QUASTEL_DUPLICATE_STORAGE_KIND_H_
#define QUASTEL_DUPLICATE_STORAGE_KIND_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/text.h"

namespace quastel::duplicate {

enum class StorageKind : std::uint32_t {
  kRotational = 0,  // one root at least is on a disk with a seek penalty
  kSolidState = 1,  // every root is on a disk without one
  kUnknown = 2,     // a root is on a network or removable volume, or the device does not say
};

StorageKind ProbeStorageKind(const std::vector<Text>& roots);

// The number of worker threads for a stage: bounded by the storage, the processors and the items.
std::size_t WorkerCountFor(std::size_t items, StorageKind kind);

}  // namespace quastel::duplicate

#endif  // QUASTEL_DUPLICATE_STORAGE_KIND_H_
