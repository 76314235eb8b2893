// platform/process.h: environment, processors and text.

#include "platform/process.h"

#include <algorithm>

#include "simulated_windows/names.h"
#include "simulated_windows/state.h"

namespace quastel::platform {
namespace {

using simulated::Call;
using simulated::FaultOf;
using simulated::Living;
using simulated::SeamCall;
using simulated::State;

constexpr std::uint32_t kInvalidSequence = 0xFFFFFFFF;

// The code point at the front of `bytes`, which is cut off; kInvalidSequence for anything that is
// not the shortest form of a Unicode scalar value.
std::uint32_t TakeCodePoint(std::string_view& bytes) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
  const unsigned char first = byte(0);
  if (first < 0x80) {
    bytes.remove_prefix(1);
    return first;
  }
  const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || bytes.size() < length) {
    return kInvalidSequence;
  }
  std::uint32_t point = first & (0x7Fu >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) {
      return kInvalidSequence;
    }
    point = point << 6 | (byte(i) & 0x3Fu);
  }
  const std::uint32_t least = length == 4 ? 0x10000u : length == 3 ? 0x800u : 0x80u;
  if (point < least || point > 0x10FFFF || (point >= 0xD800 && point <= 0xDFFF)) {
    return kInvalidSequence;
  }
  bytes.remove_prefix(length);
  return point;
}

Result<std::uint32_t> Decode(std::string_view bytes, Char* out, std::uint32_t capacity) {
  std::uint32_t count = 0;
  while (!bytes.empty()) {
    const std::uint32_t point = TakeCodePoint(bytes);
    if (point == kInvalidSequence) {
      return Error::kNoUnicodeTranslation;
    }
    const std::uint32_t units = point >= 0x10000 ? 2 : 1;
    if (capacity != 0) {
      if (capacity - count < units) {
        return Error::kInsufficientBuffer;
      }
      if (units == 2) {
        out[count] = static_cast<Char>(0xD7C0 + (point >> 10));
        out[count + 1] = static_cast<Char>(0xDC00 + (point & 0x3FF));
      } else {
        out[count] = static_cast<Char>(point);
      }
    }
    count += units;
  }
  return count;
}

}  // namespace

std::uint32_t EnvironmentVariable(const Char* name, Char* buffer, std::uint32_t capacity) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kEnvironmentVariable, name, capacity);
  MutexLock lock(s.mutex);
  if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
    return call.AnswerValue(0u, fault);
  }
  Text folded(ViewOf(name));
  std::transform(folded.begin(), folded.end(), folded.begin(), simulated::FoldName);
  const auto found = s.environment.find(folded);
  if (found == s.environment.end()) {
    return call.AnswerValue(0u, Error::kEnvironmentVariableNotFound);
  }
  const Text& value = found->second;
  const auto length = static_cast<std::uint32_t>(value.size());
  if (capacity <= length) {
    // What Windows leaves in a buffer that is too short is not defined: nobody may read it.
    std::fill_n(buffer, capacity, Char{'9'});
    return call.AnswerValue(length + 1);
  }
  std::copy_n(value.c_str(), value.size() + 1, buffer);
  return call.AnswerValue(length);
}

std::uint32_t ProcessorCount() noexcept {
  State& s = Living();
  SeamCall call(s, Call::kProcessorCount);
  return s.processors.load();
}

Result<std::uint32_t> DecodeUtf8(const char* bytes, std::uint32_t size, Char* out,
                                 std::uint32_t capacity) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kDecodeUtf8, nullptr, size);
  MutexLock lock(s.mutex);
  if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
    return call.Answer(fault);
  }
  if (bytes == nullptr || size == 0 || (out == nullptr && capacity != 0)) {
    return call.Answer(Error::kInvalidParameter);
  }
  return call.Answer(Decode({bytes, size}, out, capacity));
}

// The C runtime starts in the "C" locale, where its towlower knows ASCII only.
Char FoldWide(Char c) noexcept {
  return c >= Char{'A'} && c <= Char{'Z'} ? static_cast<Char>(c + 32) : c;
}

void DisableThreadNotifications(void* /*module*/) noexcept {
  // The library is loaded before a test makes its machine.
  if (State* s = simulated::LivingOrNull(); s != nullptr) {
    SeamCall call(*s, Call::kDisableThreadNotifications);
  }
}

}  // namespace quastel::platform
