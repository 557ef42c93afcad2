#include "app/FileInfo.h"

namespace app {

FileInfo::FileInfo() : script::Reflected("FileInfo") {
    AddAttrib(title, "title", util::String());
    AddAttrib(author, "author", util::String());
    AddAttrib(description, "description", util::String());
    AddAttrib(version, "version", 0);
}

void Descriptions::Take(const Text& titleIn, const Text& authorIn, const Text& descriptionIn) {
    title = titleIn->Get();
    author = authorIn->Get();
    description = descriptionIn->Get();
}

void Descriptions::Put(Text& titleOut, Text& authorOut, Text& descriptionOut) const {
    titleOut->SetNative(title);
    authorOut->SetNative(author);
    descriptionOut->SetNative(description);
}

}  // namespace app
