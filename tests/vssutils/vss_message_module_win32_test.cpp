// Windows only: the message module read through the system's own loader and message tables. The
// VSS module itself comes with the system's VSS, which Wine lacks, so a module that every system
// has stands in for the reading; the VSS text is the module's where it is loaded, the code alone
// where it is not.
#include "vssutils/vss_error_text.h"
#include "vssutils/vss_message_module.h"

#include <gtest/gtest.h>

#include <vss.h>

using VSSUtils::detail::message_module_t;

TEST(VssMessageModule, AMessageTableGivesItsTextAndTheSystemsErrorForAnIdItLacks) {
    const message_module_t module("kernelbase.dll");
    ASSERT_TRUE(module.loaded());
    DWORD error = 0;
    const std::optional<std::string> text = module.message(ERROR_ACCESS_DENIED, error);
    ASSERT_TRUE(text.has_value()) << error;
    EXPECT_TRUE(text->starts_with("Access") && text->ends_with(".\r\n")) << *text;
    EXPECT_FALSE(module.message(0x0ABCDEF1, error).has_value());
    EXPECT_EQ(error, static_cast<DWORD>(ERROR_MR_MID_NOT_FOUND));
}

TEST(VssMessageModule, AModuleThatIsNotThereKeepsTheLoadError) {
    const message_module_t module("mirrack-no-such-module.dll");
    EXPECT_FALSE(module.loaded());
    EXPECT_EQ(module.load_error(), static_cast<DWORD>(ERROR_MOD_NOT_FOUND));
}

TEST(VssErrorText, AKnownCodeFindsItsTextOrTheCodeAlone) {
    const std::string text = VSSUtils::VssErrorText(VSS_E_BAD_STATE);
    if (message_module_t("vsstrace.dll").loaded())
        EXPECT_EQ(text,
                  "A function call was made when the object was in an incorrect state for that function.");
    else
        EXPECT_EQ(text, "Vss error: '0x80042301'");
}
