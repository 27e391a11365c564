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

// The process's memory stays flat over 100,000 service calls, 100,000 delivered events and 1,000 turns of the
// main thread and a worker replacing each other's adapters (bench/leak.js). Measured here: about 0.6 MB of growth
// for the calls and 1-2 MB for the events, against some 8 MB that one leaked script reference per call or event
// would add; for the turns 0-1 MB on Node.js 20 (newer lines' collectors size their heap differently and move it by
// up to some 17 MB from run to run), against 200 MB when each replaced manager outlives its turn. Sanitizer
// runtimes keep freed memory in quarantine, so there the leak check is LeakSanitizer's, at the exit of every suite.
const test = require('node:test');
const assert = require('node:assert/strict');
const path = require('node:path');
const { spawnSync } = require('node:child_process');

const BOUND_BYTES = 4 * 1024 * 1024;
const TURNS_BOUND_BYTES = 48 * 1024 * 1024;
const underSanitizer = /lib(a|t)san/.test(process.env.LD_PRELOAD || '');

test('memory stays flat over calls, delivered events and adapters replaced across threads', { skip: underSanitizer && 'sanitizer quarantine' }, () => {
  // One malloc arena: with one per thread, how much of the freed memory the allocator keeps depends on which
  // threads the scheduler happened to run, which moved the events' figure by megabytes on a loaded machine.
  const child = spawnSync(process.execPath, ['--expose-gc', path.join(__dirname, '..', 'bench', 'leak.js')], {
    encoding: 'utf8',
    timeout: 120000,
    env: { ...process.env, MALLOC_ARENA_MAX: '1' },
  });
  assert.equal(child.status, 0, child.stderr);
  const phases = child.stdout.trim().split('\n').map((line) => JSON.parse(line));
  assert.deepEqual(phases.map((p) => p.phase), ['service calls', 'delivered events', 'alternating threads']);
  for (const phase of phases) {
    const bound = phase.phase === 'alternating threads' ? TURNS_BOUND_BYTES : BOUND_BYTES;
    assert.ok(phase.growth < bound, `${phase.phase}: RSS grew by ${phase.growth} bytes`);
  }
  assert.equal(phases[1].delivered, 2 * phases[1].count, 'every event of both rounds was delivered');
});
