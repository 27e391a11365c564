/*
 * Copyright (c) 2026 The rovanta Authors
 * Licensed under the Apache License, Version 2.0 (the "License");
 * you may not use this file except in compliance with the License.
 * You may obtain a copy of the License at
 *
 *     http://www.apache.org/licenses/LICENSE-2.0
 *
 * Unless required by applicable law or agreed to in writing, software
 * distributed under the License is distributed on an "AS IS" BASIS,
 * WITHOUT WARRANTIES OR CONDITIONS OF ANY KIND, either express or implied.
 * See the License for the specific language governing permissions and
 * limitations under the License.
 */

#include "event_runner.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <iterator>
#include <mutex>
#include <thread>
#ifdef __GLIBC__
#include <malloc.h>
#endif

#include "event_handler.h"
#include "main_task_queue.h"
#include "ohos_host/host_control.h"

namespace OHOS {
namespace Host {
namespace {
// Most tasks one RunDue runs, so that the driver's thread gets on with its other work between batches.
constexpr size_t MAX_TASKS_PER_RUN = 128;
// A backlog at least this long is freed chunk by chunk and gives its memory back to the system once it has
// drained (below).
constexpr size_t TRIMMED_BACKLOG = 65536;

#ifdef __GLIBC__
// glibc's largest fast-bin chunk request by default (M_MXFAST).
constexpr int DEFAULT_FAST_BIN_LIMIT = 64 * static_cast<int>(sizeof(size_t)) / 4;
#endif

// glibc's malloc_trim gives back the free chunks of every arena but shrinks the top of the main arena only. A
// backlog lives in the arenas of the threads that sent it, and chunks of fast-bin size freed on the main thread
// sit between its freed events uncoalesced until the trim merges them all into those arenas' tops: tens of MB
// per sender would stay. While a long backlog drains, the fast bins are off, so that each free coalesces at once
// and free itself shrinks the arena's top. They are on otherwise: a free into a fast bin takes no arena lock,
// and without them the main thread waits for the sender's lock on every event.
void FreeChunksAtOnce()
{
#ifdef __GLIBC__
    (void)mallopt(M_MXFAST, 0);
#endif
}

// The allocator keeps the free pages of a drained backlog for reuse: a flood of millions of events would hold
// its peak for the rest of the process. Handing them back costs a walk of the heap, so it is done only when a
// long backlog has just emptied; the fast bins come back after it.
void GiveBackFreedMemory()
{
#ifdef __GLIBC__
    (void)malloc_trim(0);
    (void)mallopt(M_MXFAST, DEFAULT_FAST_BIN_LIMIT);
#endif
}

// State of the one main runner. Events wait in the queue until a driver attaches; from then on the driver is
// woken (at most one wake-up outstanding) whenever an event is due, by the sending thread or by the timer
// thread for delayed events, and runs the due events on its thread in batches. The wake-up stays claimed
// while the driver works through a backlog, so senders do not wake it again meanwhile.
class MainRunner {
public:
    static MainRunner &Get()
    {
        // Never destroyed: threads may still send events while the process exits.
        static MainRunner *runner = new MainRunner();
        return *runner;
    }

    bool Insert(TaskQueue::Event::Pointer &event, TaskQueue::Priority priority)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (state_ == State::DETACHED) {
            return false;
        }
        TaskQueue::TimePoint now = TaskQueue::Event::Clock::now();
        bool delayed = event->GetHandleTime() > now;
        queue_.Push(std::move(event), priority, now);
        if (recordingPosts_) {
            posts_.push_back({static_cast<uint32_t>(priority), CallingThreadId()});
        }
        if (queue_.Size() == TRIMMED_BACKLOG && backlogPeak_ < TRIMMED_BACKLOG) {
            FreeChunksAtOnce();
        }
        backlogPeak_ = std::max(backlogPeak_, queue_.Size());
        if (state_ != State::ATTACHED) {
            return true;
        }
        if (delayed) {
            timerCondition_.notify_one();
            return true;
        }
        if (batchRunning_ && priority < batchLeastUrgent_) {
            interrupted_.store(true, std::memory_order_release);
        }
        WakeIfDueLocked(now);
        return true;
    }

