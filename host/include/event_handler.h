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

#ifndef HOST_INCLUDE_EVENT_HANDLER_H
#define HOST_INCLUDE_EVENT_HANDLER_H

#include <cstdint>
#include <memory>
#include <string>

#include "event_queue.h"
#include "event_runner.h"
#include "inner_event.h"

namespace OHOS {
namespace AppExecFwk {
// Sends events to a runner. Must be owned by a std::shared_ptr: sending takes shared_from_this(). An event
// whose handler is gone when it falls due is dropped without running.
class EventHandler : public std::enable_shared_from_this<EventHandler> {
public:
    using Callback = InnerEvent::Callback;
    using Priority = EventQueue::Priority;

    explicit EventHandler(const std::shared_ptr<EventRunner> &runner = nullptr);
    virtual ~EventHandler();

    // False, leaving `event` with the caller, for a null event, a handler without runner or a runner that has
    // been shut down. A negative delay counts as none.
    bool SendEvent(InnerEvent::Pointer &event, int64_t delayTime = 0, Priority priority = Priority::LOW);
    bool SendEvent(InnerEvent::Pointer &&event, int64_t delayTime = 0, Priority priority = Priority::LOW);
    bool SendEvent(InnerEvent::Pointer &event, Priority priority);
    bool PostTask(const Callback &callback, const std::string &name = std::string(), int64_t delayTime = 0,
                  Priority priority = Priority::LOW, const Caller &caller = {});

    // Runs `event` on the calling thread: its task if it has one, ProcessEvent otherwise.
    void DistributeEvent(const InnerEvent::Pointer &event);

protected:
    virtual void ProcessEvent(const InnerEvent::Pointer &event);

private:
    std::shared_ptr<EventRunner> eventRunner_;
};
} // namespace AppExecFwk
} // namespace OHOS

#endif // HOST_INCLUDE_EVENT_HANDLER_H
