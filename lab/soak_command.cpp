#include "lab/soak_command.h"

#include "lab/soak_invariants.h"
#include "lab/soak_job.h"
#include "lab/soak_report.h"
#include "lab/tool_process.h"

#include <chrono>
#include <cstdlib>
#include <random>
#include <stdexcept>
#include <thread>

namespace lab {

namespace fs = std::filesystem;

namespace {

struct soak_options_t {
    fs::path dir;
    std::uint64_t seed = 0;
    bool seeded = false;
    std::uint64_t jobs = 20;
    double minutes = 0; // when given, the soak runs this long instead of a number of jobs
    unsigned parallel = 3;
    bool offhost = false;
    std::uint64_t skip = 0;
};

soak_options_t parse_soak_options(const std::vector<std::string>& args) {
    if (args.size() < 2 || args[1].starts_with("--"))
        throw std::invalid_argument("soak needs a folder");
    soak_options_t options;
    options.dir = fs::absolute(args[1]);
    for (std::size_t i = 2; i < args.size(); ++i) {
        const std::string& option = args[i];
        if (option == "--offhost") {
            options.offhost = true;
            continue;
        }
        if (i + 1 >= args.size())
            throw std::invalid_argument("option " + option + " needs a value");
        const std::string& value = args[++i];
        if (option == "--seed") {
            options.seed = std::stoull(value);
            options.seeded = true;
        } else if (option == "--jobs") {
            options.jobs = std::stoull(value);
        } else if (option == "--minutes") {
            options.minutes = std::stod(value);
        } else if (option == "--parallel") {
            options.parallel = std::max(1u, static_cast<unsigned>(std::stoul(value)));
        } else if (option == "--skip") {
            options.skip = std::stoull(value);
        } else {
            throw std::invalid_argument("unknown option " + option);
        }
    }
    if (!options.seeded)
        options.seed = std::random_device()() % 1000000;
    return options;
}

// The tools' pipes, in a short path of their own: a socket's path has a small limit.
class pipe_folder_t {
public:
    pipe_folder_t() {
        std::string pattern = (fs::temp_directory_path() / "mirrack-soak-XXXXXX").string();
        if (!::mkdtemp(pattern.data()))
            throw std::runtime_error("Cannot make a folder for the pipes.");
        folder = pattern;
        ::setenv("MIRRACK_PIPE_DIR", folder.c_str(), 1);
    }
    ~pipe_folder_t() {
        std::error_code ignored;
        fs::remove_all(folder, ignored);
    }
    pipe_folder_t(const pipe_folder_t&) = delete;
    pipe_folder_t& operator=(const pipe_folder_t&) = delete;

private:
    fs::path folder;
};

std::vector<job_record_t> run_round(const soak_hosts_t& hosts, const std::vector<job_draw_t>& draws,
                                    const fs::path& dir) {
    std::vector<job_record_t> records(draws.size());
    std::vector<std::thread> threads;
    const fs::path tool = tool_beside_lab();
    for (std::size_t i = 0; i < draws.size(); ++i)
        threads.emplace_back([&, i] {
            const fs::path folder = dir / "jobs" / std::to_string(draws[i].index);
            try {
                records[i] = run_job(hosts, draws[i], folder, tool);
            } catch (const std::exception& e) {
                records[i].draw = draws[i];
                records[i].folder = folder;
                records[i].trouble = std::string("the job could not run: ") + e.what();
            }
        });
    for (auto& thread : threads)
        thread.join();
    return records;
}

class soak_t {
public:
    soak_t(const soak_options_t& options_, std::ostream& out_)
        : options(options_), out(out_),
          hosts(make_soak_hosts(options.dir, options.offhost)), limits{
                                                                    static_cast<unsigned>(hosts.vms.size()),
                                                                    options.offhost} {}

    int run() {
        out << "Soak in " << options.dir.string() << " with seed " << options.seed << "\n";
        const auto start = std::chrono::steady_clock::now();
        const auto minutes = [&] {
            return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() / 60;
        };
        int status = 0;
        for (std::uint64_t first = 0; status == 0 && more(first, minutes());) {
            const std::uint64_t size = draw_concurrency(options.seed, first, options.parallel);
            const std::uint64_t from = std::max(first, options.skip);
            first += size;
            if (from < first)
                status = run_round(from, first);
        }
        print_tally(out, tally, minutes());
        return status;
    }

private:
    bool more(std::uint64_t first, double minutes) const {
        if (options.minutes > 0)
            return minutes < options.minutes;
        return first < options.skip + options.jobs;
    }

    int run_round(std::uint64_t from, std::uint64_t to) {
        if (options.minutes <= 0)
            to = std::min(to, options.skip + options.jobs);
        std::vector<job_draw_t> draws;
        for (std::uint64_t index = from; index < to; ++index)
            draws.push_back(draw_job(options.seed, index, limits));
        tally.add_round(draws);
        const auto records = lab::run_round(hosts, draws, options.dir);
        const replay_t replay{options.dir,      options.seed,   from, static_cast<unsigned>(to - from),
                              options.parallel, options.offhost};
        const fs::path journal = hosts.host / "state" / "journal.txt";
        for (auto& record : records) {
            print_job_line(out, record);
            out.flush();
            if (auto broken = check_job(record); !broken.empty()) {
                print_broken(out, broken, &record, replay, journal);
                return 1;
            }
        }
        if (auto verdict = check_host(hosts, records, audit); !verdict.broken.empty()) {
            print_broken(out, verdict.broken, verdict.job, replay, journal);
            for (auto& record : records)
                out << "  " << describe(record.draw) << "\n";
            return 1;
        }
        // A job that held keeps nothing worth a look: its folder goes, the host keeps the story.
        for (auto& record : records) {
            std::error_code ignored;
            fs::remove_all(record.folder, ignored);
        }
        return 0;
    }

    const soak_options_t options;
    std::ostream& out;
    const soak_hosts_t hosts;
    const draw_limits_t limits;
    soak_tally_t tally;
    host_audit_t audit;
};

} // namespace

int run_soak(const std::vector<std::string>& args, std::ostream& out) {
    const soak_options_t options = parse_soak_options(args);
    pipe_folder_t pipes;
    return soak_t(options, out).run();
}

} // namespace lab
