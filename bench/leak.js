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

// Memory of the process across 100,000 service calls, 100,000 delivered events and 1,000 turns of the main
// thread and a worker taking turns at making adapters, each measured after a warm-up round of the same size (so
// that the allocator's high-water mark is reached first): run with --expose-gc. Prints one JSON line per phase
// (RSS in bytes before and after, growth).
const { Worker } = require('node:worker_threads');
const path = require('node:path');
const host = require('../host');
const { settledRss } = require('./rss');

const rovanta = host.requireNapi('carService.rovanta');
const COUNT = Number(process.env.ROVANTA_LEAK_COUNT || 100000);
const IN_FLIGHT = 64;
const EVENT_CHUNK = 2000;
const TURNS = Number(process.env.ROVANTA_LEAK_TURNS || 1000);
// What each main-thread listener holds, so that a manager kept beyond its replacement shows in the figure.
const LISTENER_PAYLOAD_BYTES = 200 * 1024;

async function calls(adapter, total) {
  const operations = [
    () => adapter.castOperation(1),
    () => adapter.bindTarget(1, { NETWORK_ID: 'net', DEVICE_NAME: 'car' }),
    () => adapter.sendControlData(2, 'payload'),
    () => adapter.getDeviceInfo(0),
    () => new Promise((resolve) => adapter.unbindTarget(1, resolve)),
  ];
  for (let done = 0; done < total; done += IN_FLIGHT) {
    const batch = [];
    for (let index = 0; index < IN_FLIGHT && done + index < total; index++) {
      batch.push(operations[(done + index) % operations.length]());
    }
    await Promise.all(batch);
    host.carService.clearCalls();
  }
}

// In chunks, so that the queue of the main runner (whose peak the allocator keeps) stays the same size.
async function events(total) {
  for (let done = 0; done < total; done += EVENT_CHUNK) {
    const count = Math.min(EVENT_CHUNK, total - done);
    await host.carService.emitMany({ callback: 'OnDataReceive', args: [0, 'payload'], count, threads: 4 });
    await host.mainRunner.whenIdle();
  }
}

// The worker makes an adapter whenever asked, replacing the main thread's manager from its own thread.
function adapterWorker() {
  const source = `
    const { parentPort } = require('node:worker_threads');
    const rovanta = require(${JSON.stringify(path.join(__dirname, '..', 'host'))}).requireNapi('carService.rovanta');
    parentPort.on('message', (request) => {
      if (request === 'collect') for (let round = 0; round < 3 && typeof global.gc === 'function'; round++) global.gc();
      else rovanta.getCarConnectAdapter();
      parentPort.postMessage(request);
    });
  `;
  const worker = new Worker(source, { eval: true });
  let answer = null;
  worker.on('message', () => answer.resolve());
  worker.on('error', (error) => answer.reject(error));
  const ask = (request) =>
    new Promise((resolve, reject) => {
      answer = { resolve, reject };
      worker.postMessage(request);
    });
  return { replace: () => ask('replace'), collect: () => ask('collect'), end: () => worker.terminate() };
}

async function alternatingTurns(worker, total) {
  for (let turn = 0; turn < total; turn++) {
    const payload = new Array(LISTENER_PAYLOAD_BYTES / 8).fill(turn + 0.5);
    rovanta.getCarConnectAdapter().registerConnectListener('turn', { onBindResult() {}, onDataReceive() {}, onDeviceStateChange() {}, payload });
    await worker.replace();
  }
  // The replaced managers are destroyed on the main thread once it gets to them; the worker's garbage is its own.
  await new Promise((resolve) => setImmediate(resolve));
  await worker.collect();
}

async function measure(name, work, count = COUNT) {
  await work(count);
  const before = settledRss();
  await work(count);
  const after = settledRss();
  return { phase: name, count, rssBefore: before, rssAfter: after, growth: after - before };
}

async function main() {
  host.hilog.setCapacity(0);
  const adapter = rovanta.getCarConnectAdapter();
  let delivered = 0;
  adapter.registerConnectListener('leak', {
    onBindResult() {},
    onDataReceive() {
      delivered++;
    },
    onDeviceStateChange() {},
  });
  await host.waitUntil(() => host.carService.isRegistered(), 'the listener registration', 30000);

  const results = [await measure('service calls', (n) => calls(adapter, n)), await measure('delivered events', events)];
  results[1].delivered = delivered;
  const worker = adapterWorker();
  results.push(await measure('alternating threads', (n) => alternatingTurns(worker, n), TURNS));
  await worker.end();
  for (const result of results) console.log(JSON.stringify(result));
}

main().catch((error) => {
  console.error(error);
  process.exit(1);
});
