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

// Every benchmark figure of the module next to the floor addon's, in one process: the time of a call and the
// speed of event delivery as medians and spread over several rounds, and the memory growth over 200,000 calls
// and events; each with log capture off and at its default capacity; and how long quick registrations made at
// once take on the bounded registration threads. Prints a table and writes it as JSON to
// build/bench/results.json. With --instructions, adds callgrind instruction counts (bench/instructions.js).
// Options: --rounds N (default 9), --instructions. Prints figures; asserts nothing.
const fs = require('node:fs');
const os = require('node:os');
const path = require('node:path');
const v8 = require('node:v8');
const vm = require('node:vm');
const { spawnSync } = require('node:child_process');
const { parseArgs } = require('node:util');

// Options come first: a bad one ends the run with one line that names it, before anything is loaded.
function options() {
  try {
    const { values } = parseArgs({ options: { rounds: { type: 'string', default: '9' }, instructions: { type: 'boolean' } } });
    if (!/^[1-9]\d*$/.test(values.rounds)) throw new Error(`--rounds takes a whole number of 1 or more, not "${values.rounds}"`);
    return { rounds: Number(values.rounds), instructions: values.instructions === true };
  } catch (error) {
    console.error(`bench/run.js: ${error.message} (options: --rounds N, --instructions)`);
    return process.exit(2);
  }
}
const OPTIONS = options();

const host = require('../host');
const { within, setUp, PATHS, isEventPath } = require('./workloads');
const { summary } = require('./statistics');

const COUNTS = { call: 20000, event: 100000 };
const MEMORY_COUNT = 200000;
const MEMORY_WINDOWS = 5;
const MEMORY_CHUNK = 2000;
const FLOOD_EVENTS = 300000;
// Quick registrations made at once, each held this long by the car service: with up to 8 registration threads
// they take about REGISTRATIONS / 8 x REGISTRATION_MS, one after another REGISTRATIONS x REGISTRATION_MS.
const REGISTRATIONS = 64;
const REGISTRATION_MS = 20;
const LOG_MODES = [
  { name: 'log off', capacity: 0 },
  { name: 'log kept', capacity: host.hilog.capacity() },
];
const outputDir = path.join(__dirname, '..', 'build', 'bench');

async function seconds(work) {
  const started = process.hrtime.bigint();
  await work();
  return Number(process.hrtime.bigint() - started) / 1e9;
}

// Outside every measured window: fresh log and call records, so that neither grows across measurements.
function clearRecords() {
  host.hilog.clear();
  host.carService.clearCalls();
}

async function measureRound(targets, name, count, order) {
  const result = {};
  for (const targetName of order) {
    clearRecords();
    result[targetName] = await within(
      seconds(() => PATHS[name](targets[targetName], count)),
      `${name} on the ${targetName} (${count} operations)`,
    );
  }
  return result;
}

// Per round, the cost relative to the floor's: time ratio for calls, speed ratio for events. Each row is the module
// or, on the call paths, the floor behind the gate's N-API steps (the `gate` target of bench/workloads.js).
const GATE_LABEL = "floor + the gate's N-API steps";

async function timings(targets, rounds) {
  const rows = [];
  for (const mode of LOG_MODES) {
    host.hilog.setCapacity(mode.capacity);
    for (const name of Object.keys(PATHS)) {
      const event = isEventPath(name);
      const count = event ? COUNTS.event : COUNTS.call;
      const measured = event ? ['floor', 'module'] : ['floor', 'module', 'gate'];
      await measureRound(targets, name, Math.min(count, 2000), measured);
      const perRound = [];
      for (let round = 0; round < rounds; round++) {
        perRound.push(await measureRound(targets, name, count, round % 2 ? [...measured].reverse() : measured));
      }
      const perOperation = (target) => summary(perRound.map((round) => (round[target] / count) * 1e9));
      const ratio = (target) => summary(perRound.map((round) => (event ? round.floor / round[target] : round[target] / round.floor)));
      for (const target of measured.slice(1)) {
        rows.push({
          path: name,
          target: target === 'gate' ? GATE_LABEL : 'module',
          log: mode.name,
          unit: event ? 'speed vs floor' : 'time vs floor',
          count,
          targetNs: perOperation(target),
          floorNs: perOperation('floor'),
          ratio: ratio(target),
        });
      }
      console.error(`measured ${name}, ${mode.name}`);
    }
  }
  return rows;
}

