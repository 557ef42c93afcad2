#include "physics/StepWorkers.h"

#include <algorithm>
#include <chrono>

#include <pthread.h>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace physics {

namespace {

void Pause() {
#if defined(__SSE2__)
    _mm_pause();
#else
    std::this_thread::yield();
#endif
}

// How long a helper keeps watching for the next loop before it sleeps: a step's loops come
// microseconds apart, while a frame's drawing between steps takes milliseconds.
constexpr auto kSpinTime = std::chrono::microseconds(50);

}  // namespace

StepWorkers& StepWorkers::Get() {
    static StepWorkers workers;
    return workers;
}

unsigned StepWorkers::DefaultThreadCount() {
    const unsigned cores = std::thread::hardware_concurrency();
    return std::clamp(cores, 1u, kMaxThreads);
}

StepWorkers::StepWorkers() {
    // A child made by fork has this thread alone: it steps on one thread, and the helpers
    // it inherited as objects, which it cannot join, are let go unjoined.
    pthread_atfork(nullptr, nullptr, [] { Get().ForgetHelpers(); });
    SetThreadCount(DefaultThreadCount());
}

void StepWorkers::ForgetHelpers() {
    new std::vector<std::thread>(std::move(m_helpers));
    m_helpers.clear();
    m_threadCount = 1;
    m_pending.store(0);
    m_sleepers.store(0);
}

StepWorkers::~StepWorkers() {
    StopHelpers();
}

void StepWorkers::SetThreadCount(unsigned count) {
    count = std::clamp(count, 1u, kMaxThreads);
    if (count == m_threadCount && m_helpers.size() + 1 == count) {
        return;
    }
    StopHelpers();
    m_threadCount = count;
    m_stop.store(false);
    // The generation each helper starts from is read here, not in the helper: one that
    // starts late must not miss a loop, or the stop, that came before it ran.
    const uint64_t generation = m_generation.load();
    for (unsigned part = 1; part < count; ++part) {
        m_helpers.emplace_back([this, part, generation] { Serve(part, generation); });
    }
}

void StepWorkers::StopHelpers() {
    if (m_helpers.empty()) {
        return;
    }
    WaitForHelpers();
    m_stop.store(true);
    m_generation.fetch_add(1);
    m_generation.notify_all();
    for (std::thread& helper : m_helpers) {
        helper.join();
    }
    m_helpers.clear();
}

StepWorkers::Busy::Busy() {
    StepWorkers& workers = Get();
    if (workers.m_busy.fetch_add(1) == 0 && workers.m_sleepers.load() > 0) {
        // Wakes the sleepers with an empty loop, not waiting for them: they then watch
        // until the scope ends.
        workers.Post([](void*, size_t) {}, nullptr, 1);
    }
}

StepWorkers::Busy::~Busy() {
    Get().m_busy.fetch_sub(1);
}

bool StepWorkers::SplitEverything(bool on) {
    const bool was = m_splitEverything;
    m_splitEverything = on;
    return was;
}

size_t StepWorkers::PartsFor(size_t count, size_t grain) const {
    const size_t wanted = m_splitEverything ? count : count / std::max<size_t>(grain, 1);
    return std::clamp<size_t>(wanted, 1, m_threadCount);
}

void StepWorkers::PartRange(size_t count, size_t parts, size_t part, size_t& first, size_t& last) {
    first = count * part / parts;
    last = count * (part + 1) / parts;
}

void StepWorkers::Run(Job job, void* data, size_t parts) {
    Post(job, data, parts);
    job(data, 0);
    WaitForHelpers();
}

void StepWorkers::WaitForHelpers() {
    // The helpers' parts are as long as this one: spin, yielding now and then in case a
    // helper lost its core.
    for (unsigned spins = 0; m_pending.load(std::memory_order_acquire) != 0; ++spins) {
        if ((spins & 255) == 255) {
            std::this_thread::yield();
        } else {
            Pause();
        }
    }
}

void StepWorkers::Post(Job job, void* data, size_t parts) {
    // A loop posted without waiting may still be answered.
    WaitForHelpers();
    m_job = job;
    m_data = data;
    m_parts = parts;
    // Every helper answers every loop, those without a part too, so that none can still be
    // reading this loop's job when the next one is set.
    m_pending.store(m_helpers.size());
    m_generation.fetch_add(1);
    if (m_sleepers.load() > 0) {
        m_generation.notify_all();
    }
}

void StepWorkers::Serve(size_t part, uint64_t seen) {
    for (;;) {
        // Watch for the next loop a while, then sleep until one comes.
        uint64_t now = m_generation.load(std::memory_order_acquire);
        const auto deadline = std::chrono::steady_clock::now() + kSpinTime;
        for (unsigned spins = 0; now == seen; ++spins) {
            if ((spins & 63) == 63 && m_busy.load(std::memory_order_relaxed) == 0 &&
                std::chrono::steady_clock::now() > deadline) {
                m_sleepers.fetch_add(1);
                m_generation.wait(seen);
                m_sleepers.fetch_sub(1);
            } else {
                Pause();
            }
            now = m_generation.load(std::memory_order_acquire);
        }
        seen = now;
        if (m_stop.load()) {
            return;
        }
        if (part < m_parts) {
            m_job(m_data, part);
        }
        m_pending.fetch_sub(1, std::memory_order_release);
    }
}

}  // namespace physics
