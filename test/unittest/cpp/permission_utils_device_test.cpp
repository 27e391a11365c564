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

// Permission check cases that hold for any process identity, so they run on a
// device as well as on the host: the module agrees with the access token
// service about the process it runs in.
#include <gtest/gtest.h>

#include <string>

#include "access_token.h"
#include "accesstoken_kit.h"
#include "ipc_skeleton.h"
#include "permission_utils.h"

using namespace testing::ext;

namespace OHOS {
namespace TravelService {
namespace {
using Security::AccessToken::AccessTokenID;
using Security::AccessToken::AccessTokenKit;

const std::string CONNECT_PERMISSION = "ohos.permission.ALLOW_CONNECT_CAR";

bool ServiceGrants(const std::string &permission)
{
    uint64_t fullTokenId = IPCSkeleton::GetSelfTokenID();
    return fullTokenId != 0 && AccessTokenKit::VerifyAccessToken(static_cast<AccessTokenID>(fullTokenId), permission) ==
                                   Security::AccessToken::PERMISSION_GRANTED;
}

class PermissionUtilsDeviceTest : public testing::Test {};

/**
 * @tc.name: UnknownPermissionIsRefused
 * @tc.desc: a permission that no process holds is refused
 * @tc.type: FUNC
 */
HWTEST_F(PermissionUtilsDeviceTest, UnknownPermissionIsRefused, TestSize.Level1)
{
    EXPECT_FALSE(PermissionUtils::CheckSelfIsPermissible("ohos.permission.ROVANTA_NEVER_GRANTED"));
}

/**
 * @tc.name: ConnectPermissionAsTheServiceSays
 * @tc.desc: the connect permission is granted exactly when the access token service grants it
 * @tc.type: FUNC
 */
HWTEST_F(PermissionUtilsDeviceTest, ConnectPermissionAsTheServiceSays, TestSize.Level1)
{
    EXPECT_EQ(PermissionUtils::CheckSelfIsPermissible(CONNECT_PERMISSION), ServiceGrants(CONNECT_PERMISSION));
}
} // namespace
} // namespace TravelService
} // namespace OHOS
