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

#include <algorithm>
#include <climits>
#include <memory>

#include "bindings.h"
#include "napi_support.h"
#include "ohos_host/car_service_sim.h"

namespace OHOS {
namespace Host {
namespace Addon {
namespace {
namespace Car = CarService;

constexpr int64_t MAX_DELAY_MS = 3600000;
constexpr int64_t MAX_EMIT_COUNT = 10000000;
constexpr int64_t MAX_EMIT_THREADS = 256;
constexpr int64_t MAX_EMIT_ARGS = 4;

std::string ToMember(napi_env env, napi_value value)
{
    std::string member = ToStdString(env, value, "member");
    const std::vector<std::string> &names = Car::MemberNames();
    if (std::find(names.begin(), names.end(), member) == names.end()) {
        throw JsError("unknown client member " + member);
    }
    return member;
}

napi_value ToJs(napi_env env, const Car::CallArg &arg)
{
    if (const auto *number = std::get_if<int64_t>(&arg)) {
        return MakeNumber(env, static_cast<double>(*number));
    }
    if (const auto *text = std::get_if<std::string>(&arg)) {
        return MakeString(env, *text);
    }
    napi_value object = MakeObject(env);
    for (const auto &entry : std::get<std::map<std::string, std::string>>(arg)) {
        Check(env, napi_set_property(env, object, MakeString(env, entry.first), MakeString(env, entry.second)));
    }
    return object;
}

// A callback named by its C++ name or given by its slot number.
size_t ToSlot(napi_env env, napi_value value)
{
    const std::vector<Car::CallbackSlot> &slots = Car::CallbackSlots();
    if (TypeOf(env, value) != napi_string) {
        return static_cast<size_t>(ToInteger(env, value, "callback", 0, static_cast<int64_t>(slots.size()) - 1));
    }
    std::string name = ToStdString(env, value, "callback");
    auto found = std::find_if(slots.begin(), slots.end(), [&name](const auto &slot) { return slot.name == name; });
    if (found == slots.end()) {
        throw JsError("unknown callback " + name);
    }
    return static_cast<size_t>(found - slots.begin());
}

// Converts JS values to the parameter types of the slot: strings must be strings, ints numbers taken as ToInt32.
Car::Emission ToEmission(napi_env env, napi_value callback, napi_value argsArray)
{
    size_t slot = ToSlot(env, callback);
    const Car::CallbackSlot &signature = Car::CallbackSlots()[slot];
    std::vector<napi_value> items = ToArray(env, argsArray, "arguments");
    if (items.size() != signature.params.size()) {
        throw JsError(signature.name + " takes " + std::to_string(signature.params.size()) + " arguments, got " +
                      std::to_string(items.size()));
    }
    std::vector<Car::EmitArg> args;
    for (size_t index = 0; index < items.size(); ++index) {
        std::string what = signature.name + " argument " + std::to_string(index);
        if (signature.params[index] == Car::ParamKind::INTEGER) {
            args.emplace_back(ToInt32(env, items[index], what));
        } else {
            args.emplace_back(ToStdString(env, items[index], what));
        }
    }
    std::string error;
    std::optional<Car::Emission> emission = Car::PrepareEmission(slot, std::move(args), error);
    if (!emission) {
        throw JsError(error);
    }
    return *emission;
}

napi_value Reset(const CallArgs &args)
{
    Car::Reset();
    return Undefined(args.Env());
}

napi_value SetResult(const CallArgs &args)
{
    napi_env env = args.Env();
    Car::SetResult(ToMember(env, args.At(0)), static_cast<int>(ToInteger(env, args.At(1), "code", INT_MIN, INT_MAX)));
    return Undefined(env);
}

napi_value SetDelay(const CallArgs &args)
{
    napi_env env = args.Env();
    Car::SetDelay(ToMember(env, args.At(0)),
                  std::chrono::milliseconds(ToInteger(env, args.At(1), "delay", 0, MAX_DELAY_MS)));
    return Undefined(env);
}

napi_value FailRegistrations(const CallArgs &args)
{
    napi_env env = args.Env();
    Car::FailRegistrations(static_cast<uint32_t>(ToInteger(env, args.At(0), "count", 0, UINT32_MAX)));
    return Undefined(env);
}

napi_value SetDeviceInfo(const CallArgs &args)
{
    napi_env env = args.Env();
    Car::SetDeviceInfo(ToStdString(env, args.At(0), "device information"));
    return Undefined(env);
}

napi_value Calls(const CallArgs &args)
{
    napi_env env = args.Env();
    std::vector<napi_value> calls;
    for (const Car::Call &call : Car::Calls()) {
        std::vector<napi_value> callArgs;
        for (const Car::CallArg &arg : call.args) {
            callArgs.push_back(ToJs(env, arg));
        }
        napi_value record = MakeObject(env);
        SetProperty(env, record, "member", MakeString(env, call.member));
        SetProperty(env, record, "args", MakeArray(env, callArgs));
        calls.push_back(record);
    }
    return MakeArray(env, calls);
}

napi_value ClearCalls(const CallArgs &args)
{
    Car::ClearCalls();
    return Undefined(args.Env());
}

napi_value CallCount(const CallArgs &args)
{
    napi_env env = args.Env();
    return MakeNumber(env, static_cast<double>(Car::CountCalls(ToMember(env, args.At(0))).value_or(0)));
}

napi_value IsRegistered(const CallArgs &args)
{
    return MakeBool(args.Env(), Car::IsRegistered());
}

napi_value Emit(const CallArgs &args)
{
    napi_env env = args.Env();
    ToEmission(env, args.At(0), args.At(1)).Run(1, 1);
    return Undefined(env);
}

// Background run of emitMany: the calls run off the script thread, the promise settles on it.
struct EmitManyJob {
    EmitManyJob(Car::Emission runEmission, size_t runCount, size_t runThreads, std::optional<size_t> runSequenceArg)
        : emission(std::move(runEmission)), count(runCount), threads(runThreads), sequenceArg(runSequenceArg)
    {
    }

