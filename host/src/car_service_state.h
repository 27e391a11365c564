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

#ifndef HOST_SRC_CAR_SERVICE_STATE_H
#define HOST_SRC_CAR_SERVICE_STATE_H

#include <array>
#include <chrono>
#include <functional>
#include <mutex>
#include <optional>

#include "ohos_host/car_service_sim.h"

namespace OHOS {
namespace Host {
namespace CarService {
// Client members, in the order of MemberNames().
enum class Member : size_t {
    REGISTER_CAR_CONNECT_LISTENER,
    UNREGISTER_CAR_CONNECT_LISTENER,
    START_BIND_TARGET,
    STOP_BIND_TARGET,
    SEND_CONTROL_DATA,
    START_SURFACE_TRANSFER,
    STOP_SURFACE_TRANSFER,
    CAST_OPERATION,
    DISCONNECT_DEVICE,
    GET_DEVICE_INFO,
    SEND_EVENT_TO,
    COUNT,
};

// The simulated car service: what the client members record and return, and the registered listener.
class ServiceState {
public:
    // Settles a call once its delay has passed, under the service lock: gets the configured result and gives
    // back what the member returns.
    using Settle = std::function<int(ServiceState &state, int configuredResult)>;

    static ServiceState &Get();

    // Records the call, sleeps the member delay, then returns `settle` of the configured result (the result
    // itself when there is no `settle`).
    int Serve(Member member, std::vector<CallArg> args, const Settle &settle = nullptr);

    void Reset();
    bool SetResult(const std::string &member, int code);
    bool SetDelay(const std::string &member, std::chrono::milliseconds delay);
    void FailRegistrations(uint32_t count);
    void SetDeviceInfo(const std::string &info);
    std::vector<Call> Calls();
    void ClearCalls();
    std::optional<size_t> CountCalls(const std::string &member);
    std::optional<TravelService::EventListener> Listener();

    // For Settle functions, which run under the service lock.
    void RegisterLocked(const TravelService::EventListener &listener);
    void UnregisterLocked();
    bool TakeRegistrationFailureLocked();
    const std::string &DeviceInfoLocked() const;

private:
    static constexpr size_t MEMBER_COUNT = static_cast<size_t>(Member::COUNT);

    ServiceState() = default;
    static std::optional<size_t> FindMember(const std::string &name);

    std::mutex mutex_;
    std::vector<Call> calls_;
    std::array<int, MEMBER_COUNT> results_{};
    std::array<std::chrono::milliseconds, MEMBER_COUNT> delays_{};
    uint32_t registrationFailures_ = 0;
    std::string deviceInfo_;
    std::optional<TravelService::EventListener> listener_;
};
} // namespace CarService
} // namespace Host
} // namespace OHOS

#endif // HOST_SRC_CAR_SERVICE_STATE_H
