#ifndef QUASTEL_APPS_QUASTEL_NEW_FILE_H_
#define QUASTEL_APPS_QUASTEL_NEW_FILE_H_

#include <string>
#include <string_view>

namespace quastel::client {

// A file that comes into being whole or not at all, and never in the place of another one: until
// Keep() was called it goes away by itself, also when the process is ended from outside.
class NewFile {
 public:
  // Throws UserError when the file is there already or cannot be made.
  explicit NewFile(std::wstring path);
  ~NewFile();
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  // Collects. Throws UserError when the bytes cannot be written.
  void Write(std::string_view bytes);

  // The file stays. Nothing can be written any more.
  void Keep();

 private:
  void Flush();

  const std::wstring path_;
  void* handle_ = nullptr;
  std::string pending_;
};

// Throws UserError unless a NewFile can be made there, without leaving one.
void RequireNewFile(const std::wstring& path);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_NEW_FILE_H_
