#include "util/Profiler.h"

#include <cstdio>

#include "logging/Log.h"
#include "util/Clock.h"
#include "util/StringUtil.h"

namespace util {
namespace {

const char* const s_noOutput = "No output generated yet.";

// The figures of one report row; the formats are shared by all rows.
void AppendFigures(String& out, double ofOwner, double ofFrame, double perFrame, double spike,
                   double perCall, double callsPerFrame) {
    AppendFormatted(out, "   %5.1f %%   %5.1f %%     %6.0f", ofOwner, ofFrame, perFrame);
    AppendFormatted(out, "        %5.0f     %5.0f   %5.1f\n", spike, perCall, callsPerFrame);
}

double Percent(double part, double whole) {
    return whole > 0 ? 100.0 * part / whole : 0.0;
}

}  // namespace

Profiler::Node::~Node() {
    for (Node* child : children) {
        delete child;
    }
}

Profiler::Profiler()
    : m_root("Main", nullptr),
      m_current(&m_root),
      m_displayed(&m_root),
      m_output(s_noOutput),
      m_beginRecord("Profiler::Begin"),
      m_endRecord("Profiler::End") {
    const double now = Clock::PreciseSeconds();
    m_root.start = now;
    m_lastReport = now;
}

Profiler::~Profiler() = default;

void Profiler::Begin(const char* name) {
    if (m_error) {
        return;
    }
    // While nobody reads the figures the tree is still walked, so that misuse shows, but
    // the clock is not: scopes sit on the hottest paths of the script language.
    const double entered = m_outputOn ? Clock::PreciseSeconds() : 0;
    Node* node = nullptr;
    for (Node* child : m_current->children) {
        if (child->name == name) {
            node = child;
            break;
        }
    }
    if (!node) {
        if (m_current->children.size() > MaxChildren) {
            SetError(String("Too many children of node ") + m_current->name);
            return;
        }
        m_current->children.reserve(MaxChildren + 1);
        node = new Node(name, m_current);
        m_current->children.push_back(node);
    }
    m_current = node;
    if (!m_outputOn) {
        return;
    }
    // The child's clock starts after the search, so that Begin's own cost is not charged
    // to the scope but to its record.
    const double now = Clock::PreciseSeconds();
    node->start = now;
    m_beginRecord.Add(now - entered);
}

void Profiler::End() {
    if (m_error) {
        return;
    }
    if (m_current == &m_root) {
        SetError("Too many calls to End()");
        return;
    }
    Node* node = m_current;
    if (!m_outputOn) {
        ++node->calls;
        m_current = node->parent;
        return;
    }
    const double entered = Clock::PreciseSeconds();
    const double elapsed = entered - node->start;
    ++node->calls;
    node->total += elapsed;
    if (elapsed > node->spike) {
        node->spike = elapsed;
    }
    m_current = node->parent;
    m_endRecord.Add(Clock::PreciseSeconds() - entered);
}

void Profiler::Update() {
    if (m_error || !m_outputOn) {
        return;
    }
    if (m_current != &m_root) {
        SetError("Profiler::Update() called within begin and end (fix code)");
        m_current = &m_root;
        return;
    }
    ++m_frames;
    const double now = Clock::PreciseSeconds();
    const double frame = now - m_root.start;
    ++m_root.calls;
    m_root.total += frame;
    if (frame > m_root.spike) {
        m_root.spike = frame;
    }
    m_root.start = now;
    if (now - m_lastReport >= m_interval || m_reportNow) {
        MakeReport(now);
    }
}

void Profiler::SetOutputOn(bool on) {
    if (on) {
        ResetCounters();
        // The error must stay in sight until it is fixed.
        if (m_error) {
            m_output = m_errorText;
        }
    } else {
        m_output = "Unactive";
    }
    m_outputOn = on;
}

bool Profiler::ShowParent() {
    if (!m_displayed->parent) {
        return false;
    }
    m_displayed = m_displayed->parent;
    return true;
}

bool Profiler::ShowChild(size_t index) {
    if (index >= m_displayed->children.size() || m_displayed->children[index]->children.empty()) {
        return false;
    }
    m_displayed = m_displayed->children[index];
    return true;
}

bool Profiler::ShowHeaviestChild() {
    Node* heaviest = nullptr;
    for (Node* child : m_displayed->children) {
        if (!heaviest || child->total > heaviest->total) {
            heaviest = child;
        }
    }
    if (!heaviest || heaviest->children.empty()) {
        return false;
    }
    m_displayed = heaviest;
    return true;
}

void Profiler::ResetNode(Node& node) {
    node.spike = 0;
    node.total = 0;
    node.calls = 0;
    for (Node* child : node.children) {
        ResetNode(*child);
    }
}

void Profiler::ResetCounters() {
    ResetCounters(Clock::PreciseSeconds());
}

void Profiler::ResetCounters(double now) {
    ResetNode(m_root);
    m_frames = 0;
    m_root.start = now;
    m_lastReport = now;
}

void Profiler::Reset() {
    for (Node* child : m_root.children) {
        delete child;
    }
    m_root.children.clear();
    m_current = &m_root;
    m_displayed = &m_root;
    m_output = s_noOutput;
    m_errorText.clear();
    m_outputOn = false;
    m_reportNow = false;
    m_error = false;
    m_interval = 1.0;
    m_framesPerSecond = -1;
    m_beginRecord.ResetCounters();
    m_endRecord.ResetCounters();
    ResetCounters();
}

void Profiler::SetError(const String& text) {
    m_error = true;
    m_errorText =
        "ERROR: " + text + "\n\nThis problem must be fixed before any profiling can be done.";
    m_output = m_errorText;
    Log(logging::CodeCheck, "Profiler: " + text);
}

void Profiler::MakeReport(double now) {
    m_reportNow = false;
    const Node& shown = *m_displayed;
    const double frames = m_frames > 0 ? m_frames : 1;
    const double whole = m_root.total;
    const double sinceReport = now - m_lastReport;
    const double fps = m_framesPerSecond >= 0 ? m_framesPerSecond
                       : sinceReport > 0      ? m_frames / sinceReport
                                              : 0.0;

    String out;
    AppendFormatted(out, "FPS: %04.2f\n\n", fps);
    AppendFormatted(out, "Profile data for %s\n", shown.name);
    // The name column is one wider than in the rows, so that each heading ends where its
    // figures end.
    AppendFormatted(out, "%-25s%s%s%s%s%s%s\n", " Name", "   %owner", "    %total", "   µs/frame",
                    "  frame-spike", "   µs/call", "   calls/frame");

    double childrenTotal = 0;
    for (size_t i = 0; i < shown.children.size(); ++i) {
        const Node& child = *shown.children[i];
        childrenTotal += child.total;
        // '+' marks the rows the keypad can enter.
        const char mark = child.children.empty() ? ' ' : '+';
        AppendFormatted(out, "%c%u %-21.21s", mark, static_cast<unsigned>(i), child.name);
        AppendFigures(out, Percent(child.total, shown.total), Percent(child.total, whole),
                      1e6 * child.total / frames, 1e6 * child.spike,
                      child.calls > 0 ? 1e6 * child.total / child.calls : 0.0,
                      child.calls / frames);
    }

    const double missing = shown.total - childrenTotal;
    AppendFormatted(out, "   %-21.21s", "MISSING TIME");
    AppendFigures(out, Percent(missing, shown.total), Percent(missing, whole),
                  1e6 * missing / frames, 0.0, shown.calls > 0 ? 1e6 * missing / shown.calls : 0.0,
                  shown.calls / frames);

    AppendFormatted(out, "   %-21.21s", shown.name);
    AppendFigures(out, shown.parent ? Percent(shown.total, shown.parent->total) : 100.0,
                  Percent(shown.total, whole), 1e6 * shown.total / frames, 1e6 * shown.spike,
                  shown.calls > 0 ? 1e6 * shown.total / shown.calls : 0.0, shown.calls / frames);

    m_output = out;
    ResetCounters(now);
}

}  // namespace util
