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

#include "main_task_queue.h"

namespace OHOS {
namespace Host {
uint64_t TaskQueue::Push(Event::Pointer event, Priority priority)
{
    uint64_t sequence = ++lastSequence_;
    TimePoint handleTime = event->GetHandleTime();
    waiting_.emplace(handleTime, Entry{{static_cast<uint32_t>(priority), sequence}, std::move(event)});
    pending_.insert(sequence);
    return sequence;
}

void TaskQueue::PromoteDue(TimePoint now)
{
    while (!waiting_.empty() && waiting_.begin()->first <= now) {
        Entry &entry = waiting_.begin()->second;
        due_.emplace(entry.order, std::move(entry.event));
        waiting_.erase(waiting_.begin());
    }
}

TaskQueue::Event::Pointer TaskQueue::PopDue(TimePoint now)
{
    PromoteDue(now);
    if (due_.empty()) {
        return Event::Pointer(nullptr, nullptr);
    }
    auto next = due_.begin();
    Event::Pointer event = std::move(next->second);
    pending_.erase(next->first.second);
    due_.erase(next);
    return event;
}

bool TaskQueue::HasDue(TimePoint now) const
{
    return !due_.empty() || (!waiting_.empty() && waiting_.begin()->first <= now);
}

std::optional<TaskQueue::TimePoint> TaskQueue::NextDueAfter(TimePoint now) const
{
    auto next = waiting_.upper_bound(now);
    if (next == waiting_.end()) {
        return std::nullopt;
    }
    return next->first;
}

uint64_t TaskQueue::LastSequence() const
{
    return lastSequence_;
}

bool TaskQueue::HasPendingThrough(uint64_t sequence) const
{
    return !pending_.empty() && *pending_.begin() <= sequence;
}

std::vector<TaskQueue::Event::Pointer> TaskQueue::TakeAll()
{
    std::vector<Event::Pointer> events;
    for (auto &entry : due_) {
        events.push_back(std::move(entry.second));
    }
    for (auto &entry : waiting_) {
        events.push_back(std::move(entry.second.event));
    }
    due_.clear();
    waiting_.clear();
    pending_.clear();
    return events;
}
} // namespace Host
} // namespace OHOS
