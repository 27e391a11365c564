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

#ifndef HOST_INCLUDE_PEER_HOLDER_H
#define HOST_INCLUDE_PEER_HOLDER_H

#include "iremote_object.h"
#include "refbase.h"

namespace OHOS {
// Keeps the remote object that a proxy talks to.
class PeerHolder {
protected:
    explicit PeerHolder(const sptr<IRemoteObject> &object);
    ~PeerHolder() = default;

    sptr<IRemoteObject> Remote();

private:
    const sptr<IRemoteObject> remoteObject_;
};
} // namespace OHOS

#endif // HOST_INCLUDE_PEER_HOLDER_H
