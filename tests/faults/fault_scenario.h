// What the sweeps run: one thing that a caller does, on one machine, again and again.

#ifndef QUASTEL_TESTS_FAULTS_FAULT_SCENARIO_H_
#define QUASTEL_TESTS_FAULTS_FAULT_SCENARIO_H_

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "quastel_core.h"
#include "simulated_windows/simulated_windows.h"

namespace quastel::faults {

using simulated::SimulatedWindows;

struct Outcome {
  qs_status status = QS_OK;
  std::vector<std::string> findings;

  friend bool operator==(const Outcome&, const Outcome&) = default;
};
void PrintTo(const Outcome& outcome, std::ostream* out);

// Run between the arming of a fault and its end; everything else is out of a fault's reach.
class Deed {
 public:
  virtual ~Deed() = default;
  // The call of the library, and nothing but that.
  virtual qs_status Do() = 0;
  // What it left behind.
  virtual std::vector<std::string> Findings() = 0;
  // Everything that a run may find whatever fails; empty: what a run without a fault finds.
  virtual std::vector<std::string> Possible() { return {}; }
  // Whatever must hold after a call that ended with `status`.
  virtual void CheckAfter(qs_status) {}
  // What cannot be read is passed over, no walk fails for it; a lack of memory does fail.
  virtual bool Allows(qs_status status, bool out_of_memory) {
    return status == QS_OK || (out_of_memory && status == QS_FAILED);
  }
};

struct Scenario {
  const char* name;
  void (*furnish)(SimulatedWindows& machine);
  std::unique_ptr<Deed> (*make)(SimulatedWindows& machine);
  // A sweep with fewer rounds has missed something; 0 where there is nothing to fail.
  std::uint64_t fewest_calls;
  std::uint64_t fewest_allocations;
  // Whether a failure is told by a status, or by one answer among those that may be expected.
  bool has_status = true;
};
void PrintTo(const Scenario& scenario, std::ostream* out);

// Each program that is linked with the sweeps has a list of its own: <room>/fault_scenarios.cpp.
const std::vector<Scenario>& AllScenarios();

// Every finding is one of the whole, and none comes more often than there.
bool IsPartOf(const std::vector<std::string>& part, const std::vector<std::string>& whole);

}  // namespace quastel::faults

#endif  // QUASTEL_TESTS_FAULTS_FAULT_SCENARIO_H_
