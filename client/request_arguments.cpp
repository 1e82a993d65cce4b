#include "client/request_arguments.h"

#include "common/format/format.h"
#include "invoke/base64.h"

namespace client {

CRequestArguments& CRequestArguments::AddText(const std::wstring& name, const std::wstring& value) {
    arguments.push_back({name, value});
    return *this;
}

CRequestArguments& CRequestArguments::AddGuid(const std::wstring& name, const GUID& value) {
    return AddText(name, guid_to_wstring(value));
}

CRequestArguments& CRequestArguments::AddBool(const std::wstring& name, bool value) {
    return AddText(name, value ? L"true" : L"false");
}

CRequestArguments& CRequestArguments::AddNumber(const std::wstring& name, std::int64_t value) {
    return AddText(name, std::to_wstring(value));
}

CRequestArguments& CRequestArguments::AddEncoded(const std::wstring& name, const std::wstring& value) {
    return AddEncodedBytes(name, to_utf8(value));
}

CRequestArguments& CRequestArguments::AddEncodedBytes(const std::wstring& name, const std::string& bytes) {
    const std::string encoded = base64_encode(bytes);
    return AddText(name, std::wstring(encoded.begin(), encoded.end()));
}

std::wstring CRequestArguments::Document() const {
    std::wstring document = L"<InputArguments>";
    for (const argument_t& argument : arguments)
        document += L"<" + argument.name + L" value=\"" + EscapeXmlAttribute(argument.value) + L"\"/>";
    return document + L"</InputArguments>";
}

std::wstring EscapeXmlAttribute(const std::wstring& text) {
    std::wstring escaped;
    escaped.reserve(text.size());
    for (const wchar_t character : text) {
        switch (character) {
        case L'&':
            escaped += L"&amp;";
            break;
        case L'<':
            escaped += L"&lt;";
            break;
        case L'>':
            escaped += L"&gt;";
            break;
        case L'"':
            escaped += L"&quot;";
            break;
        case L'\n':
            escaped += L"&#10;";
            break;
        case L'\r':
            escaped += L"&#13;";
            break;
        case L'\t':
            escaped += L"&#9;";
            break;
        default:
            escaped += character;
        }
    }
    return escaped;
}

} // namespace client
