#include "rendering/ImageManager.h"

#include <filesystem>

#include "logging/Log.h"
#include "rendering/ImageRGBA32.h"
#include "util/Exception.h"
#include "util/FileSystem.h"

namespace rendering {
namespace {

bool IsFile(const util::String& path) {
    std::error_code error;
    return std::filesystem::is_regular_file(path, error);
}

util::String CutPrefix(const util::String& text, const util::String& prefix) {
    return text.starts_with(prefix) ? text.substr(prefix.size()) : text;
}

}  // namespace

const char* const ImageManager::kExtensions[4] = {"png", "tga", "bmp", "jpg"};

ImgPtr TryLoad(const util::String& path) {
    try {
        return ImgPtr(ImageRGBA32::LoadFile(path));
    } catch (const Exception& e) {
        logging::LogCaughtException(e, VORRA_LOCATION);
        Log(logging::Warning, e.what());
    } catch (const std::exception& e) {
        logging::LogCaughtException(e, VORRA_LOCATION);
        Log(logging::Warning,
            "Unknown exception caught while trying to load image \"" + path + "\"");
    } catch (...) {
        logging::LogCaughtUnknownException(VORRA_LOCATION);
        Log(logging::Warning,
            "Unknown exception caught while trying to load image \"" + path + "\"");
    }
    return ImgPtr();
}

util::String ImageManager::FindFile(const util::String& path) const {
    const util::String work = util::FileSystem::Get().GetWorkDirectory();
    const util::String folders[] = {"", work, work + util::FileSystem::GetTexturesFolder(),
                                    work + util::FileSystem::GetDataFolder()};
    for (const util::String& folder : folders) {
        const util::String candidate = folder + path;
        if (IsFile(candidate)) {
            return candidate;
        }
        for (const char* extension : kExtensions) {
            if (IsFile(candidate + "." + extension)) {
                return candidate + "." + extension;
            }
        }
    }
    return util::String();
}

ImgPtr ImageManager::Get(const util::String& path) {
    const auto hit = m_images.find(path);
    if (hit != m_images.end()) {
        return hit->second;
    }
    const util::String file = FindFile(path);
    if (file.empty()) {
        Log(logging::Warning, "Failed to find image \"" + path + "\"");
        return ImgPtr();
    }
    const ImgPtr image = TryLoad(file);
    if (!image) {
        Log(logging::Warning, "Failed to load image \"" + path + "\"");
        return ImgPtr();
    }
    m_paths.insert(file);
    Enter(file, image);
    return image;
}

void ImageManager::Add(const util::String& path, const ImgPtr& image) {
    m_images[path] = image;
}

void ImageManager::Enter(const util::String& file, const ImgPtr& image) {
    // Names are kept as the work directory sees them, so that "textures/x.png", "x.png"
    // and "x" all find the same picture.
    const util::String path = CutPrefix(file, util::FileSystem::Get().GetWorkDirectory());
    m_images[path] = image;
    if (path.size() < 4 || path[path.size() - 4] != '.') {
        Log(logging::Warning, "Bad image path: \"" + path + "\"");
        return;
    }
    const util::String stem = path.substr(0, path.size() - 4);
    for (const util::String& name : {path, stem}) {
        m_images[name] = image;
        m_images[CutPrefix(name, util::FileSystem::GetTexturesFolder())] = image;
        m_images[CutPrefix(name, util::FileSystem::GetDataFolder())] = image;
    }
}

void ImageManager::Reload() {
    m_images.clear();
    for (const util::String& file : m_paths) {
        if (const ImgPtr image = TryLoad(file)) {
            Enter(file, image);
        }
    }
}

void ImageManager::Flush() {
    m_images.clear();
}

}  // namespace rendering
