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

#include <atomic>
#include <chrono>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "ohos_host/car_service_sim.h"
#include "travel_vexar_object_client.h"

namespace {
using namespace OHOS::Host::CarService;
using OHOS::TravelService::DeviceInfoType;
using OHOS::TravelService::EventListener;
using OHOS::TravelService::EventType;
using OHOS::TravelService::TravelVexarObjectClient;
using namespace std::chrono_literals;

// What the service callbacks of the tests received, and on which threads.
struct Received {
    std::mutex mutex;
    std::vector<std::string> events;
    std::set<std::thread::id> threads;

    void Add(const std::string &event)
    {
        std::lock_guard<std::mutex> lock(mutex);
        events.push_back(event);
        threads.insert(std::this_thread::get_id());
    }
};

Received g_received;

void OnBindResult(std::string deviceId, int result, int status, std::string content)
{
    g_received.Add("bind " + deviceId + " " + std::to_string(result) + " " + std::to_string(status) + " " + content);
}

void OnDeviceChange(int state)
{
    g_received.Add("device " + std::to_string(state));
}

// Unregisters from inside the callback, as a listener that is done would.
void OnDisconnectResult(int result)
{
    g_received.Add("disconnect " + std::to_string(result));
    TravelVexarObjectClient::GetInstance()->UnRegisterCarConnectListener();
}

class CarServiceTest : public testing::Test {
protected:
    void SetUp() override
    {
        car_.Reset();
        std::lock_guard<std::mutex> lock(g_received.mutex);
        g_received.events.clear();
        g_received.threads.clear();
    }

