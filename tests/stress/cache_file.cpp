#include "cache_file.h"

#include <windows.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>

#include "demand.h"

namespace quastel::stress {
namespace {

constexpr std::string_view kMagic = "FWDCACH3";
constexpr std::uint32_t kMostEntries = 200'000;
constexpr std::uint32_t kLongestPath = 32'767;
constexpr std::uint32_t kLongestSample = 300;
constexpr std::uint32_t kHashLength = 8;

// Takes pieces from the front; none once one was not there.
class Bytes {
 public:
  explicit Bytes(std::string_view rest) : rest_(rest) {}

  std::string_view Take(std::size_t count) {
    if (count > rest_.size()) {
      good_ = false;
      rest_ = {};
      return {};
    }
    const std::string_view taken = rest_.substr(0, count);
    rest_.remove_prefix(count);
    return taken;
  }

  std::uint32_t TakeInteger(std::uint32_t limit) {
    std::uint32_t value = 0;
    int shift = 0;
    for (const char byte : Take(4)) {
      value |= std::uint32_t{static_cast<unsigned char>(byte)} << shift;
      shift += 8;
    }
    good_ = good_ && value <= limit;
    return good_ ? value : 0;
  }

  bool good() const { return good_; }
  bool empty() const { return rest_.empty(); }

 private:
  std::string_view rest_;
  bool good_ = true;
};

std::wstring ToWide(std::string_view bytes) {
  std::wstring text;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const auto low = static_cast<unsigned char>(bytes[i]);
    const auto high = static_cast<unsigned char>(bytes[i + 1]);
    text += static_cast<wchar_t>(low | (high << 8));
  }
  return text;
}

template <typename T>
void Append(std::string& out, T value) {
  for (std::size_t i = 0; i < sizeof(value); ++i) {
    out += static_cast<char>(static_cast<unsigned char>(value >> (8 * i)));
  }
}

}  // namespace

std::optional<std::size_t> CountCacheEntries(const std::wstring& path) {
  std::ifstream in(std::filesystem::path(path), std::ios::binary);
  const std::string all((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  Bytes bytes(all);
  if (bytes.Take(kMagic.size()) != kMagic) {
    return std::nullopt;
  }
  const std::uint32_t count = bytes.TakeInteger(kMostEntries);
  std::wstring last;
  for (std::uint32_t i = 0; i < count; ++i) {
    std::wstring key = ToWide(bytes.Take(std::size_t{2} * bytes.TakeInteger(kLongestPath)));
    bytes.Take(3 * sizeof(std::uint64_t));
    const std::uint32_t sample = bytes.TakeInteger(kLongestSample);
    bytes.Take(sample);
    const std::uint32_t hash = bytes.TakeInteger(kHashLength);
    bytes.Take(hash);
    if (!bytes.good() || sample == 0 || (hash != 0 && hash != kHashLength) || key <= last) {
      return std::nullopt;
    }
    last = std::move(key);
  }
  if (!bytes.good() || !bytes.empty()) {
    return std::nullopt;
  }
  return count;
}

void WriteCacheOfGhosts(const std::wstring& path, std::size_t entries) {
  FILETIME now{};
  ::GetSystemTimeAsFileTime(&now);
  std::string out(kMagic);
  Append(out, static_cast<std::uint32_t>(entries));
  for (std::size_t i = 0; i < entries; ++i) {
    // All of one length, so that their order is that of the numbers.
    const std::string key = "c:\\gone\\ghost" + std::to_string(1'000'000 + i) + ".bin";
    Append(out, static_cast<std::uint32_t>(key.size()));
    for (const char letter : key) {
      Append(out, static_cast<std::uint16_t>(letter));
    }
    Append(out, std::uint64_t{100});
    Append(out, std::uint64_t{1});
    Append(out, (std::uint64_t{now.dwHighDateTime} << 32) | now.dwLowDateTime);
    Append(out, kLongestSample);
    out.append(kLongestSample, '0');
    Append(out, std::uint32_t{0});
  }
  std::ofstream file(std::filesystem::path(path), std::ios::binary | std::ios::trunc);
  file.write(out.data(), static_cast<std::streamsize>(out.size()));
  file.close();
  QS_DEMAND(!file.fail());
}

}  // namespace quastel::stress
