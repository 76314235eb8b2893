#include "json_writer.h"

#include <quastel_core.h>

#include <array>
#include <cstdio>

#include "text.h"

namespace quastel::client {
namespace {

// Raised when a member of the JSON objects changes its meaning or goes away; a new member does not
// raise it.
constexpr int kSchemaVersion = 1;

// A JSON string holds no raw line end, so that each one is the writer's own and can be indented.
std::string Indented(const Json& value, std::string_view indent) {
  const std::string text = value.IndentedText();
  std::string out;
  out.reserve(text.size() + text.size() / 4);
  for (const char c : text) {
    out.push_back(c);
    if (c == '\n') {
      out.append(indent);
    }
  }
  return out;
}

}  // namespace

JsonWriter::JsonWriter(OutputStream& out, const std::string& command) : out_(out) {
  out_.Write("{");
  Member("schema_version", kSchemaVersion);
  Member("library_version", qs_version());
  Member("command", command);
}

void JsonWriter::Member(std::string_view name, const Json& value) {
  Begin(name);
  out_.Write(Indented(value, "  "));
}

void JsonWriter::End() {
  out_.Write("\n}\n");
}

void JsonWriter::Begin(std::string_view name) {
  out_.Write(std::string(first_ ? "\n  \"" : ",\n  \"").append(name).append("\": "));
  first_ = false;
}

void JsonWriter::BeginArray(std::string_view name) {
  Begin(name);
  out_.Write("[");
}

void JsonWriter::ArrayEntry(bool first, const Json& value) {
  out_.Write(first ? "\n    " : ",\n    ");
  out_.Write(Indented(value, "    "));
}

void JsonWriter::EndArray(bool empty) {
  out_.Write(empty ? "]" : "\n  ]");
}

void AddPath(Json& object, const std::wstring& path) {
  object.Set("path", ToUtf8(path));
  if (!IsWellFormed(path)) {
    // Many readers refuse an escaped surrogate.
    object.Set("path_utf16", CodeUnits(path));
  }
}

std::string CodeUnits(std::wstring_view text) {
  std::string out;
  for (const wchar_t unit : text) {
    std::array<char, 8> digits = {};
    std::snprintf(digits.data(), digits.size(), "%04x", static_cast<unsigned>(unit));
    out.append(digits.data());
  }
  return out;
}

Json JsonStrings(const std::vector<std::wstring>& texts) {
  Json list = Json::List();
  for (const std::wstring& text : texts) {
    list.Append(ToUtf8(text));
  }
  return list;
}

}  // namespace quastel::client
