// GUID text in both widths: what parses prints back as the same GUID, in lower case and
// braces.
#include "common/exc/convert.h"
#include "common/format/format.h"
#include "fuzz/fuzz_input.h"

#include <cstring>
#include <exception>
#include <optional>

namespace {

template <class Text> std::optional<GUID> parse(const Text& text) {
    try {
        return string_to_guid(text);
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

bool same_guid(const GUID& a, const GUID& b) {
    return std::memcmp(&a, &b, sizeof(GUID)) == 0;
}

// The text without one leading '{' and one trailing '}', each on its own.
std::wstring without_braces(std::wstring text) {
    if (text.size() >= 2 && text.front() == L'{')
        text.erase(0, 1);
    if (text.size() >= 1 && text.back() == L'}')
        text.pop_back();
    return text;
}

void check_wide(const std::wstring& text) {
    const std::optional<GUID> guid = parse(text);
    if (!guid)
        return;
    const std::wstring printed = guid_to_wstring(*guid);
    fuzz::require(printed.size() == 38 && printed.front() == L'{' && printed.back() == L'}',
                  "a GUID prints in braces");
    fuzz::require(iequals(without_braces(printed), without_braces(text)), "a GUID prints as its text read");
    const std::optional<GUID> again = parse(printed);
    fuzz::require(again && same_guid(*again, *guid), "a printed GUID reads back");
    fuzz::require(guid_to_string(*guid) == to_ansi(printed), "both widths print the same");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string narrow(fuzz::bytes_of(data, size));
    const std::wstring wide = fuzz::wide_text(narrow);
    check_wide(wide);
    const std::optional<GUID> from_narrow = parse(narrow);
    if (from_narrow) {
        const std::optional<GUID> from_wide = parse(to_unicode(narrow));
        fuzz::require(from_wide && same_guid(*from_wide, *from_narrow), "narrow text reads as its wide form");
    }
    return 0;
}
