// The machine of the contract tests on the simulated Windows.

#include "contract/machine.h"
#include "simulated_windows/simulated_windows.h"

namespace quastel::contract {

struct Machine::State {
  simulated::SimulatedWindows windows;
  Text folder = QS_TEXT("C:\\Temp\\Contract");
};

Machine::Machine() : state_(std::make_unique<State>()) {
  state_->windows.AddFolder(state_->folder);
}

Machine::~Machine() = default;

const Text& Machine::folder() const {
  return state_->folder;
}

Text Machine::MakeFolder(TextView relative) {
  state_->windows.AddFolder(Path(relative));
  return Path(relative);
}

Text Machine::MakeFile(TextView relative, std::string_view content) {
  state_->windows.AddFile(Path(relative), content);
  return Path(relative);
}

Text Machine::MakeSparseFile(TextView relative, std::uint64_t size) {
  state_->windows.AddSizedFile(Path(relative), size, simulated::kZeroSeed);
  return Path(relative);
}

Text Machine::MakeFolderLink(TextView relative, const Text& target) {
  state_->windows.AddLink(simulated::LinkKind::kFolderLink, Path(relative), target);
  return Path(relative);
}

void Machine::SetAttributes(const Text& path, platform::Attributes attributes) {
  state_->windows.SetAttributes(path, attributes);
}

void Machine::SetLastWrite(const Text& path, std::uint64_t file_time) {
  state_->windows.SetLastWrite(path, file_time);
}

bool Machine::Exists(const Text& path) const {
  return state_->windows.Exists(path);
}

std::string Machine::ContentOf(const Text& path) const {
  return state_->windows.ContentOf(path).value_or("(missing)");
}

void Machine::Lock(const Text& path, std::uint32_t share) {
  state_->windows.Lock(path, share);
}

void Machine::Unlock(const Text& path) {
  state_->windows.Unlock(path);
}

void Machine::SetCurrentFolder(const Text& path) {
  state_->windows.SetCurrentFolder(path);
}

void Machine::SetEnvironment(const Text& name, const std::optional<Text>& value) {
  state_->windows.SetEnvironment(name, value);
}

}  // namespace quastel::contract
