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

#include "car_adapter_client.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <iterator>
#include <map>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "car_connect_listener.h"
#include "connect_listener_manager.h"
#include "napi_base_utils.h"
#include "permission_utils.h"
#include "token_setproc.h"
#include "tokenid_kit.h"
#include "travel_vexar_object_client.h"
#include "vexar_common_constants.h"
#include "vexar_connect_constants.h"
#include "vexar_log.h"
#include "vexar_napi.h"

namespace OHOS {
namespace TravelService {
namespace {
constexpr int REGISTER_ATTEMPTS = 3;
constexpr int REGISTER_RETRY_INTERVAL_MS = 50;
constexpr size_t REGISTER_LISTENER_MAX_ARGC = 5;
constexpr size_t REGISTER_LISTENER_ARGC = 2;
// Registration threads alive at once, however many calls arrive; further registrations wait for one of them.
constexpr size_t MAX_REGISTRATION_THREADS = 8;
// How long an idle registration thread waits for more work before it ends.
constexpr std::chrono::seconds REGISTRATION_THREAD_IDLE_TIME(1);

using ManagerPtr = std::shared_ptr<ConnectListenerManager>;

// Every registerConnectListener call leads to one registration with the car service. A flood of calls must not
// exhaust the process's threads, so the registrations run on a bounded set of detached threads. The queue is
// never destroyed: its threads may still run while the process runs its static destructors.
class RegistrationThreads {
public:
    static RegistrationThreads &Get()
    {
        static RegistrationThreads *threads = new RegistrationThreads();
        return *threads;
    }

    // Never throws: when no thread can be started, the registration waits for the next thread that can.
    void Start()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        ++pending_;
        if (idle_ > 0) {
            workAvailable_.notify_one();
            return;
        }
        if (running_ >= MAX_REGISTRATION_THREADS) {
            return;
        }
        try {
            std::thread(&RegistrationThreads::Run, this).detach();
            ++running_;
        } catch (const std::system_error &) {
            LOGE("no registration thread available");
        }
    }

private:
    void Run()
    {
        std::unique_lock<std::mutex> lock(mutex_);
        for (;;) {
            ++idle_;
            bool hasWork =
                workAvailable_.wait_for(lock, REGISTRATION_THREAD_IDLE_TIME, [this] { return pending_ > 0; });
            --idle_;
            if (!hasWork) {
                --running_;
                return;
            }
            --pending_;
            lock.unlock();
            CarAdapterClient::InitCallback();
            lock.lock();
        }
    }

