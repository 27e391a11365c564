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

#ifndef HOST_SRC_ADDON_NAPI_SUPPORT_H
#define HOST_SRC_ADDON_NAPI_SUPPORT_H

#include <node_api.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

// Helpers of the harness addon. Functions below throw JsError; the Export wrapper turns it into a JS Error.
namespace OHOS {
namespace Host {
namespace Addon {
class JsError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Throws JsError carrying the engine message if `status` is not napi_ok.
void Check(napi_env env, napi_status status);

class CallArgs {
public:
    CallArgs(napi_env env, napi_callback_info info);

    napi_env Env() const
    {
        return env_;
    }

    // The argument at `index`; undefined when fewer were passed.
    napi_value At(size_t index) const;

private:
    napi_env env_;
    std::vector<napi_value> values_;
};

napi_valuetype TypeOf(napi_env env, napi_value value);
// The To* functions throw JsError naming `what` if `value` has the wrong type or range.
std::string ToStdString(napi_env env, napi_value value, const std::string &what);
// JS number to int32 with the wrap-around of ToInt32: 4294967297 gives 1.
int32_t ToInt32(napi_env env, napi_value value, const std::string &what);
// A whole number in [min, max].
int64_t ToInteger(napi_env env, napi_value value, const std::string &what, int64_t min, int64_t max);
bool ToBool(napi_env env, napi_value value, const std::string &what);
std::vector<napi_value> ToArray(napi_env env, napi_value value, const std::string &what);
// The named property, or nullptr when it is undefined.
napi_value OptionalProperty(napi_env env, napi_value object, const char *name);

napi_value Undefined(napi_env env);
napi_value MakeString(napi_env env, const std::string &text);
napi_value MakeString(napi_env env, const std::u16string &text);
napi_value MakeNumber(napi_env env, double number);
napi_value MakeBool(napi_env env, bool flag);
napi_value MakeObject(napi_env env);
napi_value MakeArray(napi_env env, const std::vector<napi_value> &items);
// An array of the strings in `texts` (std::string or std::u16string), in order.
template <typename Texts> napi_value MakeStringArray(napi_env env, const Texts &texts)
{
    std::vector<napi_value> items;
    for (const auto &text : texts) {
        items.push_back(MakeString(env, text));
    }
    return MakeArray(env, items);
}
void SetProperty(napi_env env, napi_value object, const char *name, napi_value value);
napi_value MakeError(napi_env env, const std::string &message);

// A job for a worker thread whose end settles a promise.
class PromisedWork {
public:
    virtual ~PromisedWork() = default;
    // Runs on a worker thread; an exception rejects the promise with its message.
    virtual void Execute() = 0;
    // Runs on the script thread after Execute: the value the promise resolves with (undefined by default).
    virtual napi_value Result(napi_env env);
};

// Creates a promise and queues `job` as an async work named `name`; once it has run, the promise settles as the
// job says, then the work and the job are deleted. A work that cannot be queued is deleted with the job and the
// failure thrown as JsError. Returns the promise.
napi_value QueuePromisedWork(napi_env env, const std::string &name, std::unique_ptr<PromisedWork> job);

// Calls `Body` and throws any JsError it raised into JS, unless an exception is pending already.
template <napi_value (*Body)(const CallArgs &args)> napi_value Export(napi_env env, napi_callback_info info)
{
    try {
        return Body(CallArgs(env, info));
    } catch (const std::exception &error) {
        bool pending = false;
        napi_is_exception_pending(env, &pending);
        if (!pending) {
            napi_throw_error(env, nullptr, error.what());
        }
        return nullptr;
    }
}

void DefineFunction(napi_env env, napi_value exports, const char *name, napi_callback callback);
} // namespace Addon
} // namespace Host
} // namespace OHOS

#endif // HOST_SRC_ADDON_NAPI_SUPPORT_H
