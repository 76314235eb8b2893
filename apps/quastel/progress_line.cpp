#include "progress_line.h"

#include <algorithm>
#include <exception>

#include "display_text.h"
#include "path_text.h"
#include "text.h"

namespace quastel::client {
namespace {

// A path cut shorter than this tells nothing.
constexpr std::size_t kShortestPath = 12;

// Some terminals echo "^C" behind the line.
constexpr std::size_t kEchoCells = 2;

// The last column stays free too: a full line makes the cursor wrap, and the next "\r" misses it.
std::size_t LineCells(std::size_t width) {
  return width > kEchoCells + 1 ? width - kEchoCells - 1 : 0;
}

std::wstring LineText(const Progress& progress, std::size_t cells) {
  std::wstring line =
      FromUtf8(progress.stage + "  " + Counted(progress.files, progress.singular, progress.plural) +
               "  " + (progress.sizes ? HumanSize(progress.bytes) + "  " : std::string()) +
               HumanDuration(progress.elapsed_us));
  const std::size_t used = CellWidth(line) + 2;
  if (!progress.path.empty() && used + kShortestPath <= cells) {
    const std::wstring path = Printable(WithoutExtendedPrefix(TidyPath(progress.path)));
    line.append(L"  ").append(FitMiddle(path, cells - used));
  }
  return FitMiddle(line, cells);
}

}  // namespace

ProgressLine::~ProgressLine() {
  try {
    Erase();
  } catch (const std::exception&) {
    stream_.Abandon();  // standard error is gone: nothing is left to tidy
  }
}

void ProgressLine::Draw(const Progress& progress) {
  if (!IsShown()) {
    return;
  }
  const std::size_t cells = LineCells(stream_.Width());
  const std::wstring line = LineText(progress, cells);
  const std::size_t line_cells = CellWidth(line);
  std::string text("\r");
  text.append(ToUtf8(line));
  // What the line before had more.
  text.append(std::max(line_cells, std::min(drawn_cells_, cells)) - line_cells, ' ');
  stream_.Write(text);
  stream_.Flush();
  drawn_cells_ = line_cells;
}

void ProgressLine::Erase() {
  if (drawn_cells_ == 0) {
    return;
  }
  const std::size_t cells = std::min(drawn_cells_, LineCells(stream_.Width())) + kEchoCells;
  stream_.Write(std::string("\r").append(cells, ' ').append("\r"));
  drawn_cells_ = 0;
  stream_.Flush();
}

}  // namespace quastel::client
