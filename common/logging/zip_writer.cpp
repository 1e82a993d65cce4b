#include "common/logging/zip_writer.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log_platform.h"

#include <filesystem>

namespace util {

namespace {

// Where an archive is written until it is whole: a name that no archive and no aged name has.
std::string partial_name(const std::string& path) {
    return path + ".partial";
}

void remove_quietly(const std::string& path) noexcept {
    try {
        std::error_code ignored;
        std::filesystem::remove(logging::platform::native_path(path), ignored);
    } catch (...) {
    }
}

gzFile open_archive(const std::string& path, int level) {
    const std::string mode = "wb" + std::to_string(level);
    gzFile file = logging::platform::open_gz(path, mode.c_str());
    if (file == nullptr)
        throw exc::win_sys_exc_t(logging::platform::last_error_code());
    return file;
}

[[noreturn]] void throw_zlib_error(gzFile file) {
    int state = Z_OK;
    const char* text = ::gzerror(file, &state);
    if (state == Z_ERRNO)
        throw exc::win_sys_exc_t(logging::platform::last_error_code());
    throw exc::runtime_exc_t("%1 Error code: %2", text != nullptr ? text : "", num_to_string(state));
}

} // namespace

zip_writer_t::zip_writer_t(const std::string& path, int level)
    : path_(path), partial_path_(partial_name(path)), file_(nullptr) {
    try {
        file_ = open_archive(partial_path_, level);
    } catch (const std::exception& e) {
        exc::rethrow_with_message("Failed to open GZ archive [%1].", path, e);
    }
}

zip_writer_t::~zip_writer_t() {
    if (file_ == nullptr)
        return;
    ::gzclose(file_);
    remove_quietly(partial_path_);
}

void zip_writer_t::close() {
    int result = ::gzflush(file_, Z_FINISH);
    const int closed = ::gzclose(file_);
    file_ = nullptr;
    if (result == Z_OK)
        result = closed;
    if (result != Z_OK) {
        remove_quietly(partial_path_);
        exc::runtime_exc_t failure("Cannot close GZ archive [%1].", path_);
        failure.append_message("Error code: %1", num_to_string(result));
        throw failure;
    }
    try {
        std::filesystem::rename(logging::platform::native_path(partial_path_),
                                logging::platform::native_path(path_));
    } catch (const std::exception& e) {
        remove_quietly(partial_path_);
        exc::rethrow_with_message("Cannot close GZ archive [%1].", path_, e);
    }
}

void zip_writer_t::add(const void* data, std::size_t length) {
    try {
        while (length > 0) {
            const unsigned chunk = length > 0x40000000 ? 0x40000000u : static_cast<unsigned>(length);
            if (::gzwrite(file_, data, chunk) <= 0)
                throw_zlib_error(file_);
            data = static_cast<const char*>(data) + chunk;
            length -= chunk;
        }
    } catch (const std::exception& e) {
        exc::rethrow_with_message("Cannot add data to the GZ archive [%1].", path_, e);
    }
}

} // namespace util
