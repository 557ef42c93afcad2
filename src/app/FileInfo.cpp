#include "app/FileInfo.h"

namespace app {

FileInfo::FileInfo() : script::Reflected("FileInfo") {
    AddAttrib(title, "title", util::String());
    AddAttrib(author, "author", util::String());
    AddAttrib(description, "description", util::String());
    AddAttrib(version, "version", 0);
}

}  // namespace app