    Car::Emission emission;
    size_t count;
    size_t threads;
    std::optional<size_t> sequenceArg;
    napi_deferred deferred = nullptr;
    napi_async_work work = nullptr;
    std::string failure;

    static void Execute(napi_env, void *data)
    {
        auto *job = static_cast<EmitManyJob *>(data);
        try {
            job->emission.Run(job->count, job->threads, job->sequenceArg);
        } catch (const std::exception &error) {
            job->failure = error.what();
        }
    }

    static void Complete(napi_env env, napi_status status, void *data)
    {
        std::unique_ptr<EmitManyJob> job(static_cast<EmitManyJob *>(data));
        napi_delete_async_work(env, job->work);
        if (status == napi_ok && job->failure.empty()) {
            napi_value undefined = nullptr;
            napi_get_undefined(env, &undefined);
            napi_resolve_deferred(env, job->deferred, undefined);
            return;
        }
        std::string message = "emitMany failed: " + (job->failure.empty() ? "cancelled" : job->failure);
        napi_value text = nullptr;
        napi_value error = nullptr;
        napi_create_string_utf8(env, message.c_str(), message.size(), &text);
        napi_create_error(env, nullptr, text, &error);
        napi_reject_deferred(env, job->deferred, error);
    }
};

napi_value EmitMany(const CallArgs &args)
{
    napi_env env = args.Env();
    Car::Emission emission = ToEmission(env, args.At(0), args.At(1));
    auto count = static_cast<size_t>(ToInteger(env, args.At(2), "count", 0, MAX_EMIT_COUNT));
    auto threads = static_cast<size_t>(ToInteger(env, args.At(3), "threads", 1, MAX_EMIT_THREADS));
    std::optional<size_t> sequenceArg;
    if (TypeOf(env, args.At(4)) != napi_undefined) {
        sequenceArg = static_cast<size_t>(ToInteger(env, args.At(4), "sequenceArg", 0, MAX_EMIT_ARGS));
        if (!emission.HasIntegerArg(*sequenceArg)) {
            throw JsError("sequenceArg must name an integer argument of the callback");
        }
    }
    auto job = std::make_unique<EmitManyJob>(std::move(emission), count, threads, sequenceArg);
    napi_value promise = QueuePromisedWork(env, MakeString(env, "emitMany"), EmitManyJob::Execute,
                                           EmitManyJob::Complete, job.get(), job->deferred, job->work);
    job.release();
    return promise;
}
} // namespace

void DefineCarServiceFunctions(napi_env env, napi_value exports)
{
    DefineFunction(env, exports, "carReset", Export<Reset>);
    DefineFunction(env, exports, "carSetResult", Export<SetResult>);
    DefineFunction(env, exports, "carSetDelay", Export<SetDelay>);
    DefineFunction(env, exports, "carFailRegistrations", Export<FailRegistrations>);
    DefineFunction(env, exports, "carSetDeviceInfo", Export<SetDeviceInfo>);
    DefineFunction(env, exports, "carCalls", Export<Calls>);
    DefineFunction(env, exports, "carClearCalls", Export<ClearCalls>);
    DefineFunction(env, exports, "carCallCount", Export<CallCount>);
    DefineFunction(env, exports, "carIsRegistered", Export<IsRegistered>);
    DefineFunction(env, exports, "carEmit", Export<Emit>);
    DefineFunction(env, exports, "carEmitMany", Export<EmitMany>);
}
} // namespace Addon
} // namespace Host
} // namespace OHOS
