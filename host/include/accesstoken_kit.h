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

#ifndef HOST_INCLUDE_ACCESSTOKEN_KIT_H
#define HOST_INCLUDE_ACCESSTOKEN_KIT_H

#include <string>
#include <unordered_set>
#include <vector>

#include "access_token.h"

namespace OHOS {
namespace Security {
namespace AccessToken {
class AccessTokenKit {
public:
    // PERMISSION_GRANTED if `tokenID` is not INVALID_TOKENID and the process holds `permissionName`,
    // PERMISSION_DENIED otherwise.
    static int VerifyAccessToken(AccessTokenID tokenID, const std::string &permissionName);
};
} // namespace AccessToken
} // namespace Security
} // namespace OHOS

#endif // HOST_INCLUDE_ACCESSTOKEN_KIT_H