function loadGc() {
  v8.setFlagsFromString('--expose-gc');
  return vm.runInNewContext('gc');
}

// RSS after full collections, once the allocator has settled.
function settledRss(gc) {
  for (let round = 0; round < 3; round++) gc();
  return process.memoryUsage().rss;
}

async function chunked(target, name, total) {
  for (let done = 0; done < total; done += MEMORY_CHUNK) {
    await PATHS[name](target, Math.min(MEMORY_CHUNK, total - done));
    clearRecords();
  }
}

// Growth of the RSS over MEMORY_COUNT operations, floor and module alike: after a warm-up of the same size,
// MEMORY_WINDOWS consecutive windows of MEMORY_COUNT operations each, reported as the median growth of a window
// with the spread. Memory the bridge keeps grows in every window and so in the median; a one-time step, such as
// the engine sizing its heap up, lands in one window and shows in the spread only. The kept log lines and the call
// records of the simulated service are cleared every chunk, so that what grows is what the bridge keeps.
async function memory(targets) {
  const gc = loadGc();
  const rows = [];
  for (const name of [`call, 1000 in flight`, 'event, 4 service threads']) {
    for (const mode of LOG_MODES) {
      host.hilog.setCapacity(mode.capacity);
      const growth = {};
      for (const targetName of ['floor', 'module']) {
        const run = () => chunked(targets[targetName], name, MEMORY_COUNT);
        await within(run(), `the memory warm-up of ${name} on the ${targetName}`);
        clearRecords();
        const windows = [];
        let before = settledRss(gc);
        for (let window = 0; window < MEMORY_WINDOWS; window++) {
          await within(run(), `${MEMORY_COUNT} operations of ${name} on the ${targetName}`);
          clearRecords();
          const after = settledRss(gc);
          windows.push(after - before);
          before = after;
        }
        growth[targetName] = summary(windows);
      }
      rows.push({ path: name, log: mode.name, count: MEMORY_COUNT, windows: MEMORY_WINDOWS, moduleBytes: growth.module, floorBytes: growth.floor });
      console.error(`measured memory of ${name}, ${mode.name}`);
    }
  }
  return rows;
}

// Turns of the script thread per second (setImmediate round trips) while 8 service threads flood the module's
// listener with FLOOD_EVENTS events, until the last one is delivered.
async function floodTurns(targets) {
  host.hilog.setCapacity(0);
  clearRecords();
  let flooding = true;
  const started = process.hrtime.bigint();
  const flood = targets.module.emit(FLOOD_EVENTS, 8).finally(() => {
    flooding = false;
  });
  let turns = 0;
  const deadline = Date.now() + 300000;
  while (flooding) {
    if (Date.now() > deadline) throw new Error(`timed out waiting for a flood of ${FLOOD_EVENTS} events to be delivered`);
    turns++;
    await new Promise((resolve) => setImmediate(resolve));
  }
  await flood;
  const elapsed = Number(process.hrtime.bigint() - started) / 1e9;
  return { events: FLOOD_EVENTS, threads: 8, seconds: elapsed, turnsPerSecond: turns / elapsed };
}

// Milliseconds from REGISTRATIONS registerConnectListener calls made at once until the last registration has
// logged its success, with the car service taking REGISTRATION_MS to answer each.
async function parallelRegistrations() {
  host.hilog.setCapacity(LOG_MODES[1].capacity);
  clearRecords();
  host.carService.setDelay('RegisterCarConnectListener', REGISTRATION_MS);
  const successes = () => host.hilog.lines().filter((line) => line.text === 'InitCallback# InitCallback success').length;
  const adapter = host.requireNapi('carService.rovanta').getCarConnectAdapter();
  const started = process.hrtime.bigint();
  for (let index = 0; index < REGISTRATIONS; index++) adapter.registerConnectListener(`quick ${index}`, { onBindResult() {}, onDataReceive() {}, onDeviceStateChange() {} });
  await host.waitUntil(() => successes() === REGISTRATIONS, `${REGISTRATIONS} registrations`, 120000);
  const elapsedMs = Number(process.hrtime.bigint() - started) / 1e6;
  host.carService.setDelay('RegisterCarConnectListener', 0);
  clearRecords();
  return { count: REGISTRATIONS, serviceMs: REGISTRATION_MS, elapsedMs };
}

