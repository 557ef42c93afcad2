#pragma once

#include <vector>

#include "util/Singleton.h"
#include "util/String.h"

namespace util {

// Knows where the program's files lie, and is the one place that lists, renames, removes,
// reads and writes them. The work directory is the folder of the executable.
class FileSystem : public Pointee, public Singleton<FileSystem> {
public:
    FileSystem();

    // Finds the work directory from the program's own path, printing what it finds.
    void SetArgv0(const String& argv0);
    // Always ends with a slash.
    const String& GetWorkDirectory() const { return m_workDirectory; }
    // Points the program at another data tree: for tests and tools that run elsewhere.
    void SetWorkDirectory(const String& folder);
    // The work directory last found, also after the file system was released; empty (the
    // current directory) before one was found.
    static String WorkDirectoryOrCurrent();

    static const char* GetDataFolder() { return "data/"; }
    static const char* GetFontsFolder() { return "fonts/"; }
    static const char* GetLanguageFolder() { return "language/"; }
    static const char* GetShadersFolder() { return "shaders/"; }
    static const char* GetTexturesFolder() { return "textures/"; }
    static const char* GetScenesFolder() { return "scenes/"; }
    static const char* GetVorraletsFolder() { return "vorralets/"; }

    // Names of the files in a folder that match a wildcard ('*' and '?'), sorted. A
    // folder that does not exist throws the directory iterator's error.
    std::vector<String> ListFiles(const String& folder, const String& pattern) const;
    bool Exists(const String& path) const;
    // Returns whether a file was removed.
    bool Remove(const String& path) const;
    // Never throws: a failure, also onto an existing file, is logged and the program goes on.
    bool Rename(const String& from, const String& to) const;
    // The whole file in binary mode.
    String ReadWholeFile(const String& path) const;
    // The whole file in text mode, read 1024 bytes at a time.
    String ReadTextFile(const String& path) const;
    // Writes the text as the whole file, in binary mode. Never throws: a failure is logged
    // and answered false.
    bool WriteTextFile(const String& path, const String& text) const;
    // The same, but the text goes to a file beside the old one first and takes its place in
    // one rename: no half-written file ever stands where a good one stood.
    bool ReplaceTextFile(const String& path, const String& text) const;

private:
    String m_workDirectory;
};

// True if the text matches the wildcard pattern of '*' (any run) and '?' (any one byte).
bool MatchesWildcard(const String& text, const String& pattern);

}  // namespace util
