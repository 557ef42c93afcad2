#pragma once

#include <set>

#include "rendering/AbstractImage.h"
#include "util/HashMap.h"
#include "util/Singleton.h"

namespace rendering {

// LoadFile inside a handler for everything: a failure is logged and gives null.
ImgPtr TryLoad(const util::String& path);

// Images by the names they are asked for. A name may leave out the folder ("textures/",
// "data/") and the extension; every such alias finds the one loaded copy.
class ImageManager : public util::Pointee, public util::Singleton<ImageManager> {
public:
    using util::Singleton<ImageManager>::Get;
    // The image, loaded at the first request; null (and logged) if there is none.
    ImgPtr Get(const util::String& path);
    void Add(const util::String& path, const ImgPtr& image);
    // Reads every image asked for so far from the disk again.
    void Reload();
    // Forgets all images, so that the next requests read the disk.
    void Flush();

    // The extensions tried, in order, after a name without one.
    static const char* const kExtensions[4];

private:
    // The file that a name stands for, or empty.
    util::String FindFile(const util::String& path) const;
    void Enter(const util::String& path, const ImgPtr& image);

    util::HashMap<util::String, ImgPtr> m_images;
    std::set<util::String> m_paths;
};

}  // namespace rendering
