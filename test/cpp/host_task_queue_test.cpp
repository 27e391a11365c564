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

// The event-handler stand-in's task queue: which due event runs next, and events put back after a batch.

#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "event_handler.h"
#include "main_task_queue.h"

namespace {
using namespace OHOS;
using AppExecFwk::InnerEvent;
using Host::TaskQueue;
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
} // namespace
