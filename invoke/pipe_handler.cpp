#include "invoke/pipe_handler.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"
#include "common/win/event.h"

#include <algorithm>

namespace win::pipes {

namespace {

void wait_for_client_in_time(pipe_channel_t& pipe, const std::shared_ptr<win_manual_reset_event_t>& cancel,
                             const std::shared_ptr<win_manual_reset_event_t>& stop) {
    // The caller's limit is not consulted: a backup server that is slower than this is gone.
    if (wait_for_client(pipe, {cancel, stop}, client_wait_limit_ms) != client_wait_t::connected)
        throw exc::runtime_exc_t("Timed out until client to connect.");
}

} // namespace

// The parts go into blocks of bounded size and are joined once, at the message's exact size: a
// buffer grown part by part would hold up to twice the message, and three times while it moves.
bool ReadWholeMessage(pipe_channel_t& channel, byte_buffer_t& result) {
    constexpr std::size_t first_block = 64 * 1024;
    constexpr std::size_t largest_block = 8 * 1024 * 1024;
    result.clear();
    std::vector<byte_buffer_t> blocks;
    std::size_t total = 0;
    for (;;) {
        if (blocks.empty() || blocks.back().capacity() - blocks.back().size() < pipe_chunk_size) {
            blocks.emplace_back();
            blocks.back().reserve(std::clamp(total, first_block, largest_block));
        }
        byte_buffer_t& block = blocks.back();
        const std::size_t used = block.size();
        block.resize(used + pipe_chunk_size);
        DWORD got = 0;
        const DWORD status = read_message_part(channel, block.data() + used, pipe_chunk_size, got);
        block.resize(used + got);
        total += got;
        if (status == ERROR_BROKEN_PIPE)
            return false;
        if (status != ERROR_SUCCESS && status != ERROR_MORE_DATA)
            throw exc::win_sys_exc_t("Failed to read data from pipe.", status);
        if (status == ERROR_SUCCESS)
            break;
    }
    if (blocks.size() == 1) {
        result.swap(blocks.front());
        return true;
    }
    result.reserve(total);
    for (byte_buffer_t& block : blocks) {
        result.insert(result.end(), block.begin(), block.end());
        byte_buffer_t().swap(block);
    }
    return true;
}

bool WriteWholeMessage(pipe_channel_t& channel, const byte_buffer_t& data) {
    DWORD written = 0;
    const DWORD status = write_whole_message(channel, data.data(), static_cast<DWORD>(data.size()), written);
    if (status == ERROR_BROKEN_PIPE)
        return false;
    if (status != ERROR_SUCCESS)
        throw exc::win_sys_exc_t(status);
    if (written < data.size())
        throw exc::runtime_exc_t("Failed to write data into pipe");
    return true;
}

CPipeHandler::CPipeHandler(std::wstring pipePath_, std::shared_ptr<pipe_channel_t> pipe_)
    : pipePath(std::move(pipePath_)), pipe(std::move(pipe_)),
      cancelEvent(std::make_shared<win_manual_reset_event_t>()) {}

pipe_channel_t& CPipeHandler::Pipe() const {
    if (!pipe)
        throw exc::runtime_exc_t("pipe reader is not initialized.");
    return *pipe;
}

void CPipeHandler::WaitClient(const std::shared_ptr<win_manual_reset_event_t>& stopEvent, DWORD) {
    try {
        wait_for_client_in_time(Pipe(), cancelEvent, stopEvent);
    } catch (const std::exception& e) {
        exc::rethrow_with_trace("Failed to wait for client connection. Pipe: '%1'.",
                                to_ansi_nothrow(pipePath), e);
    }
}

bool CPipeHandler::ReadMessage(byte_buffer_t& result) {
    try {
        pipe_channel_t& channel = Pipe();
        // The pipe layer belongs to the common library and logs under its handle.
        log_scope_t scope(log_scope_t::silent, logging::lib_logger(), "Reading data from pipe '%1'.",
                          to_ansi_nothrow(pipePath));
        const bool complete = ReadWholeMessage(channel, result);
        scope.close_quietly();
        return complete;
    } catch (const std::exception& e) {
        exc::rethrow_with_trace("Failed to receive data from pipe'%1'.", to_ansi_nothrow(pipePath), e);
    }
}

bool CPipeHandler::WriteMessage(const byte_buffer_t& data) {
    try {
        pipe_channel_t& channel = Pipe();
        log_scope_t scope(log_scope_t::silent, logging::lib_logger(), "Writing data into pipe '%1'.",
                          to_ansi_nothrow(pipePath));
        const bool sent = WriteWholeMessage(channel, data);
        scope.close_quietly();
        return sent;
    } catch (const std::exception& e) {
        exc::rethrow_with_trace("Failed to write data into pipe '%1'.", to_ansi_nothrow(pipePath), e);
    }
}

std::shared_ptr<CPipeHandler> CreateNamedPipeEndpoint(const std::wstring& fullPath) {
    return std::make_shared<CPipeHandler>(fullPath, create_server_channel(fullPath));
}

} // namespace win::pipes
