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

#ifndef INTERFACES_KITS_NAPI_VEXAR_INCLUDE_VEXAR_CONNECT_CONSTANTS_H
#define INTERFACES_KITS_NAPI_VEXAR_INCLUDE_VEXAR_CONNECT_CONSTANTS_H

#include <string>

// Connection vocabulary shared with the car service side.
namespace OHOS {
namespace TravelService {
// Connection parameter keys.
const std::string NETWORK_ID = "NETWORK_ID";
const std::string BLE_MAC = "BLE_MAC";
const std::string BR_MAC = "BR_MAC";
const std::string SESSION_KEY = "SESSION_KEY";
const std::string WIFI_PORT = "WIFI_PORT";
const std::string DEVICE_NAME = "DEVICE_NAME";
const std::string DEV_MODULE_ID = "DEV_MODULE_ID";
const std::string DEV_SUB_MODULE_ID = "DEV_SUB_MODULE_ID";
const std::string DEV_ID = "DEV_ID";
const std::string CONNECT_TYPE = "CONNECT_TYPE";
const std::string HAS_PIN = "HAS_PIN";
const std::string SHAKE_DATA = "SHAKE_DATA";
const std::string CUSTOM_DATA = "CUSTOM_DATA";
const std::string PIN_CODE = "PIN_CODE";
const std::string BIND_TYPE = "BIND_TYPE";
const std::string AGREE_RECONNECT = "AGREE_RECONNECT";
const std::string NEED_SILENCE = "NEED_SILENCE";
const std::string KLOMP_RETRY_TIMES = "KLOMP_RETRY_TIMES";
const std::string BR_RETRYING = "BR_RETRYING";
const std::string USB_IP = "USB_IP";
const std::string USB_PORT = "USB_PORT";
const std::string DEVICE_TYPE = "DEVICE_TYPE";
const std::string DISPLAY_ID = "DISPLAY_ID";
const std::string KLOMP_CONNECT_ID = "KLOMP_CONNECT_ID";
const std::string CONNECT_STATUS = "CONNECT_STATUS";
const std::string REMOTE_IP = "REMOTE_IP";
const std::string CAR_MODE_ID = "CAR_MODE_ID";

const std::string VEXAR_BUNDLE_NAME = "com.quorix.zuno.vexar";
const std::string DEVICE_MANAGER_NAME = "device_manager";

// Business keys.
const std::string BUSINESS_TAG = "BUSINESS_TAG";
const std::string BUSINESS_TYPE = "BUSINESS_TYPE";
const std::string SESSION_NAME = "SESSION_NAME";
const std::string BUSINESS_ID = "BUSINESS_ID";
const std::string BUSINESS_ERROR_CODE = "ERROR_CODE";
const std::string ABILITY_NAME = "ABILITY_NAME";
const std::string BUNDLE_NAME = "BUNDLE_NAME";

const std::string BUSINESS_SERIAL = "000000";
const std::string VEXAR_NAME = "Vexar";
const std::string CMD_ID = "cmdId";
const std::string INFO = "info";
} // namespace TravelService
} // namespace OHOS

#endif // INTERFACES_KITS_NAPI_VEXAR_INCLUDE_VEXAR_CONNECT_CONSTANTS_H
