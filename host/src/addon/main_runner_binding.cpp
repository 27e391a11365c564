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
#include <vector>

#include "bindings.h"
#include "napi_support.h"
#include "ohos_host/host_control.h"

namespace OHOS {
namespace Host {
namespace Addon {
namespace {
// Runs the main event runner on the thread of the script environment that attached it, through a thread-safe
// function that the runner wakes. The wake-up is unreferenced, so that an idle runner never keeps the process
// alive, except while a whenIdle() promise waits. A wake-up runs one batch of due tasks; while more are due,
// the script function given at attach (the thread-safe function's own) schedules the next batch after a turn of
// the event loop, through DrainBatch. Used only on that thread.
class MainRunnerBinding {
public:
    static napi_value Attach(const CallArgs &args);
    static napi_value WhenIdle(const CallArgs &args);
    static napi_value DrainBatch(const CallArgs &args);
    static napi_value Pending(const CallArgs &args);
    static napi_value RecordPosts(const CallArgs &args);
    static napi_value Posts(const CallArgs &args);

private:
    struct IdleWaiter {
        uint64_t lastSequence;
        napi_deferred deferred;
    };

    static MainRunnerBinding *Current(napi_env env);
    static void Drain(napi_env env, napi_value scheduleDrain, void *context, void *data);
    // Runs one batch and settles the idle waiters; returns whether more tasks are due.
    static bool RunBatch(napi_env env, MainRunnerBinding *binding);
    static void Teardown(void *arg);
    static void Finalize(napi_env env, void *data, void *hint);

    void SettleIdleWaiters(napi_env env);
    void KeepProcessAlive(napi_env env, bool alive);

