#include "logging/FileLogger.h"

#include <ctime>
#include <filesystem>

#include "util/Version.h"

namespace logging {

util::String FormatLocalTime(const char* format) {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char buffer[256];
    const size_t length = std::strftime(buffer, sizeof buffer, format, &local);
    return util::String(buffer, length);
}

FileLogger::FileLogger(unsigned mask, const util::String& path, bool append) : ILogger(mask) {
    std::error_code error;
    if (append && std::filesystem::exists(path, error)) {
        m_file.open(path, std::ios::out | std::ios::app);
        m_file << "\n\n";
    } else {
        m_file.open(path, std::ios::out | std::ios::trunc);
    }
    const util::String rule(29, '-');
    m_file << rule << "\n"
           << "  " << util::GetVersionString() << "\n"
           << "  " << FormatLocalTime("%B %d %Y, %X") << "\n"
           << rule << "\n";
    m_file.flush();
}

void FileLogger::Log(const util::String& text) {
    m_file << FormatLocalTime("%H:%M:%S: ") << text << "\n";
    m_file.flush();
}

}  // namespace logging
