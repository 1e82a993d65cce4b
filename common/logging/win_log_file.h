// The receiver of the tool's log: a plain file, held open for the life of the log.
#pragma once

#include "common/logging/log_file_receiver.h"
#include "common/win/file.h"

#include <memory>
#include <string>

namespace win {

class win_log_file_t : public logging::receiver::log_file_t {
public:
    // Opens or creates the file for appending; exc::file_locked_exc_t when another writer holds it.
    explicit win_log_file_t(const std::string& path);

    void write(const std::string& text) override;
    std::string path() const override { return path_; }
    std::string eol() const override { return eol_; }
    std::uint64_t size() override;
    void compress(const std::shared_ptr<util::zip_writer_t>& writer) override;

    void set_auto_flush(bool on) { auto_flush_ = on; }

private:
    void restore_append_position() noexcept;

    bool auto_flush_ = false;
    std::string eol_ = "\r\n";
    std::string path_;
    shared_file_t file_;
};

} // namespace win
