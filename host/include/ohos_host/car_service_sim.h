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

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "travel_vexar_object_client.h"

// The car service that TravelVexarObjectClient talks to, simulated in this process: what the client members
// record and return, the registered callback record, and the events the car emits on its own threads.
namespace OHOS {
namespace Host {
namespace CarService {
// The client members, one row each in declaration order: a member's number is its row.
constexpr std::array<std::string_view, 11> MEMBERS = {
    "RegisterCarConnectListener",
    "UnRegisterCarConnectListener",
    "StartBindTarget",
    "StopBindTarget",
    "SendControlData",
    "StartSurfaceTransfer",
    "StopSurfaceTransfer",
    "CastOperation",
    "DisconnectDevice",
    "GetDeviceInfo",
    "SendEventTo",
};

// The row of the member named `name`, if there is one.
constexpr std::optional<size_t> FindMember(std::string_view name)
{
    for (size_t row = 0; row < MEMBERS.size(); ++row) {
        if (MEMBERS[row] == name) {
            return row;
        }
    }
    return std::nullopt;
}

// A callable borrowed for the length of one call: unlike std::function it neither copies nor owns the callable,
// so that passing one costs two pointers.
template <typename Signature> class CallableRef;

template <typename Result, typename... Params> class CallableRef<Result(Params...)> {
public:
    CallableRef() = default;
    CallableRef(std::nullptr_t) {}
    template <typename Callable, typename = std::enable_if_t<!std::is_same_v<std::decay_t<Callable>, CallableRef>>>
    CallableRef(const Callable &callable)
        : callable_(&callable), invoke_([](const void *target, Params... params) -> Result {
              return (*static_cast<const Callable *>(target))(std::forward<Params>(params)...);
          })
    {
    }

    explicit operator bool() const
    {
        return invoke_ != nullptr;
    }

    Result operator()(Params... params) const
    {
        return invoke_(callable_, std::forward<Params>(params)...);
    }

private:
    const void *callable_ = nullptr;
    Result (*invoke_)(const void *, Params...) = nullptr;
};

// One argument of a recorded call: an int or enumeration, a string, or a string map copied at call time.
using CallArg = std::variant<int64_t, std::string, std::map<std::string, std::string>>;

struct Call {
    std::string member;
    std::vector<CallArg> args;
};

enum class ParamKind { INTEGER, STRING };

// One callback of the EventListener record; slots are numbered in field order from 0.
struct CallbackSlot {
    std::string name; // C++ name, e.g. "OnBindResult"
    std::vector<ParamKind> params;
};

const std::vector<CallbackSlot> &CallbackSlots();

using EmitArg = std::variant<int32_t, std::string>;

// A callback the car emits by itself: its slot, its arguments (fitting the slot) and when, counted from the
// previous emission of a reaction or from the start of a timeline.
struct TimedEmit {
    size_t slot;
    std::vector<EmitArg> args;
    std::chrono::milliseconds delay;
    // Where the step was given, such as "timeline[3]": named on standard error when the step is skipped.
    std::string what;
};

// When a timeline starts: at once, or when a callback record is registered (at once if one is registered now).
enum class TimelineStart { NOW, AT_REGISTRATION };

// How the car answers the calls of one member: the result it returns instead of the configured one, the
// callbacks it then emits, and how many calls it answers before it is removed (all when empty).
struct Reaction {
    std::optional<int> result;
    std::vector<TimedEmit> emit;
    std::optional<uint32_t> times;
};

// How a timeline ended: callbacks emitted, skipped for want of a registered record, and whether a reset or the
// end of the process stopped it first.
struct PlaybackOutcome {
    size_t emitted = 0;
    size_t skipped = 0;
    bool stopped = false;
};

// The simulated car service, one per process, never destroyed: threads of the module (registration, async
// work) and of the car itself may still call it while the process exits. Every member may be called from any
// thread.
class Service {
public:
    // Settles a call once its delay has passed, under the service lock: gets the result the member returns so
    // far and gives back what it returns.
    using Settle = CallableRef<int(Service &service, int result)>;

    // Builds the arguments of a call for the record; called only while calls are recorded.
    using RecordedArgs = CallableRef<std::vector<CallArg>()>;

