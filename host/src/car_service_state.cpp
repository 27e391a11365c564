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

// The simulated car service: its state, the client members' record of calls, and the car's own emitter thread
// that runs reactions and timelines.

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "ohos_host/car_service_sim.h"

namespace OHOS {
namespace Host {
namespace CarService {
namespace {
using TravelService::EventListener;

int32_t IntArg(const std::vector<EmitArg> &args, size_t index)
{
    return std::get<int32_t>(args[index]);
}

const std::string &StringArg(const std::vector<EmitArg> &args, size_t index)
{
    return std::get<std::string>(args[index]);
}

// How to test for and call one callback of the listener record.
struct SlotBinding {
    CallbackSlot slot;
    bool (*isSet)(const EventListener &listener);
    void (*invoke)(const EventListener &listener, const std::vector<EmitArg> &args);
};

constexpr ParamKind INTEGER = ParamKind::INTEGER;
constexpr ParamKind STRING = ParamKind::STRING;

// Never destroyed, like the service: the car's threads may emit while the process exits.
const std::vector<SlotBinding> &SlotBindings()
{
    static const auto *bindings = new std::vector<SlotBinding>{
        {{"OnBindResult", {STRING, INTEGER, INTEGER, STRING}},
         [](const EventListener &l) { return l.onBindResult != nullptr; },
         [](const EventListener &l, const std::vector<EmitArg> &a) {
             l.onBindResult(StringArg(a, 0), IntArg(a, 1), IntArg(a, 2), StringArg(a, 3));
         }},
        {{"OnDataReceive", {INTEGER, STRING}},
         [](const EventListener &l) { return l.onDataReceive != nullptr; },
         [](const EventListener &l, const std::vector<EmitArg> &a) { l.onDataReceive(IntArg(a, 0), StringArg(a, 1)); }},
        {{"OnDeviceStateChange", {INTEGER, STRING}},
         [](const EventListener &l) { return l.onDeviceStateChange != nullptr; },
         [](const EventListener &l, const std::vector<EmitArg> &a) {
             l.onDeviceStateChange(IntArg(a, 0), StringArg(a, 1));
         }},
        {{"OnDeviceChange", {INTEGER}},
         [](const EventListener &l) { return l.onDeviceChange != nullptr; },
         [](const EventListener &l, const std::vector<EmitArg> &a) { l.onDeviceChange(IntArg(a, 0)); }},
        {{"OnDeviceServiceStateChange", {STRING, INTEGER, INTEGER}},
         [](const EventListener &l) { return l.onDeviceServiceStateChange != nullptr; },
         [](const EventListener &l, const std::vector<EmitArg> &a) {
             l.onDeviceServiceStateChange(StringArg(a, 0), IntArg(a, 1), IntArg(a, 2));
         }},
        {{"OnSurfaceTransferOnEvent", {INTEGER, INTEGER, STRING}},
         [](const EventListener &l) { return l.onSurfaceTransferOnEvent != nullptr; },
         [](const EventListener &l, const std::vector<EmitArg> &a) {
             l.onSurfaceTransferOnEvent(IntArg(a, 0), IntArg(a, 1), StringArg(a, 2));
         }},
        {{"OnDisconnectResult", {INTEGER}},
         [](const EventListener &l) { return l.onDisconnectResult != nullptr; },
         [](const EventListener &l, const std::vector<EmitArg> &a) { l.onDisconnectResult(IntArg(a, 0)); }},
    };
    return *bindings;
}

bool ArgsFit(const std::vector<ParamKind> &params, const std::vector<EmitArg> &args)
{
    auto fits = [](ParamKind kind, const EmitArg &arg) {
        return kind == INTEGER ? std::holds_alternative<int32_t>(arg) : std::holds_alternative<std::string>(arg);
    };
    return params.size() == args.size() && std::equal(params.begin(), params.end(), args.begin(), fits);
}

std::string Signature(const CallbackSlot &slot)
{
    std::string signature = slot.name + "(";
    for (size_t i = 0; i < slot.params.size(); ++i) {
        signature += (i == 0 ? "" : ", ") + std::string(slot.params[i] == INTEGER ? "int" : "string");
    }
    return signature + ")";
}
} // namespace

class Service::Playback {
public:
    explicit Playback(std::vector<TimedEmit> timeline) : remaining(timeline.size()), steps(std::move(timeline)) {}

