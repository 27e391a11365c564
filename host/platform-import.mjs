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

// What every engine's platform import shares: globalThis.requireNapi is host.requireNapi, and with
// ROVANTA_SCENARIO=<file.json> the simulated car plays that scenario, its timeline starting when the app's first
// listener registration reaches the car. Its default export is the module "carService.rovanta".
import fs from 'node:fs';
import { createRequire } from 'node:module';

// A missing build or a faulty scenario ends the process with one line that says what to do, not a loader stack.
function orExit(what, fn) {
  try {
    return fn();
  } catch (error) {
    process.stderr.write(`${what}${error.message}\n`);
    return process.exit(1);
  }
}

const host = orExit('', () => createRequire(import.meta.url)('./index.js'));

globalThis.requireNapi = host.requireNapi;

const scenarioFile = process.env.ROVANTA_SCENARIO;
if (scenarioFile) {
  orExit(`ROVANTA_SCENARIO=${scenarioFile}: `, () =>
    host.carService.load(JSON.parse(fs.readFileSync(scenarioFile, 'utf8'))));
}

export default orExit('', () => host.requireNapi('carService.rovanta'));
