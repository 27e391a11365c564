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

#ifndef HOST_INCLUDE_NAPI_NATIVE_API_H
#define HOST_INCLUDE_NAPI_NATIVE_API_H

// Public Node-API kit header of the platform. The host uses the Node-API of Node.js itself. The platform also
// defines NAPI_EXPERIMENTAL, which with Node's own headers makes finalizers take a const env, where the
// platform's keep the plain one: the plain build leaves it out, the device profile (Node 18.20's headers, as the
// platform's) defines it and opts out of the const env.
#ifndef NAPI_VERSION
#define NAPI_VERSION 8
#endif
#if defined(ROVANTA_DEVICE_PROFILE) && !defined(NAPI_EXPERIMENTAL)
#define NAPI_EXPERIMENTAL
#define NODE_API_EXPERIMENTAL_NOGC_ENV_OPT_OUT
#endif

#include <node_api.h>

#ifdef ROVANTA_DEVICE_PROFILE
// The device's engine differs from Node's in these functions; the device profile calls a layer that behaves as
// the device's does (host/src/device/device_napi.cpp).
#include "ohos_host/device_napi.h"
#define napi_wrap ohos_device_napi_wrap
#define napi_unwrap ohos_device_napi_unwrap
#define napi_remove_wrap ohos_device_napi_remove_wrap
#define napi_create_reference ohos_device_napi_create_reference
#define napi_get_reference_value ohos_device_napi_get_reference_value
#define napi_throw_error ohos_device_napi_throw_error
#define napi_create_error ohos_device_napi_create_error
#define napi_get_last_error_info ohos_device_napi_get_last_error_info
#define napi_get_property_names ohos_device_napi_get_property_names
#define napi_create_async_work ohos_device_napi_create_async_work
#define napi_queue_async_work ohos_device_napi_queue_async_work
#define napi_get_value_string_utf8 ohos_device_napi_get_value_string_utf8
#endif

#endif // HOST_INCLUDE_NAPI_NATIVE_API_H