    Service &car_ = Service::Get();
    TravelVexarObjectClient &client_ = *TravelVexarObjectClient::GetInstance();
};

TEST_F(CarServiceTest, RecordsCallsWithArgumentsCopiedAtCallTimeAndReturnsConfiguredResults)
{
    std::unordered_map<std::string, std::string> deviceInfo = {{"id", "car-1"}, {"name", "Car"}};
    std::string data = "payload";
    EXPECT_EQ(client_.StartBindTarget(2, deviceInfo), 0);
    deviceInfo["id"] = "changed";
    ASSERT_TRUE(car_.SetResult("SendEventTo", 401));
    EXPECT_FALSE(car_.SetResult("NoSuchMember", 1));
    EXPECT_EQ(client_.SendEventTo(static_cast<EventType>(7), data), 401);
    car_.SetDeviceInfo("{\"model\":\"X\"}");
    std::string info;
    EXPECT_EQ(client_.GetDeviceInfo(static_cast<DeviceInfoType>(3), info), 0);
    EXPECT_EQ(info, "{\"model\":\"X\"}");
    client_.StopSurfaceTransfer();

    std::vector<Call> calls = car_.Calls();
    ASSERT_EQ(calls.size(), 4u);
    EXPECT_EQ(calls[0].member, "StartBindTarget");
    EXPECT_EQ(calls[0].args,
              (std::vector<CallArg>{int64_t{2}, std::map<std::string, std::string>{{"id", "car-1"}, {"name", "Car"}}}));
    EXPECT_EQ(calls[1].args, (std::vector<CallArg>{int64_t{7}, std::string("payload")}));
    EXPECT_EQ(calls[2].args, std::vector<CallArg>{int64_t{3}});
    EXPECT_EQ(calls[3].member, "StopSurfaceTransfer");
    EXPECT_TRUE(calls[3].args.empty());
    EXPECT_EQ(car_.CountCalls("SendEventTo"), 1u);
    EXPECT_EQ(car_.CountCalls("NoSuchMember"), std::nullopt);

    car_.Reset();
    EXPECT_TRUE(car_.Calls().empty());
    EXPECT_EQ(client_.SendEventTo(static_cast<EventType>(7), data), 0);
    client_.GetDeviceInfo(static_cast<DeviceInfoType>(3), info);
    EXPECT_EQ(info, "");
}

TEST_F(CarServiceTest, DelaysHoldOnlyTheirOwnCaller)
{
    ASSERT_TRUE(car_.SetDelay("CastOperation", 200ms));
    auto start = std::chrono::steady_clock::now();
    std::thread slow([this] { client_.CastOperation(1); });
    while (car_.CountCalls("CastOperation") == 0u) {
        std::this_thread::yield();
    }
    client_.DisconnectDevice();
    EXPECT_LT(std::chrono::steady_clock::now() - start, 150ms);
    slow.join();
    EXPECT_GE(std::chrono::steady_clock::now() - start, 200ms);
}

TEST_F(CarServiceTest, RegistrationFailuresAndTheListenerKeptByValue)
{
    std::string error;
    EXPECT_FALSE(PrepareEmission(3, {int32_t{1}}, error));
    EXPECT_EQ(error, "no car connect listener is registered");

    auto listener = std::make_unique<EventListener>();
    listener->onBindResult = OnBindResult;
    listener->onDeviceChange = OnDeviceChange;
    car_.FailRegistrations(2);
    EXPECT_EQ(client_.RegisterCarConnectListener(*listener), -1);
    EXPECT_EQ(client_.RegisterCarConnectListener(*listener), -1);
    EXPECT_FALSE(car_.Listener().has_value());
    EXPECT_EQ(client_.RegisterCarConnectListener(*listener), 0);
    EXPECT_TRUE(car_.Listener().has_value());
    EXPECT_EQ(car_.CountCalls("RegisterCarConnectListener"), 3u);
    listener.reset();

    std::optional<Emission> emission = PrepareEmission(0, {std::string("car-1"), 0, 2, std::string("ok")}, error);
    ASSERT_TRUE(emission);
    emission->Run(1, 1);
    EXPECT_EQ(g_received.events, std::vector<std::string>{"bind car-1 0 2 ok"});
    EXPECT_EQ(g_received.threads.count(std::this_thread::get_id()), 0u);

    EXPECT_FALSE(PrepareEmission(0, {std::string("car-1"), 0, 2}, error));
    EXPECT_EQ(error, "arguments do not fit OnBindResult(string, int, int, string)");
    EXPECT_FALSE(PrepareEmission(3, {std::string("1")}, error));
    EXPECT_FALSE(PrepareEmission(7, {}, error));
    EXPECT_FALSE(PrepareEmission(1, {0, std::string("data")}, error));
    EXPECT_EQ(error, "OnDataReceive is null in the registered listener");

    car_.SetResult("UnRegisterCarConnectListener", 5);
    EXPECT_EQ(client_.UnRegisterCarConnectListener(), 5);
    EXPECT_TRUE(car_.Listener().has_value());
    car_.SetResult("UnRegisterCarConnectListener", 0);
    EXPECT_EQ(client_.UnRegisterCarConnectListener(), 0);
    EXPECT_FALSE(car_.Listener().has_value());
}

TEST_F(CarServiceTest, EmissionsSpreadOverServiceThreadsAndMayCallBackIntoTheClient)
{
    EventListener listener{};
    listener.onDeviceChange = OnDeviceChange;
    listener.onDisconnectResult = OnDisconnectResult;
    ASSERT_EQ(client_.RegisterCarConnectListener(listener), 0);

    std::string error;
    std::optional<Emission> emission = PrepareEmission(3, {int32_t{1}}, error);
    ASSERT_TRUE(emission);
    emission->Run(1000, 4);
    EXPECT_EQ(g_received.events.size(), 1000u);
    EXPECT_EQ(g_received.threads.size(), 4u);
    EXPECT_EQ(g_received.threads.count(std::this_thread::get_id()), 0u);
    emission->Run(0, 4);
    EXPECT_EQ(g_received.events.size(), 1000u);

    std::optional<Emission> disconnect = PrepareEmission(6, {int32_t{-1}}, error);
    ASSERT_TRUE(disconnect);
    disconnect->Run(1, 1);
    EXPECT_EQ(g_received.events.back(), "disconnect -1");
    EXPECT_FALSE(car_.Listener().has_value());
}

// The emitter runs its due emissions in order, so once a timeline step due after a reaction's emission has been
// played, that emission has returned too.
TEST_F(CarServiceTest, ReactionsAndTimelinesEmitInOrderFromTheCarsOwnThread)
{
    EventListener listener{};
    listener.onDeviceChange = OnDeviceChange;
    listener.onDisconnectResult = OnDisconnectResult;
    ASSERT_EQ(client_.RegisterCarConnectListener(listener), 0);
    ASSERT_TRUE(car_.SetReaction("CastOperation", Reaction{7, {{3, {int32_t{1}}, 0ms}, {3, {int32_t{2}}, 0ms}}, 1}));
    EXPECT_EQ(client_.CastOperation(0), 7);
    EXPECT_EQ(client_.CastOperation(0), 0);

    PlaybackOutcome outcome = car_.Await(car_.Play({{3, {int32_t{4}}, 5ms}, {3, {int32_t{3}}, 0ms}}));
    EXPECT_EQ(outcome.emitted, 2u);
    EXPECT_FALSE(outcome.stopped);
    std::lock_guard<std::mutex> lock(g_received.mutex);
    EXPECT_EQ(g_received.events, (std::vector<std::string>{"device 1", "device 2", "device 3", "device 4"}));
    EXPECT_EQ(g_received.threads.size(), 1u);
    EXPECT_EQ(g_received.threads.count(std::this_thread::get_id()), 0u);
}
} // namespace
