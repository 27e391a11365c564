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

#ifndef INTERFACES_KITS_NAPI_VEXAR_INCLUDE_TRAVEL_VEXAR_OBJECT_CLIENT_H
#define INTERFACES_KITS_NAPI_VEXAR_INCLUDE_TRAVEL_VEXAR_OBJECT_CLIENT_H

#include <cstdint>
#include <string>
#include <unordered_map>

#include "iremote_broker.h"
#include "iremote_object.h"
#include "iremote_proxy.h"
#include "refbase.h"

namespace OHOS {
namespace TravelService {
// The seven callbacks that the car service reports through. The slot order is the event code that the
// module tags each event with, so the fields must stay in this order. The client copies the pointers.
struct EventListener {
    void (*onBindResult)(std::string deviceId, int result, int status, std::string content);
    void (*onDataReceive)(int type, std::string data);
    void (*onDeviceStateChange)(int state, std::string deviceInfo);
    void (*onDeviceChange)(int state);
    void (*onDeviceServiceStateChange)(std::string serviceId, int state, int serviceType);
    void (*onSurfaceTransferOnEvent)(int code, int eventId, std::string category);
    void (*onDisconnectResult)(int result);
};

// Which piece of device information to read; the values belong to the car service.
enum DeviceInfoType : int32_t {};

// The kind of event sent to the car; the values belong to the car service.
enum EventType : int32_t {};

class ITravelVexarObject : public IRemoteBroker {
public:
    DECLARE_INTERFACE_DESCRIPTOR(u"ZUNO.ITravel.Vexar");
};

class TravelVexarObjectProxy : public IRemoteProxy<ITravelVexarObject> {
public:
    explicit TravelVexarObjectProxy(const sptr<IRemoteObject> &impl);
    ~TravelVexarObjectProxy() override;

private:
    static inline BrokerDelegator<TravelVexarObjectProxy> delegator_;
};

// Process-wide client of the car service. Every member may be called from any thread at once.
class TravelVexarObjectClient : public RefBase {
public:
    static sptr<TravelVexarObjectClient> GetInstance();

    int RegisterCarConnectListener(const EventListener &listener);
    int UnRegisterCarConnectListener();
    int StartBindTarget(int bindType, std::unordered_map<std::string, std::string> &deviceInfo);
    int StopBindTarget(int bindType);
    int SendControlData(int dataType, std::string &data);
    int StartSurfaceTransfer(const std::unordered_map<std::string, std::string> &surfaceInfo);
    int StopSurfaceTransfer();
    int CastOperation(int operation);
    int DisconnectDevice();
    int GetDeviceInfo(DeviceInfoType type, std::string &deviceInfo);
    int SendEventTo(const EventType &eventType, std::string &data);

private:
    TravelVexarObjectClient() = default;
};
} // namespace TravelService
} // namespace OHOS

#endif // INTERFACES_KITS_NAPI_VEXAR_INCLUDE_TRAVEL_VEXAR_OBJECT_CLIENT_H
