// The RPC runtime's UUID text forms.
#include "common/format/guid_codec.h"

#include <rpc.h>

namespace format {

std::wstring uuid_to_text(const GUID& guid) {
    UUID copy = guid; // older SDKs take the UUID by non-const pointer
    RPC_WSTR text = nullptr;
    if (UuidToStringW(&copy, &text) != RPC_S_OK || text == nullptr)
        return std::wstring();
    std::wstring result(reinterpret_cast<const wchar_t*>(text));
    RpcStringFreeW(&text);
    return result;
}

bool uuid_to_ascii(const GUID& guid, char* text) {
    const std::wstring wide = uuid_to_text(guid);
    if (wide.size() != uuid_ascii_length)
        return false;
    for (std::size_t i = 0; i < wide.size(); ++i)
        text[i] = static_cast<char>(wide[i]);
    return true;
}

std::uint32_t uuid_from_text(const std::wstring& text, GUID& guid) {
    std::wstring copy(text);
    return static_cast<std::uint32_t>(UuidFromStringW(reinterpret_cast<RPC_WSTR>(copy.data()), &guid));
}

} // namespace format
