#include "support/sweep_record.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

// The second step lets the argument be replaced by its value.
#define QUASTEL_TEXT_OF_TOKEN(token) #token
#define QUASTEL_TEXT_OF(macro) QUASTEL_TEXT_OF_TOKEN(macro)

namespace quastel::support {
namespace {

const char* FileName() {
  return std::getenv("QUASTEL_SWEEP_RECORD");
}

// How often memory is asked for is up to the standard library and the optimiser as well.
#if defined(__clang__)
constexpr const char* kCompiler = "clang " QUASTEL_TEXT_OF(__clang_major__);
#elif defined(__GNUC__)
constexpr const char* kCompiler = "gcc " QUASTEL_TEXT_OF(__GNUC__);
#else
constexpr const char* kCompiler = "another compiler";
#endif

// What an earlier run has left says nothing about this one.
const bool emptied = [] {
  if (const char* const name = FileName()) {
    std::ofstream(name, std::ios::trunc) << R"({"compiler": ")" << kCompiler << "\"}\n";
  }
  return true;
}();

const char* NameOf(Swept what) {
  switch (what) {
    case Swept::kCalls:
      return "calls";
    case Swept::kSingleFaults:
      return "single_faults";
    case Swept::kLastingFaults:
      return "lasting_faults";
    case Swept::kCrashPoints:
      return "crash_points";
    case Swept::kMemoryFailures:
      return "memory_failures";
  }
  return "";
}

}  // namespace

void RecordSweep(std::string_view scenario, Swept what, std::uint64_t count) {
  const char* const name = FileName();
  if (name == nullptr || ::testing::Test::HasFailure()) {
    return;
  }
  std::ofstream file(name, std::ios::app);
  file << R"({"scenario": ")" << scenario << R"(", "what": ")" << NameOf(what) << R"(", "count": )"
       << count << "}\n";
  EXPECT_TRUE(file.flush().good()) << "the record of the sweeps cannot be written: " << name;
}

void RecordNoCalls(std::string_view scenario) {
  for (const Swept what :
       {Swept::kCalls, Swept::kSingleFaults, Swept::kLastingFaults, Swept::kCrashPoints}) {
    RecordSweep(scenario, what, 0);
  }
}

}  // namespace quastel::support
