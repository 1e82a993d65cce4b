// A fuzz target's inputs fed to it once each, without clang's fuzzer: what the sanitizer
// build of g++ links the targets with, so that its test run replays their seeds and their
// regressions too. Arguments are files or folders of files; options meant for the fuzzer
// (a leading '-') are ignored, so that both builds register the same command line.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::vector<std::filesystem::path> inputs_of(const std::filesystem::path& argument) {
    if (!std::filesystem::is_directory(argument))
        return {argument};
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(argument))
        if (entry.is_regular_file())
            files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

bool replay(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        std::fprintf(stderr, "cannot read %s\n", file.string().c_str());
        return false;
    }
    const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    return true;
}

} // namespace

int main(int argc, char** argv) {
    std::size_t replayed = 0;
    for (int i = 1; i < argc; ++i) {
        if (argv[i][0] == '-')
            continue;
        for (const auto& file : inputs_of(argv[i])) {
            if (!replay(file))
                return 1;
            ++replayed;
        }
    }
    std::printf("%zu inputs replayed\n", replayed);
    return replayed ? 0 : 1;
}
