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

#ifndef INTERFACES_KITS_NAPI_VEXAR_INCLUDE_CAR_CONNECT_LISTENER_H
#define INTERFACES_KITS_NAPI_VEXAR_INCLUDE_CAR_CONNECT_LISTENER_H

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <utility>

#include "napi/native_api.h"
#include "napi/native_node_api.h"
#include "nlohmann/json.hpp"

namespace OHOS {
namespace TravelService {
// The event record that the service callbacks build and the listeners read: "FUNC_CODE" holds the code of
// the callback (its slot in the client's callback record), the callback's arguments stand under fixed keys.
const std::string EVENT_FUNC_CODE = "FUNC_CODE";

enum CarEventCode : int32_t {
    BIND_RESULT_EVENT = 0,
    DATA_RECEIVE_EVENT = 1,
    DEVICE_STATE_CHANGE_EVENT = 2,
    DEVICE_CHANGE_EVENT = 3,
    DEVICE_SERVICE_STATE_CHANGE_EVENT = 4,
    SURFACE_TRANSFER_EVENT = 5,
    DISCONNECT_RESULT_EVENT = 6,
    CAR_EVENT_COUNT = 7,
};

constexpr size_t MAX_EVENT_ARGC = 4;

enum class EventArgType { NUMBER, STRING };

struct EventArg {
    const char *key;
    EventArgType type;
};

// One row per car event: its code, the service callback that raises it (the listener's handler has the same
// name), the listener function it calls, its members in argument order, and the line logged when the function
// cannot be fetched. The service callback builds the event record from the row, and the listener reads the
// arguments back with the same row, so each key is written once.
struct CarEventRow {
    CarEventCode code;
    const char *handlerName;
    const char *function;
    size_t argc;
    EventArg args[MAX_EVENT_ARGC];
    const char *fetchErrorFormat;
};

inline constexpr CarEventRow EVENTS[CAR_EVENT_COUNT] = {
    {BIND_RESULT_EVENT,
     "OnBindResult",
     "onBindResult",
     4,
     {{"deviceId", EventArgType::STRING},
      {"result", EventArgType::NUMBER},
      {"status", EventArgType::NUMBER},
      {"content", EventArgType::STRING}},
     "%{public}s# get onBindResult failed."},
    {DATA_RECEIVE_EVENT,
     "OnDataReceive",
     "onDataReceive",
     2,
     {{"type", EventArgType::NUMBER}, {"data", EventArgType::STRING}},
     "%{public}s# get onDataReceive failed."},
    {DEVICE_STATE_CHANGE_EVENT,
     "OnDeviceStateChange",
     "onDeviceStateChange",
     2,
     {{"state", EventArgType::NUMBER}, {"deviceInfo", EventArgType::STRING}},
     "%{public}s# get onDeviceStateChange failed."},
    {DEVICE_CHANGE_EVENT,
     "OnDeviceChange",
     "onDeviceChange",
     1,
     {{"state", EventArgType::NUMBER}},
     "%{public}s# get OnDeviceChange failed."},
    {DEVICE_SERVICE_STATE_CHANGE_EVENT,
     "OnDeviceServiceStateChange",
     "onDeviceServiceStateChange",
     3,
     {{"serviceId", EventArgType::STRING}, {"state", EventArgType::NUMBER}, {"serviceType", EventArgType::NUMBER}},
     "%{public}s# get OnDeviceServiceStateChange failed."},
    {SURFACE_TRANSFER_EVENT,
     "OnSurfaceTransferOnEvent",
     "onSurfaceTransferOnEvent",
     3,
     {{"code", EventArgType::NUMBER}, {"eventId", EventArgType::NUMBER}, {"category", EventArgType::STRING}},
     "%{public}s# get OnSurfaceTransferOnEvent failed."},
    {DISCONNECT_RESULT_EVENT,
     "OnDisconnectResult",
     "onDisconnectResult",
     1,
     {{"result", EventArgType::NUMBER}},
     "%{public}s# get OnDisconnectResult failed."},
};

// The event record of one service callback: its code and the callback's arguments under its row's keys, in order.
template <CarEventCode CODE, typename... Values> nlohmann::json BuildEvent(Values &&...values)
{
    constexpr const CarEventRow &row = EVENTS[CODE];
    static_assert(row.code == CODE && sizeof...(Values) == row.argc, "the event row lists every argument");
    nlohmann::json event = nlohmann::json::object();
    event[EVENT_FUNC_CODE] = CODE;
    size_t index = 0;
    ((event[row.args[index++].key] = std::forward<Values>(values)), ...);
    return event;
}

bool CreateArgNumber(napi_env env, const nlohmann::json &event, const char *key, napi_value *result);
bool CreateArgString(napi_env env, const nlohmann::json &event, const char *key, napi_value *result);

// One script listener object of one session. Main thread only.
class CarConnectListener {
public:
    CarConnectListener(napi_env env, napi_value listener);
    ~CarConnectListener();
    CarConnectListener(const CarConnectListener &) = delete;
    CarConnectListener &operator=(const CarConnectListener &) = delete;

    void NotifyEvent(napi_value thisVar, const nlohmann::json &event);

private:
    using NotifyEventFunc = bool (CarConnectListener::*)(napi_value thisVar, const nlohmann::json &event);

    bool OnBindResult(napi_value thisVar, const nlohmann::json &event);
    bool OnDataReceive(napi_value thisVar, const nlohmann::json &event);
    bool OnDeviceStateChange(napi_value thisVar, const nlohmann::json &event);
    bool OnDeviceChange(napi_value thisVar, const nlohmann::json &event);
    bool OnDeviceServiceStateChange(napi_value thisVar, const nlohmann::json &event);
    bool OnSurfaceTransferOnEvent(napi_value thisVar, const nlohmann::json &event);
    bool OnDisconnectResult(napi_value thisVar, const nlohmann::json &event);

    bool CallListenerFunction(napi_value thisVar, const nlohmann::json &event, const CarEventRow &row);
    void TakePendingException();

    static const NotifyEventFunc m_notifyEventFunc[CAR_EVENT_COUNT];

    napi_ref listenerRef_ = nullptr;
    std::mutex mutex_;
    napi_env env_ = nullptr;
};
} // namespace TravelService
} // namespace OHOS

#endif // INTERFACES_KITS_NAPI_VEXAR_INCLUDE_CAR_CONNECT_LISTENER_H
