// Dump writers: each writes what the platform offers about a crash into a new
// file of the dump folder, named and pruned by the common rules.
#pragma once

#include <memory>
#include <string>

namespace crash {

// What the platform caught about a crash (defined by each platform's crash frame).
struct fault_t;

namespace win32 {

class dump_gen_base_t {
public:
    virtual ~dump_gen_base_t() = default;
    // kind 0 takes the dump type from the library settings.
    virtual void generate(int kind, const std::string& folder, const std::string& prefix,
                          const fault_t* fault) = 0;
};

} // namespace win32

// The best generator that the platform can build now.
std::unique_ptr<win32::dump_gen_base_t> pick_dump_generator();

} // namespace crash
