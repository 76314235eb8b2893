#include "hash_command.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <utility>

#include "command_options.h"
#include "file_hashes.h"
#include "hash_digits.h"
#include "interrupt.h"
#include "json_writer.h"
#include "messages.h"
#include "progress_line.h"
#include "status_text.h"
#include "text.h"

namespace quastel::client {
namespace {

struct HashOptions {
  std::vector<std::string> files;
  bool standard = false;
  bool json = false;
};

// Tells people about each file as soon as it is done: a list of large ones takes its time.
class HashPrinter {
 public:
  HashPrinter(const HashOptions& options, Console& console)
      : options_(options), console_(console), line_(console.err) {}

  void Take(std::vector<FileHash> finished) {
    if (finished.empty()) {
      return;
    }
    line_.Erase();
    for (FileHash& file : finished) {
      if (file.digits.empty()) {
        // Lines already printed stand before the message at a terminal that shows both.
        console_.out.Flush();
        PrintError(console_, file.complaint.message, file.complaint.hint);
      } else if (!options_.json) {
        console_.out.Write((options_.standard ? StandardDigits(file.digits) : file.digits) + "  " +
                           ToUtf8(file.path) + "\n");
      }
      bytes_ += file.size;
      files_.push_back(std::move(file));
    }
    console_.out.Flush();
  }

  void ShowProgress(const char* stage, std::wstring path) {
    const auto elapsed = std::chrono::steady_clock::now() - begin_;
    line_.Draw({stage, files_.size(), bytes_,
                static_cast<std::uint64_t>(
                    std::chrono::duration_cast<std::chrono::microseconds>(elapsed).count()),
                std::move(path)});
  }

  void End() { line_.Erase(); }

  const std::vector<FileHash>& files() const { return files_; }

 private:
  const HashOptions& options_;
  Console& console_;
  ProgressLine line_;
  std::vector<FileHash> files_;
  std::uint64_t bytes_ = 0;
  const std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};

Json RowJson(const FileHash& file) {
  const bool failed = file.digits.empty();
  Json json;
  AddPath(json, file.path);
  json.Set("size", file.size);
  json.Set("status", StatusWord(failed ? QS_FAILED : QS_OK));
  json.Set("hash", failed ? Json(nullptr) : Json(file.digits));
  json.Set("standard", failed ? Json(nullptr) : Json(StandardDigits(file.digits)));
  json.Set("error", failed ? Json(file.complaint.message) : Json(nullptr));
  return json;
}

std::size_t CountFailed(const std::vector<FileHash>& files) {
  return static_cast<std::size_t>(std::count_if(
      files.begin(), files.end(), [](const FileHash& file) { return file.digits.empty(); }));
}

void WriteHashJson(const std::vector<FileHash>& files, qs_status status, OutputStream& out) {
  JsonWriter object(out, "hash");
  object.Member("status", StatusWord(status));
  object.Member("cancelled", status == QS_CANCELLED);
  object.ArrayMember("rows", files.size(), [&](std::size_t i) { return RowJson(files[i]); });
  Json totals;
  totals.Set("item_count", files.size());
  totals.Set("failed", CountFailed(files));
  object.Member("totals", totals);
  object.End();
  out.Flush();
}

ExitCode RunHash(const HashOptions& options, Console& console) {
  std::vector<std::wstring> paths;
  for (const std::string& file : options.files) {
    paths.push_back(FromUtf8(file));
  }
  const InterruptGuard interrupt;
  HashPrinter printer(options, console);
  FileHashes hashes(std::move(paths));
  hashes.Start();
  while (!hashes.WaitFor(kPollInterval)) {
    const bool cancelling = interrupt.Requested();
    if (cancelling) {
      hashes.Cancel();
    }
    printer.Take(hashes.TakeFinished());
    printer.ShowProgress(cancelling ? kCancellingStage : "Hashing", hashes.CurrentPath());
  }
  const qs_status status = hashes.Finish();
  printer.Take(hashes.TakeFinished());
  printer.End();
  if (options.json) {
    WriteHashJson(printer.files(), status, console.out);
  }
  if (status == QS_CANCELLED) {
    PrintNote(console, "cancelled before all files were hashed");
    return ExitCode::kCancelled;
  }
  return CountFailed(printer.files()) == 0 ? ExitCode::kDone : ExitCode::kSomeRowsFailed;
}

}  // namespace

void AddHashCommand(CLI::App& app, Action& action) {
  CLI::App& command =
      AddCommand(app, "hash", "Print the hash of each file's whole content (XXH32, seed 0)");
  const auto options = std::make_shared<HashOptions>();
  AddOption(command, "FILE", options->files, "", "Files to hash").Required();
  AddFlag(command, "--standard", options->standard,
          "Print the most significant byte first, as most tools do; the library and its "
          "cache write the least significant one first");
  AddFlag(command, "--json", options->json, "Write one JSON object, which has both orders");
  OnCall(command, [options, &action] {
    action = [options](Console& console) { return RunHash(*options, console); };
  });
}

}  // namespace quastel::client
