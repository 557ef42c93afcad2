#include "rendering/Renderer.h"

#include <GL/glew.h>

#include <cstdio>
#include <ctime>
#include <filesystem>
#include <vector>

#include "logging/Log.h"
#include "rendering/GraphicsContext.h"

namespace rendering {
namespace {

bool Exists(const util::String& path) {
    std::error_code error;
    return std::filesystem::exists(path, error);
}

void PutLittleEndian16(unsigned char* out, int value) {
    out[0] = static_cast<unsigned char>(value & 0xFF);
    out[1] = static_cast<unsigned char>((value >> 8) & 0xFF);
}

}  // namespace

void Renderer::SetColor(const math::Colour& color) {
    if (m_known && color == m_color) {
        return;
    }
    m_color = color;
    m_known = true;
    if (GraphicsContext::IsLoaded()) {
        glColor4fv(&m_color.x);
    }
}

void Renderer::MultiplyColor(const math::Colour& color) {
    if (color == math::Colour(1, 1, 1, 1)) {
        return;
    }
    SetColor(math::Colour(m_color.x * color.x, m_color.y * color.y, m_color.z * color.z,
                          m_color.w * color.w));
}

util::String Renderer::ScreenshotName(const util::String& basePath) {
    char date[16] = {};
    const std::time_t now = std::time(nullptr);
    std::strftime(date, sizeof(date), "%y%m%d", std::localtime(&now));
    const util::String stem = basePath + "_" + date + "_";
    for (int n = 0; n < 10000; ++n) {
        char number[8];
        std::snprintf(number, sizeof(number), "%04d", n);
        const util::String name = stem + number + ".tga";
        if (!Exists(name)) {
            return name;
        }
    }
    return "to_many_screenshots.tga";
}

util::String Renderer::SaveScreenshot(const util::String& basePath) {
    if (!GraphicsContext::IsLoaded()) {
        Log(logging::Warning, "No window to take a screenshot of");
        return util::String();
    }
    // The folder of the screenshots is made at the first one.
    const std::filesystem::path folder = std::filesystem::path(basePath).parent_path();
    std::error_code error;
    if (!folder.empty()) {
        std::filesystem::create_directories(folder, error);
    }
    const util::String name = ScreenshotName(basePath);

    GLint viewport[4] = {};
    glGetIntegerv(GL_VIEWPORT, viewport);
    const int width = viewport[2];
    const int height = viewport[3];
    // Kept between shots: a full-screen picture is megabytes.
    static std::vector<unsigned char> pixels;
    pixels.resize(static_cast<size_t>(width) * height * 3);
    GLint packAlignment = 4;
    glGetIntegerv(GL_PACK_ALIGNMENT, &packAlignment);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, width, height, GL_BGR, GL_UNSIGNED_BYTE, pixels.data());
    glPixelStorei(GL_PACK_ALIGNMENT, packAlignment);

    unsigned char header[18] = {};
    header[2] = 2;  // uncompressed true colour
    PutLittleEndian16(header + 12, width);
    PutLittleEndian16(header + 14, height);
    header[16] = 24;
    std::FILE* file = std::fopen(name.c_str(), "wb");
    if (!file) {
        Log(logging::Error, "Could not write the screenshot \"" + name + "\"");
        return util::String();
    }
    const bool written = std::fwrite(header, 1, sizeof(header), file) == sizeof(header) &&
                         std::fwrite(pixels.data(), 1, pixels.size(), file) == pixels.size();
    const bool closed = std::fclose(file) == 0;
    if (!written || !closed) {
        Log(logging::Error, "Could not write the screenshot \"" + name + "\"");
        return util::String();
    }
    Log(logging::Info, "Screenshot saved to \"" + name + "\"");
    return name;
}

}  // namespace rendering
