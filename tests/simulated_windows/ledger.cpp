#include "simulated_windows/ledger.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>

namespace quastel::simulated {
namespace {

constexpr std::array<const char*, 5> kKindNames = {"file", "search", "thread", "shell item",
                                                   "file operation"};

}  // namespace

void Die(const std::string& message) {
  std::fprintf(stderr, "simulated Windows: %s\n", message.c_str());
  std::fflush(stderr);
  std::abort();
}

void Ledger::CloseCom(platform::RawHandle raw) {
  const auto found = handles_.find(raw);
  if (found == handles_.end() || found->second.index() < 3) {
    DieOfWrongHandle(raw);
  }
  handles_.erase(found);
}

std::string Ledger::Describe() const {
  std::string text;
  for (const auto& [raw, object] : handles_) {
    text += text.empty() ? "" : ", ";
    text += kKindNames[object.index()];
    text += " handle " + std::to_string(raw);
  }
  return text;
}

void Ledger::DieOfWrongHandle(platform::RawHandle raw) const {
  const bool known = handles_.count(raw) != 0;
  Die("handle " + std::to_string(raw) +
      (known                             ? " is of another kind"
       : raw <= last_raw_ && raw > 0x100 ? " is closed already"
                                         : " was never opened"));
}

void Ledger::CountSearch(int change) {
  searches_ += static_cast<std::size_t>(change);
  most_searches_ = std::max(most_searches_, searches_);
}

}  // namespace quastel::simulated
