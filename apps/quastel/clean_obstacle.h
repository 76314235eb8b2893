#ifndef QUASTEL_APPS_QUASTEL_CLEAN_OBSTACLE_H_
#define QUASTEL_APPS_QUASTEL_CLEAN_OBSTACLE_H_

#include <optional>

#include "clean_options.h"
#include "clean_plan.h"

namespace quastel::client {

// Why a file was not removed. The library answers no more than that it was not; what is said here
// is found out afterwards, for people.
enum class Obstacle {
  kGone,
  kChanged,
  kReadOnly,
  kInUse,
  kNotPermitted,
  kLink,
  kUnclearName,
  kNotACopy,
  kSameFile,
  kSurvivorGone,
  kSurvivorChanged,
  kSurvivorInUse,
  kUnreadable,
  kUnknown,
};

// A fixed word for scripts.
const char* ObstacleWord(Obstacle obstacle);

// The same for people: reads on after the path and a colon.
const char* ObstacleSentence(Obstacle obstacle);

// A path that means another name than it spells, such as one with a name that ends in a dot: what a
// removal would hit is not what the row says.
bool HasUnclearName(const std::wstring& path);

// What stands in the way of removing the file now, as far as can be told without touching it.
std::optional<Obstacle> FindObstacle(const CleanFile& file, CleanMode mode);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_CLEAN_OBSTACLE_H_
