#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <thread>
#include <vector>

namespace physics {

// The threads that share a step's data-parallel loops with the thread that steps. A loop
// is cut into contiguous parts, one per thread; the calling thread takes part 0 and returns
// when all parts are done. Every loop given here computes each index on its own, or writes
// each part's output apart to be joined in part order, so that a step gives the same bits
// at any thread count: the cut decides only who does the work.
//
// Between parts of a step the helpers spin briefly, as the next loop follows within
// microseconds; then they sleep until the next one. Nothing else in the program runs on
// them: the step's callbacks, scripts and logging all stay on the calling thread.
class StepWorkers {
public:
    static constexpr unsigned kMaxThreads = 8;

    static StepWorkers& Get();
    // The cores of this machine, at most kMaxThreads; one where it has one.
    static unsigned DefaultThreadCount();

    ~StepWorkers();
    StepWorkers(const StepWorkers&) = delete;
    StepWorkers& operator=(const StepWorkers&) = delete;

    // Clamped to 1 to kMaxThreads; the helpers start or stop here, never during a loop.
    void SetThreadCount(unsigned count);
    unsigned GetThreadCount() const { return m_threadCount; }

    // The number of parts a loop over count items is cut into: one per grain items, at most
    // one per thread.
    size_t PartsFor(size_t count, size_t grain) const;
    // Cuts every loop of two items or more, whatever its grain, so that small worlds take
    // the paths of large ones: for tests of the parallel paths. Returns the setting before.
    bool SplitEverything(bool on);
    // The items of one part, [first, last), for parts as PartsFor gives them.
    static void PartRange(size_t count, size_t parts, size_t part, size_t& first, size_t& last);

    // While one lives, the helpers keep watching for work instead of sleeping: a step
    // holds one, so that its loops do not wait for a thread to wake.
    class Busy {
    public:
        Busy();
        ~Busy();
        Busy(const Busy&) = delete;
        Busy& operator=(const Busy&) = delete;
    };

    // Calls work(part, first, last) for each part of [0, count) and returns when all have
    // run. Work must not throw, nor start another loop.
    template <class F>
    void ForParts(size_t count, size_t grain, F&& work) {
        const size_t parts = PartsFor(count, grain);
        if (parts <= 1) {
            if (count > 0) {
                work(size_t{0}, size_t{0}, count);
            }
            return;
        }
        struct Context {
            F* work;
            size_t count;
            size_t parts;
        } context{&work, count, parts};
        Run(
            [](void* data, size_t part) {
                const Context& c = *static_cast<const Context*>(data);
                size_t first = 0;
                size_t last = 0;
                PartRange(c.count, c.parts, part, first, last);
                (*c.work)(part, first, last);
            },
            &context, parts);
    }

    // Calls visit(list[i]) for every item, in parts.
    template <class List, class Visit>
    void ForEach(List& list, size_t grain, Visit visit) {
        ForParts(list.size(), grain, [&](size_t, size_t first, size_t last) {
            for (size_t i = first; i < last; ++i) {
                visit(list[i]);
            }
        });
    }

private:
    using Job = void (*)(void* data, size_t part);

    StepWorkers();
    // Runs job on parts [0, parts): part 0 here, the others on the helpers.
    void Run(Job job, void* data, size_t parts);
    // Hands parts 1 on to the helpers and returns at once.
    void Post(Job job, void* data, size_t parts);
    void WaitForHelpers();
    void Serve(size_t part, uint64_t seen);
    void StopHelpers();
    void ForgetHelpers();

    unsigned m_threadCount = 1;
    bool m_splitEverything = false;
    std::vector<std::thread> m_helpers;

    // Each loop bumps the generation; helpers watch it.
    std::atomic<uint64_t> m_generation{0};
    std::atomic<uint32_t> m_sleepers{0};
    std::atomic<size_t> m_pending{0};
    std::atomic<bool> m_stop{false};
    std::atomic<uint32_t> m_busy{0};
    Job m_job = nullptr;
    void* m_data = nullptr;
    size_t m_parts = 0;
};

}  // namespace physics
