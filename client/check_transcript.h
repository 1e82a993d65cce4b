// What the field check keeps of a session for its report: every frame sent and answered
// on each pipe, with its time, and the time of each step.
#pragma once

#include "client/invoke_client.h"

#include <chrono>
#include <iosfwd>
#include <string>
#include <vector>

namespace client {

struct transcript_entry_t {
    std::string pipe; // "tool", "host" or "proxy": whose answer it is
    exchange_t exchange;
};

struct step_time_t {
    std::string step;
    unsigned calls = 0;
    std::chrono::steady_clock::duration time{};
};

class CCheckTranscript {
public:
    CCheckTranscript() : start(std::chrono::steady_clock::now()) {}

    // Records each exchange of the client it is given to, under the pipe's label.
    exchange_observer_t RecorderFor(const std::string& pipe);
    // A step of the client's own, such as reading the samples.
    void AddStep(const std::string& step, std::chrono::steady_clock::duration time);

    const std::vector<transcript_entry_t>& Entries() const noexcept { return entries; }
    // Per pipe the task's creation (its begin command up to the status poll that saw it
    // complete), then each command with its calls and their time, then the client's own steps.
    std::vector<step_time_t> StepTimes() const;
    // One line per frame: when it went, how long the answer took, the pipe, and the text
    // shortened where long, as the tool's log does.
    void PrintFrames(std::ostream& out) const;

private:
    std::chrono::steady_clock::time_point start;
    std::vector<transcript_entry_t> entries;
    std::vector<step_time_t> ownSteps;
};

// The command of a request text ("cmd:NAME xml:...").
std::string CommandOfRequest(const std::wstring& request);

// "0.125 s".
std::string FormatSeconds(std::chrono::steady_clock::duration time);

void PrintStepTimes(const std::vector<step_time_t>& steps, std::ostream& out);

} // namespace client
