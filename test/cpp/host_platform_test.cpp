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

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "accesstoken_kit.h"
#include "event_handler.h"
#include "hilog/log.h"
#include "ipc_skeleton.h"
#include "iremote_broker.h"
#include "iremote_proxy.h"
#include "main_task_queue.h"
#include "ohos_host/host_control.h"
#include "token_setproc.h"
#include "tokenid_kit.h"

#undef LOG_DOMAIN
#define LOG_DOMAIN 0xD005400
#undef LOG_TAG
#define LOG_TAG "HostTest"

namespace {
using namespace OHOS;
using namespace OHOS::Host;
using AppExecFwk::EventHandler;
using AppExecFwk::EventRunner;
using AppExecFwk::InnerEvent;
using Priority = AppExecFwk::EventQueue::Priority;
using Security::AccessToken::AccessTokenKit;
using Security::AccessToken::TokenIdKit;
using namespace std::chrono_literals;

class HiLogTest : public testing::Test {
protected:
    void SetUp() override
    {
        ClearHiLog();
    }

    void TearDown() override
    {
        SetHiLogCapacity(DEFAULT_HILOG_CAPACITY);
        ClearHiLog();
    }
};

TEST_F(HiLogTest, FormatsConversionsWithoutPrivacyFlagsAndKeepsTheirValues)
{
    int bytes = HiLogPrint(LOG_CORE, LOG_WARN, 0xD005400, "TravelVexarNapi",
                           "%{public}s# id %{private}d, %{publlic}s, [%5u|%-4x|%{public}03d] %lld %zu %hhd 100%% %s",
                           "Start", -7, "typo", 42u, 255u, 7, -9000000000LL, size_t{12}, 300, "plain");

    std::vector<HiLogLine> lines = HiLogLines();
    ASSERT_EQ(lines.size(), 1u);
    const HiLogLine &line = lines[0];
    EXPECT_EQ(line.text, "Start# id -7, typo, [   42|ff  |007] -9000000000 12 44 100% plain");
    EXPECT_EQ(bytes, static_cast<int>(line.text.size()));
    EXPECT_EQ(line.format, "%{public}s# id %{private}d, %{publlic}s, [%5u|%-4x|%{public}03d] %lld %zu %hhd 100%% %s");
    EXPECT_EQ(line.tag, "TravelVexarNapi");
    EXPECT_EQ(line.domain, 0xD005400u);
    EXPECT_EQ(line.type, LOG_CORE);
    EXPECT_EQ(line.level, LOG_WARN);
    std::vector<HiLogArg> expected = {std::string("Start"), int64_t{-7},         std::string("typo"),  uint64_t{42},
                                      uint64_t{255},        int64_t{7},          int64_t{-9000000000}, uint64_t{12},
                                      int64_t{44},          std::string("plain")};
    EXPECT_EQ(line.args, expected);
}

// A misread conversion would shift every later argument, and a later %s would then read a wrong pointer.
TEST_F(HiLogTest, StarWidthsUnknownConversionsAndLongMessagesKeepArgumentsInStep)
{
    const char *nothing = nullptr;
    HiLogPrint(LOG_CORE, LOG_INFO, 0xD005400, "Tag", "[%*d|%.*s] %y %s %.1f %p", 4, 7, 2, "abc", nothing, 2.25,
               reinterpret_cast<void *>(0x10));
    std::string longText(5000, 'x');
    HiLogPrint(LOG_CORE, LOG_INFO, 0xD005400, "Tag", "%s!", longText.c_str());

    std::vector<HiLogLine> lines = HiLogLines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].text, "[   7|ab] %y (null) 2.2 0x10");
    std::vector<HiLogArg> expected = {int64_t{7}, std::string("abc"), std::string("(null)"), 2.25, uint64_t{0x10}};
    EXPECT_EQ(lines[0].args, expected);
    EXPECT_EQ(lines[1].text, std::string(4095, 'x'));
    EXPECT_EQ(std::get<std::string>(lines[1].args.at(0)).size(), 5000u);
}

