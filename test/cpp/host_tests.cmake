# Copyright (c) 2026 The rovanta Authors
# Licensed under the Apache License, Version 2.0 (the "License");
# you may not use this file except in compliance with the License.
# You may obtain a copy of the License at
#
#     http://www.apache.org/licenses/LICENSE-2.0
#
# Unless required by applicable law or agreed to in writing, software
# distributed under the License is distributed on an "AS IS" BASIS,
# WITHOUT WARRANTIES OR CONDITIONS OF ANY KIND, either express or implied.
# See the License for the specific language governing permissions and
# limitations under the License.

# Tests of the host stand-ins that need no script engine. Include after host/ has been added.

find_package(GTest REQUIRED)

add_executable(host_platform_test
    ${CMAKE_CURRENT_LIST_DIR}/host_hilog_test.cpp
    ${CMAKE_CURRENT_LIST_DIR}/host_task_queue_test.cpp
)
target_include_directories(host_platform_test PRIVATE ${CMAKE_CURRENT_LIST_DIR}/../../host/src)
target_link_libraries(host_platform_test PRIVATE ohos_host GTest::gtest_main)
add_test(NAME host_platform_test COMMAND host_platform_test)
