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

// The platform's googletest extension on the host: Debian's googletest plus
// HWTEST_F and the TestSize levels that device test sources use.
#ifndef HOST_GN_BUILD_PARTS_GOOGLETEST_INCLUDE_GTEST_GTEST_H
#define HOST_GN_BUILD_PARTS_GOOGLETEST_INCLUDE_GTEST_GTEST_H

#include_next <gtest/gtest.h>

namespace testing {
namespace ext {
// The level a case runs at; the device's runner filters by it, the host runs all.
struct TestSizeSet {
    int Level0 = 1;
    int Level1 = 2;
    int Level2 = 4;
    int Level3 = 8;
    int Level4 = 16;
};
inline const TestSizeSet TestSize{};
} // namespace ext
} // namespace testing

#define HWTEST_F(test_fixture, test_name, level)                                                                       \
    static_assert(sizeof(level) > 0, "a test level such as TestSize.Level1");                                          \
    TEST_F(test_fixture, test_name)

#endif // HOST_GN_BUILD_PARTS_GOOGLETEST_INCLUDE_GTEST_GTEST_H
