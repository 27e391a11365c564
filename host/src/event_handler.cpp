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

#include "event_handler.h"

#include <algorithm>

namespace OHOS {
namespace AppExecFwk {
EventHandler::EventHandler(const std::shared_ptr<EventRunner> &runner) : eventRunner_(runner) {}

EventHandler::~EventHandler() = default;

bool EventHandler::SendEvent(InnerEvent::Pointer &event, int64_t delayTime, Priority priority)
{
    if (!event || !eventRunner_) {
        return false;
    }
    // A weak reference is all the event keeps: one count taken instead of a strong one taken and given back.
    event->SetOwner(weak_from_this());
    event->SetHandleTime(InnerEvent::Clock::now() + std::chrono::milliseconds(std::max<int64_t>(delayTime, 0)));
    return eventRunner_->Insert(event, priority);
}

bool EventHandler::SendEvent(InnerEvent::Pointer &&event, int64_t delayTime, Priority priority)
{
    return SendEvent(event, delayTime, priority);
}

bool EventHandler::SendEvent(InnerEvent::Pointer &event, Priority priority)
{
    return SendEvent(event, 0, priority);
}

bool EventHandler::PostTask(const Callback &callback, const std::string &name, int64_t delayTime, Priority priority,
                            const Caller &caller)
{
    return SendEvent(InnerEvent::Get(callback, name, caller), delayTime, priority);
}

void EventHandler::DistributeEvent(const InnerEvent::Pointer &event)
{
    if (event->HasTask()) {
        event->GetTaskCallback()();
    } else {
        ProcessEvent(event);
    }
}

void EventHandler::ProcessEvent(const InnerEvent::Pointer &) {}
} // namespace AppExecFwk
} // namespace OHOS
