// A gzip archive being written; closing finishes it.
#pragma once

#include <cstddef>
#include <string>

#include <zlib.h>

namespace util {

class zip_writer_t {
public:
    // Opens the archive with the given compression level (mode "wb" and the level).
    zip_writer_t(const std::string& path, int level);
    // Closes the archive unless close() did; a failure is then reported, never thrown.
    ~zip_writer_t();
    zip_writer_t(const zip_writer_t&) = delete;
    zip_writer_t& operator=(const zip_writer_t&) = delete;

    void add(const void* data, std::size_t length);
    // Finishes and closes the archive; throws when it could not be written whole.
    void close();
    const std::string& path() const { return path_; }

private:
    std::string path_;
    gzFile file_;
};

} // namespace util
