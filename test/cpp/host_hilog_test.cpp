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

// The HiLog stand-in: formatting, the domain and tag rules, the ring's capacity and concurrent writers.

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <variant>
#include <vector>

#include "hilog/log.h"
#include "ohos_host/host_control.h"

#undef LOG_DOMAIN
#define LOG_DOMAIN 0xD005400
#undef LOG_TAG
#define LOG_TAG "HostTest"

namespace {
using namespace OHOS::Host;

class HiLogTest : public testing::Test {
protected:
    void SetUp() override
    {
        ClearHiLog();
    }

    void TearDown() override
    {
        SetHiLogCapacity(DEFAULT_HILOG_CAPACITY);
        ClearHiLog();
    }
};

TEST_F(HiLogTest, FormatsConversionsWithoutPrivacyFlagsAndKeepsTheirValues)
{
    int bytes = HiLogPrint(LOG_CORE, LOG_WARN, 0xD005400, "TravelVexarNapi",
                           "%{public}s# id %{private}d, %{publlic}s, [%5u|%-4x|%{public}03d] %lld %zu %hhd 100%% %s",
                           "Start", -7, "typo", 42u, 255u, 7, -9000000000LL, size_t{12}, 300, "plain");

    std::vector<HiLogLine> lines = HiLogLines();
    ASSERT_EQ(lines.size(), 1u);
    const HiLogLine &line = lines[0];
    EXPECT_EQ(line.text, "Start# id -7, typo, [   42|ff  |007] -9000000000 12 44 100% plain");
    EXPECT_EQ(bytes, static_cast<int>(line.text.size()));
    EXPECT_EQ(line.format, "%{public}s# id %{private}d, %{publlic}s, [%5u|%-4x|%{public}03d] %lld %zu %hhd 100%% %s");
    EXPECT_EQ(line.tag, "TravelVexarNapi");
    EXPECT_EQ(line.domain, 0xD005400u);
    EXPECT_EQ(line.type, LOG_CORE);
    EXPECT_EQ(line.level, LOG_WARN);
    std::vector<HiLogArg> expected = {std::string("Start"), int64_t{-7},         std::string("typo"),  uint64_t{42},
                                      uint64_t{255},        int64_t{7},          int64_t{-9000000000}, uint64_t{12},
                                      int64_t{44},          std::string("plain")};
    EXPECT_EQ(line.args, expected);
}

// A misread conversion would shift every later argument, and a later %s would then read a wrong pointer.
TEST_F(HiLogTest, StarWidthsUnknownConversionsAndLongMessagesKeepArgumentsInStep)
{
    const char *nothing = nullptr;
    HiLogPrint(LOG_CORE, LOG_INFO, 0xD005400, "Tag", "[%*d|%.*s] %y %s %.1f %p", 4, 7, 2, "abc", nothing, 2.25,
               reinterpret_cast<void *>(0x10));
    std::string longText(5000, 'x');
    HiLogPrint(LOG_CORE, LOG_INFO, 0xD005400, "Tag", "%s!", longText.c_str());

    std::vector<HiLogLine> lines = HiLogLines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].text, "[   7|ab] %y (null) 2.2 0x10");
    std::vector<HiLogArg> expected = {int64_t{7}, std::string("abc"), std::string("(null)"), 2.25, uint64_t{0x10}};
    EXPECT_EQ(lines[0].args, expected);
    EXPECT_EQ(lines[1].text, std::string(4095, 'x'));
    EXPECT_EQ(std::get<std::string>(lines[1].args.at(0)).size(), 5000u);
}

TEST_F(HiLogTest, MacrosUseTheDomainAndTagInForceAndDropRulesApply)
{
    HILOG_INFO(LOG_CORE, "%{public}s# entry", "Fn");
    EXPECT_EQ(HiLogPrint(LOG_CORE, LOG_INFO, 0, "Tag", "default domain"), -1);
    EXPECT_EQ(HiLogPrint(LOG_CORE, LOG_INFO, 0xD100000, "Tag", "above the range"), -1);
    EXPECT_EQ(HiLogPrint(LOG_CORE, LOG_INFO, 0xD005400, nullptr, "no tag"), -1);
    HiLogPrint(LOG_APP, LOG_ERROR, 0, "an application tag longer than thirty-one characters", "app");

    std::vector<HiLogLine> lines = HiLogLines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].domain, 0xD005400u);
    EXPECT_EQ(lines[0].tag, "HostTest");
    EXPECT_EQ(lines[0].level, LOG_INFO);
    EXPECT_EQ(lines[0].text, "Fn# entry");
    EXPECT_EQ(lines[1].tag, "an application tag longer than ");
    EXPECT_EQ(lines[1].text, "app");
}

TEST_F(HiLogTest, KeepsTheNewestLinesUpToCapacityAndCountsTheDropped)
{
    SetHiLogCapacity(3);
    for (int index = 0; index < 5; ++index) {
        HILOG_INFO(LOG_CORE, "line %{public}d", index);
    }
    std::vector<HiLogLine> lines = HiLogLines();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines.front().text, "line 2");
    EXPECT_EQ(lines.back().text, "line 4");
    EXPECT_EQ(HiLogDropped(), 2u);

    SetHiLogCapacity(1);
    EXPECT_EQ(HiLogLines().at(0).text, "line 4");
    EXPECT_EQ(HiLogDropped(), 4u);

    SetHiLogCapacity(0);
    EXPECT_EQ(HiLogPrint(LOG_CORE, LOG_INFO, 0xD005400, "Tag", "ignored"), 0);
    EXPECT_TRUE(HiLogLines().empty());

    ClearHiLog();
    EXPECT_EQ(HiLogDropped(), 0u);
}

TEST_F(HiLogTest, KeepsEveryLineOfConcurrentThreadsInTheirOrder)
{
    constexpr int THREADS = 4;
    constexpr int LINES = 500;
    std::vector<std::thread> writers;
    for (int writer = 0; writer < THREADS; ++writer) {
        writers.emplace_back([writer] {
            for (int index = 0; index < LINES; ++index) {
                HILOG_DEBUG(LOG_CORE, "%{public}d:%{public}d", writer, index);
            }
        });
    }
    for (std::thread &writer : writers) {
        writer.join();
    }
    std::vector<int> next(THREADS, 0);
    for (const HiLogLine &line : HiLogLines()) {
        int writer = static_cast<int>(std::get<int64_t>(line.args[0]));
        EXPECT_EQ(std::get<int64_t>(line.args[1]), next[writer]++);
    }
    EXPECT_EQ(next, std::vector<int>(THREADS, LINES));
}
} // namespace
