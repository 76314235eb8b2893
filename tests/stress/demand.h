// What a stress program demands of every answer. The first one that is wrong ends the program, on
// whichever thread it was seen: what comes after it would only hide it.

#ifndef QUASTEL_TESTS_STRESS_DEMAND_H_
#define QUASTEL_TESTS_STRESS_DEMAND_H_

#include <cstdio>
#include <cstdlib>
#include <string>

namespace quastel::stress {

[[noreturn]] inline void Refuse(const char* file, int line, const char* what,
                                const std::string& seen) {
  std::fprintf(stderr, "%s:%d: not so: %s%s%s\n", file, line, what, seen.empty() ? "" : "; ",
               seen.c_str());
  std::fflush(nullptr);
  std::_Exit(1);
}

}  // namespace quastel::stress

#define QS_DEMAND_SEEN(condition, seen)                                  \
  do {                                                                   \
    if (!(condition)) {                                                  \
      ::quastel::stress::Refuse(__FILE__, __LINE__, #condition, (seen)); \
    }                                                                    \
  } while (false)

#define QS_DEMAND(condition) QS_DEMAND_SEEN(condition, std::string())

#endif  // QUASTEL_TESTS_STRESS_DEMAND_H_
