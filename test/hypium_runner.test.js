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

// The stand-in of the platform's script test runner: a package whose suites register nothing fails, as it must,
// since on a device the framework reports such a run as passed.
const fs = require('node:fs');
const os = require('node:os');
const path = require('node:path');
const { spawnSync } = require('node:child_process');
const test = require('node:test');
const assert = require('node:assert/strict');

const runner = path.join(__dirname, '..', 'host', 'hypium-runner.mjs');
// The runner is a Node.js program, as the host's scripts are: under Bun or Deno this suite starts the node on PATH.
const node = process.versions.bun || process.versions.deno ? 'node' : process.execPath;

// Runs a package whose List.test.ets calls the suite of Suite.test.ets, whose body is `suiteBody`.
function runPackage(t, suiteBody) {
  const dir = fs.mkdtempSync(path.join(os.tmpdir(), 'rovanta-stage-'));
  t.after(() => fs.rmSync(dir, { recursive: true, force: true }));
  fs.writeFileSync(
    path.join(dir, 'List.test.ets'),
    "import suite from './Suite.test';\nexport default function testsuite(): void {\n  suite();\n}\n",
  );
  fs.writeFileSync(
    path.join(dir, 'Suite.test.ets'),
    "import { describe, it, expect } from '@ohos/hypium';\n" +
      `export default function suite(): void {\n${suiteBody}\n}\n`,
  );
  const run = spawnSync(node, [runner, path.join(dir, 'List.test.ets')], { encoding: 'utf8' });
  return { status: run.status, output: run.stdout + run.stderr };
}

test('the runner passes a package whose every suite holds a passing case', (t) => {
  const run = runPackage(t, "  describe('Full', () => {\n    it('one', 0, () => { expect(1).assertEqual(1); });\n  });");
  assert.equal(run.status, 0, run.output);
  assert.match(run.output, /^ok Full#one$/m);
});

test('the runner fails a suite without cases and a package without suites', (t) => {
  const emptySuite = runPackage(
    t,
    "  describe('Full', () => {\n    it('one', 0, () => { expect(1).assertEqual(1); });\n  });\n" +
      "  describe('Empty', () => {});",
  );
  assert.equal(emptySuite.status, 1, emptySuite.output);
  assert.match(emptySuite.output, /^not ok suite Empty registers no case$/m);

  const noSuite = runPackage(t, '  expect(0).assertEqual(0);');
  assert.equal(noSuite.status, 1, noSuite.output);
  assert.match(noSuite.output, /registers no suite$/m);
});
