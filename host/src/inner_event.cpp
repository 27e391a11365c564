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

#include "inner_event.h"

#include <utility>

namespace OHOS {
namespace AppExecFwk {
InnerEvent::InnerEvent(Callback callback, std::string name)
    : taskCallback_(std::move(callback)), taskName_(std::move(name))
{
}

InnerEvent::Pointer InnerEvent::Get(const Callback &callback, const std::string &name, const Caller &caller)
{
    return Get(Callback(callback), name, caller);
}

InnerEvent::Pointer InnerEvent::Get(Callback &&callback, const std::string &name, const Caller &)
{
    if (!callback) {
        return Pointer(nullptr, nullptr);
    }
    return Pointer(new InnerEvent(std::move(callback), name), Drop);
}

void InnerEvent::Drop(InnerEvent *event)
{
    delete event;
}

bool InnerEvent::HasTask() const
{
    return static_cast<bool>(taskCallback_);
}

const InnerEvent::Callback &InnerEvent::GetTaskCallback() const
{
    return taskCallback_;
}

const std::string &InnerEvent::GetTaskName() const
{
    return taskName_;
}

std::shared_ptr<EventHandler> InnerEvent::GetOwner() const
{
    return owner_.lock();
}

void InnerEvent::SetOwner(const std::shared_ptr<EventHandler> &owner)
{
    owner_ = owner;
}

void InnerEvent::SetOwner(std::weak_ptr<EventHandler> owner)
{
    owner_ = std::move(owner);
}

const InnerEvent::TimePoint &InnerEvent::GetHandleTime() const
{
    return handleTime_;
}

void InnerEvent::SetHandleTime(const TimePoint &handleTime)
{
    handleTime_ = handleTime;
}
} // namespace AppExecFwk
} // namespace OHOS
