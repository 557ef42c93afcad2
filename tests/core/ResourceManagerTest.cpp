// Graphics resources through the life of the window: a new window (the script's
// recreateWindow, a resize, a change of anti-aliasing) drops every texture and program and
// builds them again, and the next frame draws as before. The Resources object's commands
// and settings act at once.

#include "core/ResourceManager.h"

#include <GL/glew.h>
#include <SDL.h>
#include <gtest/gtest.h>

#include <limits>

#include "../rendering/FullScreenQuad.h"
#include "WindowFixture.h"
#include "core/Subsystem.h"
#include "rendering/ShaderManager.h"
#include "rendering/TextureManager.h"
#include "script/Parser.h"
#include "util/FileSystem.h"

namespace {

class ResourceManagerTest : public test_core::WindowTest {
protected:
    void SetUp() override {
        WindowTest::SetUp();
        script::AddToRoot(m_subsystem);
        script::AddToRoot(&core::ResourceManager::Get());
    }

    util::String Eval(const util::String& text) {
        const util::String result = script::Parser::Get().ExecuteToString(text);
        EXPECT_TRUE(m_subsystem->RunFrame());
        return result;
    }

    // The texture over the whole window, and the colour that lands in its middle.
    static std::vector<int> DrawAndRead(const rendering::TextureHandle& texture) {
        glViewport(0, 0, 320, 240);
        glClearColor(0, 0, 0, 1);
        glClear(GL_COLOR_BUFFER_BIT);
        test_rendering::DrawFullScreen(*texture->Get());
        unsigned char rgba[4] = {};
        glReadPixels(160, 120, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, rgba);
        return {rgba[0], rgba[1], rgba[2]};
    }
};

TEST_F(ResourceManagerTest, ANewWindowRebuildsEveryTextureAndProgram) {
    Eval("Resources.shaders = true");
    const rendering::TextureHandle hinge = rendering::TextureManager::Get().Load("hinge", GL_RGBA);
    const rendering::ShaderHandle water = rendering::ShaderManager::Get().Load("water");
    ASSERT_FALSE(rendering::TextureManager::IsDefault(hinge));
    ASSERT_TRUE(rendering::ShaderManager::IsUsable(water));
    const std::vector<int> before = DrawAndRead(hinge);

    // The old objects are held, so that a new one cannot take their place in memory.
    rendering::TexturePtr oldTexture = hinge->Get();
    const rendering::ShaderPtr oldProgram = water->Get();
    // A change of anti-aliasing needs a context of its own.
    Eval("System.antiAlias = 4");
    Eval("System.recreateWindow");
    ASSERT_NE(hinge->Get(), oldTexture);
    ASSERT_NE(water->Get(), oldProgram);
    EXPECT_NE(hinge->Get()->GetName(), 0u);
    EXPECT_TRUE(rendering::ShaderManager::IsUsable(water));
    EXPECT_EQ(DrawAndRead(hinge), before);

    // A resize keeps the context, and still goes through the same rebuild.
    oldTexture = hinge->Get();
    PushResize(400, 300);
    ASSERT_TRUE(m_subsystem->RunFrame());
    ASSERT_EQ(m_subsystem->GetCurrentWindowParams().resolution, math::Vec2i(400, 300));
    EXPECT_NE(hinge->Get(), oldTexture);
    EXPECT_EQ(DrawAndRead(hinge), before);
}

TEST_F(ResourceManagerTest, ReloadsAreIdempotentAndUnloadingFreesTheCard) {
    Eval("Resources.shaders = true");
    const rendering::TextureHandle hinge = rendering::TextureManager::Get().Load("hinge", GL_RGBA);
    rendering::TextureManager::Get().Load("ring", GL_RGBA, false);
    const rendering::ShaderHandle circle = rendering::ShaderManager::Get().Load("circle");

    Eval("Resources.reloadAll");
    const util::String once = Eval("Resources.vramUsage");
    const std::vector<int> drawnOnce = DrawAndRead(hinge);
    Eval("Resources.reloadAll");
    EXPECT_EQ(Eval("Resources.vramUsage"), once);
    EXPECT_EQ(DrawAndRead(hinge), drawnOnce);
    EXPECT_TRUE(rendering::ShaderManager::IsUsable(circle));
    // The two textures, the default, and the GUI's cursor and two fonts: 128 by 128
    // mip-mapped, 128 by 128 plain, 64 by 64, 32 by 32 and twice 512 by 512 mip-mapped.
    EXPECT_EQ(std::stoul(once), 128u * 128 * 4 * 4 / 3 + 128u * 128 * 4 + 64u * 64 * 4 * 4 / 3 +
                                    32u * 32 * 4 * 4 / 3 + 2 * (512u * 512 * 4 * 4 / 3));

    Eval("Resources.unloadAll");
    EXPECT_EQ(Eval("Resources.vramUsage"), "0");
    EXPECT_FALSE(hinge->IsLoaded());
    Eval("Resources.loadAll");
    EXPECT_TRUE(hinge->IsLoaded());
    EXPECT_EQ(DrawAndRead(hinge), drawnOnce);

    Eval("Resources.reloadTextures");
    EXPECT_EQ(DrawAndRead(hinge), drawnOnce);
}

TEST_F(ResourceManagerTest, ShadersSwitchAtTheConsoleWithoutARestart) {
    const rendering::ShaderHandle water = rendering::ShaderManager::Get().Load("water");
    EXPECT_FALSE(rendering::ShaderManager::IsUsable(water));
    Eval("Resources.shaders = true");
    EXPECT_TRUE(rendering::ShaderManager::IsUsable(water));
    Eval("Resources.shaders = false");
    EXPECT_FALSE(rendering::ShaderManager::IsUsable(water));
    ASSERT_TRUE(water->Get());
    EXPECT_EQ(water->Get()->GetHandle(), 0u);
}

}  // namespace
