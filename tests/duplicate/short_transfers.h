// Reads and writes that move fewer bytes than asked for without an error, as network drives may.

#ifndef QUASTEL_TESTS_DUPLICATE_SHORT_TRANSFERS_H_
#define QUASTEL_TESTS_DUPLICATE_SHORT_TRANSFERS_H_

#include <cstdint>

namespace quastel::duplicate_tests {

// As long as they live, no read or write of this thread moves more than so many bytes; one of the
// two at a time on a thread.
class ShortReads {
 public:
  explicit ShortReads(std::uint32_t most);
  ~ShortReads();
  ShortReads(const ShortReads&) = delete;
  ShortReads& operator=(const ShortReads&) = delete;
};

class ShortWrites {
 public:
  explicit ShortWrites(std::uint32_t most);
  ~ShortWrites();
  ShortWrites(const ShortWrites&) = delete;
  ShortWrites& operator=(const ShortWrites&) = delete;
};

}  // namespace quastel::duplicate_tests

#endif  // QUASTEL_TESTS_DUPLICATE_SHORT_TRANSFERS_H_
