#ifndef QUASTEL_APPS_QUASTEL_JSON_WRITER_H_
#define QUASTEL_APPS_QUASTEL_JSON_WRITER_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "console.h"
#include "json.h"

namespace quastel::client {

// Writes one JSON object member by member, with the long lists entry by entry, so that a report of
// any size never stands in memory as a text. Described in docs/client.md.
class JsonWriter {
 public:
  // Begins with the members that every object has.
  JsonWriter(OutputStream& out, const std::string& command);

  void Member(std::string_view name, const Json& value);

  template <typename Make>
  void ArrayMember(std::string_view name, std::size_t count, Make make) {
    BeginArray(name);
    for (std::size_t i = 0; i < count; ++i) {
      ArrayEntry(i == 0, make(i));
    }
    EndArray(count == 0);
  }

  void End();

 private:
  void Begin(std::string_view name);
  void BeginArray(std::string_view name);
  void ArrayEntry(bool first, const Json& value);
  void EndArray(bool empty);

  OutputStream& out_;
  bool first_ = true;
};

// Adds "path" and, where no JSON string can carry the path exactly, "path_utf16".
void AddPath(Json& object, const std::wstring& path);

// Four hexadecimal digits for each unit.
std::string CodeUnits(std::wstring_view text);

Json JsonStrings(const std::vector<std::wstring>& texts);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_JSON_WRITER_H_
