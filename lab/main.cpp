// mirrack-lab: sample hosts for the simulated platform, their state, their paths.
#include "lab/lab_commands.h"

#include <iostream>

int main(int argc, char** argv) {
    return lab::run_lab_command(std::vector<std::string>(argv + 1, argv + argc), std::cout, std::cerr);
}
