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

#ifndef HOST_INCLUDE_IREMOTE_OBJECT_H
#define HOST_INCLUDE_IREMOTE_OBJECT_H

#include <codecvt>
#include <locale>
#include <string>

#include "refbase.h"

namespace OHOS {
class IRemoteBroker;

// An IPC object: a proxy of a remote one, or a local stub. The host has no parcels and no driver, so only
// the identity part of the interface is here.
class IRemoteObject : public virtual RefBase {
public:
    // True unless a local stub overrides it.
    virtual bool IsProxyObject() const;
    // The broker that a local stub implements; null for a proxy.
    virtual sptr<IRemoteBroker> AsInterface();
    std::u16string GetInterfaceDescriptor();

protected:
    explicit IRemoteObject(std::u16string descriptor = {});

    const std::u16string descriptor_;
};
} // namespace OHOS

#endif // HOST_INCLUDE_IREMOTE_OBJECT_H
