#include "util/Profiler2.h"

#include <algorithm>
#include <cstdio>
#include <vector>

#include "util/Clock.h"
#include "util/StringUtil.h"

namespace util {
namespace {

// Every live record. Kept apart from the profiler and never destroyed, because records
// live in statics and in members of other singletons, whose order of destruction at exit
// nobody controls.
std::vector<ProfileRecord*>& Records() {
    static std::vector<ProfileRecord*>* const s_records = new std::vector<ProfileRecord*>();
    return *s_records;
}

}  // namespace

ProfileRecord::ProfileRecord(const char* name) : m_name(name) {
    Records().push_back(this);
}

ProfileRecord::~ProfileRecord() {
    std::vector<ProfileRecord*>& records = Records();
    records.erase(std::remove(records.begin(), records.end(), this), records.end());
}

ProfileRecordTimer::ProfileRecordTimer(ProfileRecord& record)
    : m_record(record), m_start(Clock::PreciseSeconds()) {}

ProfileRecordTimer::~ProfileRecordTimer() {
    m_record.Add(Clock::PreciseSeconds() - m_start);
}

Profiler2::Profiler2() : m_output("No output generated yet.") {}

Profiler2::~Profiler2() = default;

size_t Profiler2::GetRecordCount() const {
    return Records().size();
}

void Profiler2::SetOutputOn(bool on) {
    if (on) {
        ResetCounters();
    } else {
        m_output = "Unactive";
    }
    m_outputOn = on;
}

void Profiler2::ResetCounters() {
    for (ProfileRecord* record : Records()) {
        record->ResetCounters();
    }
    m_elapsed = 0;
    m_frames = 0;
}

void Profiler2::Update(double dt) {
    if (!m_outputOn) {
        return;
    }
    m_elapsed += dt;
    ++m_frames;
    if (m_elapsed >= m_interval || m_reportNow) {
        MakeReport();
    }
}

void Profiler2::MakeReport() {
    m_reportNow = false;
    const double elapsed = m_elapsed;
    const double frames = static_cast<double>(m_frames);

    String out;
    AppendFormatted(out, "Statistics over %.2f s, %ld frames\n\n", elapsed, m_frames);
    AppendFormatted(out, "%-24s%s%s%s%s%s%s\n", " Name", "   %total", "      calls",
                    "   total time", "  call-spike", "   µs/call", " calls/frame");
    for (const ProfileRecord* record : Records()) {
        const double count = static_cast<double>(record->GetCount());
        const double sum = record->GetSum();
        const double share = elapsed > 0 ? 100.0 * sum / elapsed : 0.0;
        const double perCall = count > 0 ? 1e6 * sum / count : 0.0;
        const double perFrame = frames > 0 ? count / frames : 0.0;
        AppendFormatted(out,
                        "%-24.24s  %5.1f %%     %6.0f     %5.0f ms    %5.0f ms     %5.0f   %7.1f\n",
                        record->GetName(), share, count, 1e3 * sum, 1e3 * record->GetSpike(),
                        perCall, perFrame);
    }
    m_output = out;
    ResetCounters();
}

}  // namespace util
