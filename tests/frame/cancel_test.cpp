#include "frame/cancel.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace quastel {
namespace {

TEST(CancelFlag, A_null_flag_never_cancels) {
  EXPECT_FALSE(IsCancelRequested(nullptr));
}

TEST(CancelFlag, Every_value_but_zero_cancels_and_reading_changes_none) {
  for (const std::uint32_t value : {1u, 2u, 7u, 0x100u, 0x80000000u, 0xFFFFFFFFu}) {
    std::uint32_t flag = value;
    EXPECT_TRUE(IsCancelRequested(&flag)) << value;
    EXPECT_EQ(flag, value);
  }
  std::uint32_t zero = 0;
  EXPECT_FALSE(IsCancelRequested(&zero));
  EXPECT_EQ(zero, 0u);
}

TEST(CancelFlag, A_handle_s_own_flag_can_be_set_and_cleared) {
  CancelFlag flag;
  EXPECT_FALSE(flag.IsSet());
  flag.Set();
  EXPECT_TRUE(flag.IsSet());
  flag.Set();
  EXPECT_TRUE(flag.IsSet());
  flag.Clear();
  EXPECT_FALSE(flag.IsSet());
}

TEST(CancelFlag, The_address_leads_to_the_same_flag) {
  CancelFlag flag;
  EXPECT_FALSE(IsCancelRequested(flag.address()));
  flag.Set();
  EXPECT_TRUE(IsCancelRequested(flag.address()));
  EXPECT_EQ(*flag.address(), 1u);
}

TEST(CancelFlag, What_was_written_before_setting_is_seen_after_reading) {
  CancelFlag flag;
  int written = 0;  // not atomic: the flag must order it
  std::thread setter([&] {
    written = 42;
    flag.Set();
  });
  while (!flag.IsSet()) {
    std::this_thread::yield();
  }
  EXPECT_EQ(written, 42);
  setter.join();
}

}  // namespace
}  // namespace quastel
