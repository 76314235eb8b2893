// What the tests of this room share: the machine, contents, and outputs that show what was written.

#ifndef QUASTEL_TESTS_DUPLICATE_MACHINE_H_
#define QUASTEL_TESTS_DUPLICATE_MACHINE_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "base/text.h"
#include "frame/thread_buffer.h"
#include "quastel_core.h"
#include "simulated_windows/simulated_windows.h"
#include "support/text.h"

namespace quastel::duplicate_tests {

using platform::Error;
using simulated::Call;
using simulated::CallRecord;
using simulated::Repeat;
using simulated::SimulatedWindows;
using support::Utf8;

inline constexpr std::uint64_t kMebibyte = 1'048'576;

// Bytes as AddSizedFile makes them, from `begin` on.
inline std::string Pattern(std::uint64_t size, std::uint32_t seed = 0, std::uint64_t begin = 0) {
  std::string out;
  out.reserve(size);
  for (std::uint64_t i = begin; i < begin + size; ++i) {
    out += static_cast<char>(SimulatedWindows::PatternByte(seed, i));
  }
  return out;
}

// The recorded calls with their number: "ReadFrom 1048576", "OpenFile C:\a".
inline std::vector<std::string> CallsIn(const SimulatedWindows& machine) {
  std::vector<std::string> out;
  for (const CallRecord& record : machine.record()) {
    std::string line = simulated::NameOf(record.call);
    if (record.call == Call::kOpenFile || record.call == Call::kCreateFolderTree ||
        record.call == Call::kRemoveFile || record.call == Call::kRenameFile) {
      line += " " + Utf8(record.path);
    }
    if (record.call == Call::kReadFrom || record.call == Call::kSeekTo ||
        record.call == Call::kRenameFile) {
      line += " " + std::to_string(record.number);
    }
    out.push_back(std::move(line));
  }
  return out;
}

// Runs `action` just before the nth call of a kind.
inline void BeforeCall(SimulatedWindows& machine, Call kind, std::uint64_t nth,
                       std::function<void()> action) {
  machine.SetHook([kind, nth, seen = std::uint64_t{0},
                   action = std::move(action)](const CallRecord& record) mutable {
    if (record.call == kind && ++seen == nth) {
      action();
    }
  });
}

// The answer of a call that writes a text into a buffer, with every character of the buffer.
struct TextAnswer {
  qs_status status = QS_OK;
  std::string buffer;

  friend bool operator==(const TextAnswer&, const TextAnswer&) = default;
};

inline void PrintTo(const TextAnswer& answer, std::ostream* out) {
  *out << "status " << answer.status << ", buffer " << ::testing::PrintToString(answer.buffer);
}

inline constexpr char kFiller = '#';

// `capacity` is what the call is told; the buffer goes on behind it.
template <typename Function>
TextAnswer AnswerOf(std::uint64_t capacity, Function&& call) {
  TextAnswer answer;
  answer.buffer.assign(capacity + 4, kFiller);
  answer.status = call(answer.buffer.data(), capacity);
  return answer;
}

inline TextAnswer Untouched(qs_status status, std::uint64_t capacity) {
  return {status, std::string(capacity + 4, kFiller)};
}

inline TextAnswer Written(std::string_view text, std::uint64_t capacity) {
  std::string buffer(capacity + 4, kFiller);
  buffer.replace(0, text.size(), text);
  buffer[text.size()] = '\0';
  return {QS_OK, buffer};
}

inline constexpr std::uint64_t kHashCapacity = 9;

inline TextAnswer HashAnswer(const Text& path, std::uint32_t* cancel = nullptr) {
  return AnswerOf(kHashCapacity, [&](char* out, std::uint64_t capacity) {
    return qs_xxhash32_file_cancelable(path.c_str(), out, capacity, cancel);
  });
}

// A machine on which this thread has hashed before, so that its buffer is there.
class HashingTest : public ::testing::Test {
 protected:
  HashingTest() {
    EXPECT_NE(ThreadBuffer(), nullptr);
    machine_.ClearFaults();
  }
  ~HashingTest() override { EXPECT_EQ(machine_.open_handles(), 0u); }

  // Records from here on.
  void Record() {
    machine_.ClearRecord();
    machine_.SetRecording(true);
  }

  SimulatedWindows machine_;
};

}  // namespace quastel::duplicate_tests

#endif  // QUASTEL_TESTS_DUPLICATE_MACHINE_H_
