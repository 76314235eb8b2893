#ifndef QUASTEL_APPS_QUASTEL_RULE_TEXT_H_
#define QUASTEL_APPS_QUASTEL_RULE_TEXT_H_

#include <optional>
#include <string>
#include <string_view>

#include "rule_reader.h"

namespace quastel::client {

// Decodes the bytes of a rule document as the library does: UTF-16 little-endian with its mark, and
// everything else as UTF-8 with or without one. Answers why that cannot be done; `text` then ends
// where the mistake is.
std::optional<RuleMistake> DecodeRules(std::string_view bytes, std::wstring& text);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_RULE_TEXT_H_
