#include "lab/soak_report.h"

#include <iomanip>
#include <ostream>

namespace lab {

void soak_tally_t::add_round(const std::vector<job_draw_t>& round) {
    ++rounds_by_size[static_cast<unsigned>(round.size())];
    for (auto& job : round) {
        ++jobs;
        ++actions[action_name(job.action)];
        for (auto& fault : job.faults)
            ++faulted_calls[fault.op];
    }
}

void print_job_line(std::ostream& out, const job_record_t& record) {
    out << "job " << record.draw.index << ": " << action_name(record.draw.action) << ", "
        << record.draw.faults.size() << " fault(s), " << record.draw.vms.size() << " VM(s)";
    if (!record.task_failures.empty())
        out << ", task failed";
    if (!record.verdicts.empty())
        out << ", " << record.verdicts.size() << " verdict(s) taken";
    out << "\n";
}

void print_tally(std::ostream& out, const soak_tally_t& tally, double minutes) {
    out << "Jobs: " << tally.jobs << " in " << std::fixed << std::setprecision(1) << minutes << " min";
    if (minutes > 0)
        out << ", " << tally.jobs / minutes << " per minute";
    out << "\nServer actions:";
    for (auto& [action, count] : tally.actions)
        out << " " << action << " " << count << ";";
    out << "\nJobs side by side:";
    for (auto& [size, count] : tally.rounds_by_size)
        out << " " << size << " at once " << count << " time(s);";
    out << "\nCalls faulted:\n";
    for (auto& [op, count] : tally.faulted_calls)
        out << "  " << std::left << std::setw(40) << op << count << "\n";
}

void print_broken(std::ostream& out, const std::string& broken, const job_record_t* job,
                  const replay_t& replay, const std::filesystem::path& journal) {
    out << "\nBROKEN: " << broken << "\n";
    out << "Seed " << replay.seed << ", jobs " << replay.first << " to " << replay.first + replay.jobs - 1
        << " side by side.\n";
    if (job) {
        out << "Draw: " << describe(job->draw) << "\n";
        for (auto& tool : job->tools)
            out << "Log of the " << tool.role << " tool (pid " << tool.pid << "): " << tool.log.string()
                << "\n";
        out << "Job folder: " << job->folder.string() << "\n";
    }
    out << "Journal: " << journal.string() << "\n";
    out << "Replay: mirrack-lab soak " << replay.dir.string() << " --seed " << replay.seed << " --skip "
        << replay.first << " --jobs " << replay.jobs << " --parallel " << replay.parallel
        << (replay.offhost ? " --offhost" : "") << "\n";
    if (job && replay.jobs > 1)
        out << "The job alone: mirrack-lab soak " << replay.dir.string() << " --seed " << replay.seed
            << " --skip " << job->draw.index << " --jobs 1" << (replay.offhost ? " --offhost" : "") << "\n";
}

} // namespace lab
