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

#include "vexar_napi.h"

#include <array>
#include <functional>
#include <map>

#include "connect_module.h"
#include "napi_base_utils.h"
#include "travel_vexar_object_client.h"
#include "vexar_common_constants.h"
#include "vexar_connect_constants.h"
#include "vexar_log.h"

namespace OHOS {
namespace TravelService {
namespace {
// The call frame's three tables, keyed by operation name, built at load from the operation rows. The comparator
// is transparent, so that a lookup by the operation's C string builds no temporary string.
using OperationTable = std::map<std::string, int, std::less<>>;

template <typename Column> OperationTable TableOf(Column column)
{
    OperationTable table;
    for (const OperationRow &row : OPERATIONS) {
        table.emplace(row.operationName, static_cast<int>(column(row)));
    }
    return table;
}

OperationTable paramNumMap = TableOf([](const OperationRow &row) { return row.declaredParams; });
OperationTable minParamNumMap = TableOf([](const OperationRow &row) { return row.minParams; });
OperationTable resultTypeMap = TableOf([](const OperationRow &row) { return row.resultType; });

// What the three tables hold for one operation name. The tables never change once built, so the entries of each
// operation are looked up once, at load (after the tables, defined above in this file), and every call reads the
// entries a lookup of its name would find.
struct OperationEntries {
    // Whether the name is in paramNumMap and in resultTypeMap.
    bool found = false;
    size_t paramNum = 0;
    // Every operation row fills all three tables; a name missing from this one would count as no minimum.
    size_t minParamNum = 0;
    int32_t resultType = 0;
};

OperationEntries LookUpEntries(const char *name)
{
    OperationEntries entries;
    auto paramNumEntry = paramNumMap.find(name);
    auto resultTypeEntry = resultTypeMap.find(name);
    if (paramNumEntry == paramNumMap.end() || resultTypeEntry == resultTypeMap.end()) {
        return entries;
    }
    entries.found = true;
    entries.paramNum = static_cast<size_t>(paramNumEntry->second);
    auto minParamNumEntry = minParamNumMap.find(name);
    entries.minParamNum = minParamNumEntry == minParamNumMap.end() ? 0 : static_cast<size_t>(minParamNumEntry->second);
    entries.resultType = resultTypeEntry->second;
    return entries;
}

const std::array<OperationEntries, OPERATION_COUNT> OPERATION_ENTRIES = [] {
    std::array<OperationEntries, OPERATION_COUNT> entries;
    for (size_t operation = 0; operation < OPERATION_COUNT; ++operation) {
        entries[operation] = LookUpEntries(OPERATIONS[operation].operationName);
    }
    return entries;
}();

// The most parameters any operation declares, plus the callback slot.
constexpr size_t MAX_CALL_ARGC = 3;

template <typename T>
using ParseFunc = void (*)(const napi_env &env, const size_t &argc, const napi_value *argv, T *&context);

void SetParamError(AsyncContext *context)
{
    context->errCode = INVALID_PARAM_ERROR;
    context->errMsg = ERROR_MESSAGES[INVALID_PARAM_ERROR];
    context->paramError = true;
}

template <typename T> void ParseNumber(const napi_env &env, napi_value value, T *&context, int &out)
{
    if (!GetNumber(env, value, out)) {
        LOGE("SendControllData invalid param type: dataType.");
        SetParamError(context);
    }
}

template <typename T> void ParseString(const napi_env &env, napi_value value, T *&context, std::string &out)
{
    if (!GetString(env, value, out)) {
        LOGE("SendControllData invalid param type: dataType.");
        SetParamError(context);
    }
}

template <typename T>
void ParseMap(const napi_env &env, napi_value value, T *&context, std::unordered_map<std::string, std::string> &out)
{
    if (GetType(env, value) != napi_object) {
        LOGE("invalid param type: deviceInfo.");
        SetParamError(context);
        return;
    }
    NapiParseMap(env, value, out);
}

void ParseStartBindTargetParameters(const napi_env &env, const size_t &, const napi_value *argv,
                                    StartBindTargetAsyncContext *&context)
{
    ParseNumber(env, argv[0], context, context->bindType);
    ParseMap(env, argv[1], context, context->deviceInfo);
}

template <typename T>
void ParseStopBindTargetParameters(const napi_env &env, const size_t &, const napi_value *argv, T *&context)
{
    ParseNumber(env, argv[0], context, context->param);
}

// Stopping a bind and casting both take one number.
template <typename T> constexpr ParseFunc<T> ParseCastOperation = ParseStopBindTargetParameters<T>;

void ParseSendControllData(const napi_env &env, const size_t &, const napi_value *argv,
                           SendControlDataAsyncContext *&context)
{
    ParseNumber(env, argv[0], context, context->dataType);
    ParseString(env, argv[1], context, context->data);
}

void ParseStartSurfaceTransfer(const napi_env &env, const size_t &, const napi_value *argv,
                               StartSurfaceAsyncContext *&context)
{
    ParseMap(env, argv[0], context, context->deviceInfo);
}

void ParseNoItem(const napi_env &, const size_t &, const napi_value *, AsyncContext *&)
{
    LOGI("no parse.");
}

void ParseSendEventTo(const napi_env &env, const size_t &, const napi_value *argv, SendEventToAsyncContext *&context)
{
    int eventType = 0;
    ParseNumber(env, argv[0], context, eventType);
    context->eventType = static_cast<EventType>(eventType);
    ParseString(env, argv[1], context, context->data);
}

void ParseGetDeviceInfo(const napi_env &env, const size_t &, const napi_value *argv,
                        GetDeviceInfoAsyncContext *&context)
{
    int type = 0;
    if (!GetNumber(env, argv[0], type)) {
        LOGW("GetDeviceInfo invalid param: type.");
    }
    context->type = type;
}

template <typename T> napi_value SyncThrowParamError(napi_env &env, T *&context)
{
    if (context == nullptr) {
        std::string code = std::to_string(INVALID_PARAM_ERROR);
        (void)napi_throw_error(env, code.c_str(), ERROR_MESSAGES[INVALID_PARAM_ERROR].c_str());
        return NapiGetNull(env);
    }
    // An arity or callback fault after a clean parse leaves errCode at 0 and so throws code "0".
    std::string code = std::to_string(context->errCode);
    std::string message = context->errMsg.empty() ? ERROR_MESSAGES[INVALID_PARAM_ERROR] : context->errMsg;
    (void)napi_throw_error(env, code.c_str(), message.c_str());
    delete context;
    context = nullptr;
    return NapiGetNull(env);
}

template <typename T> void NapiCreateResult(napi_env env, T *context, napi_value *result)
{
    if (context->resultType == STRING_RESULT) {
        LOGI("create string result");
        napi_create_string_utf8(env, context->resultData.c_str(), NAPI_AUTO_LENGTH, result);
    } else if (context->resultType == NUMBER_RESULT) {
        LOGI("create number result");
        napi_create_int32(env, context->result, result);
    } else {
        LOGI("invalid param: resultType");
    }
}

template <typename T> void SettleCall(napi_env env, T *context)
{
    if (context->deferred != nullptr) {
        if (context->errCode == 0) {
            napi_value result = nullptr;
            NapiCreateResult(env, context, &result);
            (void)napi_resolve_deferred(env, context->deferred, result);
        } else {
            (void)napi_reject_deferred(env, context->deferred, CreateNapiError(env, context->errCode, context->errMsg));
        }
        return;
    }
    napi_value argv[1] = {nullptr};
    if (context->errCode != 0) {
        argv[0] = CreateNapiError(env, context->errCode, context->errMsg);
    } else {
        napi_create_int32(env, context->result, &argv[0]);
    }
    napi_value callback = nullptr;
    (void)napi_get_reference_value(env, context->callback, &callback);
    // The callback has no receiver of its own; engines refuse a missing one, so it gets the script null value.
    (void)napi_call_function(env, NapiGetNull(env), callback, 1, argv, nullptr);
}

template <typename T> void FreeContext(napi_env env, T *context)
{
    if (context->callback != nullptr) {
        (void)napi_delete_reference(env, context->callback);
    }
    if (context->work != nullptr) {
        (void)napi_delete_async_work(env, context->work);
    }
    delete context;
}

template <typename T> void NapiCompleteFunc(napi_env env, napi_status status, void *data)
{
    if (data == nullptr) {
        LOGE("data is nullptr.");
        return;
    }
    T *context = static_cast<T *>(data);
    // A cancelled work belongs to an environment that is going away: no script code may run any more.
    if (status != napi_cancelled) {
        SettleCall(env, context);
    }
    FreeContext(env, context);
}

// The promise of a call in the promise form. Its deferred is freed only by settling it, and an environment torn
// down while the call is in flight refuses that (its completion is cancelled, or runs where no script may run);
// the engine offers no other way to free a deferred, so each such call leaves it allocated (8 bytes on Node.js). Kept
// out of line and not ending in a tail call, so that its frame stays on the stack and the sanitizer runs can name
// exactly this allocation in their suppressions. A promise that could not be made is none: the call then returns
// undefined.
__attribute__((noinline)) void CreateCallPromise(napi_env env, napi_deferred *deferred, napi_value *promise)
{
    if (napi_create_promise(env, deferred, promise) != napi_ok) {
        *promise = nullptr;
    }
}

template <typename T>
napi_value HandleJsCall(napi_env &env, napi_callback_info &info, const char *name, const OperationEntries &entries,
                        ParseFunc<T> parser, napi_async_execute_callback execute)
{
    if (!entries.found) {
        LOGE("no param of %{public}s", name);
        return NapiGetNull(env);
    }
    size_t paramNum = entries.paramNum;
    size_t minParamNum = entries.minParamNum;
    napi_value argv[MAX_CALL_ARGC] = {nullptr};
    size_t argc = paramNum + 1;
    if (napi_get_cb_info(env, info, &argc, argv, nullptr, nullptr) != napi_ok) {
        ThrowLastNapiError(env);
        return nullptr;
    }
    T *context = new T();
    parser(env, paramNum + 1, argv, context);
    // A call has one outcome: when reading the arguments ran script that threw, the call ends with that exception
    // and nothing reaches the service; in an environment going away it ends quietly.
    if (ArgumentsEndedCall(env)) {
        FreeContext(env, context);
        return nullptr;
    }
    context->resultType = entries.resultType;
    if (context->paramError && context->errCode != 0) {
        return SyncThrowParamError(env, context);
    }
    napi_value promise = nullptr;
    if (argc == paramNum + 1) {
        if (GetType(env, argv[paramNum]) != napi_function) {
            return SyncThrowParamError(env, context);
        }
        (void)napi_create_reference(env, argv[paramNum], 1, &context->callback);
    } else if (argc > paramNum + 1 || argc < minParamNum) {
        return SyncThrowParamError(env, context);
    } else {
        CreateCallPromise(env, &context->deferred, &promise);
    }
    napi_value resourceName = nullptr;
    napi_create_string_utf8(env, name, NAPI_AUTO_LENGTH, &resourceName);
    if (napi_create_async_work(env, nullptr, resourceName, execute, NapiCompleteFunc<T>, context, &context->work) !=
            napi_ok ||
        napi_queue_async_work(env, context->work) != napi_ok) {
        ThrowLastNapiError(env);
        // The call is refused with the error just thrown, so nothing will ever complete this record.
        FreeContext(env, context);
        return nullptr;
    }
    if (promise != nullptr) {
        return promise;
    }
    napi_value undefined = nullptr;
    (void)napi_get_undefined(env, &undefined);
    return undefined;
}

// The second line of defence in front of a service call: a record whose parser set an error never gets here,
// since the frame throws first; should one, the call is not made and the operation's line says so.
template <typename T, typename ServiceCall>
void ExecuteChecked(void *data, const char *executeName, const char *invalidParamFormat, ServiceCall call)
{
    auto *context = static_cast<T *>(data);
    if (context->errCode != 0) {
        (void)HiLogPrint(LOG_CORE, LOG_ERROR, VEXAR_LOG_DOMAIN, VEXAR_LOG_TAG, invalidParamFormat, executeName);
        return;
    }
    call(*TravelVexarObjectClient::GetInstance(), *context);
}

void StartBindTargetExecuteFunc(napi_env, void *data)
{
    ExecuteChecked<StartBindTargetAsyncContext>(
        data, __FUNCTION__, "%{public}s# StartBindTarget() invalid parameter.",
        [](TravelVexarObjectClient &client, StartBindTargetAsyncContext &context) {
            context.result = client.StartBindTarget(context.bindType, context.deviceInfo);
        });
}

void StopBindTargetExecuteFunc(napi_env, void *data)
{
    ExecuteChecked<StopBindTargetAsyncContext>(
        data, __FUNCTION__, "%{public}s# StopBindTarget() invalid parameter.",
        [](TravelVexarObjectClient &client, StopBindTargetAsyncContext &context) {
            context.result = client.StopBindTarget(context.param);
        });
}

void SendControlDataExecuteFunc(napi_env, void *data)
{
    ExecuteChecked<SendControlDataAsyncContext>(
        data, __FUNCTION__, "%{public}s# SendControlDataAsyncContext() invalid parameter.",
        [](TravelVexarObjectClient &client, SendControlDataAsyncContext &context) {
            context.result = client.SendControlData(context.dataType, context.data);
        });
}

void StartSurfaceTransferExecuteFunc(napi_env, void *data)
{
    ExecuteChecked<StartSurfaceAsyncContext>(data, __FUNCTION__,
                                             "%{public}s# StartSurfaceAsyncContext() invalid parameter.",
                                             [](TravelVexarObjectClient &client, StartSurfaceAsyncContext &context) {
                                                 context.result = client.StartSurfaceTransfer(context.deviceInfo);
                                             });
}

void StopSurfaceTransferExecuteFunc(napi_env, void *data)
{
    LOGE("StopSurfaceTransferExecuteFunc.");
    static_cast<AsyncContext *>(data)->result = TravelVexarObjectClient::GetInstance()->StopSurfaceTransfer();
}

void CastOperationExecuteFunc(napi_env, void *data)
{
    ExecuteChecked<CastOperationAsyncContext>(data, __FUNCTION__, "%{public}s# CastOperation() invalid parameter.",
                                              [](TravelVexarObjectClient &client, CastOperationAsyncContext &context) {
                                                  context.result = client.CastOperation(context.param);
                                              });
}

void DisconnectDeviceExecuteFunc(napi_env, void *data)
{
    static_cast<AsyncContext *>(data)->result = TravelVexarObjectClient::GetInstance()->DisconnectDevice();
}

// Only the text matters to the caller; the service's code is not delivered.
void GetDeviceInfoExecuteFunc(napi_env, void *data)
{
    auto *context = static_cast<GetDeviceInfoAsyncContext *>(data);
    std::string deviceInfo;
    (void)TravelVexarObjectClient::GetInstance()->GetDeviceInfo(static_cast<DeviceInfoType>(context->type), deviceInfo);
    context->resultData = deviceInfo;
}

void SendEventToExecuteFunc(napi_env, void *data)
{
    ExecuteChecked<SendEventToAsyncContext>(data, __FUNCTION__, "%{public}s# SendEventTo() invalid parameter.",
                                            [](TravelVexarObjectClient &client, SendEventToAsyncContext &context) {
                                                context.result = client.SendEventTo(context.eventType, context.data);
                                            });
}

// The call frame of one operation, bound to its record type, parser and execute step.
template <typename T, ParseFunc<T> parser, napi_async_execute_callback execute>
napi_value RunOperation(napi_env env, napi_callback_info info, size_t operation)
{
    return HandleJsCall<T>(env, info, OPERATIONS[operation].operationName, OPERATION_ENTRIES[operation], parser,
                           execute);
}

napi_value EnterOperation(napi_env env, napi_callback_info info, NapiFuncType type)
{
    size_t operation = static_cast<size_t>(type - START_BIND_TARGET);
    return OPERATIONS[operation].run(env, info, operation);
}
} // namespace

constexpr OperationRow OPERATIONS[OPERATION_COUNT] = {
    {"bindTarget", StartBindTarget, &CarAdapterClient::StartBindTarget, "startBindTarget",
     RunOperation<StartBindTargetAsyncContext, ParseStartBindTargetParameters, StartBindTargetExecuteFunc>,
     START_BIND_TARGET, 2, 2, NUMBER_RESULT},
    {"unbindTarget", StopBindTarget, &CarAdapterClient::StopBindTarget, "stopBindTarget",
     RunOperation<StopBindTargetAsyncContext, ParseStopBindTargetParameters<StopBindTargetAsyncContext>,
                  StopBindTargetExecuteFunc>,
     STOP_BIND_TARGET, 1, 1, NUMBER_RESULT},
    {"sendControlData", SendControllData, &CarAdapterClient::SendControllData, "sendControlData",
     RunOperation<SendControlDataAsyncContext, ParseSendControllData, SendControlDataExecuteFunc>, SEND_CONTROL_DATA, 2,
     2, NUMBER_RESULT},
    {"startSurfaceTransfer", StartSurfaceTransfer, &CarAdapterClient::StartSurfaceTransfer, "startSurfaceTransfer",
     RunOperation<StartSurfaceAsyncContext, ParseStartSurfaceTransfer, StartSurfaceTransferExecuteFunc>,
     START_SURFACE_TRANSFER, 1, 1, NUMBER_RESULT},
    {"stopSurfaceTransfer", StopSurfaceTransfer, &CarAdapterClient::StopSurfaceTransfer, "stopSurfaceTransfer",
     RunOperation<AsyncContext, ParseNoItem, StopSurfaceTransferExecuteFunc>, STOP_SURFACE_TRANSFER, 0, 0,
     NUMBER_RESULT},
    {"castOperation", CastOperation, &CarAdapterClient::CastOperation, "castOperation",
     RunOperation<CastOperationAsyncContext, ParseCastOperation<CastOperationAsyncContext>, CastOperationExecuteFunc>,
     CAST_OPERATION, 1, 1, NUMBER_RESULT},
    {"disconnectDevice", Disconnect, &CarAdapterClient::Disconnect, "disconnectDevice",
     RunOperation<AsyncContext, ParseNoItem, DisconnectDeviceExecuteFunc>, DISCONNECT, 0, 0, NUMBER_RESULT},
    {"getDeviceInfo", GetDeviceInfo, &CarAdapterClient::GetDeviceInfo, "getDeviceInfo",
     RunOperation<GetDeviceInfoAsyncContext, ParseGetDeviceInfo, GetDeviceInfoExecuteFunc>, GET_DEVICE_INFO, 1, 0,
     STRING_RESULT},
    {"sendEvent", SendEventTo, &CarAdapterClient::SendEventTo, "sendEventTo",
     RunOperation<SendEventToAsyncContext, ParseSendEventTo, SendEventToExecuteFunc>, SEND_EVENT_TO, 2, 2,
     NUMBER_RESULT},
};

// Each entry hands its operation to the call frame.
napi_value NapiStartBindTarget(napi_env env, napi_callback_info info)
{
    return EnterOperation(env, info, START_BIND_TARGET);
}

napi_value NapiStopBindTarget(napi_env env, napi_callback_info info)
{
    return EnterOperation(env, info, STOP_BIND_TARGET);
}

napi_value NapiSendControllData(napi_env env, napi_callback_info info)
{
    return EnterOperation(env, info, SEND_CONTROL_DATA);
}

napi_value NapiStartSurfaceTransfer(napi_env env, napi_callback_info info)
{
    return EnterOperation(env, info, START_SURFACE_TRANSFER);
}

napi_value NapiStopSurfaceTransfer(napi_env env, napi_callback_info info)
{
    LOGE("NapiStopSurfaceTransfer.");
    return EnterOperation(env, info, STOP_SURFACE_TRANSFER);
}

napi_value NapiCastOperation(napi_env env, napi_callback_info info)
{
    return EnterOperation(env, info, CAST_OPERATION);
}

napi_value NapiDisconnect(napi_env env, napi_callback_info info)
{
    return EnterOperation(env, info, DISCONNECT);
}

napi_value NapiGetDeviceInfo(napi_env env, napi_callback_info info)
{
    return EnterOperation(env, info, GET_DEVICE_INFO);
}

napi_value NapiSendEventTo(napi_env env, napi_callback_info info)
{
    return EnterOperation(env, info, SEND_EVENT_TO);
}
} // namespace TravelService
} // namespace OHOS
