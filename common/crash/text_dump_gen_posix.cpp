#include "common/crash/text_dump_gen_posix.h"

#include "common/crash/dump_naming.h"
#include "common/crash/fault_posix.h"
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"
#include "common/monitoring/thread_states.h"
#include "common/win/errno_posix.h"
#include "common/win/local_path.h"
#include "common/win/thread_id.h"
#include "compat/unique_fd_posix.h"

#include <cerrno>
#include <csignal>
#include <cstdio>

#include <execinfo.h>
#include <fcntl.h>
#include <unistd.h>

namespace crash::posix {

namespace {

const char* signal_name(int signal) {
    switch (signal) {
    case SIGSEGV:
        return "SIGSEGV";
    case SIGBUS:
        return "SIGBUS";
    case SIGFPE:
        return "SIGFPE";
    case SIGILL:
        return "SIGILL";
    case SIGABRT:
        return "SIGABRT";
    }
    return "signal";
}

class dump_file_t {
public:
    dump_file_t() = default;
    // Only where no file of that name exists: false when one does.
    bool create_new(const std::wstring& path) {
        const auto local = win::local_path(path);
        if (!local)
            throw exc::win_sys_exc_t("Cannot create a text crash dump file. File path: [%1].",
                                     to_ansi_nothrow(path), ERROR_PATH_NOT_FOUND);
        fd_.reset(::open(local->c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644));
        if (!fd_ && errno == EEXIST)
            return false;
        if (!fd_)
            throw exc::win_sys_exc_t("Cannot create a text crash dump file. File path: [%1].",
                                     to_ansi_nothrow(path), win::win32_error_from_errno(errno));
        return true;
    }

    void write(const std::string& text) {
        std::size_t done = 0;
        while (done < text.size()) {
            const ssize_t written = ::write(fd_.get(), text.data() + done, text.size() - done);
            if (written < 0 && errno == EINTR)
                continue;
            if (written <= 0)
                throw exc::win_sys_exc_t("Cannot write a text crash dump file.",
                                         win::win32_error_from_errno(errno));
            done += static_cast<std::size_t>(written);
        }
    }
    int fd() const { return fd_.get(); }

private:
    compat::unique_fd_t fd_;
};

std::string thread_line() {
    const DWORD id = win::current_thread_id();
    std::string line = "Thread id: " + std::to_string(id);
    if (auto state = monitoring::CThreadStatesCollection::get()->find(id))
        line += ", role: " + state->role();
    return line + "\n";
}

std::string cause_line(const fault_t& fault) {
    if (fault.signal == 0)
        return "Unhandled exception: " + fault.exception_text + "\n";
    char text[96];
    std::snprintf(text, sizeof text, "Signal: %d (%s), fault address: %p\n", fault.signal,
                  signal_name(fault.signal), fault.address);
    return text;
}

void write_dump(dump_file_t& file, const fault_t& fault) {
    file.write(cause_line(fault));
    file.write(thread_line());
    file.write("Backtrace:\n");
    // Writes straight to the file: no allocation for the symbol names.
    ::backtrace_symbols_fd(fault.frames, fault.frame_count, file.fd());
}

} // namespace

void text_dump_gen_t::generate(int, const std::string& folder, const std::string& prefix,
                               const fault_t* fault) {
    try {
        dump_file_t file;
        const std::wstring path =
            create_next_dump(folder, prefix, text_dump_extension,
                             [&file](const std::wstring& name) { return file.create_new(name); });
        log_info(logging::lib_logger(), "Writing dump. Dump path: %1.", to_ansi_nothrow(path));
        if (fault != nullptr)
            write_dump(file, *fault);
    } catch (const std::exception& e) {
        exc::rethrow_with_message("Crash details cannot be stored in text dump.", e);
    }
}

} // namespace crash::posix

namespace crash {

std::unique_ptr<win32::dump_gen_base_t> pick_dump_generator() {
    return std::make_unique<posix::text_dump_gen_t>();
}

} // namespace crash
