#include "gui/Font.h"

#include <GL/glew.h>

#include <fstream>
#include <iterator>

#include "logging/Log.h"
#include "util/Exception.h"
#include "util/FileSystem.h"

namespace gui {
namespace {

constexpr size_t kCharacters = 256;

util::String FontPath(const util::String& name, const char* extension) {
    return util::String(util::FileSystem::GetFontsFolder()) + name + extension;
}

}  // namespace

Font::Font(const util::String& name) : m_name(name) {
    m_widths.fill(1.0f);
    m_texture = rendering::TextureManager::Get().Load(FontPath(name, ".raw"), GL_RGBA);
    try {
        LoadWidths(util::FileSystem::Get().GetWorkDirectory() + FontPath(name, ".dat"));
    } catch (const std::exception& e) {
        logging::LogCaughtException(e, VORRA_LOCATION);
        Log(logging::Warning, util::String("Failed to load font widths: ") + e.what());
    }
}

size_t Font::GetTextureWidth() const {
    // The stand-in for a missing picture says nothing of the cells: the widths then keep
    // the sixteenth of a 256-pixel picture that the generator's smallest grid has.
    if (rendering::TextureManager::IsDefault(m_texture) || !m_texture->Get()) {
        return 16 * 16;
    }
    return m_texture->Get()->GetWidth();
}

void Font::LoadWidths(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        VORRA_THROW(FileReadException, "Could not open \"" + path + "\".");
    }
    const std::string bytes((std::istreambuf_iterator<char>(file)),
                            std::istreambuf_iterator<char>());
    if (bytes.size() != kCharacters && bytes.size() != 2 * kCharacters) {
        VORRA_THROW(BadCoderException,
                    "Bad widths file, must be either 256 or 512 bytes of raw little endian data");
    }
    const size_t bytesPerWidth = bytes.size() / kCharacters;
    const float cellsPerPixel = 16.0f / static_cast<float>(GetTextureWidth());
    const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
    for (size_t c = 0; c < kCharacters; ++c) {
        const unsigned int pixels =
            bytesPerWidth == 1 ? data[c] : data[2 * c] + 256u * data[2 * c + 1];
        m_widths[c] = static_cast<float>(pixels) * cellsPerPixel;
    }
}

FontHandle Font::Load(const util::String& name) {
    FontHandle handle(new util::Mentor<Font>([name]() { return FontPtr(new Font(name)); }));
    handle->Load();
    return handle;
}

}  // namespace gui