TEST_F(HiLogTest, MacrosUseTheDomainAndTagInForceAndDropRulesApply)
{
    HILOG_INFO(LOG_CORE, "%{public}s# entry", "Fn");
    EXPECT_EQ(HiLogPrint(LOG_CORE, LOG_INFO, 0, "Tag", "default domain"), -1);
    EXPECT_EQ(HiLogPrint(LOG_CORE, LOG_INFO, 0xD100000, "Tag", "above the range"), -1);
    EXPECT_EQ(HiLogPrint(LOG_CORE, LOG_INFO, 0xD005400, nullptr, "no tag"), -1);
    HiLogPrint(LOG_APP, LOG_ERROR, 0, "an application tag longer than thirty-one characters", "app");

    std::vector<HiLogLine> lines = HiLogLines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].domain, 0xD005400u);
    EXPECT_EQ(lines[0].tag, "HostTest");
    EXPECT_EQ(lines[0].level, LOG_INFO);
    EXPECT_EQ(lines[0].text, "Fn# entry");
    EXPECT_EQ(lines[1].tag, "an application tag longer than ");
    EXPECT_EQ(lines[1].text, "app");
}

TEST_F(HiLogTest, KeepsTheNewestLinesUpToCapacityAndCountsTheDropped)
{
    SetHiLogCapacity(3);
    for (int index = 0; index < 5; ++index) {
        HILOG_INFO(LOG_CORE, "line %{public}d", index);
    }
    std::vector<HiLogLine> lines = HiLogLines();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines.front().text, "line 2");
    EXPECT_EQ(lines.back().text, "line 4");
    EXPECT_EQ(HiLogDropped(), 2u);

    SetHiLogCapacity(1);
    EXPECT_EQ(HiLogLines().at(0).text, "line 4");
    EXPECT_EQ(HiLogDropped(), 4u);

    SetHiLogCapacity(0);
    EXPECT_EQ(HiLogPrint(LOG_CORE, LOG_INFO, 0xD005400, "Tag", "ignored"), 0);
    EXPECT_TRUE(HiLogLines().empty());

    ClearHiLog();
    EXPECT_EQ(HiLogDropped(), 0u);
}

TEST_F(HiLogTest, KeepsEveryLineOfConcurrentThreadsInTheirOrder)
{
    constexpr int THREADS = 4;
    constexpr int LINES = 500;
    std::vector<std::thread> writers;
    for (int writer = 0; writer < THREADS; ++writer) {
        writers.emplace_back([writer] {
            for (int index = 0; index < LINES; ++index) {
                HILOG_DEBUG(LOG_CORE, "%{public}d:%{public}d", writer, index);
            }
        });
    }
    for (std::thread &writer : writers) {
        writer.join();
    }
    std::vector<int> next(THREADS, 0);
    for (const HiLogLine &line : HiLogLines()) {
        int writer = static_cast<int>(std::get<int64_t>(line.args[0]));
        EXPECT_EQ(std::get<int64_t>(line.args[1]), next[writer]++);
    }
    EXPECT_EQ(next, std::vector<int>(THREADS, LINES));
}

