#include "rule_document.h"

#include <windows.h>

#include <algorithm>
#include <cstdint>

#include "path_complaint.h"
#include "path_text.h"
#include "rule_review.h"
#include "rule_text.h"
#include "rule_warnings.h"

namespace quastel::client {
namespace {

class FileHandle {
 public:
  explicit FileHandle(HANDLE handle) : handle_(handle) {}
  ~FileHandle() {
    if (handle_ != INVALID_HANDLE_VALUE) {
      CloseHandle(handle_);
    }
  }
  FileHandle(const FileHandle&) = delete;
  FileHandle& operator=(const FileHandle&) = delete;

  HANDLE get() const { return handle_; }

 private:
  HANDLE handle_;
};

[[noreturn]] void FailToRead(const std::wstring& path, unsigned long error) {
  const PathComplaint complaint = WhyNotFound(path, path, error, "one rule document");
  throw UserError(ExitCode::kError, complaint.message, complaint.hint);
}

std::string ReadWhole(const std::wstring& path) {
  // A folder would say that access is denied.
  const std::wstring form = SystemForm(path);
  const DWORD attributes = GetFileAttributesW(form.c_str());
  if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
    throw UserError(ExitCode::kError, Quoted(path) + " is a folder, not a rule document",
                    "name the file");
  }
  const FileHandle file(CreateFileW(form.c_str(), GENERIC_READ,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  LARGE_INTEGER size = {};
  if (file.get() == INVALID_HANDLE_VALUE || GetFileSizeEx(file.get(), &size) == 0) {
    FailToRead(path, GetLastError());
  }
  // The library's limit.
  if (size.QuadPart > INT32_MAX) {
    throw UserError(ExitCode::kError, Quoted(path) + " is too large for a rule document",
                    "a rule document has less than 2 GiB");
  }
  std::string bytes(static_cast<std::size_t>(size.QuadPart), '\0');
  DWORD length = 0;
  if (ReadFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &length, nullptr) == 0) {
    FailToRead(path, GetLastError());
  }
  bytes.resize(length);
  return bytes;
}

RuleProblem Placed(RuleMistake mistake, const TextPositions& positions) {
  return {positions.At(mistake.offset), std::move(mistake.message), std::move(mistake.hint)};
}

}  // namespace

RuleDocument LoadRuleDocument(const std::wstring& path) {
  RuleDocument document;
  document.path = path;
  std::wstring text;
  std::optional<RuleMistake> mistake = DecodeRules(ReadWhole(path), text);
  const TextPositions positions(text);
  // The scan begins only when the whole document keeps to the grammar, so that this comes first.
  if (!mistake) {
    mistake = ReadRules(text, document.root);
  }
  if (!mistake) {
    mistake = FirstMistake(document.root);
  }
  if (mistake) {
    document.problem = Placed(std::move(*mistake), positions);
    return document;
  }
  for (RuleMistake& warning : RuleWarnings(document.root)) {
    document.warnings.push_back(Placed(std::move(warning), positions));
  }
  for (const RuleUse& rule : RulesOf(document.root)) {
    document.rule_positions.push_back(positions.At(rule.element->offset));
  }
  return document;
}

UserError ProblemError(const std::wstring& path, const RuleProblem& problem) {
  return UserError(ExitCode::kError,
                   Quoted(path) + ", " + PositionText(problem.position) + ": " + problem.message,
                   problem.hint);
}

}  // namespace quastel::client
