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

#include <atomic>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <string_view>

#include "accesstoken_kit.h"
#include "ipc_skeleton.h"
#include "ohos_host/host_control.h"
#include "token_setproc.h"
#include "tokenid_kit.h"

namespace OHOS {
namespace Host {
namespace {
constexpr uint64_t SYSTEM_APP_FLAG = 1ULL << 32;
constexpr uint32_t DEFAULT_TOKEN_ID = 0x10001;
constexpr std::string_view DEFAULT_PERMISSION = "ohos.permission.ALLOW_CONNECT_CAR";

class AccessTokenState {
public:
    static AccessTokenState &Get()
    {
        static AccessTokenState *state = new AccessTokenState();
        return *state;
    }

    uint64_t FullTokenId() const
    {
        return fullTokenId_.load();
    }

    void SetFullTokenId(uint64_t fullTokenId)
    {
        fullTokenId_.store(fullTokenId);
    }

    void Reset()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        fullTokenId_.store(SYSTEM_APP_FLAG | DEFAULT_TOKEN_ID);
        permissions_ = {std::string(DEFAULT_PERMISSION)};
        PermissionsChangedLocked();
        verifyCalls_.store(0);
    }

    void Grant(const std::string &name)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        permissions_.insert(name);
        PermissionsChangedLocked();
    }

    void Revoke(const std::string &name)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        permissions_.erase(name);
        PermissionsChangedLocked();
    }

    std::vector<std::string> Permissions()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return {permissions_.begin(), permissions_.end()};
    }

    int Verify(Security::AccessToken::AccessTokenID tokenId, const std::string &permission)
    {
        verifyCalls_.fetch_add(1);
        bool granted = tokenId != Security::AccessToken::INVALID_TOKENID && IsGranted(permission);
        return granted ? Security::AccessToken::PERMISSION_GRANTED : Security::AccessToken::PERMISSION_DENIED;
    }

    uint64_t VerifyCalls() const
    {
        return verifyCalls_.load();
    }

private:
    AccessTokenState()
    {
        Reset();
    }

    void PermissionsChangedLocked()
    {
        defaultGranted_.store(permissions_.count(DEFAULT_PERMISSION) != 0);
    }

    // The permission that every call of the module asks for is answered without the lock.
    bool IsGranted(const std::string &permission)
    {
        if (std::string_view(permission) == DEFAULT_PERMISSION) {
            return defaultGranted_.load();
        }
        std::lock_guard<std::mutex> lock(mutex_);
        return permissions_.count(permission) != 0;
    }

    std::atomic<uint64_t> fullTokenId_{0};
    std::atomic<uint64_t> verifyCalls_{0};
    // Whether permissions_ holds DEFAULT_PERMISSION; written under the lock with every change of permissions_.
    std::atomic<bool> defaultGranted_{false};
    std::mutex mutex_;
    std::set<std::string, std::less<>> permissions_;
};
} // namespace

Identity GetIdentity()
{
    uint64_t fullTokenId = AccessTokenState::Get().FullTokenId();
    return {(fullTokenId & SYSTEM_APP_FLAG) != 0, static_cast<uint32_t>(fullTokenId)};
}

void SetIdentity(const Identity &identity)
{
    AccessTokenState::Get().SetFullTokenId((identity.systemApp ? SYSTEM_APP_FLAG : 0) | identity.tokenId);
}

void ResetIdentity()
{
    AccessTokenState::Get().Reset();
}

void GrantPermission(const std::string &name)
{
    AccessTokenState::Get().Grant(name);
}

void RevokePermission(const std::string &name)
{
    AccessTokenState::Get().Revoke(name);
}

std::vector<std::string> ListPermissions()
{
    return AccessTokenState::Get().Permissions();
}

uint64_t VerifyAccessTokenCalls()
{
    return AccessTokenState::Get().VerifyCalls();
}
} // namespace Host

uint64_t IPCSkeleton::GetSelfTokenID()
{
    return Host::AccessTokenState::Get().FullTokenId();
}

namespace Security {
namespace AccessToken {
int AccessTokenKit::VerifyAccessToken(AccessTokenID tokenID, const std::string &permissionName)
{
    return Host::AccessTokenState::Get().Verify(tokenID, permissionName);
}

bool TokenIdKit::IsSystemAppByFullTokenID(uint64_t tokenId)
{
    return (tokenId & Host::SYSTEM_APP_FLAG) != 0;
}
} // namespace AccessToken
} // namespace Security
} // namespace OHOS

extern "C" uint64_t GetSelfTokenID(void)
{
    return OHOS::IPCSkeleton::GetSelfTokenID();
}
