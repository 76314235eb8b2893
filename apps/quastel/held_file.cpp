#include "held_file.h"

#include <windows.h>

#include <cstring>

#include "path_complaint.h"

namespace quastel::client {
namespace {

constexpr std::size_t kBlock = 1'048'576;

std::uint64_t Join(DWORD high, DWORD low) {
  return std::uint64_t{high} << 32 | low;
}

}  // namespace

HeldFile::~HeldFile() {
  if (handle_ != nullptr) {
    CloseHandle(handle_);
  }
}

unsigned long HeldFile::Open(const std::wstring& path, Sharing sharing) {
  const DWORD share =
      FILE_SHARE_READ | (sharing == Sharing::kMayBeRemoved ? FILE_SHARE_DELETE : 0u);
  HANDLE handle = CreateFileW(SystemForm(path).c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING,
                              FILE_FLAG_SEQUENTIAL_SCAN | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
  if (handle == INVALID_HANDLE_VALUE) {
    return GetLastError();
  }
  handle_ = handle;
  return ERROR_SUCCESS;
}

std::optional<FileIdentity> HeldFile::Identity() const {
  BY_HANDLE_FILE_INFORMATION facts = {};
  if (GetFileInformationByHandle(handle_, &facts) == FALSE ||
      (facts.dwFileAttributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) != 0) {
    return std::nullopt;
  }
  return FileIdentity{facts.dwVolumeSerialNumber, Join(facts.nFileIndexHigh, facts.nFileIndexLow)};
}

std::optional<std::uint32_t> HeldFile::Read(std::vector<unsigned char>& buffer) const {
  DWORD total = 0;
  const auto size = static_cast<DWORD>(buffer.size());
  while (total < size) {
    DWORD count = 0;
    if (ReadFile(handle_, buffer.data() + total, size - total, &count, nullptr) == FALSE) {
      return std::nullopt;
    }
    if (count == 0) {
      break;
    }
    total += count;
  }
  return total;
}

Comparison CompareContents(const HeldFile& a, const HeldFile& b, const std::atomic<bool>& cancel) {
  std::vector<unsigned char> from_a(kBlock);
  std::vector<unsigned char> from_b(kBlock);
  for (;;) {
    if (cancel) {
      return Comparison::kCancelled;
    }
    const std::optional<std::uint32_t> count_a = a.Read(from_a);
    const std::optional<std::uint32_t> count_b = b.Read(from_b);
    if (!count_a || !count_b) {
      return Comparison::kUnreadable;
    }
    if (*count_a != *count_b || std::memcmp(from_a.data(), from_b.data(), *count_a) != 0) {
      return Comparison::kDifferent;
    }
    if (*count_a < kBlock) {
      return Comparison::kEqual;
    }
  }
}

}  // namespace quastel::client
