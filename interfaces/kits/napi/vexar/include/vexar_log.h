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

#ifndef INTERFACES_KITS_NAPI_VEXAR_INCLUDE_VEXAR_LOG_H
#define INTERFACES_KITS_NAPI_VEXAR_INCLUDE_VEXAR_LOG_H

#include "hilog/log.h"

#ifndef VEXAR_LOG_TAG
#define VEXAR_LOG_TAG "TravelVexarNapi"
#endif

#define VEXAR_LOG_DOMAIN 0xD005400

// Every line starts with the name of the function that logs it.
#define VEXAR_HILOG(level, func, fmt, ...)                                                                             \
    ((void)HiLogPrint(LOG_CORE, level, VEXAR_LOG_DOMAIN, VEXAR_LOG_TAG, "%{public}s# " fmt, func, ##__VA_ARGS__))

#define LOGI(fmt, ...) VEXAR_HILOG(LOG_INFO, __FUNCTION__, fmt, ##__VA_ARGS__)
#define LOGW(fmt, ...) VEXAR_HILOG(LOG_WARN, __FUNCTION__, fmt, ##__VA_ARGS__)
#define LOGE(fmt, ...) VEXAR_HILOG(LOG_ERROR, __FUNCTION__, fmt, ##__VA_ARGS__)

#endif // INTERFACES_KITS_NAPI_VEXAR_INCLUDE_VEXAR_LOG_H
