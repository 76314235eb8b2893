#include "process_meters.h"

#include <windows.h>
// Both name their types with those of windows.h.
#include <psapi.h>
#include <tlhelp32.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "demand.h"

namespace quastel::stress {
namespace {

// The system's list of the handles of all processes, as it fills it.
struct HandleEntry {
  void* object;
  ULONG_PTR process;
  ULONG_PTR handle;
  ULONG access;
  USHORT trace;
  USHORT type;
  ULONG attributes;
  ULONG reserved;
};
struct HandleList {
  ULONG_PTR count;
  ULONG_PTR reserved;
};

// GetProcessHandleCount would do on Windows; Wine 8.0 always answers 0.
std::uint64_t CountHandles() {
  using Query = LONG(WINAPI*)(ULONG, void*, ULONG, ULONG*);
  constexpr ULONG kExtendedHandleInformation = 64;
  constexpr LONG kTooSmall = static_cast<LONG>(0xC0000004);
  const auto query = reinterpret_cast<Query>(reinterpret_cast<void*>(
      ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "NtQuerySystemInformation")));
  QS_DEMAND(query != nullptr);
  static std::vector<unsigned char> buffer(1
                                           << 20);  // kept, so that it does not show in the memory
  LONG status = kTooSmall;
  while ((status = query(kExtendedHandleInformation, buffer.data(),
                         static_cast<ULONG>(buffer.size()), nullptr)) == kTooSmall) {
    buffer.resize(2 * buffer.size());
  }
  QS_DEMAND(status == 0);
  HandleList list{};
  std::memcpy(&list, buffer.data(), sizeof(list));
  std::uint64_t count = 0;
  for (std::size_t i = 0; i < list.count; ++i) {
    HandleEntry entry{};
    std::memcpy(&entry, buffer.data() + sizeof(list) + i * sizeof(entry), sizeof(entry));
    count += entry.process == ::GetCurrentProcessId() ? 1 : 0;
  }
  return count;
}

std::uint64_t CountThreads() {
  const HANDLE snapshot = ::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  QS_DEMAND(snapshot != INVALID_HANDLE_VALUE);
  THREADENTRY32 entry{};
  entry.dwSize = sizeof(entry);
  std::uint64_t count = 0;
  for (BOOL more = ::Thread32First(snapshot, &entry); more != FALSE;
       more = ::Thread32Next(snapshot, &entry)) {
    count += entry.th32OwnerProcessID == ::GetCurrentProcessId() ? 1 : 0;
  }
  ::CloseHandle(snapshot);
  return count;
}

void CountHeaps(ProcessMeters& meters) {
  constexpr WORD kNoBlock = PROCESS_HEAP_REGION | PROCESS_HEAP_UNCOMMITTED_RANGE;
  HANDLE heaps[64];
  const DWORD count = ::GetProcessHeaps(64, heaps);
  QS_DEMAND(count > 0 && count <= 64);
  for (DWORD i = 0; i < count; ++i) {
    PROCESS_HEAP_ENTRY entry{};
    QS_DEMAND(::HeapLock(heaps[i]) != FALSE);
    while (::HeapWalk(heaps[i], &entry) != FALSE) {
      if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) {
        meters.allocated += entry.cbData;
      } else if ((entry.wFlags & kNoBlock) == 0) {
        meters.held_back += entry.cbData;
      }
    }
    QS_DEMAND(::GetLastError() == ERROR_NO_MORE_ITEMS);
    QS_DEMAND(::HeapUnlock(heaps[i]) != FALSE);
  }
}

}  // namespace

ProcessMeters ReadMeters() {
  ProcessMeters meters;
  meters.threads = CountThreads();
  meters.handles = CountHandles();
  CountHeaps(meters);
  // PrivateUsage is the same number on Windows; Wine 8.0 leaves it at 0.
  PROCESS_MEMORY_COUNTERS memory{};
  QS_DEMAND(::K32GetProcessMemoryInfo(::GetCurrentProcess(), &memory, sizeof(memory)) != FALSE);
  meters.committed = memory.PagefileUsage;
  return meters;
}

void DemandMetersMove() {
  constexpr std::size_t kEvents = 50;
  constexpr std::size_t kThreads = 3;
  constexpr std::size_t kBytes = 16 << 20;
  const ProcessMeters before = ReadMeters();

  std::vector<HANDLE> events;
  for (std::size_t i = 0; i < kEvents; ++i) {
    events.push_back(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
  }
  std::atomic<bool> stop{false};
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < kThreads; ++i) {
    threads.emplace_back([&stop] {
      while (!stop) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
      }
    });
  }
  std::string memory(kBytes, 'm');
  const ProcessMeters taken = ReadMeters();

  QS_DEMAND(taken.handles >= before.handles + kEvents);
  QS_DEMAND(taken.threads >= before.threads + kThreads);
  QS_DEMAND(taken.allocated >= before.allocated + kBytes);
  QS_DEMAND(taken.committed + 4096 >= before.committed + kBytes);
  QS_DEMAND(memory.back() == 'm');
  stop = true;
  for (std::thread& thread : threads) {
    thread.join();
  }
  for (const HANDLE event : events) {
    ::CloseHandle(event);
  }
}

}  // namespace quastel::stress
