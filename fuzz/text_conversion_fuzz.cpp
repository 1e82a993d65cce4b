// The conversions between wide text, UTF-8 and the ANSI code page, both ways from the
// same bytes: as narrow text, and read loosely as wide text.
#include "common/exc/convert.h"
#include "common/format/format.h"
#include "compat/unicode.h"
#include "fuzz/fuzz_input.h"

namespace {

bool is_well_formed_utf8(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        const compat::decoded_t c = compat::decode_utf8(text.substr(at));
        if (!c.well_formed)
            return false;
        at += c.units;
    }
    return true;
}

std::wstring with_replacements(const std::wstring& text) {
    std::wstring replaced;
    for (const wchar_t c : text)
        replaced.push_back(
            static_cast<wchar_t>(compat::scalar_or_replacement(static_cast<std::uint32_t>(c))));
    return replaced;
}

// Narrow text always converts, to scalar values only, and comes back unchanged up to its first
// zero exactly when it was well-formed.
void check_narrow_road(const std::string& narrow) {
    const std::wstring wide = from_utf8(narrow);
    fuzz::require(wide.find(L'\0') == std::wstring::npos, "conversion stops at the first zero");
    fuzz::require(!fuzz::has_no_scalar_value(wide), "what is read holds scalar values only");
    const std::string kept = fuzz::up_to_zero(narrow);
    fuzz::require((to_utf8(wide) == kept) == is_well_formed_utf8(kept),
                  "UTF-8 writes back the same exactly when it is well-formed");
    fuzz::require(to_unicode(narrow) == wide && to_unicode_nothrow(narrow) == wide,
                  "the ANSI code page reads as UTF-8 and the no-throw conversion gives the same text");
}

// Wide text always converts, and comes back up to its first zero with U+FFFD for each character
// that is no scalar value.
void check_wide_road(const std::wstring& wide) {
    const std::string utf8 = to_utf8(wide);
    fuzz::require(from_utf8(utf8) == with_replacements(fuzz::up_to_zero(wide)),
                  "wide text written as UTF-8 reads back with its bad characters replaced");
    fuzz::require(to_ansi(wide) == utf8 && to_ansi_nothrow(wide) == utf8,
                  "the ANSI code page writes as UTF-8 and the no-throw conversion gives the same text");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes = fuzz::bytes_of(data, size);
    check_narrow_road(std::string(bytes));
    check_wide_road(fuzz::wide_text(bytes));
    return 0;
}
