#pragma once

#include <functional>
#include <iosfwd>
#include <vector>

#include "util/String.h"

namespace tools {

// One entry of the shell's input: a text to run as a console line would run.
struct ShellEntry {
    util::String text;
};

// Runs script entries headless, printing what the console would show: the messages of
// failed statements and the log lines of the console's mask as they arise, then each
// entry's result.
class Shell {
public:
    explicit Shell(std::ostream& out);
    ~Shell();

    // Runs one entry, then one frame's update.
    void Run(const util::String& text);

private:
    std::ostream& m_out;
};

// The command line: "-e TEXT" entries, then file arguments (one whole text each), else
// each line of standard input. Returns the exit code.
int RunShell(const std::vector<util::String>& arguments, std::istream& in, std::ostream& out);

}  // namespace tools
