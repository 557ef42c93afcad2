#pragma once

#include <cstddef>
#include <vector>

#include "util/Pointee.h"
#include "util/Profiler2.h"
#include "util/Singleton.h"
#include "util/String.h"

namespace util {

// The frame profiler: a tree of named scopes, reported as text once an interval for the
// node being displayed. Scopes are told apart by the address of their name, so Begin and
// End never look at text and never allocate, except the first time a scope is met.
//
// Misuse (unbalanced scopes, too many children) is never fatal: it stops all profiling
// and the error text takes the place of the figures.
class Profiler : public Pointee, public Singleton<Profiler> {
public:
    struct Node {
        Node(const char* name_, Node* parent_) : name(name_), parent(parent_) {}
        ~Node();
        Node(const Node&) = delete;
        Node& operator=(const Node&) = delete;

        const char* name;
        Node* parent;                 // null at the root
        std::vector<Node*> children;  // owned, in order of first use
        double spike = 0;             // longest single call, in seconds
        double total = 0;             // seconds since the last report
        int calls = 0;                // calls since the last report
        double start = 0;             // tick of the latest Begin
    };

    // A node refuses a new child once it has more than this many.
    static constexpr size_t MaxChildren = 8;

    Profiler();
    ~Profiler() override;

    void Begin(const char* name);
    void End();
    // Once a frame, with every scope closed: closes the frame and reports when it is time.
    void Update();

    const String& GetOutput() const { return m_output; }
    bool IsOutputOn() const { return m_outputOn; }
    // Off puts "Unactive" in the output; on starts the counts afresh.
    void SetOutputOn(bool on);
    // The next Update reports whatever the interval says.
    void RequestReport() { m_reportNow = true; }
    void SetReportInterval(double seconds) { m_interval = seconds; }
    double GetReportInterval() const { return m_interval; }
    // The frame rate shown in the report, as the frame loop measures it. Until it is set,
    // the report shows the frames counted over its own interval.
    void SetFramesPerSecond(double fps) { m_framesPerSecond = fps; }

    // Moving the displayed node, for the keypad commands. A node can only be shown when it
    // has children of its own; each returns whether it moved.
    bool ShowParent();
    bool ShowChild(size_t index);
    // The child with the largest total time.
    bool ShowHeaviestChild();

    const Node& GetRoot() const { return m_root; }
    const Node& GetCurrent() const { return *m_current; }
    const Node& GetDisplayed() const { return *m_displayed; }
    bool HasError() const { return m_error; }
    int GetFrameCount() const { return m_frames; }

    // Zeroes the counters of every node and the frame counter; the tree stays.
    void ResetCounters();
    // Back to the state after construction, tree and error included. Only for a fresh
    // start (tests): no scope may be open.
    void Reset();

private:
    void SetError(const String& text);
    void MakeReport(double now);
    void ResetCounters(double now);
    static void ResetNode(Node& node);

    Node m_root;
    Node* m_current;
    Node* m_displayed;
    int m_frames = 0;
    String m_output;
    String m_errorText;
    bool m_outputOn = false;
    bool m_reportNow = false;
    bool m_error = false;
    double m_interval = 1.0;
    double m_lastReport = 0;
    double m_framesPerSecond = -1;  // negative until the frame loop sets it
    ProfileRecord m_beginRecord;
    ProfileRecord m_endRecord;
};

// Opens a scope for its own lifetime, so that returns and exceptions close it too.
class ProfileScope {
public:
    explicit ProfileScope(const char* name) : m_profiler(Profiler::Get()) {
        m_profiler.Begin(name);
    }
    ~ProfileScope() { m_profiler.End(); }
    ProfileScope(const ProfileScope&) = delete;
    ProfileScope& operator=(const ProfileScope&) = delete;

private:
    Profiler& m_profiler;
};

}  // namespace util

#define VORRA_PROFILE_JOIN2_(a, b) a##b
#define VORRA_PROFILE_JOIN_(a, b) VORRA_PROFILE_JOIN2_(a, b)

// Profiles the rest of the enclosing block. The name must be a string literal: scopes are
// known by its address, which a literal keeps for the life of the process.
#define VORRA_PROFILE(name) \
    ::util::ProfileScope VORRA_PROFILE_JOIN_(vorraProfileScope_, __LINE__)("" name)
