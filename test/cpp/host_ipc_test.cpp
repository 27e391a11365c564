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

// The IPC stand-in: broker registration, proxies made for remote objects, and strong references.

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "iremote_broker.h"
#include "iremote_proxy.h"
#include "ohos_host/host_control.h"

namespace {
using namespace OHOS;
using namespace OHOS::Host;

class ITestBroker : public IRemoteBroker {
public:
    DECLARE_INTERFACE_DESCRIPTOR(u"host.test.ITestBroker");
};

class TestProxy : public IRemoteProxy<ITestBroker> {
public:
    explicit TestProxy(const sptr<IRemoteObject> &object) : IRemoteProxy<ITestBroker>(object) {}
};

class TestRemote : public IRemoteObject {
public:
    TestRemote(bool isProxy, std::u16string descriptor) : IRemoteObject(std::move(descriptor)), isProxy_(isProxy) {}

    bool IsProxyObject() const override
    {
        return isProxy_;
    }

    sptr<IRemoteBroker> AsInterface() override
    {
        return localBroker_;
    }

    sptr<IRemoteBroker> localBroker_;

private:
    bool isProxy_;
};

// A registry of its own, to see what its destruction does to the delegators.
class ScratchRegistry : public BrokerRegistration {};

bool IsRegistered(const std::u16string &descriptor)
{
    std::vector<std::u16string> descriptors = BrokerDescriptors();
    return std::find(descriptors.begin(), descriptors.end(), descriptor) != descriptors.end();
}

TEST(BrokerTest, FirstDelegatorWinsAndUnregistersUnlessUnloaded)
{
    const std::u16string descriptor = ITestBroker::GetDescriptor();
    auto first = std::make_unique<BrokerDelegator<TestProxy>>();
    auto second = std::make_unique<BrokerDelegator<TestProxy>>();
    EXPECT_EQ(first->descriptor_, descriptor);
    EXPECT_TRUE(second->descriptor_.empty());
    second.reset();
    EXPECT_TRUE(IsRegistered(descriptor));
    first.reset();
    EXPECT_FALSE(IsRegistered(descriptor));

    auto unloaded = std::make_unique<BrokerDelegator<TestProxy>>();
    unloaded->isSoUnloaded = true;
    unloaded.reset();
    EXPECT_TRUE(IsRegistered(descriptor));
    BrokerRegistration::Get().Unregister(descriptor);
    EXPECT_FALSE(IsRegistered(descriptor));

    BrokerDelegatorBase marker;
    {
        ScratchRegistry registry;
        EXPECT_FALSE(registry.Register(
            u"", [](const sptr<IRemoteObject> &) { return nullptr; }, &marker));
        EXPECT_TRUE(registry.Register(
            u"scratch", [](const sptr<IRemoteObject> &) { return nullptr; }, &marker));
        EXPECT_FALSE(registry.Register(
            u"scratch", [](const sptr<IRemoteObject> &) { return nullptr; }, &marker));
        EXPECT_FALSE(marker.isSoUnloaded);
    }
    EXPECT_TRUE(marker.isSoUnloaded);
}

TEST(BrokerTest, NewInstanceBuildsProxiesAndReturnsLocalInterfaces)
{
    BrokerDelegator<TestProxy> delegator;
    const std::u16string descriptor = ITestBroker::GetDescriptor();
    sptr<IRemoteObject> remote = new TestRemote(true, u"");
    sptr<IRemoteBroker> proxy = BrokerRegistration::Get().NewInstance(descriptor, remote);
    ASSERT_TRUE(proxy);
    EXPECT_NE(dynamic_cast<TestProxy *>(proxy.GetRefPtr()), nullptr);
    EXPECT_EQ(proxy->AsObject(), remote);
    EXPECT_EQ(remote->GetSptrRefCount(), 2);
    EXPECT_FALSE(BrokerRegistration::Get().NewInstance(u"other", remote));

    sptr<TestRemote> stub = new TestRemote(false, descriptor);
    stub->localBroker_ = proxy;
    EXPECT_EQ(BrokerRegistration::Get().NewInstance(descriptor, stub), proxy);
    EXPECT_FALSE(BrokerRegistration::Get().NewInstance(u"other", stub));
    EXPECT_FALSE(BrokerRegistration::Get().NewInstance(descriptor, nullptr));
}

class Tracked : public RefBase {
public:
    explicit Tracked(bool &destroyed) : destroyed_(destroyed) {}

    ~Tracked() override
    {
        destroyed_ = true;
    }

private:
    bool &destroyed_;
};

TEST(RefBaseTest, StrongPointersShareOwnershipAndTheLastOneDeletes)
{
    bool destroyed = false;
    sptr<Tracked> first = sptr<Tracked>::MakeSptr(destroyed);
    sptr<Tracked> copy = first;
    sptr<RefBase> converted = copy;
    EXPECT_EQ(first->GetSptrRefCount(), 3);
    sptr<Tracked> moved = std::move(copy);
    EXPECT_FALSE(copy);
    EXPECT_EQ(first->GetSptrRefCount(), 3);
    sptr<Tracked> &alias = moved;
    moved = alias;
    first = nullptr;
    moved.clear();
    EXPECT_FALSE(destroyed);
    EXPECT_EQ(converted->GetSptrRefCount(), 1);
    converted = nullptr;
    EXPECT_TRUE(destroyed);
}
} // namespace
