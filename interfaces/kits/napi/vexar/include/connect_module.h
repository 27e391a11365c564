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

#ifndef INTERFACES_KITS_NAPI_VEXAR_INCLUDE_CONNECT_MODULE_H
#define INTERFACES_KITS_NAPI_VEXAR_INCLUDE_CONNECT_MODULE_H

#include "car_adapter_client.h"
#include "napi/native_api.h"
#include "napi/native_node_api.h"

namespace OHOS {
namespace TravelService {
// Method wrappers of the script class: each finds the native client behind `this` and enters the gate.
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

napi_value JsConstructor(napi_env env, napi_callback_info info);
CarAdapterClient *CreateJsObject(napi_env env, napi_callback_info info, napi_ref constructorRef, napi_value *jsObject);
napi_value GetCarConnectAdapter(napi_env env, napi_callback_info info);
napi_value DiscoveryMode(napi_env env, napi_callback_info info);
} // namespace TravelService
} // namespace OHOS

#endif // INTERFACES_KITS_NAPI_VEXAR_INCLUDE_CONNECT_MODULE_H
