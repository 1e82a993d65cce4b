#include "common/crash/dump_gens_win32.h"
#include "common/crash/dump_naming.h"
#include "common/crash/dump_type.h"
#include "common/crash/fault_win32.h"
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"
#include "common/win/handle.h"

#include <dbghelp.h>

namespace crash::win32 {

namespace {

using write_dump_fn = BOOL(WINAPI*)(HANDLE, DWORD, HANDLE, MINIDUMP_TYPE, PMINIDUMP_EXCEPTION_INFORMATION,
                                    PMINIDUMP_USER_STREAM_INFORMATION, PMINIDUMP_CALLBACK_INFORMATION);

HMODULE load_dbghelp() {
    HMODULE module = ::LoadLibraryA("dbghelp.dll");
    if (module == nullptr)
        throw exc::win_sys_exc_t("Cannot load dbghelp.dll library.", ::GetLastError());
    return module;
}

FARPROC find_write_dump(HMODULE dbghelp) {
    FARPROC function = ::GetProcAddress(dbghelp, "MiniDumpWriteDump");
    if (function == nullptr)
        throw exc::win_sys_exc_t(
            "MiniDumpWriteDump function is not exported from the dbghelp dynamic library.", ::GetLastError());
    return function;
}

} // namespace

minidump_gen_t::minidump_gen_t() {
    try {
        dbghelp_ = load_dbghelp();
        write_dump_ = find_write_dump(dbghelp_);
    } catch (const std::exception& e) {
        if (dbghelp_ != nullptr)
            ::FreeLibrary(dbghelp_);
        exc::rethrow_with_message("Minidump writer cannot be initialized.", e);
    }
}

minidump_gen_t::~minidump_gen_t() {
    ::FreeLibrary(dbghelp_);
}

void minidump_gen_t::generate(int kind, const std::string& folder, const std::string& prefix,
                              const fault_t* fault) {
    try {
        win::win_handle_t file;
        const std::wstring path = create_next_dump(folder, prefix, "mdmp", [&file](const std::wstring& name) {
            return create_new_dump_file(name, GENERIC_READ | GENERIC_WRITE,
                                        "Cannot create a blank minidump file. File path: [%1].", file);
        });
        log_info(logging::lib_logger(), "Writing dump. Dump path: %1.", to_ansi_nothrow(path));
        MINIDUMP_EXCEPTION_INFORMATION exception = {};
        exception.ThreadId = ::GetCurrentThreadId();
        exception.ExceptionPointers = fault != nullptr ? fault->pointers : nullptr;
        exception.ClientPointers = FALSE;
        const auto write_dump = reinterpret_cast<write_dump_fn>(reinterpret_cast<void (*)()>(write_dump_));
        const BOOL written =
            write_dump(::GetCurrentProcess(), ::GetCurrentProcessId(), file.get(),
                       static_cast<MINIDUMP_TYPE>(dump_type(kind, library_settings())),
                       exception.ExceptionPointers != nullptr ? &exception : nullptr, nullptr, nullptr);
        if (written != 1)
            throw exc::win_sys_exc_t("MiniDumpWriteDump() function call has failed.", ::GetLastError());
        file.reset();
    } catch (const std::exception& e) {
        exc::rethrow_with_message("Crash details cannot be stored in minidump.", e);
    }
}

} // namespace crash::win32
