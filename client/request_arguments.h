// The arguments of one request, written as the server reads them:
// <InputArguments><Name value="..."/>...</InputArguments>.
#pragma once

#include "compat/win_types.h"

#include <cstdint>
#include <string>
#include <vector>

namespace client {

class CRequestArguments {
public:
    CRequestArguments& AddText(const std::wstring& name, const std::wstring& value);
    CRequestArguments& AddGuid(const std::wstring& name, const GUID& value);
    CRequestArguments& AddBool(const std::wstring& name, bool value);
    CRequestArguments& AddNumber(const std::wstring& name, std::int64_t value);
    // Base64 of the text's UTF-8 bytes: how whole documents travel.
    CRequestArguments& AddEncoded(const std::wstring& name, const std::wstring& value);
    // Base64 of the bytes as they are (a file's content, which the server reads as UTF-8).
    CRequestArguments& AddEncodedBytes(const std::wstring& name, const std::string& bytes);

    // The request document.
    std::wstring Document() const;

private:
    struct argument_t {
        std::wstring name;
        std::wstring value;
    };
    std::vector<argument_t> arguments;
};

// The text of a value attribute with XML's special characters escaped.
std::wstring EscapeXmlAttribute(const std::wstring& text);

} // namespace client
