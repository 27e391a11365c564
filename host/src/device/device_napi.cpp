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
// The device engine's Node-API semantics, built over Node's Node-API where the two differ and the host can show it
// (device profile only). Statuses the layer decides itself are written into Node's last-error record, so that
// napi_get_last_error_info reports them as the device does.

#include "ohos_host/device_napi.h"

#include <array>

namespace {
constexpr napi_type_tag PRIMITIVE_HOLDER_TAG = {0x6f686f7364657669ULL, 0x63655f7072696d31ULL};
constexpr const char *HELD_VALUE_KEY = "value";

// What the device keeps behind a wrap: its finalizer runs when the wrap is removed, not only at collection.
struct WrapRecord {
    void *nativeObject;
    napi_finalize finalize;
    void *hint;
};

// A status the layer decided, for napi_get_last_error_info. Node's own record is set to napi_invalid_arg at the
// same time; a later Node-API call overwrites it, and the decided status then no longer applies.
thread_local napi_status g_decidedStatus = napi_ok;
thread_local napi_extended_error_info g_deviceErrorInfo = {};

// The device's status numbers end at 21 before its own 22-24: Node's statuses past 21 have no device value.
napi_status DeviceStatus(napi_status status)
{
    return status > napi_would_deadlock ? napi_generic_failure : status;
}

napi_status Decide(napi_env env, napi_status status)
{
    g_decidedStatus = napi_ok;
    if (status == napi_ok) {
        napi_value undefined = nullptr;
        (void)napi_get_undefined(env, &undefined);
        return status;
    }
    napi_valuetype ignored = napi_undefined;
    (void)napi_typeof(env, nullptr, &ignored);
    g_decidedStatus = status;
    return status;
}

napi_status InvalidArg(napi_env env)
{
    return env == nullptr ? napi_invalid_arg : Decide(env, napi_invalid_arg);
}

napi_status Passed(napi_status status)
{
    g_decidedStatus = napi_ok;
    return DeviceStatus(status);
}

bool IsObjectType(napi_env env, napi_value value)
{
    napi_valuetype type = napi_undefined;
    return napi_typeof(env, value, &type) == napi_ok && (type == napi_object || type == napi_function);
}

void RunWrapFinalizer(napi_env env, void *data, void *)
{
    auto *record = static_cast<WrapRecord *>(data);
    record->finalize(env, record->nativeObject, record->hint);
    delete record;
}

// The checks and answers that napi_unwrap and napi_remove_wrap share: the native object behind `object` into
// `result` (null when never wrapped), its wrap record into `record`, which `remove` takes off the object.
napi_status FindWrap(napi_env env, napi_value object, void **result, bool remove, WrapRecord **record)
{
    if (env == nullptr || object == nullptr || result == nullptr) {
        return InvalidArg(env);
    }
    if (!IsObjectType(env, object)) {
        return Decide(env, napi_object_expected);
    }
    void *data = nullptr;
    if ((remove ? napi_remove_wrap(env, object, &data) : napi_unwrap(env, object, &data)) == napi_ok) {
        *record = static_cast<WrapRecord *>(data);
    }
    *result = *record == nullptr ? nullptr : (*record)->nativeObject;
    return Decide(env, napi_ok);
}

// The device's texts for the statuses it names; others keep Node's text.
const char *DeviceErrorText(napi_status status, const char *nodeText)
{
    static const std::array<const char *, napi_pending_exception + 1> texts = {
        nullptr,
        "Invalid parameter",
        "Need object",
        "Need string",
        nullptr,
        "Need function",
        "Need number",
        "Need boolean",
        "Need array",
        "Generic failure",
        "An exception is blocking",
    };
    if (status >= 0 && static_cast<size_t>(status) < texts.size() && texts[status] != nullptr) {
        return texts[status];
    }
    return nodeText;
}
} // namespace

