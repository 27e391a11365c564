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

// The access-token stand-in: the identity's token bits and the permission checks.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "accesstoken_kit.h"
#include "ipc_skeleton.h"
#include "ohos_host/host_control.h"
#include "token_setproc.h"
#include "tokenid_kit.h"

namespace {
using namespace OHOS;
using namespace OHOS::Host;
using Security::AccessToken::AccessTokenKit;
using Security::AccessToken::TokenIdKit;

TEST(AccessTokenTest, IdentityBitsAndPermissionChecks)
{
    ResetIdentity();
    const uint64_t systemAppFlag = 1ULL << 32;
    EXPECT_EQ(GetSelfTokenID(), systemAppFlag | 0x10001);
    EXPECT_EQ(IPCSkeleton::GetSelfTokenID(), GetSelfTokenID());
    EXPECT_TRUE(TokenIdKit::IsSystemAppByFullTokenID(GetSelfTokenID()));
    EXPECT_FALSE(TokenIdKit::IsSystemAppByFullTokenID((1ULL << 33) | (1ULL << 36) | 0xFFFFFFFF));
    EXPECT_EQ(AccessTokenKit::VerifyAccessToken(0x10001, "ohos.permission.ALLOW_CONNECT_CAR"), 0);
    EXPECT_EQ(AccessTokenKit::VerifyAccessToken(0x10001, "ohos.permission.OTHER"), -1);

    SetIdentity({false, 0x2A});
    EXPECT_EQ(GetSelfTokenID(), 0x2Au);
    EXPECT_FALSE(TokenIdKit::IsSystemAppByFullTokenID(GetSelfTokenID()));

    GrantPermission("ohos.permission.B");
    GrantPermission("ohos.permission.A");
    RevokePermission("ohos.permission.ALLOW_CONNECT_CAR");
    EXPECT_EQ(ListPermissions(), (std::vector<std::string>{"ohos.permission.A", "ohos.permission.B"}));
    EXPECT_EQ(AccessTokenKit::VerifyAccessToken(0x2A, "ohos.permission.A"), 0);
    EXPECT_EQ(AccessTokenKit::VerifyAccessToken(0, "ohos.permission.A"), -1);
    EXPECT_EQ(VerifyAccessTokenCalls(), 4u);

    ResetIdentity();
    EXPECT_EQ(GetIdentity().tokenId, 0x10001u);
    EXPECT_TRUE(GetIdentity().systemApp);
    EXPECT_EQ(ListPermissions(), std::vector<std::string>{"ohos.permission.ALLOW_CONNECT_CAR"});
    EXPECT_EQ(VerifyAccessTokenCalls(), 0u);
}
} // namespace
