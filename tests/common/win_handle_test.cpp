#include "common/exc/exc.h"
#include "common/win/handle.h"
#include "common/win/registry.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

std::vector<int> g_closed;

struct fake_traits {
    using pointer = int;
    static pointer invalid() noexcept { return -1; }
    static bool is_valid(pointer p) noexcept { return p >= 0; }
    static void close(pointer p) noexcept { g_closed.push_back(p); }
};
using fake_handle_t = win::unique_any_t<fake_traits>;

class HandleOwnership : public ::testing::Test {
protected:
    void SetUp() override { g_closed.clear(); }
};

} // namespace

TEST_F(HandleOwnership, MoveAssignmentClosesTheOldValueAndTakesTheNewOne) {
    fake_handle_t a(1);
    fake_handle_t b(2);
    a = std::move(b);
    EXPECT_EQ(g_closed, std::vector<int>{1});
    EXPECT_EQ(a.get(), 2);
    EXPECT_FALSE(b.valid());
    {
        fake_handle_t c(std::move(a));
        EXPECT_FALSE(a.valid());
    }
    EXPECT_EQ(g_closed, (std::vector<int>{1, 2}));
}

TEST_F(HandleOwnership, SelfMoveKeepsTheHandle) {
    fake_handle_t a(3);
    fake_handle_t& same = a;
    a = std::move(same);
    EXPECT_TRUE(g_closed.empty());
    EXPECT_EQ(a.get(), 3);
}

TEST_F(HandleOwnership, ReleaseGivesUpAndPutClosesFirst) {
    fake_handle_t a(4);
    EXPECT_EQ(a.release(), 4);
    EXPECT_TRUE(g_closed.empty());
    fake_handle_t b(5);
    *b.put() = 6;
    EXPECT_EQ(g_closed, std::vector<int>{5});
    EXPECT_EQ(b.get(), 6);
}

TEST(KernelHandle, EmptyOrInvalidMeansNone) {
    win::win_handle_t none;
    EXPECT_FALSE(none.valid());
    win::win_handle_t invalid(win::invalid_handle());
    EXPECT_FALSE(invalid.valid());
    try {
        (void)invalid.handle();
        FAIL() << "no exception";
    } catch (const exc::runtime_exc_t& e) {
        EXPECT_STREQ(e.what(), "Handle object is not initialized.");
    }
}
