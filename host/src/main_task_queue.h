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

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "event_queue.h"
#include "inner_event.h"

namespace OHOS {
namespace Host {
// Events of the main runner in the order they are to run: an event falls due at its handle time; among due
// events the lower priority value runs first, then the one sent first. Not synchronised: the runner locks it.
class TaskQueue {
public:
    using Event = AppExecFwk::InnerEvent;
    using Priority = AppExecFwk::EventQueue::Priority;
    using TimePoint = Event::TimePoint;

    // Queues `event` and returns its sequence number, counting from 1.
    uint64_t Push(Event::Pointer event, Priority priority);
    // Removes and returns the event to run next among those due at `now`; null if none is due.
    Event::Pointer PopDue(TimePoint now);
    bool HasDue(TimePoint now) const;
    // The earliest handle time of the events not yet due at `now`.
    std::optional<TimePoint> NextDueAfter(TimePoint now) const;
    uint64_t LastSequence() const;
    // Whether an event numbered `sequence` or lower is still queued.
    bool HasPendingThrough(uint64_t sequence) const;
    // Removes every event.
    std::vector<Event::Pointer> TakeAll();

private:
    using Order = std::pair<uint32_t, uint64_t>; // priority value, sequence
    struct Entry {
        Order order;
        Event::Pointer event;
    };

    void PromoteDue(TimePoint now);

    std::multimap<TimePoint, Entry> waiting_;
    std::map<Order, Event::Pointer> due_;
    std::set<uint64_t> pending_;
    uint64_t lastSequence_ = 0;
};
} // namespace Host
} // namespace OHOS

#endif // HOST_SRC_MAIN_TASK_QUEUE_H
