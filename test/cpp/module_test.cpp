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

#include <gtest/gtest.h>

#include <string>
#include <variant>

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

TEST_F(PermissionUtilsTest, GrantedPermissionPassesSilently)
{
    EXPECT_TRUE(PermissionUtils::CheckSelfIsPermissible(CONNECT_PERMISSION));
    EXPECT_TRUE(Host::HiLogLines().empty());
}

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

TEST_F(PermissionUtilsTest, DenialLineNamesTheEnginePermissionWhateverWasAsked)
{
    Host::RevokePermission(CONNECT_PERMISSION);

    EXPECT_FALSE(PermissionUtils::CheckSelfIsPermissible(CONNECT_PERMISSION));
    EXPECT_FALSE(PermissionUtils::CheckSelfIsPermissible("ohos.permission.SOMETHING_ELSE"));

    auto lines = Host::HiLogLines();
    ASSERT_EQ(lines.size(), 2u);
    for (const auto &line : lines) {
        EXPECT_EQ(line.tag, "TravelService");
        ASSERT_EQ(line.args.size(), 2u);
        EXPECT_EQ(std::get<std::string>(line.args[0]), "CheckSelfIsPermissible");
        EXPECT_EQ(std::get<std::string>(line.args[1]), "ohos.permission.ACCESS_CAR_SYNAPSE");
    }
}
} // namespace
} // namespace TravelService
} // namespace OHOS
