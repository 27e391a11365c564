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

// Script functions of the simulated car service: what it records and returns, the callbacks it emits when told,
// and the reactions and timelines with which it answers by itself.

#include <algorithm>
#include <climits>
#include <initializer_list>
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

Car::Service &Service()
{
    return Car::Service::Get();
}

// `name` of a field within `base`, as a scenario names it: "timeline[3]" and "callback" give
// "timeline[3].callback".
std::string Field(const std::string &base, const std::string &name)
{
    return base.empty() ? name : base + "." + name;
}

std::string Item(const std::string &base, size_t index)
{
    return base + "[" + std::to_string(index) + "]";
}

std::string CheckedMember(const std::string &member, const std::string &what)
{
    if (!Car::FindMember(member)) {
        throw JsError(what + ": no client member is named " + member);
    }
    return member;
}

std::string ToMember(napi_env env, napi_value value)
{
    return CheckedMember(ToStdString(env, value, "member"), "member");
}

void ExpectObject(napi_env env, napi_value value, const std::string &what)
{
    bool isArray = false;
    Check(env, napi_is_array(env, value, &isArray));
    if (TypeOf(env, value) != napi_object || isArray) {
        throw JsError(what + " must be an object");
    }
}

std::vector<std::string> Keys(napi_env env, napi_value object)
{
    napi_value names = nullptr;
    Check(env, napi_get_property_names(env, object, &names));
    std::vector<std::string> keys;
    for (napi_value name : ToArray(env, names, "property names")) {
        keys.push_back(ToStdString(env, name, "property name"));
    }
    return keys;
}

