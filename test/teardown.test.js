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

// The process and its worker threads end while the module is busy: listeners held, events queued, registration
// threads asleep, service calls in flight. Each scenario runs in a child process (which inherits any sanitizer
// preload of this one) and must end cleanly, with no report on its standard error.
const test = require('node:test');
const assert = require('node:assert/strict');
const path = require('node:path');
const { spawnSync } = require('node:child_process');

const HOST = JSON.stringify(path.join(__dirname, '..', 'host'));
const SANITIZER_REPORT = /AddressSanitizer|LeakSanitizer|ThreadSanitizer|runtime error:|Segmentation fault|Assertion/;

const BUSY_MODULE = `
  const host = require(${HOST});
  const rovanta = host.requireNapi('carService.rovanta');
  const listener = { onBindResult() {}, onDataReceive() {}, onDeviceStateChange() {}, onDeviceChange() {} };
  const adapter = rovanta.getCarConnectAdapter();
  adapter.registerConnectListener('held', listener);
  async function makeBusy() {
    await host.waitUntil(() => host.carService.isRegistered(), 'the listener registration');
    host.carService.failRegistrations(1000);
    adapter.registerConnectListener('sleeping', listener);
    host.carService.setDelay('CastOperation', 400);
    adapter.castOperation(1).then(() => {});
    adapter.castOperation(2, () => {});
    for (let i = 0; i < 100; i++) host.carService.emit('OnDeviceChange', i);
    host.carService.emitMany({ callback: 'OnDeviceChange', args: [1], count: 100000, threads: 3 });
  }
`;

// Leak checking needs a full teardown of the engine. process.exit(), an uncaught error and a terminated worker
// skip it: node then leaves its own heap, and the handle of any promise it can no longer settle, allocated.
// Those children keep every other sanitizer check; the leak check runs on the scenarios that end normally.
function runChild(script, { leakCheck = true } = {}) {
  const env = { ...process.env };
  if (!leakCheck && env.ASAN_OPTIONS !== undefined) env.ASAN_OPTIONS += ':detect_leaks=0';
  return spawnSync(process.execPath, ['-e', script], { encoding: 'utf8', timeout: 60000, env });
}

function assertCleanExit(child, expectedStatus = 0) {
  assert.equal(child.signal, null, `signal ${child.signal}: ${child.stderr}`);
  assert.equal(child.status, expectedStatus, child.stderr);
  assert.doesNotMatch(child.stderr, SANITIZER_REPORT);
}

test.describe('process teardown', () => {
  test('process.exit while everything is in flight', () => {
    const child = runChild(`${BUSY_MODULE}
      makeBusy().then(() => setTimeout(() => process.exit(0), 20));
    `, { leakCheck: false });
    assertCleanExit(child);
  });

  test('a normal end of the event loop while registration threads sleep and events are queued', () => {
    const child = runChild(`${BUSY_MODULE}
      makeBusy().then(() => console.log('busy'));
    `);
    assertCleanExit(child);
    assert.match(child.stdout, /busy/);
  });

  test('a listener that ends the process from inside its call', () => {
    const child = runChild(`
      const host = require(${HOST});
      const adapter = host.requireNapi('carService.rovanta').getCarConnectAdapter();
      adapter.registerConnectListener('s', {
        onBindResult() {}, onDataReceive() {}, onDeviceStateChange() {},
        onDeviceChange() { process.exit(3); },
      });
      (async () => {
        await host.waitUntil(() => host.carService.isRegistered(), 'the listener registration');
        host.carService.emitMany({ callback: 'OnDeviceChange', args: [1], count: 1000, threads: 2 });
      })();
    `, { leakCheck: false });
    assertCleanExit(child, 3);
  });

  test('an uncaught error thrown while events and work are in flight', () => {
    const child = runChild(`${BUSY_MODULE}
      makeBusy().then(() => setTimeout(() => { throw new Error('script failure'); }, 20));
    `, { leakCheck: false });
    assert.equal(child.signal, null, child.stderr);
    assert.equal(child.status, 1);
    assert.match(child.stderr, /script failure/);
    assert.doesNotMatch(child.stderr, SANITIZER_REPORT);
  });
});

