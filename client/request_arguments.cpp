#include "client/request_arguments.h"

#include "common/exc/convert.h"
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
    const std::string encoded = wrap::base64_encode(bytes);
    return AddText(name, std::wstring(encoded.begin(), encoded.end()));
}

std::wstring CRequestArguments::Document() const {
    std::wstring document = L"<InputArguments>";
    for (const argument_t& argument : arguments)
        document += L"<" + argument.name + L" value=\"" + EscapeXmlAttribute(argument.value) + L"\"/>";
    return document + L"</InputArguments>";
}

namespace {

struct entity_t {
    wchar_t character;
    const wchar_t* text;
};

// Line breaks and tabs are written as references too: a parser normalises them to spaces
// inside an attribute value otherwise.
constexpr entity_t attribute_entities[] = {
    {L'&', L"&amp;"},  {L'<', L"&lt;"},   {L'>', L"&gt;"},  {L'"', L"&quot;"},
    {L'\n', L"&#10;"}, {L'\r', L"&#13;"}, {L'\t', L"&#9;"},
};

const wchar_t* entity_of(wchar_t character) {
    for (const entity_t& entity : attribute_entities)
        if (entity.character == character)
            return entity.text;
    return nullptr;
}

} // namespace

std::wstring EscapeXmlAttribute(const std::wstring& text) {
    std::wstring escaped;
    escaped.reserve(text.size());
    for (const wchar_t character : text) {
        if (const wchar_t* entity = entity_of(character))
            escaped += entity;
        else
            escaped += character;
    }
    return escaped;
}

} // namespace client
