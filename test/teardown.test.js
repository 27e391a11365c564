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
const { HOST, PRELUDE, runChild, assertCleanExit } = require('./support/child');

const BUSY_MODULE = `${PRELUDE}
  const adapter = rovanta.getCarConnectAdapter();
  adapter.registerConnectListener('held', listener({ onDeviceChange() {} }));
  async function makeBusy() {
    await registered();
    host.carService.failRegistrations(1000);
    adapter.registerConnectListener('sleeping', listener({ onDeviceChange() {} }));
    host.carService.setDelay('CastOperation', 400);
    adapter.castOperation(1).then(() => {});
    adapter.castOperation(2, () => {});
    for (let i = 0; i < 100; i++) host.carService.emit('OnDeviceChange', i);
    host.carService.emitMany({ callback: 'OnDeviceChange', args: [1], count: 100000, threads: 3 });
  }
`;

test.describe('process teardown', () => {
  // How the script ends while the module is busy: what follows makeBusy(), the child's options and exit status,
  // and what its output must show.
  const endings = [
    ['process.exit while everything is in flight', 'setTimeout(() => process.exit(0), 20)', { leakCheck: false }, 0, ['stdout', /^$/]],
    ['a normal end of the event loop while registration threads sleep and events are queued', "console.log('busy')", {}, 0, ['stdout', /busy/]],
    ['an uncaught error thrown while events and work are in flight', "setTimeout(() => { throw new Error('script failure'); }, 20)", { leakCheck: false }, 1, ['stderr', /script failure/]],
  ];
  for (const [ending, next, options, status, [stream, shows]] of endings) {
    test(ending, () => {
      const child = runChild(`${BUSY_MODULE} makeBusy().then(() => ${next});`, options);
      assertCleanExit(child, status);
      assert.match(child[stream], shows);
    });
  }

  test('a listener that ends the process from inside its call', () => {
    const child = runChild(`${PRELUDE}
      const adapter = rovanta.getCarConnectAdapter();
      adapter.registerConnectListener('s', listener({ onDeviceChange() { process.exit(3); } }));
      registered().then(() => host.carService.emitMany({ callback: 'OnDeviceChange', args: [1], count: 1000, threads: 2 }));
    `, { leakCheck: false });
    assertCleanExit(child, 3);
  });
});

test.describe('registration threads at the end of the process', () => {
  // Registrations retry against an absent service while the process ends: the threads still running must not
  // touch what the process frees on its way out.
  for (const [ending, end, leakCheck] of [['process.exit', 'process.exit(0);', false], ['the end of the script', '', true]]) {
    test(`${ending} while a thousand registrations retry`, () => {
      for (let run = 0; run < 3; run++) {
        assertCleanExit(runChild(`${PRELUDE}
          const adapter = rovanta.getCarConnectAdapter();
          host.carService.failRegistrations(1000000);
          for (let i = 0; i < 1000; i++) adapter.registerConnectListener('s' + i, listener());
          ${end}`, { leakCheck }));
      }
    });
  }

  test('a flood of registrations keeps the number of threads bounded', { skip: process.platform !== 'linux' && 'counts /proc/self/task' }, () => {
    const child = runChild(`${PRELUDE}
      const threads = () => require('node:fs').readdirSync('/proc/self/task').length;
      const adapter = rovanta.getCarConnectAdapter();
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
  const WORKER_SCRIPT = `${PRELUDE}
    const { parentPort } = require('node:worker_threads');
    const adapter = rovanta.getCarConnectAdapter();
    const events = [];
    adapter.registerConnectListener('worker', listener({ onDeviceChange(state) { events.push(state); } }));
    (async () => {
      const code = await adapter.castOperation(4);
      await registered();
      host.carService.emit('OnDeviceChange', 9);
      await new Promise((r) => setTimeout(r, 50));
      if (process.env.WORKER_LEAVES_WORK === 'promise') {
        host.carService.setDelay('StopBindTarget', 300);
        adapter.unbindTarget(1);
      } else if (process.env.WORKER_LEAVES_WORK === 'callback') {
        host.carService.setDelay('StopBindTarget', 300);
        adapter.unbindTarget(1, () => {});
      }
      parentPort.postMessage({ code, events, modes: rovanta.DiscoveryMode });
    })();
  `;

  // leftForm: the form of the call the worker leaves in flight when it is terminated ('' for none). Leak checking
  // stays on: the deferred of a promise-form call is the one allocation the sanitizer runs are told to expect.
  function runWorkerScenario(leftForm) {
    const child = runChild(`${PRELUDE}
      process.env.WORKER_LEAVES_WORK = ${JSON.stringify(leftForm)};
      const { Worker } = require('node:worker_threads');
      (async () => {
        const worker = new Worker(${JSON.stringify(WORKER_SCRIPT)}, { eval: true });
        const report = await new Promise((resolve, reject) => { worker.once('message', resolve); worker.once('error', reject); });
        await worker.terminate();
        const adapter = rovanta.getCarConnectAdapter();
        const seen = [];
        adapter.registerConnectListener('main', listener({ onDeviceChange(state) { seen.push(state); } }));
        await registered();
        host.carService.emit('OnDeviceChange', 5);
        await host.mainRunner.whenIdle();
        console.log(JSON.stringify({ report, seen, main: await adapter.castOperation(1) }));
      })().catch((error) => { console.error(error); process.exit(2); });
    `);
    assertCleanExit(child);
    // Events are delivered on the main thread only: the worker's listener sees none.
    assert.deepEqual(JSON.parse(child.stdout.trim().split('\n').pop()), {
      report: { code: 0, events: [], modes: { NO_PERCEPTION_DISCOVERY: 1, BLUETOOTH_DISCOVERY: 2, USB_DISCOVERY: 3, QR_DISCOVERY: 4 } },
      seen: [5],
      main: 0,
    });
  }

  test('a worker loads the module, runs operations and ends; its references go with it', () => runWorkerScenario(''));

  test('a worker ends with a promise-form call in flight; the main thread carries on', () => runWorkerScenario('promise'));

  test('a worker ends with a callback-form call in flight and leaves nothing allocated', () => runWorkerScenario('callback'));

  // The worker's environment refuses every property read once it is going away; the call must end quietly there
  // instead of taking the fatal path that a refused read in a live environment takes.
  test('a worker terminated while it converts maps ends alone', () => {
    const child = runChild(`${PRELUDE}
      const { Worker } = require('node:worker_threads');
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
    const child = runChild(`${PRELUDE}
      const { Worker } = require('node:worker_threads');
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
    const child = runChild(`${PRELUDE}
      const { Worker } = require('node:worker_threads');
      let delivered = 0;
      const adapter = rovanta.getCarConnectAdapter();
      adapter.registerConnectListener('main', listener({ onDeviceChange() { delivered++; } }));
      (async () => {
        await registered();
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
