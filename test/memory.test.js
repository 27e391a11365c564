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

// Memory under a big event delivered to many sessions, run in a child process with a small script heap.
const test = require('node:test');
const assert = require('node:assert/strict');
const { PRELUDE, runChild, assertCleanExit } = require('./support/child');

test('one big event to many sessions keeps a few copies of its text alive, not one per session', () => {
  // 48 sessions x 4 MB is 192 MB of argument strings against a 64 MB heap: it fits only when each call's
  // arguments can go before the next session is called.
  const SESSIONS = 48;
  const TEXT_BYTES = 4 * 1024 * 1024;
  const child = runChild(`${PRELUDE}
    const adapter = rovanta.getCarConnectAdapter();
    let received = 0;
    for (let index = 0; index < ${SESSIONS}; index++) {
      adapter.registerConnectListener('s' + index, listener({ onDataReceive(type, data) { received += data.length; } }));
    }
    registered().then(async () => {
      host.hilog.setCapacity(0);
      host.carService.emit('OnDataReceive', 0, 'x'.repeat(${TEXT_BYTES}));
      await host.mainRunner.whenIdle();
      console.log(received);
    });
  `, { args: ['--max-old-space-size=64'] });
  assertCleanExit(child);
  assert.equal(Number(child.stdout), SESSIONS * TEXT_BYTES);
});