    static Service &Get();
    // Records the call of the member in row `member` of MEMBERS with the arguments `args` builds (none when empty),
    // sleeps its delay, then settles it: the result is the member's reaction's result or the configured result, passed
    // through `settle` if given. The reaction's emissions are scheduled as the call returns.
    int Serve(size_t member, RecordedArgs args, Settle settle = nullptr);

    // Forgets calls, results, delays, pending failures, reactions and the registered record, stops every timeline
    // (waiting for a callback being emitted to return), turns recording back on; device information back to "".
    void Reset();
    // Each is false for an unknown member and changes nothing then.
    bool SetResult(std::string_view member, int code);
    bool SetDelay(std::string_view member, std::chrono::milliseconds delay);
    // From now on `reaction` answers the calls of `member`; an empty one removes the reaction.
    bool SetReaction(std::string_view member, std::optional<Reaction> reaction);
    // The next `count` registrations return -1 and register nothing.
    void FailRegistrations(uint32_t count);
    // What GetDeviceInfo writes to its output.
    void SetDeviceInfo(const std::string &info);
    // Whether calls are recorded (the default); a benchmark turns it off so that the record does not grow.
    void SetRecording(bool enabled);
    std::vector<Call> Calls();
    void ClearCalls();
    // Calls of `member` so far; empty for an unknown member.
    std::optional<size_t> CountCalls(std::string_view member);
    std::optional<TravelService::EventListener> Listener();

    // Emits each step at its delay from the start, from the car's own thread; Await tells how it ended.
    class Playback;
    std::shared_ptr<Playback> Play(std::vector<TimedEmit> steps, TimelineStart start);
    // Starts every timeline still waiting for a registration now.
    void StartWaitingTimelines();
    // Blocks until every step of `playback` has been emitted or skipped, or a reset or exit stopped it.
    PlaybackOutcome Await(const std::shared_ptr<Playback> &playback);

    // For Settle functions, which run under the service lock.
    void RegisterLocked(const TravelService::EventListener &listener);
    void UnregisterLocked();
    bool TakeRegistrationFailureLocked();
    const std::string &DeviceInfoLocked() const;

private:
    using Clock = std::chrono::steady_clock;
    struct Scheduled {
        size_t slot;
        std::vector<EmitArg> args;
        std::shared_ptr<Playback> playback;
        std::string what;
    };

    Service() = default;
    static void StopEmittingAtExit();
    void ScheduleLocked(Clock::time_point due, TimedEmit step, const std::shared_ptr<Playback> &playback);
    void StartLocked(const std::shared_ptr<Playback> &playback);
    void StopPlaybacksLocked();
    void EmitLoop();

    std::mutex mutex_;
    // A call as recorded: its member's row rather than its name, so that recording copies no name under the lock.
    struct RecordedCall {
        size_t member;
        std::vector<CallArg> args;
    };
    std::vector<RecordedCall> calls_;
    // Read by Serve without the lock, so that a call builds its recorded arguments before taking it.
    std::atomic<bool> recording_{true};
    // The setting of one member's row in one column, under the lock; false for a name no member has.
    template <typename Value>
    bool SetForMember(std::string_view member, std::array<Value, MEMBERS.size()> &column, Value value);

    // The rows given a result, delay or reaction since the last reset, one bit each: while calls are not
    // recorded, a call of any other row without a settle step is answered 0 without the lock.
    std::atomic<uint32_t> configuredRows_{0};
    static_assert(MEMBERS.size() <= 32, "one bit per member row");
    std::array<int, MEMBERS.size()> results_{};
    std::array<std::chrono::milliseconds, MEMBERS.size()> delays_{};
    std::array<std::optional<Reaction>, MEMBERS.size()> reactions_{};
    uint32_t registrationFailures_ = 0;
    std::string deviceInfo_;
    std::optional<TravelService::EventListener> listener_;
    // Timelines that start at the next registration of a callback record.
    std::vector<std::shared_ptr<Playback>> waitingTimelines_;

    // The car's emitter: one thread, started at the first scheduled emission, stopped at exit.
    std::multimap<Clock::time_point, Scheduled> schedule_;
    std::thread emitter_;
    bool emitting_ = false;
    bool exiting_ = false;
    bool stopsAfterListenerLibrary_ = false;
    std::condition_variable scheduleChanged_;
    std::condition_variable emissionDone_;
    std::condition_variable playbackEnded_;
};

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
