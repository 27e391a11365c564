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

#ifndef INTERFACES_KITS_NAPI_VEXAR_INCLUDE_CAR_ADAPTER_CLIENT_H
#define INTERFACES_KITS_NAPI_VEXAR_INCLUDE_CAR_ADAPTER_CLIENT_H

#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "napi/native_api.h"
#include "napi/native_node_api.h"

namespace OHOS {
namespace TravelService {
// Operation codes of the dispatch gate: the factory and the eleven adapter methods.
enum NapiFuncType : int32_t {
    GET_CAR_CONNECT_ADAPTER = 0,
    REGISTER_CONNECT_LISTENER = 1,
    UNREGISTER_CONNECT_LISTENER = 2,
    START_BIND_TARGET = 3,
    STOP_BIND_TARGET = 4,
    SEND_CONTROL_DATA = 5,
    START_SURFACE_TRANSFER = 6,
    STOP_SURFACE_TRANSFER = 7,
    CAST_OPERATION = 8,
    DISCONNECT = 9,
    GET_DEVICE_INFO = 10,
    SEND_EVENT_TO = 11,
    NAPI_FUNC_MAX = 12,
};

// The native object behind a script adapter object. It keeps no state of its own: the listener manager it
// creates is module-wide.
class CarAdapterClient {
public:
    CarAdapterClient(napi_env env, napi_value thisVar);
    ~CarAdapterClient();
    CarAdapterClient(const CarAdapterClient &) = delete;
    CarAdapterClient &operator=(const CarAdapterClient &) = delete;

    napi_value HandleCarAdapter(NapiFuncType type, napi_env env, napi_callback_info info);

    napi_value GetCarConnectAdapter(napi_env env, napi_callback_info info);
    napi_value RegisterConnectListener(napi_env env, napi_callback_info info);
    napi_value UnRegisterConnectListener(napi_env env, napi_callback_info info);
    napi_value StartBindTarget(napi_env env, napi_callback_info info);
    napi_value StopBindTarget(napi_env env, napi_callback_info info);
    napi_value SendControllData(napi_env env, napi_callback_info info);
    napi_value StartSurfaceTransfer(napi_env env, napi_callback_info info);
    napi_value StopSurfaceTransfer(napi_env env, napi_callback_info info);
    napi_value CastOperation(napi_env env, napi_callback_info info);
    napi_value Disconnect(napi_env env, napi_callback_info info);
    napi_value GetDeviceInfo(napi_env env, napi_callback_info info);
    napi_value SendEventTo(napi_env env, napi_callback_info info);

    // Registers the service callbacks with the car service; runs on a registration thread and uses no client.
    static void InitCallback();

    // Service callbacks, called on the car service's threads.
    static void OnBindResult(std::string deviceId, int result, int status, std::string content);
    static void OnDataReceive(int type, std::string data);
    static void OnDeviceStateChange(int state, std::string deviceInfo);
    static void OnDeviceChange(int state);
    static void OnDeviceServiceStateChange(std::string serviceId, int state, int serviceType);
    static void OnSurfaceTransferOnEvent(int code, int eventId, std::string category);
    static void OnDisconnectResult(int result);

    // Prepares env, a script thread importing the module, for destroying its replaced listener managers there.
    static void AttachEnvironment(napi_env env);
    // Drops the listener managers that belong to env, which is being torn down.
    static void ReleaseListenerManager(napi_env env);

    using HandlerFunc = napi_value (CarAdapterClient::*)(napi_env env, napi_callback_info info);

private:
    // The member of each operation code after the factory's, built at load from the method rows.
    static const std::array<HandlerFunc, NAPI_FUNC_MAX> handlers;
};
} // namespace TravelService
} // namespace OHOS

#endif // INTERFACES_KITS_NAPI_VEXAR_INCLUDE_CAR_ADAPTER_CLIENT_H
