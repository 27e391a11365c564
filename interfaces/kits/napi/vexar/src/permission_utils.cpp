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

#define VEXAR_LOG_TAG "TravelService"

#include "permission_utils.h"

#include <cstdint>

// accesstoken_kit.h brings <vector> before access_token.h, whose member declarations need it without including
// it; access_token.h must not come first.
#include "accesstoken_kit.h"
#include "ipc_skeleton.h"
#include "vexar_common_constants.h"
#include "vexar_log.h"

namespace OHOS {
namespace TravelService {
using Security::AccessToken::AccessTokenID;
using Security::AccessToken::AccessTokenKit;

bool PermissionUtils::CheckSelfIsPermissible(const std::string &permission)
{
    uint64_t tokenId = IPCSkeleton::GetSelfTokenID();
    if (tokenId == 0) {
        LOGE("Get calling TokenId failed");
        return false;
    }
    int verifyResult = AccessTokenKit::VerifyAccessToken(static_cast<AccessTokenID>(tokenId), permission);
    if (verifyResult == Security::AccessToken::PERMISSION_GRANTED) {
        return true;
    }
    // The denial line names the engine permission whatever was asked for; the service side reads it so.
    LOGE("Permission denied. Interface caller does not have permission: %{public}s",
         ACCESS_CAR_SYNAPSE_PERMISSION.c_str());
    return false;
}
} // namespace TravelService
} // namespace OHOS
