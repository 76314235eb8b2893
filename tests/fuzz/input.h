// The bytes of one run, taken from the front. When they are used up everything is 0: a shorter
// input means a smaller run, so the fuzzer can cut its findings down.

#ifndef QUASTEL_TESTS_FUZZ_INPUT_H_
#define QUASTEL_TESTS_FUZZ_INPUT_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "base/text.h"

namespace quastel::fuzz {

class Input {
 public:
  explicit Input(std::string_view bytes) : rest_(bytes) {}

  bool empty() const { return rest_.empty(); }

  std::uint8_t Byte() {
    if (rest_.empty()) {
      return 0;
    }
    const auto byte = static_cast<std::uint8_t>(rest_.front());
    rest_.remove_prefix(1);
    return byte;
  }

  // 0 to limit - 1, from one byte; 0 without a limit.
  std::size_t Below(std::size_t limit) { return limit == 0 ? 0 : Byte() % limit; }

  bool OneIn(std::size_t n) { return Byte() % n == n - 1; }

  std::uint64_t Number(int bytes) {
    std::uint64_t value = 0;
    for (int i = 0; i < bytes; ++i) {
      value |= std::uint64_t{Byte()} << (8 * i);
    }
    return value;
  }

  template <typename T, std::size_t kSize>
  const T& OneOf(const T (&choices)[kSize]) {
    return choices[Below(kSize)];
  }

  // Up to a 0 byte. A byte is a unit of that value, so seeds can be read. The bytes 0xF0 to 0xFF
  // are for what cannot be: below 0xF8 a unit of two bytes, from there on the next unit as often as
  // two bytes say, for paths of any length.
  Text TakeText(std::size_t most_units = 40'000) {
    Text text;
    while (text.size() < most_units) {
      const std::uint8_t byte = Byte();
      if (byte == 0) {
        break;
      }
      if (byte < 0xF0) {
        text += static_cast<Char>(byte);
        continue;
      }
      const std::size_t times =
          byte < 0xF8 ? 1 : std::min<std::size_t>(Number(2), most_units - text.size());
      const auto unit = static_cast<Char>(byte < 0xF8 ? Number(2) : Byte());
      // A unit 0 would end the text where the library reads it.
      text.append(times, unit == 0 ? Char{'0'} : unit);
    }
    return text;
  }

 private:
  std::string_view rest_;
};

}  // namespace quastel::fuzz

#endif  // QUASTEL_TESTS_FUZZ_INPUT_H_
