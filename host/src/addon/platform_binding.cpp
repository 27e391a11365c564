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

#include <cstdint>
#include <type_traits>

#include "bindings.h"
#include "napi_support.h"
#include "ohos_host/host_control.h"

namespace OHOS {
namespace Host {
namespace Addon {
namespace {
constexpr int64_t MAX_HILOG_CAPACITY = 1LL << 40;

napi_value IdentityGet(const CallArgs &args)
{
    napi_env env = args.Env();
    Identity identity = GetIdentity();
    napi_value result = MakeObject(env);
    SetProperty(env, result, "systemApp", MakeBool(env, identity.systemApp));
    SetProperty(env, result, "tokenId", MakeNumber(env, identity.tokenId));
    return result;
}

// Takes { systemApp, tokenId }, both optional; what is left out keeps its value.
napi_value IdentitySet(const CallArgs &args)
{
    napi_env env = args.Env();
    napi_value change = args.At(0);
    if (TypeOf(env, change) != napi_object) {
        throw JsError("identity must be an object");
    }
    Identity identity = GetIdentity();
    if (napi_value systemApp = OptionalProperty(env, change, "systemApp")) {
        identity.systemApp = ToBool(env, systemApp, "systemApp");
    }
    if (napi_value tokenId = OptionalProperty(env, change, "tokenId")) {
        identity.tokenId = static_cast<uint32_t>(ToInteger(env, tokenId, "tokenId", 0, UINT32_MAX));
    }
    SetIdentity(identity);
    return Undefined(env);
}

napi_value IdentityReset(const CallArgs &args)
{
    ResetIdentity();
    return Undefined(args.Env());
}

napi_value PermissionGrant(const CallArgs &args)
{
    GrantPermission(ToStdString(args.Env(), args.At(0), "permission"));
    return Undefined(args.Env());
}

napi_value PermissionRevoke(const CallArgs &args)
{
    RevokePermission(ToStdString(args.Env(), args.At(0), "permission"));
    return Undefined(args.Env());
}

napi_value PermissionList(const CallArgs &args)
{
    return MakeStringArray(args.Env(), ListPermissions());
}

napi_value VerifyCount(const CallArgs &args)
{
    return MakeNumber(args.Env(), static_cast<double>(VerifyAccessTokenCalls()));
}

napi_value ToJs(napi_env env, const HiLogArg &arg)
{
    return std::visit(
        [env](const auto &value) {
            if constexpr (std::is_same_v<std::decay_t<decltype(value)>, std::string>) {
                return MakeString(env, value);
            } else {
                return MakeNumber(env, static_cast<double>(value));
            }
        },
        arg);
}

napi_value HiLogLinesToJs(const CallArgs &args)
{
    napi_env env = args.Env();
    std::vector<napi_value> lines;
    for (const HiLogLine &line : HiLogLines()) {
        std::vector<napi_value> lineArgs;
        for (const HiLogArg &arg : line.args) {
            lineArgs.push_back(ToJs(env, arg));
        }
        napi_value record = MakeObject(env);
        SetProperty(env, record, "type", MakeNumber(env, line.type));
        SetProperty(env, record, "level", MakeNumber(env, line.level));
        SetProperty(env, record, "domain", MakeNumber(env, line.domain));
        SetProperty(env, record, "tag", MakeString(env, line.tag));
        SetProperty(env, record, "format", MakeString(env, line.format));
        SetProperty(env, record, "args", MakeArray(env, lineArgs));
        SetProperty(env, record, "text", MakeString(env, line.text));
        SetProperty(env, record, "thread", MakeNumber(env, static_cast<double>(line.thread)));
        lines.push_back(record);
    }
    return MakeArray(env, lines);
}

napi_value HiLogClear(const CallArgs &args)
{
    ClearHiLog();
    return Undefined(args.Env());
}

napi_value HiLogSetCapacity(const CallArgs &args)
{
    napi_env env = args.Env();
    SetHiLogCapacity(static_cast<size_t>(ToInteger(env, args.At(0), "capacity", 0, MAX_HILOG_CAPACITY)));
    return Undefined(env);
}

napi_value HiLogGetCapacity(const CallArgs &args)
{
    return MakeNumber(args.Env(), static_cast<double>(HiLogCapacity()));
}

napi_value HiLogGetDropped(const CallArgs &args)
{
    return MakeNumber(args.Env(), static_cast<double>(HiLogDropped()));
}

napi_value BrokerList(const CallArgs &args)
{
    return MakeStringArray(args.Env(), BrokerDescriptors());
}
} // namespace

void DefinePlatformFunctions(napi_env env, napi_value exports)
{
    DefineFunction(env, exports, "identityGet", Export<IdentityGet>);
    DefineFunction(env, exports, "identitySet", Export<IdentitySet>);
    DefineFunction(env, exports, "identityReset", Export<IdentityReset>);
    DefineFunction(env, exports, "permissionGrant", Export<PermissionGrant>);
    DefineFunction(env, exports, "permissionRevoke", Export<PermissionRevoke>);
    DefineFunction(env, exports, "permissionList", Export<PermissionList>);
    DefineFunction(env, exports, "verifyAccessTokenCalls", Export<VerifyCount>);
    DefineFunction(env, exports, "hilogLines", Export<HiLogLinesToJs>);
    DefineFunction(env, exports, "hilogClear", Export<HiLogClear>);
    DefineFunction(env, exports, "hilogSetCapacity", Export<HiLogSetCapacity>);
    DefineFunction(env, exports, "hilogCapacity", Export<HiLogGetCapacity>);
    DefineFunction(env, exports, "hilogDropped", Export<HiLogGetDropped>);
    DefineFunction(env, exports, "brokerDescriptors", Export<BrokerList>);
}
} // namespace Addon
} // namespace Host
} // namespace OHOS
