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
// The test scripts' reporter: what a person reading a failed run is shown.

'use strict';

const test = require('node:test');
const assert = require('node:assert/strict');
const fs = require('node:fs');
const os = require('node:os');
const path = require('node:path');
const { spawnSync } = require('node:child_process');

const REPORTER = path.join(__dirname, '..', 'scripts', 'lib', 'quiet-reporter.mjs');
// The test scripts run their suites with the node on PATH, whatever engine runs this suite.
const NODE = 'node';

// Runs one suite file under the reporter as a test script does: a run of its own, not a child of this one.
function report(source) {
  const dir = fs.mkdtempSync(path.join(os.tmpdir(), 'rovanta-reporter-'));
  try {
    fs.writeFileSync(path.join(dir, 'fixture.test.js'), source);
    const env = { ...process.env };
    delete env.NODE_TEST_CONTEXT;
    // Under the sanitizer runs the node on PATH is a wrapper script that preloads the runtime for node itself;
    // its shell crashes if it inherits the thread runtime's preload.
    delete env.LD_PRELOAD;
    const result = spawnSync(NODE, ['--test', `--test-reporter=${REPORTER}`, 'fixture.test.js'], {
      cwd: dir,
      env,
      encoding: 'utf8',
    });
    assert.equal(result.signal, null, `the run was killed by ${result.signal}: ${result.stderr}`);
    return { status: result.status, output: result.stdout };
  } finally {
    fs.rmSync(dir, { recursive: true, force: true });
  }
}

test.describe('the quiet reporter', () => {
  test('a failed test is named with its groups and shown with its error', () => {
    const { status, output } = report(
      "const test = require('node:test');\n" +
        "test.describe('group', () => { test('fine', () => {}); test('broken', () => { throw new Error('the cause'); }); });\n",
    );
    assert.notEqual(status, 0);
    assert.match(output, /^FAIL fixture\.test\.js: group > broken$/m);
    assert.match(output, /the cause/);
    assert.match(output, /^FAIL fixture\.test\.js +1 of 2 tests failed/m);
  });

  test("a file whose process fails after its tests passed shows that process's stderr", () => {
    const { status, output } = report(
      "const test = require('node:test');\n" +
        "test('passes', () => {});\n" +
        "process.on('exit', () => { process.stderr.write('==1==ERROR: LeakSanitizer: detected memory leaks\\n'); process.exitCode = 86; });\n",
    );
    assert.notEqual(status, 0);
    assert.match(output, /the suite file's process exited with code 86; its stderr:\n {2}==1==ERROR: LeakSanitizer: detected memory leaks\n/);
  });
});
