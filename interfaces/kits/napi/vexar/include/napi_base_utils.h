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

#ifndef INTERFACES_KITS_NAPI_VEXAR_INCLUDE_NAPI_BASE_UTILS_H
#define INTERFACES_KITS_NAPI_VEXAR_INCLUDE_NAPI_BASE_UTILS_H

#include <cstdint>
#include <string>
#include <unordered_map>

#include "napi/native_api.h"
#include "napi/native_node_api.h"

namespace OHOS {
namespace TravelService {
// Filled by ParseJSCarConnectListener to validate a listener object; the listener itself is kept whole.
struct JSCarConnectListener {
    napi_value onBindResult;
    napi_value onDataReceive;
    napi_value onDeviceStateChange;
    napi_value reserved;
};

napi_value NapiGetNull(napi_env env);
napi_value ThrowNapiError(napi_env env, int32_t code, const std::string &message);
napi_value CreateNapiError(napi_env env, int32_t code, const std::string &message);
// Throws the last N-API error as a plain error unless an exception is pending or no error record exists.
void ThrowLastNapiError(napi_env env);
// Whether reading a call's arguments ended the call: script code run by the read threw (a getter, a proxy trap),
// or the environment is going away.
bool ArgumentsEndedCall(napi_env env);

napi_valuetype GetType(napi_env env, napi_value value);
bool GetString(napi_env env, napi_value value, std::string &result);
bool GetNumber(napi_env env, napi_value value, int &result);
std::string GetKey(napi_env env, napi_value keys, uint32_t index);
std::string GetValue(napi_env env, std::string key, napi_value object);
bool NapiParseMap(napi_env env, napi_value object, std::unordered_map<std::string, std::string> &result);
bool GetNamedProperty(napi_env env, napi_value object, std::string name, napi_value &result);
bool ParseJSCarConnectListener(napi_env env, napi_value listener, JSCarConnectListener &result);
} // namespace TravelService
} // namespace OHOS

#endif // INTERFACES_KITS_NAPI_VEXAR_INCLUDE_NAPI_BASE_UTILS_H
