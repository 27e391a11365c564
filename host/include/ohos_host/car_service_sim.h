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

#ifndef HOST_INCLUDE_OHOS_HOST_CAR_SERVICE_SIM_H
#define HOST_INCLUDE_OHOS_HOST_CAR_SERVICE_SIM_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "travel_vexar_object_client.h"

// Control of the car service that TravelVexarObjectClient talks to, simulated in this process. Every function
// may be called from any thread.
namespace OHOS {
namespace Host {
namespace CarService {
// Names of the client members, in declaration order.
const std::vector<std::string> &MemberNames();

// One argument of a recorded call: an int or enumeration, a string, or a string map copied at call time.
using CallArg = std::variant<int64_t, std::string, std::map<std::string, std::string>>;

struct Call {
    std::string member;
    std::vector<CallArg> args;
};

// Forgets calls, results, delays, pending failures and the registered listener; device information back to "".
void Reset();
// What `member` returns from now on (default 0). False for an unknown member.
bool SetResult(const std::string &member, int code);
// How long `member` sleeps on its calling thread before it returns. False for an unknown member.
bool SetDelay(const std::string &member, std::chrono::milliseconds delay);
// The next `count` registrations return -1 and register nothing.
void FailRegistrations(uint32_t count);
// What GetDeviceInfo writes to its output.
void SetDeviceInfo(const std::string &info);
std::vector<Call> Calls();
void ClearCalls();
// Calls of `member` so far; empty for an unknown member.
std::optional<size_t> CountCalls(const std::string &member);
bool IsRegistered();

enum class ParamKind { INTEGER, STRING };

// One callback of the EventListener record; slots are numbered in field order from 0.
struct CallbackSlot {
    std::string name; // C++ name, e.g. "OnBindResult"
    std::vector<ParamKind> params;
};

const std::vector<CallbackSlot> &CallbackSlots();

using EmitArg = std::variant<int32_t, std::string>;

// One callback of the listener registered when it was prepared, with its arguments.
class Emission {
public:
    // Calls the callback `count` times in all, spread over min(count, threads) service threads running at once;
    // returns once every call has returned. The calling thread never runs the callback itself. With
    // `sequenceArg`, the integer argument at that index is replaced by the number of the call, 0 to count - 1,
    // in the order the calls start across all threads.
    void Run(size_t count, size_t threads, std::optional<size_t> sequenceArg = std::nullopt) const;
    // Whether the argument at `index` is an integer, which Run can number.
    bool HasIntegerArg(size_t index) const;

private:
    friend std::optional<Emission> PrepareEmission(size_t slot, std::vector<EmitArg> args, std::string &error);
    Emission(const TravelService::EventListener &listener, size_t slot, std::vector<EmitArg> args);

    TravelService::EventListener listener_;
    size_t slot_;
    std::vector<EmitArg> args_;
};

// Copies the registered listener for a call of `slot` with `args`. Empty, with `error` set, if the slot does not
// exist, no listener is registered, its callback for the slot is null, or `args` do not fit the slot.
std::optional<Emission> PrepareEmission(size_t slot, std::vector<EmitArg> args, std::string &error);
} // namespace CarService
} // namespace Host
} // namespace OHOS

#endif // HOST_INCLUDE_OHOS_HOST_CAR_SERVICE_SIM_H
