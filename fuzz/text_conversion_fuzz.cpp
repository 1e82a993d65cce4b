// The conversions between wide text, UTF-8 and the ANSI code page, both ways from the
// same bytes: as narrow text, and read loosely as wide text.
#include "common/format/format.h"
#include "fuzz/fuzz_input.h"

#include <exception>
#include <optional>

namespace {

template <class Convert, class Text>
auto attempt(Convert convert, const Text& text) -> std::optional<decltype(convert(text))> {
    try {
        return convert(text);
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

std::string utf8_of(const std::wstring& text) {
    return to_utf8(text);
}
std::wstring wide_of_utf8(const std::string& text) {
    return from_utf8(text);
}
std::string ansi_of(const std::wstring& text) {
    return to_ansi(text);
}
std::wstring wide_of_ansi(const std::string& text) {
    return to_unicode(text);
}

// Narrow text that converts must come back unchanged up to its first zero.
void check_narrow_road(const std::string& narrow) {
    const auto wide = attempt(wide_of_utf8, narrow);
    if (wide) {
        fuzz::require(wide->find(L'\0') == std::wstring::npos, "conversion stops at the first zero");
        const auto back = attempt(utf8_of, *wide);
        fuzz::require(back && *back == fuzz::up_to_zero(narrow), "UTF-8 that reads writes back the same");
    }
    const auto ansi_wide = attempt(wide_of_ansi, narrow);
    if (ansi_wide)
        fuzz::require(to_unicode_nothrow(narrow) == *ansi_wide,
                      "the no-throw conversion gives the same text");
}

// Wide text of scalar values always converts, and comes back unchanged up to its first zero.
void check_wide_road(const std::wstring& wide) {
    const std::wstring kept = fuzz::up_to_zero(wide);
    const auto utf8 = attempt(utf8_of, wide);
    fuzz::require(utf8.has_value() != fuzz::has_no_scalar_value(kept),
                  "text converts to UTF-8 exactly when it holds only scalar values");
    if (utf8) {
        const auto back = attempt(wide_of_utf8, *utf8);
        fuzz::require(back && *back == kept, "wide text written as UTF-8 reads back the same");
    }
    const auto ansi = attempt(ansi_of, wide);
    if (ansi)
        fuzz::require(to_ansi_nothrow(wide) == *ansi, "the no-throw conversion gives the same text");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes = fuzz::bytes_of(data, size);
    check_narrow_road(std::string(bytes));
    check_wide_road(fuzz::wide_text(bytes));
    return 0;
}
