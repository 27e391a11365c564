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

#include "car_connect_listener.h"

#include <cmath>
#include <limits>
#include <string_view>

#include "napi_base_utils.h"
#include "vexar_common_constants.h"
#include "vexar_connect_constants.h"
#include "vexar_log.h"

namespace OHOS {
namespace TravelService {
namespace {
// Reads a JSON number as a 32-bit signed integer: a floating value is truncated toward zero (saturating, NaN
// giving 0, as the device's conversion does), a wider integer keeps its low 32 bits.
int32_t ToInt32(const nlohmann::json &number)
{
    if (number.is_number_float()) {
        double value = number.get<double>();
        if (std::isnan(value)) {
            return 0;
        }
        if (value <= std::numeric_limits<int32_t>::min()) {
            return std::numeric_limits<int32_t>::min();
        }
        if (value >= std::numeric_limits<int32_t>::max()) {
            return std::numeric_limits<int32_t>::max();
        }
        return static_cast<int32_t>(value);
    }
    if (number.is_number_unsigned()) {
        return static_cast<int32_t>(static_cast<uint32_t>(number.get<uint64_t>()));
    }
    return static_cast<int32_t>(static_cast<uint32_t>(number.get<int64_t>()));
}
} // namespace

const CarConnectListener::NotifyEventFunc CarConnectListener::m_notifyEventFunc[CAR_EVENT_COUNT] = {
    &CarConnectListener::OnBindResult,
    &CarConnectListener::OnDataReceive,
    &CarConnectListener::OnDeviceStateChange,
    &CarConnectListener::OnDeviceChange,
    &CarConnectListener::OnDeviceServiceStateChange,
    &CarConnectListener::OnSurfaceTransferOnEvent,
    &CarConnectListener::OnDisconnectResult,
};

// An event's members are found by a key of known length: a lookup by the bare C string would measure it again
// at every comparison on the way down the event's tree.
bool CreateArgNumber(napi_env env, const nlohmann::json &event, const char *key, napi_value *result)
{
    auto entry = event.find(std::string_view(key));
    if (!event.is_object() || entry == event.end() || !entry->is_number()) {
        LOGE("Cannot find or invalid %{public}s.", key);
        return false;
    }
    return napi_create_int32(env, ToInt32(*entry), result) == napi_ok;
}

bool CreateArgString(napi_env env, const nlohmann::json &event, const char *key, napi_value *result)
{
    auto entry = event.find(std::string_view(key));
    if (!event.is_object() || entry == event.end() || !entry->is_string()) {
        LOGE("Cannot find or invalid %{public}s.", key);
        return false;
    }
    const std::string &text = entry->get_ref<const std::string &>();
    return napi_create_string_utf8(env, text.c_str(), NAPI_AUTO_LENGTH, result) == napi_ok;
}

CarConnectListener::CarConnectListener(napi_env env, napi_value listener) : env_(env)
{
    LOGI("CarConnectListener");
    if (napi_create_reference(env, listener, 1, &listenerRef_) != napi_ok) {
        LOGE("Failed to create reference");
    }
}

CarConnectListener::~CarConnectListener()
{
    LOGI("~CarConnectListener");
    std::lock_guard<std::mutex> lock(mutex_);
    (void)napi_delete_reference(env_, listenerRef_);
    listenerRef_ = nullptr;
}

void CarConnectListener::NotifyEvent(napi_value thisVar, const nlohmann::json &event)
{
    LOGI("CarConnectListener NotifyEvent.");
    auto codeEntry = event.find(EVENT_FUNC_CODE);
    if (!event.is_object() || codeEntry == event.end() || !codeEntry->is_number() ||
        static_cast<uint32_t>(ToInt32(*codeEntry)) >= CAR_EVENT_COUNT) {
        LOGE("NotifyEvent error, invalid param: code.");
        return;
    }
    // NOLINTNEXTLINE(clang-analyzer-core.uninitialized.Assign): the same code was range-checked above.
    NotifyEventFunc handler = m_notifyEventFunc[ToInt32(*codeEntry)];
    if (!(this->*handler)(thisVar, event)) {
        LOGE("NotifyEvent error, napi_call_function fail.");
    }
    TakePendingException();
}

// A listener that throws must not keep its exception pending: every later N-API call of this delivery, the
// next listeners' included, would fail, and the engine would report the error as uncaught.
void CarConnectListener::TakePendingException()
{
    bool isPending = false;
    if (napi_is_exception_pending(env_, &isPending) != napi_ok || !isPending) {
        return;
    }
    napi_value exception = nullptr;
    (void)napi_get_and_clear_last_exception(env_, &exception);
    std::string description = "exception without text";
    napi_value text = nullptr;
    if (napi_coerce_to_string(env_, exception, &text) == napi_ok) {
        GetString(env_, text, description);
    } else {
        (void)napi_get_and_clear_last_exception(env_, &exception);
    }
    VEXAR_HILOG(LOG_ERROR, "NotifyEvent", "NotifyEvent error, listener threw: %{public}s", description.c_str());
}

bool CarConnectListener::CallListenerFunction(napi_value thisVar, const nlohmann::json &event, const CarEventRow &row)
{
    napi_value argv[MAX_EVENT_ARGC] = {nullptr};
    for (size_t index = 0; index < row.argc; ++index) {
        const EventArg &arg = row.args[index];
        bool created = arg.type == EventArgType::STRING ? CreateArgString(env_, event, arg.key, &argv[index])
                                                        : CreateArgNumber(env_, event, arg.key, &argv[index]);
        if (!created) {
            VEXAR_HILOG(LOG_ERROR, row.handlerName, "creat argv failed.");
            return false;
        }
    }
    std::lock_guard<std::mutex> lock(mutex_);
    napi_value listener = nullptr;
    napi_value function = nullptr;
    if (napi_get_reference_value(env_, listenerRef_, &listener) != napi_ok ||
        napi_get_named_property(env_, listener, row.function, &function) != napi_ok) {
        HiLogPrint(LOG_CORE, LOG_ERROR, VEXAR_LOG_DOMAIN, VEXAR_LOG_TAG, row.fetchErrorFormat, row.handlerName);
        return false;
    }
    return napi_call_function(env_, thisVar, function, row.argc, argv, nullptr) == napi_ok;
}

// Each handler logs its own line, then calls the listener function of its event row.
bool CarConnectListener::OnBindResult(napi_value thisVar, const nlohmann::json &event)
{
    LOGI("CarConnectListener OnBindResult.");
    return CallListenerFunction(thisVar, event, EVENTS[BIND_RESULT_EVENT]);
}

bool CarConnectListener::OnDataReceive(napi_value thisVar, const nlohmann::json &event)
{
    LOGI("CarConnectListener OnDataReceive.");
    return CallListenerFunction(thisVar, event, EVENTS[DATA_RECEIVE_EVENT]);
}

bool CarConnectListener::OnDeviceStateChange(napi_value thisVar, const nlohmann::json &event)
{
    LOGI("CarConnectListener OnDeviceStateChange.");
    return CallListenerFunction(thisVar, event, EVENTS[DEVICE_STATE_CHANGE_EVENT]);
}

bool CarConnectListener::OnDeviceChange(napi_value thisVar, const nlohmann::json &event)
{
    LOGI("CarConnectListener OnDeviceChange.");
    return CallListenerFunction(thisVar, event, EVENTS[DEVICE_CHANGE_EVENT]);
}

bool CarConnectListener::OnDeviceServiceStateChange(napi_value thisVar, const nlohmann::json &event)
{
    LOGI("CarConnectListener OnDeviceServiceStateChange.");
    return CallListenerFunction(thisVar, event, EVENTS[DEVICE_SERVICE_STATE_CHANGE_EVENT]);
}

bool CarConnectListener::OnSurfaceTransferOnEvent(napi_value thisVar, const nlohmann::json &event)
{
    LOGI("CarConnectListener onSurfaceTransferOnEvent.");
    return CallListenerFunction(thisVar, event, EVENTS[SURFACE_TRANSFER_EVENT]);
}

bool CarConnectListener::OnDisconnectResult(napi_value thisVar, const nlohmann::json &event)
{
    LOGI("CarConnectListener OnDisconnectResult.");
    return CallListenerFunction(thisVar, event, EVENTS[DISCONNECT_RESULT_EVENT]);
}
} // namespace TravelService
} // namespace OHOS
