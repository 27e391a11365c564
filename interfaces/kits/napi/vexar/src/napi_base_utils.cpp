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

#include "napi_base_utils.h"

#include <cmath>
#include <cstdlib>
#include <memory>

#include "vexar_common_constants.h"
#include "vexar_connect_constants.h"
#include "vexar_log.h"

namespace OHOS {
namespace TravelService {
namespace {
// Every script string is read through a buffer of this size: longer strings arrive cut to 4095 bytes.
constexpr size_t STRING_BUFFER_SIZE = 4096;
// The range in which a double converts to a signed 64-bit integer without overflow.
constexpr double INT64_RANGE_LIMIT = 9223372036854775808.0;

// Set on a script thread once its environment is found going away; it never comes back.
thread_local bool g_scriptEnding = false;

napi_value DoNothing(napi_env, napi_callback_info)
{
    return nullptr;
}

// Whether the environment can still run script: Node.js and Bun refuse a call of a native no-op function once it
// is going away (a terminated worker, a worker's own process.exit). An engine whose call preamble checks only
// for a null env and a pending exception never refuses it, so there every refused read takes the fatal path.
// A pending exception would make the call fail in any case, so it is taken for the probe and thrown again when
// the environment is live.
bool ScriptCanRun(napi_env env)
{
    napi_value exception = nullptr;
    bool pending = false;
    if (napi_is_exception_pending(env, &pending) == napi_ok && pending) {
        (void)napi_get_and_clear_last_exception(env, &exception);
    }
    napi_value probe = nullptr;
    napi_value receiver = nullptr;
    bool canRun = napi_create_function(env, "probe", NAPI_AUTO_LENGTH, DoNothing, nullptr, &probe) == napi_ok &&
                  napi_get_undefined(env, &receiver) == napi_ok &&
                  napi_call_function(env, receiver, probe, 0, nullptr, nullptr) == napi_ok;
    if (canRun && exception != nullptr) {
        (void)napi_throw(env, exception);
    }
    return canRun;
}

// The element, property, boolean and number reads of the map conversion have no failure result: a refusal
// there throws the platform's message and ends the process. An environment that is going away refuses them too;
// that must not take every other thread with it, so the call is left quietly there, and the caller ends it once
// the arguments have been read.
void AbortUnlessScriptEnding(napi_env env)
{
    ThrowLastNapiError(env);
    if (ScriptCanRun(env)) {
        std::abort();
    }
    g_scriptEnding = true;
}

std::string NumberToText(double value)
{
    bool inInt64Range = value >= -INT64_RANGE_LIMIT && value < INT64_RANGE_LIMIT;
    if (inInt64Range) {
        auto integral = static_cast<int64_t>(value);
        if (static_cast<double>(integral) == value) {
            return std::to_string(static_cast<long>(integral));
        }
    }
    return std::to_string(value);
}
} // namespace

napi_value NapiGetNull(napi_env env)
{
    napi_value result = nullptr;
    (void)napi_get_null(env, &result);
    return result;
}

napi_value ThrowNapiError(napi_env env, int32_t code, const std::string &message)
{
    std::string codeText = std::to_string(code);
    (void)napi_throw_error(env, codeText.c_str(), message.c_str());
    LOGE("throw err code: %{public}d, message: %{public}s", code, message.c_str());
    return NapiGetNull(env);
}

napi_value CreateNapiError(napi_env env, int32_t code, const std::string &message)
{
    std::string codeText = std::to_string(code);
    napi_value codeValue = nullptr;
    napi_value messageValue = nullptr;
    napi_value error = nullptr;
    napi_create_string_utf8(env, codeText.c_str(), codeText.size(), &codeValue);
    napi_create_string_utf8(env, message.c_str(), message.size(), &messageValue);
    (void)napi_create_error(env, codeValue, messageValue, &error);
    return error;
}

bool ArgumentsEndedCall(napi_env env)
{
    bool pending = false;
    (void)napi_is_exception_pending(env, &pending);
    return pending || g_scriptEnding;
}

void ThrowLastNapiError(napi_env env)
{
    const napi_extended_error_info *errorInfo = nullptr;
    (void)napi_get_last_error_info(env, &errorInfo);
    // The record is overwritten by the next N-API call, so its message is copied first.
    std::string message = "empty error message";
    if (errorInfo != nullptr && errorInfo->error_message != nullptr) {
        message = errorInfo->error_message;
    }
    bool isPending = false;
    (void)napi_is_exception_pending(env, &isPending);
    if (!isPending && errorInfo != nullptr) {
        (void)napi_throw_error(env, nullptr, message.c_str());
    }
}

napi_valuetype GetType(napi_env env, napi_value value)
{
    napi_valuetype type = napi_undefined;
    if (napi_typeof(env, value, &type) != napi_ok) {
        LOGE("get value type failed.");
        return napi_undefined;
    }
    return type;
}

bool GetString(napi_env env, napi_value value, std::string &result)
{
    std::unique_ptr<char[]> buffer(new char[STRING_BUFFER_SIZE]());
    size_t copied = 0;
    if (napi_get_value_string_utf8(env, value, buffer.get(), STRING_BUFFER_SIZE, &copied) != napi_ok) {
        LOGE("get string failed.");
        return false;
    }
    result.assign(buffer.get(), copied);
    return true;
}

bool GetNumber(napi_env env, napi_value value, int &result)
{
    if (GetType(env, value) != napi_number) {
        LOGE("no type number");
        return false;
    }
    if (napi_get_value_int32(env, value, &result) != napi_ok) {
        LOGE("get number failed.");
        return false;
    }
    return true;
}

std::string GetKey(napi_env env, napi_value keys, uint32_t index)
{
    napi_value element = nullptr;
    if (napi_get_element(env, keys, index, &element) != napi_ok) {
        AbortUnlessScriptEnding(env);
        return "";
    }
    std::string key;
    GetString(env, element, key);
    return key;
}

std::string GetValue(napi_env env, std::string key, napi_value object)
{
    napi_value property = nullptr;
    if (napi_get_named_property(env, object, key.c_str(), &property) != napi_ok) {
        AbortUnlessScriptEnding(env);
        return "";
    }
    napi_valuetype type = GetType(env, property);
    switch (type) {
    case napi_undefined:
    case napi_null:
        return "";
    case napi_boolean: {
        bool flag = false;
        if (napi_get_value_bool(env, property, &flag) != napi_ok) {
            AbortUnlessScriptEnding(env);
            return "";
        }
        return flag ? "true" : "false";
    }
    case napi_number: {
        double number = 0;
        if (napi_get_value_double(env, property, &number) != napi_ok) {
            AbortUnlessScriptEnding(env);
            return "";
        }
        return NumberToText(number);
    }
    case napi_string: {
        std::string text;
        GetString(env, property, text);
        return text;
    }
    default:
        LOGE("Invalid property: %{public}s", key.c_str());
        return "";
    }
}

bool NapiParseMap(napi_env env, napi_value object, std::unordered_map<std::string, std::string> &result)
{
    napi_value keys = nullptr;
    // Own enumerable string keys, index keys as text: napi_get_property_names lists different keys on different
    // engines (inherited enumerable ones on one, non-enumerable own ones on another).
    if (napi_get_all_property_names(env, object, napi_key_own_only,
                                    static_cast<napi_key_filter>(napi_key_enumerable | napi_key_skip_symbols),
                                    napi_key_numbers_to_strings, &keys) != napi_ok) {
        LOGE("failed to get keys");
        return false;
    }
    uint32_t length = 0;
    if (napi_get_array_length(env, keys, &length) != napi_ok) {
        LOGE("failed to get map length");
        return false;
    }
    for (uint32_t index = 0; index < length; ++index) {
        std::string key = GetKey(env, keys, index);
        result[key] = GetValue(env, key, object);
    }
    return true;
}

bool GetNamedProperty(napi_env env, napi_value object, std::string name, napi_value &result)
{
    bool hasProperty = false;
    (void)napi_has_named_property(env, object, name.c_str(), &hasProperty);
    if (!hasProperty) {
        LOGE("no listener named %{publlic}s", name.c_str());
        return false;
    }
    (void)napi_get_named_property(env, object, name.c_str(), &result);
    if (GetType(env, result) == napi_function) {
        return true;
    }
    LOGE("Failed to get listener named %{publlic}s", name.c_str());
    return false;
}

bool ParseJSCarConnectListener(napi_env env, napi_value listener, JSCarConnectListener &result)
{
    if (GetType(env, listener) != napi_object) {
        LOGE("Failed to get object JSCarConnectListener");
        return false;
    }
    return GetNamedProperty(env, listener, "onBindResult", result.onBindResult) &&
           GetNamedProperty(env, listener, "onDataReceive", result.onDataReceive) &&
           GetNamedProperty(env, listener, "onDeviceStateChange", result.onDeviceStateChange);
}
} // namespace TravelService
} // namespace OHOS
