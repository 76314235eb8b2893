#ifndef QUASTEL_APPS_QUASTEL_TEXT_H_
#define QUASTEL_APPS_QUASTEL_TEXT_H_

#include <string>
#include <string_view>

namespace quastel::client {

// Windows speaks UTF-16, the outputs of the client UTF-8. A file name may hold unpaired surrogates,
// which have no UTF-8 form, so that each conversion must say what becomes of them.

// False when the text holds an unpaired surrogate.
bool IsWellFormed(std::wstring_view text);

// For every output: an unpaired surrogate becomes U+FFFD, so that the result is always valid UTF-8.
std::string ToUtf8(std::wstring_view text);

// For text that comes back as UTF-16 and is never written out, such as the arguments on their way
// through the argument parser: an unpaired surrogate is kept in a three-byte form of its own.
std::string ToReversibleUtf8(std::wstring_view text);

// Undoes both; bytes that are no UTF-8 become U+FFFD.
std::wstring FromUtf8(std::string_view bytes);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_TEXT_H_
