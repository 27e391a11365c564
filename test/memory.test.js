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

// Memory under a big event delivered to many sessions (in a child process with a small script heap) and under a
// flood of events (bench/flood.js). Sanitizer runtimes keep freed memory in quarantine, so the flood's figures are
// measured only without them.
const test = require('node:test');
const assert = require('node:assert/strict');
const path = require('node:path');
const { spawnSync } = require('node:child_process');
const { PRELUDE, runChild, assertCleanExit } = require('./support/child');

const underSanitizer = /lib(a|t)san/.test(process.env.LD_PRELOAD || '');

// Deno keeps the values made in a closed handle scope until the native call returns (README, Engines).
const onDeno = typeof globalThis.Deno !== 'undefined';

test('one big event to many sessions keeps a few copies of its text alive, not one per session', { skip: onDeno && 'Deno frees no handle scope before the call returns' }, () => {
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

test('a pending event costs a few hundred bytes, and a drained flood gives its memory back', { skip: underSanitizer && 'sanitizer quarantine' }, () => {
  // The allocator's defaults and 16 senders, so up to 16 arenas: each arena's top must shrink too.
  const child = spawnSync(process.execPath, ['--expose-gc', path.join(__dirname, '..', 'bench', 'flood.js')], {
    encoding: 'utf8',
    timeout: 120000,
    env: { ...process.env, ROVANTA_FLOOD_PENDING: '200000', ROVANTA_FLOOD_SECONDS: '2', ROVANTA_FLOOD_THREADS: '16' },
  });
  assert.equal(child.status, 0, child.stderr);
  const [pending, flood] = child.stdout.trim().split('\n').map((line) => JSON.parse(line));
  assert.equal(pending.delivered, pending.count, 'every pending event was delivered');
  // About 270 bytes on the host; a record kept as a tree of nodes cost 650.
  assert.ok(pending.perEvent < 450, `${pending.perEvent} bytes per pending event`);
  // A few MB stay once the backlog has drained; without giving memory back the whole backlog's did (some 55 MB).
  assert.ok(pending.aboveStart < 24 * 1024 * 1024, `${pending.aboveStart} bytes above the start after the drain`);
  // 4-5 MB stay; 170-230 MB did while the senders' arenas kept their freed backlog as their tops.
  assert.ok(flood.emitted > 0 && flood.aboveStart < 48 * 1024 * 1024, `flood: ${flood.aboveStart} bytes above the start after the drain`);
});

test('a replaced adapter object is collected: its manager lets go of it', () => {
  const child = runChild(`${PRELUDE}
    let collected = 0;
    const registry = new FinalizationRegistry(() => collected++);
    (function makeReplaced() {
      const replaced = rovanta.getCarConnectAdapter();
      replaced.registerConnectListener('old', listener());
      registry.register(replaced, 'replaced');
    })();
    const current = rovanta.getCarConnectAdapter();
    (async () => {
      // Each round is a full collection and a turn for the finalization callbacks; one round is enough.
      for (let round = 0; round < 20 && collected === 0; round++) {
        global.gc();
        await new Promise((resolve) => setImmediate(resolve));
      }
      console.log(collected, typeof current);
    })();
  `, { args: ['--expose-gc'] });
  assertCleanExit(child);
  assert.equal(child.stdout.trim(), '1 object');
});
