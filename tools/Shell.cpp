#include "Shell.h"

#include <algorithm>
#include <iostream>

#include <cstdlib>
#include <filesystem>

#include "app/Actions.h"
#include "app/AppModel.h"
#include "app/BackgroundSettings.h"
#include "app/FileInfo.h"
#include "app/Scene.h"
#include "app/Serializer.h"
#include "app/Undoer.h"
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
    "Usage: vorra-shell [-e TEXT | --load PATH | --steps N | --save PATH]... [FILE]...\n"
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
    "  -e TEXT        run TEXT as one entry\n"
    "  --load PATH    load a scene, as the program's load does\n"
    "  --steps N      run N steps of the simulation, as if it were running\n"
    "  --save PATH    write the scene, as the program's save does\n"
    "  --help         show this text\n"
    "\n"
    "-e, --load, --steps and --save run in the order they are given.\n";

// A path as the user typed it, relative to where the shell started; a bare name that names
// no file here is left to the program's rule, which looks in the scene folder.
util::String UserPath(const util::String& path) {
    std::error_code error;
    if (!std::filesystem::exists(path, error)) {
        return path;
    }
    const std::filesystem::path absolute = std::filesystem::absolute(path, error);
    return error ? path : util::String(absolute.string());
}

}  // namespace

Shell::Shell(std::ostream& out) : m_out(out) {
    logging::Logger::Get().Add(new logging::FunctionLogger(
        kConsoleMask, [this](const util::String& text) { m_out << text << std::endl; }));
    script::Parser::Get().SetErrorHandler(
        [this](const util::String& message) { m_out << message << std::endl; });
    // Objects that exist without a window are published to the root, in the program's
    // order; the serializer publishes the file information.
    script::AddToRoot(&physics::Simulation::Get());
    script::AddToRoot(&physics::SPH::Get());
    script::AddToRoot(script::ReflectedPtr(new app::HeadlessApp()));
    script::AddToRoot(script::ReflectedPtr(new app::HeadlessBackground()));
    script::AddToRoot(&app::Scene::Get());
    app::Serializer::Get();
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

void Shell::Load(const util::String& path) {
    // As the program opens a file, the load is a step of the history, which App.undo takes
    // back. The program pauses the simulation first; here it runs only on --steps, so
    // nothing needs pausing and the scene before the load comes back as it was.
    const util::SharedPtr<app::SceneLoader> loader(
        new app::SceneLoader("UndoLoadScene", false, UserPath(path)));
    app::Undoer::Get().Do(loader);
    if (!loader->HasLoaded()) {
        m_out << "Couldn't load " << path << std::endl;
    }
    logging::Logger::Get().Update();
}

void Shell::Steps(long count) {
    app::Scene::Get().RunSteps(count);
    logging::Logger::Get().Update();
}

void Shell::Save(const util::String& path) {
    if (!app::Serializer::Get().Save(path)) {
        m_out << "Couldn't save " << path << std::endl;
    }
    logging::Logger::Get().Update();
}

int RunShell(const std::vector<util::String>& arguments, std::istream& in, std::ostream& out) {
    // The ordered entries: what to do, and with what.
    enum class Kind { Text, Load, Steps, Save };
    std::vector<std::pair<Kind, util::String>> entries;
    std::vector<util::String> files;
    const std::pair<const char*, Kind> options[] = {{"-e", Kind::Text},
                                                    {"--load", Kind::Load},
                                                    {"--steps", Kind::Steps},
                                                    {"--save", Kind::Save}};
    for (size_t i = 0; i < arguments.size(); ++i) {
        const util::String& argument = arguments[i];
        if (argument == "--help" || argument == "-h") {
            out << kHelp;
            return 0;
        }
        const auto option = std::find_if(std::begin(options), std::end(options),
                                         [&](const auto& o) { return argument == o.first; });
        if (option == std::end(options)) {
            files.push_back(argument);
            continue;
        }
        if (i + 1 >= arguments.size()) {
            out << argument << " needs a value\n" << kHelp;
            return 2;
        }
        const util::String& value = arguments[++i];
        if (option->second == Kind::Steps) {
            char* end = nullptr;
            const long steps = std::strtol(value.c_str(), &end, 10);
            if (value.empty() || *end != '\0' || steps < 0) {
                out << "--steps needs a count, not \"" << value << "\"\n";
                return 2;
            }
        }
        entries.emplace_back(option->second, value);
    }

    Shell shell(out);
    for (const auto& [kind, value] : entries) {
        switch (kind) {
            case Kind::Text:
                shell.Run(value);
                break;
            case Kind::Load:
                shell.Load(value);
                break;
            case Kind::Steps:
                shell.Steps(std::strtol(value.c_str(), nullptr, 10));
                break;
            case Kind::Save:
                shell.Save(value);
                break;
        }
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
    if (entries.empty() && files.empty()) {
        util::String line;
        while (std::getline(in, line)) {
            shell.Run(line);
        }
    }
    return 0;
}

}  // namespace tools
