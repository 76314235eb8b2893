#include "duplicate/sample.h"

#include <array>
#include <span>

#include "duplicate/hash_text.h"
#include "fs/path_rules.h"
#include "platform/file.h"

namespace quastel::duplicate {
namespace {

constexpr std::size_t kPieceSize = 50;

// Reads at an offset; what the file does not deliver stays as it is.
bool ReadPiece(const platform::FileHandle& file, std::int64_t offset,
               std::span<unsigned char> piece) {
  return platform::SeekTo(file, offset) == platform::Error::kNone &&
         platform::ReadFrom(file, piece.data(), static_cast<std::uint32_t>(piece.size())).ok();
}

bool ReadSample(const platform::FileHandle& file, std::int64_t size,
                std::span<unsigned char, kSampleSize> sample) {
  if (size <= static_cast<std::int64_t>(kSampleSize)) {
    return ReadPiece(file, 0, sample);
  }
  constexpr auto kHalfPiece = static_cast<std::int64_t>(kPieceSize / 2);
  constexpr auto kPiece = static_cast<std::int64_t>(kPieceSize);
  return ReadPiece(file, 0, sample.subspan(0, kPieceSize)) &&
         ReadPiece(file, size / 2 - kHalfPiece, sample.subspan(kPieceSize, kPieceSize)) &&
         ReadPiece(file, size - kPiece, sample.subspan(2 * kPieceSize, kPieceSize));
}

}  // namespace

qs_status SampleFile(const Char* path, std::int64_t size, std::string& text) {
  const auto file =
      platform::OpenFile(LongPath(path).c_str(), platform::kAccessRead, platform::kShareAll,
                         platform::Disposition::kOpenExisting, platform::kAttributeNormal);
  if (!file.ok()) {
    return QS_FAILED;
  }
  std::array<unsigned char, kSampleSize> sample = {};
  if (!ReadSample(file.value(), size, sample)) {
    return QS_FAILED;
  }
  text = HexText(sample);
  return QS_OK;
}

std::string SampleGroupKey(std::int64_t size, std::string_view sample) {
  return std::to_string(size).append(1, ' ').append(sample);
}

std::string HashGroupKey(std::string_view sample_group_key, std::string_view full_hash) {
  return std::string(sample_group_key).append(1, ' ').append(full_hash);
}

}  // namespace quastel::duplicate
