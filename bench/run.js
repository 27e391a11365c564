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

// Throughput of the two paths of the bridge against the simulated car service, then the memory figures of
// bench/leak.js. Every figure is printed; nothing is asserted.
const path = require('node:path');
const { spawnSync } = require('node:child_process');
const host = require('../host');

const rovanta = host.requireNapi('carService.rovanta');
const CALLS = 50000;
const EVENTS = 200000;
const IN_FLIGHT = 64;

async function callsPerSecond(adapter) {
  const started = process.hrtime.bigint();
  for (let done = 0; done < CALLS; done += IN_FLIGHT) {
    await Promise.all(Array.from({ length: IN_FLIGHT }, (_, index) => adapter.castOperation(index)));
    host.carService.clearCalls();
  }
  return CALLS / (Number(process.hrtime.bigint() - started) / 1e9);
}

async function eventsPerSecond(counter) {
  const started = process.hrtime.bigint();
  await host.carService.emitMany({ callback: 'OnDataReceive', args: [0, 'payload'], count: EVENTS, threads: 4 });
  await host.mainRunner.whenIdle();
  const seconds = Number(process.hrtime.bigint() - started) / 1e9;
  if (counter.delivered !== EVENTS) throw new Error(`delivered ${counter.delivered} of ${EVENTS} events`);
  return EVENTS / seconds;
}

async function main() {
  host.hilog.setCapacity(0);
  const adapter = rovanta.getCarConnectAdapter();
  const counter = { delivered: 0 };
  adapter.registerConnectListener('bench', {
    onBindResult() {},
    onDataReceive() {
      counter.delivered++;
    },
    onDeviceStateChange() {},
  });
  while (!host.carService.isRegistered()) await new Promise((resolve) => setTimeout(resolve, 2));

  const rows = [
    ['service calls (castOperation, promise form, 64 in flight)', `${Math.round(await callsPerSecond(adapter))} calls/s`],
    ['events delivered (4 service threads to 1 listener)', `${Math.round(await eventsPerSecond(counter))} events/s`],
  ];
  const leak = spawnSync(process.execPath, ['--expose-gc', path.join(__dirname, 'leak.js')], { encoding: 'utf8' });
  if (leak.status !== 0) throw new Error(leak.stderr);
  for (const line of leak.stdout.trim().split('\n')) {
    const phase = JSON.parse(line);
    rows.push([`RSS growth over ${phase.count} ${phase.phase}`, `${(phase.growth / 1048576).toFixed(2)} MiB`]);
  }
  const width = Math.max(...rows.map(([name]) => name.length));
  for (const [name, value] of rows) console.log(`${name.padEnd(width)}  ${value}`);
}

main().catch((error) => {
  console.error(error);
  process.exit(1);
});
