// A gzip archive being written. It is written under a name of its own and takes the archive's
// name only once finished, so that whatever stops its writing, no half archive passes for a
// whole one.
#pragma once

#include <cstddef>
#include <string>

#include <zlib.h>

namespace util {

class zip_writer_t {
public:
    // Opens the archive with the given compression level (mode "wb" and the level).
    zip_writer_t(const std::string& path, int level);
    // An archive that close() did not finish is dropped, never thrown about.
    ~zip_writer_t();
    zip_writer_t(const zip_writer_t&) = delete;
    zip_writer_t& operator=(const zip_writer_t&) = delete;

    void add(const void* data, std::size_t length);
    // Finishes and closes the archive, and gives it its name; throws when it could not be
    // written whole, and then no archive is left.
    void close();
    const std::string& path() const { return path_; }

private:
    std::string path_;
    std::string partial_path_;
    gzFile file_;
};

} // namespace util
