// The system's message tables and the thread's COM error object.
#include "common/exc/convert.h"
#include "common/exc/error_text_os.h"
#include "common/format/format.h"

#include "compat/unique_any.h"
#include "compat/win_types.h"

#include <system_error>

namespace exc {

namespace {

std::optional<std::string> format_from(DWORD flags, const void* source, DWORD code, DWORD language) {
    compat::unique_local_t<char*> buffer;
    const DWORD length = FormatMessageA(flags | FORMAT_MESSAGE_ALLOCATE_BUFFER, source, code, language,
                                        reinterpret_cast<char*>(buffer.put()), 0, nullptr);
    if (length == 0 || !buffer)
        return std::nullopt;
    return std::string(buffer.get(), length);
}

HMODULE internet_module() {
    HMODULE module = GetModuleHandleA("wininet.dll");
    if (module == nullptr)
        module = LoadLibraryExA("wininet.dll", nullptr, LOAD_LIBRARY_AS_DATAFILE);
    return module;
}

} // namespace

std::optional<std::string> system_message_text(std::uint32_t code) {
    return format_from(FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code,
                       MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US));
}

std::optional<std::string> internet_message_text(std::uint32_t code) {
    HMODULE module = internet_module();
    if (module == nullptr)
        return std::nullopt;
    return format_from(FORMAT_MESSAGE_FROM_HMODULE, module, code, 0);
}

std::string system_category_text(std::uint32_t code) {
    return std::system_category().message(static_cast<int>(code));
}

std::optional<std::string> thread_error_description() {
    IErrorInfo* info = nullptr;
    if (GetErrorInfo(0, &info) != S_OK || info == nullptr)
        return std::nullopt;
    compat::unique_bstr_t description;
    const bool has_description = SUCCEEDED(info->GetDescription(description.put())) && description;
    const std::wstring wide = description.text();
    info->Release();
    if (!has_description)
        return std::nullopt;
    return to_ansi(wide);
}

} // namespace exc
