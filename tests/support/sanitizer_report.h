// A sanitizer report in what a child process wrote: a report fails the test that ran the child,
// whatever the child's exit status says (UBSan, for one, goes on after reporting).
#pragma once

#include <filesystem>
#include <string>

namespace test_support {

// From the first line that a sanitizer wrote to the end; empty when there is none.
std::string sanitizer_report(const std::string& output);

// Fails the running test with the report, if the file of the child's output holds one.
void expect_no_sanitizer_report(const std::filesystem::path& output_file);

} // namespace test_support
