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

#include "connect_listener_manager.h"

#include <utility>
#include <vector>

#include "vexar_common_constants.h"
#include "vexar_connect_constants.h"
#include "vexar_log.h"

namespace OHOS {
namespace TravelService {
namespace {
// Value 3 of the platform's priority scale (LOW on current releases).
constexpr auto DELIVERY_PRIORITY = static_cast<AppExecFwk::EventQueue::Priority>(3);
constexpr int64_t DELIVERY_DELAY_MS = 0;

std::atomic<uint64_t> g_lastManagerSerial{0};
// The managers alive on this thread, newest first, linked through their nextOnThread_. A manager is made and
// destroyed only on the thread of its environment, the one thread on which its delivery tasks do anything, so a
// task finds its manager here, or finds it gone, with no lock and no reference count shared with service threads.
thread_local ConnectListenerManager *g_managersOfThread = nullptr;
} // namespace

ConnectListenerManager::ConnectListenerManager(napi_env env, napi_ref thisVarRef)
    : env_(env), thisVarRef_(thisVarRef), envThread_(std::this_thread::get_id()), serial_(++g_lastManagerSerial),
      nextOnThread_(g_managersOfThread)
{
    LOGI("ConnectListenerManager constructor");
    g_managersOfThread = this;
    handler_ = std::make_shared<AppExecFwk::EventHandler>(AppExecFwk::EventRunner::GetMainEventRunner());
}

ConnectListenerManager::~ConnectListenerManager()
{
    LOGI("ConnectListenerManager destructor");
    for (ConnectListenerManager **link = &g_managersOfThread; *link != nullptr; link = &(*link)->nextOnThread_) {
        if (*link == this) {
            *link = nextOnThread_;
            break;
        }
    }
    if (thisVarRef_ != nullptr) {
        (void)napi_delete_reference(env_, thisVarRef_);
        thisVarRef_ = nullptr;
    }
}

void ConnectListenerManager::SubscribeListener(const std::string &key, napi_value listener)
{
    LOGI("ConnectListenerManager subscribeListener");
    std::lock_guard<std::recursive_mutex> lock(listenerMutex_);
    if (listeners_.find(key) != listeners_.end()) {
        LOGI("CarConnectListener has been sub");
        return;
    }
    listeners_.emplace(key, std::make_shared<CarConnectListener>(env_, listener));
    LOGI("register ConnectListener success");
}

void ConnectListenerManager::UnSubscribeListener()
{
    LOGI("ConnectListenerManager UnSubscribeListener");
    std::lock_guard<std::recursive_mutex> lock(listenerMutex_);
    listeners_.clear();
}

void ConnectListenerManager::QueueWork(const nlohmann::json &event)
{
    // The event is packed and its task made before the queue lock, so that service threads queue behind one
    // another only for what must keep its order: the entry line and the post, which make the order of the lines
    // the order of delivery. Nothing of it is seen before the post.
    // A queued event waits as one compact byte string (its record in the binary form of the JSON library),
    // unpacked into the same record when it is delivered: a flood may queue millions of events, and the record's
    // tree of nodes cost some 400 bytes each where the packed form costs about 100. The task owns the packed event
    // through a shared pointer, so that the copies the platform makes of the task on its way to the main thread
    // copy no event. It names the manager by its serial number, a weak reference: a manager replaced before its
    // tasks run, destroyed or not yet, is never reached.
    auto packedEvent = std::make_shared<const std::vector<std::uint8_t>>(nlohmann::json::to_msgpack(event));
    uint64_t serial = serial_;
    auto task = [serial, packedEvent]() { Deliver(serial, *packedEvent); };
    auto innerEvent = AppExecFwk::InnerEvent::Get(std::move(task), "");
    std::lock_guard<std::mutex> lock(queueMutex_);
    LOGI("ConnectListenerManager QueueWork");
    if (handler_ == nullptr) {
        LOGE("handler is nullptr.");
        return;
    }
    handler_->SendEvent(innerEvent, DELIVERY_DELAY_MS, DELIVERY_PRIORITY);
}

void ConnectListenerManager::Deliver(uint64_t serial, const std::vector<std::uint8_t> &packedEvent)
{
    ConnectListenerManager *manager = g_managersOfThread;
    while (manager != nullptr && manager->serial_ != serial) {
        manager = manager->nextOnThread_;
    }
    if (manager == nullptr || manager->retired_) {
        return;
    }
    // A listener may replace the adapter object from inside its call; the manager being delivered then waits for
    // its environment's disposer instead of being destroyed under the running delivery.
    ++manager->runningDeliveries_;
    manager->PublishEvent(nlohmann::json::from_msgpack(packedEvent, true, false));
    --manager->runningDeliveries_;
}

bool ConnectListenerManager::IsDelivering() const
{
    return runningDeliveries_ > 0;
}

// The argument values of one listener call die with the call's own handle scope, before the next session is
// called: a big event delivered to many sessions then keeps one copy of its text alive, not one per session. The
// scope logs nothing; a scope that cannot be opened leaves the call in the delivery's scope, as before.
void ConnectListenerManager::NotifyInOwnScope(CarConnectListener &listener, napi_value thisVar,
                                              const nlohmann::json &event)
{
    napi_handle_scope callScope = nullptr;
    bool scoped = napi_open_handle_scope(env_, &callScope) == napi_ok;
    listener.NotifyEvent(thisVar, event);
    if (scoped) {
        (void)napi_close_handle_scope(env_, callScope);
    }
}

void ConnectListenerManager::PublishEvent(const nlohmann::json &event)
{
    LOGI("ConnectListenerManager PublishEvent");
    napi_handle_scope scope = nullptr;
    if (napi_open_handle_scope(env_, &scope) != napi_ok) {
        LOGE("Error open_handle_scope");
        return;
    }
    napi_value thisVar = nullptr;
    if (napi_get_reference_value(env_, thisVarRef_, &thisVar) != napi_ok) {
        LOGE("Error get_reference");
        (void)napi_close_handle_scope(env_, scope);
        return;
    }
    std::lock_guard<std::recursive_mutex> lock(listenerMutex_);
    // A listener may subscribe or unsubscribe from inside its call: the next session is looked up again after
    // each call instead of keeping an iterator, and each listener is held for the length of its own call.
    auto entry = listeners_.begin();
    while (entry != listeners_.end()) {
        std::string sessionName = entry->first;
        std::shared_ptr<CarConnectListener> listener = entry->second;
        NotifyInOwnScope(*listener, thisVar, event);
        entry = listeners_.upper_bound(sessionName);
    }
    (void)napi_close_handle_scope(env_, scope);
}
} // namespace TravelService
} // namespace OHOS
