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

#include "car_service_state.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <thread>

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

const std::vector<SlotBinding> &SlotBindings()
{
    // This table and the two below are never destroyed: registration and service threads may still read them
    // while the process runs its static destructors.
    static const std::vector<SlotBinding> &bindings = *new std::vector<SlotBinding>{
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
    return bindings;
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

const std::vector<std::string> &MemberNames()
{
    static const std::vector<std::string> &names = *new std::vector<std::string>{
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
    return names;
}

const std::vector<CallbackSlot> &CallbackSlots()
{
    static const std::vector<CallbackSlot> &slots = *new std::vector<CallbackSlot>([] {
        std::vector<CallbackSlot> collected;
        for (const SlotBinding &binding : SlotBindings()) {
            collected.push_back(binding.slot);
        }
        return collected;
    }());
    return slots;
}

ServiceState &ServiceState::Get()
{
    // Never destroyed: service threads may still call in while the process exits.
    static ServiceState *state = new ServiceState();
    return *state;
}

std::optional<size_t> ServiceState::FindMember(const std::string &name)
{
    const std::vector<std::string> &names = MemberNames();
    auto found = std::find(names.begin(), names.end(), name);
    if (found == names.end()) {
        return std::nullopt;
    }
    return static_cast<size_t>(found - names.begin());
}

int ServiceState::Serve(Member member, std::vector<CallArg> args, const Settle &settle)
{
    size_t index = static_cast<size_t>(member);
    std::chrono::milliseconds delay;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        calls_.push_back({MemberNames()[index], std::move(args)});
        delay = delays_[index];
    }
    if (delay.count() > 0) {
        std::this_thread::sleep_for(delay);
    }
    std::lock_guard<std::mutex> lock(mutex_);
    return settle ? settle(*this, results_[index]) : results_[index];
}

void ServiceState::Reset()
{
    std::lock_guard<std::mutex> lock(mutex_);
    calls_.clear();
    results_.fill(0);
    delays_.fill(std::chrono::milliseconds(0));
    registrationFailures_ = 0;
    deviceInfo_.clear();
    listener_.reset();
}

bool ServiceState::SetResult(const std::string &member, int code)
{
    std::optional<size_t> index = FindMember(member);
    if (!index) {
        return false;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    results_[*index] = code;
    return true;
}

bool ServiceState::SetDelay(const std::string &member, std::chrono::milliseconds delay)
{
    std::optional<size_t> index = FindMember(member);
    if (!index) {
        return false;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    delays_[*index] = delay;
    return true;
}

void ServiceState::FailRegistrations(uint32_t count)
{
    std::lock_guard<std::mutex> lock(mutex_);
    registrationFailures_ = count;
}

void ServiceState::SetDeviceInfo(const std::string &info)
{
    std::lock_guard<std::mutex> lock(mutex_);
    deviceInfo_ = info;
}

std::vector<Call> ServiceState::Calls()
{
    std::lock_guard<std::mutex> lock(mutex_);
    return calls_;
}

void ServiceState::ClearCalls()
{
    std::lock_guard<std::mutex> lock(mutex_);
    calls_.clear();
}

std::optional<size_t> ServiceState::CountCalls(const std::string &member)
{
    if (!FindMember(member)) {
        return std::nullopt;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    return static_cast<size_t>(
        std::count_if(calls_.begin(), calls_.end(), [&member](const Call &call) { return call.member == member; }));
}

std::optional<EventListener> ServiceState::Listener()
{
    std::lock_guard<std::mutex> lock(mutex_);
    return listener_;
}

void ServiceState::RegisterLocked(const EventListener &listener)
{
    listener_ = listener;
}

void ServiceState::UnregisterLocked()
{
    listener_.reset();
}

bool ServiceState::TakeRegistrationFailureLocked()
{
    if (registrationFailures_ == 0) {
        return false;
    }
    --registrationFailures_;
    return true;
}

const std::string &ServiceState::DeviceInfoLocked() const
{
    return deviceInfo_;
}

void Reset()
{
    ServiceState::Get().Reset();
}

bool SetResult(const std::string &member, int code)
{
    return ServiceState::Get().SetResult(member, code);
}

bool SetDelay(const std::string &member, std::chrono::milliseconds delay)
{
    return ServiceState::Get().SetDelay(member, delay);
}

void FailRegistrations(uint32_t count)
{
    ServiceState::Get().FailRegistrations(count);
}

void SetDeviceInfo(const std::string &info)
{
    ServiceState::Get().SetDeviceInfo(info);
}

std::vector<Call> Calls()
{
    return ServiceState::Get().Calls();
}

void ClearCalls()
{
    ServiceState::Get().ClearCalls();
}

std::optional<size_t> CountCalls(const std::string &member)
{
    return ServiceState::Get().CountCalls(member);
}

bool IsRegistered()
{
    return ServiceState::Get().Listener().has_value();
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
    std::optional<EventListener> listener = ServiceState::Get().Listener();
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