test.describe('registration threads at the end of the process', () => {
  // Registrations retry against an absent service while the process ends: the threads still running must not
  // touch what the process frees on its way out.
  const RETRYING_REGISTRATIONS = `
    const host = require(${HOST});
    const adapter = host.requireNapi('carService.rovanta').getCarConnectAdapter();
    host.carService.failRegistrations(1000000);
    for (let i = 0; i < 1000; i++) adapter.registerConnectListener('s' + i, { onBindResult() {}, onDataReceive() {}, onDeviceStateChange() {} });
  `;

  test('process.exit while a thousand registrations retry', () => {
    for (let run = 0; run < 3; run++) {
      assertCleanExit(runChild(`${RETRYING_REGISTRATIONS} process.exit(0);`, { leakCheck: false }));
    }
  });

  test('the end of the script while a thousand registrations retry', () => {
    for (let run = 0; run < 3; run++) {
      assertCleanExit(runChild(RETRYING_REGISTRATIONS));
    }
  });

  test('a flood of registrations keeps the number of threads bounded', { skip: process.platform !== 'linux' && 'counts /proc/self/task' }, () => {
    const child = runChild(`
      const fs = require('node:fs');
      const threads = () => fs.readdirSync('/proc/self/task').length;
      const host = require(${HOST});
      const adapter = host.requireNapi('carService.rovanta').getCarConnectAdapter();
      host.carService.failRegistrations(1000000);
      adapter.castOperation(1);
      const before = threads();
      for (let i = 0; i < 5000; i++) adapter.registerConnectListener('s', {});
      console.log(JSON.stringify({ before, after: threads() }));
      process.exit(0);
    `, { leakCheck: false });
    assertCleanExit(child);
    const { before, after } = JSON.parse(child.stdout);
    // At most 8 registration threads, and whatever the engine starts meanwhile; unbounded, it is thousands.
    assert.ok(after - before <= 16, `${after - before} threads started for 5000 registrations`);
  });
});

