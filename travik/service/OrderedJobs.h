#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace Travik {

inline constexpr std::size_t longestRun = 8; // more would hold more memory, and save little

/// What `runOrdered` does with several threads.
template <class Work>
class OrderedRuns {
public:
    OrderedRuns(std::size_t count, std::size_t threads, Work& work)
        : count_(count), threads_(threads), work_(work), ring_(4 * threads) {}

    template <class Deliver>
    void run(Deliver& deliver) {
        std::vector<std::jthread> helpers;
        const Ending ending{*this}; // whatever ends this, the helpers end first
        helpers.reserve(threads_ - 1);
        try {
            while (helpers.size() < threads_ - 1)
                helpers.emplace_back([this] { help(); });
        } catch (const std::system_error&) {
            // Those that there are do all of it.
        }
        std::unique_lock lock(mutex_);
        while (delivered_ < begun_ || next_ < count_) {
            if (ring_[delivered_ % ring_.size()].isDone) {
                Run run = std::exchange(ring_[delivered_++ % ring_.size()], {});
                const bool isRoomAwaited = waiting_ > 0;
                lock.unlock();
                if (isRoomAwaited)
                    room_.notify_one();
                for (std::size_t i = 0; i < run.results.size(); ++i)
                    deliver(run.first + i, std::move(run.results[i]));
                if (run.error)
                    std::rethrow_exception(run.error);
                lock.lock();
            } else if (mayBegin()) {
                workOnNext(lock);
            } else {
                isDeliveryWaiting_ = true;
                done_.wait(lock);
                isDeliveryWaiting_ = false;
            }
        }
    }

private:
    using Clock = std::chrono::steady_clock;

    struct Run {
        std::size_t first = 0;
        std::vector<std::invoke_result_t<Work&, std::size_t>> results;
        std::exception_ptr error; // ended it early
        bool isDone = false;
    };

    struct Ending {
        OrderedRuns& runs;
        ~Ending() {
            const std::lock_guard lock(runs.mutex_);
            runs.isOver_ = true;
            runs.room_.notify_all();
        }
    };

    void help() {
        std::unique_lock lock(mutex_);
        while (!isOver_ && next_ < count_) {
            if (mayBegin()) {
                workOnNext(lock);
            } else {
                ++waiting_;
                room_.wait(lock);
                --waiting_;
            }
        }
    }

    bool mayBegin() const { return next_ < count_ && begun_ < delivered_ + ring_.size(); }

    void workOnNext(std::unique_lock<std::mutex>& lock) {
        const std::size_t place = begun_++;
        const std::size_t length = std::min(length_, count_ - next_);
        Run run;
        run.first = next_;
        next_ += length;
        lock.unlock();
        const Clock::time_point start = Clock::now();
        try {
            run.results.reserve(length);
            while (run.results.size() < length)
                run.results.push_back(work_(run.first + run.results.size()));
        } catch (...) {
            run.error = std::current_exception();
        }
        run.isDone = true;
        const Clock::duration took = Clock::now() - start;
        lock.lock();
        if (took < longEnough / 2)
            length_ = std::min(2 * length, longestRun);
        else if (took > longEnough)
            length_ = std::max<std::size_t>(length / 2, 1);
        ring_[place % ring_.size()] = std::move(run);
        // Waking a thread takes as long as a small image does: nobody is woken who does not wait.
        if (place == delivered_ && isDeliveryWaiting_)
            done_.notify_one();
    }

    static constexpr Clock::duration longEnough = std::chrono::microseconds(100);

    const std::size_t count_;
    const std::size_t threads_;
    Work& work_;

    std::mutex mutex_; // of all below
    std::condition_variable room_;
    std::condition_variable done_;
    std::vector<Run> ring_;  // of those begun and not yet delivered
    std::size_t next_ = 0;   // what the next run begins with
    std::size_t length_ = 1; // of the next run
    std::size_t begun_ = 0;  // runs
    std::size_t delivered_ = 0;
    std::size_t waiting_ = 0; // helpers, for room in the ring
    bool isDeliveryWaiting_ = false;
    bool isOver_ = false;
};

/// Calls `work(i)` for every i below `count`, on up to `jobs` threads at once, and `deliver(i, result)` on the calling
/// thread, which is one of them, in the order of i. Work is handed out in runs: a single i, or up to `longestRun` of
/// those that take less than 0.1 ms together. No more than four runs a thread wait at a time, however slow the first
/// is. What `work` throws comes out where its result would have been delivered; that, and what `deliver` throws, ends
/// it all: nothing further is begun. With one job, or where no thread is to be had, everything happens on the calling
/// thread.
template <class Work, class Deliver>
void runOrdered(std::size_t count, unsigned int jobs, Work work, Deliver deliver) {
    if (jobs <= 1 || count <= 1) {
        for (std::size_t i = 0; i < count; ++i)
            deliver(i, work(i));
        return;
    }
    OrderedRuns<Work>(count, std::min<std::size_t>(count, jobs), work).run(deliver);
}

} // namespace Travik
