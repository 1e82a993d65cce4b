// The exception log: a readable record of a structured exception (head, loaded
// modules, stack frames) appended to a text file. It writes the legacy dumps.
#pragma once

#include "compat/win_types.h"

#include <string>

namespace crash::win32 {

class exception_log_t {
public:
    // Loads DbgHelp.dll, learns from its version whether it can list the loaded
    // modules, and notes whether the system has Terminal Server.
    exception_log_t();
    ~exception_log_t();
    exception_log_t(const exception_log_t&) = delete;
    exception_log_t& operator=(const exception_log_t&) = delete;

    // The module path with "-exceptions.log" in place of its extension.
    static std::wstring default_file();

    // Appends one record to the file, under a named mutex of that file. Without
    // pointers the record tells where it was called from.
    void write_record(const std::wstring& path, EXCEPTION_POINTERS* pointers);

    // The DbgHelp.dll calls, bound at run time: the library may be missing or old.
    struct dbghelp_t;

private:
    dbghelp_t* dbghelp_;
    bool can_list_modules_ = false;
    bool terminal_server_ = false;
};

// The process's exception log, made on first use; the crash frame makes it at
// start, while the process is still sound.
exception_log_t& exception_log();

} // namespace crash::win32
