#pragma once

#include <SDL.h>
#include <gtest/gtest.h>

#include <limits>

#include "../rendering/SanitizerSafeDriver.h"
#include "core/Subsystem.h"
#include "util/FileSystem.h"

namespace test_core {

// One window for the test process: the subsystem is a singleton and never comes back.
// Each test runs in a process of its own under CTest.
class WindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        // The work directory first: the subsystem finds its icon and log file there.
        test_rendering::UseSanitizerSafeDriver();
        testing::internal::CaptureStdout();
        util::FileSystem::Get().SetArgv0("core_tests");
        testing::internal::GetCapturedStdout();
        m_subsystem = &core::Subsystem::Get();
        core::WindowParams params;
        params.resolution.x = 320;
        params.resolution.y = 240;
        m_subsystem->CreateWindow(params);
        test_rendering::KeepDriverLoaded();
        m_subsystem->SetMaxFPS(std::numeric_limits<float>::infinity());  // never sleep
        m_subsystem->BeginRun();
    }

    void RunFrames(int n) {
        for (int i = 0; i < n; ++i) {
            ASSERT_TRUE(m_subsystem->RunFrame());
        }
    }

    // The window manager's word that the user resized the window; it arrives with the
    // next frame's events.
    static void PushResize(int width, int height) {
        SDL_Event event{};
        event.type = SDL_WINDOWEVENT;
        event.window.event = SDL_WINDOWEVENT_RESIZED;
        event.window.data1 = width;
        event.window.data2 = height;
        SDL_PushEvent(&event);
    }

    core::Subsystem* m_subsystem = nullptr;
};

}  // namespace test_core
