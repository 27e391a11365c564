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

#endif // HOST_INCLUDE_NAPI_NATIVE_API_H
