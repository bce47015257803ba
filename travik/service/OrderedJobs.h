#pragma once

#include <condition_variable>
#include <cstddef>
#include <exception>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace Travik {

/// Calls `work(i)` for every i below `count`, on up to `jobs` threads at once, and `deliver(i, result)` on the calling
/// thread in the order of i. No more than four results a thread wait at a time, however slow the first is. What `work`
/// throws comes out where its result would have been delivered; that, and what `deliver` throws, ends it all: nothing
/// further is begun. With one job, or where no thread is to be had, everything happens on the calling thread.
template <class Work, class Deliver>
void runOrdered(std::size_t count, unsigned int jobs, Work work, Deliver deliver) {
    using Result = std::invoke_result_t<Work&, std::size_t>;
    const auto runAlone = [&] {
        for (std::size_t i = 0; i < count; ++i)
            deliver(i, work(i));
    };
    if (jobs <= 1 || count <= 1)
        return runAlone();
    struct Slot {
        std::optional<Result> result;
        std::exception_ptr error;
    };
    const std::size_t threads = count < jobs ? count : jobs;
    std::vector<Slot> ring(4 * threads); // of the results begun and not yet delivered
    std::mutex mutex;
    std::condition_variable room;
    std::condition_variable done;
    std::size_t begun = 0;
    std::size_t delivered = 0;
    bool isOver = false;

    const auto runWorker = [&] {
        for (;;) {
            std::unique_lock lock(mutex);
            room.wait(lock, [&] { return isOver || begun == count || begun < delivered + ring.size(); });
            if (isOver || begun == count)
                return;
            const std::size_t i = begun++;
            lock.unlock();
            Slot made;
            try {
                made.result.emplace(work(i));
            } catch (...) {
                made.error = std::current_exception();
            }
            lock.lock();
            ring[i % ring.size()] = std::move(made);
            if (i == delivered)
                done.notify_one();
        }
    };
    // Whatever ends this, the threads end first: they use what lies above.
    std::vector<std::jthread> workers;
    struct Ending {
        std::mutex& mutex;
        std::condition_variable& room;
        bool& isOver;
        ~Ending() {
            const std::lock_guard lock(mutex);
            isOver = true;
            room.notify_all();
        }
    } const ending{mutex, room, isOver};
    workers.reserve(threads);
    try {
        while (workers.size() < threads)
            workers.emplace_back(runWorker);
    } catch (const std::system_error&) { // there are no more to be had: those that there are do all of it
        if (workers.empty())
            return runAlone();
    }

    for (std::size_t i = 0; i < count; ++i) {
        std::unique_lock lock(mutex);
        Slot& slot = ring[i % ring.size()];
        done.wait(lock, [&] { return slot.result || slot.error; });
        Slot made = std::exchange(slot, {});
        delivered = i + 1;
        lock.unlock();
        room.notify_one();
        if (made.error)
            std::rethrow_exception(made.error);
        deliver(i, std::move(*made.result));
    }
}

} // namespace Travik
