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

#ifndef INTERFACES_KITS_NAPI_VEXAR_INCLUDE_CONNECT_LISTENER_MANAGER_H
#define INTERFACES_KITS_NAPI_VEXAR_INCLUDE_CONNECT_LISTENER_MANAGER_H

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "car_connect_listener.h"
#include "event_handler.h"
#include "napi/native_api.h"
#include "napi/native_node_api.h"
#include "nlohmann/json.hpp"

namespace OHOS {
namespace TravelService {
// Owns the script listeners of every session and moves service events onto the script main thread.
class ConnectListenerManager {
public:
    ConnectListenerManager(napi_env env, napi_ref thisVarRef);
    ~ConnectListenerManager();
    ConnectListenerManager(const ConnectListenerManager &) = delete;
    ConnectListenerManager &operator=(const ConnectListenerManager &) = delete;

    // Script main thread.
    void SubscribeListener(const std::string &key, napi_value listener);
    void UnSubscribeListener();
    void PublishEvent(const nlohmann::json &event);
    // Any thread.
    void QueueWork(const nlohmann::json &event);
    // Called when a newer manager replaces this one: events not yet delivered are dropped from then on.
    void Retire()
    {
        retired_ = true;
    }

    napi_env GetEnv() const
    {
        return env_;
    }
    std::thread::id GetEnvThread() const
    {
        return envThread_;
    }
    // Whether a delivery of this manager is running; called on the thread of env_ only. It must not be destroyed
    // there now.
    bool IsDelivering() const;

private:
    // The delivery task of the manager numbered `serial`: unpacks and publishes the event if that manager is alive
    // on the calling thread and not retired.
    static void Deliver(uint64_t serial, const std::vector<std::uint8_t> &packedEvent);
    void NotifyInOwnScope(CarConnectListener &listener, napi_value thisVar, const nlohmann::json &event);

    napi_env env_ = nullptr;
    napi_ref thisVarRef_ = nullptr;
    std::map<std::string, std::shared_ptr<CarConnectListener>> listeners_;
    std::recursive_mutex listenerMutex_;
    std::mutex queueMutex_;
    std::shared_ptr<OHOS::AppExecFwk::EventHandler> handler_;
    // The thread of env_: the only one on which its script values may be touched.
    std::thread::id envThread_;
    std::atomic<bool> retired_{false};
    // Never reused within the process: delivery tasks name their manager by it.
    uint64_t serial_ = 0;
    // The next older manager alive on the thread of env_.
    ConnectListenerManager *nextOnThread_ = nullptr;
    // Deliveries of this manager running on the thread of env_, the only thread that reads or writes it.
    int runningDeliveries_ = 0;
};
} // namespace TravelService
} // namespace OHOS

#endif // INTERFACES_KITS_NAPI_VEXAR_INCLUDE_CONNECT_LISTENER_MANAGER_H
