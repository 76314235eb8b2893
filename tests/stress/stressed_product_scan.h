// A product scan of one kind under stress.

#ifndef QUASTEL_TESTS_STRESS_STRESSED_PRODUCT_SCAN_H_
#define QUASTEL_TESTS_STRESS_STRESSED_PRODUCT_SCAN_H_

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "base/text.h"
#include "simulated_windows/simulated_windows.h"
#include "stress/stressed_folder.h"
#include "stress/stressed_handle.h"

namespace quastel::stress {

class StressedProductScan : public StressedHandle {
 public:
  // `name` is a word of its own for the folders that this handle has to itself.
  StressedProductScan(simulated::SimulatedWindows& machine, std::uint32_t kind,
                      std::string_view name);
  ~StressedProductScan() override { Destroy(); }

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
    Text name;
    qs_product_scan_row numbers;
  };
  using Rows = std::vector<Row>;

  qs_status ReadRow(std::uint64_t index, Row& row) const;
  void DemandGoodRow(std::uint64_t index, const Row& row) const;
  qs_status Scan();
  Rows ReadReport() const;
  bool IsExpected(const StressedFile& file) const;
  void DemandComplete(const Rows& items) const;
  void DemandSets(const Rows& items) const;
  std::vector<std::uint64_t> Choose(const Rows& items, Random& random) const;
  // Naming all that is left of a set must be refused.
  void DemandLastCopiesStay(const Rows& items);
  void Clean(const Rows& items, Random& random);
  void DemandCleaned(const Rows& items, const std::vector<std::uint64_t>& ids,
                     const std::set<Text>& changed, qs_status status);

  simulated::SimulatedWindows& machine_;
  const std::uint32_t kind_;
  const Text home_;
  const Text rules_;
  StressedFolder folder_;
  qs_product_scan* scan_ = nullptr;
};

}  // namespace quastel::stress

#endif  // QUASTEL_TESTS_STRESS_STRESSED_PRODUCT_SCAN_H_
