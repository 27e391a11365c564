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

#include "connect_module.h"

#include <array>
#include <iterator>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "napi_base_utils.h"
#include "vexar_common_constants.h"
#include "vexar_connect_constants.h"
#include "vexar_log.h"
#include "vexar_napi.h"

namespace OHOS {
namespace TravelService {
// Each script thread that imports the module has its own class constructor.
thread_local napi_ref g_constructorRef = nullptr;

namespace {
const std::string CLASS_NAME = "CarAdapterClient";

// The one owner of the current native client; script object wraps hold only raw pointers. Script threads of
// several environments may construct adapters, so it is guarded.
std::mutex g_carAdapterClientMutex;
std::shared_ptr<CarAdapterClient> g_carAdapterClient;

struct DiscoveryModeEntry {
    const char *name;
    int32_t value;
};

const DiscoveryModeEntry DISCOVERY_MODES[] = {
    {"NO_PERCEPTION_DISCOVERY", 1},
    {"BLUETOOTH_DISCOVERY", 2},
    {"USB_DISCOVERY", 3},
    {"QR_DISCOVERY", 4},
};

struct ListenerMethodRow {
    const char *scriptName;
    napi_callback wrapper;
};

const ListenerMethodRow LISTENER_METHODS[] = {
    {"registerConnectListener", RegisterConnectListener},
    {"unregisterConnectListener", UnRegisterConnectListener},
};
constexpr size_t CLASS_METHOD_COUNT = std::size(LISTENER_METHODS) + OPERATION_COUNT;

napi_property_descriptor MethodDescriptor(const char *scriptName, napi_callback wrapper)
{
    return {scriptName, nullptr, wrapper, nullptr, nullptr, nullptr, napi_default, nullptr};
}

// The class's methods: the two listener methods, then the nine operations in the order of their rows.
std::array<napi_property_descriptor, CLASS_METHOD_COUNT> ClassMethods()
{
    std::array<napi_property_descriptor, CLASS_METHOD_COUNT> methods;
    size_t index = 0;
    for (const ListenerMethodRow &row : LISTENER_METHODS) {
        methods[index++] = MethodDescriptor(row.scriptName, row.wrapper);
    }
    for (const OperationRow &row : OPERATIONS) {
        methods[index++] = MethodDescriptor(row.scriptName, row.wrapper);
    }
    return methods;
}

std::shared_ptr<CarAdapterClient> CurrentCarAdapterClient()
{
    std::lock_guard<std::mutex> lock(g_carAdapterClientMutex);
    return g_carAdapterClient;
}

// The client found behind `this` may belong to an older adapter object and have been destroyed when a newer
// one was constructed. Clients hold no state of their own, so the call is served by the current client, held
// for the length of the call, and the stale pointer is never used.
napi_value CallCarAdapter(napi_env env, napi_callback_info info, NapiFuncType type, const char *wrapperName)
{
    size_t argc = 1;
    napi_value argv[1] = {nullptr};
    napi_value thisVar = nullptr;
    void *data = nullptr;
    (void)napi_get_cb_info(env, info, &argc, argv, &thisVar, &data);
    void *wrappedClient = nullptr;
    (void)napi_unwrap(env, thisVar, &wrappedClient);
    std::shared_ptr<CarAdapterClient> client = wrappedClient != nullptr ? CurrentCarAdapterClient() : nullptr;
    if (client == nullptr) {
        VEXAR_HILOG(LOG_ERROR, wrapperName, "Get CarAdapterClient failed");
        return nullptr;
    }
    return client->HandleCarAdapter(type, env, info);
}

bool DefineClass(napi_env env, napi_value exports)
{
    std::array<napi_property_descriptor, CLASS_METHOD_COUNT> methods = ClassMethods();
    napi_value constructor = nullptr;
    if (napi_define_class(env, CLASS_NAME.c_str(), CLASS_NAME.size(), JsConstructor, nullptr, methods.size(),
                          methods.data(), &constructor) != napi_ok) {
        LOGE("DefineClass error, napi_define_class failed");
        return false;
    }
    if (napi_set_named_property(env, exports, CLASS_NAME.c_str(), constructor) != napi_ok) {
        LOGE("DefineClass error, napi_set_named_property failed");
        return false;
    }
    if (napi_create_reference(env, constructor, 1, &g_constructorRef) != napi_ok) {
        LOGE("DefineClass error, napi_create_reference failed");
        return false;
    }
    return true;
}

// Runs on the environment's own thread while it is torn down, before any static destructor: script references
// of this environment are deleted now, while the engine can still take them.
void CleanupEnvironment(void *arg)
{
    auto env = static_cast<napi_env>(arg);
    CarAdapterClient::ReleaseListenerManager(env);
    if (g_constructorRef != nullptr) {
        (void)napi_delete_reference(env, g_constructorRef);
        g_constructorRef = nullptr;
    }
}

napi_value CarAdapterClientInit(napi_env env, napi_value exports)
{
    LOGI("CarAdapterClientInit");
    napi_property_descriptor exportsDesc[] = {
        {"getCarConnectAdapter", nullptr, GetCarConnectAdapter, nullptr, nullptr, nullptr, napi_default, nullptr},
        {"DiscoveryMode", nullptr, nullptr, DiscoveryMode, nullptr, nullptr, napi_default, nullptr},
    };
    (void)napi_define_properties(env, exports, std::size(exportsDesc), exportsDesc);
    CarAdapterClient::AttachEnvironment(env);
    (void)napi_add_env_cleanup_hook(env, CleanupEnvironment, env);
    if (!DefineClass(env, exports)) {
        LOGE("DefineCarAdapterClient fail");
        return nullptr;
    }
    LOGI("DefineCarAdapterClient success");
    return exports;
}

// Version 1, no flags, no file name, no private data.
napi_module g_carServiceModule = {1, 0, nullptr, CarAdapterClientInit, "carService.rovanta", nullptr, {nullptr}};
} // namespace

// Each method wrapper logs its own name and enters the gate with its operation code.
napi_value RegisterConnectListener(napi_env env, napi_callback_info info)
{
    LOGI("RegisterConnectListener");
    return CallCarAdapter(env, info, REGISTER_CONNECT_LISTENER, __FUNCTION__);
}

napi_value UnRegisterConnectListener(napi_env env, napi_callback_info info)
{
    LOGI("UnRegisterConnectListener");
    return CallCarAdapter(env, info, UNREGISTER_CONNECT_LISTENER, __FUNCTION__);
}

napi_value StartBindTarget(napi_env env, napi_callback_info info)
{
    LOGI("StartBindTarget");
    return CallCarAdapter(env, info, START_BIND_TARGET, __FUNCTION__);
}

napi_value StopBindTarget(napi_env env, napi_callback_info info)
{
    LOGI("StopBindTarget");
    return CallCarAdapter(env, info, STOP_BIND_TARGET, __FUNCTION__);
}

napi_value SendControllData(napi_env env, napi_callback_info info)
{
    LOGI("SendControllData");
    return CallCarAdapter(env, info, SEND_CONTROL_DATA, __FUNCTION__);
}

napi_value StartSurfaceTransfer(napi_env env, napi_callback_info info)
{
    LOGI("StartSurfaceTransfer");
    return CallCarAdapter(env, info, START_SURFACE_TRANSFER, __FUNCTION__);
}

napi_value StopSurfaceTransfer(napi_env env, napi_callback_info info)
{
    LOGI("StopSurfaceTransfer");
    return CallCarAdapter(env, info, STOP_SURFACE_TRANSFER, __FUNCTION__);
}

napi_value CastOperation(napi_env env, napi_callback_info info)
{
    LOGI("CastOperation");
    return CallCarAdapter(env, info, CAST_OPERATION, __FUNCTION__);
}

napi_value Disconnect(napi_env env, napi_callback_info info)
{
    LOGI("Disconnect");
    return CallCarAdapter(env, info, DISCONNECT, __FUNCTION__);
}

napi_value GetDeviceInfo(napi_env env, napi_callback_info info)
{
    LOGI("GetDeviceInfo");
    return CallCarAdapter(env, info, GET_DEVICE_INFO, __FUNCTION__);
}

napi_value SendEventTo(napi_env env, napi_callback_info info)
{
    LOGI("SendEventTo");
    return CallCarAdapter(env, info, SEND_EVENT_TO, __FUNCTION__);
}

napi_value JsConstructor(napi_env env, napi_callback_info info)
{
    size_t argc = 1;
    napi_value argv[1] = {nullptr};
    napi_value thisVar = nullptr;
    (void)napi_get_cb_info(env, info, &argc, argv, &thisVar, nullptr);
    auto client = std::make_shared<CarAdapterClient>(env, thisVar);
    CarAdapterClient *rawClient = client.get();
    std::shared_ptr<CarAdapterClient> previous;
    {
        std::lock_guard<std::mutex> lock(g_carAdapterClientMutex);
        previous = std::exchange(g_carAdapterClient, std::move(client));
    }
    previous.reset();
    // The wrap owns nothing: the finaliser only logs, the module-wide pointer governs the client's life.
    // NOLINTBEGIN(bugprone-lambda-function-name): the finaliser's line names "operator()" by design.
    (void)napi_wrap(
        env, thisVar, rawClient, [](napi_env, void *, void *) { LOGI("delete js object"); }, nullptr, nullptr);
    // NOLINTEND(bugprone-lambda-function-name)
    return thisVar;
}

CarAdapterClient *CreateJsObject(napi_env env, napi_callback_info, napi_ref constructorRef, napi_value *jsObject)
{
    napi_value constructor = nullptr;
    if (napi_get_reference_value(env, constructorRef, &constructor) != napi_ok) {
        LOGE("CreateJsObject failed, napi_get_reference_value fail");
        return nullptr;
    }
    if (napi_new_instance(env, constructor, 0, nullptr, jsObject) != napi_ok) {
        LOGE("CreateJsObject failed, napi_new_instance fail");
        return nullptr;
    }
    void *client = nullptr;
    if (napi_unwrap(env, *jsObject, &client) != napi_ok || client == nullptr) {
        LOGE("CreateJsObject failed, napi_unwrap fail");
        // Some engines refuse a null result and keep the wrap; the removed pointer itself is not used.
        void *removed = nullptr;
        (void)napi_remove_wrap(env, *jsObject, &removed);
        *jsObject = nullptr;
        return nullptr;
    }
    return static_cast<CarAdapterClient *>(client);
}

napi_value GetCarConnectAdapter(napi_env env, napi_callback_info info)
{
    LOGI("GetCarConnectAdapter");
    napi_value jsObject = nullptr;
    CarAdapterClient *client = CreateJsObject(env, info, g_constructorRef, &jsObject);
    if (client == nullptr) {
        return nullptr;
    }
    // A failed check has already thrown; its null result is still a value, so the object is returned and the
    // pending error decides the call.
    if (client->HandleCarAdapter(GET_CAR_CONNECT_ADAPTER, env, info) == nullptr) {
        return nullptr;
    }
    return jsObject;
}

napi_value DiscoveryMode(napi_env env, napi_callback_info)
{
    LOGI("DiscoveryMode");
    napi_value discoveryMode = nullptr;
    if (napi_create_object(env, &discoveryMode) != napi_ok) {
        ThrowLastNapiError(env);
        return nullptr;
    }
    for (const DiscoveryModeEntry &mode : DISCOVERY_MODES) {
        napi_value modeValue = nullptr;
        if (napi_create_int32(env, mode.value, &modeValue) != napi_ok ||
            napi_set_named_property(env, discoveryMode, mode.name, modeValue) != napi_ok) {
            ThrowLastNapiError(env);
            return nullptr;
        }
    }
    return discoveryMode;
}
} // namespace TravelService
} // namespace OHOS

extern "C" __attribute__((constructor)) void RegisterModule(void)
{
    (void)napi_module_register(&OHOS::TravelService::g_carServiceModule);
}
