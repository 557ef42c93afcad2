#include "SceneHarness.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <string>
#include <system_error>

#include "RootBaseline.h"
#include "Shell.h"
#include "app/FileInfo.h"
#include "app/Scene.h"
#include "app/Serializer.h"
#include "app/Undoer.h"
#include "app/entities/EntityColor.h"
#include "logging/Logger.h"
#include "physics/SPH.h"
#include "util/Random.h"
#include "util/String.h"

namespace fuzz {
namespace {

// Steps between the load and the save: enough for contacts, joints and water to act, few
// enough that reading and writing stay the larger part of each input.
constexpr long kSteps = 5;
// Where the random streams start for every input: the water's jitter, and the colours of
// shapes whose line gives none.
constexpr uint32_t kSeed = 1;

struct Harness {
    // A stream without a buffer: what the shell prints fails quietly.
    std::ostream quiet{nullptr};
    tools::Shell shell{quiet};
    RootBaseline root;
    util::Random colors{kSeed};
    util::String fileName;
    std::filesystem::path folder;
    util::String input;
    util::String saved;
};

// Never destroyed: the singletons it works on go at exit in an order of their own.
Harness* s_harness = nullptr;

[[noreturn]] void Fail(const util::String& what) {
    std::fprintf(stderr, "Scene harness: %s\n", what.c_str());
    std::abort();
}

void WriteFile(const util::String& path, const uint8_t* data, size_t size) {
    std::ofstream file(path, std::ios::out | std::ios::trunc | std::ios::binary);
    file.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    file.flush();
    if (!file) {
        Fail("couldn't write " + path);
    }
}

void Reset(Harness& harness) {
    // The history's snapshots hold the entities of the input.
    app::Undoer::Get().Clear();
    app::Scene::Get().New();
    // So do the tables of the latest load, until the next one.
    app::Serializer::Get().BeginRestoring();
    harness.root.Restore();
    app::FileInfo::Get().SetFileName(harness.fileName);
    physics::SPH::Get().SeedJitter(kSeed);
    harness.colors = util::Random(kSeed);
    // A save that fails must not leave the previous input's file for the load after it.
    std::error_code error;
    std::filesystem::remove(harness.saved, error);
    EndFrames();
}

Harness& Setup() {
    if (s_harness) {
        return *s_harness;
    }
    // The logger's only sink is the shell's console, which prints nowhere.
    logging::Logger::Get();
    s_harness = new Harness();
    Harness& harness = *s_harness;
    app::EntityColorSource::SetRandom(&harness.colors);
    harness.fileName = app::FileInfo::Get().GetFileName();

    // One folder per process: fork mode runs several at once. The file names stay the same
    // in every process, since a loaded scene takes its title from its file's name.
    std::error_code error;
    harness.folder = std::filesystem::temp_directory_path(error) /
                     ("vorra-scene-fuzz-" + std::to_string(getpid()));
    std::filesystem::create_directories(harness.folder, error);
    if (error) {
        Fail("couldn't make " + harness.folder.string() + ": " + error.message());
    }
    harness.input = (harness.folder / "scene.vra").string();
    harness.saved = (harness.folder / "saved.vra").string();
    std::atexit([] {
        std::error_code ignored;
        std::filesystem::remove_all(s_harness->folder, ignored);
    });

    harness.root.Capture();
    Reset(harness);
    return harness;
}

}  // namespace

void RunSceneInput(const uint8_t* data, size_t size) {
    Harness& harness = Setup();
    WriteFile(harness.input, data, size);
    harness.shell.Load(harness.input);
    harness.shell.Steps(kSteps);
    harness.shell.Save(harness.saved);
    harness.shell.Load(harness.saved);
    Reset(harness);
}

}  // namespace fuzz
