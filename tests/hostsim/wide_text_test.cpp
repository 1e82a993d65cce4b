// The host reads its own files and names: text that isn't UTF-8 must still come through,
// and GUIDs are accepted in the forms a host description writes them.
#include "hostsim/wide_text.h"

#include <gtest/gtest.h>

namespace {

TEST(HostText, WellFormedUtf8DecodesAndEncodesBackAndOtherBytesAreKeptAsCharacters) {
    const std::string text = "caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80";
    const std::wstring wide = hostsim::from_utf8(text);
    EXPECT_EQ(wide, std::wstring(L"caf\u00E9 \u20AC ") + static_cast<wchar_t>(0x1F600));
    EXPECT_EQ(hostsim::to_utf8(wide), text);
    // A stray continuation byte, a lead byte cut off by the end, a lead byte followed by ASCII,
    // an overlong slash and an encoded surrogate.
    EXPECT_EQ(hostsim::from_utf8("a\x80z"), std::wstring(L"a\u0080z"));
    EXPECT_EQ(hostsim::from_utf8("ab\xE2\x82"), std::wstring(L"ab\u00E2\u0082"));
    EXPECT_EQ(hostsim::from_utf8("\xC3z"), std::wstring(L"\u00C3z"));
    EXPECT_EQ(hostsim::from_utf8("\xC0\xAF"), std::wstring(L"\u00C0\u00AF"));
    EXPECT_EQ(hostsim::from_utf8("\xED\xA0\x80"), std::wstring(L"\u00ED\u00A0\u0080"));
}

TEST(HostText, GuidsReadWithOrWithoutBracesInAnyCaseWriteInBracesAndOtherTextIsRefused) {
    const GUID id = {0x66841cd4, 0x6ded, 0x4f4b, {0x8f, 0x17, 0xfd, 0x23, 0xf8, 0xdd, 0xc3, 0xde}};
    EXPECT_EQ(hostsim::parse_guid(L"66841CD4-6ded-4f4b-8f17-fd23f8ddc3de"), id);
    EXPECT_EQ(hostsim::parse_guid(L"{66841cd4-6ded-4f4b-8f17-FD23F8DDC3DE}"), id);
    EXPECT_EQ(hostsim::guid_text(id), L"{66841cd4-6ded-4f4b-8f17-fd23f8ddc3de}");
    for (const wchar_t* text :
         {L"", L"{66841cd4-6ded-4f4b-8f17-fd23f8ddc3de", L"66841cd4-6ded-4f4b-8f17-fd23f8ddc3dg",
          L"66841cd4+6ded-4f4b-8f17-fd23f8ddc3de", L"66841cd4-6ded-4f4b-8f17-fd23f8ddc3de0"})
        EXPECT_FALSE(hostsim::parse_guid(text)) << hostsim::to_utf8(text);
}

} // namespace
