// The process id and environment variables that tests use to keep their files and pipes
// apart, on both platforms.
#pragma once

#include <cstdlib>
#include <string>
#ifdef _WIN32
#include <process.h>
#else
#include <unistd.h>
#endif

namespace test_env {

// Off Windows the registry, volumes and data folders are those of the simulated host.
#ifdef _WIN32
inline constexpr bool simulated_host = false;
#else
inline constexpr bool simulated_host = true;
#endif

inline long process_id() {
#ifdef _WIN32
    return ::_getpid();
#else
    return ::getpid();
#endif
}

// The C runtime's _putenv_s also sets the process environment that the Win32 calls read.
inline void set(const char* name, const std::string& value) {
#ifdef _WIN32
    ::_putenv_s(name, value.c_str());
#else
    ::setenv(name, value.c_str(), 1);
#endif
}

inline void unset(const char* name) {
#ifdef _WIN32
    ::_putenv_s(name, "");
#else
    ::unsetenv(name);
#endif
}

} // namespace test_env
