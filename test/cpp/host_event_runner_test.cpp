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

// The event-handler stand-in: the task queue's order, refused sends and the main runner's delivery.

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "event_handler.h"
#include "main_task_queue.h"
#include "ohos_host/host_control.h"

namespace {
using namespace OHOS;
using namespace OHOS::Host;
using AppExecFwk::EventHandler;
using AppExecFwk::EventRunner;
using AppExecFwk::InnerEvent;
using Priority = AppExecFwk::EventQueue::Priority;
using namespace std::chrono_literals;

InnerEvent::Pointer NamedEvent(const std::string &name, InnerEvent::TimePoint handleTime)
{
    InnerEvent::Pointer event = InnerEvent::Get([] {}, name);
    event->SetHandleTime(handleTime);
    return event;
}

std::vector<std::string> PopAllDue(TaskQueue &queue, InnerEvent::TimePoint now)
{
    std::vector<std::string> names;
    while (std::optional<TaskQueue::Entry> entry = queue.PopDue(now)) {
        names.push_back(entry->event->GetTaskName());
    }
    return names;
}

TEST(EventQueueTest, RunsDueEventsByPriorityValueThenSendingOrder)
{
    EXPECT_EQ(static_cast<Priority>(0), Priority::VIP);
    EXPECT_EQ(static_cast<Priority>(3), Priority::LOW);
    EXPECT_EQ(static_cast<Priority>(4), Priority::IDLE);

    TaskQueue queue;
    InnerEvent::TimePoint start = InnerEvent::Clock::now();
    queue.Push(NamedEvent("low-1", start), Priority::LOW, start);
    queue.Push(NamedEvent("idle", start), Priority::IDLE, start);
    uint64_t delayed = queue.Push(NamedEvent("vip-later", start + 50ms), Priority::VIP, start);
    queue.Push(NamedEvent("high", start), Priority::HIGH, start);
    queue.Push(NamedEvent("low-2", start), Priority::LOW, start);
    queue.Push(NamedEvent("immediate", start), Priority::IMMEDIATE, start);
    EXPECT_EQ(delayed, 3u);
    EXPECT_EQ(queue.LastSequence(), 6u);

    EXPECT_EQ(PopAllDue(queue, start), (std::vector<std::string>{"immediate", "high", "low-1", "low-2", "idle"}));
    EXPECT_FALSE(queue.HasDue(start + 49ms));
    EXPECT_EQ(queue.NextDueAfter(start), start + 50ms);
    EXPECT_FALSE(queue.HasPendingThrough(delayed - 1));
    EXPECT_TRUE(queue.HasPendingThrough(delayed));

    // Once due, the delayed VIP event goes ahead of an IMMEDIATE one that was due before it.
    queue.Push(NamedEvent("immediate-2", start), Priority::IMMEDIATE, start);
    EXPECT_EQ(PopAllDue(queue, start + 50ms), (std::vector<std::string>{"vip-later", "immediate-2"}));
    EXPECT_FALSE(queue.HasPendingThrough(queue.LastSequence()));

    // Entries taken and put back, last first, return to their places ahead of what was sent meanwhile.
    queue.Push(NamedEvent("low-3", start), Priority::LOW, start);
    queue.Push(NamedEvent("low-4", start), Priority::LOW, start);
    std::optional<TaskQueue::Entry> first = queue.PopDue(start);
    std::optional<TaskQueue::Entry> second = queue.PopDue(start);
    queue.Push(NamedEvent("low-5", start), Priority::LOW, start);
    EXPECT_TRUE(queue.HasPendingThrough(queue.LastSequence()));
    EXPECT_FALSE(queue.HasPendingThrough(second->sequence));
    queue.Requeue(std::move(*second));
    queue.Requeue(std::move(*first));
    EXPECT_EQ(PopAllDue(queue, start), (std::vector<std::string>{"low-3", "low-4", "low-5"}));
}

TEST(EventHandlerTest, EventsRecordTheirCallSiteAndBadSendsAreRefused)
{
    int line = __LINE__ + 1;
    InnerEvent::Pointer event = InnerEvent::Get([] {}, "named");
    EXPECT_EQ(event->GetCaller().file_, __FILE__);
    EXPECT_EQ(event->GetCaller().line_, line);
    EXPECT_EQ(event->GetTaskName(), "named");
    EXPECT_EQ(InnerEvent::Get(InnerEvent::Callback()), nullptr);

    auto withoutRunner = std::make_shared<EventHandler>();
    EXPECT_FALSE(withoutRunner->SendEvent(event));
    EXPECT_NE(event, nullptr);
    auto handler = std::make_shared<EventHandler>(EventRunner::GetMainEventRunner());
    InnerEvent::Pointer none(nullptr, nullptr);
    EXPECT_FALSE(handler->SendEvent(none, Priority::HIGH));
}

// Counts wake-ups of the main runner and lets the test wait for the next one.
class WakeCounter {
public:
    void Wake()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        ++wakes_;
        woken_.notify_all();
    }

