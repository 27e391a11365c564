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


// Stand-in of the platform's script test runner: runs a stage test package's
// ArkTS suites, compiled by the platform's compiler, with the platform's
// framework as the package's test ability does (Hypium.hypiumTest with the
// testsuite() of its List.test.ets), and reports through a stand-in of the
// ability delegator.
//
// Usage: node host/hypium-runner.mjs [LIST_FILE]
//   LIST_FILE exports the package's testsuite()
//   (default test/unittest/js/entry/src/main/ets/test/List.test.ets).
// Prints one line per case and the summary; exits 1 unless every case passed,
// and also when the package registers no suite or a suite registers no case:
// on a device such a suite passes without checking anything.
import { existsSync } from 'node:fs';
import { register } from 'node:module';
import path from 'node:path';
import { fileURLToPath, pathToFileURL } from 'node:url';

const repoRoot = path.resolve(path.dirname(fileURLToPath(import.meta.url)), '..');
const defaultList = 'test/unittest/js/entry/src/main/ets/test/List.test.ets';
const listFile = path.resolve(process.argv[2] ?? path.join(repoRoot, defaultList));

// Before the first build the framework and the compiler are not installed yet: say what fixes it.
for (const dependency of ['@ohos/hypium', 'ohos-typescript']) {
  if (!existsSync(path.join(repoRoot, 'node_modules', dependency))) {
    console.error(`host/hypium-runner.mjs: ${dependency} is not installed: run npm run build first`);
    process.exit(1);
  }
}

register('./hypium-hooks.mjs', import.meta.url);
const { Core, Hypium } = await import('@ohos/hypium');
const testsuite = (await import(pathToFileURL(listFile).href)).default;

// The framework's progress and its assertions' traces go to the device log;
// the delegator's report is the result.
const print = (line) => process.stdout.write(`${line}\n`);
console.info = () => {};
console.log = () => {};
console.debug = () => {};
process.exitCode = 1;

const reportField = (message, key) => message.match(new RegExp(`^${key}(.*)$`, 'm'))?.[1];

function report(message) {
  const statusCode = reportField(message, 'OHOS_REPORT_STATUS_CODE: ');
  const test = reportField(message, 'OHOS_REPORT_STATUS: test=');
  const suite = reportField(message, 'OHOS_REPORT_STATUS: class=');
  if (statusCode !== undefined && statusCode !== '1') {
    const failure = statusCode === '0' ? '' : ` (${reportField(message, 'OHOS_REPORT_STATUS: stack=')})`;
    print(`${statusCode === '0' ? 'ok' : 'not ok'} ${suite}#${test}${failure}`);
  }
  const summary = reportField(message, 'OHOS_REPORT_RESULT: stream=');
  if (summary !== undefined) {
    print(summary);
    const counts = Object.fromEntries(summary.split(', ').map((field) => field.split(': ')));
    const passed = Number(counts['Tests run']) > 0 && counts.Failure === '0' && counts.Error === '0';
    process.exitCode = passed && registrationFaults.length === 0 ? 0 : 1;
  }
}

const abilityDelegator = {
  print(message) {
    report(message);
    return Promise.resolve();
  },
  printSync: report,
  finishTest(message, code, callback) {
    callback();
  },
};
const abilityDelegatorArguments = {
  bundleName: 'com.example.rovantajstest',
  parameters: {},
  testCaseNames: '',
  testRunnerClassName: 'OpenHarmonyTestRunner',
};

// The suites that hold no case, at any depth: the framework runs them as passed.
function emptySuites(suite) {
  const empty = suite.childSuites.flatMap(emptySuites);
  const cases = (s) => s.specs.length + s.childSuites.reduce((sum, child) => sum + cases(child), 0);
  return cases(suite) === 0 ? [suite.description, ...empty] : empty;
}

// Registers the package's suites, as testsuite() does on the device, and
// notes a package without suites and every suite without cases.
const registrationFaults = [];
function checkedTestsuite() {
  testsuite();
  const root = Core.getInstance().getDefaultService('suite').rootSuite;
  if (root.childSuites.length === 0) {
    registrationFaults.push(`${path.relative(repoRoot, listFile)} registers no suite`);
  }
  for (const name of root.childSuites.flatMap(emptySuites)) {
    registrationFaults.push(`suite ${name} registers no case`);
  }
  registrationFaults.forEach((fault) => print(`not ok ${fault}`));
}

Hypium.hypiumTest(abilityDelegator, abilityDelegatorArguments, checkedTestsuite);
