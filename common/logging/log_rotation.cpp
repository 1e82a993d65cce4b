#include "common/logging/log_rotation.h"

#include "common/exc/exc.h"
#include "common/logging/log_file_receiver.h"
#include "common/logging/log_names.h"
#include "common/logging/log_platform.h"
#include "common/logging/zip_writer.h"

#include <atomic>
#include <filesystem>

namespace logging::receiver {

namespace {

std::atomic<std::uint64_t>& size_limit() {
    static std::atomic<std::uint64_t> limit{log_size_limit};
    return limit;
}

} // namespace

std::uint64_t current_log_size_limit() {
    return size_limit().load();
}

void set_log_size_limit_for_tests(std::uint64_t limit) {
    size_limit().store(limit);
}

void age_file(const std::string& path, const std::string& extension, int ages_limit) {
    try {
        for (int age = ages_limit; age >= 0; --age) {
            const std::filesystem::path name = platform::native_path(aged_name(path, extension, age));
            if (!std::filesystem::exists(name))
                continue;
            if (age == ages_limit)
                std::filesystem::remove(name);
            else
                std::filesystem::rename(name, platform::native_path(aged_name(path, extension, age + 1)));
        }
    } catch (const std::exception& e) {
        exc::rethrow_with_trace("Cannot age file. File path: [%1]. Extension: [%2]. Ages limit: [%3].", path,
                                extension, std::to_string(ages_limit), e);
    }
}

void check_log_size(const std::shared_ptr<log_file_t>& receiver) {
    try {
        // The path is asked for only past the limit: the check under the limit allocates nothing.
        if (receiver->size() < current_log_size_limit())
            return;
        const std::string archive = receiver->path() + ".gz";
        const std::filesystem::path archive_file = platform::native_path(archive);
        // Names first, then the archive, then the emptied log. A failed attempt leaves the newest
        // name free: ageing again on the next try would push the good archives out one by one.
        if (std::filesystem::exists(archive_file))
            age_file(archive, "gz", archive_generations);
        try {
            auto writer = std::make_shared<util::zip_writer_t>(archive, archive_compression_level);
            receiver->compress(writer);
        } catch (...) {
            // The writer never leaves a part-written archive; a whole one whose lines the log
            // could not let go would have them twice by the next rotation.
            std::error_code ignored;
            std::filesystem::remove(archive_file, ignored);
            throw;
        }
    } catch (const std::exception& e) {
        exc::rethrow_with_trace("Unable to validate log size limit. Log path: [%1].", receiver->path(), e);
    }
}

} // namespace logging::receiver