    bool Attach(MainRunnerWaker waker)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (state_ != State::WAITING) {
            return false;
        }
        waker_ = std::move(waker);
        state_ = State::ATTACHED;
        batch_.reserve(MAX_TASKS_PER_RUN);
        timer_ = std::thread(&MainRunner::TimerLoop, this);
        return true;
    }

    void Detach()
    {
        std::vector<TaskQueue::Event::Pointer> dropped;
        std::thread timer;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            if (state_ == State::DETACHED) {
                return;
            }
            state_ = State::DETACHED;
            interrupted_.store(true, std::memory_order_release);
            waker_ = nullptr;
            dropped = queue_.TakeAll();
            timer = std::move(timer_);
        }
        timerCondition_.notify_all();
        if (timer.joinable()) {
            timer.join();
        }
    }

    bool RunDue(const MainTaskScope &scope)
    {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            if (state_ != State::ATTACHED) {
                return false;
            }
            TakeBatchLocked(MAX_TASKS_PER_RUN);
            if (batch_.empty()) {
                wakeRequested_ = false;
                return false;
            }
        }
        scope([this] { RunBatch(); });
        bool drainedBacklog = false;
        bool more = false;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            batchRunning_ = false;
            more = state_ == State::ATTACHED && queue_.HasDue(TaskQueue::Event::Clock::now());
            wakeRequested_ = more;
            drainedBacklog = queue_.Size() == 0 && backlogPeak_ >= TRIMMED_BACKLOG;
            if (queue_.Size() == 0) {
                backlogPeak_ = 0;
            }
        }
        if (drainedBacklog) {
            GiveBackFreedMemory();
        }
        return more;
    }

    size_t PendingCount()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return queue_.Size();
    }

    void RecordPosts(bool enabled)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        recordingPosts_ = enabled;
        posts_.clear();
    }

    std::vector<MainRunnerPost> Posts()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return posts_;
    }

    uint64_t LastSequence()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return queue_.LastSequence();
    }

    bool HasPendingThrough(uint64_t sequence)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return queue_.HasPendingThrough(sequence) || (batchRunning_ && batchOldest_ <= sequence);
    }

