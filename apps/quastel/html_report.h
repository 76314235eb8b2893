#ifndef QUASTEL_APPS_QUASTEL_HTML_REPORT_H_
#define QUASTEL_APPS_QUASTEL_HTML_REPORT_H_

#include <string>

#include "console.h"
#include "report.h"

namespace quastel::client {

// The report as a page for a browser, in the new file that report.options.html names.
void WriteHtml(const Report& report);

// Before the scan, which may take its time: throws UserError for a page that cannot be made.
// Nothing is asked for when `path` is empty.
void CheckHtmlPath(const std::wstring& path, bool clean);

// Tells people where the page is; a program gets its JSON and nothing else.
void TellHtmlPath(const std::wstring& path, bool json, OutputStream& out);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_HTML_REPORT_H_
