#include "common/crash/dump_gens_win32.h"
#include "common/crash/dump_naming.h"
#include "common/crash/exception_log_win32.h"
#include "common/crash/fault_win32.h"
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"
#include "common/win/handle.h"

namespace crash::win32 {

namespace {

// The record is appended to the file once its name is claimed.
bool claim_dump_name(const std::wstring& path) {
    win::win_handle_t claimed;
    return create_new_dump_file(path, GENERIC_WRITE, "Cannot create a legacy dump file. File path: [%1].",
                                claimed);
}

} // namespace

void legacy_dump_gen_t::generate(int, const std::string& folder, const std::string& prefix,
                                 const fault_t* fault) {
    try {
        const std::wstring path = create_next_dump(folder, prefix, "log", &claim_dump_name);
        log_info(logging::lib_logger(), "Writing legacy dump. Dump path: %1.", to_ansi_nothrow(path));
        exception_log().write_record(path, fault != nullptr ? fault->pointers : nullptr);
    } catch (const std::exception& e) {
        exc::rethrow_with_message("Crash details cannot be stored in legacy format.", e);
    }
}

} // namespace crash::win32
