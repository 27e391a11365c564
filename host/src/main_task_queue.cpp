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

#include <algorithm>

namespace OHOS {
namespace Host {
uint64_t TaskQueue::Push(Event::Pointer event, Priority priority, TimePoint now)
{
    uint64_t sequence = ++lastSequence_;
    ++size_;
    TimePoint handleTime = event->GetHandleTime();
    Entry entry{priority, sequence, std::move(event)};
    if (handleTime <= now) {
        InsertDue(std::move(entry));
    } else {
        waiting_.emplace(handleTime, std::move(entry));
    }
    return sequence;
}

void TaskQueue::Requeue(Entry entry)
{
    ++size_;
    InsertDue(std::move(entry));
}

// Keeps each line in sending order: new events go to the back, a delayed or requeued one to its place.
void TaskQueue::InsertDue(Entry entry)
{
    std::deque<Entry> &line = due_[static_cast<size_t>(entry.priority)];
    if (line.empty() || line.back().sequence < entry.sequence) {
        line.push_back(std::move(entry));
    } else if (line.front().sequence > entry.sequence) {
        line.push_front(std::move(entry));
    } else {
        auto place =
            std::upper_bound(line.begin(), line.end(), entry.sequence,
                             [](uint64_t sequence, const Entry &queued) { return sequence < queued.sequence; });
        line.insert(place, std::move(entry));
    }
}

void TaskQueue::PromoteDue(TimePoint now)
{
    while (HasDelayedDue(now)) {
        InsertDue(std::move(waiting_.begin()->second));
        waiting_.erase(waiting_.begin());
    }
}

std::optional<TaskQueue::Entry> TaskQueue::PopDue(TimePoint now)
{
    PromoteDue(now);
    for (std::deque<Entry> &line : due_) {
        if (!line.empty()) {
            Entry entry = std::move(line.front());
            line.pop_front();
            --size_;
            return entry;
        }
    }
    return std::nullopt;
}

bool TaskQueue::HasDue(TimePoint now) const
{
    return HasDelayedDue(now) ||
           std::any_of(due_.begin(), due_.end(), [](const std::deque<Entry> &line) { return !line.empty(); });
}

bool TaskQueue::HasDelayedDue(TimePoint now) const
{
    return !waiting_.empty() && waiting_.begin()->first <= now;
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

size_t TaskQueue::Size() const
{
    return size_;
}

// Each line is in sending order, so its front is its oldest event; delayed events are few and are looked at
// one by one.
bool TaskQueue::HasPendingThrough(uint64_t sequence) const
{
    auto older = [sequence](const Entry &entry) { return entry.sequence <= sequence; };
    return std::any_of(due_.begin(), due_.end(),
                       [&older](const std::deque<Entry> &line) { return !line.empty() && older(line.front()); }) ||
           std::any_of(waiting_.begin(), waiting_.end(),
                       [&older](const auto &waiting) { return older(waiting.second); });
}

std::vector<TaskQueue::Event::Pointer> TaskQueue::TakeAll()
{
    std::vector<Event::Pointer> events;
    for (std::deque<Entry> &line : due_) {
        for (Entry &entry : line) {
            events.push_back(std::move(entry.event));
        }
        line.clear();
    }
    for (auto &waiting : waiting_) {
        events.push_back(std::move(waiting.second.event));
    }
    waiting_.clear();
    size_ = 0;
    return events;
}
} // namespace Host
} // namespace OHOS
