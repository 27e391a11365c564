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

#ifndef HOST_INCLUDE_OHOS_HOST_HOST_CONTROL_H
#define HOST_INCLUDE_OHOS_HOST_HOST_CONTROL_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <variant>
#include <vector>

// Control of the host stand-ins of the platform services, for the harness addon and for C++ tests. Every
// function may be called from any thread unless it says otherwise.
namespace OHOS {
namespace Host {
// A number that tells the calling thread from the others alive with it, found without a system call; it fits a
// script number exactly.
uint64_t CallingThreadId();

// ---- Caller identity (access token) ----

struct Identity {
    bool systemApp;
    uint32_t tokenId; // 0: the process has no token
};

Identity GetIdentity();
void SetIdentity(const Identity &identity);
// Back to a system application with token id 0x10001 holding "ohos.permission.ALLOW_CONNECT_CAR" only, and
// the VerifyAccessToken call count back to 0.
void ResetIdentity();
void GrantPermission(const std::string &name);
void RevokePermission(const std::string &name);
// Sorted.
std::vector<std::string> ListPermissions();
// How many times AccessTokenKit::VerifyAccessToken has been called.
uint64_t VerifyAccessTokenCalls();

// ---- HiLog ----

// Value of one conversion of a format: signed integer (d, i, c), unsigned integer (u, o, x, X, p), floating
// point (f, e, g, a) or string (s).
using HiLogArg = std::variant<int64_t, uint64_t, double, std::string>;

struct HiLogLine {
    int type;
    int level;
    unsigned int domain;
    std::string tag;
    std::string format;
    std::vector<HiLogArg> args;
    // The formatted message; privacy flags are removed and every value is shown.
    std::string text;
    // The thread that logged it (CallingThreadId).
    uint64_t thread = 0;
};

inline constexpr size_t DEFAULT_HILOG_CAPACITY = 200000;

std::vector<HiLogLine> HiLogLines();
// Forgets the kept lines and the dropped count.
void ClearHiLog();
// Lines kept at most; beyond it the oldest are dropped. 0 keeps none and makes HiLogPrint return at once.
void SetHiLogCapacity(size_t capacity);
size_t HiLogCapacity();
// Lines dropped for lack of room since the last ClearHiLog().
uint64_t HiLogDropped();

// ---- IPC broker ----

// Descriptors registered with BrokerRegistration now, sorted.
std::vector<std::u16string> BrokerDescriptors();

// ---- Main event runner ----
// Events sent to the main runner wait in its queue until a driver attaches. The driver is woken whenever an
// event falls due and then runs the due events on its own thread with RunDueMainTasks, a bounded batch per call,
// so that its thread gets on with other work between batches.

// Called with the runner lock held whenever an event is due and no wake-up is pending, from the sending thread
// or from the runner timer thread. It must not block or call back into the runner.
using MainRunnerWaker = std::function<void()>;
// Wraps the run of one batch of tasks; it must call `tasks` exactly once.
using MainTaskScope = std::function<void(const std::function<void()> &tasks)>;

// Starts delivery through `waker`. False if a driver is attached already or the runner has been detached.
bool AttachMainRunner(MainRunnerWaker waker);
// Stops delivery for good: once this returns the waker is never called again, waiting events are dropped and
// later events are refused (SendEvent returns false).
void DetachMainRunner();
// Runs, on the calling thread, the events that are due, in priority then sending order, at most 128 of them.
// Events whose handler is gone are dropped without running. Returns true when more are due: the wake-up then
// stays claimed, and the driver, not woken again, must call once more after a turn of its own work. Returns
// false once nothing is due; the next event due wakes the driver.
bool RunDueMainTasks(const MainTaskScope &scope);
// Sequence number of the last event sent (events are numbered from 1).
uint64_t MainRunnerLastSequence();
// Whether an event numbered `sequence` or lower still waits to run.
bool MainRunnerHasPendingThrough(uint64_t sequence);
// How many events wait to run now.
size_t MainRunnerPendingCount();
// One event sent to the main runner: its priority value (0 VIP to 4 IDLE) and the sending thread.
struct MainRunnerPost {
    uint32_t priority;
    uint64_t thread;
};
// From now on, records every event sent (`enabled`), or stops and forgets the record.
void MainRunnerRecordPosts(bool enabled);
// The events sent since recording started, in the order the runner received them.
std::vector<MainRunnerPost> MainRunnerPosts();
} // namespace Host
} // namespace OHOS

#endif // HOST_INCLUDE_OHOS_HOST_HOST_CONTROL_H
