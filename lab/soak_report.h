// What the soak tells people: a line per job, what was drawn how often, the pace, and for a
// broken invariant everything needed to look at the job and to replay it.
#pragma once

#include "lab/soak_draw.h"
#include "lab/soak_job.h"

#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <map>
#include <string>
#include <vector>

namespace lab {

struct soak_tally_t {
    unsigned jobs = 0;
    std::map<std::string, unsigned> actions;
    std::map<std::string, unsigned> faulted_calls;
    std::map<unsigned, unsigned> rounds_by_size; // jobs side by side, and how often
    void add_round(const std::vector<job_draw_t>& round);
};

void print_job_line(std::ostream& out, const job_record_t& record);
void print_tally(std::ostream& out, const soak_tally_t& tally, double minutes);

// Where a broken round starts and how to run it again.
struct replay_t {
    std::filesystem::path dir;
    std::uint64_t seed = 0;
    std::uint64_t first = 0;
    unsigned jobs = 0;
    unsigned parallel = 1;
    bool offhost = false;
};

void print_broken(std::ostream& out, const std::string& broken, const job_record_t* job,
                  const replay_t& replay, const std::filesystem::path& journal);

} // namespace lab
