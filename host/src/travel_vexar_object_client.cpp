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

#include "travel_vexar_object_client.h"

#include <map>
#include <string_view>

#include "ohos_host/car_service_sim.h"

namespace OHOS {
namespace TravelService {
namespace {
using Host::CarService::CallArg;
using Host::CarService::FindMember;
using Host::CarService::Service;

std::map<std::string, std::string> CopyMap(const std::unordered_map<std::string, std::string> &map)
{
    return {map.begin(), map.end()};
}

// The row of a member named here, found as the library compiles: a name that MEMBERS lacks cannot compile, since
// value() of an empty result throws.
constexpr size_t Row(std::string_view member)
{
    return FindMember(member).value();
}

// The service builds a call's recorded arguments with `args` only while it records calls.
template <size_t MemberRow> int Serve(Service::RecordedArgs args = nullptr, Service::Settle settle = nullptr)
{
    return Service::Get().Serve(MemberRow, args, settle);
}
} // namespace

TravelVexarObjectProxy::TravelVexarObjectProxy(const sptr<IRemoteObject> &impl) : IRemoteProxy<ITravelVexarObject>(impl)
{
}

TravelVexarObjectProxy::~TravelVexarObjectProxy() = default;

sptr<TravelVexarObjectClient> TravelVexarObjectClient::GetInstance()
{
    // Never destroyed: service threads may still use the client while the process exits.
    static const sptr<TravelVexarObjectClient> *instance =
        new sptr<TravelVexarObjectClient>(new TravelVexarObjectClient());
    return *instance;
}

// A registration that fails, through FailRegistrations or a non-zero result, keeps nothing.
int TravelVexarObjectClient::RegisterCarConnectListener(const EventListener &listener)
{
    return Serve<Row("RegisterCarConnectListener")>(nullptr, [&listener](Service &state, int result) {
        if (state.TakeRegistrationFailureLocked()) {
            return -1;
        }
        if (result == 0) {
            state.RegisterLocked(listener);
        }
        return result;
    });
}

// An unregistration with a non-zero result keeps the listener.
int TravelVexarObjectClient::UnRegisterCarConnectListener()
{
    return Serve<Row("UnRegisterCarConnectListener")>(nullptr, [](Service &state, int result) {
        if (result == 0) {
            state.UnregisterLocked();
        }
        return result;
    });
}

int TravelVexarObjectClient::StartBindTarget(int bindType, std::unordered_map<std::string, std::string> &deviceInfo)
{
    return Serve<Row("StartBindTarget")>([bindType, &deviceInfo] {
        return std::vector<CallArg>{int64_t{bindType}, CopyMap(deviceInfo)};
    });
}

int TravelVexarObjectClient::StopBindTarget(int bindType)
{
    return Serve<Row("StopBindTarget")>([bindType] { return std::vector<CallArg>{int64_t{bindType}}; });
}

int TravelVexarObjectClient::SendControlData(int dataType, std::string &data)
{
    return Serve<Row("SendControlData")>([dataType, &data] { return std::vector<CallArg>{int64_t{dataType}, data}; });
}

int TravelVexarObjectClient::StartSurfaceTransfer(const std::unordered_map<std::string, std::string> &surfaceInfo)
{
    return Serve<Row("StartSurfaceTransfer")>([&surfaceInfo] { return std::vector<CallArg>{CopyMap(surfaceInfo)}; });
}

int TravelVexarObjectClient::StopSurfaceTransfer()
{
    return Serve<Row("StopSurfaceTransfer")>();
}

int TravelVexarObjectClient::CastOperation(int operation)
{
    return Serve<Row("CastOperation")>([operation] { return std::vector<CallArg>{int64_t{operation}}; });
}

int TravelVexarObjectClient::DisconnectDevice()
{
    return Serve<Row("DisconnectDevice")>();
}

// The device information is written whatever the result.
int TravelVexarObjectClient::GetDeviceInfo(DeviceInfoType type, std::string &deviceInfo)
{
    return Serve<Row("GetDeviceInfo")>([type] { return std::vector<CallArg>{static_cast<int64_t>(type)}; },
                                       [&deviceInfo](Service &state, int result) {
                                           deviceInfo = state.DeviceInfoLocked();
                                           return result;
                                       });
}

int TravelVexarObjectClient::SendEventTo(const EventType &eventType, std::string &data)
{
    return Serve<Row("SendEventTo")>([&eventType, &data] {
        return std::vector<CallArg>{static_cast<int64_t>(eventType), data};
    });
}
} // namespace TravelService
} // namespace OHOS
