// GUIDs as text: lower case in braces.
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
    return braced<std::wstring>(format::uuid_to_text(guid));
}

// Every status poll's answer carries an id: it is written narrow at once.
std::string guid_to_string(const GUID& guid) {
    char text[format::uuid_ascii_length];
    if (!format::uuid_to_ascii(guid, text))
        return std::string();
    std::string out(sizeof text + 2, '{');
    std::copy(text, text + sizeof text, out.begin() + 1);
    out.back() = '}';
    return out;
}