    size_t remaining;
    PlaybackOutcome outcome;
    // Until the timeline starts.
    std::vector<TimedEmit> steps;
};

const std::vector<CallbackSlot> &CallbackSlots()
{
    static const auto *slots = new std::vector<CallbackSlot>([] {
        std::vector<CallbackSlot> collected;
        for (const SlotBinding &binding : SlotBindings()) {
            collected.push_back(binding.slot);
        }
        return collected;
    }());
    return *slots;
}

Service &Service::Get()
{
    // Never destroyed: the module's threads and the car's may still call in while the process exits.
    static Service *service = new Service();
    return *service;
}

int Service::Serve(size_t row, RecordedArgs args, Settle settle)
{
    // A call racing SetRecording or Reset is recorded or not, as if it came before or after them; either way with
    // its own arguments.
    bool recording = recording_.load();
    if (!recording && !settle && (configuredRows_.load() & (1U << row)) == 0) {
        return 0;
    }
    std::vector<CallArg> recordedArgs = recording && args ? args() : std::vector<CallArg>{};
    std::unique_lock<std::mutex> lock(mutex_);
    if (recording) {
        calls_.push_back({row, std::move(recordedArgs)});
    }
    // A call without delay is recorded and settled under one hold of the lock; a delayed one sleeps unlocked.
    if (std::chrono::milliseconds delay = delays_[row]; delay.count() > 0) {
        lock.unlock();
        std::this_thread::sleep_for(delay);
        lock.lock();
    }
    int result = results_[row];
    std::optional<Reaction> &reaction = reactions_[row];
    if (reaction) {
        result = reaction->result.value_or(result);
        Clock::time_point due = Clock::now();
        for (const TimedEmit &step : reaction->emit) {
            due += step.delay;
            ScheduleLocked(due, step, nullptr);
        }
        if (reaction->times && --*reaction->times == 0) {
            reaction.reset();
        }
    }
    return settle ? settle(*this, result) : result;
}

void Service::Reset()
{
    std::unique_lock<std::mutex> lock(mutex_);
    // Nothing new is scheduled once the reactions are gone; then the callback being emitted, if any, returns.
    reactions_.fill(std::nullopt);
    StopPlaybacksLocked();
    if (std::this_thread::get_id() != emitter_.get_id()) {
        emissionDone_.wait(lock, [this] { return !emitting_; });
    }
    calls_.clear();
    recording_.store(true);
    results_.fill(0);
    delays_.fill(std::chrono::milliseconds(0));
    configuredRows_.store(0);
    registrationFailures_ = 0;
    deviceInfo_.clear();
    listener_.reset();
}

template <typename Value>
bool Service::SetForMember(std::string_view member, std::array<Value, MEMBERS.size()> &column, Value value)
{
    std::optional<size_t> row = FindMember(member);
    if (!row) {
        return false;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    column[*row] = std::move(value);
    configuredRows_.fetch_or(1U << *row);
    return true;
}

bool Service::SetResult(std::string_view member, int code)
{
    return SetForMember(member, results_, code);
}

bool Service::SetDelay(std::string_view member, std::chrono::milliseconds delay)
{
    return SetForMember(member, delays_, delay);
}

bool Service::SetReaction(std::string_view member, std::optional<Reaction> reaction)
{
    return SetForMember(member, reactions_, std::move(reaction));
}

void Service::FailRegistrations(uint32_t count)
{
    std::lock_guard<std::mutex> lock(mutex_);
    registrationFailures_ = count;
}

void Service::SetDeviceInfo(const std::string &info)
{
    std::lock_guard<std::mutex> lock(mutex_);
    deviceInfo_ = info;
}

void Service::SetRecording(bool enabled)
{
    recording_.store(enabled);
}

std::vector<Call> Service::Calls()
{
    std::lock_guard<std::mutex> lock(mutex_);
    std::vector<Call> calls;
    calls.reserve(calls_.size());
    for (const RecordedCall &call : calls_) {
        calls.push_back({std::string(MEMBERS[call.member]), call.args});
    }
    return calls;
}

void Service::ClearCalls()
{
    std::lock_guard<std::mutex> lock(mutex_);
    calls_.clear();
}

std::optional<size_t> Service::CountCalls(std::string_view member)
{
    std::optional<size_t> row = FindMember(member);
    if (!row) {
        return std::nullopt;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    return static_cast<size_t>(
        std::count_if(calls_.begin(), calls_.end(), [&row](const RecordedCall &call) { return call.member == *row; }));
}

std::optional<EventListener> Service::Listener()
{
    std::lock_guard<std::mutex> lock(mutex_);
    return listener_;
}

std::shared_ptr<Service::Playback> Service::Play(std::vector<TimedEmit> steps, TimelineStart start)
{
    auto playback = std::make_shared<Playback>(std::move(steps));
    std::lock_guard<std::mutex> lock(mutex_);
    if (start == TimelineStart::NOW || listener_) {
        StartLocked(playback);
    } else {
        waitingTimelines_.push_back(playback);
    }
    return playback;
}

void Service::StartWaitingTimelines()
{
    std::lock_guard<std::mutex> lock(mutex_);
    for (const std::shared_ptr<Playback> &playback : std::exchange(waitingTimelines_, {})) {
        StartLocked(playback);
    }
}

void Service::StartLocked(const std::shared_ptr<Playback> &playback)
{
    Clock::time_point start = Clock::now();
    for (TimedEmit &step : std::exchange(playback->steps, {})) {
        Clock::time_point due = start + step.delay;
        ScheduleLocked(due, std::move(step), playback);
    }
}

PlaybackOutcome Service::Await(const std::shared_ptr<Playback> &playback)
{
    std::unique_lock<std::mutex> lock(mutex_);
    playbackEnded_.wait(lock, [&playback] { return playback->remaining == 0; });
    return playback->outcome;
}

void Service::RegisterLocked(const EventListener &listener)
{
    listener_ = listener;
    for (const std::shared_ptr<Playback> &playback : std::exchange(waitingTimelines_, {})) {
        StartLocked(playback);
    }
    // A callback record comes from a library whose static objects exist by now: stopping the emitter from here on
    // exit happens before they are destroyed, even when the emitter started before that library was loaded.
    if (!stopsAfterListenerLibrary_) {
        stopsAfterListenerLibrary_ = true;
        std::atexit(StopEmittingAtExit);
    }
}

void Service::UnregisterLocked()
{
    listener_.reset();
}

bool Service::TakeRegistrationFailureLocked()
{
    if (registrationFailures_ == 0) {
        return false;
    }
    --registrationFailures_;
    return true;
}

const std::string &Service::DeviceInfoLocked() const
{
    return deviceInfo_;
}

void Service::ScheduleLocked(Clock::time_point due, TimedEmit step, const std::shared_ptr<Playback> &playback)
{
    if (exiting_) {
        return;
    }
    if (!emitter_.joinable()) {
        emitter_ = std::thread(&Service::EmitLoop, this);
        std::atexit(StopEmittingAtExit);
    }
    schedule_.emplace(due, Scheduled{step.slot, std::move(step.args), playback, std::move(step.what)});
    scheduleChanged_.notify_one();
}

// Ends every timeline still scheduled or waiting to start as stopped; a step being emitted finishes on its own.
void Service::StopPlaybacksLocked()
{
    for (const std::shared_ptr<Playback> &playback : std::exchange(waitingTimelines_, {})) {
        playback->outcome.stopped = true;
        playback->remaining = 0;
    }
    for (auto &entry : schedule_) {
        if (const std::shared_ptr<Playback> &playback = entry.second.playback) {
            playback->outcome.stopped = true;
            playback->remaining = 0;
        }
    }
    schedule_.clear();
    playbackEnded_.notify_all();
}

// Registered when the emitter starts and at the first registration of a callback record, so that it runs before
// the static objects that existed at either point are destroyed: the emitter never calls into destroyed state.
void Service::StopEmittingAtExit()
{
    Service &service = Get();
    {
        std::lock_guard<std::mutex> lock(service.mutex_);
        service.exiting_ = true;
        service.StopPlaybacksLocked();
        service.scheduleChanged_.notify_all();
    }
    if (service.emitter_.joinable()) {
        service.emitter_.join();
    }
}

void Service::EmitLoop()
{
    std::unique_lock<std::mutex> lock(mutex_);
    while (!exiting_) {
        if (schedule_.empty()) {
            scheduleChanged_.wait(lock);
            continue;
        }
        auto next = schedule_.begin();
        // A copy: the entry may be gone by the time the wait reads the time again.
        Clock::time_point due = next->first;
        if (Clock::now() < due) {
            scheduleChanged_.wait_until(lock, due);
            continue;
        }
        Scheduled step = std::move(next->second);
        schedule_.erase(next);
        const SlotBinding &binding = SlotBindings()[step.slot];
        std::optional<EventListener> listener = listener_;
        bool delivered = listener && binding.isSet(*listener);
        emitting_ = true;
        lock.unlock();
        if (delivered) {
            binding.invoke(*listener, step.args);
        } else if (!step.what.empty()) {
            std::fprintf(stderr, "simulated car: %s (%s) skipped: %s\n", step.what.c_str(), binding.slot.name.c_str(),
                         listener ? "the registered callback record lacks it" : "no callback record is registered");
        }
        lock.lock();
        emitting_ = false;
        emissionDone_.notify_all();
        if (step.playback && step.playback->remaining > 0) {
            ++(delivered ? step.playback->outcome.emitted : step.playback->outcome.skipped);
            if (--step.playback->remaining == 0) {
                playbackEnded_.notify_all();
            }
        }
    }
}

Emission::Emission(const EventListener &listener, size_t slot, std::vector<EmitArg> args)
    : listener_(listener), slot_(slot), args_(std::move(args))
{
}

bool Emission::HasIntegerArg(size_t index) const
{
    return index < args_.size() && std::holds_alternative<int32_t>(args_[index]);
}

void Emission::Run(size_t count, size_t threads, std::optional<size_t> sequenceArg) const
{
    size_t workers = std::min(count, std::max<size_t>(threads, 1));
    // The workers start calling only once all of them are running.
    std::mutex gateMutex;
    std::condition_variable gate;
    size_t started = 0;
    auto waitForAll = [&gateMutex, &gate, &started, workers] {
        std::unique_lock<std::mutex> lock(gateMutex);
        if (++started == workers) {
            gate.notify_all();
        }
        gate.wait(lock, [&started, workers] { return started == workers; });
    };
    std::atomic<int32_t> nextSequence{0};
    std::vector<std::thread> pool;
    pool.reserve(workers);
    for (size_t worker = 0; worker < workers; ++worker) {
        size_t share = count / workers + (worker < count % workers ? 1 : 0);
        pool.emplace_back([this, share, sequenceArg, &waitForAll, &nextSequence] {
            waitForAll();
            std::vector<EmitArg> args = args_;
            for (size_t call = 0; call < share; ++call) {
                if (sequenceArg) {
                    args[*sequenceArg] = nextSequence.fetch_add(1);
                }
                SlotBindings()[slot_].invoke(listener_, args);
            }
        });
    }
    for (std::thread &thread : pool) {
        thread.join();
    }
}

std::optional<Emission> PrepareEmission(size_t slot, std::vector<EmitArg> args, std::string &error)
{
    const std::vector<SlotBinding> &bindings = SlotBindings();
    if (slot >= bindings.size()) {
        error = "no callback in slot " + std::to_string(slot) + " (slots are 0 to " +
                std::to_string(bindings.size() - 1) + ")";
        return std::nullopt;
    }
    const SlotBinding &binding = bindings[slot];
    if (!ArgsFit(binding.slot.params, args)) {
        error = "arguments do not fit " + Signature(binding.slot);
        return std::nullopt;
    }
    std::optional<EventListener> listener = Service::Get().Listener();
    if (!listener) {
        error = "no car connect listener is registered";
        return std::nullopt;
    }
    if (!binding.isSet(*listener)) {
        error = binding.slot.name + " is null in the registered listener";
        return std::nullopt;
    }
    return Emission(*listener, slot, std::move(args));
}
} // namespace CarService
} // namespace Host
} // namespace OHOS
