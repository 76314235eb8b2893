#include "duplicate/open_record.h"

#include <ostream>

#include "faults/allocation_faults.h"
#include "support/text.h"

namespace quastel::duplicate_tests {
namespace {

thread_local OpenRecord* open_record = nullptr;

}  // namespace

// The linker leads every call of OpenFile here, and the second name to the real one.
platform::Result<platform::FileHandle> WatchedOpenFile(const Char* path, std::uint32_t access,
                                                       std::uint32_t share,
                                                       platform::Disposition disposition,
                                                       std::uint32_t flags) noexcept
    asm("__wrap__ZN7quastel8platform8OpenFileEPKDsjjNS0_11DispositionEj");
platform::Result<platform::FileHandle> RealOpenFile(const Char* path, std::uint32_t access,
                                                    std::uint32_t share,
                                                    platform::Disposition disposition,
                                                    std::uint32_t flags) noexcept
    asm("__real__ZN7quastel8platform8OpenFileEPKDsjjNS0_11DispositionEj");

OpenRecord::OpenRecord() {
  open_record = this;
}

OpenRecord::~OpenRecord() {
  open_record = nullptr;
}

platform::Result<platform::FileHandle> WatchedOpenFile(const Char* path, std::uint32_t access,
                                                       std::uint32_t share,
                                                       platform::Disposition disposition,
                                                       std::uint32_t flags) noexcept {
  if (open_record != nullptr) {
    const faults::AllocationFaultPause own_memory;
    open_record->Note({support::Utf8(path), access, share, disposition, flags});
  }
  return RealOpenFile(path, access, share, disposition, flags);
}

void PrintTo(const OpenCall& call, std::ostream* out) {
  *out << call.path << std::hex << ", access 0x" << call.access << ", share 0x" << call.share
       << ", disposition " << static_cast<std::uint32_t>(call.disposition) << ", flags 0x"
       << call.flags << std::dec;
}

}  // namespace quastel::duplicate_tests
