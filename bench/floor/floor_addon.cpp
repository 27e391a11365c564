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

// The floor of the benchmarks: the least a bridge between script code and a native service can do, in plain C
// Node-API. An async work with an empty execute settles a promise or calls a callback; a thread-safe function
// carries a four-value event built as a JSON record on native threads, copied once, to a script function on the
// main thread. The same call also comes behind the N-API steps the module's design adds to it (GatedAdapter).
// Also marks the windows of the instruction counts when run under callgrind.

#include <node_api.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

#ifdef FLOOR_HAS_CALLGRIND
#include <valgrind/callgrind.h>
#endif

namespace {
constexpr size_t MAX_THREADS = 64;

// Throws a script error and returns null when `status` is not napi_ok.
#define FLOOR_CHECK(env, call)                                                                                         \
    do {                                                                                                               \
        if ((call) != napi_ok) {                                                                                       \
            napi_throw_error((env), nullptr, "floor: " #call " failed");                                               \
            return nullptr;                                                                                            \
        }                                                                                                              \
    } while (0)

struct Call {
    napi_async_work work = nullptr;
    napi_deferred deferred = nullptr;
    napi_ref callback = nullptr;
};

void ExecuteNothing(napi_env, void *) {}

void CompleteCall(napi_env env, napi_status, void *data)
{
    std::unique_ptr<Call> call(static_cast<Call *>(data));
    napi_delete_async_work(env, call->work);
    napi_value result = nullptr;
    napi_create_int32(env, 0, &result);
    if (call->deferred != nullptr) {
        napi_resolve_deferred(env, call->deferred, result);
        return;
    }
    napi_value callback = nullptr;
    napi_value global = nullptr;
    napi_get_reference_value(env, call->callback, &callback);
    napi_get_global(env, &global);
    napi_call_function(env, global, callback, 1, &result, nullptr);
    napi_delete_reference(env, call->callback);
}

// castOperation(value[, callback]): 0 through a promise, or to the callback.
napi_value CastOperation(napi_env env, napi_callback_info info)
{
    size_t argc = 2;
    napi_value argv[2] = {nullptr, nullptr};
    FLOOR_CHECK(env, napi_get_cb_info(env, info, &argc, argv, nullptr, nullptr));
    int32_t value = 0;
    FLOOR_CHECK(env, napi_get_value_int32(env, argv[0], &value));
    auto call = std::make_unique<Call>();
    napi_value promise = nullptr;
    if (argc >= 2) {
        FLOOR_CHECK(env, napi_create_reference(env, argv[1], 1, &call->callback));
        FLOOR_CHECK(env, napi_get_undefined(env, &promise));
    } else {
        FLOOR_CHECK(env, napi_create_promise(env, &call->deferred, &promise));
    }
    napi_value name = nullptr;
    FLOOR_CHECK(env, napi_create_string_utf8(env, "castOperation", NAPI_AUTO_LENGTH, &name));
    FLOOR_CHECK(env, napi_create_async_work(env, nullptr, name, ExecuteNothing, CompleteCall, call.get(), &call->work));
    FLOOR_CHECK(env, napi_queue_async_work(env, call->work));
    call.release();
    return promise;
}

// The same call behind the N-API steps the module's design adds before an operation's own work: it arrives as a
// method of an object of a defined class, `this` is unwrapped, the arguments are read once more and the number's
// type is checked. What these steps cost is the part of the module's time that no implementation of the design
// can save.
napi_value GatedCastOperation(napi_env env, napi_callback_info info)
{
    size_t argc = 1;
    napi_value argv[1] = {nullptr};
    napi_value self = nullptr;
    FLOOR_CHECK(env, napi_get_cb_info(env, info, &argc, argv, &self, nullptr));
    void *wrapped = nullptr;
    FLOOR_CHECK(env, napi_unwrap(env, self, &wrapped));
    napi_valuetype type = napi_undefined;
    FLOOR_CHECK(env, napi_typeof(env, argv[0], &type));
    return CastOperation(env, info);
}

// new GatedAdapter(): wraps a static token, which it never frees.
napi_value ConstructGatedAdapter(napi_env env, napi_callback_info info)
{
    static int token = 0;
    napi_value self = nullptr;
    FLOOR_CHECK(env, napi_get_cb_info(env, info, nullptr, nullptr, &self, nullptr));
    FLOOR_CHECK(env, napi_wrap(env, self, &token, nullptr, nullptr, nullptr));
    return self;
}

// One emitMany run: native threads send `count` events in all to `listener.onBindResult`; the promise settles
// once the last one has been delivered.
struct Emission {
    napi_threadsafe_function channel = nullptr;
    napi_ref listener = nullptr;
    napi_deferred deferred = nullptr;
    size_t count = 0;
    size_t delivered = 0;
    std::vector<std::thread> threads;
};

void Deliver(napi_env env, napi_value, void *context, void *data)
{
    std::unique_ptr<nlohmann::json> event(static_cast<nlohmann::json *>(data));
    if (env == nullptr) {
        return;
    }
    auto *emission = static_cast<Emission *>(context);
    napi_handle_scope scope = nullptr;
    napi_open_handle_scope(env, &scope);
    napi_value argv[4] = {nullptr, nullptr, nullptr, nullptr};
    const std::string &deviceId = (*event)["deviceId"].get_ref<const std::string &>();
    const std::string &content = (*event)["content"].get_ref<const std::string &>();
    napi_create_string_utf8(env, deviceId.data(), deviceId.size(), &argv[0]);
    napi_create_int32(env, (*event)["result"].get<int32_t>(), &argv[1]);
    napi_create_int32(env, (*event)["status"].get<int32_t>(), &argv[2]);
    napi_create_string_utf8(env, content.data(), content.size(), &argv[3]);
    napi_value listener = nullptr;
    napi_value function = nullptr;
    napi_get_reference_value(env, emission->listener, &listener);
    napi_get_named_property(env, listener, "onBindResult", &function);
    napi_call_function(env, listener, function, 4, argv, nullptr);
    napi_close_handle_scope(env, scope);
    if (++emission->delivered == emission->count) {
        for (std::thread &thread : emission->threads) {
            thread.join();
        }
        napi_value undefined = nullptr;
        napi_get_undefined(env, &undefined);
        napi_resolve_deferred(env, emission->deferred, undefined);
        napi_delete_reference(env, emission->listener);
        napi_release_threadsafe_function(emission->channel, napi_tsfn_release);
    }
}

void FinalizeEmission(napi_env, void *data, void *)
{
    delete static_cast<Emission *>(data);
}

void Emit(napi_threadsafe_function channel, size_t count)
{
    for (size_t index = 0; index < count; ++index) {
        nlohmann::json event = nlohmann::json::object();
        event["FUNC_CODE"] = 0;
        event["deviceId"] = std::string("device");
        event["result"] = static_cast<int64_t>(index);
        event["status"] = 1;
        event["content"] = std::string("payload");
        napi_call_threadsafe_function(channel, new nlohmann::json(event), napi_tsfn_blocking);
    }
}

// emitMany(listener, count, threads): a promise.
napi_value EmitMany(napi_env env, napi_callback_info info)
{
    size_t argc = 3;
    napi_value argv[3] = {nullptr, nullptr, nullptr};
    FLOOR_CHECK(env, napi_get_cb_info(env, info, &argc, argv, nullptr, nullptr));
    uint32_t count = 0;
    uint32_t threadCount = 0;
    FLOOR_CHECK(env, napi_get_value_uint32(env, argv[1], &count));
    FLOOR_CHECK(env, napi_get_value_uint32(env, argv[2], &threadCount));
    if (count == 0 || threadCount == 0 || threadCount > MAX_THREADS) {
        napi_throw_range_error(env, nullptr, "floor: emitMany needs count >= 1 and 1 to 64 threads");
        return nullptr;
    }
    auto emission = std::make_unique<Emission>();
    emission->count = count;
    napi_value promise = nullptr;
    FLOOR_CHECK(env, napi_create_promise(env, &emission->deferred, &promise));
    FLOOR_CHECK(env, napi_create_reference(env, argv[0], 1, &emission->listener));
    napi_value name = nullptr;
    FLOOR_CHECK(env, napi_create_string_utf8(env, "floor events", NAPI_AUTO_LENGTH, &name));
    FLOOR_CHECK(env, napi_create_threadsafe_function(env, nullptr, nullptr, name, 0, 1, emission.get(),
                                                     FinalizeEmission, emission.get(), Deliver, &emission->channel));
    Emission *running = emission.release();
    for (size_t thread = 0; thread < threadCount; ++thread) {
        size_t share = count / threadCount + (thread < count % threadCount ? 1 : 0);
        running->threads.emplace_back(Emit, running->channel, share);
    }
    return promise;
}

// instructionMark(label): under callgrind, dumps the counts gathered since the last mark under `label` and
// starts the next window; elsewhere does nothing. Returns whether callgrind is counting.
napi_value InstructionMark(napi_env env, napi_callback_info info)
{
    size_t argc = 1;
    napi_value label = nullptr;
    FLOOR_CHECK(env, napi_get_cb_info(env, info, &argc, &label, nullptr, nullptr));
    char text[128] = {0};
    size_t length = 0;
    FLOOR_CHECK(env, napi_get_value_string_utf8(env, label, text, sizeof(text), &length));
    bool counting = false;
#ifdef FLOOR_HAS_CALLGRIND
    counting = RUNNING_ON_VALGRIND != 0;
    CALLGRIND_DUMP_STATS_AT(text);
#endif
    napi_value result = nullptr;
    FLOOR_CHECK(env, napi_get_boolean(env, counting, &result));
    return result;
}

napi_value Init(napi_env env, napi_value exports)
{
    const napi_property_descriptor properties[] = {
        {"castOperation", nullptr, CastOperation, nullptr, nullptr, nullptr, napi_default, nullptr},
        {"emitMany", nullptr, EmitMany, nullptr, nullptr, nullptr, napi_default, nullptr},
        {"instructionMark", nullptr, InstructionMark, nullptr, nullptr, nullptr, napi_default, nullptr},
    };
    FLOOR_CHECK(env, napi_define_properties(env, exports, sizeof(properties) / sizeof(properties[0]), properties));
    const napi_property_descriptor gatedMethods[] = {
        {"castOperation", nullptr, GatedCastOperation, nullptr, nullptr, nullptr, napi_default, nullptr},
    };
    napi_value gatedAdapter = nullptr;
    FLOOR_CHECK(env, napi_define_class(env, "GatedAdapter", NAPI_AUTO_LENGTH, ConstructGatedAdapter, nullptr,
                                       sizeof(gatedMethods) / sizeof(gatedMethods[0]), gatedMethods, &gatedAdapter));
    FLOOR_CHECK(env, napi_set_named_property(env, exports, "GatedAdapter", gatedAdapter));
    return exports;
}
} // namespace

NAPI_MODULE(NODE_GYP_MODULE_NAME, Init)