    napi_threadsafe_function wakeup_ = nullptr;
    std::vector<IdleWaiter> idleWaiters_;
    bool referenced_ = false;
};

MainRunnerBinding *MainRunnerBinding::Current(napi_env env)
{
    void *data = nullptr;
    Check(env, napi_get_instance_data(env, &data));
    return static_cast<MainRunnerBinding *>(data);
}

napi_value MainRunnerBinding::Attach(const CallArgs &args)
{
    napi_env env = args.Env();
    if (Current(env) != nullptr) {
        return Undefined(env);
    }
    napi_value scheduleDrain = args.At(0);
    if (TypeOf(env, scheduleDrain) != napi_function) {
        throw JsError("attachMainRunner needs the function that schedules the next batch");
    }
    auto binding = std::make_unique<MainRunnerBinding>();
    napi_value name = MakeString(env, "main event runner");
    Check(env, napi_create_threadsafe_function(env, scheduleDrain, nullptr, name, 0, 1, binding.get(), Finalize,
                                               binding.get(), Drain, &binding->wakeup_));
    // From here on the thread-safe function owns the binding and deletes it in Finalize.
    MainRunnerBinding *attached = binding.release();
    napi_threadsafe_function wakeup = attached->wakeup_;
    Check(env, napi_unref_threadsafe_function(env, wakeup));
    if (!AttachMainRunner([wakeup] { napi_call_threadsafe_function(wakeup, nullptr, napi_tsfn_nonblocking); })) {
        napi_release_threadsafe_function(wakeup, napi_tsfn_abort);
        throw JsError("the main event runner is attached to another environment or has been shut down");
    }
    Check(env, napi_add_env_cleanup_hook(env, Teardown, attached));
    Check(env, napi_set_instance_data(env, attached, nullptr, nullptr));
    return Undefined(env);
}

napi_value MainRunnerBinding::WhenIdle(const CallArgs &args)
{
    napi_env env = args.Env();
    napi_deferred deferred = nullptr;
    napi_value promise = nullptr;
    Check(env, napi_create_promise(env, &deferred, &promise));
    MainRunnerBinding *binding = Current(env);
    if (binding == nullptr) {
        Check(env, napi_reject_deferred(env, deferred,
                                        MakeError(env, "the main event runner is not attached to this thread")));
        return promise;
    }
    uint64_t lastSequence = MainRunnerLastSequence();
    if (!MainRunnerHasPendingThrough(lastSequence)) {
        Check(env, napi_resolve_deferred(env, deferred, Undefined(env)));
        return promise;
    }
    binding->idleWaiters_.push_back({lastSequence, deferred});
    binding->KeepProcessAlive(env, true);
    return promise;
}

bool MainRunnerBinding::RunBatch(napi_env env, MainRunnerBinding *binding)
{
    bool more = RunDueMainTasks([env](const std::function<void()> &tasks) {
        napi_handle_scope scope = nullptr;
        napi_open_handle_scope(env, &scope);
        tasks();
        napi_close_handle_scope(env, scope);
    });
    binding->SettleIdleWaiters(env);
    return more;
}

// Items left at teardown arrive with a null env and are ignored.
void MainRunnerBinding::Drain(napi_env env, napi_value scheduleDrain, void *context, void *)
{
    if (env == nullptr || !RunBatch(env, static_cast<MainRunnerBinding *>(context))) {
        return;
    }
    napi_value undefined = Undefined(env);
    napi_call_function(env, undefined, scheduleDrain, 0, nullptr, nullptr);
}

// mainRunnerDrain(): the next batch, for the scheduled continuation; true while more tasks are due.
napi_value MainRunnerBinding::DrainBatch(const CallArgs &args)
{
    napi_env env = args.Env();
    MainRunnerBinding *binding = Current(env);
    return MakeBool(env, binding != nullptr && RunBatch(env, binding));
}

// mainRunnerPending(): how many tasks wait to run now.
napi_value MainRunnerBinding::Pending(const CallArgs &args)
{
    return MakeNumber(args.Env(), static_cast<double>(MainRunnerPendingCount()));
}

// mainRunnerRecordPosts(enabled): records every task posted from now on, or stops and forgets the record.
napi_value MainRunnerBinding::RecordPosts(const CallArgs &args)
{
    MainRunnerRecordPosts(ToBool(args.Env(), args.At(0), "enabled"));
    return Undefined(args.Env());
}

// mainRunnerPosts(): [{ priority, thread }] of the tasks posted since recording started, in posting order.
napi_value MainRunnerBinding::Posts(const CallArgs &args)
{
    napi_env env = args.Env();
    std::vector<napi_value> posts;
    for (const MainRunnerPost &post : MainRunnerPosts()) {
        napi_value record = MakeObject(env);
        SetProperty(env, record, "priority", MakeNumber(env, post.priority));
        SetProperty(env, record, "thread", MakeNumber(env, static_cast<double>(post.thread)));
        posts.push_back(record);
    }
    return MakeArray(env, posts);
}

// Environment cleanup: stop the runner before the thread-safe function goes, so nothing calls it afterwards.
void MainRunnerBinding::Teardown(void *arg)
{
    DetachMainRunner();
    napi_release_threadsafe_function(static_cast<MainRunnerBinding *>(arg)->wakeup_, napi_tsfn_abort);
}

void MainRunnerBinding::Finalize(napi_env, void *data, void *)
{
    delete static_cast<MainRunnerBinding *>(data);
}

void MainRunnerBinding::SettleIdleWaiters(napi_env env)
{
    napi_value undefined = nullptr;
    napi_get_undefined(env, &undefined);
    std::vector<IdleWaiter> waiting;
    for (const IdleWaiter &waiter : idleWaiters_) {
        if (MainRunnerHasPendingThrough(waiter.lastSequence)) {
            waiting.push_back(waiter);
        } else {
            napi_resolve_deferred(env, waiter.deferred, undefined);
        }
    }
    idleWaiters_ = std::move(waiting);
    KeepProcessAlive(env, !idleWaiters_.empty());
}

void MainRunnerBinding::KeepProcessAlive(napi_env env, bool alive)
{
    if (alive == referenced_) {
        return;
    }
    if (alive) {
        napi_ref_threadsafe_function(env, wakeup_);
    } else {
        napi_unref_threadsafe_function(env, wakeup_);
    }
    referenced_ = alive;
}
} // namespace

void DefineMainRunnerFunctions(napi_env env, napi_value exports)
{
    DefineFunction(env, exports, "attachMainRunner", Export<MainRunnerBinding::Attach>);
    DefineFunction(env, exports, "mainRunnerWhenIdle", Export<MainRunnerBinding::WhenIdle>);
    DefineFunction(env, exports, "mainRunnerDrain", Export<MainRunnerBinding::DrainBatch>);
    DefineFunction(env, exports, "mainRunnerPending", Export<MainRunnerBinding::Pending>);
    DefineFunction(env, exports, "mainRunnerRecordPosts", Export<MainRunnerBinding::RecordPosts>);
    DefineFunction(env, exports, "mainRunnerPosts", Export<MainRunnerBinding::Posts>);
}
} // namespace Addon
} // namespace Host
} // namespace OHOS
