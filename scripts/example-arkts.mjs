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

// Builds the ArkTS example app (examples/arkts/*.ets) into build/examples/arkts/*.mjs with the platform's compiler
// and runs its main.mjs on the host through the platform import, against scenarios/pin-pairing.json unless
// ROVANTA_SCENARIO names another. Exits with the app's status.
import { spawnSync } from 'node:child_process';
import fs from 'node:fs';
import path from 'node:path';
import { fileURLToPath } from 'node:url';

import { transpileArkts } from '../host/arkts.mjs';

const repoRoot = path.resolve(path.dirname(fileURLToPath(import.meta.url)), '..');
const sourceDir = path.join(repoRoot, 'examples', 'arkts');
const outDir = path.join(repoRoot, 'build', 'examples', 'arkts');

fs.mkdirSync(outDir, { recursive: true });
for (const file of fs.readdirSync(sourceDir).filter((name) => name.endsWith('.ets'))) {
  const source = fs.readFileSync(path.join(sourceDir, file), 'utf8');
  fs.writeFileSync(path.join(outDir, file.replace(/\.ets$/, '.mjs')), transpileArkts(source, file, '.mjs'));
}

const app = spawnSync(
  process.execPath,
  ['--import', path.join(repoRoot, 'host', 'register.mjs'), path.join(outDir, 'main.mjs')],
  {
    stdio: 'inherit',
    env: { ...process.env, ROVANTA_SCENARIO: process.env.ROVANTA_SCENARIO ?? 'scenarios/pin-pairing.json' },
  },
);
process.exitCode = app.status ?? 1;
