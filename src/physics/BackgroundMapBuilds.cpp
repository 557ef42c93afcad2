#include "physics/BackgroundMapBuilds.h"

#include <algorithm>
#include <system_error>

#include "physics/Polygon.h"

namespace physics {
namespace {

thread_local BackgroundMapBuilds* t_current = nullptr;

// One core stays with the thread that loads; a few helpers are plenty for the rest.
unsigned HelperCount() {
    const unsigned cores = std::thread::hardware_concurrency();
    return std::clamp(cores > 1 ? cores - 1 : 1u, 1u, 7u);
}

}  // namespace

BackgroundMapBuilds::BackgroundMapBuilds() : m_active(t_current == nullptr) {
    if (m_active) {
        t_current = this;
    }
}

BackgroundMapBuilds::~BackgroundMapBuilds() {
    if (!m_active) {
        return;
    }
    t_current = nullptr;
    // The helpers take from the front, this thread from the back, until nothing is left.
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_queue.empty()) {
        BuildHere(lock, std::prev(m_queue.end()));
    }
    m_closing = true;
    lock.unlock();
    m_queued.notify_all();
    for (std::thread& helper : m_helpers) {
        helper.join();
    }
    ReplayLog();
}

BackgroundMapBuilds* BackgroundMapBuilds::Current() {
    return t_current;
}

bool BackgroundMapBuilds::Queue(Polygon* polygon) {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (m_helpers.empty() && !StartHelpers()) {
            return false;
        }
        polygon->m_mapBuilds = this;
        polygon->m_mapState.store(Polygon::MapState::Queued, std::memory_order_relaxed);
        m_queue.push_back(polygon);
    }
    m_queued.notify_one();
    return true;
}

void BackgroundMapBuilds::Finish(const Polygon* polygon) {
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        if (polygon->m_mapState.load(std::memory_order_relaxed) == Polygon::MapState::Queued) {
            BuildHere(lock, std::find(m_queue.begin(), m_queue.end(), polygon));
        } else {
            AwaitBuild(lock, polygon);
        }
    }
    ReplayLog();
}

void BackgroundMapBuilds::Withdraw(const Polygon* polygon) {
    std::unique_lock<std::mutex> lock(m_mutex);
    if (polygon->m_mapState.load(std::memory_order_relaxed) == Polygon::MapState::Queued) {
        m_queue.erase(std::find(m_queue.begin(), m_queue.end(), polygon));
        return;
    }
    AwaitBuild(lock, polygon);
}

void BackgroundMapBuilds::AwaitBuild(std::unique_lock<std::mutex>& lock, const Polygon* polygon) {
    m_built.wait(lock, [polygon] {
        return polygon->m_mapState.load(std::memory_order_relaxed) == Polygon::MapState::Ready;
    });
}

bool BackgroundMapBuilds::StartHelpers() {
    try {
        for (unsigned i = HelperCount(); i > 0; --i) {
            m_helpers.emplace_back([this] { HelperLoop(); });
        }
    } catch (const std::system_error&) {
        // Those that did start serve; with none, the polygons build their own maps.
    }
    return !m_helpers.empty();
}

void BackgroundMapBuilds::HelperLoop() {
    std::vector<logging::CapturedLine> lines;
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        m_queued.wait(lock, [this] { return m_closing || !m_queue.empty(); });
        if (m_queue.empty()) {
            return;
        }
        Polygon* polygon = m_queue.front();
        m_queue.pop_front();
        polygon->m_mapState.store(Polygon::MapState::Building, std::memory_order_relaxed);
        lock.unlock();
        {
            logging::LogCapture capture(lines);
            polygon->BuildMaps();
        }
        lock.lock();
        m_log.insert(m_log.end(), lines.begin(), lines.end());
        lines.clear();
        polygon->m_mapState.store(Polygon::MapState::Ready, std::memory_order_release);
        m_built.notify_all();
    }
}

void BackgroundMapBuilds::BuildHere(std::unique_lock<std::mutex>& lock,
                                    std::deque<Polygon*>::iterator queued) {
    Polygon* polygon = *queued;
    m_queue.erase(queued);
    polygon->m_mapState.store(Polygon::MapState::Building, std::memory_order_relaxed);
    lock.unlock();
    polygon->BuildMaps();
    lock.lock();
    polygon->m_mapState.store(Polygon::MapState::Ready, std::memory_order_release);
}

void BackgroundMapBuilds::ReplayLog() {
    std::vector<logging::CapturedLine> lines;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        lines.swap(m_log);
    }
    logging::Replay(lines);
}

}  // namespace physics
