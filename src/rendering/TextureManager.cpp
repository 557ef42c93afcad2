#include "rendering/TextureManager.h"

#include <GL/glew.h>

#include <filesystem>

#include "logging/Log.h"
#include "rendering/ImageManager.h"
#include "util/FileSystem.h"
#include "util/Profiler.h"

namespace rendering {
namespace {

constexpr size_t kDefaultSide = 64;

Texture::ImageType PreloadType() {
    return Texture::ImageType{GL_RGBA, true, 0, 0, 1, 1, 1};
}

TextureHandle MakeDefault() {
    return TextureHandle(new util::Mentor<Texture>([]() {
        ImageRGBA32Ptr image(
            new ImageRGBA32(kDefaultSide, kDefaultSide, true, math::Pixel(255, 255, 255, 127)));
        return TexturePtr(TextureFromImage(image, PreloadType()));
    }));
}

// Files below a folder of the work directory, as paths from the work directory.
void ListTree(const util::String& work, const util::String& folder,
              std::vector<util::String>& out) {
    std::error_code error;
    std::filesystem::directory_iterator it(work + folder, error);
    if (error) {
        return;
    }
    std::vector<util::String> names;
    for (const std::filesystem::directory_entry& entry : it) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    for (const util::String& name : names) {
        if (name.starts_with(".")) {
            continue;
        }
        const util::String path = folder + name;
        if (std::filesystem::is_directory(work + path, error)) {
            ListTree(work, path + "/", out);
        } else {
            out.push_back(path);
        }
    }
}

void ListMatching(const util::String& work, const util::String& folder, const util::String& pattern,
                  std::vector<util::String>& out) {
    if (!util::FileSystem::Get().Exists(work + folder)) {
        return;
    }
    for (const util::String& name : util::FileSystem::Get().ListFiles(work + folder, pattern)) {
        out.push_back(folder + name);
    }
}

}  // namespace

uint32_t TextureManager::KeyHasher::operator()(const Key& key) const {
    uint32_t h = 0;
    for (char c : key.path) {
        h = h * 0x1003Fu + static_cast<unsigned char>(c);
    }
    return h ^ (static_cast<uint32_t>(key.clampT) << 2) ^
           (static_cast<uint32_t>(key.minLinear) << 4) ^ static_cast<uint32_t>(key.clampS) ^
           (static_cast<uint32_t>(key.magLinear) << 6) ^
           (static_cast<uint32_t>(key.mipLinear) << 8) ^ (key.mipmaps ? 0x1337u : 0u) ^ key.format;
}

TextureManager::TextureManager() {
    util::Mentor<Texture>::SetDefault(MakeDefault());
}

TextureManager::~TextureManager() {
    util::Mentor<Texture>::SetDefault(TextureHandle());
}

TextureHandle TextureManager::Load(const util::String& path, unsigned int format, bool mipmaps,
                                   int clampS, int clampT, int minLinear, int magLinear,
                                   int mipLinear) {
    VORRA_PROFILE("TextureManager::Load");
    const Key key{path, format, mipmaps, clampS, clampT, minLinear, magLinear, mipLinear};
    TextureHandle& handle = m_textures[key];
    if (!handle) {
        const Texture::ImageType type{format,    mipmaps,   clampS,   clampT,
                                      minLinear, magLinear, mipLinear};
        handle = TextureHandle(new util::Mentor<Texture>([path, type]() {
            const ImgPtr image = ImageManager::Get().Get(path);
            if (!image) {
                return TexturePtr();
            }
            return TexturePtr(new Texture(image, type));
        }));
    }
    handle->Load();
    return handle;
}

TextureHandle TextureManager::Load(const util::String& path, const Texture::ImageType& type) {
    return Load(path, type.format, type.mipmaps, type.clampS, type.clampT, type.minLinear,
                type.magLinear, type.mipLinear);
}

bool TextureManager::IsDefault(const TextureHandle& handle) {
    const TextureHandle& fallback = util::Mentor<Texture>::GetDefault();
    return handle && fallback && handle != fallback && handle->Get() &&
           handle->Get() == fallback->Get();
}

std::vector<util::String> TextureManager::Preload() {
    const util::String work = util::FileSystem::Get().GetWorkDirectory();
    std::vector<util::String> files;
    ListTree(work, util::FileSystem::GetTexturesFolder(), files);
    ListMatching(work, util::FileSystem::GetLanguageFolder(), "*.png", files);
    ListMatching(work, util::FileSystem::GetFontsFolder(), "*.raw", files);
    std::vector<util::String> failed;
    for (const util::String& file : files) {
        if (IsDefault(Load(file, PreloadType()))) {
            failed.push_back(file);
        }
    }
    return failed;
}

}  // namespace rendering
