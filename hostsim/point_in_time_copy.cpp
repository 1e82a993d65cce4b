#include "hostsim/point_in_time_copy.h"

#include "compat/unique_fd_posix.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace hostsim {

namespace fs = std::filesystem;

namespace {

std::error_code last_error() {
    return {errno, std::system_category()};
}

std::error_code keep_mode_and_times(const fs::path& copy, const struct stat& original) {
    struct timespec times[2] = {original.st_atim, original.st_mtim};
    if (::chmod(copy.c_str(), original.st_mode & 07777) != 0 ||
        ::utimensat(AT_FDCWD, copy.c_str(), times, AT_SYMLINK_NOFOLLOW) != 0)
        return last_error();
    return {};
}

struct copier_t {
    fs::path skip;
    bool try_clone = true;

    std::error_code copy_bytes(int in, int out, off_t size) {
        if (try_clone) {
            if (ioctl(out, FICLONE, in) == 0)
                return {};
            try_clone = false; // the file system doesn't share extents: don't ask again
        }
        for (off_t done = 0; done < size;) {
            const ssize_t n = sendfile(out, in, &done, static_cast<size_t>(size - done));
            if (n == 0)
                return {};
            if (n < 0 && errno != EINTR)
                return last_error();
        }
        return {};
    }

    std::error_code copy_file(const fs::path& from, const fs::path& to) {
        compat::unique_fd_t in(::open(from.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
        struct stat st {};
        if (!in.valid() || fstat(in.get(), &st) != 0)
            return last_error();
        compat::unique_fd_t out(
            ::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, st.st_mode & 07777));
        if (!out.valid())
            return last_error();
        if (auto ec = copy_bytes(in.get(), out.get(), st.st_size))
            return ec;
        return keep_mode_and_times(to, st);
    }

    std::error_code copy_dir(const fs::path& from, const fs::path& to) {
        struct stat st {};
        if (::stat(from.c_str(), &st) != 0 || ::mkdir(to.c_str(), 0700) != 0)
            return last_error();
        std::error_code ec;
        for (fs::directory_iterator it(from, ec), end; !ec && it != end; it.increment(ec)) {
            const fs::path& entry = it->path();
            const fs::file_type type = it->symlink_status(ec).type();
            if (!ec && entry != skip) {
                if (type == fs::file_type::directory)
                    ec = copy_dir(entry, to / entry.filename());
                else if (type == fs::file_type::symlink)
                    fs::copy_symlink(entry, to / entry.filename(), ec);
                else if (type == fs::file_type::regular)
                    ec = copy_file(entry, to / entry.filename());
            }
            if (ec)
                return ec;
        }
        // Mode and times last: the copying itself changes a directory's times.
        return ec ? ec : keep_mode_and_times(to, st);
    }
};

fs::path normal_form(const fs::path& p) {
    auto n = fs::absolute(p).lexically_normal();
    return n.has_filename() ? n : n.parent_path();
}

} // namespace

std::error_code copy_tree_point_in_time(const fs::path& source_dir, const fs::path& target_dir,
                                        const fs::path& skip) {
    const auto source = normal_form(source_dir);
    const auto target = normal_form(target_dir);
    std::error_code ec;
    fs::create_directories(target.parent_path(), ec);
    // A volume whose folder doesn't exist is an empty volume: its copy is an empty folder.
    if (!fs::exists(source)) {
        fs::create_directory(target, ec);
        return ec;
    }
    return copier_t{skip.empty() ? fs::path() : normal_form(skip)}.copy_dir(source, target);
}

} // namespace hostsim
