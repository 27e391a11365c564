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

'use strict';

// Script surface of the host platform: loads native modules the way the platform loader does and controls the
// stand-ins of the platform services (caller identity, HiLog, the simulated car service, the main event runner
// and the IPC broker registry).

const fs = require('fs');
const path = require('path');
const { isMainThread } = require('worker_threads');

const moduleRoot = path.resolve(process.env.OHOS_HOST_ROOT || path.join(__dirname, '..', 'build', 'root'));
const libDir = path.join(moduleRoot, 'lib');
const WAIT_POLL_MS = 5;

// Some engines hand a library that registers itself with napi_module_register the module record in place of
// record.exports and then store the record as its own exports; the record's `exports` key is not the module's.
function dlopen(file) {
  if (!fs.existsSync(file)) {
    throw new Error(
      process.env.OHOS_HOST_ROOT
        ? `${file} does not exist: OHOS_HOST_ROOT=${process.env.OHOS_HOST_ROOT} names no built module root (unset it to use the build of "npm run build")`
        : `${file} does not exist: run "npm run build" in ${path.resolve(__dirname, '..')} to build it`,
    );
  }
  const record = { exports: {} };
  process.dlopen(record, file);
  const { exports } = record;
  if (exports === record) {
    delete record.exports;
  }
  return exports;
}

const native = dlopen(path.join(libDir, 'host_platform.node'));
// The main event runner runs its tasks on the main thread only; worker threads never attach it. A wake-up runs
// one bounded batch of due tasks; a backlog is worked through a batch per turn of the event loop, so that
// timers, I/O and other script work keep running during event floods.
function drainMainRunnerNextTurn() {
  setImmediate(() => {
    if (native.mainRunnerDrain()) drainMainRunnerNextTurn();
  });
}
if (isMainThread) {
  native.attachMainRunner(drainMainRunnerNextTurn);
}

const loadedModules = new Map();

// "carService.rovanta" -> <moduleRoot>/lib/module/carservice/librovanta.z.so
function modulePath(name) {
  if (typeof name !== 'string' || name === '') {
    throw new TypeError('module name must be a non-empty string');
  }
  const segments = name.toLowerCase().split('.');
  const base = segments.pop();
  return path.join(libDir, 'module', ...segments, `lib${base}.z.so`);
}

// The library registers itself with napi_module_register when it is loaded; its exports are cached by path.
function requireNapi(name) {
  const file = modulePath(name);
  if (!loadedModules.has(file)) {
    if (!fs.existsSync(file)) {
      throw new Error(`no native module ${name}: ${file} does not exist (npm run build builds carService.rovanta)`);
    }
    loadedModules.set(file, dlopen(file));
  }
  return loadedModules.get(file);
}

// The one bounded wait of the suites, the demo and the benchmarks: resolves once condition() holds, checking
// every few milliseconds; rejects naming `what` after timeoutMs, or with whatever condition() throws.
function waitUntil(condition, what, timeoutMs = 2000) {
  return new Promise((resolve, reject) => {
    const deadline = Date.now() + timeoutMs;
    const poll = () => {
      try {
        if (condition()) resolve();
        else if (Date.now() >= deadline) reject(new Error(`timed out after ${timeoutMs} ms waiting for ${what}`));
        else setTimeout(poll, WAIT_POLL_MS);
      } catch (error) {
        reject(error);
      }
    };
    poll();
  });
}

// Resolves or rejects as `promise` does, or rejects naming `what` after timeoutMs.
function within(promise, what, timeoutMs = 2000) {
  let timer;
  const timeout = new Promise((_, reject) => {
    timer = setTimeout(() => reject(new Error(`timed out after ${timeoutMs} ms waiting for ${what}`)), timeoutMs);
  });
  return Promise.race([promise, timeout]).finally(() => clearTimeout(timer));
}

function waitForCalls(member, n, timeoutMs = 2000) {
  return waitUntil(() => native.carCallCount(member) >= n, `${n} call(s) of ${member}`, timeoutMs).then(() =>
    native.carCalls().filter((call) => call.member === member),
  );
}