TEST(AccessTokenTest, IdentityBitsAndPermissionChecks)
{
    ResetIdentity();
    const uint64_t systemAppFlag = 1ULL << 32;
    EXPECT_EQ(GetSelfTokenID(), systemAppFlag | 0x10001);
    EXPECT_EQ(IPCSkeleton::GetSelfTokenID(), GetSelfTokenID());
    EXPECT_TRUE(TokenIdKit::IsSystemAppByFullTokenID(GetSelfTokenID()));
    EXPECT_FALSE(TokenIdKit::IsSystemAppByFullTokenID((1ULL << 33) | (1ULL << 36) | 0xFFFFFFFF));
    EXPECT_EQ(AccessTokenKit::VerifyAccessToken(0x10001, "ohos.permission.ALLOW_CONNECT_CAR"), 0);
    EXPECT_EQ(AccessTokenKit::VerifyAccessToken(0x10001, "ohos.permission.OTHER"), -1);

    SetIdentity({false, 0x2A});
    EXPECT_EQ(GetSelfTokenID(), 0x2Au);
    EXPECT_FALSE(TokenIdKit::IsSystemAppByFullTokenID(GetSelfTokenID()));

    GrantPermission("ohos.permission.B");
    GrantPermission("ohos.permission.A");
    RevokePermission("ohos.permission.ALLOW_CONNECT_CAR");
    EXPECT_EQ(ListPermissions(), (std::vector<std::string>{"ohos.permission.A", "ohos.permission.B"}));
    EXPECT_EQ(AccessTokenKit::VerifyAccessToken(0x2A, "ohos.permission.A"), 0);
    EXPECT_EQ(AccessTokenKit::VerifyAccessToken(0, "ohos.permission.A"), -1);
    EXPECT_EQ(VerifyAccessTokenCalls(), 4u);

    ResetIdentity();
    EXPECT_EQ(GetIdentity().tokenId, 0x10001u);
    EXPECT_TRUE(GetIdentity().systemApp);
    EXPECT_EQ(ListPermissions(), std::vector<std::string>{"ohos.permission.ALLOW_CONNECT_CAR"});
    EXPECT_EQ(VerifyAccessTokenCalls(), 0u);
}

InnerEvent::Pointer NamedEvent(const std::string &name, InnerEvent::TimePoint handleTime)
{
    InnerEvent::Pointer event = InnerEvent::Get([] {}, name);
    event->SetHandleTime(handleTime);
    return event;
}

std::vector<std::string> PopAllDue(TaskQueue &queue, InnerEvent::TimePoint now)
{
    std::vector<std::string> names;
    while (std::optional<TaskQueue::Entry> entry = queue.PopDue(now)) {
        names.push_back(entry->event->GetTaskName());
    }
    return names;
}

TEST(EventQueueTest, RunsDueEventsByPriorityValueThenSendingOrder)
{
    EXPECT_EQ(static_cast<Priority>(0), Priority::VIP);
    EXPECT_EQ(static_cast<Priority>(3), Priority::LOW);
    EXPECT_EQ(static_cast<Priority>(4), Priority::IDLE);

    TaskQueue queue;
    InnerEvent::TimePoint start = InnerEvent::Clock::now();
    queue.Push(NamedEvent("low-1", start), Priority::LOW, start);
    queue.Push(NamedEvent("idle", start), Priority::IDLE, start);
    uint64_t delayed = queue.Push(NamedEvent("vip-later", start + 50ms), Priority::VIP, start);
    queue.Push(NamedEvent("high", start), Priority::HIGH, start);
    queue.Push(NamedEvent("low-2", start), Priority::LOW, start);
    queue.Push(NamedEvent("immediate", start), Priority::IMMEDIATE, start);
    EXPECT_EQ(delayed, 3u);
    EXPECT_EQ(queue.LastSequence(), 6u);

    EXPECT_EQ(PopAllDue(queue, start), (std::vector<std::string>{"immediate", "high", "low-1", "low-2", "idle"}));
    EXPECT_FALSE(queue.HasDue(start + 49ms));
    EXPECT_EQ(queue.NextDueAfter(start), start + 50ms);
    EXPECT_FALSE(queue.HasPendingThrough(delayed - 1));
    EXPECT_TRUE(queue.HasPendingThrough(delayed));

    // Once due, the delayed VIP event goes ahead of an IMMEDIATE one that was due before it.
    queue.Push(NamedEvent("immediate-2", start), Priority::IMMEDIATE, start);
    EXPECT_EQ(PopAllDue(queue, start + 50ms), (std::vector<std::string>{"vip-later", "immediate-2"}));
    EXPECT_FALSE(queue.HasPendingThrough(queue.LastSequence()));

    // Entries taken and put back, last first, return to their places ahead of what was sent meanwhile.
    queue.Push(NamedEvent("low-3", start), Priority::LOW, start);
    queue.Push(NamedEvent("low-4", start), Priority::LOW, start);
    std::optional<TaskQueue::Entry> first = queue.PopDue(start);
    std::optional<TaskQueue::Entry> second = queue.PopDue(start);
    queue.Push(NamedEvent("low-5", start), Priority::LOW, start);
    EXPECT_TRUE(queue.HasPendingThrough(queue.LastSequence()));
    EXPECT_FALSE(queue.HasPendingThrough(second->sequence));
    queue.Requeue(std::move(*second));
    queue.Requeue(std::move(*first));
    EXPECT_EQ(PopAllDue(queue, start), (std::vector<std::string>{"low-3", "low-4", "low-5"}));
}

