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

#include <algorithm>

#include "iremote_broker.h"
#include "iremote_object.h"
#include "ohos_host/host_control.h"
#include "peer_holder.h"
#include "refbase.h"

namespace OHOS {
RefBase::RefBase() : strongRefs_(0) {}

RefBase::~RefBase() = default;

void RefBase::IncStrongRef(const void *)
{
    strongRefs_.fetch_add(1, std::memory_order_relaxed);
}

void RefBase::DecStrongRef(const void *)
{
    if (strongRefs_.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        delete this;
    }
}

int RefBase::GetSptrRefCount()
{
    return strongRefs_.load(std::memory_order_relaxed);
}

IRemoteObject::IRemoteObject(std::u16string descriptor) : descriptor_(std::move(descriptor)) {}

bool IRemoteObject::IsProxyObject() const
{
    return true;
}

sptr<IRemoteBroker> IRemoteObject::AsInterface()
{
    return nullptr;
}

std::u16string IRemoteObject::GetInterfaceDescriptor()
{
    return descriptor_;
}

PeerHolder::PeerHolder(const sptr<IRemoteObject> &object) : remoteObject_(object) {}

sptr<IRemoteObject> PeerHolder::Remote()
{
    return remoteObject_;
}

BrokerRegistration &BrokerRegistration::Get()
{
    static BrokerRegistration registration;
    return registration;
}

BrokerRegistration::~BrokerRegistration()
{
    std::lock_guard<std::mutex> lockGuard(creatorMutex_);
    isUnloading_ = true;
    for (const auto &entry : delegators_) {
        const_cast<BrokerDelegatorBase *>(entry.second)->isSoUnloaded = true;
    }
}

bool BrokerRegistration::Register(const std::u16string &descriptor, const Constructor &creator,
                                  const BrokerDelegatorBase *object)
{
    std::lock_guard<std::mutex> lockGuard(creatorMutex_);
    if (descriptor.empty() || isUnloading_ || creators_.count(descriptor) != 0) {
        return false;
    }
    creators_.emplace(descriptor, creator);
    delegators_.emplace(descriptor, object);
    return true;
}

void BrokerRegistration::Unregister(const std::u16string &descriptor)
{
    std::lock_guard<std::mutex> lockGuard(creatorMutex_);
    if (isUnloading_) {
        return;
    }
    creators_.erase(descriptor);
    delegators_.erase(descriptor);
}

sptr<IRemoteBroker> BrokerRegistration::NewInstance(const std::u16string &descriptor, const sptr<IRemoteObject> &object)
{
    if (object == nullptr) {
        return nullptr;
    }
    if (!object->IsProxyObject()) {
        return object->GetInterfaceDescriptor() == descriptor ? object->AsInterface() : nullptr;
    }
    Constructor creator;
    {
        std::lock_guard<std::mutex> lockGuard(creatorMutex_);
        auto found = creators_.find(descriptor);
        if (found == creators_.end()) {
            return nullptr;
        }
        creator = found->second;
    }
    return creator(object);
}

namespace Host {
std::vector<std::u16string> BrokerDescriptors()
{
    BrokerRegistration &registration = BrokerRegistration::Get();
    std::vector<std::u16string> descriptors;
    {
        std::lock_guard<std::mutex> lockGuard(registration.creatorMutex_);
        for (const auto &entry : registration.creators_) {
            descriptors.push_back(entry.first);
        }
    }
    std::sort(descriptors.begin(), descriptors.end());
    return descriptors;
}
} // namespace Host
} // namespace OHOS
