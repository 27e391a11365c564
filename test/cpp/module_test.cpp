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

// The permission check's cases that script code cannot reach through the gate, where a system application
// always has a token: a process without a token id, and a system flag on a token id of 0.

#include <gtest/gtest.h>

#include <string>

#include "ohos_host/host_control.h"
#include "permission_utils.h"

namespace OHOS {
namespace TravelService {
namespace {
const std::string CONNECT_PERMISSION = "ohos.permission.ALLOW_CONNECT_CAR";
constexpr unsigned int LOG_DOMAIN_TRAVEL = 0xD005400;
constexpr int LOG_LEVEL_ERROR = 6;

class PermissionUtilsTest : public testing::Test {
protected:
    void SetUp() override
    {
        Host::ResetIdentity();
        Host::ClearHiLog();
    }
    void TearDown() override
    {
        Host::ResetIdentity();
    }

    static Host::HiLogLine OnlyLine()
    {
        auto lines = Host::HiLogLines();
        EXPECT_EQ(lines.size(), 1u);
        return lines.empty() ? Host::HiLogLine{} : lines.front();
    }
};

TEST_F(PermissionUtilsTest, NoTokenFailsWithoutAskingTheAccessTokenService)
{
    Host::SetIdentity({false, 0});
    uint64_t verifiedBefore = Host::VerifyAccessTokenCalls();

    EXPECT_FALSE(PermissionUtils::CheckSelfIsPermissible(CONNECT_PERMISSION));

    EXPECT_EQ(Host::VerifyAccessTokenCalls(), verifiedBefore);
    Host::HiLogLine line = OnlyLine();
    EXPECT_EQ(line.tag, "TravelService");
    EXPECT_EQ(line.level, LOG_LEVEL_ERROR);
    EXPECT_EQ(line.domain, LOG_DOMAIN_TRAVEL);
    EXPECT_EQ(line.format, "%{public}s# Get calling TokenId failed");
    EXPECT_EQ(line.text, "CheckSelfIsPermissible# Get calling TokenId failed");
}

TEST_F(PermissionUtilsTest, SystemFlagAloneIsATokenThatTheServiceDenies)
{
    Host::SetIdentity({true, 0});
    uint64_t verifiedBefore = Host::VerifyAccessTokenCalls();

    EXPECT_FALSE(PermissionUtils::CheckSelfIsPermissible(CONNECT_PERMISSION));

    EXPECT_EQ(Host::VerifyAccessTokenCalls(), verifiedBefore + 1);
    EXPECT_EQ(OnlyLine().format,
              "%{public}s# Permission denied. Interface caller does not have permission: %{public}s");
}
} // namespace
} // namespace TravelService
} // namespace OHOS
