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

#ifndef HOST_INCLUDE_TOKEN_SETPROC_H
#define HOST_INCLUDE_TOKEN_SETPROC_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// Full token id of this process: bit 32 marks a system application, the low 32 bits hold the token id.
uint64_t GetSelfTokenID(void);

#ifdef __cplusplus
}
#endif

#endif // HOST_INCLUDE_TOKEN_SETPROC_H
