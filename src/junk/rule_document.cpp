#include "junk/rule_document.h"

#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include "base/little_endian.h"
#include "fs/path_rules.h"
#include "platform/file.h"
#include "platform/process.h"

namespace quastel::junk {
namespace {

constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

qs_status ReadWhole(const Text& path, std::string& bytes) {
  const auto file =
      platform::OpenFile(ToLongPath(path).c_str(), platform::kAccessRead, platform::kShareAll,
                         platform::Disposition::kOpenExisting, platform::kAttributeNormal);
  if (!file.ok()) {
    return platform::IsFileNotFound(file.error()) ? QS_NOT_FOUND : QS_FAILED;
  }
  const auto size = platform::QuerySize(file.value());
  if (!size.ok() || size.value() < 1 || size.value() > std::numeric_limits<std::int32_t>::max()) {
    return QS_FAILED;
  }
  bytes.resize(static_cast<std::size_t>(size.value()));
  const auto read =
      platform::ReadFrom(file.value(), bytes.data(), static_cast<std::uint32_t>(bytes.size()));
  return read.ok() && read.value() == bytes.size() ? QS_OK : QS_FAILED;
}

Text DecodeUtf16(std::string_view bytes) {
  Text text(bytes.size() / 2, Char{});
  const auto* raw = reinterpret_cast<const unsigned char*>(bytes.data());
  for (std::size_t i = 0; i < text.size(); ++i) {
    text[i] = static_cast<Char>(LoadLittleEndian<std::uint16_t>(raw + 2 * i));
  }
  return text;
}

std::optional<Text> DecodeUtf8(std::string_view bytes) {
  const auto size = static_cast<std::uint32_t>(bytes.size());
  if (size == 0) {
    return std::nullopt;
  }
  const auto needed = platform::DecodeUtf8(bytes.data(), size, nullptr, 0);
  if (!needed.ok()) {
    return std::nullopt;
  }
  Text text(needed.value(), Char{});
  const auto decoded = platform::DecodeUtf8(bytes.data(), size, text.data(), needed.value());
  return decoded.ok() && decoded.value() == needed.value() ? std::optional(std::move(text))
                                                           : std::nullopt;
}

std::optional<Text> Decode(std::string_view bytes) {
  if (bytes.starts_with(kUtf16Mark)) {
    return DecodeUtf16(bytes.substr(kUtf16Mark.size()));
  }
  if (bytes.starts_with(kUtf8Mark)) {
    bytes.remove_prefix(kUtf8Mark.size());
  }
  return DecodeUtf8(bytes);
}

}  // namespace

qs_status LoadRuleDocument(const Text& path, RuleNode& root) {
  std::string bytes;
  const qs_status status = ReadWhole(path, bytes);
  if (status != QS_OK) {
    return status;
  }
  const std::optional<Text> document = Decode(bytes);
  return document && ParseRuleDocument(*document, root) ? QS_OK : QS_FAILED;
}

}  // namespace quastel::junk