TEST(EventHandlerTest, EventsRecordTheirCallSiteAndBadSendsAreRefused)
{
    int line = __LINE__ + 1;
    InnerEvent::Pointer event = InnerEvent::Get([] {}, "named");
    EXPECT_EQ(event->GetCaller().file_, __FILE__);
    EXPECT_EQ(event->GetCaller().line_, line);
    EXPECT_EQ(event->GetTaskName(), "named");
    EXPECT_EQ(InnerEvent::Get(InnerEvent::Callback()), nullptr);

    auto withoutRunner = std::make_shared<EventHandler>();
    EXPECT_FALSE(withoutRunner->SendEvent(event));
    EXPECT_NE(event, nullptr);
    auto handler = std::make_shared<EventHandler>(EventRunner::GetMainEventRunner());
    InnerEvent::Pointer none(nullptr, nullptr);
    EXPECT_FALSE(handler->SendEvent(none, Priority::HIGH));
}

// Counts wake-ups of the main runner and lets the test wait for the next one.
class WakeCounter {
public:
    void Wake()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        ++wakes_;
        woken_.notify_all();
    }

    bool WaitForWakes(int count, std::chrono::milliseconds timeout = 2s)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        return woken_.wait_for(lock, timeout, [this, count] { return wakes_ >= count; });
    }

    int Wakes()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return wakes_;
    }

private:
    std::mutex mutex_;
    std::condition_variable woken_;
    int wakes_ = 0;
};

