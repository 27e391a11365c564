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
// The device engine's Node-API semantics over Node's: declarations of the layer that the stand-in napi/native_api.h
// puts in place of the Node-API functions where the two engines differ (device profile only).

#ifndef HOST_INCLUDE_OHOS_HOST_DEVICE_NAPI_H
#define HOST_INCLUDE_OHOS_HOST_DEVICE_NAPI_H

#include <node_api.h>

extern "C" {
napi_status ohos_device_napi_wrap(napi_env env, napi_value object, void *nativeObject, napi_finalize finalize,
                                  void *hint, napi_ref *result);
napi_status ohos_device_napi_unwrap(napi_env env, napi_value object, void **result);
napi_status ohos_device_napi_remove_wrap(napi_env env, napi_value object, void **result);
napi_status ohos_device_napi_create_reference(napi_env env, napi_value value, uint32_t initialRefcount,
                                              napi_ref *result);
napi_status ohos_device_napi_get_reference_value(napi_env env, napi_ref ref, napi_value *result);
napi_status ohos_device_napi_throw_error(napi_env env, const char *code, const char *message);
napi_status ohos_device_napi_create_error(napi_env env, napi_value code, napi_value message, napi_value *result);
napi_status ohos_device_napi_get_last_error_info(napi_env env, const napi_extended_error_info **result);
napi_status ohos_device_napi_get_property_names(napi_env env, napi_value object, napi_value *result);
napi_status ohos_device_napi_create_async_work(napi_env env, napi_value asyncResource, napi_value asyncResourceName,
                                               napi_async_execute_callback execute,
                                               napi_async_complete_callback complete, void *data,
                                               napi_async_work *result);
napi_status ohos_device_napi_queue_async_work(napi_env env, napi_async_work work);
napi_status ohos_device_napi_get_value_string_utf8(napi_env env, napi_value value, char *buffer, size_t bufferSize,
                                                   size_t *result);
}

#endif // HOST_INCLUDE_OHOS_HOST_DEVICE_NAPI_H
