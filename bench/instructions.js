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

// Instructions per call and per event, module and floor (and, per call, the floor behind the gate's N-API steps),
// counted by callgrind with V8's randomness fixed so that runs repeat. Run plainly, it starts itself under
// valgrind and prints the counts as JSON on stdout; under valgrind (--counting) it runs the measured windows, each
// closed by the floor addon's instruction mark.
//
// What makes a count repeat: every path runs on both targets in both log modes before the first counted window,
// so that no window pays for V8 compiling the loop that drives it; a full collection before each window starts
// it with an empty young generation, so that the scavenges inside a window are those of its own allocations;
// valgrind's fair scheduling hands its one running slot to the threads in turn, so that the interleaving of the
// service, worker and main threads varies less from run to run; and each window is counted REPEATS times, in
// turn with the others, and reported as the median with its spread.
const fs = require('node:fs');
const path = require('node:path');
const { spawnSync } = require('node:child_process');
const host = require('../host');
const { setUp, PATHS, isEventPath } = require('./workloads');
const { median, summary } = require('./statistics');

const MEASURED = { 'call, one at a time': 3000, 'event, 1 service thread': 5000 };
const WARM_UP = 3000;
const REPEATS = 5;
const LOG_MODES = [
  { name: 'log off', capacity: 0 },
  { name: 'log kept', capacity: host.hilog.capacity() },
];
const targetsOf = (name) => (isEventPath(name) ? ['floor', 'module'] : ['floor', 'module', 'gate']);
const V8_FIXED_RANDOMNESS = ['--random_seed=20260101', '--hash_seed=20260101', '--single-threaded'];
const outputDir = path.join(__dirname, '..', 'build', 'bench', 'callgrind');

async function warmUp(targets) {
  for (const mode of LOG_MODES) {
    host.hilog.setCapacity(mode.capacity);
    for (const name of Object.keys(MEASURED)) {
      for (const targetName of targetsOf(name)) await PATHS[name](targets[targetName], WARM_UP);
    }
  }
}

async function countWindows() {
  const { floor, targets } = await setUp();
  if (!floor.instructionMark('start')) throw new Error('not counting: run under callgrind, floor built with valgrind/callgrind.h');
  await warmUp(targets);
  for (let repeat = 0; repeat < REPEATS; repeat++) {
    for (const mode of LOG_MODES) {
      host.hilog.setCapacity(mode.capacity);
      for (const [name, count] of Object.entries(MEASURED)) {
        for (const targetName of targetsOf(name)) {
          host.hilog.clear();
          host.carService.clearCalls();
          global.gc();
          floor.instructionMark('setup');
          await PATHS[name](targets[targetName], count);
          const window = { target: targetName, path: name, log: mode.name, count, repeat };
          floor.instructionMark(JSON.stringify(window));
          const lines = host.hilog.capacity() === 0 ? 0 : host.hilog.lines().length;
          console.log(JSON.stringify({ ...window, lines }));
        }
      }
    }
  }
}

// Instructions spent inside HiLogPrint, callees included, in one dump.
function hilogInstructions(file) {
  const annotated = spawnSync('callgrind_annotate', ['--inclusive=yes', '--threshold=100', file], { encoding: 'utf8' });
  const line = annotated.stdout.split('\n').find((entry) => /[:\s]HiLogPrint \[/.test(entry));
  return line ? Number(line.trim().split(/\s+/)[0].replace(/,/g, '')) : 0;
}

// Each dump holds the instructions since the previous one and names its window in the trigger line; the counted
// run prints the log lines each window kept. The cost of a kept line is what HiLogPrint spends over them.
function readWindows(lineCounts) {
  const windows = [];
  for (const file of fs.readdirSync(outputDir)) {
    const text = fs.readFileSync(path.join(outputDir, file), 'utf8');
    const trigger = /^desc: Trigger: Client Request: (.*)$/m.exec(text);
    const total = /^(?:summary|totals): (\d+)/m.exec(text);
    if (!trigger || !total || !trigger[1].startsWith('{')) continue;
    windows.push({ ...JSON.parse(trigger[1]), instructions: Number(total[1]), file: path.join(outputDir, file) });
  }
  const rows = [];
  for (const mode of LOG_MODES) {
    for (const name of Object.keys(MEASURED)) {
      const windowsOf = (target) => {
        const found = windows.filter((entry) => entry.target === target && entry.path === name && entry.log === mode.name);
        if (found.length !== REPEATS) throw new Error(`${found.length} of ${REPEATS} callgrind dumps for ${target}, ${name}, ${mode.name}`);
        return found;
      };
      const perOperation = (target) => summary(windowsOf(target).map((window) => window.instructions / window.count));
      const module = perOperation('module');
      const floor = perOperation('floor');
      const row = { path: name, log: mode.name, module: module.median, floor: floor.median, moduleSpread: module, floorSpread: floor };
      if (targetsOf(name).includes('gate')) {
        row.gateSpread = perOperation('gate');
        row.gate = row.gateSpread.median;
      }
      const kept = windowsOf('module').map((window) => {
        const printed = lineCounts.find((entry) => ['target', 'path', 'log', 'repeat'].every((key) => entry[key] === window[key]));
        return { window, lines: printed.lines };
      });
      if (kept[0].lines > 0) {
        row.linesPerOperation = kept[0].lines / kept[0].window.count;
        row.perKeptLine = median(kept.map(({ window, lines }) => hilogInstructions(window.file) / lines));
      }
      rows.push(row);
    }
  }
  return rows;
}

function countUnderCallgrind() {
  fs.rmSync(outputDir, { recursive: true, force: true });
  fs.mkdirSync(outputDir, { recursive: true });
  const valgrind = spawnSync(
    'valgrind',
    [
      '--tool=callgrind',
      // Each dump names every function it counts, so that callgrind_annotate reads it on its own.
      '--compress-strings=no',
      '--compress-pos=no',
      // The threads take the one running slot in turn rather than as the kernel wakes them.
      '--fair-sched=yes',
      `--callgrind-out-file=${path.join(outputDir, 'callgrind.out.%p')}`,
      process.execPath,
      ...V8_FIXED_RANDOMNESS,
      '--expose-gc',
      __filename,
      '--counting',
    ],
    { stdio: ['ignore', 'pipe', 'pipe'], encoding: 'utf8' },
  );
  if (valgrind.error) throw new Error(`valgrind could not start (Debian package valgrind): ${valgrind.error.message}`);
  if (valgrind.status !== 0) throw new Error(`the counted run failed:\n${valgrind.stderr}`);
  return readWindows(valgrind.stdout.trim().split('\n').map((line) => JSON.parse(line)));
}

if (process.argv.includes('--counting')) {
  countWindows().catch((error) => {
    console.error(error);
    process.exit(1);
  });
} else {
  console.log(JSON.stringify(countUnderCallgrind()));
}
