#include "common/logging/log_names.h"

#include "common/format/format.h"

#include <vector>

namespace logging::receiver {

namespace {

std::size_t last_separator(const std::string& path) {
    return path.find_last_of("\\/");
}

std::vector<std::string> components(const std::string& path) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    while (start <= path.size()) {
        std::size_t end = path.find_first_of("\\/", start);
        if (end == std::string::npos)
            end = path.size();
        if (end > start)
            parts.push_back(path.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

} // namespace

std::string aged_name(const std::string& path, const std::string& extension, int age) {
    if (age == 0)
        return path;
    const std::string number = std::to_string(age);
    const std::size_t point = path.rfind('.');
    if (point != std::string::npos && iequals(path.substr(point + 1), extension))
        return path.substr(0, point) + "." + number + "." + extension;
    return path + "." + number;
}

std::string numbered_log_name(const std::string& path, int n) {
    std::string base = path;
    std::string extension = ".log";
    const std::size_t point = path.rfind('.');
    if (point != std::string::npos && iequals(path.substr(point), ".log")) {
        base = path.substr(0, point);
    } else if (point != std::string::npos && point + 1 == path.size()) {
        base = path.substr(0, point);
        extension.clear();
    }
    return base + "." + std::to_string(n) + extension;
}

std::string folder_of(const std::string& path) {
    const std::size_t separator = last_separator(path);
    return separator == std::string::npos ? std::string() : path.substr(0, separator);
}

std::string file_name_of(const std::string& path) {
    const std::size_t separator = last_separator(path);
    return separator == std::string::npos ? path : path.substr(separator + 1);
}

bool lies_under_folder(const std::string& path, const std::string& folder) {
    const std::vector<std::string> inner = components(path);
    const std::vector<std::string> outer = components(folder);
    if (outer.size() > inner.size())
        return false;
    for (std::size_t i = 0; i < outer.size(); ++i)
        if (!iequals(inner[i], outer[i]))
            return false;
    return true;
}

} // namespace logging::receiver
