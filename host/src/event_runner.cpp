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

#include <condition_variable>
#include <mutex>
#include <thread>

#include "event_handler.h"
#include "main_task_queue.h"
#include "ohos_host/host_control.h"

namespace OHOS {
namespace Host {
namespace {
// State of the one main runner. Events wait in the queue until a driver attaches; from then on the driver is
// woken (at most one wake-up outstanding) whenever an event is due, by the sending thread or by the timer
// thread for delayed events, and runs the due events on its thread.
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
        bool delayed = event->GetHandleTime() > TaskQueue::Event::Clock::now();
        queue_.Push(std::move(event), priority);
        if (state_ == State::ATTACHED) {
            if (delayed) {
                timerCondition_.notify_one();
            } else {
                WakeIfDueLocked(TaskQueue::Event::Clock::now());
            }
        }
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
            waker_ = nullptr;
            dropped = queue_.TakeAll();
            timer = std::move(timer_);
        }
        timerCondition_.notify_all();
        if (timer.joinable()) {
            timer.join();
        }
    }

    void RunDue(const MainTaskScope &scope)
    {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            wakeRequested_ = false;
        }
        for (;;) {
            TaskQueue::Event::Pointer event(nullptr, nullptr);
            {
                std::lock_guard<std::mutex> lock(mutex_);
                if (state_ != State::ATTACHED) {
                    return;
                }
                event = queue_.PopDue(TaskQueue::Event::Clock::now());
            }
            if (!event) {
                return;
            }
            std::shared_ptr<AppExecFwk::EventHandler> owner = event->GetOwner();
            if (owner) {
                scope([&owner, &event] { owner->DistributeEvent(event); });
            }
        }
    }

    uint64_t LastSequence()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return queue_.LastSequence();
    }

    bool HasPendingThrough(uint64_t sequence)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return queue_.HasPendingThrough(sequence);
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

    void TimerLoop()
    {
        std::unique_lock<std::mutex> lock(mutex_);
        while (state_ == State::ATTACHED) {
            TaskQueue::TimePoint now = TaskQueue::Event::Clock::now();
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

void RunDueMainTasks(const MainTaskScope &scope)
{
    MainRunner::Get().RunDue(scope);
}

uint64_t MainRunnerLastSequence()
{
    return MainRunner::Get().LastSequence();
}

bool MainRunnerHasPendingThrough(uint64_t sequence)
{
    return MainRunner::Get().HasPendingThrough(sequence);
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
