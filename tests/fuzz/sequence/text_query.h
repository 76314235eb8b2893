// A text of the library, asked for in the two steps that its callers take.

#ifndef QUASTEL_TESTS_FUZZ_SEQUENCE_TEXT_QUERY_H_
#define QUASTEL_TESTS_FUZZ_SEQUENCE_TEXT_QUERY_H_

#include <cstdint>

#include "base/text.h"
#include "fuzz/demand.h"
#include "quastel_core.h"

namespace quastel::fuzz::sequence {

// The text may grow between two calls while something runs.
template <typename Call>
Text TextFrom(Call call) {
  Text text;
  std::uint64_t needed = 0;
  qs_status status = call(nullptr, std::uint64_t{0}, &needed);
  Demand(status == QS_BUFFER_TOO_SMALL && needed >= 1, "a text is asked for its length");
  while (status == QS_BUFFER_TOO_SMALL) {
    text.assign(static_cast<std::size_t>(needed), u'#');
    status = call(text.data(), needed, &needed);
  }
  Demand(
      status == QS_OK && needed <= text.size() && text[static_cast<std::size_t>(needed) - 1] == 0,
      "a text ends where its length says");
  text.resize(static_cast<std::size_t>(needed) - 1);
  return text;
}

}  // namespace quastel::fuzz::sequence

#endif  // QUASTEL_TESTS_FUZZ_SEQUENCE_TEXT_QUERY_H_
