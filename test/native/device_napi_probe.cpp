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
// A test addon of the device profile that calls the Node-API functions in which the device's engine differs from
// Node's, through the stand-in napi/native_api.h, and hands the script what they answered.

#include <napi/native_api.h>

#include <cstdint>

namespace {
constexpr size_t STRING_BUFFER_SIZE = 16;
int g_finalized = 0;
int g_nativeA = 1;
int g_nativeB = 2;
napi_status g_throwStatus = napi_ok;

void CountFinalize(napi_env, void *, void *)
{
    ++g_finalized;
}

napi_value FirstArgument(napi_env env, napi_callback_info info)
{
    size_t argc = 1;
    napi_value argument = nullptr;
    (void)napi_get_cb_info(env, info, &argc, &argument, nullptr, nullptr);
    return argument;
}

napi_value Int(napi_env env, int64_t value)
{
    napi_value result = nullptr;
    (void)napi_create_int64(env, value, &result);
    return result;
}

napi_value Bool(napi_env env, bool value)
{
    napi_value result = nullptr;
    (void)napi_get_boolean(env, value, &result);
    return result;
}

// { status, ...named values }: what one call answered.
napi_value Answer(napi_env env, napi_status status, const char *name = nullptr, napi_value value = nullptr)
{
    napi_value answer = nullptr;
    (void)napi_create_object(env, &answer);
    (void)napi_set_named_property(env, answer, "status", Int(env, status));
    if (name != nullptr && value != nullptr) {
        (void)napi_set_named_property(env, answer, name, value);
    }
    return answer;
}

bool IsWrapped(napi_env env, napi_value object)
{
    void *native = nullptr;
    return napi_unwrap(env, object, &native) == napi_ok && native != nullptr;
}

// The count of the reference napi_wrap returned, after one more napi_reference_ref.
napi_value WrapReferenceCount(napi_env env, napi_callback_info info)
{
    napi_ref ref = nullptr;
    napi_status status = napi_wrap(env, FirstArgument(env, info), &g_nativeA, CountFinalize, nullptr, &ref);
    uint32_t count = 0;
    if (status == napi_ok) {
        (void)napi_reference_ref(env, ref, &count);
        (void)napi_delete_reference(env, ref);
    }
    return Answer(env, status, "count", Int(env, count));
}

// Wraps twice: the second wrap's status and which native object the object then holds (1 or 2).
napi_value Rewrap(napi_env env, napi_callback_info info)
{
    napi_value object = FirstArgument(env, info);
    (void)napi_wrap(env, object, &g_nativeA, CountFinalize, nullptr, nullptr);
    napi_status status = napi_wrap(env, object, &g_nativeB, CountFinalize, nullptr, nullptr);
    void *native = nullptr;
    (void)napi_unwrap(env, object, &native);
    return Answer(env, status, "holds", Int(env, native == nullptr ? 0 : *static_cast<int *>(native)));
}

napi_value Unwrap(napi_env env, napi_callback_info info)
{
    void *native = &g_nativeA;
    napi_status status = napi_unwrap(env, FirstArgument(env, info), &native);
    return Answer(env, status, "isNull", Bool(env, native == nullptr));
}

// Wraps the object, then removes the wrap with or without a result pointer: the status, whether the wrap stays
// and how many finalizers ran so far.
napi_value RemoveWrap(napi_env env, napi_callback_info info, bool withResult)
{
    napi_value object = FirstArgument(env, info);
    (void)napi_wrap(env, object, &g_nativeA, CountFinalize, nullptr, nullptr);
    int finalizedBefore = g_finalized;
    void *removed = nullptr;
    napi_status status = napi_remove_wrap(env, object, withResult ? &removed : nullptr);
    napi_value answer = Answer(env, status, "stays", Bool(env, IsWrapped(env, object)));
    (void)napi_set_named_property(env, answer, "finalized", Int(env, g_finalized - finalizedBefore));
    return answer;
}

napi_value RemoveWrapWithResult(napi_env env, napi_callback_info info)
{
    return RemoveWrap(env, info, true);
}

napi_value RemoveWrapWithoutResult(napi_env env, napi_callback_info info)
{
    return RemoveWrap(env, info, false);
}

napi_value ReferenceTo(napi_env env, napi_callback_info info)
{
    napi_ref ref = nullptr;
    napi_status status = napi_create_reference(env, FirstArgument(env, info), 1, &ref);
    napi_value value = nullptr;
    if (status == napi_ok) {
        (void)napi_get_reference_value(env, ref, &value);
        (void)napi_delete_reference(env, ref);
    }
    return Answer(env, status, "value", value);
}

// Throws "first", then "second" while the first is pending; lastThrowStatus() tells the second's status.
napi_value ThrowTwice(napi_env env, napi_callback_info)
{
    (void)napi_throw_error(env, nullptr, "first");
    g_throwStatus = napi_throw_error(env, nullptr, "second");
    return nullptr;
}

napi_value LastThrowStatus(napi_env env, napi_callback_info)
{
    return Int(env, g_throwStatus);
}

// napi_create_error with the number given as its code.
napi_value ErrorWithCode(napi_env env, napi_callback_info info)
{
    napi_value message = nullptr;
    (void)napi_create_string_utf8(env, "refused", NAPI_AUTO_LENGTH, &message);
    napi_value error = nullptr;
    napi_status status = napi_create_error(env, FirstArgument(env, info), message, &error);
    return Answer(env, status, "error", error);
}

napi_value LastError(napi_env env, napi_status status)
{
    const napi_extended_error_info *info = nullptr;
    (void)napi_get_last_error_info(env, &info);
    napi_value message = nullptr;
    (void)napi_create_string_utf8(env, info->error_message == nullptr ? "" : info->error_message, NAPI_AUTO_LENGTH,
                                  &message);
    napi_value answer = Answer(env, status, "message", message);
    (void)napi_set_named_property(env, answer, "code", Int(env, info->error_code));
    return answer;
}

// The last-error record after reading the argument as a string.
napi_value StringReadError(napi_env env, napi_callback_info info)
{
    char buffer[STRING_BUFFER_SIZE] = {};
    size_t length = 0;
    return LastError(env, napi_get_value_string_utf8(env, FirstArgument(env, info), buffer, sizeof(buffer), &length));
}

// The last-error record after unwrapping the argument.
napi_value UnwrapError(napi_env env, napi_callback_info info)
{
    void *native = nullptr;
    return LastError(env, napi_unwrap(env, FirstArgument(env, info), &native));
}

napi_value PropertyNames(napi_env env, napi_callback_info info)
{
    napi_value names = nullptr;
    napi_status status = napi_get_property_names(env, FirstArgument(env, info), &names);
    return Answer(env, status, "names", names);
}

void ExecuteNothing(napi_env, void *) {}

napi_value AsyncWorkWithoutCompletion(napi_env env, napi_callback_info)
{
    napi_value name = nullptr;
    (void)napi_create_string_utf8(env, "probe", NAPI_AUTO_LENGTH, &name);
    napi_async_work work = nullptr;
    napi_status status = napi_create_async_work(env, nullptr, name, ExecuteNothing, nullptr, nullptr, &work);
    if (status == napi_ok) {
        (void)napi_delete_async_work(env, work);
    }
    return Answer(env, status);
}

napi_value StringWithoutLength(napi_env env, napi_callback_info info)
{
    char buffer[STRING_BUFFER_SIZE] = {};
    return Answer(env, napi_get_value_string_utf8(env, FirstArgument(env, info), buffer, sizeof(buffer), nullptr));
}

constexpr napi_property_descriptor Method(const char *name, napi_callback callback)
{
    return {name, nullptr, callback, nullptr, nullptr, nullptr, napi_default, nullptr};
}

napi_value Init(napi_env env, napi_value exports)
{
    const napi_property_descriptor functions[] = {
        Method("wrapReferenceCount", WrapReferenceCount),
        Method("rewrap", Rewrap),
        Method("unwrap", Unwrap),
        Method("removeWrapWithResult", RemoveWrapWithResult),
        Method("removeWrapWithoutResult", RemoveWrapWithoutResult),
        Method("referenceTo", ReferenceTo),
        Method("throwTwice", ThrowTwice),
        Method("lastThrowStatus", LastThrowStatus),
        Method("errorWithCode", ErrorWithCode),
        Method("stringReadError", StringReadError),
        Method("unwrapError", UnwrapError),
        Method("propertyNames", PropertyNames),
        Method("asyncWorkWithoutCompletion", AsyncWorkWithoutCompletion),
        Method("stringWithoutLength", StringWithoutLength),
    };
    (void)napi_define_properties(env, exports, sizeof(functions) / sizeof(functions[0]), functions);
    return exports;
}
} // namespace

NAPI_MODULE(NODE_GYP_MODULE_NAME, Init)
