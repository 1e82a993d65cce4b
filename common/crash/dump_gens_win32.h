// The dump writers of Windows: minidumps through dbghelp.dll, and the legacy
// text exception log where no minidump writer can be had.
#pragma once

#include "common/crash/dump_gen.h"
#include "compat/win_types.h"

#include <string>

namespace win {
class win_handle_t;
}

namespace crash::win32 {

// CreateFileW of a dump file only where no file of that name exists: false when one does. Any
// other failure throws exc::win_sys_exc_t with `failure`, which names the path.
bool create_new_dump_file(const std::wstring& path, DWORD access, const char* failure,
                          win::win_handle_t& file);

class minidump_gen_t : public dump_gen_base_t {
public:
    // Loads dbghelp.dll; throws, wrapped by "Minidump writer cannot be initialized.".
    minidump_gen_t();
    ~minidump_gen_t() override;
    minidump_gen_t(const minidump_gen_t&) = delete;
    minidump_gen_t& operator=(const minidump_gen_t&) = delete;

    void generate(int kind, const std::string& folder, const std::string& prefix,
                  const fault_t* fault) override;

private:
    HMODULE dbghelp_ = nullptr;
    FARPROC write_dump_ = nullptr;
};

class legacy_dump_gen_t : public dump_gen_base_t {
public:
    void generate(int kind, const std::string& folder, const std::string& prefix,
                  const fault_t* fault) override;
};

} // namespace crash::win32
