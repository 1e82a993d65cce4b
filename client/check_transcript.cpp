#include "client/check_transcript.h"

#include "common/format/format.h"

#include <algorithm>
#include <cstdio>
#include <iomanip>
#include <optional>
#include <ostream>

namespace client {

namespace {

bool is_begin(const std::string& command) {
    return command == "BeginSnapshotCreation" || command == "BeginSnapshotImport";
}

// From the pipe's begin command to the answer of the last status poll that follows it.
std::optional<step_time_t> creation_of(const std::vector<transcript_entry_t>& entries,
                                       const std::string& pipe) {
    std::optional<step_time_t> creation;
    std::chrono::steady_clock::time_point begun;
    for (const transcript_entry_t& entry : entries) {
        if (entry.pipe != pipe)
            continue;
        const std::string command = CommandOfRequest(entry.exchange.request);
        if (!creation && is_begin(command)) {
            const std::string what = command == "BeginSnapshotImport" ? "Import" : "Snapshot creation";
            begun = entry.exchange.sent;
            creation = step_time_t{pipe == "tool" ? what : what + " on the " + pipe, 0,
                                   entry.exchange.answered - begun};
        } else if (creation && command == "GetAsyncOpStatus") {
            ++creation->calls;
            creation->time = entry.exchange.answered - begun;
        } else if (creation) {
            break;
        }
    }
    return creation;
}

} // namespace

std::string CommandOfRequest(const std::wstring& request) {
    const std::size_t begin = request.rfind(L"cmd:", 0) == 0 ? 4 : 0;
    return to_ansi_nothrow(request.substr(begin, request.find(L' ', begin) - begin));
}

std::string FormatSeconds(std::chrono::steady_clock::duration time) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3f s", std::chrono::duration<double>(time).count());
    return text;
}

exchange_observer_t CCheckTranscript::RecorderFor(const std::string& pipe) {
    return [this, pipe](const exchange_t& exchange) { entries.push_back({pipe, exchange}); };
}

void CCheckTranscript::AddStep(const std::string& step, std::chrono::steady_clock::duration time) {
    ownSteps.push_back({step, 1, time});
}

std::vector<step_time_t> CCheckTranscript::StepTimes() const {
    std::vector<step_time_t> steps;
    for (const char* pipe : {"tool", "host", "proxy"}) {
        if (const std::optional<step_time_t> creation = creation_of(entries, pipe))
            steps.push_back(*creation);
    }
    for (const transcript_entry_t& entry : entries) {
        const std::string step = entry.pipe + ": " + CommandOfRequest(entry.exchange.request);
        auto found =
            std::find_if(steps.begin(), steps.end(), [&](const step_time_t& s) { return s.step == step; });
        if (found == steps.end())
            found = steps.insert(steps.end(), step_time_t{step, 0, {}});
        ++found->calls;
        found->time += entry.exchange.answered - entry.exchange.sent;
    }
    steps.insert(steps.end(), ownSteps.begin(), ownSteps.end());
    return steps;
}

void CCheckTranscript::PrintFrames(std::ostream& out) const {
    for (const transcript_entry_t& entry : entries) {
        const exchange_t& exchange = entry.exchange;
        out << "+" << FormatSeconds(exchange.sent - start) << "  " << entry.pipe << " <- "
            << shorten_for_log(to_ansi_nothrow(exchange.request)) << '\n';
        out << "+" << FormatSeconds(exchange.answered - start) << "  " << entry.pipe << " -> "
            << (exchange.response.empty() ? std::string("(no answer: the pipe was closed)")
                                          : shorten_for_log(to_ansi_nothrow(exchange.response)))
            << '\n';
    }
}

void PrintStepTimes(const std::vector<step_time_t>& steps, std::ostream& out) {
    std::size_t width = 4;
    for (const step_time_t& step : steps)
        width = std::max(width, step.step.size());
    const int w = static_cast<int>(width);
    out << std::left << std::setw(w) << "Step"
        << "  " << std::right << std::setw(5) << "Calls"
        << "  " << std::setw(9) << "Time" << '\n';
    for (const step_time_t& step : steps)
        out << std::left << std::setw(w) << step.step << "  " << std::right << std::setw(5) << step.calls
            << "  " << std::setw(9) << FormatSeconds(step.time) << '\n';
}

} // namespace client
