#include "duplicate/file_sample.h"

#include <algorithm>
#include <optional>
#include <string>

#include "duplicate/file_hash.h"

namespace quastel::duplicate {
namespace {

DigestText SampleBlock(const Char* path, std::int64_t size, BlockPlace place) {
  const std::optional<std::string> hash = HashFileBlock(path, size, place);
  return hash ? DigestText::Of(*hash) : DigestText();
}

}  // namespace

DigestText SampleSmallFile(const Char* path, std::int64_t size,
                           std::span<char, kSampleTextLength> digits) {
  std::string text;
  if (SampleFile(path, size, text) != QS_OK) {
    return {};
  }
  std::copy_n(text.data(), digits.size(), digits.data());
  return DigestText::Of({digits.data(), digits.size()});
}

DigestText SampleHead(const Char* path, std::int64_t size) {
  return SampleBlock(path, size, BlockPlace::kStart);
}

DigestText SampleTail(const Char* path, std::int64_t size, const DigestText& head) {
  return size > kBlockSize ? SampleBlock(path, size, BlockPlace::kEnd) : head;
}

}  // namespace quastel::duplicate
