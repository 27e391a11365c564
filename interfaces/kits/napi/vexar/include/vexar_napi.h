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

#ifndef INTERFACES_KITS_NAPI_VEXAR_INCLUDE_VEXAR_NAPI_H
#define INTERFACES_KITS_NAPI_VEXAR_INCLUDE_VEXAR_NAPI_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>

#include "car_adapter_client.h"
#include "napi/native_api.h"
#include "napi/native_node_api.h"
#include "travel_vexar_object_client.h"

namespace OHOS {
namespace TravelService {
// One asynchronous script call: born when the call is parsed, freed by its completion or its parameter error.
struct AsyncContext {
    napi_env env = nullptr;
    napi_async_work work = nullptr;
    napi_deferred deferred = nullptr;
    napi_ref callback = nullptr;
    int32_t errCode = 0;
    bool paramError = false;
    std::string errMsg;
    int32_t result = 0;
    std::string resultData;
    int32_t resultType = 0;
};

struct StartBindTargetAsyncContext : AsyncContext {
    int32_t bindType = 0;
    std::unordered_map<std::string, std::string> deviceInfo;
};

struct StartSurfaceAsyncContext : AsyncContext {
    int32_t surfaceType = 0;
    std::unordered_map<std::string, std::string> deviceInfo;
};

struct Int32ParamAsyncContext : AsyncContext {
    int32_t param = 0;
};

struct StopBindTargetAsyncContext : Int32ParamAsyncContext {};

struct CastOperationAsyncContext : Int32ParamAsyncContext {};

struct GetDeviceInfoAsyncContext : AsyncContext {
    int32_t type = 0;
};

struct SendControlDataAsyncContext : AsyncContext {
    int32_t dataType = 0;
    std::string data;
};

struct SendEventToAsyncContext : AsyncContext {
    EventType eventType = EventType(0);
    std::string data;
};

enum ResultType : int32_t {
    NUMBER_RESULT = 1,
    STRING_RESULT = 2,
};

// One row per service operation: its script method, the wrapper that enters the gate and the member the gate
// calls, its operation name (the key of the call frame's tables and the resource name of its work), the call
// frame bound to its record type, parser and execute step (given the row's index), its operation code, the parameters
// it declares before the optional callback and the fewest it accepts in promise form, and the kind of result it
// delivers. The class's method table, the gate's dispatch table and the call frame's three tables are built from these
// rows.
struct OperationRow {
    const char *scriptName;
    napi_callback wrapper;
    CarAdapterClient::HandlerFunc member;
    const char *operationName;
    napi_value (*run)(napi_env env, napi_callback_info info, size_t operation);
    NapiFuncType type;
    int declaredParams;
    int minParams;
    ResultType resultType;
};

constexpr size_t OPERATION_COUNT = 9;
extern const OperationRow OPERATIONS[OPERATION_COUNT];

napi_value NapiStartBindTarget(napi_env env, napi_callback_info info);
napi_value NapiStopBindTarget(napi_env env, napi_callback_info info);
napi_value NapiSendControllData(napi_env env, napi_callback_info info);
napi_value NapiStartSurfaceTransfer(napi_env env, napi_callback_info info);
napi_value NapiStopSurfaceTransfer(napi_env env, napi_callback_info info);
napi_value NapiCastOperation(napi_env env, napi_callback_info info);
napi_value NapiDisconnect(napi_env env, napi_callback_info info);
napi_value NapiGetDeviceInfo(napi_env env, napi_callback_info info);
napi_value NapiSendEventTo(napi_env env, napi_callback_info info);
} // namespace TravelService
} // namespace OHOS

#endif // INTERFACES_KITS_NAPI_VEXAR_INCLUDE_VEXAR_NAPI_H
