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

#include <memory>

#include "bindings.h"
#include "napi_support.h"

namespace OHOS {
namespace Host {
namespace Addon {
namespace {
// An async work that does nothing, under a name the script chooses, so that a script can see what its engine
// reports about async work (Node's async_hooks gives such a resource the work's name as its type).
struct NamedNoOpWork : PromisedWork {
    void Execute() override {}
};

napi_value RunAsyncWork(const CallArgs &args)
{
    napi_env env = args.Env();
    return QueuePromisedWork(env, ToStdString(env, args.At(0), "work name"), std::make_unique<NamedNoOpWork>());
}
} // namespace

void DefineEngineProbeFunctions(napi_env env, napi_value exports)
{
    DefineFunction(env, exports, "runAsyncWork", Export<RunAsyncWork>);
}
} // namespace Addon
} // namespace Host
} // namespace OHOS
