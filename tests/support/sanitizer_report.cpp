#include "tests/support/sanitizer_report.h"
#include "tests/support/text_file.h"

#include <gtest/gtest.h>

namespace test_support {

std::string sanitizer_report(const std::string& output) {
    static const char* const openings[] = {"ERROR: AddressSanitizer", "ERROR: LeakSanitizer",
                                           "WARNING: ThreadSanitizer", "ERROR: UndefinedBehaviorSanitizer",
                                           ": runtime error: "};
    std::size_t first = std::string::npos;
    for (const char* opening : openings)
        first = std::min(first, output.find(opening));
    if (first == std::string::npos)
        return "";
    const std::size_t line_start = output.rfind('\n', first);
    return output.substr(line_start == std::string::npos ? 0 : line_start + 1);
}

void expect_no_sanitizer_report(const std::filesystem::path& output_file) {
    const std::string report = sanitizer_report(test_support::read_file(output_file));
    EXPECT_EQ(report, "") << "a sanitizer reported in the child writing " << output_file;
}

} // namespace test_support
