// Reading the record of system calls.

#ifndef QUASTEL_TESTS_SUPPORT_CALLS_H_
#define QUASTEL_TESTS_SUPPORT_CALLS_H_

#include <algorithm>
#include <initializer_list>
#include <string>
#include <vector>

#include "simulated_windows/simulated_windows.h"
#include "support/text.h"

namespace quastel::support {

// The recorded calls of these kinds, in order: "FindFirstBasic C:\a\*".
inline std::vector<std::string> CallsOf(const simulated::SimulatedWindows& windows,
                                        std::initializer_list<simulated::Call> kinds) {
  std::vector<std::string> out;
  for (const simulated::CallRecord& record : windows.record()) {
    if (std::find(kinds.begin(), kinds.end(), record.call) != kinds.end()) {
      out.push_back(simulated::NameOf(record.call) + (" " + Utf8(record.path)));
    }
  }
  return out;
}

// What was searched for, in order.
inline std::vector<std::string> SearchesOf(const simulated::SimulatedWindows& windows) {
  std::vector<std::string> out;
  for (const simulated::CallRecord& record : windows.record()) {
    if (record.call == simulated::Call::kFindFirstBasic ||
        record.call == simulated::Call::kFindFirst) {
      out.push_back(Utf8(record.path));
    }
  }
  return out;
}

}  // namespace quastel::support

#endif  // QUASTEL_TESTS_SUPPORT_CALLS_H_
