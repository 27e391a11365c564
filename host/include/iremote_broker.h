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

#ifndef HOST_INCLUDE_IREMOTE_BROKER_H
#define HOST_INCLUDE_IREMOTE_BROKER_H

#include <atomic>
#include <functional>
#include <mutex>
#include <new>
#include <string>
#include <unordered_map>
#include <vector>

#include "iremote_object.h"
#include "nocopyable.h"
#include "refbase.h"

namespace OHOS {
// An interface that can be reached through IPC.
class IRemoteBroker : public virtual RefBase {
public:
    IRemoteBroker() = default;
    ~IRemoteBroker() override = default;
    virtual sptr<IRemoteObject> AsObject() = 0;
};

// Gives an interface its descriptor; DESCRIPTOR must be a u"..." literal.
#define DECLARE_INTERFACE_DESCRIPTOR(DESCRIPTOR)                                                                       \
    static constexpr const char16_t *metaDescriptor_ = DESCRIPTOR;                                                     \
    static inline const std::u16string GetDescriptor()                                                                 \
    {                                                                                                                  \
        static const std::u16string myDescriptor_ = {metaDescriptor_};                                                 \
        return myDescriptor_;                                                                                          \
    }

class BrokerDelegatorBase {
public:
    BrokerDelegatorBase() = default;
    virtual ~BrokerDelegatorBase() = default;

    // Set by the registry when it goes away first: the delegator must not unregister any more.
    std::atomic<bool> isSoUnloaded = false;
    // The descriptor this delegator registered; empty if its registration was refused.
    std::u16string descriptor_;
};

namespace Host {
// Defined by the host control library (see ohos_host/host_control.h).
std::vector<std::u16string> BrokerDescriptors();
} // namespace Host

// Process-wide table from interface descriptor to the creator of its proxy.
class BrokerRegistration {
    using Constructor = std::function<sptr<IRemoteBroker>(const sptr<IRemoteObject> &object)>;

public:
    static BrokerRegistration &Get();
    // False for an empty descriptor, while the registry is being destroyed, or if the descriptor is already
    // registered (the first registration wins).
    bool Register(const std::u16string &descriptor, const Constructor &creator, const BrokerDelegatorBase *object);
    void Unregister(const std::u16string &descriptor);
    // A proxy object gets a new broker from the registered creator; a local object whose descriptor matches
    // gives its own interface; anything else gives null.
    sptr<IRemoteBroker> NewInstance(const std::u16string &descriptor, const sptr<IRemoteObject> &object);

protected:
    BrokerRegistration() = default;
    ~BrokerRegistration();

private:
    friend std::vector<std::u16string> Host::BrokerDescriptors();
    DISALLOW_COPY_AND_MOVE(BrokerRegistration);

    std::mutex creatorMutex_;
    std::unordered_map<std::u16string, Constructor> creators_;
    // The delegator behind each registered descriptor, told when the registry goes away first.
    std::unordered_map<std::u16string, const BrokerDelegatorBase *> delegators_;
    bool isUnloading_ = false;
};

template <typename T> class BrokerCreator {
public:
    BrokerCreator() = default;
    ~BrokerCreator() = default;

    sptr<IRemoteBroker> operator()(const sptr<IRemoteObject> &object)
    {
        T *proxy = new (std::nothrow) T(object);
        if (proxy != nullptr) {
            return static_cast<IRemoteBroker *>(proxy);
        }
        return nullptr;
    }
};

// Registers the proxy class T for its interface descriptor for as long as it lives.
template <typename T> class BrokerDelegator : public BrokerDelegatorBase {
public:
    BrokerDelegator();
    ~BrokerDelegator() override;

private:
    DISALLOW_COPY_AND_MOVE(BrokerDelegator);
    std::mutex regMutex_;
};

template <typename T> BrokerDelegator<T>::BrokerDelegator()
{
    std::lock_guard<std::mutex> lockGuard(regMutex_);
    const std::u16string descriptor = T::GetDescriptor();
    if (BrokerRegistration::Get().Register(descriptor, BrokerCreator<T>(), this)) {
        descriptor_ = descriptor;
    }
}

template <typename T> BrokerDelegator<T>::~BrokerDelegator()
{
    if (!isSoUnloaded && !descriptor_.empty()) {
        BrokerRegistration::Get().Unregister(descriptor_);
    }
}
} // namespace OHOS

#endif // HOST_INCLUDE_IREMOTE_BROKER_H