private:
    enum class State { WAITING, ATTACHED, DETACHED };

    MainRunner() = default;

    void WakeIfDueLocked(TaskQueue::TimePoint now)
    {
        if (!wakeRequested_ && queue_.HasDue(now)) {
            wakeRequested_ = true;
            waker_();
        }
    }

    // Moves up to `limit` due events into the batch, in the order they are to run.
    void TakeBatchLocked(size_t limit)
    {
        TaskQueue::TimePoint now = TaskQueue::Event::Clock::now();
        interrupted_.store(false, std::memory_order_relaxed);
        while (batch_.size() < limit) {
            std::optional<TaskQueue::Entry> entry = queue_.PopDue(now);
            if (!entry) {
                break;
            }
            batchOldest_ = batch_.empty() ? entry->sequence : std::min(batchOldest_, entry->sequence);
            batch_.push_back(std::move(*entry));
        }
        batchRunning_ = !batch_.empty();
        if (batchRunning_) {
            batchLeastUrgent_ = batch_.back().priority;
        }
    }

    // Runs the batch outside the lock. When an event that goes before the rest arrives (sent with a more urgent
    // priority, or a delayed one fallen due) or the runner is detached, the rest goes back and the batch is taken
    // again, so the order is the one a task-by-task run would keep.
    void RunBatch()
    {
        size_t ran = 0;
        size_t next = 0;
        while (next < batch_.size()) {
            if (interrupted_.load(std::memory_order_acquire)) {
                std::vector<TaskQueue::Entry> dropped = TakeBackUnrun(next, ran); // destroyed here, unlocked
                next = 0;
                continue;
            }
            TaskQueue::Event::Pointer event = std::move(batch_[next++].event);
            std::shared_ptr<AppExecFwk::EventHandler> owner = event->GetOwner();
            if (owner) {
                owner->DistributeEvent(event);
            }
            ++ran;
        }
        batch_.clear();
    }

    // Returns what a detached runner drops, for the caller to destroy outside the lock.
    std::vector<TaskQueue::Entry> TakeBackUnrun(size_t next, size_t ran)
    {
        std::vector<TaskQueue::Entry> unrun(std::make_move_iterator(batch_.begin() + static_cast<ptrdiff_t>(next)),
                                            std::make_move_iterator(batch_.end()));
        batch_.clear();
        std::lock_guard<std::mutex> lock(mutex_);
        if (state_ != State::ATTACHED) {
            batchRunning_ = false;
            return unrun;
        }
        for (auto entry = unrun.rbegin(); entry != unrun.rend(); ++entry) {
            queue_.Requeue(std::move(*entry));
        }
        TakeBatchLocked(MAX_TASKS_PER_RUN - ran);
        return {};
    }

    void TimerLoop()
    {
        std::unique_lock<std::mutex> lock(mutex_);
        while (state_ == State::ATTACHED) {
            TaskQueue::TimePoint now = TaskQueue::Event::Clock::now();
            if (batchRunning_ && queue_.HasDelayedDue(now)) {
                interrupted_.store(true, std::memory_order_release);
            }
            WakeIfDueLocked(now);
            std::optional<TaskQueue::TimePoint> next = queue_.NextDueAfter(now);
            if (next) {
                timerCondition_.wait_until(lock, *next);
            } else {
                timerCondition_.wait(lock);
            }
        }
    }

    std::mutex mutex_;
    std::condition_variable timerCondition_;
    TaskQueue queue_;
    State state_ = State::WAITING;
    MainRunnerWaker waker_;
    bool wakeRequested_ = false;
    std::thread timer_;
    // The batch being run, used by the driver's thread only; the fields after it are guarded by the lock.
    std::vector<TaskQueue::Entry> batch_;
    bool batchRunning_ = false;
    TaskQueue::Priority batchLeastUrgent_ = TaskQueue::Priority::IDLE;
    uint64_t batchOldest_ = 0;
    // The longest the queue has been since it was last empty.
    size_t backlogPeak_ = 0;
    bool recordingPosts_ = false;
    std::vector<MainRunnerPost> posts_;
    // Set when the batch must be taken again before its next task; read by the driver without the lock.
    std::atomic<bool> interrupted_{false};
};
} // namespace

bool AttachMainRunner(MainRunnerWaker waker)
{
    return MainRunner::Get().Attach(std::move(waker));
}

void DetachMainRunner()
{
    MainRunner::Get().Detach();
}

bool RunDueMainTasks(const MainTaskScope &scope)
{
    return MainRunner::Get().RunDue(scope);
}

uint64_t MainRunnerLastSequence()
{
    return MainRunner::Get().LastSequence();
}

bool MainRunnerHasPendingThrough(uint64_t sequence)
{
    return MainRunner::Get().HasPendingThrough(sequence);
}

size_t MainRunnerPendingCount()
{
    return MainRunner::Get().PendingCount();
}

void MainRunnerRecordPosts(bool enabled)
{
    MainRunner::Get().RecordPosts(enabled);
}

std::vector<MainRunnerPost> MainRunnerPosts()
{
    return MainRunner::Get().Posts();
}
} // namespace Host

namespace AppExecFwk {
std::shared_ptr<EventRunner> EventRunner::GetMainEventRunner()
{
    static const std::shared_ptr<EventRunner> mainRunner(new EventRunner());
    return mainRunner;
}

bool EventRunner::Insert(InnerEvent::Pointer &event, EventQueue::Priority priority)
{
    return Host::MainRunner::Get().Insert(event, priority);
}
} // namespace AppExecFwk
} // namespace OHOS
