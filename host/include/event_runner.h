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

#ifndef HOST_INCLUDE_EVENT_RUNNER_H
#define HOST_INCLUDE_EVENT_RUNNER_H

#include <atomic>
#include <memory>

#include "event_queue.h"
#include "inner_event.h"
#include "nocopyable.h"

namespace OHOS {
namespace AppExecFwk {
// The host has a single runner: the main one. Its events run on the thread of the script engine that the
// host harness attached it to; events sent before that wait for it.
class EventRunner final {
public:
    static std::shared_ptr<EventRunner> GetMainEventRunner();
    ~EventRunner() = default;

private:
    friend class EventHandler;
    EventRunner() = default;
    DISALLOW_COPY_AND_MOVE(EventRunner);

    // Takes `event` (handle time and owner already set). False, leaving `event` alone, once the runner has
    // been shut down with its environment.
    bool Insert(InnerEvent::Pointer &event, EventQueue::Priority priority);
};
} // namespace AppExecFwk
} // namespace OHOS

#endif // HOST_INCLUDE_EVENT_RUNNER_H
