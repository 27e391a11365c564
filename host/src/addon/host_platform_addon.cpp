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

#include <node_api.h>

#include <exception>

#include "bindings.h"

// The host harness addon: gives scripts control of the platform stand-ins and runs the main event runner on the
// thread that attaches it. Uses nothing but Node-API.
NAPI_MODULE_INIT()
{
    try {
        OHOS::Host::Addon::DefinePlatformFunctions(env, exports);
        OHOS::Host::Addon::DefineCarServiceFunctions(env, exports);
        OHOS::Host::Addon::DefineMainRunnerFunctions(env, exports);
        OHOS::Host::Addon::DefineEngineProbeFunctions(env, exports);
    } catch (const std::exception &error) {
        napi_throw_error(env, nullptr, error.what());
        return nullptr;
    }
    return exports;
}
