#include "common/crash/exception_log_win32.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/win/handle.h"

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <dbghelp.h>
#include <vector>

namespace crash::win32 {

namespace {

constexpr int max_stack_frames = 64;
constexpr std::size_t max_symbol_name = 256;

template <typename Function> void bind(HMODULE module, Function& function, const char* name) {
    function = module != nullptr
                   ? reinterpret_cast<Function>(reinterpret_cast<void (*)()>(::GetProcAddress(module, name)))
                   : nullptr;
}

std::string module_path(HMODULE module) {
    char path[MAX_PATH] = {};
    const DWORD length = ::GetModuleFileNameA(module, path, MAX_PATH);
    return std::string(path, length);
}

std::string file_name_of(const std::string& path) {
    const std::size_t slash = path.find_last_of("\\/");
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string folder_of(const std::string& path) {
    const std::size_t slash = path.find_last_of("\\/");
    return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

// The four numbers of a file's version resource; false when it has none.
bool file_version(const std::string& path, WORD (&version)[4]) {
    DWORD ignored = 0;
    const DWORD size = ::GetFileVersionInfoSizeA(path.c_str(), &ignored);
    if (size == 0)
        return false;
    std::vector<char> data(size);
    if (!::GetFileVersionInfoA(path.c_str(), 0, size, data.data()))
        return false;
    VS_FIXEDFILEINFO* info = nullptr;
    UINT length = 0;
    if (!::VerQueryValueA(data.data(), "\\", reinterpret_cast<void**>(&info), &length) || info == nullptr)
        return false;
    version[0] = HIWORD(info->dwFileVersionMS);
    version[1] = LOWORD(info->dwFileVersionMS);
    version[2] = HIWORD(info->dwFileVersionLS);
    version[3] = LOWORD(info->dwFileVersionLS);
    return true;
}

bool product_suite_names_terminal_server() {
    HKEY key = nullptr;
    if (::RegOpenKeyExA(HKEY_LOCAL_MACHINE, "System\\CurrentControlSet\\Control\\ProductOptions", 0,
                        KEY_QUERY_VALUE, &key) != ERROR_SUCCESS)
        return false;
    DWORD type = 0;
    DWORD size = 0;
    std::vector<char> suite;
    if (::RegQueryValueExA(key, "ProductSuite", nullptr, &type, nullptr, &size) == ERROR_SUCCESS &&
        size > 0) {
        suite.resize(size + 2);
        if (::RegQueryValueExA(key, "ProductSuite", nullptr, &type, reinterpret_cast<BYTE*>(suite.data()),
                               &size) != ERROR_SUCCESS)
            suite.clear();
    }
    ::RegCloseKey(key);
    // A list of zero-terminated words.
    for (const char* word = suite.data(); word != nullptr && *word != '\0'; word += std::strlen(word) + 1)
        if (std::string(word) == "Terminal Server")
            return true;
    return false;
}

bool system_has_terminal_server() {
    using verify_fn = BOOL(WINAPI*)(LPOSVERSIONINFOEXA, DWORD, DWORDLONG);
    verify_fn verify = nullptr;
    bind(::GetModuleHandleA("kernel32.dll"), verify, "VerifyVersionInfoA");
    if (verify == nullptr)
        return product_suite_names_terminal_server();
    OSVERSIONINFOEXA wanted = {};
    wanted.dwOSVersionInfoSize = sizeof wanted;
    wanted.wSuiteMask = VER_SUITE_TERMINAL;
    return verify(&wanted, VER_SUITENAME, ::VerSetConditionMask(0, VER_SUITENAME, VER_AND)) != FALSE;
}

std::string expand(const std::string& text) {
    char expanded[4096] = {};
    const DWORD length = ::ExpandEnvironmentStringsA(text.c_str(), expanded, sizeof expanded);
    return length == 0 || length > sizeof expanded ? text : std::string(expanded);
}

// Serialises the records of all processes that write to one file.
class file_mutex_t {
public:
    file_mutex_t(const std::wstring& path, bool global) {
        std::string name = to_ansi_nothrow(path);
        for (char& c : name)
            if (c == '\\' || c == ':')
                c = '_';
        name = (global ? "Global\\" : "") + name + "\\Lock";
        mutex_ = ::CreateMutexA(nullptr, FALSE, name.c_str());
        // A name that the object manager refuses leaves the record unguarded rather than unwritten.
        if (mutex_ != nullptr)
            ::WaitForSingleObject(mutex_, INFINITE);
    }
    ~file_mutex_t() {
        if (mutex_ != nullptr) {
            ::ReleaseMutex(mutex_);
            ::CloseHandle(mutex_);
        }
    }
    file_mutex_t(const file_mutex_t&) = delete;
    file_mutex_t& operator=(const file_mutex_t&) = delete;

private:
    HANDLE mutex_ = nullptr;
};

std::string printed(const char* format, ...) {
    char text[2048];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    return text;
}

} // namespace

struct exception_log_t::dbghelp_t {
    HMODULE module = nullptr;
    decltype(&::SymInitialize) sym_initialize = nullptr;
    decltype(&::SymSetOptions) sym_set_options = nullptr;
    decltype(&::SymCleanup) sym_cleanup = nullptr;
    decltype(&::EnumerateLoadedModules64) enumerate_loaded_modules = nullptr;
    decltype(&::SymLoadModule64) sym_load_module = nullptr;
    decltype(&::SymGetModuleInfo64) sym_get_module_info = nullptr;
    decltype(&::StackWalk64) stack_walk = nullptr;
    decltype(&::SymFunctionTableAccess64) function_table_access = nullptr;
    decltype(&::SymGetModuleBase64) get_module_base = nullptr;
    decltype(&::SymFromAddr) sym_from_addr = nullptr;
    decltype(&::SymGetLineFromAddr64) sym_get_line = nullptr;

    dbghelp_t() : module(::LoadLibraryA("DbgHelp.dll")) {
        bind(module, sym_initialize, "SymInitialize");
        bind(module, sym_set_options, "SymSetOptions");
        bind(module, sym_cleanup, "SymCleanup");
        bind(module, enumerate_loaded_modules, "EnumerateLoadedModules64");
        bind(module, sym_load_module, "SymLoadModule64");
        bind(module, sym_get_module_info, "SymGetModuleInfo64");
        bind(module, stack_walk, "StackWalk64");
        bind(module, function_table_access, "SymFunctionTableAccess64");
        bind(module, get_module_base, "SymGetModuleBase64");
        bind(module, sym_from_addr, "SymFromAddr");
        bind(module, sym_get_line, "SymGetLineFromAddr64");
    }
    ~dbghelp_t() {
        if (module != nullptr)
            ::FreeLibrary(module);
    }
    bool has_symbols() const { return sym_initialize != nullptr && sym_cleanup != nullptr; }
};

namespace {

// One record, built in memory and written at once.
class record_t {
public:
    record_t(const exception_log_t::dbghelp_t& dbghelp, bool can_list_modules)
        : dbghelp_(dbghelp), can_list_modules_(can_list_modules), process_(::GetCurrentProcess()) {}

    std::string build(EXCEPTION_POINTERS* pointers) {
        const std::string module = module_path(nullptr);
        const bool symbols = dbghelp_.has_symbols() && start_symbols(module);
        add_head(pointers, module);
        text_ += "Loaded modules:\n\n";
        if (symbols && can_list_modules_ && dbghelp_.enumerate_loaded_modules != nullptr)
            dbghelp_.enumerate_loaded_modules(process_, &record_t::add_module, this);
        text_ += "Stack frames:\n";
        if (symbols)
            add_stack(pointers);
        if (symbols)
            dbghelp_.sym_cleanup(process_);
        return text_;
    }

private:
    bool start_symbols(const std::string& module) {
        const std::string search_path =
            folder_of(module) + ";" + expand("%_NT_SYMBOL_PATH%;%_NT_ALT_SYMBOL_PATH%;%SystemRoot%\\Symbols");
        if (!dbghelp_.sym_initialize(process_, search_path.c_str(), FALSE))
            return false;
        if (dbghelp_.sym_set_options != nullptr)
            dbghelp_.sym_set_options(SYMOPT_UNDNAME | SYMOPT_DEFERRED_LOADS | SYMOPT_LOAD_LINES);
        return true;
    }

    void add_head(EXCEPTION_POINTERS* pointers, const std::string& module) {
        const EXCEPTION_RECORD* exception = pointers != nullptr ? pointers->ExceptionRecord : nullptr;
        const std::time_t now = std::time(nullptr);
        const char* when = std::ctime(&now);
        text_ += "\n" + std::string(85, '/') + "\n";
        text_ += printed(
            "// Exception: 0x%08x, Address: 0x%08x, Date/Time %s// Process %s (%s), Process ID: "
            "0x%08x, Thread ID: 0x%08x",
            exception != nullptr ? static_cast<unsigned>(exception->ExceptionCode) : 0u,
            exception != nullptr
                ? static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(exception->ExceptionAddress))
                : 0u,
            when != nullptr ? when : "\n", file_name_of(module).c_str(), module.c_str(),
            static_cast<unsigned>(::GetCurrentProcessId()), static_cast<unsigned>(::GetCurrentThreadId()));
        text_ += "\n";
    }

    static BOOL CALLBACK add_module(PCSTR name, DWORD64 base, ULONG size, PVOID context) {
        // Some versions give the bare name; the loader knows the path.
        std::string path = name != nullptr ? name : "";
        if (path.find_first_of("\\/") == std::string::npos) {
            const std::string loaded =
                module_path(reinterpret_cast<HMODULE>(static_cast<std::uintptr_t>(base)));
            if (!loaded.empty())
                path = loaded;
        }
        static_cast<record_t*>(context)->add_module_line(path, base, size);
        return TRUE;
    }

    void add_module_line(const std::string& path, DWORD64 base, ULONG size) {
        WORD version[4] = {};
        file_version(path, version);
        text_ += printed("0x%08x - 0x%08x %s (%s) %hu.%hu.%hu.%hu, ", static_cast<unsigned>(base),
                         static_cast<unsigned>(base + size), file_name_of(path).c_str(), path.c_str(),
                         version[0], version[1], version[2], version[3]);
        text_ += symbol_state(path, base, size) + "\n";
    }

    std::string symbol_state(const std::string& path, DWORD64 base, ULONG size) {
        if (dbghelp_.sym_load_module == nullptr || dbghelp_.sym_get_module_info == nullptr)
            return "no symbols are available";
        ::SetLastError(ERROR_SUCCESS);
        if (dbghelp_.sym_load_module(process_, nullptr, path.c_str(), nullptr, base, size) == 0 &&
            ::GetLastError() != ERROR_SUCCESS)
            return printed("no matching symbolic information found (error code: 0x%08x)",
                           static_cast<unsigned>(::GetLastError()));
        IMAGEHLP_MODULE64 info = {};
        info.SizeOfStruct = sizeof info;
        if (!dbghelp_.sym_get_module_info(process_, base, &info) || info.SymType == SymNone)
            return "no symbols are available";
        return "symbols loaded";
    }

    void add_stack(EXCEPTION_POINTERS* pointers) {
        if (dbghelp_.stack_walk == nullptr)
            return;
        CONTEXT context = {};
        if (pointers != nullptr && pointers->ContextRecord != nullptr)
            context = *pointers->ContextRecord;
        else
            ::RtlCaptureContext(&context);
        STACKFRAME64 frame = {};
        DWORD machine = 0;
#if defined(_M_X64) || defined(__x86_64__)
        machine = IMAGE_FILE_MACHINE_AMD64;
        frame.AddrPC.Offset = context.Rip;
        frame.AddrFrame.Offset = context.Rbp;
        frame.AddrStack.Offset = context.Rsp;
#else
        machine = IMAGE_FILE_MACHINE_I386;
        frame.AddrPC.Offset = context.Eip;
        frame.AddrFrame.Offset = context.Ebp;
        frame.AddrStack.Offset = context.Esp;
#endif
        frame.AddrPC.Mode = AddrModeFlat;
        frame.AddrFrame.Mode = AddrModeFlat;
        frame.AddrStack.Mode = AddrModeFlat;
        for (int i = 0; i < max_stack_frames && frame.AddrPC.Offset != 0; ++i) {
            if (!dbghelp_.stack_walk(machine, process_, ::GetCurrentThread(), &frame, &context, nullptr,
                                     dbghelp_.function_table_access, dbghelp_.get_module_base, nullptr))
                break;
            add_frame(frame.AddrPC.Offset);
        }
    }

    void add_frame(DWORD64 address) {
        text_ += printed("0x%016llx", static_cast<unsigned long long>(address));
        alignas(SYMBOL_INFO) char buffer[sizeof(SYMBOL_INFO) + max_symbol_name] = {};
        auto* symbol = reinterpret_cast<SYMBOL_INFO*>(buffer);
        symbol->SizeOfStruct = sizeof(SYMBOL_INFO);
        symbol->MaxNameLen = max_symbol_name;
        DWORD64 displacement = 0;
        if (dbghelp_.sym_from_addr != nullptr &&
            dbghelp_.sym_from_addr(process_, address, &displacement, symbol))
            text_ += printed(" %s + 0x%llx", symbol->Name, static_cast<unsigned long long>(displacement));
        IMAGEHLP_LINE64 line = {};
        line.SizeOfStruct = sizeof line;
        DWORD column = 0;
        if (dbghelp_.sym_get_line != nullptr && dbghelp_.sym_get_line(process_, address, &column, &line))
            text_ += printed(", %s(%lu)", line.FileName, static_cast<unsigned long>(line.LineNumber));
        text_ += "\n";
    }

    const exception_log_t::dbghelp_t& dbghelp_;
    bool can_list_modules_;
    HANDLE process_;
    std::string text_;
};

} // namespace

exception_log_t::exception_log_t() : dbghelp_(new dbghelp_t) {
    WORD version[4] = {};
    can_list_modules_ = dbghelp_->module != nullptr && file_version(module_path(dbghelp_->module), version) &&
                        (version[0] > 5 || (version[0] == 5 && version[1] >= 1));
    terminal_server_ = system_has_terminal_server();
}

exception_log_t::~exception_log_t() {
    delete dbghelp_;
}

std::wstring exception_log_t::default_file() {
    wchar_t path[MAX_PATH] = {};
    std::wstring file(path, ::GetModuleFileNameW(nullptr, path, MAX_PATH));
    const std::size_t dot = file.find_last_of(L'.');
    const std::size_t slash = file.find_last_of(L"\\/");
    if (dot != std::wstring::npos && (slash == std::wstring::npos || dot > slash))
        file.erase(dot);
    return file + L"-exceptions.log";
}

void exception_log_t::write_record(const std::wstring& path, EXCEPTION_POINTERS* pointers) {
    file_mutex_t guard(path, terminal_server_);
    const std::string text = record_t(*dbghelp_, can_list_modules_).build(pointers);
    win::win_handle_t file(::CreateFileW(path.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ, nullptr,
                                         OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.valid())
        throw exc::win_sys_exc_t("Cannot open the exception log. File path: [%1].", to_ansi_nothrow(path),
                                 ::GetLastError());
    DWORD written = 0;
    if (!::WriteFile(file.get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr))
        throw exc::win_sys_exc_t("Cannot write to the exception log. File path: [%1].", to_ansi_nothrow(path),
                                 ::GetLastError());
}

exception_log_t& exception_log() {
    static exception_log_t log;
    return log;
}

} // namespace crash::win32
