#include "common/exc/exc.h"
#include "common/win/handle.h"
#include "common/win/registry.h"
#include "tests/support/failure_lines.h"

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

} // namespace

TEST(HandleOwnership, EachValueIsClosedOnceByItsLastOwner) {
    g_closed.clear();
    {
        fake_handle_t a(1);
        fake_handle_t b(2);
        a = std::move(b);
        EXPECT_EQ(g_closed, std::vector<int>{1});
        EXPECT_EQ(a.get(), 2);
        EXPECT_FALSE(b.valid());
        fake_handle_t c(std::move(a));
        EXPECT_FALSE(a.valid());
        fake_handle_t& same = c;
        c = std::move(same);
        EXPECT_EQ(c.get(), 2);
        EXPECT_EQ(g_closed, std::vector<int>{1});
    }
    EXPECT_EQ(g_closed, (std::vector<int>{1, 2}));

    // Release gives the value up; put closes the old one first.
    fake_handle_t d(4);
    EXPECT_EQ(d.release(), 4);
    fake_handle_t e(5);
    *e.put() = 6;
    EXPECT_EQ(g_closed, (std::vector<int>{1, 2, 5}));
    EXPECT_EQ(e.get(), 6);
    // A kernel handle that is empty or invalid means none.
    win::win_handle_t none;
    EXPECT_FALSE(none.valid());
    win::win_handle_t invalid(win::invalid_handle());
    EXPECT_FALSE(invalid.valid());
    EXPECT_EQ(failure_lines([&] { (void)invalid.handle(); }),
              std::vector<std::string>{"Handle object is not initialized."});
}
