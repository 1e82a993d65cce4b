// GUIDs from text: braces optional, each on its own.
#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/format/guid_codec.h"

GUID string_to_guid(const std::wstring& text) {
    std::wstring bare(text);
    if (bare.size() >= 2) {
        if (bare.front() == L'{')
            bare.erase(0, 1);
        if (bare.back() == L'}')
            bare.pop_back();
    }
    GUID guid = GUID_NULL;
    const std::uint32_t status = format::uuid_from_text(bare, guid);
    if (status != 0)
        throw exc::win_sys_exc_t("Failed to convert string [%1] to UUID.", to_ansi_nothrow(text), status);
    return guid;
}

GUID string_to_guid(const std::string& text) {
    return string_to_guid(to_unicode(text));
}
