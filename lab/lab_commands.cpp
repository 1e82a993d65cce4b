#include "lab/lab_commands.h"

#include "lab/host_state_report.h"
#include "lab/sample_host.h"
#include "lab/soak_command.h"

#include "hostsim/host.h"
#include "hostsim/wide_text.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

namespace lab {

namespace {

const char usage[] = R"(Usage:
  mirrack-lab create DIR [--vms N] [--volumes N] [--files-per-vm N] [--file-size SIZE]
      A sample Hyper-V host in DIR: N local VMs (3), one on a cluster shared volume, one on
      the share \\fs01\vms; each with N files (7: configuration, disk, checkpoints) and disks
      of SIZE bytes (1M; K, M and G suffixes); spec.xml and spec-offhost.xml beside host.xml.
      --volumes N spreads the local VMs over N volumes (1): C: and volumes mounted at
      C:\Mounts\VolumeNN\, so that a backup of every VM snapshots N + 2 volumes.
  mirrack-lab create DIR --proxy
      A proxy host for off-host backups of the sample host.
  mirrack-lab state DIR
      The shadow-copy creation in progress, live shadow copies, cluster shared volumes in
      backup and the last backups' component results, after the sweep of dead owners.
  mirrack-lab resolve DIR PATH
      The local file of a Windows-form PATH on the host in DIR.
  mirrack-lab soak DIR [--seed N] [--jobs N | --minutes M] [--parallel K] [--offhost] [--skip K]
      Jobs drawn at random from the seed N (random if not given): VMs, faults of the host, and
      a whole backup, a close, a disconnect, a kill or (--offhost) an off-host import, run
      against real mirrack processes on a sample host in DIR, up to K side by side (3), and
      held to the invariants after each job. N jobs (20) or M minutes; --skip K starts at
      job K, so that --skip K --jobs 1 replays one job. Stops at the first broken invariant.
Point the tool at a host with MIRRACK_HOST=DIR.
)";

std::uint64_t parse_size(const std::string& text) {
    std::size_t end = 0;
    std::uint64_t value = std::stoull(text, &end);
    const std::string suffix = text.substr(end);
    if (suffix == "K" || suffix == "k")
        return value << 10;
    if (suffix == "M" || suffix == "m")
        return value << 20;
    if (suffix == "G" || suffix == "g")
        return value << 30;
    if (!suffix.empty())
        throw std::invalid_argument("unknown size suffix '" + suffix + "'");
    return value;
}

sample_options_t parse_create_options(const std::vector<std::string>& args) {
    sample_options_t options;
    for (std::size_t i = 2; i < args.size(); ++i) {
        const std::string& option = args[i];
        if (option == "--proxy") {
            options.proxy = true;
            continue;
        }
        if (i + 1 >= args.size())
            throw std::invalid_argument("option " + option + " needs a value");
        const std::string& value = args[++i];
        if (option == "--vms")
            options.vms_on_c = static_cast<unsigned>(std::stoul(value));
        else if (option == "--volumes")
            options.local_volumes = static_cast<unsigned>(std::stoul(value));
        else if (option == "--files-per-vm")
            options.files_per_vm = static_cast<unsigned>(std::stoul(value));
        else if (option == "--file-size")
            options.file_size = parse_size(value);
        else
            throw std::invalid_argument("unknown option " + option);
    }
    return options;
}

int create(const std::vector<std::string>& args, std::ostream& out) {
    auto options = parse_create_options(args);
    create_sample_host(args[1], options);
    out << (options.proxy ? "Proxy host" : "Sample host") << " created in " << args[1] << "\n";
    return 0;
}

int resolve(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
    auto host = hostsim::host_t::open(args[1]);
    auto path = host->map_path(hostsim::from_utf8(args[2]));
    if (!path) {
        err << "The path " << args[2] << " is on no volume, share or shadow copy of the host.\n";
        return 3;
    }
    out << path->string() << "\n";
    return 0;
}

bool asks_for_help(const std::string& word) {
    return word == "--help" || word == "-h";
}

} // namespace

// Every subcommand answers --help with the use and makes nothing, and takes as its first word a
// folder, never something that looks like an option: "create --help" once made a host named so.
int run_lab_command(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
    if ((!args.empty() && args[0] == "help") ||
        std::find_if(args.begin(), args.end(), asks_for_help) != args.end()) {
        out << usage;
        return 0;
    }
    if (args.size() >= 2 && args[1].rfind('-', 0) == 0) {
        err << "mirrack-lab: " << args[0] << " takes a folder first, not the option " << args[1] << "\n"
            << usage;
        return 2;
    }
    try {
        if (args.size() >= 2 && args[0] == "create")
            return create(args, out);
        if (args.size() == 2 && args[0] == "state") {
            out << host_state_report(args[1]);
            return 0;
        }
        if (args.size() == 3 && args[0] == "resolve")
            return resolve(args, out, err);
        if (!args.empty() && args[0] == "soak")
            return run_soak(args, out);
    } catch (const std::exception& e) {
        err << "mirrack-lab: " << e.what() << "\n";
        return 1;
    }
    err << usage;
    return 2;
}

} // namespace lab
