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
    // The program's load and save of a scene file.
    void Load(const util::String& path);
    void Save(const util::String& path);
    // Steps the simulation as if it were running, with the scene's update before each.
    void Steps(long count);

private:
    std::ostream& m_out;
};

// The command line: "-e TEXT", "--load PATH", "--steps N" and "--save PATH" in their
// order, then file arguments (one whole text each), else
// each line of standard input. Returns the exit code.
int RunShell(const std::vector<util::String>& arguments, std::istream& in, std::ostream& out);

}  // namespace tools
