// The dump of a system without minidumps: a text file with the signal, the
// thread and the backtrace of the crash.
#pragma once

#include "common/crash/dump_gen.h"

namespace crash::posix {

inline constexpr const char* text_dump_extension = "txt";

class text_dump_gen_t : public win32::dump_gen_base_t {
public:
    void generate(int kind, const std::string& folder, const std::string& prefix,
                  const fault_t* fault) override;
};

} // namespace crash::posix