module.exports = {
  moduleRoot,
  requireNapi,
  waitUntil,
  within,

  identity: {
    // { systemApp, tokenId }
    get: () => native.identityGet(),
    // Both fields optional; tokenId a whole number below 2^32.
    set: (identity) => native.identitySet(identity),
    // System application, token id 0x10001, "ohos.permission.ALLOW_CONNECT_CAR" only; VerifyAccessToken count 0.
    reset: () => native.identityReset(),
  },

  permissions: {
    grant: (name) => native.permissionGrant(name),
    revoke: (name) => native.permissionRevoke(name),
    list: () => native.permissionList(),
    // Calls of AccessTokenKit::VerifyAccessToken since start or the last identity.reset().
    verifyCount: () => native.verifyAccessTokenCalls(),
  },

  hilog: {
    // [{ type, level, domain, tag, format, args, text }]
    lines: () => native.hilogLines(),
    clear: () => native.hilogClear(),
    setCapacity: (n) => native.hilogSetCapacity(n),
    capacity: () => native.hilogCapacity(),
    dropped: () => native.hilogDropped(),
  },

  carService: {
    reset: () => native.carReset(),
    setResult: (member, code) => native.carSetResult(member, code),
    failRegistrations: (n) => native.carFailRegistrations(n),
    setDeviceInfo: (text) => native.carSetDeviceInfo(text),
    setDelay: (member, ms) => native.carSetDelay(member, ms),
    // From now on the car answers each call of member by itself: { result, emit: [{ callback, args, delayMs }],
    // times }; null removes the reaction. Checked whole before it is installed; an error names the field.
    onCall: (member, reaction) => native.carOnCall(member, reaction),
    // { reactions: { member: reaction }, timeline: [{ atMs, callback, args }] }, checked whole before anything
    // runs. Resolves with { emitted, skipped, stopped } once every step has been emitted (skipped: no record was
    // registered) or reset() stopped the timeline. options.start: "now" (default), or "registration": the
    // timeline starts when a callback record is registered (at once if one is registered now).
    play: (scenario, options) => native.carPlay(scenario, options),
    // Installs the reactions and a timeline that starts at the first registration, like play(scenario,
    // { start: 'registration' }), but returns nothing and leaves no work pending: the platform import uses it.
    load: (scenario) => native.carPlay(scenario, { start: 'registration' }, false),
    // Starts every timeline still waiting for a registration now.
    startTimelines: () => native.carStartTimelines(),
    // Whether calls are recorded (default true; reset() turns it back on).
    setRecording: (enabled) => native.carSetRecording(enabled),
    // [{ member, args }]
    calls: () => native.carCalls(),
    clearCalls: () => native.carClearCalls(),
    callCount: (member) => native.carCallCount(member),
    // Resolves with the calls of member so far.
    waitForCalls,
    isRegistered: () => native.carIsRegistered(),
    // callback: C++ name ("OnBindResult" ...) or slot 0..6. Integer parameters take JS numbers converted like
    // ToInt32 (4294967297 -> 1); string parameters take strings only.
    emit: (callback, ...args) => native.carEmit(callback, args),
    // sequenceArg (optional): index of an int argument that each call replaces with its number, 0 to count - 1.
    emitMany: ({ callback, args = [], count = 1, threads = 1, sequenceArg }) =>
      native.carEmitMany(callback, args, count, threads, sequenceArg),
  },

  mainRunner: {
    // Resolves once every task posted before the call has run (or been dropped because its handler is gone).
    // Rejects outside the main thread, where the runner is not attached.
    whenIdle: () => native.mainRunnerWhenIdle(),
    // How many tasks wait to run now.
    pending: () => native.mainRunnerPending(),
    // recordPosts(true) records every task posted from then on; recordPosts(false) stops and forgets the record.
    recordPosts: (enabled) => native.mainRunnerRecordPosts(enabled),
    // [{ priority, thread }] of the tasks posted since recording started, in the order the runner received them:
    // the priority value (0 VIP, 1 IMMEDIATE, 2 HIGH, 3 LOW, 4 IDLE) and the id of the posting thread.
    posts: () => native.mainRunnerPosts(),
  },

  broker: {
    descriptors: () => native.brokerDescriptors(),
  },

  // What the script engine itself does with Node-API, apart from any stand-in.
  engine: {
    // Resolves once an async work named `name`, which does nothing, has completed.
    runAsyncWork: (name) => native.runAsyncWork(name),
  },
};
