#include "question.h"

#include <windows.h>

#include <algorithm>
#include <cctype>

namespace quastel::client {
namespace {

// Byte by byte: what stands behind the line is somebody else's.
std::string ReadLine() {
  std::string line;
  HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
  char c = 0;
  DWORD count = 0;
  while (ReadFile(input, &c, 1, &count, nullptr) != FALSE && count == 1 && c != '\n') {
    line.push_back(c);
  }
  return line;
}

}  // namespace

bool AskYesOrNo(const std::string& question, Console& console) {
  console.out.Flush();
  console.err.Write(question + " [y/N] ");
  console.err.Flush();
  std::string answer = ReadLine();
  DWORD mode = 0;
  if (GetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), &mode) == FALSE) {
    // Nobody pressed the key that ends the line.
    console.err.Write("\n");
    console.err.Flush();
  }
  std::erase_if(answer, [](unsigned char c) { return std::isspace(c) != 0; });
  std::ranges::transform(answer, answer.begin(),
                         [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return answer == "y" || answer == "yes";
}

}  // namespace quastel::client
