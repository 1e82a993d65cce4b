// The canonical 8-4-4-4-12 form, read as strictly as the system's RPC runtime reads it.
#include "common/format/guid_codec.h"

#include "compat/uuid_text.h"

namespace format {

namespace {

const std::uint32_t invalid_string_uuid = 1705;

} // namespace

std::wstring uuid_to_text(const GUID& guid) {
    return compat::uuid_text(guid);
}

bool uuid_to_ascii(const GUID& guid, char* text) {
    compat::put_uuid_text(guid, text);
    return true;
}

std::uint32_t uuid_from_text(const std::wstring& text, GUID& guid) {
    const std::optional<GUID> parsed = compat::parse_uuid_text(text);
    if (!parsed)
        return invalid_string_uuid;
    guid = *parsed;
    return 0;
}

} // namespace format
