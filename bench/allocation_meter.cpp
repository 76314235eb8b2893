#include "allocation_meter.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

#include "platform/file.h"

namespace {

std::atomic<std::uint64_t> in_use{0};
std::atomic<std::uint64_t> peak{0};
thread_local bool is_paused = false;

// What stands in front of each block: how much of it is counted. It is as long as what the heap of
// a real system puts there.
constexpr std::size_t kHeader = alignof(std::max_align_t);

void* Allocate(std::size_t size) {
  void* const block = std::malloc(kHeader + size);
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  const std::uint64_t counted = is_paused ? 0 : kHeader + size;
  *static_cast<std::uint64_t*>(block) = counted;
  const std::uint64_t now = in_use.fetch_add(counted) + counted;
  std::uint64_t highest = peak.load();
  while (now > highest && !peak.compare_exchange_weak(highest, now)) {
  }
  return static_cast<unsigned char*>(block) + kHeader;
}

void Release(void* memory) noexcept {
  if (memory != nullptr) {
    void* const block = static_cast<unsigned char*>(memory) - kHeader;
    in_use.fetch_sub(*static_cast<std::uint64_t*>(block));
    std::free(block);
  }
}

}  // namespace

void* operator new(std::size_t size) {
  return Allocate(size);
}
void* operator new[](std::size_t size) {
  return Allocate(size);
}
void operator delete(void* block) noexcept {
  Release(block);
}
void operator delete[](void* block) noexcept {
  Release(block);
}
void operator delete(void* block, std::size_t) noexcept {
  Release(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  Release(block);
}

namespace quastel::platform {

// What is written goes onto the simulated disk, and what is opened leaves a trace there: memory,
// but none of the scan's.
Result<std::uint32_t> RealWriteTo(const FileHandle& file, const void* data,
                                  std::uint32_t size) noexcept
    asm("__real__ZN7quastel8platform7WriteToERKNS0_12UniqueHandleINS0_10FilePolicyEEEPKvj");
Result<std::uint32_t> MeteredWriteTo(const FileHandle& file, const void* data,
                                     std::uint32_t size) noexcept
    asm("__wrap__ZN7quastel8platform7WriteToERKNS0_12UniqueHandleINS0_10FilePolicyEEEPKvj");

Result<FileHandle> RealOpenFile(const Char* path, std::uint32_t access, std::uint32_t share,
                                Disposition disposition, std::uint32_t flags) noexcept
    asm("__real__ZN7quastel8platform8OpenFileEPKDsjjNS0_11DispositionEj");
Result<FileHandle> MeteredOpenFile(const Char* path, std::uint32_t access, std::uint32_t share,
                                   Disposition disposition, std::uint32_t flags) noexcept
    asm("__wrap__ZN7quastel8platform8OpenFileEPKDsjjNS0_11DispositionEj");

Result<FileHandle> MeteredOpenFile(const Char* path, std::uint32_t access, std::uint32_t share,
                                   Disposition disposition, std::uint32_t flags) noexcept {
  is_paused = true;
  auto file = RealOpenFile(path, access, share, disposition, flags);
  is_paused = false;
  return file;
}

Result<std::uint32_t> MeteredWriteTo(const FileHandle& file, const void* data,
                                     std::uint32_t size) noexcept {
  is_paused = true;
  auto result = RealWriteTo(file, data, size);
  is_paused = false;
  return result;
}

}  // namespace quastel::platform

namespace quastel::bench {

std::uint64_t BytesInUse() {
  return in_use;
}
std::uint64_t PeakBytes() {
  return peak;
}
void ResetPeak() {
  peak = in_use.load();
}

}  // namespace quastel::bench
