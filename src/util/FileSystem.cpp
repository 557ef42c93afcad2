#include "util/FileSystem.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "logging/Log.h"
#include "util/FILEWrapper.h"

namespace util {
namespace fs = std::filesystem;

namespace {

String ProgramPath() {
    std::error_code error;
    const fs::path path = fs::read_symlink("/proc/self/exe", error);
    return error ? String() : path.string();
}

// The work directory outlives the file system object: lines logged after everything was
// released still find "Unlogged.txt" there.
String& LastWorkDirectory() {
    static String* last = new String();
    return *last;
}

String FolderOf(const String& path) {
    const size_t slash = path.find_last_of('/');
    return slash == String::npos ? String() : path.substr(0, slash + 1);
}

}  // namespace

FileSystem::FileSystem() = default;

void FileSystem::SetArgv0(const String& argv0) {
    std::cout << "argv0 =    \"" << argv0 << "\"" << std::endl;
    const String name = argv0.substr(argv0.find_last_of('/') + 1);
    std::cout << "exe name = " << name << std::endl;

    // The system's own record of the program beats argv[0], which may be a bare name
    // found through PATH; without /proc the folder of argv[0] is the best guess.
    String program = ProgramPath();
    if (program.empty()) {
        std::error_code error;
        const fs::path absolute = fs::absolute(argv0, error);
        program = error ? argv0 : absolute.string();
    }
    std::replace(program.begin(), program.end(), '\\', '/');
    m_workDirectory = FolderOf(program);
    if (m_workDirectory.empty()) {
        m_workDirectory = "./";
    }
    LastWorkDirectory() = m_workDirectory;
    std::cout << "workdir =  " << m_workDirectory << std::endl;
}

void FileSystem::SetWorkDirectory(const String& folder) {
    m_workDirectory = folder.empty() || folder.back() == '/' ? folder : folder + "/";
    LastWorkDirectory() = m_workDirectory;
}

String FileSystem::WorkDirectoryOrCurrent() {
    return LastWorkDirectory();
}

bool MatchesWildcard(const String& text, const String& pattern) {
    // Iterative matcher with back-tracking to the last star.
    size_t t = 0, p = 0, star = String::npos, mark = 0;
    while (t < text.size()) {
        if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == text[t])) {
            ++t;
            ++p;
        } else if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            mark = t;
        } else if (star != String::npos) {
            p = star + 1;
            t = ++mark;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*') {
        ++p;
    }
    return p == pattern.size();
}

std::vector<String> FileSystem::ListFiles(const String& folder, const String& pattern) const {
    std::vector<String> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        const String name = entry.path().filename().string();
        if (entry.is_regular_file() && MatchesWildcard(name, pattern)) {
            names.push_back(name);
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

bool FileSystem::Exists(const String& path) const {
    std::error_code error;
    return fs::exists(path, error);
}

bool FileSystem::Remove(const String& path) const {
    std::error_code error;
    return fs::remove(path, error);
}

bool FileSystem::Rename(const String& from, const String& to) const {
    std::error_code error;
    // Renaming never replaces a file silently: the old file may be the user's work.
    if (fs::exists(to, error)) {
        error = std::make_error_code(std::errc::file_exists);
    } else {
        fs::rename(from, to, error);
    }
    if (error) {
        Log(logging::Error,
            "Failed to rename \"" + from + "\" to \"" + to + "\": " + error.message());
        return false;
    }
    return true;
}

String FileSystem::ReadWholeFile(const String& path) const {
    FILEWrapper file(path, "rb");
    file.Seek(0, SEEK_END);
    const long size = file.Tell();
    file.Seek(0, SEEK_SET);
    String content(static_cast<size_t>(std::max(0L, size)), '\0');
    if (!content.empty()) {
        file.Read(content.data(), content.size());
    }
    return content;
}

String FileSystem::ReadTextFile(const String& path) const {
    FILEWrapper file(path, "r");
    String content;
    char buffer[1024];
    size_t got = 0;
    while ((got = file.ReadSome(buffer, sizeof buffer)) > 0) {
        content.append(buffer, got);
    }
    return content;
}

bool FileSystem::WriteTextFile(const String& path, const String& text) const {
    std::ofstream file(path, std::ios::out | std::ios::trunc | std::ios::binary);
    file << text;
    file.flush();
    if (!file) {
        Log(logging::Error, "Couldn't write " + path);
        return false;
    }
    return true;
}

bool FileSystem::ReplaceTextFile(const String& path, const String& text) const {
    const String temporary = path + ".saving";
    if (!WriteTextFile(temporary, text)) {
        Remove(temporary);
        return false;
    }
    std::error_code error;
    fs::rename(temporary, path, error);
    if (error) {
        Log(logging::Error, "Couldn't write " + path + ": " + error.message());
        Remove(temporary);
        return false;
    }
    return true;
}

}  // namespace util
