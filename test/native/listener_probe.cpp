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

// A test addon that hands one listener object a hand-made event record, so that the suites can give the event
// dispatch records the car service never produces (odd codes, wrong member types, wide numbers), and that runs
// one delivery of a listener manager while it counts the handle scopes opened and closed.

#include <string>

#include "car_connect_listener.h"
#include "connect_listener_manager.h"
#include "napi_base_utils.h"

namespace {
constexpr size_t PROBE_ARGC = 3;
int g_scopesOpened = 0;
int g_scopesClosed = 0;
} // namespace

// The module's handle-scope calls, counted on their way to the engine's.
extern "C" {
napi_status __real_napi_open_handle_scope(napi_env env, napi_handle_scope *result);
napi_status __real_napi_close_handle_scope(napi_env env, napi_handle_scope scope);

napi_status __wrap_napi_open_handle_scope(napi_env env, napi_handle_scope *result)
{
    napi_status status = __real_napi_open_handle_scope(env, result);
    g_scopesOpened += status == napi_ok ? 1 : 0;
    return status;
}

napi_status __wrap_napi_close_handle_scope(napi_env env, napi_handle_scope scope)
{
    napi_status status = __real_napi_close_handle_scope(env, scope);
    g_scopesClosed += status == napi_ok ? 1 : 0;
    return status;
}
}

namespace {
// Reads the three arguments of a probe function, the last the event's JSON text; throws `usage` when they do not fit.
bool ReadProbeArgs(napi_env env, napi_callback_info info, napi_value (&argv)[PROBE_ARGC], std::string &eventText,
                   const char *usage)
{
    size_t argc = PROBE_ARGC;
    napi_get_cb_info(env, info, &argc, argv, nullptr, nullptr);
    if (argc != PROBE_ARGC || !OHOS::TravelService::GetString(env, argv[2], eventText)) {
        napi_throw_type_error(env, nullptr, usage);
        return false;
    }
    return true;
}

napi_value MakeCount(napi_env env, int count)
{
    napi_value value = nullptr;
    napi_create_int32(env, count, &value);
    return value;
}

// publish(receiver, sessions, eventJsonText): one delivery of a manager whose adapter object is `receiver`, with
// a session per own property of `sessions` (name: listener). Returns { opened, closed }: the handle scopes the
// delivery opened and closed.
napi_value Publish(napi_env env, napi_callback_info info)
{
    napi_value argv[PROBE_ARGC] = {nullptr};
    std::string eventText;
    if (!ReadProbeArgs(env, info, argv, eventText, "publish(receiver, sessions, eventJsonText)")) {
        return nullptr;
    }
    napi_ref receiverRef = nullptr;
    napi_create_reference(env, argv[0], 1, &receiverRef);
    OHOS::TravelService::ConnectListenerManager manager(env, receiverRef);
    napi_value names = nullptr;
    uint32_t count = 0;
    napi_get_property_names(env, argv[1], &names);
    napi_get_array_length(env, names, &count);
    for (uint32_t index = 0; index < count; ++index) {
        napi_value name = nullptr;
        napi_value listener = nullptr;
        std::string session;
        napi_get_element(env, names, index, &name);
        napi_get_property(env, argv[1], name, &listener);
        OHOS::TravelService::GetString(env, name, session);
        manager.SubscribeListener(session, listener);
    }
    g_scopesOpened = 0;
    g_scopesClosed = 0;
    manager.PublishEvent(nlohmann::json::parse(eventText, nullptr, false));
    napi_value result = nullptr;
    napi_create_object(env, &result);
    napi_set_named_property(env, result, "opened", MakeCount(env, g_scopesOpened));
    napi_set_named_property(env, result, "closed", MakeCount(env, g_scopesClosed));
    return result;
}

// notify(listener, receiver, eventJsonText): one event through a listener made for the call.
napi_value Notify(napi_env env, napi_callback_info info)
{
    napi_value argv[PROBE_ARGC] = {nullptr};
    std::string eventText;
    if (!ReadProbeArgs(env, info, argv, eventText, "notify(listener, receiver, eventJsonText)")) {
        return nullptr;
    }
    nlohmann::json event = nlohmann::json::parse(eventText, nullptr, false);
    OHOS::TravelService::CarConnectListener listener(env, argv[0]);
    listener.NotifyEvent(argv[1], event);
    return nullptr;
}

napi_value Init(napi_env env, napi_value exports)
{
    napi_property_descriptor functions[] = {
        {"notify", nullptr, Notify, nullptr, nullptr, nullptr, napi_default, nullptr},
        {"publish", nullptr, Publish, nullptr, nullptr, nullptr, napi_default, nullptr},
    };
    napi_define_properties(env, exports, sizeof(functions) / sizeof(functions[0]), functions);
    return exports;
}
} // namespace

NAPI_MODULE(NODE_GYP_MODULE_NAME, Init)
