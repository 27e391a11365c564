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

// Memory of a flood of events: what one pending event costs while the main thread is busy, and what the process
// keeps once a flood's backlog has drained. Run with --expose-gc. Prints one JSON line per phase (bytes):
//   pending events: `count` events queued from 16 service threads while the main thread waits, RSS before, with
//     them all queued and after they were delivered (and a full collection), the footprint per pending event, the
//     time the main thread took to deliver them, and how far the RSS after the drain is from the start;
//   drained flood: service threads emit for `seconds` while the main thread delivers; the RSS at the start, at
//     the peak of the backlog and after it drained (and a full collection), and how far that is from the start.
// Options (environment): ROVANTA_FLOOD_PENDING (default 500000), ROVANTA_FLOOD_SECONDS (10),
// ROVANTA_FLOOD_THREADS (16).
const host = require('../host');
const { settledRss } = require('./rss');

const rovanta = host.requireNapi('carService.rovanta');
const PENDING = Number(process.env.ROVANTA_FLOOD_PENDING || 500000);
const SECONDS = Number(process.env.ROVANTA_FLOOD_SECONDS || 10);
const THREADS = Number(process.env.ROVANTA_FLOOD_THREADS || 16);
// Events per emitMany call of the timed flood: the flood ends within one such round of its time.
const ROUND = 20000 * THREADS;
const EVENT = { callback: 'OnDataReceive', args: [0, 'payload'], threads: THREADS };

// The main thread spins until every event is queued, so none is delivered meanwhile.
async function pendingEvents() {
  const before = settledRss();
  const emitted = host.carService.emitMany({ ...EVENT, count: PENDING });
  while (host.mainRunner.pending() < PENDING);
  const queued = process.memoryUsage().rss;
  const drainStart = process.hrtime.bigint();
  await emitted;
  await host.mainRunner.whenIdle();
  const drainMs = Number(process.hrtime.bigint() - drainStart) / 1e6;
  const drained = settledRss();
  return {
    phase: 'pending events',
    count: PENDING,
    rssBefore: before,
    rssQueued: queued,
    perEvent: Math.round((queued - before) / PENDING),
    drainMs: Math.round(drainMs),
    rssDrained: drained,
    aboveStart: drained - before,
  };
}

async function drainedFlood() {
  const start = settledRss();
  let peakRss = start;
  let peakPending = 0;
  let emitted = 0;
  const sampler = setInterval(() => {
    peakRss = Math.max(peakRss, process.memoryUsage().rss);
    peakPending = Math.max(peakPending, host.mainRunner.pending());
  }, 50);
  const end = Date.now() + SECONDS * 1000;
  while (Date.now() < end) {
    await host.carService.emitMany({ ...EVENT, count: ROUND });
    emitted += ROUND;
  }
  const pendingAtStop = host.mainRunner.pending();
  await host.mainRunner.whenIdle();
  clearInterval(sampler);
  const drained = settledRss();
  return { phase: 'drained flood', seconds: SECONDS, threads: THREADS, emitted, pendingAtStop, peakPending, rssStart: start, rssPeak: peakRss, rssDrained: drained, aboveStart: drained - start };
}

async function main() {
  host.hilog.setCapacity(0);
  let delivered = 0;
  rovanta.getCarConnectAdapter().registerConnectListener('flood', {
    onBindResult() {},
    onDataReceive() {
      delivered++;
    },
    onDeviceStateChange() {},
  });
  await host.waitUntil(() => host.carService.isRegistered(), 'the listener registration', 30000);
  const pending = await pendingEvents();
  pending.delivered = delivered;
  const results = [pending, await drainedFlood()];
  for (const result of results) console.log(JSON.stringify(result));
}

main().catch((error) => {
  console.error(error);
  process.exit(1);
});
