#include "simulated_windows/names.h"

#include <algorithm>
#include <vector>

namespace quastel::simulated {
namespace {

// The wildcards that only the translation writes; a file cannot have them in its name.
constexpr Char kDosStar = Char{'<'};
constexpr Char kDosQuestion = Char{'>'};
constexpr Char kDosDot = Char{'"'};

// The states of `expression` that are reached without reading a character of the name.
void Close(TextView expression, TextView name, std::size_t at, std::vector<bool>& states) {
  const bool finished = at == name.size();
  for (std::size_t i = 0; i < expression.size(); ++i) {
    if (!states[i]) {
      continue;
    }
    const Char e = expression[i];
    if (e == Char{'*'} || e == kDosStar) {
      states[i + 1] = true;
    } else if (e == kDosQuestion && (finished || name[at] == Char{'.'})) {
      states[i + 1] = true;
    } else if (e == kDosDot && finished) {
      states[i + 1] = true;
    }
  }
}

}  // namespace

Char FoldName(Char c) {
  const bool ascii = c >= Char{'a'} && c <= Char{'z'};
  const bool latin = c >= Char{0xE0} && c <= Char{0xFE} && c != Char{0xF7};
  if (ascii || latin) {
    return static_cast<Char>(c - 32);
  }
  return c == Char{0xFF} ? Char{0x178} : c;
}

int CompareNames(TextView a, TextView b) {
  const std::size_t common = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < common; ++i) {
    if (a[i] != b[i]) {
      const Char x = FoldName(a[i]);
      const Char y = FoldName(b[i]);
      if (x != y) {
        return x < y ? -1 : 1;
      }
    }
  }
  if (a.size() == b.size()) {
    return 0;
  }
  return a.size() < b.size() ? -1 : 1;
}

bool IsPossibleName(TextView name) {
  if (name.empty() || name.size() > kLongestName || name == QS_TEXT(".") || name == QS_TEXT("..")) {
    return false;
  }
  const TextView forbidden = QS_TEXT("\\/:*?\"<>|");
  return std::none_of(name.begin(), name.end(),
                      [&](Char c) { return c < Char{' '} || forbidden.find(c) != TextView::npos; });
}

bool HasWildcards(TextView name) {
  return name.find_first_of(QS_TEXT("*?<>\"")) != TextView::npos;
}

NamePattern::NamePattern(TextView pattern, bool ended_in_dot) : expression_(pattern) {
  if (expression_ == QS_TEXT("*.*")) {
    expression_ = QS_TEXT("*");
  }
  for (std::size_t i = 0; i < expression_.size(); ++i) {
    const Char c = expression_[i];
    if (i > 0 && c == Char{'.'} && expression_[i - 1] == Char{'*'}) {
      expression_[i - 1] = kDosStar;
    }
    if (c == Char{'?'} || c == Char{'*'}) {
      if (c == Char{'?'}) {
        expression_[i] = kDosQuestion;
      }
      if (i > 0 && expression_[i - 1] == Char{'.'}) {
        expression_[i - 1] = kDosDot;
      }
    }
  }
  if (ended_in_dot && !expression_.empty() && expression_.back() == Char{'*'}) {
    expression_.back() = kDosStar;
  }
  everything_ = expression_ == QS_TEXT("*");
  exact_ = !HasWildcards(expression_);
}

bool NamePattern::Matches(TextView name) const {
  if (everything_) {
    return true;
  }
  if (exact_) {
    return CompareNames(expression_, name) == 0;
  }
  const std::size_t last_dot = name.rfind(Char{'.'});
  std::vector<bool> states(expression_.size() + 1);
  states[0] = true;
  Close(expression_, name, 0, states);
  for (std::size_t at = 0; at < name.size(); ++at) {
    const Char c = name[at];
    std::vector<bool> next(states.size());
    for (std::size_t i = 0; i < expression_.size(); ++i) {
      if (!states[i]) {
        continue;
      }
      const Char e = expression_[i];
      if (e == Char{'*'} || (e == kDosStar && at != last_dot)) {
        next[i] = true;
      } else if (e == kDosQuestion) {
        next[i + 1] = next[i + 1] || c != Char{'.'};
      } else if (e == kDosDot) {
        next[i + 1] = next[i + 1] || c == Char{'.'};
      } else if (e != kDosStar && FoldName(e) == FoldName(c)) {
        next[i + 1] = true;
      }
    }
    states.swap(next);
    Close(expression_, name, at + 1, states);
  }
  return states.back();
}

}  // namespace quastel::simulated
