// Many threads writing through rotations: every message arrives once, whole, with its lines marked, in
// its writer's order.
#include "log_test_support.h"

#include "common/format/format.h"
#include "common/logging/log_names.h"

#include <map>
#include <thread>

namespace fs = std::filesystem;
using log_test::log_file_test;

TEST_F(log_file_test, eight_writers_through_rotations_lose_no_line_and_split_no_message) {
    constexpr int writers = 8;
    constexpr int messages = 1000;
    // Each size check rotates; the checks of all messages stay within the kept generations.
    logging::receiver::set_log_size_limit_for_tests(1);
    std::vector<std::thread> threads;
    for (int w = 0; w < writers; ++w)
        threads.emplace_back([w] {
            for (int m = 0; m < messages; ++m)
                log_error(logging::tool_logger(), format_message("writer %1 message %2\nrest of %1 %2",
                                                                 std::to_string(w), std::to_string(m)));
        });
    for (auto& thread : threads)
        thread.join();

    std::string text;
    for (int age = logging::receiver::archive_generations; age >= 0; --age) {
        const fs::path archive =
            logging::receiver::aged_name((folder_ / "Mirrack.log.gz").string(), "gz", age);
        if (fs::exists(archive))
            text += log_test::gunzip(archive);
    }
    ASSERT_TRUE(fs::exists(folder_ / "Mirrack.log.1.gz")) << "no rotation happened";
    EXPECT_FALSE(fs::exists(folder_ / "Mirrack.log.10.gz")) << "lines may have aged out";
    text += log_test::read_file(log_path_);

    std::map<std::string, int> next_message;
    std::string awaited_rest;
    int seen = 0;
    for (std::size_t start = 0, end; start < text.size(); start = end + 2) {
        end = text.find("\r\n", start);
        ASSERT_NE(end, std::string::npos);
        const std::string line = text.substr(start, end - start);
        const std::string body = line.substr(line.find("> ") + 2);
        if (!awaited_rest.empty()) {
            ASSERT_EQ(body, awaited_rest);
            awaited_rest.clear();
            continue;
        }
        std::istringstream words(body);
        std::string tag, level, writer_word, writer, message_word;
        int message = -1;
        words >> tag >> level >> writer_word >> writer >> message_word >> message;
        ASSERT_EQ(tag + level + writer_word + message_word, "Mirrack|ERR|writermessage") << line;
        ASSERT_EQ(message, next_message[writer]++) << line;
        awaited_rest = "Mirrack| >>  |rest of " + writer + " " + std::to_string(message);
        ++seen;
    }
    EXPECT_TRUE(awaited_rest.empty());
    EXPECT_EQ(seen, writers * messages);
}
