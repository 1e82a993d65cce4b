// Where the lines of a log go: a file of its own, or another channel that looks like one.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace util {
class zip_writer_t;
}

namespace logging::receiver {

class log_file_t {
public:
    // Appends text; a receiver swallows its own write failures.
    virtual void write(const std::string& text) = 0;
    virtual std::string path() const = 0;
    virtual std::string eol() const = 0;
    virtual std::uint64_t size() = 0;
    // Moves the whole content into the writer, closes it, and only then leaves the log empty.
    virtual void compress(const std::shared_ptr<util::zip_writer_t>& writer) = 0;
    virtual ~log_file_t() = default;
};

} // namespace logging::receiver
