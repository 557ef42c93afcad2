#pragma once

// A private data tree for each test, and a hidden window with an OpenGL context for the
// tests that need the graphics card (they run under the virtual X server).

#include <GL/glew.h>
#include <SDL.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <vector>

#include "SanitizerSafeDriver.h"
#include "logging/LogCapture.h"
#include "rendering/GraphicsContext.h"
#include "util/FileSystem.h"

namespace test_rendering {

class DataTreeTest : public ::testing::Test {
protected:
    void SetUp() override {
        char pattern[] = "/tmp/vorra_rendering_XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        m_root = pattern;
        util::FileSystem::Get().SetWorkDirectory(m_root);
    }
    void TearDown() override {
        std::error_code error;
        std::filesystem::remove_all(m_root, error);
    }

    // A file of the tree, its folders made; gives its full path.
    std::string Write(const std::string& relative, const std::string& bytes) {
        const std::filesystem::path path = std::filesystem::path(m_root) / relative;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << bytes;
        return path.string();
    }
    std::string Path(const std::string& relative) const { return m_root + "/" + relative; }

    bool Logged(const util::String& text) const {
        return std::any_of(m_log.begin(), m_log.end(), [&](const logging::CapturedLine& line) {
            return line.text.find(text) != util::String::npos;
        });
    }

    std::string m_root;
    std::vector<logging::CapturedLine> m_log;
    logging::LogCapture m_capture{m_log};
};

class GraphicsTest : public DataTreeTest {
protected:
    static constexpr int kSide = 64;

    void SetUp() override {
        DataTreeTest::SetUp();
        UseSanitizerSafeDriver();
        ASSERT_EQ(SDL_Init(SDL_INIT_VIDEO), 0) << SDL_GetError();
        SDL_GL_SetAttribute(SDL_GL_ALPHA_SIZE, 8);
        m_window = SDL_CreateWindow("rendering test", 0, 0, kSide, kSide,
                                    SDL_WINDOW_OPENGL | SDL_WINDOW_HIDDEN);
        ASSERT_NE(m_window, nullptr) << SDL_GetError();
        m_context = SDL_GL_CreateContext(m_window);
        ASSERT_NE(m_context, nullptr) << SDL_GetError();
        ASSERT_EQ(rendering::GraphicsContext::ContextCreated(), "");
        KeepDriverLoaded();
        glViewport(0, 0, kSide, kSide);
    }
    void TearDown() override {
        rendering::GraphicsContext::ContextLost();
        SDL_GL_DeleteContext(m_context);
        SDL_DestroyWindow(m_window);
        SDL_Quit();
        DataTreeTest::TearDown();
    }

    // The colour of a pixel of the back buffer, 0 to 255 a channel.
    static std::vector<int> PixelAt(int x, int y) {
        unsigned char rgba[4] = {};
        glReadPixels(x, y, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, rgba);
        return {rgba[0], rgba[1], rgba[2], rgba[3]};
    }

    SDL_Window* m_window = nullptr;
    SDL_GLContext m_context = nullptr;
};

}  // namespace test_rendering
