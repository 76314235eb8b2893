// The library is not told of threads that end. What it keeps for each of them goes away all the
// same.

#include <gtest/gtest.h>
#include <process.h>
#include <windows.h>
// Names its types with those of windows.h.
#include <psapi.h>

#include <cstdint>
#include <stdexcept>

#include "quastel_core.h"
#include "real_tree.h"

namespace quastel::dll_test {
namespace {

std::uint64_t WorkingSet() {
  PROCESS_MEMORY_COUNTERS counters{};
  counters.cb = sizeof(counters);
  EXPECT_NE(FALSE, ::K32GetProcessMemoryInfo(::GetCurrentProcess(), &counters, sizeof(counters)));
  return counters.WorkingSetSize;
}

// Memory that the process has asked for, resident or not.
std::uint64_t CommittedMemory() {
  PROCESS_MEMORY_COUNTERS counters{};
  counters.cb = sizeof(counters);
  EXPECT_NE(FALSE, ::K32GetProcessMemoryInfo(::GetCurrentProcess(), &counters, sizeof(counters)));
  return counters.PagefileUsage;
}

struct Work {
  const wchar_t* folder;
  qs_status enumeration;
  qs_status scan;
};

void ThrowFromCallback(void*, const qs_char*, std::uint64_t, std::uint64_t, const qs_char*) {
  throw std::runtime_error("from the callback");
}

// Takes a caught exception, a lock and a handle through the library.
unsigned __stdcall UseLibrary(void* argument) {
  Work& work = *static_cast<Work*>(argument);
  work.enumeration = qs_enumerate_files(work.folder, L"*", 0, ThrowFromCallback, nullptr, nullptr);
  qs_product_scan* scan = nullptr;
  work.scan = qs_product_scan_create(&scan);
  qs_product_scan_status status{};
  qs_product_scan_poll(scan, &status);
  qs_product_scan_destroy(scan);
  return 0;
}

void RunShortThreads(int count, const std::wstring& folder) {
  for (int i = 0; i < count; ++i) {
    Work work{folder.c_str(), QS_OK, QS_BUSY};
    const auto thread =
        reinterpret_cast<HANDLE>(::_beginthreadex(nullptr, 0, UseLibrary, &work, 0, nullptr));
    ASSERT_NE(nullptr, thread);
    ::WaitForSingleObject(thread, INFINITE);
    ::CloseHandle(thread);
    ASSERT_EQ(QS_FAILED, work.enumeration);
    ASSERT_EQ(QS_OK, work.scan);
  }
}

TEST(ShortThreads, A_thousand_of_them_leave_the_working_set_flat) {
  const RealTree tree;
  tree.AddFile(L"file.txt", "x");
  RunShortThreads(200, tree.root());
  const std::uint64_t before = WorkingSet();
  RunShortThreads(1000, tree.root());
  const std::uint64_t after = WorkingSet();
  // A kilobyte for each thread would show.
  EXPECT_LT(after, before + 1'000'000) << before << " bytes before";
}

struct HashWork {
  const wchar_t* file;
  qs_status status;
};

unsigned __stdcall HashOneFile(void* argument) {
  HashWork& work = *static_cast<HashWork*>(argument);
  char text[9];
  work.status = qs_xxhash32_file(work.file, text, sizeof(text));
  return 0;
}

void RunHashingThreads(int count, const std::wstring& file) {
  for (int i = 0; i < count; ++i) {
    HashWork work{file.c_str(), QS_BUSY};
    const auto thread =
        reinterpret_cast<HANDLE>(::_beginthreadex(nullptr, 0, HashOneFile, &work, 0, nullptr));
    ASSERT_NE(nullptr, thread);
    ::WaitForSingleObject(thread, INFINITE);
    ::CloseHandle(thread);
    ASSERT_EQ(QS_OK, work.status);
  }
}

// Each has a read buffer of a megabyte of its own.
TEST(ShortThreads, A_thousand_that_hash_give_their_buffers_back) {
  const RealTree tree;
  tree.AddFile(L"file.txt", "x");
  const std::wstring file = tree.Path(L"file.txt");
  RunHashingThreads(20, file);
  const std::uint64_t committed = CommittedMemory();
  const std::uint64_t working_set = WorkingSet();
  RunHashingThreads(1000, file);
  EXPECT_LT(CommittedMemory(), committed + 16'000'000) << committed << " bytes before";
  EXPECT_LT(WorkingSet(), working_set + 16'000'000) << working_set << " bytes before";
}

}  // namespace
}  // namespace quastel::dll_test
