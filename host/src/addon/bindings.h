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

#ifndef HOST_SRC_ADDON_BINDINGS_H
#define HOST_SRC_ADDON_BINDINGS_H

#include <node_api.h>

// Each function adds the functions of one stand-in, or the engine probes, to the exports of the harness addon.
namespace OHOS {
namespace Host {
namespace Addon {
void DefinePlatformFunctions(napi_env env, napi_value exports);
void DefineCarServiceFunctions(napi_env env, napi_value exports);
void DefineMainRunnerFunctions(napi_env env, napi_value exports);
void DefineEngineProbeFunctions(napi_env env, napi_value exports);
} // namespace Addon
} // namespace Host
} // namespace OHOS

#endif // HOST_SRC_ADDON_BINDINGS_H
