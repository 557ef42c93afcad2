#include "Shell.h"

#include <iostream>

#include "logging/FunctionLogger.h"
#include "logging/Logger.h"
#include "physics/SPH.h"
#include "physics/Simulation.h"
#include "script/Parser.h"
#include "util/FileSystem.h"

namespace tools {
namespace {

// Warnings, checks and info: what the in-program console shows of the log.
constexpr unsigned kConsoleMask = 23;

const char* const kHelp =
    "Usage: vorra-shell [-e TEXT]... [FILE]...\n"
    "\n"
    "Runs Vorra's script language without a window.\n"
    "\n"
    "Each -e TEXT is one entry, then each FILE is one entry (its whole text); with neither,\n"
    "each line of standard input is one entry. An entry runs as a line typed into the\n"
    "console: the messages of a failed parse or statement and the log lines the console\n"
    "shows are printed as they arise, then the entry's result if it has one. Between\n"
    "entries the attributes are recalculated, as once a frame in the program.\n"
    "\n"
    "The exit code is 0 once all input was read, even if entries failed.\n"
    "\n"
    "  -e TEXT    run TEXT as one entry\n"
    "  --help     show this text\n";

}  // namespace

Shell::Shell(std::ostream& out) : m_out(out) {
    logging::Logger::Get().Add(new logging::FunctionLogger(
        kConsoleMask, [this](const util::String& text) { m_out << text << std::endl; }));
    script::Parser::Get().SetErrorHandler(
        [this](const util::String& message) { m_out << message << std::endl; });
    // Objects that exist without a window are published to the root, in the program's
    // order; the scene and its file information join as they are built.
    script::AddToRoot(&physics::Simulation::Get());
    script::AddToRoot(&physics::SPH::Get());
}

Shell::~Shell() = default;

void Shell::Run(const util::String& text) {
    script::Parser& parser = script::Parser::Get();
    const util::String result = parser.ExecuteToString(text);
    if (!result.empty()) {
        m_out << result << std::endl;
    }
    // One frame: formulas follow their inputs, and repeated messages show again.
    parser.Update();
    logging::Logger::Get().Update();
    logging::Logger::Get().Update();
}

int RunShell(const std::vector<util::String>& arguments, std::istream& in, std::ostream& out) {
    std::vector<util::String> texts;
    std::vector<util::String> files;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const util::String& argument = arguments[i];
        if (argument == "--help" || argument == "-h") {
            out << kHelp;
            return 0;
        }
        if (argument == "-e") {
            if (i + 1 >= arguments.size()) {
                out << "-e needs a text\n" << kHelp;
                return 2;
            }
            texts.push_back(arguments[++i]);
        } else {
            files.push_back(argument);
        }
    }

    Shell shell(out);
    for (const util::String& text : texts) {
        shell.Run(text);
    }
    for (const util::String& file : files) {
        util::String text;
        try {
            text = util::FileSystem::Get().ReadTextFile(file);
        } catch (const std::exception& e) {
            out << e.what() << std::endl;
            continue;
        }
        shell.Run(text);
    }
    if (texts.empty() && files.empty()) {
        util::String line;
        while (std::getline(in, line)) {
            shell.Run(line);
        }
    }
    return 0;
}

}  // namespace tools
