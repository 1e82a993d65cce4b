// Keeping a log file under its size limit: its content moves into a gzip archive, archives age.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace logging::receiver {

class log_file_t;

constexpr std::uint64_t log_size_limit = 0xF00000;
constexpr int archive_generations = 10;
constexpr int archive_compression_level = 9;

// The limit in force; tests lower it so that a rotation needs no 15 MiB of lines.
std::uint64_t current_log_size_limit();
void set_log_size_limit_for_tests(std::uint64_t limit);

// Shifts path and its aged names one age up; the name of age ages_limit is dropped.
void age_file(const std::string& path, const std::string& extension, int ages_limit);

// At or above the limit: ages the archives, moves the log into path.gz and empties the log.
void check_log_size(const std::shared_ptr<log_file_t>& receiver);

} // namespace logging::receiver
