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

#include "napi_support.h"

#include <cmath>

namespace OHOS {
namespace Host {
namespace Addon {
namespace {
constexpr size_t MAX_ARGS = 8;

void ExpectType(napi_env env, napi_value value, napi_valuetype expected, const std::string &what, const char *kind)
{
    if (TypeOf(env, value) != expected) {
        throw JsError(what + " must be " + kind);
    }
}
} // namespace

void Check(napi_env env, napi_status status)
{
    if (status == napi_ok) {
        return;
    }
    const napi_extended_error_info *info = nullptr;
    napi_get_last_error_info(env, &info);
    std::string message = info != nullptr && info->error_message != nullptr ? info->error_message : "failure";
    throw JsError("Node-API call failed: " + message);
}

CallArgs::CallArgs(napi_env env, napi_callback_info info) : env_(env), values_(MAX_ARGS)
{
    size_t count = MAX_ARGS;
    Check(env, napi_get_cb_info(env, info, &count, values_.data(), nullptr, nullptr));
    values_.resize(std::min(count, MAX_ARGS));
}

napi_value CallArgs::At(size_t index) const
{
    return index < values_.size() ? values_[index] : Undefined(env_);
}

napi_valuetype TypeOf(napi_env env, napi_value value)
{
    napi_valuetype type = napi_undefined;
    Check(env, napi_typeof(env, value, &type));
    return type;
}

std::string ToStdString(napi_env env, napi_value value, const std::string &what)
{
    ExpectType(env, value, napi_string, what, "a string");
    size_t length = 0;
    Check(env, napi_get_value_string_utf8(env, value, nullptr, 0, &length));
    std::string text(length + 1, '\0');
    Check(env, napi_get_value_string_utf8(env, value, text.data(), text.size(), &length));
    text.resize(length);
    return text;
}

int32_t ToInt32(napi_env env, napi_value value, const std::string &what)
{
    ExpectType(env, value, napi_number, what, "a number");
    int32_t number = 0;
    Check(env, napi_get_value_int32(env, value, &number));
    return number;
}

int64_t ToInteger(napi_env env, napi_value value, const std::string &what, int64_t min, int64_t max)
{
    ExpectType(env, value, napi_number, what, "a number");
    double number = 0;
    Check(env, napi_get_value_double(env, value, &number));
    if (std::trunc(number) != number || number < static_cast<double>(min) || number > static_cast<double>(max)) {
        throw JsError(what + " must be a whole number from " + std::to_string(min) + " to " + std::to_string(max));
    }
    return static_cast<int64_t>(number);
}

bool ToBool(napi_env env, napi_value value, const std::string &what)
{
    ExpectType(env, value, napi_boolean, what, "a boolean");
    bool flag = false;
    Check(env, napi_get_value_bool(env, value, &flag));
    return flag;
}

std::vector<napi_value> ToArray(napi_env env, napi_value value, const std::string &what)
{
    bool isArray = false;
    Check(env, napi_is_array(env, value, &isArray));
    if (!isArray) {
        throw JsError(what + " must be an array");
    }
    uint32_t length = 0;
    Check(env, napi_get_array_length(env, value, &length));
    std::vector<napi_value> items(length);
    for (uint32_t index = 0; index < length; ++index) {
        Check(env, napi_get_element(env, value, index, &items[index]));
    }
    return items;
}

napi_value OptionalProperty(napi_env env, napi_value object, const char *name)
{
    napi_value value = nullptr;
    Check(env, napi_get_named_property(env, object, name, &value));
    return TypeOf(env, value) == napi_undefined ? nullptr : value;
}

napi_value Undefined(napi_env env)
{
    napi_value value = nullptr;
    Check(env, napi_get_undefined(env, &value));
    return value;
}

napi_value MakeString(napi_env env, const std::string &text)
{
    napi_value value = nullptr;
    Check(env, napi_create_string_utf8(env, text.data(), text.size(), &value));
    return value;
}

napi_value MakeString(napi_env env, const std::u16string &text)
{
    napi_value value = nullptr;
    Check(env, napi_create_string_utf16(env, text.data(), text.size(), &value));
    return value;
}

napi_value MakeNumber(napi_env env, double number)
{
    napi_value value = nullptr;
    Check(env, napi_create_double(env, number, &value));
    return value;
}

napi_value MakeBool(napi_env env, bool flag)
{
    napi_value value = nullptr;
    Check(env, napi_get_boolean(env, flag, &value));
    return value;
}

napi_value MakeObject(napi_env env)
{
    napi_value value = nullptr;
    Check(env, napi_create_object(env, &value));
    return value;
}

napi_value MakeArray(napi_env env, const std::vector<napi_value> &items)
{
    napi_value array = nullptr;
    Check(env, napi_create_array_with_length(env, items.size(), &array));
    for (size_t index = 0; index < items.size(); ++index) {
        Check(env, napi_set_element(env, array, static_cast<uint32_t>(index), items[index]));
    }
    return array;
}

void SetProperty(napi_env env, napi_value object, const char *name, napi_value value)
{
    Check(env, napi_set_named_property(env, object, name, value));
}

napi_value MakeError(napi_env env, const std::string &message)
{
    napi_value error = nullptr;
    Check(env, napi_create_error(env, nullptr, MakeString(env, message), &error));
    return error;
}

void DefineFunction(napi_env env, napi_value exports, const char *name, napi_callback callback)
{
    napi_value function = nullptr;
    Check(env, napi_create_function(env, name, NAPI_AUTO_LENGTH, callback, nullptr, &function));
    SetProperty(env, exports, name, function);
}
napi_value PromisedWork::Result(napi_env env)
{
    return Undefined(env);
}

namespace {
// One queued job with its promise and work handle; deleted by its completion.
struct PromisedWorkFrame {
    std::string name;
    std::unique_ptr<PromisedWork> job;
    napi_deferred deferred = nullptr;
    napi_async_work work = nullptr;
    std::string failure;

