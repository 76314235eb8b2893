#ifndef QUASTEL_APPS_QUASTEL_ENVIRONMENT_H_
#define QUASTEL_APPS_QUASTEL_ENVIRONMENT_H_

#include <string>

namespace quastel::client {

// The value of a variable of the environment; empty where it is not set.
std::wstring EnvironmentVariable(const wchar_t* name);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_ENVIRONMENT_H_
