#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

#include "logging/LogCapture.h"

namespace physics {

class Polygon;

// While one is alive, polygons made on its thread leave their distance and normal maps to
// helper threads and are ready for everything else at once; the maps come out the same as
// built in place. Whatever asks a polygon for its maps early waits for them, or builds them
// itself if no helper has begun. The end of the scope sees every map built, so a scene loaded
// within one is whole when the load returns. A scope opened within another adds nothing.
//
// Only the maps leave the thread: helpers read the polygon's outline, which never changes,
// and log into a capture that the owning thread replays.
class BackgroundMapBuilds {
public:
    BackgroundMapBuilds();
    ~BackgroundMapBuilds();
    BackgroundMapBuilds(const BackgroundMapBuilds&) = delete;
    BackgroundMapBuilds& operator=(const BackgroundMapBuilds&) = delete;

    // The scope in force on this thread, or null.
    static BackgroundMapBuilds* Current();

private:
    friend class Polygon;

    // Hands the polygon's maps to the helpers. False if no helper could be started: the
    // caller builds them itself.
    bool Queue(Polygon* polygon);
    // The polygon's maps are needed now.
    void Finish(const Polygon* polygon);
    // The polygon is going away: a build not begun is dropped, one under way awaited.
    void Withdraw(const Polygon* polygon);

    bool StartHelpers();
    void HelperLoop();
    // Takes a queued polygon out of the queue and builds it on the calling thread.
    void BuildHere(std::unique_lock<std::mutex>& lock, std::deque<Polygon*>::iterator queued);
    // Waits until a helper has built the polygon.
    void AwaitBuild(std::unique_lock<std::mutex>& lock, const Polygon* polygon);
    void ReplayLog();

    const bool m_active;
    std::mutex m_mutex;
    std::condition_variable m_queued;
    std::condition_variable m_built;
    std::deque<Polygon*> m_queue;
    std::vector<std::thread> m_helpers;
    std::vector<logging::CapturedLine> m_log;
    bool m_closing = false;
};

}  // namespace physics
