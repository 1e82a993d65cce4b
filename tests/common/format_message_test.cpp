#include "common/format/format.h"

#include <gtest/gtest.h>

TEST(FormatMessage, MarkersSelectArgumentsInAnyOrderRepeatAndEndAtTheFirstNonDigit) {
    EXPECT_EQ(format_message("%2 %1", "A", "B"), "B A");
    EXPECT_EQ(format_message("%1%1-%3", "x", "y", "z"), "xx-z");
    EXPECT_EQ(format_message("[%1][%2][%3][%4]", "a", "b", "c", "d"), "[a][b][c][d]");
    EXPECT_EQ(format_message_w(L"\\\\.\\pipe\\%1", L"name"), L"\\\\.\\pipe\\name");
    EXPECT_EQ(format_message_w(L"%2/%1", L"a", L"b"), L"b/a");
    std::vector<std::string> twelve;
    for (int i = 1; i <= 12; ++i)
        twelve.push_back(std::string("v").append(std::to_string(i)));
    EXPECT_EQ(format_message("%12|%1 2", twelve), "v12|v1 2");
    // Arguments are not expanded again, and the template ends at its first zero.
    EXPECT_EQ(format_message("%1 %2", "%2", "b"), "%2 b");
    EXPECT_EQ(format_message("<%1>", ""), "<>");
    EXPECT_EQ(format_message(std::string("a%1\0%1", 5), "x"), "ax");
}

TEST(FormatMessage, MarkersWithoutArgumentStayAsParsedAndOtherPercentSignsAreCopied) {
    EXPECT_EQ(format_message("%1", std::vector<std::string>{}), "%1");
    EXPECT_EQ(format_message("%12", "a"), "%12");
    EXPECT_EQ(format_message("%3 %0", "a", "b"), "%3 %0");
    EXPECT_EQ(format_message("%007", "a"), "%7");
    EXPECT_EQ(format_message("%-1", "a"), "%-1");
    EXPECT_EQ(format_message("% 1|%+1", "a"), "a|a");
    EXPECT_EQ(format_message("%99999999999", "a"), "%2147483647");
    EXPECT_EQ(format_message("%-99999999999", "a"), "%-2147483648");
    EXPECT_EQ(format_message("100%", "a"), "100%");
    EXPECT_EQ(format_message("%%1", "a"), "%a");
    EXPECT_EQ(format_message("%%", "a"), "%%");
    EXPECT_EQ(format_message("%-x", "a"), "%-x");
    EXPECT_EQ(format_message_w(L"50% %", L"a"), L"50% %");
}
