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

#ifndef HOST_INCLUDE_EVENT_QUEUE_H
#define HOST_INCLUDE_EVENT_QUEUE_H

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <mutex>

#include "inner_event.h"

namespace OHOS {
namespace AppExecFwk {
class EventQueue {
public:
    // Lower values run first among events that are due. Older platform releases had no VIP and numbered
    // from IMMEDIATE = 0, so code must use the names, not the numbers.
    enum class Priority : uint32_t {
        VIP = 0,
        IMMEDIATE,
        HIGH,
        LOW,
        IDLE,
    };
};
} // namespace AppExecFwk
} // namespace OHOS

#endif // HOST_INCLUDE_EVENT_QUEUE_H
