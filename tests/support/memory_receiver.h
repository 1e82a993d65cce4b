// A log receiver that keeps what reaches it in memory, one entry per write.
#pragma once

#include "common/logging/log_file_receiver.h"

#include <memory>
#include <string>
#include <vector>

namespace test_support {

class memory_receiver_t : public logging::receiver::log_file_t {
public:
    std::vector<std::string> writes;
    void write(const std::string& text) override { writes.push_back(text); }
    std::string path() const override { return ""; }
    std::string eol() const override { return "\n"; }
    std::uint64_t size() override { return 0; }
    void compress(const std::shared_ptr<util::zip_writer_t>&) override {}
};

} // namespace test_support
