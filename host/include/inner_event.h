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

#ifndef HOST_INCLUDE_INNER_EVENT_H
#define HOST_INCLUDE_INNER_EVENT_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <typeinfo>
#include <variant>

#include "nocopyable.h"

namespace OHOS {
namespace AppExecFwk {
class EventHandler;

// Where an event was made. As a defaulted argument it records the call site of the function that takes it.
struct Caller {
    std::string file_;
    int line_;
    std::string func_;

    Caller(std::string file = __builtin_FILE(), int line = __builtin_LINE(), std::string func = __builtin_FUNCTION())
        : file_(std::move(file)), line_(line), func_(std::move(func))
    {
    }
};

class InnerEvent final {
public:
    using Clock = std::chrono::steady_clock;
    using TimePoint = std::chrono::time_point<Clock>;
    using Callback = std::function<void()>;
    using Pointer = std::unique_ptr<InnerEvent, void (*)(InnerEvent *)>;

    // A task event; null if `callback` is empty. The call-site record is taken as the platform takes it, but
    // nothing on the host reads it back, so it is not kept: an event stays one small block.
    static Pointer Get(const Callback &callback, const std::string &name = std::string(), const Caller &caller = {});
    // The same, taking over the callback instead of copying it.
    static Pointer Get(Callback &&callback, const std::string &name = std::string(), const Caller &caller = {});

    bool HasTask() const;
    const Callback &GetTaskCallback() const;
    const std::string &GetTaskName() const;

    // The handler that sent the event, held weakly: null once that handler is gone.
    std::shared_ptr<EventHandler> GetOwner() const;
    void SetOwner(const std::shared_ptr<EventHandler> &owner);
    // Host only: the same from a weak reference, which the handler can give without taking a strong one first.
    void SetOwner(std::weak_ptr<EventHandler> owner);

    const TimePoint &GetHandleTime() const;
    void SetHandleTime(const TimePoint &handleTime);

private:
    InnerEvent(Callback callback, std::string name);
    ~InnerEvent() = default;
    DISALLOW_COPY_AND_MOVE(InnerEvent);

    static void Drop(InnerEvent *event);

    Callback taskCallback_;
    // Events are freed on the main thread from memory that a service thread allocated; glibc returns a block
    // larger than its fast bins to the arena it came from only under that arena's lock, for which the main thread
    // would wait while the service thread allocates its next event. So an event holds no more than it must.
    std::string taskName_;
    std::weak_ptr<EventHandler> owner_;
    TimePoint handleTime_;
};
} // namespace AppExecFwk
} // namespace OHOS

#endif // HOST_INCLUDE_INNER_EVENT_H
