#include "client/progress_bar.h"

#include <cstdio>
#include <ostream>

namespace client {

namespace {

int percent_of(std::uint64_t done, std::uint64_t total) {
    if (total == 0 || done >= total)
        return 100;
    return static_cast<int>(static_cast<long double>(done) * 100 / total);
}

} // namespace

std::string FormatByteCount(std::uint64_t bytes) {
    static const char* const units[] = {"KiB", "MiB", "GiB", "TiB"};
    if (bytes < 1024)
        return std::to_string(bytes) + " B";
    double value = static_cast<double>(bytes) / 1024;
    std::size_t unit = 0;
    while (value >= 1024 && unit + 1 < std::size(units)) {
        value /= 1024;
        ++unit;
    }
    char text[32];
    std::snprintf(text, sizeof text, "%.1f %s", value, units[unit]);
    return text;
}

std::string ByteProgressText(std::uint64_t done, std::uint64_t total, unsigned width) {
    const int percent = percent_of(done, total);
    const unsigned filled = static_cast<unsigned>(percent) * width / 100;
    char figure[8];
    std::snprintf(figure, sizeof figure, "%3d%%", percent);
    std::string text = "[";
    text.append(filled, '#').append(width - filled, '-').append("] ").append(figure).append("  ");
    text.append(FormatByteCount(done)).append(" / ").append(FormatByteCount(total));
    return text;
}

CByteProgressBar::CByteProgressBar(std::ostream& out_, std::uint64_t total_, bool inPlace_)
    : out(out_), total(total_), inPlace(inPlace_) {
    Draw(true);
}

void CByteProgressBar::Advance(std::uint64_t bytes) {
    done += bytes;
    Draw(false);
}

void CByteProgressBar::Finish() {
    if (finished)
        return;
    finished = true;
    if (ByteProgressText(done, total) != shownText)
        Draw(true);
    if (inPlace)
        out << '\n';
    out << std::flush;
}

void CByteProgressBar::Draw(bool force) {
    const int step = percent_of(done, total) / (inPlace ? 1 : 10);
    if (!force && step == shownStep)
        return;
    shownStep = step;
    shownText = ByteProgressText(done, total);
    if (inPlace)
        out << '\r' << shownText << std::flush;
    else
        out << shownText << '\n';
}

} // namespace client
