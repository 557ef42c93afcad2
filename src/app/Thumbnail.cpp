#include "app/Thumbnail.h"

#include <GL/glew.h>
#include <SDL.h>
#include <SDL_image.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "app/App.h"
#include "core/Subsystem.h"
#include "gui/GUI.h"
#include "logging/Log.h"
#include "rendering/GraphicsContext.h"
#include "rendering/Renderer.h"
#include "util/StringUtil.h"

namespace app {
namespace {

// The whole frame as the application draws it, with the interface moved out of sight, in
// the back buffer; the next frame draws over it.
void DrawSceneAlone() {
    App& app = App::Get();
    const gui::ComponentPtr overlay(app.GetAppGUI());
    const math::Vec2 screen = gui::GUI::Get().GetScreenSize();
    const math::Vec2 placed = overlay->GetPosition();
    overlay->SetPosition(screen.x * 4 + 1000, screen.y * 4 + 1000);

    gui::GUI::Get().DrawInScreenSpace(1, [&app]() {
        const math::Vec2 origin = app.GetAbsolutePosition();
        glTranslatef(origin.x, origin.y, 0);
        app.DrawComp();
    });

    overlay->SetPosition(placed.x, placed.y);
}

// The middle of the frame in the picture's proportions, averaged down to its size, top
// row first.
std::vector<uint8_t> ReadDownscaled() {
    GLint viewport[4] = {};
    glGetIntegerv(GL_VIEWPORT, viewport);
    const int width = std::max(1, static_cast<int>(viewport[2]));
    const int height = std::max(1, static_cast<int>(viewport[3]));
    std::vector<uint8_t> frame(static_cast<size_t>(width) * height * 4);
    GLint alignment = 4;
    glGetIntegerv(GL_PACK_ALIGNMENT, &alignment);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadBuffer(GL_BACK);
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, frame.data());
    glPixelStorei(GL_PACK_ALIGNMENT, alignment);

    const int w = Thumbnail::kWidth;
    const int h = Thumbnail::kHeight;
    const int cropWidth = std::min(width, height * w / h);
    const int cropHeight = std::min(height, width * h / w);
    const int left = (width - cropWidth) / 2;
    const int bottom = (height - cropHeight) / 2;
    std::vector<uint8_t> picture(static_cast<size_t>(w) * h * 4);
    for (int y = 0; y < h; ++y) {
        // GL's rows run upwards.
        const int y0 = bottom + (h - 1 - y) * cropHeight / h;
        const int y1 = std::max(y0 + 1, bottom + (h - y) * cropHeight / h);
        for (int x = 0; x < w; ++x) {
            const int x0 = left + x * cropWidth / w;
            const int x1 = std::max(x0 + 1, left + (x + 1) * cropWidth / w);
            unsigned sum[3] = {0, 0, 0};
            for (int sy = y0; sy < y1; ++sy) {
                const uint8_t* row = frame.data() + (static_cast<size_t>(sy) * width + x0) * 4;
                for (int sx = x0; sx < x1; ++sx, row += 4) {
                    sum[0] += row[0];
                    sum[1] += row[1];
                    sum[2] += row[2];
                }
            }
            const unsigned count = static_cast<unsigned>((x1 - x0) * (y1 - y0));
            uint8_t* out = picture.data() + (static_cast<size_t>(y) * w + x) * 4;
            for (int c = 0; c < 3; ++c) {
                out[c] = static_cast<uint8_t>(sum[c] / count);
            }
            // The frame's alpha is the water's business, not the picture's.
            out[3] = 255;
        }
    }
    return picture;
}

}  // namespace

util::String Thumbnail::PathFor(const util::String& scenePath) {
    util::String path = AppGUI::NormaliseScenePath(scenePath);
    path.resize(path.size() - 4);
    return path + ".png";
}

bool Thumbnail::SaveBeside(const util::String& scenePath) {
    if (!core::Subsystem::IsAlive() || !core::Subsystem::Get().HasWindow() ||
        !rendering::GraphicsContext::IsLoaded() || !App::IsAlive() || !gui::GUI::IsAlive()) {
        return false;
    }
    DrawSceneAlone();
    std::vector<uint8_t> picture = ReadDownscaled();
    const util::String path = PathFor(scenePath);
    SDL_Surface* surface = SDL_CreateRGBSurfaceWithFormatFrom(picture.data(), kWidth, kHeight, 32,
                                                              kWidth * 4, SDL_PIXELFORMAT_RGBA32);
    const bool saved = surface && IMG_SavePNG(surface, path.c_str()) == 0;
    if (!saved) {
        Log(logging::Warning, "Couldn't write the scene's picture " + path + ": " + IMG_GetError());
    }
    SDL_FreeSurface(surface);
    return saved;
}

}  // namespace app
