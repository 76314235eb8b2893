// A session under stress.

#ifndef QUASTEL_TESTS_STRESS_STRESSED_SESSION_H_
#define QUASTEL_TESTS_STRESS_STRESSED_SESSION_H_

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "base/text.h"
#include "simulated_windows/simulated_windows.h"
#include "stress/stressed_folder.h"
#include "stress/stressed_handle.h"

namespace quastel::stress {

class StressedSession : public StressedHandle {
 public:
  // `name` is a word of its own for the folder that this handle has to itself.
  StressedSession(simulated::SimulatedWindows& machine, std::uint32_t mode, std::string_view name);
  ~StressedSession() override { Destroy(); }

  void Drive(Random& random) override;
  void Query(Random& random) override;
  void CancelScan() override;
  void CancelClean() override;
  void GetInTheWay() override;
  void DemandBusyInside() override;

 protected:
  void Destroy() override;
  void Create() override;

 private:
  struct Row {
    Text path;
    qs_session_row numbers;
  };

  qs_status ReadRow(std::uint64_t index, Row& row) const;
  std::vector<Row> ReadReport() const;
  void DemandComplete(const std::vector<Row>& rows) const;
  void Clean(const std::vector<Row>& rows, Random& random);

  const std::uint32_t mode_;
  StressedFolder folder_;
  qs_session* session_ = nullptr;
};

}  // namespace quastel::stress

#endif  // QUASTEL_TESTS_STRESS_STRESSED_SESSION_H_
