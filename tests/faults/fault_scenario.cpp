#include "faults/fault_scenario.h"

#include <algorithm>
#include <map>
#include <ostream>

namespace quastel::faults {

bool IsPartOf(const std::vector<std::string>& part, const std::vector<std::string>& whole) {
  std::map<std::string, int> left;
  for (const std::string& finding : whole) {
    ++left[finding];
  }
  return std::all_of(part.begin(), part.end(),
                     [&](const std::string& finding) { return --left[finding] >= 0; });
}

void PrintTo(const Outcome& outcome, std::ostream* out) {
  *out << "status " << outcome.status;
  for (const std::string& finding : outcome.findings) {
    *out << "\n  " << finding;
  }
}

void PrintTo(const Scenario& scenario, std::ostream* out) {
  *out << scenario.name;
}

}  // namespace quastel::faults
