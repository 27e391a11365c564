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
// dispatch records the car service never produces (odd codes, wrong member types, wide numbers).

#include <string>

#include "car_connect_listener.h"
#include "napi_base_utils.h"

namespace {
constexpr size_t NOTIFY_ARGC = 3;

// notify(listener, receiver, eventJsonText): one event through a listener made for the call.
napi_value Notify(napi_env env, napi_callback_info info)
{
    size_t argc = NOTIFY_ARGC;
    napi_value argv[NOTIFY_ARGC] = {nullptr};
    napi_get_cb_info(env, info, &argc, argv, nullptr, nullptr);
    std::string eventText;
    if (argc != NOTIFY_ARGC || !OHOS::TravelService::GetString(env, argv[2], eventText)) {
        napi_throw_type_error(env, nullptr, "notify(listener, receiver, eventJsonText)");
        return nullptr;
    }
    nlohmann::json event = nlohmann::json::parse(eventText, nullptr, false);
    OHOS::TravelService::CarConnectListener listener(env, argv[0]);
    listener.NotifyEvent(argv[1], event);
    return nullptr;
}

napi_value Init(napi_env env, napi_value exports)
{
    napi_property_descriptor notify = {"notify", nullptr, Notify, nullptr, nullptr, nullptr, napi_default, nullptr};
    napi_define_properties(env, exports, 1, &notify);
    return exports;
}
} // namespace

NAPI_MODULE(NODE_GYP_MODULE_NAME, Init)
