// The tool's entry point gives its main thread a COM apartment before any document is made;
// on Windows the tests' main thread needs one too.
#include <gtest/gtest.h>

#include <objbase.h>

namespace {

class com_apartment_t : public ::testing::Environment {
public:
    void SetUp() override { ASSERT_TRUE(SUCCEEDED(::CoInitialize(nullptr))); }
    void TearDown() override { ::CoUninitialize(); }
};

[[maybe_unused]] const auto* const apartment = ::testing::AddGlobalTestEnvironment(new com_apartment_t);

} // namespace
