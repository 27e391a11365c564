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

#include <map>

#include "napi_base_utils.h"
#include "travel_vexar_object_client.h"
#include "vexar_common_constants.h"
#include "vexar_connect_constants.h"
#include "vexar_log.h"

namespace OHOS {
namespace TravelService {
namespace {
enum ResultType : int32_t {
    NUMBER_RESULT = 1,
    STRING_RESULT = 2,
};

// Declared parameters of each operation (before the optional callback), the fewest accepted in promise form,
// and the kind of result it delivers. Keyed by the operation's own name.
std::map<std::string, int> paramNumMap = {
    {"startBindTarget", 2},      {"stopBindTarget", 1},      {"sendControlData", 2},
    {"startSurfaceTransfer", 1}, {"stopSurfaceTransfer", 0}, {"castOperation", 1},
    {"disconnectDevice", 0},     {"getDeviceInfo", 1},       {"sendEventTo", 2},
};
std::map<std::string, int> minParamNumMap = {
    {"startBindTarget", 2},      {"stopBindTarget", 1},      {"sendControlData", 2},
    {"startSurfaceTransfer", 1}, {"stopSurfaceTransfer", 0}, {"castOperation", 1},
    {"disconnectDevice", 0},     {"getDeviceInfo", 0},       {"sendEventTo", 2},
};
std::map<std::string, int> resultTypeMap = {
    {"startBindTarget", NUMBER_RESULT},      {"stopBindTarget", NUMBER_RESULT},      {"sendControlData", NUMBER_RESULT},
    {"startSurfaceTransfer", NUMBER_RESULT}, {"stopSurfaceTransfer", NUMBER_RESULT}, {"castOperation", NUMBER_RESULT},
    {"disconnectDevice", NUMBER_RESULT},     {"getDeviceInfo", STRING_RESULT},       {"sendEventTo", NUMBER_RESULT},
};

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
        napi_throw_error(env, code.c_str(), ERROR_MESSAGES[INVALID_PARAM_ERROR].c_str());
        return NapiGetNull(env);
    }
    // An arity or callback fault after a clean parse leaves errCode at 0 and so throws code "0".
    std::string code = std::to_string(context->errCode);
    std::string message = context->errMsg.empty() ? ERROR_MESSAGES[INVALID_PARAM_ERROR] : context->errMsg;
    napi_throw_error(env, code.c_str(), message.c_str());
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
            napi_resolve_deferred(env, context->deferred, result);
        } else {
            napi_reject_deferred(env, context->deferred, CreateNapiError(env, context->errCode, context->errMsg));
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
    napi_get_reference_value(env, context->callback, &callback);
    // The callback has no receiver of its own; engines refuse a missing one, so it gets the script null value.
    napi_call_function(env, NapiGetNull(env), callback, 1, argv, nullptr);
}

template <typename T> void FreeContext(napi_env env, T *context)
{
    if (context->callback != nullptr) {
        napi_delete_reference(env, context->callback);
    }
    if (context->work != nullptr) {
        napi_delete_async_work(env, context->work);
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

template <typename T>
napi_value HandleJsCall(napi_env &env, napi_callback_info &info, const char *name, ParseFunc<T> parser,
                        napi_async_execute_callback execute)
{
    if (paramNumMap.find(name) == paramNumMap.end() || resultTypeMap.find(name) == resultTypeMap.end()) {
        LOGE("no param of %{public}s", name);
        return NapiGetNull(env);
    }
    size_t paramNum = static_cast<size_t>(paramNumMap[name]);
    size_t minParamNum = static_cast<size_t>(minParamNumMap[name]);
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
    context->resultType = resultTypeMap[name];
    if (context->paramError && context->errCode != 0) {
        return SyncThrowParamError(env, context);
    }
    napi_value promise = nullptr;
    if (argc == paramNum + 1) {
        if (GetType(env, argv[paramNum]) != napi_function) {
            return SyncThrowParamError(env, context);
        }
        napi_create_reference(env, argv[paramNum], 1, &context->callback);
    } else if (argc > paramNum + 1 || argc < minParamNum) {
        return SyncThrowParamError(env, context);
    } else {
        napi_create_promise(env, &context->deferred, &promise);
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
    napi_get_undefined(env, &undefined);
    return undefined;
}

void StartBindTargetExecuteFunc(napi_env, void *data)
{
    auto *context = static_cast<StartBindTargetAsyncContext *>(data);
    if (context->errCode != 0) {
        LOGE("StartBindTarget() invalid parameter.");
        return;
    }
    context->result = TravelVexarObjectClient::GetInstance()->StartBindTarget(context->bindType, context->deviceInfo);
}

void StopBindTargetExecuteFunc(napi_env, void *data)
{
    auto *context = static_cast<StopBindTargetAsyncContext *>(data);
    if (context->errCode != 0) {
        LOGE("StopBindTarget() invalid parameter.");
        return;
    }
    context->result = TravelVexarObjectClient::GetInstance()->StopBindTarget(context->param);
}

void SendControlDataExecuteFunc(napi_env, void *data)
{
    auto *context = static_cast<SendControlDataAsyncContext *>(data);
    if (context->errCode != 0) {
        LOGE("SendControlDataAsyncContext() invalid parameter.");
        return;
    }
    context->result = TravelVexarObjectClient::GetInstance()->SendControlData(context->dataType, context->data);
}

void StartSurfaceTransferExecuteFunc(napi_env, void *data)
{
    auto *context = static_cast<StartSurfaceAsyncContext *>(data);
    if (context->errCode != 0) {
        LOGE("StartSurfaceAsyncContext() invalid parameter.");
        return;
    }
    context->result = TravelVexarObjectClient::GetInstance()->StartSurfaceTransfer(context->deviceInfo);
}

void StopSurfaceTransferExecuteFunc(napi_env, void *data)
{
    auto *context = static_cast<AsyncContext *>(data);
    LOGE("StopSurfaceTransferExecuteFunc.");
    context->result = TravelVexarObjectClient::GetInstance()->StopSurfaceTransfer();
}

void CastOperationExecuteFunc(napi_env, void *data)
{
    auto *context = static_cast<CastOperationAsyncContext *>(data);
    if (context->errCode != 0) {
        LOGE("CastOperation() invalid parameter.");
        return;
    }
    context->result = TravelVexarObjectClient::GetInstance()->CastOperation(context->param);
}

void DisconnectDeviceExecuteFunc(napi_env, void *data)
{
    auto *context = static_cast<AsyncContext *>(data);
    context->result = TravelVexarObjectClient::GetInstance()->DisconnectDevice();
}

void GetDeviceInfoExecuteFunc(napi_env, void *data)
{
    auto *context = static_cast<GetDeviceInfoAsyncContext *>(data);
    std::string deviceInfo;
    // Only the text matters to the caller; the service's code is not delivered.
    TravelVexarObjectClient::GetInstance()->GetDeviceInfo(static_cast<DeviceInfoType>(context->type), deviceInfo);
    context->resultData = deviceInfo;
}

void SendEventToExecuteFunc(napi_env, void *data)
{
    auto *context = static_cast<SendEventToAsyncContext *>(data);
    if (context->errCode != 0) {
        LOGE("SendEventTo() invalid parameter.");
        return;
    }
    context->result = TravelVexarObjectClient::GetInstance()->SendEventTo(context->eventType, context->data);
}
} // namespace

napi_value NapiStartBindTarget(napi_env env, napi_callback_info info)
{
    return HandleJsCall<StartBindTargetAsyncContext>(env, info, "startBindTarget", ParseStartBindTargetParameters,
                                                     StartBindTargetExecuteFunc);
}

napi_value NapiStopBindTarget(napi_env env, napi_callback_info info)
{
    return HandleJsCall<StopBindTargetAsyncContext>(env, info, "stopBindTarget",
                                                    ParseStopBindTargetParameters<StopBindTargetAsyncContext>,
                                                    StopBindTargetExecuteFunc);
}

napi_value NapiSendControllData(napi_env env, napi_callback_info info)
{
    return HandleJsCall<SendControlDataAsyncContext>(env, info, "sendControlData", ParseSendControllData,
                                                     SendControlDataExecuteFunc);
}

napi_value NapiStartSurfaceTransfer(napi_env env, napi_callback_info info)
{
    return HandleJsCall<StartSurfaceAsyncContext>(env, info, "startSurfaceTransfer", ParseStartSurfaceTransfer,
                                                  StartSurfaceTransferExecuteFunc);
}

napi_value NapiStopSurfaceTransfer(napi_env env, napi_callback_info info)
{
    LOGE("NapiStopSurfaceTransfer.");
    return HandleJsCall<AsyncContext>(env, info, "stopSurfaceTransfer", ParseNoItem, StopSurfaceTransferExecuteFunc);
}

napi_value NapiCastOperation(napi_env env, napi_callback_info info)
{
    return HandleJsCall<CastOperationAsyncContext>(
        env, info, "castOperation", ParseCastOperation<CastOperationAsyncContext>, CastOperationExecuteFunc);
}

napi_value NapiDisconnect(napi_env env, napi_callback_info info)
{
    return HandleJsCall<AsyncContext>(env, info, "disconnectDevice", ParseNoItem, DisconnectDeviceExecuteFunc);
}

napi_value NapiGetDeviceInfo(napi_env env, napi_callback_info info)
{
    return HandleJsCall<GetDeviceInfoAsyncContext>(env, info, "getDeviceInfo", ParseGetDeviceInfo,
                                                   GetDeviceInfoExecuteFunc);
}

napi_value NapiSendEventTo(napi_env env, napi_callback_info info)
{
    return HandleJsCall<SendEventToAsyncContext>(env, info, "sendEventTo", ParseSendEventTo, SendEventToExecuteFunc);
}
} // namespace TravelService
} // namespace OHOS
