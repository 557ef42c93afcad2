// vorra-shell: see Shell.h, or run it with --help.

#include <iostream>

#include "Shell.h"

int main(int argc, char** argv) {
    std::vector<util::String> arguments(argv + 1, argv + argc);
    return tools::RunShell(arguments, std::cin, std::cout);
}