    std::mutex mutex_;
    std::condition_variable workAvailable_;
    size_t pending_ = 0;
    size_t running_ = 0;
    size_t idle_ = 0;
};

// The current manager is read by the car service's threads while a script thread replaces it, so every access
// goes through this lock. The slot, the list of retired managers and the disposers are never destroyed:
// service threads may still queue events while the process runs its static destructors. A manager is destroyed
// only on the thread of its own environment (it deletes script references there): one replaced from another
// script thread waits in the retired list until its environment's disposer runs on that thread.
std::mutex g_listenerManagerMutex;
ManagerPtr &listenerManager = *new ManagerPtr();
std::vector<ManagerPtr> &retiredManagers = *new std::vector<ManagerPtr>();
// One per environment that imported the module: runs the destruction of its retired managers on its thread.
std::map<napi_env, napi_threadsafe_function> &disposers = *new std::map<napi_env, napi_threadsafe_function>();
// Managers a service thread was left holding last while their environment had no disposer (torn down, or none
// could be made): no thread may destroy them any more.
std::vector<ManagerPtr> &orphanedManagers = *new std::vector<ManagerPtr>();

ManagerPtr CurrentListenerManager()
{
    std::lock_guard<std::mutex> lock(g_listenerManagerMutex);
    return listenerManager;
}

// Called with the lock held. The managers of env leave the retired list, to be destroyed by the caller outside
// the lock.
std::vector<ManagerPtr> TakeRetiredManagersLocked(napi_env env)
{
    std::vector<ManagerPtr> taken;
    auto ofEnv = std::stable_partition(retiredManagers.begin(), retiredManagers.end(),
                                       [env](const ManagerPtr &manager) { return manager->GetEnv() != env; });
    std::move(ofEnv, retiredManagers.end(), std::back_inserter(taken));
    retiredManagers.erase(ofEnv, retiredManagers.end());
    return taken;
}

// Runs on the disposer's environment thread; a null env means the disposer itself is being torn down.
void DisposeRetiredManagers(napi_env env, napi_value, void *, void *)
{
    if (env == nullptr) {
        return;
    }
    std::vector<ManagerPtr> disposed;
    {
        std::lock_guard<std::mutex> lock(g_listenerManagerMutex);
        disposed = TakeRetiredManagersLocked(env);
    }
}

// Called with the lock held, for a reference that may be the manager's last. Returns it for the caller to destroy
// outside the lock when this is the manager's own thread and no delivery of it is running there; otherwise it is
// handed to its environment's disposer, or kept in `withoutDisposer` when the environment has none.
ManagerPtr DisposeOnOwnThreadLocked(ManagerPtr manager, std::vector<ManagerPtr> &withoutDisposer)
{
    if (manager->GetEnvThread() == std::this_thread::get_id() && !manager->IsDelivering()) {
        return manager;
    }
    auto disposer = disposers.find(manager->GetEnv());
    if (disposer == disposers.end()) {
        withoutDisposer.push_back(std::move(manager));
        return nullptr;
    }
    retiredManagers.push_back(std::move(manager));
    (void)napi_call_threadsafe_function(disposer->second, nullptr, napi_tsfn_nonblocking);
    return nullptr;
}

// Called with the lock held. Returns what must be destroyed by the caller, outside the lock, on the calling
// thread; a manager of another thread is handed to its environment's disposer instead.
ManagerPtr RetireLocked(ManagerPtr manager)
{
    if (manager == nullptr) {
        return nullptr;
    }
    // Only the current manager's listeners receive events, also those queued before the replacement.
    manager->Retire();
    // A current manager's environment is alive: without a disposer, the manager waits for its teardown.
    return DisposeOnOwnThreadLocked(std::move(manager), retiredManagers);
}

void ReplaceListenerManager(ManagerPtr manager)
{
    ManagerPtr previous;
    {
        std::lock_guard<std::mutex> lock(g_listenerManagerMutex);
        previous = RetireLocked(std::exchange(listenerManager, std::move(manager)));
    }
}

// The lock is held only to copy the current manager's pointer, so that service threads do not queue behind one
// another; QueueWork serialises itself with the manager's own queue lock. The manager may be replaced or its
// environment torn down meanwhile, leaving this copy as its last owner on a thread that must not destroy it: the
// copy is given up under the lock while the slot still holds the manager, and handed on otherwise.
void QueueToCurrentManager(const nlohmann::json &event)
{
    ManagerPtr manager = CurrentListenerManager();
    if (manager == nullptr) {
        return;
    }
    manager->QueueWork(event);
    ManagerPtr ownThreadLast;
    std::lock_guard<std::mutex> lock(g_listenerManagerMutex);
    if (manager == listenerManager) {
        manager.reset();
    } else {
        ownThreadLast = DisposeOnOwnThreadLocked(std::move(manager), orphanedManagers);
    }
}

// The manager of this call's environment, or null when the current one belongs to another script thread.
ManagerPtr ListenerManagerOf(napi_env env)
{
    ManagerPtr manager = CurrentListenerManager();
    if (manager == nullptr || manager->GetEnv() != env) {
        LOGE("no listener manager in this environment");
        return nullptr;
    }
    return manager;
}
} // namespace

const std::array<CarAdapterClient::HandlerFunc, NAPI_FUNC_MAX> CarAdapterClient::handlers = [] {
    std::array<HandlerFunc, NAPI_FUNC_MAX> table = {};
    table[GET_CAR_CONNECT_ADAPTER] = &CarAdapterClient::GetCarConnectAdapter;
    table[REGISTER_CONNECT_LISTENER] = &CarAdapterClient::RegisterConnectListener;
    table[UNREGISTER_CONNECT_LISTENER] = &CarAdapterClient::UnRegisterConnectListener;
    for (const OperationRow &row : OPERATIONS) {
        table[row.type] = row.member;
    }
    return table;
}();

CarAdapterClient::CarAdapterClient(napi_env env, napi_value thisVar)
{
    LOGI("CarAdapterClient");
    napi_ref thisVarRef = nullptr;
    (void)napi_create_reference(env, thisVar, 1, &thisVarRef);
    ReplaceListenerManager(std::make_shared<ConnectListenerManager>(env, thisVarRef));
}

CarAdapterClient::~CarAdapterClient()
{
    LOGI("~CarAdapterClient");
}

void CarAdapterClient::AttachEnvironment(napi_env env)
{
    napi_value resourceName = nullptr;
    napi_threadsafe_function disposer = nullptr;
    if (napi_create_string_utf8(env, "DisposeRetiredManagers", NAPI_AUTO_LENGTH, &resourceName) != napi_ok ||
        napi_create_threadsafe_function(env, nullptr, nullptr, resourceName, 0, 1, nullptr, nullptr, nullptr,
                                        DisposeRetiredManagers, &disposer) != napi_ok) {
        // Managers of this environment replaced from other threads then wait for its teardown.
        LOGE("no disposer for this environment");
        return;
    }
    // It never keeps the environment's event loop alive.
    (void)napi_unref_threadsafe_function(env, disposer);
    std::lock_guard<std::mutex> lock(g_listenerManagerMutex);
    disposers[env] = disposer;
}

void CarAdapterClient::ReleaseListenerManager(napi_env env)
{
    std::vector<ManagerPtr> released;
    napi_threadsafe_function disposer = nullptr;
    {
        std::lock_guard<std::mutex> lock(g_listenerManagerMutex);
        if (listenerManager != nullptr && listenerManager->GetEnv() == env) {
            released.push_back(std::move(listenerManager));
            listenerManager = nullptr;
        }
        std::vector<ManagerPtr> retired = TakeRetiredManagersLocked(env);
        std::move(retired.begin(), retired.end(), std::back_inserter(released));
        auto entry = disposers.find(env);
        if (entry != disposers.end()) {
            disposer = entry->second;
            disposers.erase(entry);
        }
    }
    if (disposer != nullptr) {
        (void)napi_release_threadsafe_function(disposer, napi_tsfn_abort);
    }
}

napi_value CarAdapterClient::HandleCarAdapter(NapiFuncType type, napi_env env, napi_callback_info info)
{
    if (type > NAPI_FUNC_MAX) {
        LOGE("code not in NAPI_FUNC");
        return NapiGetNull(env);
    }
    if (!Security::AccessToken::TokenIdKit::IsSystemAppByFullTokenID(GetSelfTokenID())) {
        LOGE("Permission denied, non-system app called system api.");
        ThrowNapiError(env, NON_SYSTEM_APP_ERROR, ERROR_MESSAGES[NON_SYSTEM_APP_ERROR]);
        return NapiGetNull(env);
    }
    if (!PermissionUtils::CheckSelfIsPermissible(ALLOW_CONNECT_CAR_PERMISSION)) {
        LOGE("Permission denied, Interface caller does not have permission.");
        ThrowNapiError(env, PERMISSION_DENIED_ERROR, ERROR_MESSAGES[PERMISSION_DENIED_ERROR]);
        return NapiGetNull(env);
    }
    // NAPI_FUNC_MAX passes the range test but has no table slot.
    if (type == NAPI_FUNC_MAX) {
        return NapiGetNull(env);
    }
    HandlerFunc handler = handlers[type];
    return (this->*handler)(env, info);
}

napi_value CarAdapterClient::GetCarConnectAdapter(napi_env env, napi_callback_info)
{
    napi_value result = nullptr;
    napi_create_int32(env, 0, &result);
    LOGI("CarAdapterClient GetCarConnectAdapter");
    return result;
}

napi_value CarAdapterClient::RegisterConnectListener(napi_env env, napi_callback_info info)
{
    LOGI("CarAdapterClient RegisterConnectListener");
    // The registration uses nothing of this client, which a newer adapter object may release meanwhile.
    RegistrationThreads::Get().Start();

    size_t argc = REGISTER_LISTENER_MAX_ARGC;
    napi_value argv[REGISTER_LISTENER_MAX_ARGC] = {nullptr};
    if (napi_get_cb_info(env, info, &argc, argv, nullptr, nullptr) != napi_ok || argc != REGISTER_LISTENER_ARGC) {
        LOGE("Error get cb info");
        return nullptr;
    }
    if (GetType(env, argv[0]) != napi_string) {
        LOGE("not napi_string param");
        return nullptr;
    }
    std::string sessionName;
    if (!GetString(env, argv[0], sessionName)) {
        LOGE("Failed to get string sessionName");
        return nullptr;
    }
    JSCarConnectListener jsListener{};
    if (!ParseJSCarConnectListener(env, argv[1], jsListener)) {
        LOGE("Failed to Parse JSCarConnectListener");
        return nullptr;
    }
    ManagerPtr manager = ListenerManagerOf(env);
    if (manager == nullptr) {
        return nullptr;
    }
    manager->SubscribeListener(sessionName, argv[1]);
    napi_value result = nullptr;
    napi_create_int32(env, 0, &result);
    return result;
}

napi_value CarAdapterClient::UnRegisterConnectListener(napi_env env, napi_callback_info)
{
    LOGI("CarAdapterClient UnRegisterConnectListener");
    TravelVexarObjectClient::GetInstance()->UnRegisterCarConnectListener();
    if (ManagerPtr manager = ListenerManagerOf(env)) {
        manager->UnSubscribeListener();
    }
    napi_value result = nullptr;
    napi_create_int32(env, 0, &result);
    return result;
}

void CarAdapterClient::InitCallback()
{
    LOGI("InitCallback");
    EventListener listener = {OnBindResult,
                              OnDataReceive,
                              OnDeviceStateChange,
                              OnDeviceChange,
                              OnDeviceServiceStateChange,
                              OnSurfaceTransferOnEvent,
                              OnDisconnectResult};
    for (int attempt = 0; attempt < REGISTER_ATTEMPTS; ++attempt) {
        if (TravelVexarObjectClient::GetInstance()->RegisterCarConnectListener(listener) == 0) {
            LOGI("InitCallback success");
            return;
        }
        // The last failure also announces a retry and sleeps before the thread ends.
        LOGI("InitCallback failed, will retry after %{public}d milliseconds", REGISTER_RETRY_INTERVAL_MS);
        std::this_thread::sleep_for(std::chrono::milliseconds(REGISTER_RETRY_INTERVAL_MS));
    }
}

// The service methods only hand the call to their asynchronous operation.
napi_value CarAdapterClient::StartBindTarget(napi_env env, napi_callback_info info)
{
    return NapiStartBindTarget(env, info);
}

napi_value CarAdapterClient::StopBindTarget(napi_env env, napi_callback_info info)
{
    return NapiStopBindTarget(env, info);
}

napi_value CarAdapterClient::SendControllData(napi_env env, napi_callback_info info)
{
    return NapiSendControllData(env, info);
}

napi_value CarAdapterClient::StartSurfaceTransfer(napi_env env, napi_callback_info info)
{
    return NapiStartSurfaceTransfer(env, info);
}

napi_value CarAdapterClient::StopSurfaceTransfer(napi_env env, napi_callback_info info)
{
    return NapiStopSurfaceTransfer(env, info);
}

napi_value CarAdapterClient::CastOperation(napi_env env, napi_callback_info info)
{
    return NapiCastOperation(env, info);
}

napi_value CarAdapterClient::Disconnect(napi_env env, napi_callback_info info)
{
    return NapiDisconnect(env, info);
}

napi_value CarAdapterClient::GetDeviceInfo(napi_env env, napi_callback_info info)
{
    return NapiGetDeviceInfo(env, info);
}

napi_value CarAdapterClient::SendEventTo(napi_env env, napi_callback_info info)
{
    return NapiSendEventTo(env, info);
}

void CarAdapterClient::OnBindResult(std::string deviceId, int result, int status, std::string content)
{
    QueueToCurrentManager(BuildEvent<BIND_RESULT_EVENT>(std::move(deviceId), result, status, std::move(content)));
}

void CarAdapterClient::OnDataReceive(int type, std::string data)
{
    QueueToCurrentManager(BuildEvent<DATA_RECEIVE_EVENT>(type, std::move(data)));
}

void CarAdapterClient::OnDeviceStateChange(int state, std::string deviceInfo)
{
    QueueToCurrentManager(BuildEvent<DEVICE_STATE_CHANGE_EVENT>(state, std::move(deviceInfo)));
}

void CarAdapterClient::OnDeviceChange(int state)
{
    QueueToCurrentManager(BuildEvent<DEVICE_CHANGE_EVENT>(state));
}

void CarAdapterClient::OnDeviceServiceStateChange(std::string serviceId, int state, int serviceType)
{
    QueueToCurrentManager(BuildEvent<DEVICE_SERVICE_STATE_CHANGE_EVENT>(std::move(serviceId), state, serviceType));
}

void CarAdapterClient::OnSurfaceTransferOnEvent(int code, int eventId, std::string category)
{
    QueueToCurrentManager(BuildEvent<SURFACE_TRANSFER_EVENT>(code, eventId, std::move(category)));
}

void CarAdapterClient::OnDisconnectResult(int result)
{
    QueueToCurrentManager(BuildEvent<DISCONNECT_RESULT_EVENT>(result));
}
} // namespace TravelService
} // namespace OHOS