// A misspelt field would otherwise be ignored without a word.
void RejectUnknownKeys(napi_env env, napi_value object, const std::string &what,
                       std::initializer_list<std::string> known)
{
    for (const std::string &key : Keys(env, object)) {
        if (std::find(known.begin(), known.end(), key) == known.end()) {
            std::string fields;
            for (const std::string &name : known) {
                fields += (fields.empty() ? "" : ", ") + name;
            }
            throw JsError(Field(what, key) + " is not a field here (" + fields + ")");
        }
    }
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
size_t ToSlot(napi_env env, napi_value value, const std::string &what)
{
    const std::vector<Car::CallbackSlot> &slots = Car::CallbackSlots();
    napi_valuetype type = TypeOf(env, value);
    if (type == napi_number) {
        return static_cast<size_t>(ToInteger(env, value, what, 0, static_cast<int64_t>(slots.size()) - 1));
    }
    if (type != napi_string) {
        throw JsError(what + " must be a callback's name, such as OnBindResult, or its slot number");
    }
    std::string name = ToStdString(env, value, what);
    auto found = std::find_if(slots.begin(), slots.end(), [&name](const auto &slot) { return slot.name == name; });
    if (found == slots.end()) {
        throw JsError(what + ": no callback is named " + name);
    }
    return static_cast<size_t>(found - slots.begin());
}

// Converts JS values to the parameter types of the slot: strings must be strings, ints numbers taken as ToInt32.
// Errors name the fields under `base`.
Car::TimedEmit ToCallbackArgs(napi_env env, napi_value callback, napi_value argsArray, const std::string &base)
{
    size_t slot = ToSlot(env, callback, Field(base, "callback"));
    const Car::CallbackSlot &signature = Car::CallbackSlots()[slot];
    std::string argsField = Field(base, "args");
    std::vector<napi_value> items = ToArray(env, argsArray, argsField);
    if (items.size() != signature.params.size()) {
        throw JsError(argsField + ": " + signature.name + " takes " + std::to_string(signature.params.size()) +
                      " arguments, got " + std::to_string(items.size()));
    }
    std::vector<Car::EmitArg> args;
    for (size_t index = 0; index < items.size(); ++index) {
        if (signature.params[index] == Car::ParamKind::INTEGER) {
            args.emplace_back(ToInt32(env, items[index], Item(argsField, index)));
        } else {
            args.emplace_back(ToStdString(env, items[index], Item(argsField, index)));
        }
    }
    return {slot, std::move(args), std::chrono::milliseconds(0), std::string()};
}

Car::Emission ToEmission(napi_env env, napi_value callback, napi_value argsArray)
{
    Car::TimedEmit call = ToCallbackArgs(env, callback, argsArray, "");
    std::string error;
    std::optional<Car::Emission> emission = Car::PrepareEmission(call.slot, std::move(call.args), error);
    if (!emission) {
        throw JsError(error);
    }
    return *emission;
}

// { callback, args, <delayKey> } of a reaction's emit list or of a timeline; args default to [], the delay to 0.
Car::TimedEmit ToTimedEmit(napi_env env, napi_value step, const std::string &what, const char *delayKey)
{
    ExpectObject(env, step, what);
    RejectUnknownKeys(env, step, what, {"callback", "args", delayKey});
    napi_value args = OptionalProperty(env, step, "args");
    napi_value callback = nullptr;
    Check(env, napi_get_named_property(env, step, "callback", &callback));
    Car::TimedEmit timed = ToCallbackArgs(env, callback, args != nullptr ? args : MakeArray(env, {}), what);
    if (napi_value delay = OptionalProperty(env, step, delayKey)) {
        timed.delay = std::chrono::milliseconds(ToInteger(env, delay, Field(what, delayKey), 0, MAX_DELAY_MS));
    }
    timed.what = what;
    return timed;
}

// A reaction object, or null for none.
std::optional<Car::Reaction> ToReaction(napi_env env, napi_value value, const std::string &what)
{
    if (TypeOf(env, value) == napi_null) {
        return std::nullopt;
    }
    ExpectObject(env, value, what);
    RejectUnknownKeys(env, value, what, {"result", "emit", "times"});
    Car::Reaction reaction;
    if (napi_value result = OptionalProperty(env, value, "result")) {
        reaction.result = static_cast<int>(ToInteger(env, result, Field(what, "result"), INT_MIN, INT_MAX));
    }
    if (napi_value emit = OptionalProperty(env, value, "emit")) {
        std::string emitField = Field(what, "emit");
        std::vector<napi_value> steps = ToArray(env, emit, emitField);
        for (size_t index = 0; index < steps.size(); ++index) {
            reaction.emit.push_back(ToTimedEmit(env, steps[index], Item(emitField, index), "delayMs"));
        }
    }
    if (napi_value times = OptionalProperty(env, value, "times")) {
        reaction.times = static_cast<uint32_t>(ToInteger(env, times, Field(what, "times"), 1, UINT32_MAX));
    }
    return reaction;
}

napi_value Reset(const CallArgs &args)
{
    Service().Reset();
    return Undefined(args.Env());
}

napi_value SetResult(const CallArgs &args)
{
    napi_env env = args.Env();
    Service().SetResult(ToMember(env, args.At(0)),
                        static_cast<int>(ToInteger(env, args.At(1), "code", INT_MIN, INT_MAX)));
    return Undefined(env);
}

napi_value SetDelay(const CallArgs &args)
{
    napi_env env = args.Env();
    Service().SetDelay(ToMember(env, args.At(0)),
                       std::chrono::milliseconds(ToInteger(env, args.At(1), "delay", 0, MAX_DELAY_MS)));
    return Undefined(env);
}

napi_value OnCall(const CallArgs &args)
{
    napi_env env = args.Env();
    std::string member = ToMember(env, args.At(0));
    Service().SetReaction(member, ToReaction(env, args.At(1), "reaction"));
    return Undefined(env);
}

napi_value FailRegistrations(const CallArgs &args)
{
    napi_env env = args.Env();
    Service().FailRegistrations(static_cast<uint32_t>(ToInteger(env, args.At(0), "count", 0, UINT32_MAX)));
    return Undefined(env);
}

napi_value SetDeviceInfo(const CallArgs &args)
{
    napi_env env = args.Env();
    Service().SetDeviceInfo(ToStdString(env, args.At(0), "device information"));
    return Undefined(env);
}

napi_value SetRecording(const CallArgs &args)
{
    napi_env env = args.Env();
    Service().SetRecording(ToBool(env, args.At(0), "enabled"));
    return Undefined(env);
}

napi_value Calls(const CallArgs &args)
{
    napi_env env = args.Env();
    std::vector<napi_value> calls;
    for (const Car::Call &call : Service().Calls()) {
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
    Service().ClearCalls();
    return Undefined(args.Env());
}

napi_value CallCount(const CallArgs &args)
{
    napi_env env = args.Env();
    return MakeNumber(env, static_cast<double>(Service().CountCalls(ToMember(env, args.At(0))).value_or(0)));
}

napi_value IsRegistered(const CallArgs &args)
{
    return MakeBool(args.Env(), Service().Listener().has_value());
}

napi_value Emit(const CallArgs &args)
{
    napi_env env = args.Env();
    ToEmission(env, args.At(0), args.At(1)).Run(1, 1);
    return Undefined(env);
}

// emitMany: the calls run off the script thread, the promise settles on it.
class EmitManyJob : public PromisedWork {
public:
    EmitManyJob(Car::Emission emission, size_t count, size_t threads, std::optional<size_t> sequenceArg)
        : emission_(std::move(emission)), count_(count), threads_(threads), sequenceArg_(sequenceArg)
    {
    }

    void Execute() override
    {
        emission_.Run(count_, threads_, sequenceArg_);
    }

private:
    Car::Emission emission_;
    size_t count_;
    size_t threads_;
    std::optional<size_t> sequenceArg_;
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
    return QueuePromisedWork(env, "emitMany",
                             std::make_unique<EmitManyJob>(std::move(emission), count, threads, sequenceArg));
}

// play: waits on a worker thread until the car's emitter has played the timeline, or a reset stopped it.
class PlayJob : public PromisedWork {
public:
    explicit PlayJob(std::shared_ptr<Car::Service::Playback> playback) : playback_(std::move(playback)) {}

    void Execute() override
    {
        outcome_ = Service().Await(playback_);
    }

    napi_value Result(napi_env env) override
    {
        napi_value outcome = MakeObject(env);
        SetProperty(env, outcome, "emitted", MakeNumber(env, static_cast<double>(outcome_.emitted)));
        SetProperty(env, outcome, "skipped", MakeNumber(env, static_cast<double>(outcome_.skipped)));
        SetProperty(env, outcome, "stopped", MakeBool(env, outcome_.stopped));
        return outcome;
    }

private:
    std::shared_ptr<Car::Service::Playback> playback_;
    Car::PlaybackOutcome outcome_;
};

// play's options: { start: "now" (the default) or "registration" }.
Car::TimelineStart ToTimelineStart(napi_env env, napi_value options)
{
    if (TypeOf(env, options) == napi_undefined) {
        return Car::TimelineStart::NOW;
    }
    ExpectObject(env, options, "options");
    RejectUnknownKeys(env, options, "options", {"start"});
    napi_value start = OptionalProperty(env, options, "start");
    std::string when = start != nullptr ? ToStdString(env, start, "options.start") : "now";
    if (when != "now" && when != "registration") {
        throw JsError("options.start must be \"now\" or \"registration\", not \"" + when + "\"");
    }
    return when == "now" ? Car::TimelineStart::NOW : Car::TimelineStart::AT_REGISTRATION;
}

// Checks the whole scenario before it installs a reaction or schedules a step.
napi_value Play(const CallArgs &args)
{
    napi_env env = args.Env();
    napi_value scenario = args.At(0);
    ExpectObject(env, scenario, "scenario");
    RejectUnknownKeys(env, scenario, "", {"reactions", "timeline"});
    std::vector<std::pair<std::string, std::optional<Car::Reaction>>> reactions;
    if (napi_value byMember = OptionalProperty(env, scenario, "reactions")) {
        ExpectObject(env, byMember, "reactions");
        for (const std::string &key : Keys(env, byMember)) {
            std::string what = Field("reactions", key);
            napi_value reaction = nullptr;
            Check(env, napi_get_named_property(env, byMember, key.c_str(), &reaction));
            reactions.emplace_back(CheckedMember(key, what), ToReaction(env, reaction, what));
        }
    }
    std::vector<Car::TimedEmit> steps;
    if (napi_value timeline = OptionalProperty(env, scenario, "timeline")) {
        std::vector<napi_value> items = ToArray(env, timeline, "timeline");
        for (size_t index = 0; index < items.size(); ++index) {
            steps.push_back(ToTimedEmit(env, items[index], Item("timeline", index), "atMs"));
        }
    }
    Car::TimelineStart start = ToTimelineStart(env, args.At(1));
    for (auto &reaction : reactions) {
        Service().SetReaction(reaction.first, std::move(reaction.second));
    }
    std::shared_ptr<Car::Service::Playback> playback = Service().Play(std::move(steps), start);
    // Without a promise no work waits for the timeline: an engine that waits for a preloaded module's pending work
    // before it runs the app would otherwise wait for a registration that only the app can make.
    if (TypeOf(env, args.At(2)) == napi_boolean && !ToBool(env, args.At(2), "wait")) {
        return Undefined(env);
    }
    return QueuePromisedWork(env, "play", std::make_unique<PlayJob>(std::move(playback)));
}

napi_value StartTimelines(const CallArgs &args)
{
    Service().StartWaitingTimelines();
    return Undefined(args.Env());
}
} // namespace

void DefineCarServiceFunctions(napi_env env, napi_value exports)
{
    DefineFunction(env, exports, "carReset", Export<Reset>);
    DefineFunction(env, exports, "carStartTimelines", Export<StartTimelines>);
    DefineFunction(env, exports, "carSetResult", Export<SetResult>);
    DefineFunction(env, exports, "carSetDelay", Export<SetDelay>);
    DefineFunction(env, exports, "carOnCall", Export<OnCall>);
    DefineFunction(env, exports, "carPlay", Export<Play>);
    DefineFunction(env, exports, "carFailRegistrations", Export<FailRegistrations>);
    DefineFunction(env, exports, "carSetDeviceInfo", Export<SetDeviceInfo>);
    DefineFunction(env, exports, "carSetRecording", Export<SetRecording>);
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
