// Without the system's message tables: the texts the system gives for the codes this tool meets,
// word for word, each with the closing line break that the system's own texts carry.
#include "common/exc/error_text_os.h"

#include <map>

namespace exc {

namespace {

const std::map<std::uint32_t, const char*>& system_texts() {
    static const std::map<std::uint32_t, const char*> texts = {
        {0, "The operation completed successfully.\r\n"},
        {1, "Incorrect function.\r\n"},
        {2, "The system cannot find the file specified.\r\n"},
        {3, "The system cannot find the path specified.\r\n"},
        {4, "The system cannot open the file.\r\n"},
        {5, "Access is denied.\r\n"},
        {6, "The handle is invalid.\r\n"},
        {8, "Not enough memory resources are available to process this command.\r\n"},
        {13, "The data is invalid.\r\n"},
        {14, "Not enough memory resources are available to complete this operation.\r\n"},
        {15, "The system cannot find the drive specified.\r\n"},
        {17, "The system cannot move the file to a different disk drive.\r\n"},
        {18, "There are no more files.\r\n"},
        {19, "The media is write protected.\r\n"},
        {21, "The device is not ready.\r\n"},
        {31, "A device attached to the system is not functioning.\r\n"},
        {32, "The process cannot access the file because it is being used by another process.\r\n"},
        {33, "The process cannot access the file because another process has locked a portion of the "
             "file.\r\n"},
        {38, "Reached the end of the file.\r\n"},
        {50, "The request is not supported.\r\n"},
        {53, "The network path was not found.\r\n"},
        {67, "The network name cannot be found.\r\n"},
        {80, "The file exists.\r\n"},
        {87, "The parameter is incorrect.\r\n"},
        {109, "The pipe has been ended.\r\n"},
        {112, "There is not enough space on the disk.\r\n"},
        {120, "This function is not supported on this system.\r\n"},
        {121, "The semaphore timeout period has expired.\r\n"},
        {122, "The data area passed to a system call is too small.\r\n"},
        {123, "The filename, directory name, or volume label syntax is incorrect.\r\n"},
        {126, "The specified module could not be found.\r\n"},
        {127, "The specified procedure could not be found.\r\n"},
        {145, "The directory is not empty.\r\n"},
        {161, "The specified path is invalid.\r\n"},
        {170, "The requested resource is in use.\r\n"},
        {183, "Cannot create a file when that file already exists.\r\n"},
        {203, "The system could not find the environment option that was entered.\r\n"},
        {206, "The filename or extension is too long.\r\n"},
        {223, "The file size exceeds the limit allowed and cannot be saved.\r\n"},
        {231, "All pipe instances are busy.\r\n"},
        {232, "The pipe is being closed.\r\n"},
        {233, "No process is on the other end of the pipe.\r\n"},
        {234, "More data is available.\r\n"},
        {258, "The wait operation timed out.\r\n"},
        {259, "No more data is available.\r\n"},
        {267, "The directory name is invalid.\r\n"},
        {535, "There is a process on other end of the pipe.\r\n"},
        {995, "The I/O operation has been aborted because of either a thread exit or an application "
              "request.\r\n"},
        {997, "Overlapped I/O operation is in progress.\r\n"},
        {1113, "No mapping for the Unicode character exists in the target multi-byte code page.\r\n"},
        {1117, "The request could not be performed because of an I/O device error.\r\n"},
        {1142, "An attempt was made to create more links on a file than the file system supports.\r\n"},
        {1168, "Element not found.\r\n"},
        {1223, "The operation was canceled by the user.\r\n"},
        {1314, "A required privilege is not held by the client.\r\n"},
        {1359, "An internal error occurred.\r\n"},
        {1460, "This operation returned because the timeout period expired.\r\n"},
        {1705, "The string universal unique identifier (UUID) is invalid.\r\n"},
        {1722, "The RPC server is unavailable.\r\n"},
        {1813, "The specified resource type cannot be found in the image file.\r\n"},
        {1921, "The name of the file cannot be resolved by the system.\r\n"},
        // HRESULTs outside the Win32 facility that the system table also knows.
        {0x80004001u, "Not implemented\r\n"},
        {0x80004002u, "No such interface supported\r\n"},
        {0x80004003u, "Invalid pointer\r\n"},
        {0x80004004u, "Operation aborted\r\n"},
        {0x80004005u, "Unspecified error\r\n"},
        {0x8000FFFFu, "Catastrophic failure\r\n"},
        {0x80010106u, "Cannot change thread mode after it is set.\r\n"},
        {0x800401F0u, "CoInitialize has not been called.\r\n"},
    };
    return texts;
}

const std::map<std::uint32_t, const char*>& internet_texts() {
    static const std::map<std::uint32_t, const char*> texts = {
        {12002, "The operation timed out\r\n"},
        {12005, "The URL is invalid\r\n"},
        {12006, "The URL does not use a recognized protocol\r\n"},
        {12007, "The server name or address could not be resolved\r\n"},
        {12029, "A connection with the server could not be established\r\n"},
        {12030, "The connection with the server was terminated abnormally\r\n"},
        {12031, "The connection with the server was reset\r\n"},
        {12152, "The server returned an invalid or unrecognized response\r\n"},
    };
    return texts;
}

std::optional<std::string> lookup(const std::map<std::uint32_t, const char*>& table, std::uint32_t code) {
    auto found = table.find(code);
    if (found == table.end())
        return std::nullopt;
    return std::string(found->second);
}

// An HRESULT of the Win32 facility reads as the Win32 code it carries.
const std::uint32_t win32_facility_mask = 0xFFFF0000u;
const std::uint32_t win32_facility_failure = 0x80070000u;

} // namespace

std::optional<std::string> system_message_text(std::uint32_t code) {
    if ((code & win32_facility_mask) == win32_facility_failure)
        return lookup(system_texts(), code & ~win32_facility_mask);
    return lookup(system_texts(), code);
}

std::optional<std::string> internet_message_text(std::uint32_t code) {
    return lookup(internet_texts(), code);
}

// The system category of this platform holds errno values, not Win32 codes: reading a Win32 code
// there would give the words of an unrelated errno.
std::string system_category_text(std::uint32_t) {
    return "Unknown error";
}

// There is no COM error object on this platform.
std::optional<std::string> thread_error_description() {
    return std::nullopt;
}

} // namespace exc
