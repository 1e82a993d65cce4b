// Basic Windows types for the portable code. On Windows this is the SDK; elsewhere
// a small set of declarations with the SDK's names, sizes and values, enough for
// the logic above the platform seam to compile unchanged.
#pragma once

#ifdef _WIN32
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <objbase.h>
#include <oleauto.h>
#include <windows.h>
#else

#include <cstddef>
#include <cstdint>
#include <cwchar>

typedef std::uint8_t BYTE;
typedef std::uint16_t WORD;
typedef std::uint32_t DWORD;
typedef std::int32_t LONG;
typedef std::uint32_t ULONG;
typedef std::int32_t INT;
typedef std::uint32_t UINT;
typedef std::int64_t LONGLONG;
typedef std::int32_t BOOL;
typedef wchar_t WCHAR;
typedef WCHAR OLECHAR;
typedef WCHAR* LPWSTR;
typedef const WCHAR* LPCWSTR;
typedef void* LPVOID;
typedef void* HANDLE;
typedef LONG HRESULT;
typedef OLECHAR* BSTR;
typedef short VARIANT_BOOL;
typedef unsigned char boolean;
typedef DWORD* LPDWORD;
typedef void* PVOID;
typedef std::size_t SIZE_T;

#ifndef TRUE
#define TRUE 1
#define FALSE 0
#endif

#define VARIANT_TRUE ((VARIANT_BOOL)-1)
#define VARIANT_FALSE ((VARIANT_BOOL)0)

#define STDMETHODCALLTYPE
#define WINAPI

#define SUCCEEDED(hr) (((HRESULT)(hr)) >= 0)
#define FAILED(hr) (((HRESULT)(hr)) < 0)

#define S_OK ((HRESULT)0L)
#define S_FALSE ((HRESULT)1L)
#define E_NOINTERFACE ((HRESULT)0x80004002L)
#define E_POINTER ((HRESULT)0x80004003L)
#define E_FAIL ((HRESULT)0x80004005L)
#define E_UNEXPECTED ((HRESULT)0x8000FFFFL)
#define E_ACCESSDENIED ((HRESULT)0x80070005L)
#define E_OUTOFMEMORY ((HRESULT)0x8007000EL)
#define E_INVALIDARG ((HRESULT)0x80070057L)

#define ERROR_SUCCESS 0L
#define ERROR_INVALID_FUNCTION 1L
#define ERROR_FILE_NOT_FOUND 2L
#define ERROR_PATH_NOT_FOUND 3L
#define ERROR_TOO_MANY_OPEN_FILES 4L
#define ERROR_ACCESS_DENIED 5L
#define ERROR_INVALID_HANDLE 6L
#define ERROR_NOT_ENOUGH_MEMORY 8L
#define ERROR_NOT_SAME_DEVICE 17L
#define ERROR_NO_MORE_FILES 18L
#define ERROR_WRITE_PROTECT 19L
#define ERROR_NOT_READY 21L
#define ERROR_GEN_FAILURE 31L
#define ERROR_SHARING_VIOLATION 32L
#define ERROR_LOCK_VIOLATION 33L
#define ERROR_NOT_SUPPORTED 50L
#define ERROR_INVALID_PARAMETER 87L
#define ERROR_BROKEN_PIPE 109L
#define ERROR_DISK_FULL 112L
#define ERROR_CALL_NOT_IMPLEMENTED 120L
#define ERROR_SEM_TIMEOUT 121L
#define ERROR_INVALID_NAME 123L
#define ERROR_DIR_NOT_EMPTY 145L
#define ERROR_BAD_PATHNAME 161L
#define ERROR_BUSY 170L
#define ERROR_ALREADY_EXISTS 183L
#define ERROR_FILENAME_EXCED_RANGE 206L
#define ERROR_FILE_TOO_LARGE 223L
#define ERROR_PIPE_BUSY 231L
#define ERROR_NO_DATA 232L
#define ERROR_PIPE_NOT_CONNECTED 233L
#define ERROR_MORE_DATA 234L
#define WAIT_TIMEOUT 258L
#define ERROR_PIPE_CONNECTED 535L
#define ERROR_OPERATION_ABORTED 995L
#define ERROR_IO_PENDING 997L
#define ERROR_IO_DEVICE 1117L
#define ERROR_TOO_MANY_LINKS 1142L
#define ERROR_NOT_FOUND 1168L
#define ERROR_TIMEOUT 1460L
#define ERROR_CANT_RESOLVE_FILENAME 1921L

#define MAX_PATH 260

#define INFINITE 0xFFFFFFFF
#define STILL_ACTIVE 259L

#define FILE_ATTRIBUTE_DIRECTORY 0x10
#define FILE_ATTRIBUTE_NORMAL 0x80

#define REG_SZ 1
#define REG_DWORD 4
#define KEY_READ 0x20019L
#define KEY_WOW64_64KEY 0x0100L

struct GUID {
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];
};
typedef GUID IID;
typedef GUID CLSID;
#define REFIID const IID&

inline bool operator==(const GUID& a, const GUID& b) {
    if (a.Data1 != b.Data1 || a.Data2 != b.Data2 || a.Data3 != b.Data3)
        return false;
    for (int i = 0; i < 8; ++i)
        if (a.Data4[i] != b.Data4[i])
            return false;
    return true;
}
inline bool operator!=(const GUID& a, const GUID& b) {
    return !(a == b);
}

const GUID GUID_NULL = {0, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}};

struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};

// BSTR: a length-prefixed wide string. Implemented in compat/bstr_posix.cpp.
BSTR SysAllocString(const OLECHAR* psz);
BSTR SysAllocStringLen(const OLECHAR* strIn, UINT ui);
void SysFreeString(BSTR bstrString);
UINT SysStringLen(BSTR pbstr);

// The COM task allocator: what the platform hands out (snapshot properties, share root paths)
// and the caller frees, and the COM runtime's random identifiers (version 4, standard variant).
// Implemented in compat/com_memory_posix.cpp.
LPVOID CoTaskMemAlloc(SIZE_T cb);
void CoTaskMemFree(LPVOID pv);
HRESULT CoCreateGuid(GUID* pguid);

#endif
