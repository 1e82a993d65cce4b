// GUIDs as text: lower case in braces; braces optional, each on its own, when parsing.
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/format/guid_codec.h"

#include <algorithm>

namespace {

// The platform's text of a GUID is hexadecimal digits and hyphens, which narrow as they stand.
template <class Text> Text braced(const std::wstring& text) {
    if (text.empty())
        return Text();
    Text out(text.size() + 2, '{');
    std::transform(text.begin(), text.end(), out.begin() + 1,
                   [](wchar_t c) { return static_cast<typename Text::value_type>(c); });
    out.back() = '}';
    return out;
}

} // namespace

std::wstring guid_to_wstring(const GUID& guid) {
    return braced<std::wstring>(format_impl::uuid_to_text(guid));
}

// Every status poll's answer carries an id: it is written narrow at once.
std::string guid_to_string(const GUID& guid) {
    char text[format_impl::uuid_ascii_length];
    if (!format_impl::uuid_to_ascii(guid, text))
        return std::string();
    std::string out(sizeof text + 2, '{');
    std::copy(text, text + sizeof text, out.begin() + 1);
    out.back() = '}';
    return out;
}

GUID string_to_guid(const std::wstring& text) {
    std::wstring bare(text);
    if (bare.size() >= 2) {
        if (bare.front() == L'{')
            bare.erase(0, 1);
        if (bare.back() == L'}')
            bare.pop_back();
    }
    GUID guid = GUID_NULL;
    const std::uint32_t status = format_impl::uuid_from_text(bare, guid);
    if (status != 0)
        throw exc::win_sys_exc_t("Failed to convert string [%1] to UUID.", to_ansi_nothrow(text), status);
    return guid;
}

GUID string_to_guid(const std::string& text) {
    return string_to_guid(to_unicode(text));
}
