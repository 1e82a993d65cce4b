// Progress on one terminal line, redrawn in place with a carriage return.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>

namespace client {

// "512 B", "1.5 KiB", "20.0 MiB", "3.2 GiB".
std::string FormatByteCount(std::uint64_t bytes);

// "[##########----------]  50%  1.0 MiB / 2.0 MiB". Nothing to do counts as done.
std::string ByteProgressText(std::uint64_t done, std::uint64_t total, unsigned width = 30);

// A bar over a known number of bytes. In place, it is redrawn with a carriage return
// at each percent; otherwise it is a new line at each tenth. Either way a copy in small
// pieces doesn't flood the output.
class CByteProgressBar {
public:
    CByteProgressBar(std::ostream& out, std::uint64_t total, bool inPlace);

    void Advance(std::uint64_t bytes);
    // The last state, unless it shows already, and the end of the line.
    void Finish();

    std::uint64_t Done() const noexcept { return done; }

private:
    void Draw(bool force);

    std::ostream& out;
    std::uint64_t total;
    bool inPlace;
    std::uint64_t done = 0;
    int shownStep = -1;
    std::string shownText;
    bool finished = false;
};

} // namespace client
