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

// Service threads flood events while the script thread replaces adapter objects, registers and unregisters
// sessions and calls operations. Every event carries its own number, so each listener can tell a duplicate,
// and a listener that stays subscribed on the current manager for a whole burst must see all of it.
const test = require('node:test');
const assert = require('node:assert/strict');
const fs = require('node:fs');
const { host, rovanta, resetHost, validListener, until } = require('./support/rovanta');

const SECONDS = Number(process.env.ROVANTA_STRESS_SECONDS || 3);
const BURST = Number(process.env.ROVANTA_STRESS_BURST || 5000);
const THREADS = 4;

function countingListener() {
  const listener = validListener({
    seen: new Set(),
    duplicates: 0,
    onDataReceive(sequence) {
      if (listener.seen.has(sequence)) listener.duplicates++;
      listener.seen.add(sequence);
    },
  });
  return listener;
}

function burst() {
  return host.carService.emitMany({ callback: 'OnDataReceive', args: [0, 'stress'], count: BURST, threads: THREADS, sequenceArg: 0 });
}

async function registered(adapter, session, listener) {
  adapter.registerConnectListener(session, listener);
  await until(() => host.carService.isRegistered(), 'the callback record');
}

// Runs `step` on the script thread, yielding between steps, until `done` settles.
async function whileRunning(done, step) {
  let finished = false;
  done.then(() => {
    finished = true;
  });
  for (let index = 0; !finished; index++) {
    await step(index);
    await new Promise((resolve) => setImmediate(resolve));
  }
  await done;
}

const totals = { emitted: 0, delivered: 0, dropped: 0, duplicated: 0, adaptersReplaced: 0, operations: 0 };

function account(listeners) {
  const deliveredSequences = new Set();
  for (const listener of listeners) {
    totals.duplicated += listener.duplicates;
    for (const sequence of listener.seen) deliveredSequences.add(sequence);
  }
  totals.emitted += BURST;
  totals.delivered += deliveredSequences.size;
  totals.dropped += BURST - deliveredSequences.size;
}

async function stablePhase(phase) {
  const adapter = rovanta.getCarConnectAdapter();
  totals.adaptersReplaced++;
  const steady = countingListener();
  const extras = [];
  await registered(adapter, 'steady', steady);
  await whileRunning(burst(), async (index) => {
    if (index % 4 === 0) {
      const extra = countingListener();
      extras.push(extra);
      adapter.registerConnectListener(`extra-${phase}-${index}`, extra);
    }
    totals.operations++;
    await adapter.castOperation(index);
  });
  await host.mainRunner.whenIdle();
  account([steady, ...extras]);
  assert.equal(steady.duplicates, 0);
  assert.equal(steady.seen.size, BURST, `phase ${phase}: the steady listener lost ${BURST - steady.seen.size} events`);
  assert.ok(extras.every((extra) => extra.duplicates === 0));
}

async function churnPhase() {
  let adapter = rovanta.getCarConnectAdapter();
  totals.adaptersReplaced++;
  const listeners = [countingListener()];
  await registered(adapter, 'churn', listeners[0]);
  await whileRunning(burst(), async (index) => {
    if (index % 3 === 0) {
      adapter = rovanta.getCarConnectAdapter();
      totals.adaptersReplaced++;
    } else if (index % 7 === 0) {
      adapter.unregisterConnectListener();
    }
    const listener = countingListener();
    listeners.push(listener);
    adapter.registerConnectListener(`churn-${index % 5}`, listener);
    totals.operations++;
    adapter.getDeviceInfo(0, () => {});
  });
  await host.mainRunner.whenIdle();
  account(listeners);
  assert.ok(listeners.every((listener) => listener.duplicates === 0), 'no listener gets an event twice');
}

test('events flood in while adapters, sessions and operations churn: none duplicated, none lost when steady', async () => {
  resetHost();
  host.hilog.setCapacity(0);
  const started = Date.now();
  try {
    for (let phase = 0; Date.now() - started < SECONDS * 1000 || phase < 2; phase++) {
      if (phase % 2 === 0) await stablePhase(phase);
      else await churnPhase();
    }
  } finally {
    host.hilog.setCapacity(200000);
  }
  const report = { suite: 'stress', ...totals, seconds: (Date.now() - started) / 1000 };
  console.log(JSON.stringify(report));
  if (process.env.ROVANTA_REPORT_FILE) fs.appendFileSync(process.env.ROVANTA_REPORT_FILE, `${JSON.stringify(report)}\n`);
  assert.equal(totals.duplicated, 0);
});
