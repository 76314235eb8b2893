// A Windows machine that has been used for years: every place that the shipped
// rule documents clean, and the places that no rule document may ever reach,
// each with files in it.

#ifndef QUASTEL_TESTS_RULES_WELL_KNOWN_PLACES_H_
#define QUASTEL_TESTS_RULES_WELL_KNOWN_PLACES_H_

#include <string>
#include <vector>

#include "base/text.h"
#include "simulated_windows/simulated_windows.h"

namespace quastel::rules_tests {

inline constexpr TextView kUserHome = u"C:\\Users\\demo";
inline constexpr TextView kSystemRoot = u"C:\\";

// What the display name of every shipped category begins with.
inline constexpr char kCategoryKey[] = "Page_JunkFiles_Report_Category_";

// The two documents, by the names of their files.
inline constexpr char kStandard[] = "standard.xml";
inline constexpr char kExtended[] = "extended.xml";

// A file that a document has to find.
struct CleanedFile {
  std::string document;
  std::string category;  // without kCategoryKey
  std::string path;
};

// All of them, for each document in the order of its categories.
const std::vector<CleanedFile>& CleanedFiles();

// Files that no document may find, whatever else changes.
const std::vector<std::string>& ForbiddenFiles();

// Makes all of them, with files that lie beside the cleaned ones and are none
// of a rule's business, and with links that lead from cleaned places to
// forbidden ones.
void FillMachine(simulated::SimulatedWindows& machine);

}  // namespace quastel::rules_tests

#endif  // QUASTEL_TESTS_RULES_WELL_KNOWN_PLACES_H_
