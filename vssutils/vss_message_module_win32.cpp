#include "vssutils/vss_message_module.h"

#include "compat/unique_any.h"

namespace VSSUtils::detail {

message_module_t::message_module_t(const char* name) {
    handle_ = LoadLibraryA(name);
    if (!handle_)
        load_error_ = GetLastError();
}

message_module_t::~message_module_t() {
    if (handle_)
        FreeLibrary(static_cast<HMODULE>(handle_));
}

std::optional<std::string> message_module_t::message(DWORD message_id, DWORD& error) const {
    compat::unique_local_t<char*> buffer;
    // No FORMAT_MESSAGE_IGNORE_INSERTS and no arguments: the texts are taken as they are.
    DWORD length = FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_HMODULE, handle_,
                                  message_id, MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US),
                                  reinterpret_cast<char*>(buffer.put()), 0, nullptr);
    if (length == 0) {
        error = GetLastError();
        return std::nullopt;
    }
    return std::string(buffer.get(), length);
}

} // namespace VSSUtils::detail