// The runner is process-wide and cannot be attached again once detached, so its whole life is one test.
TEST(MainRunnerTest, DeliversThroughTheAttachedDriverInBoundedBatchesUntilDetached)
{
    std::vector<std::string> ran;
    int batches = 0;
    MainTaskScope scope = [&batches](const std::function<void()> &tasks) {
        ++batches;
        tasks();
    };
    auto record = [&ran](const std::string &label) { return [&ran, label] { ran.push_back(label); }; };
    auto handler = std::make_shared<EventHandler>(EventRunner::GetMainEventRunner());
    auto doomed = std::make_shared<EventHandler>(EventRunner::GetMainEventRunner());

    // Sent before any driver is attached: they wait.
    ASSERT_TRUE(handler->PostTask(record("low")));
    ASSERT_TRUE(doomed->PostTask(record("handler gone"), "", 0, Priority::VIP));
    ASSERT_TRUE(handler->SendEvent(InnerEvent::Get(record("vip")), 0, Priority::VIP));
    doomed.reset();
    uint64_t beforeAttach = MainRunnerLastSequence();
    EXPECT_TRUE(MainRunnerHasPendingThrough(beforeAttach));

    WakeCounter counter;
    ASSERT_TRUE(AttachMainRunner([&counter] { counter.Wake(); }));
    EXPECT_FALSE(AttachMainRunner([] {}));
    ASSERT_TRUE(counter.WaitForWakes(1));
    EXPECT_FALSE(RunDueMainTasks(scope));
    EXPECT_EQ(ran, (std::vector<std::string>{"vip", "low"}));
    EXPECT_EQ(batches, 1);
    EXPECT_FALSE(MainRunnerHasPendingThrough(beforeAttach));

    // Wake-ups are coalesced until the driver runs.
    ran.clear();
    handler->PostTask(record("a"));
    handler->PostTask(record("b"));
    ASSERT_TRUE(counter.WaitForWakes(2));
    std::this_thread::sleep_for(20ms);
    EXPECT_EQ(counter.Wakes(), 2);
    EXPECT_FALSE(RunDueMainTasks(scope));
    EXPECT_EQ(ran, (std::vector<std::string>{"a", "b"}));

    // A delayed event wakes the driver from the timer thread once it is due, not before.
    ran.clear();
    auto sent = InnerEvent::Clock::now();
    std::thread sender([&handler, &record] { handler->PostTask(record("delayed"), "", 60); });
    sender.join();
    ASSERT_TRUE(counter.WaitForWakes(3));
    EXPECT_GE(InnerEvent::Clock::now() - sent, 60ms);
    RunDueMainTasks(scope);
    EXPECT_EQ(ran, (std::vector<std::string>{"delayed"}));

    // A backlog runs a bounded batch per call; the driver, told more is due, is not woken meanwhile. A more
    // urgent event sent by a task runs next, ahead of the rest of its batch.
    constexpr int BACKLOG = 300;
    ran.clear();
    handler->PostTask([&handler, &record] {
        handler->PostTask(record("urgent"), "", 0, Priority::VIP);
        record("first")();
    });
    for (int index = 0; index < BACKLOG; ++index) {
        handler->PostTask(record(std::to_string(index)));
    }
    const int wakesBeforeBacklog = counter.Wakes();
    EXPECT_EQ(wakesBeforeBacklog, 4);
    ASSERT_TRUE(RunDueMainTasks(scope));
    EXPECT_LE(ran.size(), 128u);
    ASSERT_GE(ran.size(), 3u);
    EXPECT_EQ((std::vector<std::string>(ran.begin(), ran.begin() + 3)),
              (std::vector<std::string>{"first", "urgent", "0"}));
    handler->PostTask(record("late"));
    while (RunDueMainTasks(scope)) {
    }
    EXPECT_EQ(counter.Wakes(), wakesBeforeBacklog);
    ASSERT_EQ(ran.size(), static_cast<size_t>(BACKLOG + 3));
    EXPECT_EQ(ran[BACKLOG + 1], std::to_string(BACKLOG - 1));
    EXPECT_EQ(ran.back(), "late");
    handler->PostTask(record("after"));
    EXPECT_EQ(counter.Wakes(), wakesBeforeBacklog + 1);
    EXPECT_FALSE(RunDueMainTasks(scope));

    // Senders on several threads at once: no wake-up is lost, every event runs once, each sender's in order.
    constexpr int SENDERS = 4;
    constexpr int EVENTS = 500;
    std::vector<int> next(SENDERS, 0);
    int outOfOrder = 0;
    int sentRan = 0;
    std::vector<std::thread> senders;
    for (int sender = 0; sender < SENDERS; ++sender) {
        senders.emplace_back([&handler, &next, &outOfOrder, &sentRan, sender] {
            for (int index = 0; index < EVENTS; ++index) {
                handler->PostTask([&next, &outOfOrder, &sentRan, sender, index] {
                    outOfOrder += next[sender]++ != index;
                    ++sentRan;
                });
            }
        });
    }
    bool lostWakeUp = false;
    while (sentRan < SENDERS * EVENTS && !lostWakeUp) {
        int seen = counter.Wakes();
        if (!RunDueMainTasks(scope)) {
            lostWakeUp = sentRan < SENDERS * EVENTS && !counter.WaitForWakes(seen + 1);
        }
    }
    for (std::thread &sender : senders) {
        sender.join();
    }
    EXPECT_FALSE(lostWakeUp);
    EXPECT_EQ(next, std::vector<int>(SENDERS, EVENTS));
    EXPECT_EQ(outOfOrder, 0);

    // Detaching drops what waits and refuses what comes later; the driver is never woken again.
    ran.clear();
    int wakesBeforeDetach = counter.Wakes();
    auto payload = std::make_shared<int>(0);
    handler->PostTask([payload] {}, "", 10000);
    DetachMainRunner();
    EXPECT_EQ(payload.use_count(), 1);
    InnerEvent::Pointer late = InnerEvent::Get(record("late"));
    EXPECT_FALSE(handler->SendEvent(late));
    EXPECT_NE(late, nullptr);
    EXPECT_FALSE(RunDueMainTasks(scope));
    EXPECT_EQ(counter.Wakes(), wakesBeforeDetach);
    EXPECT_TRUE(ran.empty());
}

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
