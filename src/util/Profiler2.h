#pragma once

#include <cstddef>

#include "util/Pointee.h"
#include "util/Singleton.h"
#include "util/String.h"

namespace util {

// A named statistic: how often something ran and how long it took. Records are meant to
// live in statics or in long-lived objects; each one is a row of Profiler2 for as long
// as it exists, whether Profiler2 exists or not. Adding a time costs a few arithmetic
// operations and no allocation.
class ProfileRecord {
public:
    // The name must outlive the record; a string literal is the usual choice.
    explicit ProfileRecord(const char* name);
    ~ProfileRecord();
    ProfileRecord(const ProfileRecord&) = delete;
    ProfileRecord& operator=(const ProfileRecord&) = delete;

    void Add(double seconds) {
        ++m_count;
        m_sum += seconds;
        if (seconds > m_spike) {
            m_spike = seconds;
        }
    }
    void ResetCounters() {
        m_count = 0;
        m_sum = 0;
        m_spike = 0;
    }

    const char* GetName() const { return m_name; }
    long GetCount() const { return m_count; }
    double GetSum() const { return m_sum; }
    double GetSpike() const { return m_spike; }

private:
    const char* m_name;
    long m_count = 0;
    double m_sum = 0;
    double m_spike = 0;
};

// Times one block into a record.
class ProfileRecordTimer {
public:
    explicit ProfileRecordTimer(ProfileRecord& record);
    ~ProfileRecordTimer();
    ProfileRecordTimer(const ProfileRecordTimer&) = delete;
    ProfileRecordTimer& operator=(const ProfileRecordTimer&) = delete;

private:
    ProfileRecord& m_record;
    double m_start;
};

// The flat profiler: one row for each ProfileRecord, no tree. Where Profiler answers
// "where did the frame go", this one watches single routines that are too hot or too
// rare for a scope of their own.
class Profiler2 : public Pointee, public Singleton<Profiler2> {
public:
    Profiler2();
    ~Profiler2() override;

    // Once a frame, with the frame's length in seconds. Makes a report when the interval
    // has passed or one was asked for.
    void Update(double dt);

    const String& GetOutput() const { return m_output; }
    bool IsOutputOn() const { return m_outputOn; }
    // Off puts "Unactive" in the output; on starts the counts afresh.
    void SetOutputOn(bool on);
    void RequestReport() { m_reportNow = true; }
    void SetReportInterval(double seconds) { m_interval = seconds; }
    double GetReportInterval() const { return m_interval; }
    // Zeroes every record and the time since the last report.
    void ResetCounters();

    // The records alive now, one row each.
    size_t GetRecordCount() const;

private:
    void MakeReport();

    String m_output;
    bool m_outputOn = false;
    bool m_reportNow = false;
    double m_interval = 1.0;
    double m_elapsed = 0;
    long m_frames = 0;
};

}  // namespace util
