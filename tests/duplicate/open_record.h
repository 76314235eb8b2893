// How files were opened: what the machine's own record of calls leaves out.

#ifndef QUASTEL_TESTS_DUPLICATE_OPEN_RECORD_H_
#define QUASTEL_TESTS_DUPLICATE_OPEN_RECORD_H_

#include <cstdint>
#include <string>
#include <vector>

#include "platform/file.h"

namespace quastel::duplicate_tests {

struct OpenCall {
  std::string path;
  std::uint32_t access;
  std::uint32_t share;
  platform::Disposition disposition;
  std::uint32_t flags;

  friend bool operator==(const OpenCall&, const OpenCall&) = default;
};
void PrintTo(const OpenCall& call, std::ostream* out);

// As long as it lives, every open of this thread is noted. One at a time on a thread.
class OpenRecord {
 public:
  OpenRecord();
  ~OpenRecord();
  OpenRecord(const OpenRecord&) = delete;
  OpenRecord& operator=(const OpenRecord&) = delete;

  const std::vector<OpenCall>& calls() const { return calls_; }
  void Note(OpenCall call) { calls_.push_back(std::move(call)); }

 private:
  std::vector<OpenCall> calls_;
};

}  // namespace quastel::duplicate_tests

#endif  // QUASTEL_TESTS_DUPLICATE_OPEN_RECORD_H_
