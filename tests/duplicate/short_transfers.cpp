#include "duplicate/short_transfers.h"

#include <algorithm>

#include "platform/file.h"

namespace quastel::duplicate_tests {
namespace {

constexpr std::uint32_t kNoLimit = 0xFFFFFFFF;
thread_local std::uint32_t most_read = kNoLimit;
thread_local std::uint32_t most_written = kNoLimit;

}  // namespace

using platform::FileHandle;
using platform::Result;

// The linker leads every call of ReadFrom and WriteTo here, and the other names to the real ones.
Result<std::uint32_t> ShortReadFrom(const FileHandle& file, void* buffer,
                                    std::uint32_t size) noexcept
    asm("__wrap__ZN7quastel8platform8ReadFromERKNS0_12UniqueHandleINS0_10FilePolicyEEEPvj");
Result<std::uint32_t> RealReadFrom(const FileHandle& file, void* buffer,
                                   std::uint32_t size) noexcept
    asm("__real__ZN7quastel8platform8ReadFromERKNS0_12UniqueHandleINS0_10FilePolicyEEEPvj");
Result<std::uint32_t> ShortWriteTo(const FileHandle& file, const void* data,
                                   std::uint32_t size) noexcept
    asm("__wrap__ZN7quastel8platform7WriteToERKNS0_12UniqueHandleINS0_10FilePolicyEEEPKvj");
Result<std::uint32_t> RealWriteTo(const FileHandle& file, const void* data,
                                  std::uint32_t size) noexcept
    asm("__real__ZN7quastel8platform7WriteToERKNS0_12UniqueHandleINS0_10FilePolicyEEEPKvj");

Result<std::uint32_t> ShortReadFrom(const FileHandle& file, void* buffer,
                                    std::uint32_t size) noexcept {
  return RealReadFrom(file, buffer, std::min(size, most_read));
}

Result<std::uint32_t> ShortWriteTo(const FileHandle& file, const void* data,
                                   std::uint32_t size) noexcept {
  return RealWriteTo(file, data, std::min(size, most_written));
}

ShortReads::ShortReads(std::uint32_t most) {
  most_read = most;
}

ShortReads::~ShortReads() {
  most_read = kNoLimit;
}

ShortWrites::ShortWrites(std::uint32_t most) {
  most_written = most;
}

ShortWrites::~ShortWrites() {
  most_written = kNoLimit;
}

}  // namespace quastel::duplicate_tests