extern "C" {
// native and finalizer required; a second wrap replaces the first; the returned reference starts strong (count 1).
napi_status ohos_device_napi_wrap(napi_env env, napi_value object, void *nativeObject, napi_finalize finalize,
                                  void *hint, napi_ref *result)
{
    if (env == nullptr || object == nullptr || nativeObject == nullptr || finalize == nullptr) {
        return InvalidArg(env);
    }
    if (!IsObjectType(env, object)) {
        return Decide(env, napi_object_expected);
    }
    void *previous = nullptr;
    if (napi_remove_wrap(env, object, &previous) == napi_ok) {
        delete static_cast<WrapRecord *>(previous);
    }
    auto *record = new WrapRecord{nativeObject, finalize, hint};
    napi_status status = napi_wrap(env, object, record, RunWrapFinalizer, nullptr, result);
    if (status != napi_ok) {
        delete record;
        return Passed(status);
    }
    if (result != nullptr) {
        uint32_t count = 0;
        (void)napi_reference_ref(env, *result, &count);
    }
    return Decide(env, napi_ok);
}

// An object never wrapped answers ok with a null result; a value that is not an object, napi_object_expected.
napi_status ohos_device_napi_unwrap(napi_env env, napi_value object, void **result)
{
    WrapRecord *record = nullptr;
    return FindWrap(env, object, result, false, &record);
}

// result is required: without it the wrap stays. Removing runs the finalizer at once; not wrapped: ok, null.
napi_status ohos_device_napi_remove_wrap(napi_env env, napi_value object, void **result)
{
    WrapRecord *record = nullptr;
    napi_status status = FindWrap(env, object, result, true, &record);
    if (record != nullptr) {
        RunWrapFinalizer(env, record, nullptr);
        return Decide(env, status);
    }
    return status;
}

// Any value may be referenced: one that Node refuses (a primitive, an external) is held by a tagged holder object.
napi_status ohos_device_napi_create_reference(napi_env env, napi_value value, uint32_t initialRefcount,
                                              napi_ref *result)
{
    napi_valuetype type = napi_undefined;
    if (env == nullptr || value == nullptr || result == nullptr || napi_typeof(env, value, &type) != napi_ok) {
        return InvalidArg(env);
    }
    napi_value referenced = value;
    if (type != napi_object && type != napi_function && type != napi_symbol) {
        napi_status status = napi_create_object(env, &referenced);
        if (status == napi_ok) {
            status = napi_type_tag_object(env, referenced, &PRIMITIVE_HOLDER_TAG);
        }
        if (status == napi_ok) {
            status = napi_set_named_property(env, referenced, HELD_VALUE_KEY, value);
        }
        if (status != napi_ok) {
            return Passed(status);
        }
    }
    return Passed(napi_create_reference(env, referenced, initialRefcount, result));
}

napi_status ohos_device_napi_get_reference_value(napi_env env, napi_ref ref, napi_value *result)
{
    napi_status status = napi_get_reference_value(env, ref, result);
    bool isHolder = false;
    if (status == napi_ok && *result != nullptr && IsObjectType(env, *result) &&
        napi_check_object_type_tag(env, *result, &PRIMITIVE_HOLDER_TAG, &isHolder) == napi_ok && isHolder) {
        status = napi_get_named_property(env, *result, HELD_VALUE_KEY, result);
    }
    return Passed(status);
}

// No pending-exception check: a new error replaces the pending one. The message is required.
napi_status ohos_device_napi_throw_error(napi_env env, const char *code, const char *message)
{
    if (env == nullptr || message == nullptr) {
        return InvalidArg(env);
    }
    bool pending = false;
    if (napi_is_exception_pending(env, &pending) == napi_ok && pending) {
        napi_value dropped = nullptr;
        (void)napi_get_and_clear_last_exception(env, &dropped);
    }
    return Passed(napi_throw_error(env, code, message));
}

// The code may be a string or a number; a message that is not a string is napi_invalid_arg.
napi_status ohos_device_napi_create_error(napi_env env, napi_value code, napi_value message, napi_value *result)
{
    napi_valuetype messageType = napi_undefined;
    napi_valuetype codeType = napi_undefined;
    if (env == nullptr || message == nullptr || result == nullptr ||
        napi_typeof(env, message, &messageType) != napi_ok || messageType != napi_string ||
        (code != nullptr && napi_typeof(env, code, &codeType) != napi_ok)) {
        return InvalidArg(env);
    }
    if (code == nullptr || codeType != napi_number) {
        return Passed(napi_create_error(env, code, message, result));
    }
    napi_status status = napi_create_error(env, nullptr, message, result);
    if (status == napi_ok) {
        status = napi_set_named_property(env, *result, "code", code);
    }
    return Passed(status);
}

// The same record, with the device's status numbers and texts.
napi_status ohos_device_napi_get_last_error_info(napi_env env, const napi_extended_error_info **result)
{
    if (env == nullptr || result == nullptr) {
        return napi_invalid_arg;
    }
    const napi_extended_error_info *nodeInfo = nullptr;
    napi_status status = napi_get_last_error_info(env, &nodeInfo);
    if (status != napi_ok) {
        return DeviceStatus(status);
    }
    g_deviceErrorInfo = *nodeInfo;
    if (g_decidedStatus != napi_ok && nodeInfo->error_code == napi_invalid_arg) {
        g_deviceErrorInfo.error_code = g_decidedStatus;
    }
    g_deviceErrorInfo.error_code = DeviceStatus(g_deviceErrorInfo.error_code);
    g_deviceErrorInfo.error_message = DeviceErrorText(g_deviceErrorInfo.error_code, nodeInfo->error_message);
    *result = &g_deviceErrorInfo;
    return napi_ok;
}

// The object's own string keys, enumerable or not; nothing from the prototype chain.
napi_status ohos_device_napi_get_property_names(napi_env env, napi_value object, napi_value *result)
{
    return Passed(napi_get_all_property_names(env, object, napi_key_own_only,
                                              static_cast<napi_key_filter>(napi_key_skip_symbols),
                                              napi_key_numbers_to_strings, result));
}

// The completion is required.
napi_status ohos_device_napi_create_async_work(napi_env env, napi_value asyncResource, napi_value asyncResourceName,
                                               napi_async_execute_callback execute,
                                               napi_async_complete_callback complete, void *data,
                                               napi_async_work *result)
{
    if (env == nullptr || complete == nullptr) {
        return InvalidArg(env);
    }
    return Passed(napi_create_async_work(env, asyncResource, asyncResourceName, execute, complete, data, result));
}

// Past its argument checks, queueing answers ok even when the thread pool refused the work.
napi_status ohos_device_napi_queue_async_work(napi_env env, napi_async_work work)
{
    napi_status status = napi_queue_async_work(env, work);
    return status == napi_invalid_arg ? Passed(status) : Decide(env, napi_ok);
}

// The length pointer is required, also with a buffer (releases up to 5.x).
napi_status ohos_device_napi_get_value_string_utf8(napi_env env, napi_value value, char *buffer, size_t bufferSize,
                                                   size_t *result)
{
    if (env == nullptr || result == nullptr) {
        return InvalidArg(env);
    }
    return Passed(napi_get_value_string_utf8(env, value, buffer, bufferSize, result));
}
}
