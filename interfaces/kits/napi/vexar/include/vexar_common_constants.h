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

#ifndef INTERFACES_KITS_NAPI_VEXAR_INCLUDE_VEXAR_COMMON_CONSTANTS_H
#define INTERFACES_KITS_NAPI_VEXAR_INCLUDE_VEXAR_COMMON_CONSTANTS_H

#include <cstdint>
#include <map>
#include <string>

// Shared with the car service side. Every source file holds its own copy of these constants.
namespace OHOS {
namespace TravelService {
const std::string ALLOW_CONNECT_CAR_PERMISSION = "ohos.permission.ALLOW_CONNECT_CAR";
const std::string ACCESS_CAR_SYNAPSE_PERMISSION = "ohos.permission.ACCESS_CAR_SYNAPSE";

constexpr int32_t PERMISSION_DENIED_ERROR = 201;
constexpr int32_t NON_SYSTEM_APP_ERROR = 202;
constexpr int32_t INVALID_PARAM_ERROR = 401;

// Looked up by subscript: a code missing here would be added with an empty message.
static std::map<int32_t, std::string> ERROR_MESSAGES = {
    {PERMISSION_DENIED_ERROR, "Permission denied."},
    {NON_SYSTEM_APP_ERROR, "Permission denied, non-system app called system api."},
    {INVALID_PARAM_ERROR, "Invalid input parameter."},
};

// Event report keys.
const std::string ORG_PKG = "ORG_PKG";
const std::string FUNC = "FUNC";
const std::string BIZ_SCENE = "BIZ_SCENE";
const std::string BIZ_STAGE = "BIZ_STAGE";
const std::string TO_CALL_PKG = "TO_CALL_PKG";
const std::string HOST_PKG = "HOST_PKG";
const std::string LOCAL_UDID = "LOCAL_UDID";
const std::string LOCAL_NET_ID = "LOCAL_NET_ID";
const std::string PEER_UDID = "PEER_UDID";
const std::string PEER_NET_ID = "PEER_NET_ID";
const std::string IS_TRUST = "IS_TRUST";
const std::string LOCAL_SESS_NAME = "LOCAL_SESS_NAME";
const std::string PEER_SESS_NAME = "PEER_SESS_NAME";
const std::string STAGE_RES = "STAGE_RES";
const std::string ERROR_CODE = "ERROR_CODE";
const std::string BIZ_STATE = "BIZ_STATE";
const std::string CONCURRENT_ID = "CONCURRENT_ID";

// The car service and its interface.
const std::string CAR_SERVICE_ABILITY_NAME = "zuno.carservice.synapse";
const std::u16string CAR_SERVICE_INTERFACE_DESCRIPTOR = u"ZUNO.travel.SAInterface";

// System services the car service works with.
const std::string NAV_INFO_SERVICE_NAME = "nav_info_service";
const std::string SOFTBUS_SERVICE_NAME = "dsoftbus";
const std::string DEVICE_MANAGER_SERVICE_NAME = "deviceManager";
const std::string CAR_SYNAPSE_SERVICE_NAME = "car_synapse";
const std::string SAMGR_SERVICE_NAME = "samgr";
const std::string BLUETOOTH_SERVICE_NAME = "bluetooth_service";

// Partner applications.
const std::string TANDEM_DRIVE_BUNDLE_NAME = "com.quorix.zuno.tandemdrive";
const std::string ROAD_AID_BUNDLE_NAME = "com.quorix.zuno.roadaid";
const std::string LANE_HELPER_BUNDLE_NAME = "com.quorix.zuno.lanehelper";

const std::string TRAVEL_DISTRIBUTED_SA_NAME = "TRAVEL_DISTRIBUTED_SA";
} // namespace TravelService
} // namespace OHOS

#endif // INTERFACES_KITS_NAPI_VEXAR_INCLUDE_VEXAR_COMMON_CONSTANTS_H