test.describe('worker threads', () => {
  const WORKER_SCRIPT = `
    const { parentPort } = require('node:worker_threads');
    const host = require(${HOST});
    const rovanta = host.requireNapi('carService.rovanta');
    const adapter = rovanta.getCarConnectAdapter();
    const events = [];
    adapter.registerConnectListener('worker', {
      onBindResult() {}, onDataReceive() {}, onDeviceStateChange() {},
      onDeviceChange(state) { events.push(state); },
    });
    (async () => {
      const code = await adapter.castOperation(4);
      await host.waitUntil(() => host.carService.isRegistered(), 'the listener registration');
      host.carService.emit('OnDeviceChange', 9);
      await new Promise((r) => setTimeout(r, 50));
      if (process.env.WORKER_LEAVES_WORK) {
        host.carService.setDelay('StopBindTarget', 300);
        adapter.unbindTarget(1);
      }
      parentPort.postMessage({ code, events, modes: rovanta.DiscoveryMode });
    })();
  `;

  function runWorkerScenario(leavesWork) {
    const child = runChild(`
      if (${leavesWork}) process.env.WORKER_LEAVES_WORK = '1';
      const { Worker } = require('node:worker_threads');
      const host = require(${HOST});
      const rovanta = host.requireNapi('carService.rovanta');
      (async () => {
        const worker = new Worker(${JSON.stringify(WORKER_SCRIPT)}, { eval: true });
        const report = await new Promise((resolve, reject) => { worker.once('message', resolve); worker.once('error', reject); });
        await worker.terminate();
        const adapter = rovanta.getCarConnectAdapter();
        const seen = [];
        adapter.registerConnectListener('main', {
          onBindResult() {}, onDataReceive() {}, onDeviceStateChange() {},
          onDeviceChange(state) { seen.push(state); },
        });
        await host.waitUntil(() => host.carService.isRegistered(), 'the listener registration');
        host.carService.emit('OnDeviceChange', 5);
        await host.mainRunner.whenIdle();
        console.log(JSON.stringify({ report, seen, main: await adapter.castOperation(1) }));
      })().catch((error) => { console.error(error); process.exit(2); });
    `, { leakCheck: !leavesWork });
    assertCleanExit(child);
    const result = JSON.parse(child.stdout.trim().split('\n').pop());
    assert.equal(result.report.code, 0);
    assert.deepEqual(result.report.modes, { NO_PERCEPTION_DISCOVERY: 1, BLUETOOTH_DISCOVERY: 2, USB_DISCOVERY: 3, QR_DISCOVERY: 4 });
    assert.deepEqual(result.report.events, [], 'events are delivered on the main thread only');
    assert.deepEqual(result.seen, [5]);
    assert.equal(result.main, 0);
  }

  test('a worker loads the module, runs operations and ends; its references go with it', () => runWorkerScenario(false));

  test('a worker ends with a service call in flight; the main thread carries on', () => runWorkerScenario(true));

  // The worker's environment refuses every property read once it is going away; the call must end quietly there
  // instead of taking the fatal path that a refused read in a live environment takes.
  test('a worker terminated while it converts maps ends alone', () => {
    const child = runChild(`
      const { Worker } = require('node:worker_threads');
      const host = require(${HOST});
      const rovanta = host.requireNapi('carService.rovanta');
      const LOOP = \`
        const { parentPort } = require('node:worker_threads');
        const adapter = require(${HOST}).requireNapi('carService.rovanta').getCarConnectAdapter();
        const map = {};
        for (let i = 0; i < 1000; i++) map['key' + i] = 'value' + i;
        parentPort.postMessage('looping');
        for (;;) { adapter.startSurfaceTransfer(map); adapter.bindTarget(1, map); }
      \`;
      (async () => {
        for (let run = 0; run < 16; run++) {
          const worker = new Worker(LOOP, { eval: true });
          await new Promise((resolve) => worker.once('message', resolve));
          await worker.terminate();
        }
        console.log(await rovanta.getCarConnectAdapter().castOperation(1));
      })();
    `, { leakCheck: false });
    assertCleanExit(child);
    assert.equal(child.stdout.trim(), '0');
  });

  // Deno still runs script in a worker that ended itself from a getter (docs/engines/deno-worker-exit-leaves-script-running.js).
  const DENO_RUNS_SCRIPT_AFTER_WORKER_EXIT = process.versions.deno !== undefined && 'Deno: the ending worker looks live';
  test('a worker whose getter ends the worker with process.exit ends alone', { skip: DENO_RUNS_SCRIPT_AFTER_WORKER_EXIT }, () => {
    const child = runChild(`
      const { Worker } = require('node:worker_threads');
      const host = require(${HOST});
      const rovanta = host.requireNapi('carService.rovanta');
      const EXITING = \`
        const adapter = require(${HOST}).requireNapi('carService.rovanta').getCarConnectAdapter();
        adapter.startSurfaceTransfer({ a: 'b', get c() { process.exit(0); } }, () => {});
        require('node:worker_threads').parentPort.postMessage('survived');
      \`;
      const worker = new Worker(EXITING, { eval: true });
      const messages = [];
      worker.on('message', (message) => messages.push(message));
      worker.once('exit', async (code) => {
        console.log(JSON.stringify({ code, messages, calls: host.carService.calls().length, main: await rovanta.getCarConnectAdapter().castOperation(1) }));
      });
    `, { leakCheck: false });
    assertCleanExit(child);
    assert.deepEqual(JSON.parse(child.stdout), { code: 0, messages: [], calls: 0, main: 0 });
  });

  // A manager replaced from another script thread is destroyed on its own thread soon after, and drops the events
  // queued before the replacement, as one replaced on its own thread does.
  test("an adapter made on a worker retires the main thread's manager: its queued events are dropped", () => {
    const child = runChild(`
      const { Worker } = require('node:worker_threads');
      const host = require(${HOST});
      const adapter = host.requireNapi('carService.rovanta').getCarConnectAdapter();
      let delivered = 0;
      adapter.registerConnectListener('main', { onBindResult() {}, onDataReceive() {}, onDeviceStateChange() {}, onDeviceChange() { delivered++; } });
      (async () => {
        await host.waitUntil(() => host.carService.isRegistered(), 'the listener registration');
        const replaced = new Int32Array(new SharedArrayBuffer(4));
        for (let i = 0; i < 1000; i++) host.carService.emit('OnDeviceChange', i);
        const worker = new Worker(\`
          const { workerData } = require('node:worker_threads');
          require(${HOST}).requireNapi('carService.rovanta').getCarConnectAdapter();
          Atomics.store(workerData, 0, 1);
          Atomics.notify(workerData, 0);
        \`, { eval: true, workerData: replaced });
        Atomics.wait(replaced, 0, 0, 30000);
        await host.mainRunner.whenIdle();
        await worker.terminate();
        console.log(JSON.stringify({ replaced: replaced[0], delivered }));
      })();
    `, { leakCheck: false });
    assertCleanExit(child);
    assert.deepEqual(JSON.parse(child.stdout), { replaced: 1, delivered: 0 });
  });
});
