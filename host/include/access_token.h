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

#ifndef HOST_INCLUDE_ACCESS_TOKEN_H
#define HOST_INCLUDE_ACCESS_TOKEN_H

// Like the platform's header: <cstdint> and <string> only, yet a std::vector member below, so this header
// compiles only after something that brought <vector> (the access-token kit's header includes it first).
#include <cstdint>
#include <string>

namespace OHOS {
namespace Security {
namespace AccessToken {
typedef unsigned int AccessTokenID;
typedef uint64_t FullTokenID;

static const AccessTokenID INVALID_TOKENID = 0;

enum PermissionState {
    PERMISSION_DENIED = -1,
    PERMISSION_GRANTED = 0,
};

struct UserPolicy {
    int32_t userId = 0;
    bool isRestricted = false;
};

struct UserPermissionPolicy {
    std::string permissionName;
    std::vector<UserPolicy> userPolicyList;
};
} // namespace AccessToken
} // namespace Security
} // namespace OHOS

#endif // HOST_INCLUDE_ACCESS_TOKEN_H
