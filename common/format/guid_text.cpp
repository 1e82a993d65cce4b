// GUIDs as text: lower case in braces; braces optional, each on its own, when parsing.
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/format/guid_codec.h"

std::wstring guid_to_wstring(const GUID& guid) {
    const std::wstring text = format_impl::uuid_to_text(guid);
    if (text.empty())
        return std::wstring();
    std::wstring braced;
    braced.reserve(text.size() + 2);
    braced += L'{';
    braced += text;
    braced += L'}';
    return braced;
}

std::string guid_to_string(const GUID& guid) {
    return to_ansi(guid_to_wstring(guid));
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