    bool WaitForWakes(int count, std::chrono::milliseconds timeout = 2s)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        return woken_.wait_for(lock, timeout, [this, count] { return wakes_ >= count; });
    }

    int Wakes()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return wakes_;
    }

private:
    std::mutex mutex_;
    std::condition_variable woken_;
    int wakes_ = 0;
};

// The runner is process-wide and cannot be attached again once detached, so its whole life is one test.
TEST(MainRunnerTest, DeliversThroughTheAttachedDriverInBoundedBatchesUntilDetached)
{
    std::vector<std::string> ran;
    int batches = 0;
    MainTaskScope scope = [&batches](const std::function<void()> &tasks) {
        ++batches;
        tasks();
    };
    auto record = [&ran](const std::string &label) { return [&ran, label] { ran.push_back(label); }; };
    auto handler = std::make_shared<EventHandler>(EventRunner::GetMainEventRunner());
    auto doomed = std::make_shared<EventHandler>(EventRunner::GetMainEventRunner());

    // Sent before any driver is attached: they wait.
    ASSERT_TRUE(handler->PostTask(record("low")));
    ASSERT_TRUE(doomed->PostTask(record("handler gone"), "", 0, Priority::VIP));
    ASSERT_TRUE(handler->SendEvent(InnerEvent::Get(record("vip")), 0, Priority::VIP));
    doomed.reset();
    uint64_t beforeAttach = MainRunnerLastSequence();
    EXPECT_TRUE(MainRunnerHasPendingThrough(beforeAttach));

    WakeCounter counter;
    ASSERT_TRUE(AttachMainRunner([&counter] { counter.Wake(); }));
    EXPECT_FALSE(AttachMainRunner([] {}));
    ASSERT_TRUE(counter.WaitForWakes(1));
    EXPECT_FALSE(RunDueMainTasks(scope));
    EXPECT_EQ(ran, (std::vector<std::string>{"vip", "low"}));
    EXPECT_EQ(batches, 1);
    EXPECT_FALSE(MainRunnerHasPendingThrough(beforeAttach));

    // Wake-ups are coalesced until the driver runs.
    ran.clear();
    handler->PostTask(record("a"));
    handler->PostTask(record("b"));
    ASSERT_TRUE(counter.WaitForWakes(2));
    std::this_thread::sleep_for(20ms);
    EXPECT_EQ(counter.Wakes(), 2);
    EXPECT_FALSE(RunDueMainTasks(scope));
    EXPECT_EQ(ran, (std::vector<std::string>{"a", "b"}));

    // A delayed event wakes the driver from the timer thread once it is due, not before.
    ran.clear();
    auto sent = InnerEvent::Clock::now();
    std::thread sender([&handler, &record] { handler->PostTask(record("delayed"), "", 60); });
    sender.join();
    ASSERT_TRUE(counter.WaitForWakes(3));
    EXPECT_GE(InnerEvent::Clock::now() - sent, 60ms);
    RunDueMainTasks(scope);
    EXPECT_EQ(ran, (std::vector<std::string>{"delayed"}));

    // A backlog runs a bounded batch per call; the driver, told more is due, is not woken meanwhile. A more
    // urgent event sent by a task runs next, ahead of the rest of its batch.
    constexpr int BACKLOG = 300;
    ran.clear();
    handler->PostTask([&handler, &record] {
        handler->PostTask(record("urgent"), "", 0, Priority::VIP);
        record("first")();
    });
    for (int index = 0; index < BACKLOG; ++index) {
        handler->PostTask(record(std::to_string(index)));
    }
    const int wakesBeforeBacklog = counter.Wakes();
    EXPECT_EQ(wakesBeforeBacklog, 4);
    ASSERT_TRUE(RunDueMainTasks(scope));
    EXPECT_LE(ran.size(), 128u);
    ASSERT_GE(ran.size(), 3u);
    EXPECT_EQ((std::vector<std::string>(ran.begin(), ran.begin() + 3)),
              (std::vector<std::string>{"first", "urgent", "0"}));
    handler->PostTask(record("late"));
    while (RunDueMainTasks(scope)) {
    }
    EXPECT_EQ(counter.Wakes(), wakesBeforeBacklog);
    ASSERT_EQ(ran.size(), static_cast<size_t>(BACKLOG + 3));
    EXPECT_EQ(ran[BACKLOG + 1], std::to_string(BACKLOG - 1));
    EXPECT_EQ(ran.back(), "late");
    handler->PostTask(record("after"));
    EXPECT_EQ(counter.Wakes(), wakesBeforeBacklog + 1);
    EXPECT_FALSE(RunDueMainTasks(scope));

    // Senders on several threads at once: no wake-up is lost, every event runs once, each sender's in order.
    constexpr int SENDERS = 4;
    constexpr int EVENTS = 500;
    std::vector<int> next(SENDERS, 0);
    int outOfOrder = 0;
    int sentRan = 0;
    std::vector<std::thread> senders;
    for (int sender = 0; sender < SENDERS; ++sender) {
        senders.emplace_back([&handler, &next, &outOfOrder, &sentRan, sender] {
            for (int index = 0; index < EVENTS; ++index) {
                handler->PostTask([&next, &outOfOrder, &sentRan, sender, index] {
                    outOfOrder += next[sender]++ != index;
                    ++sentRan;
                });
            }
        });
    }
    bool lostWakeUp = false;
    while (sentRan < SENDERS * EVENTS && !lostWakeUp) {
        int seen = counter.Wakes();
        if (!RunDueMainTasks(scope)) {
            lostWakeUp = sentRan < SENDERS * EVENTS && !counter.WaitForWakes(seen + 1);
        }
    }
    for (std::thread &sender : senders) {
        sender.join();
    }
    EXPECT_FALSE(lostWakeUp);
    EXPECT_EQ(next, std::vector<int>(SENDERS, EVENTS));
    EXPECT_EQ(outOfOrder, 0);

    // Detaching drops what waits and refuses what comes later; the driver is never woken again.
    ran.clear();
    int wakesBeforeDetach = counter.Wakes();
    auto payload = std::make_shared<int>(0);
    handler->PostTask([payload] {}, "", 10000);
    DetachMainRunner();
    EXPECT_EQ(payload.use_count(), 1);
    InnerEvent::Pointer late = InnerEvent::Get(record("late"));
    EXPECT_FALSE(handler->SendEvent(late));
    EXPECT_NE(late, nullptr);
    EXPECT_FALSE(RunDueMainTasks(scope));
    EXPECT_EQ(counter.Wakes(), wakesBeforeDetach);
    EXPECT_TRUE(ran.empty());
}
} // namespace
