#include "hostsim/point_in_time_copy.h"

#include "compat/unique_fd_posix.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

namespace hostsim {

namespace {

std::error_code last_error() {
    return {errno, std::system_category()};
}

using fd_t = compat::unique_fd_t;

struct copier_t {
    std::string skip;
    bool try_clone = true;
    bool try_copy_range = true;

    std::error_code copy_data(int in, int out, off_t size) {
        if (try_clone) {
            if (ioctl(out, FICLONE, in) == 0)
                return {};
            try_clone = false; // the file system doesn't share extents: don't ask again
        }
        off_t done = 0;
        while (try_copy_range && done < size) {
            ssize_t n = copy_file_range(in, nullptr, out, nullptr, static_cast<size_t>(size - done), 0);
            if (n > 0) {
                done += n;
                continue;
            }
            if (n == 0)
                return {};
            if (errno == EINTR)
                continue;
            if (errno != EXDEV && errno != ENOSYS && errno != EOPNOTSUPP && errno != EINVAL)
                return last_error();
            try_copy_range = false;
        }
        // Across file systems the kernel still copies without a buffer of ours.
        while (done < size) {
            const ssize_t n = sendfile(out, in, &done, static_cast<size_t>(size - done));
            if (n == 0)
                return {};
            if (n < 0 && errno != EINTR)
                return last_error();
        }
        return {};
    }

    std::error_code copy_file(int src_dir, int dst_dir, const char* name) {
        fd_t in(openat(src_dir, name, O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
        if (!in.valid())
            return last_error();
        struct stat st {};
        if (fstat(in.get(), &st) != 0)
            return last_error();
        fd_t out(openat(dst_dir, name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, st.st_mode & 07777));
        if (!out.valid())
            return last_error();
        if (auto ec = copy_data(in.get(), out.get(), st.st_size))
            return ec;
        struct timespec times[2] = {st.st_atim, st.st_mtim};
        futimens(out.get(), times);
        return {};
    }

    std::error_code copy_link(int src_dir, int dst_dir, const char* name) {
        std::string target(4096, '\0');
        ssize_t n = readlinkat(src_dir, name, target.data(), target.size());
        if (n < 0)
            return last_error();
        target.resize(static_cast<size_t>(n));
        if (symlinkat(target.c_str(), dst_dir, name) != 0)
            return last_error();
        return {};
    }

    std::error_code copy_dir(int src_dir, int dst_dir, const std::string& src_path) {
        int scan_fd = openat(src_dir, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (scan_fd < 0)
            return last_error();
        DIR* scan = fdopendir(scan_fd);
        if (!scan) {
            ::close(scan_fd);
            return last_error();
        }
        std::error_code result;
        while (dirent* entry = readdir(scan)) {
            const char* name = entry->d_name;
            if (std::string_view(name) == "." || std::string_view(name) == "..")
                continue;
            std::string child_path = src_path + "/" + name;
            if (child_path == skip)
                continue;
            unsigned char type = entry->d_type;
            if (type == DT_UNKNOWN) {
                struct stat st {};
                if (fstatat(src_dir, name, &st, AT_SYMLINK_NOFOLLOW) != 0) {
                    result = last_error();
                    break;
                }
                type = S_ISDIR(st.st_mode) ? DT_DIR : S_ISLNK(st.st_mode) ? DT_LNK : DT_REG;
            }
            if (type == DT_DIR)
                result = copy_subdir_as(src_dir, name, dst_dir, name, child_path);
            else if (type == DT_LNK)
                result = copy_link(src_dir, dst_dir, name);
            else if (type == DT_REG)
                result = copy_file(src_dir, dst_dir, name);
            if (result)
                break;
        }
        closedir(scan);
        return result;
    }

    std::error_code copy_subdir_as(int src_parent, const char* src_name, int dst_parent, const char* name,
                                   const std::string& src_path) {
        fd_t src(openat(src_parent, src_name, O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW));
        if (!src.valid())
            return last_error();
        struct stat st {};
        if (fstat(src.get(), &st) != 0)
            return last_error();
        if (mkdirat(dst_parent, name, 0700) != 0)
            return last_error();
        fd_t dst(openat(dst_parent, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (!dst.valid())
            return last_error();
        if (auto ec = copy_dir(src.get(), dst.get(), src_path))
            return ec;
        // Mode and times last: the copying itself changes a directory's times.
        fchmod(dst.get(), st.st_mode & 07777);
        struct timespec times[2] = {st.st_atim, st.st_mtim};
        futimens(dst.get(), times);
        return {};
    }
};

std::filesystem::path normal_form(const std::filesystem::path& p) {
    auto n = std::filesystem::absolute(p).lexically_normal();
    return n.has_filename() ? n : n.parent_path();
}

} // namespace

std::error_code copy_tree_point_in_time(const std::filesystem::path& source_dir,
                                        const std::filesystem::path& target_dir,
                                        const std::filesystem::path& skip) {
    const auto source = normal_form(source_dir);
    const auto target = normal_form(target_dir);
    copier_t copier;
    copier.skip = skip.empty() ? std::string() : normal_form(skip).string();
    std::error_code ec;
    std::filesystem::create_directories(target.parent_path(), ec);
    auto parent_of = [](const std::filesystem::path& p) {
        return p.has_parent_path() ? p.parent_path() : ".";
    };
    fd_t src_parent(::open(parent_of(source).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    fd_t dst_parent(::open(parent_of(target).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!src_parent.valid() || !dst_parent.valid())
        return last_error();
    // A volume whose folder doesn't exist is an empty volume: its copy is an empty folder.
    if (!std::filesystem::exists(source)) {
        std::filesystem::create_directory(target, ec);
        return ec;
    }
    return copier.copy_subdir_as(src_parent.get(), source.filename().c_str(), dst_parent.get(),
                                 target.filename().c_str(), source.string());
}

} // namespace hostsim
