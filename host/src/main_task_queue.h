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

#ifndef HOST_SRC_MAIN_TASK_QUEUE_H
#define HOST_SRC_MAIN_TASK_QUEUE_H

#include <array>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <vector>

#include "event_queue.h"
#include "inner_event.h"

namespace OHOS {
namespace Host {
// Events of the main runner in the order they are to run: an event falls due at its handle time; among due
// events the lower priority value runs first, then the one sent first. Not synchronised: the runner locks it.
// Due events wait in one first-in first-out line per priority, so that queueing one allocates nothing but now
// and then a block of its line; delayed events wait apart until they fall due.
class TaskQueue {
public:
    using Event = AppExecFwk::InnerEvent;
    using Priority = AppExecFwk::EventQueue::Priority;
    using TimePoint = Event::TimePoint;

    struct Entry {
        Priority priority;
        uint64_t sequence;
        Event::Pointer event;
    };

    // Queues `event`, due at its handle time, and returns its sequence number, counting from 1.
    uint64_t Push(Event::Pointer event, Priority priority, TimePoint now);
    // Puts back an entry taken by PopDue and not run, in its old place.
    void Requeue(Entry entry);
    // Removes and returns the entry to run next among those due at `now`; none if nothing is due.
    std::optional<Entry> PopDue(TimePoint now);
    bool HasDue(TimePoint now) const;
    // Whether a delayed event has fallen due at `now` and still waits apart.
    bool HasDelayedDue(TimePoint now) const;
    // The earliest handle time of the events not yet due at `now`.
    std::optional<TimePoint> NextDueAfter(TimePoint now) const;
    uint64_t LastSequence() const;
    // How many events are queued, due or delayed.
    size_t Size() const;
    // Whether an event numbered `sequence` or lower is still queued.
    bool HasPendingThrough(uint64_t sequence) const;
    // Removes every event.
    std::vector<Event::Pointer> TakeAll();

private:
    static constexpr size_t PRIORITIES = static_cast<size_t>(Priority::IDLE) + 1;

    void InsertDue(Entry entry);
    void PromoteDue(TimePoint now);

    std::multimap<TimePoint, Entry> waiting_;
    std::array<std::deque<Entry>, PRIORITIES> due_;
    uint64_t lastSequence_ = 0;
    size_t size_ = 0;
};
} // namespace Host
} // namespace OHOS

#endif // HOST_SRC_MAIN_TASK_QUEUE_H
