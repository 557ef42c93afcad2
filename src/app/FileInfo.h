#pragma once

#include "script/Attributes.h"
#include "script/Reflected.h"
#include "util/Singleton.h"
#include "util/String.h"

namespace app {

// Title, author and description as a scene or its file carries them: what a clear empties
// and a restore or a failed load puts back.
struct Descriptions {
    using Text = script::AttribPtr<util::String>;
    util::String title;
    util::String author;
    util::String description;
    void Take(const Text& title, const Text& author, const Text& description);
    void Put(Text& title, Text& author, Text& description) const;
};

// What is known of the scene file that is loaded: its title, author and description, and
// the format version of the data being read, which readers consult for older layouts.
class FileInfo : public script::Reflected, public util::Singleton<FileInfo> {
public:
    // The format that is written now.
    static constexpr int kCurrentVersion = 2;

    FileInfo();
    FileInfo(const FileInfo&) = delete;
    FileInfo& operator=(const FileInfo&) = delete;

    const util::String& GetFileName() const { return m_fileName; }
    void SetFileName(const util::String& name) { m_fileName = name; }

    script::AttribPtr<util::String> title;
    script::AttribPtr<util::String> author;
    script::AttribPtr<util::String> description;
    script::AttribPtr<int> version;

private:
    util::String m_fileName = "unnamed";
};

}  // namespace app
