#include "platform/handle.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>
#include <vector>

namespace quastel::platform {
namespace {

std::vector<RawHandle>& Closed() {
  static std::vector<RawHandle> closed;
  return closed;
}

struct CountingPolicy {
  static constexpr RawHandle kInvalid = -1;
  static void Close(RawHandle raw) noexcept { Closed().push_back(raw); }
};
using Handle = UniqueHandle<CountingPolicy>;

struct ZeroPolicy {
  static constexpr RawHandle kInvalid = 0;
  static void Close(RawHandle raw) noexcept { Closed().push_back(raw); }
};

static_assert(!std::is_copy_constructible_v<Handle>);
static_assert(!std::is_copy_assignable_v<Handle>);
static_assert(std::is_nothrow_move_constructible_v<Handle>);
static_assert(std::is_nothrow_move_assignable_v<Handle>);

class UniqueHandleTest : public ::testing::Test {
 protected:
  UniqueHandleTest() { Closed().clear(); }
};

using Raws = std::vector<RawHandle>;

TEST_F(UniqueHandleTest, A_default_handle_is_invalid_and_closes_nothing) {
  {
    const Handle handle;
    EXPECT_FALSE(handle.valid());
    EXPECT_EQ(handle.raw(), -1);
  }
  EXPECT_EQ(Closed(), Raws{});
}

TEST_F(UniqueHandleTest, A_handle_closes_what_it_owns_once) {
  {
    const Handle handle(5);
    EXPECT_TRUE(handle.valid());
    EXPECT_EQ(handle.raw(), 5);
    EXPECT_EQ(Closed(), Raws{});
  }
  EXPECT_EQ(Closed(), Raws{5});
}

TEST_F(UniqueHandleTest, The_invalid_value_is_that_of_the_policy) {
  {
    const UniqueHandle<ZeroPolicy> none(0);
    EXPECT_FALSE(none.valid());
    const UniqueHandle<ZeroPolicy> some(-1);
    EXPECT_TRUE(some.valid());
    const Handle zero(0);
    EXPECT_TRUE(zero.valid());
  }
  EXPECT_EQ(Closed(), (Raws{0, -1}));
}

TEST_F(UniqueHandleTest, A_move_hands_the_ownership_over) {
  {
    Handle from(5);
    const Handle to(std::move(from));
    EXPECT_EQ(to.raw(), 5);
    EXPECT_FALSE(from.valid());  // NOLINT: what a move leaves is the point
  }
  EXPECT_EQ(Closed(), Raws{5});
}

TEST_F(UniqueHandleTest, Assigning_over_a_handle_closes_the_old_one_at_once) {
  {
    Handle from(5);
    Handle to(6);
    to = std::move(from);
    EXPECT_EQ(Closed(), Raws{6});
    EXPECT_EQ(to.raw(), 5);
    EXPECT_FALSE(from.valid());  // NOLINT
  }
  EXPECT_EQ(Closed(), (Raws{6, 5}));
}

TEST_F(UniqueHandleTest, Assigning_an_empty_handle_closes_the_old_one) {
  Handle to(6);
  to = Handle();
  EXPECT_EQ(Closed(), Raws{6});
  EXPECT_FALSE(to.valid());
}

TEST_F(UniqueHandleTest, Assigning_a_handle_to_itself_keeps_it) {
  {
    Handle handle(5);
    Handle& same = handle;
    handle = std::move(same);
    EXPECT_EQ(handle.raw(), 5);
    EXPECT_EQ(Closed(), Raws{});
  }
  EXPECT_EQ(Closed(), Raws{5});
}

TEST_F(UniqueHandleTest, Reset_closes_the_handle_and_leaves_it_invalid) {
  {
    Handle handle(5);
    handle.Reset();
    EXPECT_EQ(Closed(), Raws{5});
    EXPECT_FALSE(handle.valid());
    handle.Reset();
  }
  EXPECT_EQ(Closed(), Raws{5});
}

TEST_F(UniqueHandleTest, Reset_takes_a_new_handle_in) {
  {
    Handle handle(5);
    handle.Reset(6);
    EXPECT_EQ(Closed(), Raws{5});
    EXPECT_EQ(handle.raw(), 6);
  }
  EXPECT_EQ(Closed(), (Raws{5, 6}));
}

TEST_F(UniqueHandleTest, Release_gives_the_handle_up_unclosed) {
  {
    Handle handle(5);
    EXPECT_EQ(handle.Release(), 5);
    EXPECT_FALSE(handle.valid());
  }
  EXPECT_EQ(Closed(), Raws{});
}

}  // namespace
}  // namespace quastel::platform
