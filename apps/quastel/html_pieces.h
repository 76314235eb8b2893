#ifndef QUASTEL_APPS_QUASTEL_HTML_PIECES_H_
#define QUASTEL_APPS_QUASTEL_HTML_PIECES_H_

#include <string_view>

namespace quastel::client {

// The page of apps/quastel/html without its report, as the build put it together
// (cmake/embed_page.cmake).
std::string_view PageBeforeReport();
std::string_view PageAfterReport();

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_HTML_PIECES_H_
