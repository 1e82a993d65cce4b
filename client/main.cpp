// mirrack-client: talks to a running Mirrack over its pipe, for people and scripts.
#include "client/subcommand.h"

#include <iostream>

int main(int argc, char* argv[]) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    return client::RunClient(arguments, std::cout, std::cerr);
}
