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
struct NamedNoOpWork {
    napi_deferred deferred = nullptr;
    napi_async_work work = nullptr;

    static void Execute(napi_env, void *) {}

    // Completed or cancelled, the work is over: the promise resolves either way.
    static void Complete(napi_env env, napi_status, void *data)
    {
        std::unique_ptr<NamedNoOpWork> named(static_cast<NamedNoOpWork *>(data));
        napi_delete_async_work(env, named->work);
        napi_value undefined = nullptr;
        napi_get_undefined(env, &undefined);
        napi_resolve_deferred(env, named->deferred, undefined);
    }
};

napi_value RunAsyncWork(const CallArgs &args)
{
    napi_env env = args.Env();
    napi_value name = MakeString(env, ToStdString(env, args.At(0), "work name"));
    auto named = std::make_unique<NamedNoOpWork>();
    napi_value promise = QueuePromisedWork(env, name, NamedNoOpWork::Execute, NamedNoOpWork::Complete, named.get(),
                                           named->deferred, named->work);
    named.release();
    return promise;
}
} // namespace

void DefineEngineProbeFunctions(napi_env env, napi_value exports)
{
    DefineFunction(env, exports, "runAsyncWork", Export<RunAsyncWork>);
}
} // namespace Addon
} // namespace Host
} // namespace OHOS