function instructions() {
  const child = spawnSync(process.execPath, [path.join(__dirname, 'instructions.js')], {
    encoding: 'utf8',
    stdio: ['ignore', 'pipe', 'inherit'],
  });
  if (child.status !== 0) throw new Error(`bench/instructions.js exited with ${child.status}`);
  return JSON.parse(child.stdout);
}

function machine() {
  const cpus = os.cpus();
  return `${cpus[0].model.trim()}, ${cpus.length} cores, ${os.platform()} ${os.release()}, Node.js ${process.version}`;
}

const fixed = (value, digits) => value.toFixed(digits);
const spread = ({ median: middle, min, max }, digits) =>
  `${fixed(middle, digits)} (${fixed(min, digits)}-${fixed(max, digits)})`;

function table(result) {
  const lines = [
    `Machine: ${result.machine}; ${result.rounds} rounds; median (min-max)${result.recordingOff ? '' : '; service call records cleared between measurements'}`,
    '',
    '| path | log | ns/op | floor ns/op | vs floor |',
    '|---|---|---|---|---|',
  ];
  for (const row of result.timings) {
    const path = row.target === 'module' ? row.path : `${row.path}: ${row.target}`;
    lines.push(
      `| ${path} | ${row.log} | ${spread(row.targetNs, 0)} | ${spread(row.floorNs, 0)} | ${spread(row.ratio, 2)} x ${row.unit.replace(' vs floor', '')} |`,
    );
  }
  const mib = (bytes) => fixed(bytes / 1048576, 2);
  const mibSpread = ({ median: middle, min, max }) => `${mib(middle)} (${mib(min)}-${mib(max)}) MiB`;
  for (const row of result.memory) {
    lines.push(
      `| memory growth per window of ${row.count} x ${row.path}, ${row.windows} windows | ${row.log} | ${mibSpread(row.moduleBytes)} | ${mibSpread(row.floorBytes)} | ${mib(row.moduleBytes.median - row.floorBytes.median)} MiB more |`,
    );
  }
  const { flood } = result;
  lines.push(`| script thread turns a second, ${flood.events} events from ${flood.threads} threads | log off | ${fixed(flood.turnsPerSecond, 0)} | | |`);
  const { registrations } = result;
  lines.push(`| ms until ${registrations.count} quick registrations made at once are done, ${registrations.serviceMs} ms each at the service | log kept | ${fixed(registrations.elapsedMs, 0)} | | |`);
  for (const row of result.instructions || []) {
    lines.push(`| instructions, ${row.path} | ${row.log} | ${fixed(row.module, 0)} | ${fixed(row.floor, 0)} | ${fixed(row.module / row.floor, 2)} x |`);
    if (row.gate !== undefined) {
      lines.push(`| instructions, ${row.path}: ${GATE_LABEL} | ${row.log} | ${fixed(row.gate, 0)} | ${fixed(row.floor, 0)} | ${fixed(row.gate / row.floor, 2)} x |`);
    }
  }
  for (const row of (result.instructions || []).filter((entry) => entry.perKeptLine)) {
    const kind = row.path.split(',')[0];
    lines.push(`| instructions per kept log line (${row.linesPerOperation} lines per ${kind}) | ${row.log} | ${fixed(row.perKeptLine, 0)} | | |`);
  }
  return lines.join('\n');
}

async function main() {
  const { rounds } = OPTIONS;
  const { targets, recordingOff } = await setUp();
  const result = { machine: machine(), date: new Date().toISOString(), rounds, recordingOff };
  result.timings = await timings(targets, rounds);
  result.memory = await memory(targets);
  result.flood = await floodTurns(targets);
  result.registrations = await parallelRegistrations();
  if (OPTIONS.instructions) result.instructions = instructions();
  fs.mkdirSync(outputDir, { recursive: true });
  fs.writeFileSync(path.join(outputDir, 'results.json'), `${JSON.stringify(result, null, 2)}\n`);
  console.log(table(result));
  console.log(`\nwritten to ${path.relative(process.cwd(), path.join(outputDir, 'results.json'))}`);
}

main().catch((error) => {
  console.error(error);
  process.exit(1);
});