    static void Execute(napi_env, void *data)
    {
        auto *frame = static_cast<PromisedWorkFrame *>(data);
        try {
            frame->job->Execute();
        } catch (const std::exception &error) {
            frame->failure = error.what();
        }
    }

    static void Complete(napi_env env, napi_status status, void *data)
    {
        std::unique_ptr<PromisedWorkFrame> frame(static_cast<PromisedWorkFrame *>(data));
        napi_delete_async_work(env, frame->work);
        if (status != napi_ok) {
            frame->failure = "cancelled";
        }
        if (frame->failure.empty()) {
            try {
                napi_resolve_deferred(env, frame->deferred, frame->job->Result(env));
                return;
            } catch (const std::exception &error) {
                frame->failure = error.what();
            }
        }
        napi_value text = nullptr;
        napi_value error = nullptr;
        std::string message = frame->name + " failed: " + frame->failure;
        napi_create_string_utf8(env, message.c_str(), message.size(), &text);
        napi_create_error(env, nullptr, text, &error);
        napi_reject_deferred(env, frame->deferred, error);
    }
};
} // namespace

napi_value QueuePromisedWork(napi_env env, const std::string &name, std::unique_ptr<PromisedWork> job)
{
    auto frame = std::make_unique<PromisedWorkFrame>();
    frame->name = name;
    frame->job = std::move(job);
    napi_value promise = nullptr;
    Check(env, napi_create_promise(env, &frame->deferred, &promise));
    Check(env, napi_create_async_work(env, nullptr, MakeString(env, name), PromisedWorkFrame::Execute,
                                      PromisedWorkFrame::Complete, frame.get(), &frame->work));
    napi_status queued = napi_queue_async_work(env, frame->work);
    if (queued != napi_ok) {
        napi_delete_async_work(env, frame->work);
        Check(env, queued);
    }
    frame.release();
    return promise;
}
} // namespace Addon
} // namespace Host
} // namespace OHOS
