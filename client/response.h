// A response frame as the client sees it: "xml:" with the output document, or
// "err:" with the failure text; anything else is a protocol fault of the server.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace client {

enum class response_kind_t { success, failure, unknown };

// One child of <OutputArguments>: its name and attributes in document order.
struct response_argument_t {
    std::wstring name;
    std::vector<std::pair<std::wstring, std::wstring>> attributes;

    // The attribute's text; throws exc::runtime_exc_t when it is missing.
    const std::wstring& Attribute(const std::wstring& attribute) const;
};

class CResponse {
public:
    // Throws an exc::exc_base_t when a success frame's document can't be read (in the words of
    // the tool's readers, a document nested too deep included).
    static CResponse FromFrame(const std::wstring& frame);

    response_kind_t Kind() const noexcept { return kind; }
    bool IsSuccess() const noexcept { return kind == response_kind_t::success; }
    bool IsFailure() const noexcept { return kind == response_kind_t::failure; }
    const std::wstring& Frame() const noexcept { return frame; }
    // The text behind "xml:" or "err:".
    const std::wstring& Body() const noexcept { return body; }
    const std::vector<response_argument_t>& Arguments() const noexcept { return arguments; }

    // Names are matched without regard to case. Both throw exc::runtime_exc_t when
    // there is no such argument.
    const response_argument_t& Argument(const std::wstring& name) const;
    const std::wstring& Value(const std::wstring& name) const;
    // An encoded argument: Base64 of UTF-8, up to the first zero byte, as the server writes it.
    std::wstring Decoded(const std::wstring& name) const;

private:
    response_kind_t kind = response_kind_t::unknown;
    std::wstring frame;
    std::wstring body;
    std::vector<response_argument_t> arguments;
};

// Base64 of UTF-8 to text, leniently, as the server decodes it.
std::wstring DecodeEncodedValue(const std::wstring& value);

} // namespace client
