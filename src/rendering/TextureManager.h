#pragma once

#include <vector>

#include "rendering/Texture.h"
#include "util/HashMap.h"
#include "util/Mentor.h"
#include "util/Singleton.h"

namespace rendering {

using TextureHandle = util::SharedPtr<util::Mentor<Texture>>;

// Textures by file and settings. Each is held by a mentor, which rebuilds it when the
// graphics context comes back; a file that gives no picture gets the class-wide default,
// a half-transparent white square.
class TextureManager : public util::Pointee, public util::Singleton<TextureManager> {
public:
    struct Key {
        util::String path;
        unsigned int format;
        bool mipmaps;
        int clampS, clampT, minLinear, magLinear, mipLinear;

        bool operator==(const Key&) const = default;
    };
    struct KeyHasher {
        uint32_t operator()(const Key& key) const;
    };

    TextureManager();
    ~TextureManager() override;

    // The same file with other settings is a texture of its own.
    TextureHandle Load(const util::String& path, unsigned int format, bool mipmaps = true,
                       int clampS = 0, int clampT = 0, int minLinear = 1, int magLinear = 1,
                       int mipLinear = 1);
    TextureHandle Load(const util::String& path, const Texture::ImageType& type);

    // Loads every texture of the data tree, so that the first frames need no disk. Gives
    // the files that fell back on the default.
    std::vector<util::String> Preload();

    // True if the handle stands in with the default for a file that gave no picture.
    static bool IsDefault(const TextureHandle& handle);

private:
    util::HashMap<Key, TextureHandle, KeyHasher> m_textures;
};

}  // namespace rendering
