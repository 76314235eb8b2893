#include "processors_seen.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace quastel::bench {
namespace {

constexpr const char* kQuestion = "GetActiveProcessorCount";

DWORD count_told = 0;
unsigned times_asked = 0;

DWORD WINAPI TellCount(WORD) {
  ++times_asked;
  return count_told;
}

[[noreturn]] void Refuse(const char* what) {
  std::fprintf(stderr, "the number of workers cannot be set: %s\n", what);
  std::exit(1);
}

template <typename T>
T* At(unsigned char* base, ULONGLONG offset) {
  return reinterpret_cast<T*>(base + offset);
}

// Where the DLL keeps the address of the function that tells the number of processors.
ULONG_PTR* ImportEntry() {
  auto* const base = reinterpret_cast<unsigned char*>(GetModuleHandleW(L"quastel_core.dll"));
  if (base == nullptr) {
    Refuse("quastel_core.dll is not loaded");
  }
  const auto* const dos = At<IMAGE_DOS_HEADER>(base, 0);
  const auto* const headers = At<IMAGE_NT_HEADERS>(base, static_cast<ULONGLONG>(dos->e_lfanew));
  const DWORD imports =
      headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
  for (auto* dll = At<IMAGE_IMPORT_DESCRIPTOR>(base, imports); dll->Name != 0; ++dll) {
    auto* entry = At<ULONG_PTR>(base, dll->FirstThunk);
    for (auto* name = At<IMAGE_THUNK_DATA>(base, dll->OriginalFirstThunk);
         name->u1.AddressOfData != 0; ++name, ++entry) {
      if (!IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal) &&
          std::strcmp(At<IMAGE_IMPORT_BY_NAME>(base, name->u1.AddressOfData)->Name, kQuestion) ==
              0) {
        return entry;
      }
    }
  }
  Refuse("quastel_core.dll does not import the question");
}

void Put(ULONG_PTR* entry, ULONG_PTR value) {
  DWORD protection = 0;
  if (!VirtualProtect(entry, sizeof(*entry), PAGE_READWRITE, &protection)) {
    Refuse("the import table is not writable");
  }
  *entry = value;
  VirtualProtect(entry, sizeof(*entry), protection, &protection);
}

}  // namespace

ProcessorsSeen::ProcessorsSeen(DWORD count) : entry_(ImportEntry()), real_(*entry_) {
  count_told = count;
  times_asked = 0;
  Put(entry_, reinterpret_cast<ULONG_PTR>(TellCount));
}

ProcessorsSeen::~ProcessorsSeen() {
  Put(entry_, real_);
  if (times_asked == 0) {
    Refuse("nobody asked for the number of processors");
  }
}

}  // namespace quastel::bench
