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
// Scripts that run in a child process: their common opening, and a check that the child ended without a crash.
const assert = require('node:assert/strict');
const path = require('node:path');
const { spawnSync } = require('node:child_process');

// The host package as a script literal, for scripts that run in a child process or in a worker.
const HOST = JSON.stringify(path.join(__dirname, '..', '..', 'host'));

// Opens a child or worker script: the host, the module, listener(extra) (the three required functions and extra),
// and registered(), which waits until the car service holds the callback record.
const PRELUDE = `
  const host = require(${HOST});
  const rovanta = host.requireNapi('carService.rovanta');
  const listener = (extra) => ({ onBindResult() {}, onDataReceive() {}, onDeviceStateChange() {}, ...extra });
  const registered = () => host.waitUntil(() => host.carService.isRegistered(), 'the listener registration');
`;

const SANITIZER_REPORT = /AddressSanitizer|LeakSanitizer|ThreadSanitizer|runtime error:|Segmentation fault|Assertion/;

// Runs `script` in a child process, which inherits any sanitizer preload of this one. Leak checking needs a full
// teardown of the engine. process.exit() and an uncaught error skip it: node then leaves its own heap allocated.
// Those children keep every other sanitizer check; the leak check runs on the scenarios that end normally.
// `args` are node's own options.
function runChild(script, { leakCheck = true, env = {}, timeout = 60000, args = [] } = {}) {
  const childEnv = { ...process.env, ...env };
  if (!leakCheck && childEnv.ASAN_OPTIONS !== undefined) childEnv.ASAN_OPTIONS += ':detect_leaks=0';
  return spawnSync(process.execPath, [...args, '-e', script], { encoding: 'utf8', timeout, env: childEnv });
}

function assertCleanExit(child, expectedStatus = 0) {
  assert.equal(child.signal, null, `signal ${child.signal}: ${child.stderr}`);
  assert.equal(child.status, expectedStatus, child.stderr);
  assert.doesNotMatch(child.stderr, SANITIZER_REPORT);
}

module.exports = { HOST, PRELUDE, runChild, assertCleanExit };
