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

// Random argument lists of every script value kind, for all eleven methods: a call always ends in one of the
// few outcomes script code is promised, and never takes the process down.
const test = require('node:test');
const assert = require('node:assert/strict');
const { inspect } = require('node:util');
const fc = require('fast-check');
const { host, rovanta, METHODS, validListener, resetHost, delay, until } = require('./support/rovanta');

const RUNS_PER_METHOD = Number(process.env.ROVANTA_PROPERTY_RUNS || 150);
const SETTLE_TIMEOUT_MS = 3000;

const FUNCTION_MARK = Symbol('callback');

const numbers = fc.oneof(
  fc.integer(),
  fc.double(),
  fc.constantFrom(Number.NaN, Infinity, -Infinity, -0, 2 ** 31, 2 ** 32 + 1, 2 ** 53, 1e308, -1e308),
);
const strings = fc.oneof(
  fc.string({ maxLength: 16 }),
  fc.string({ unit: 'grapheme', maxLength: 16 }),
  fc.constantFrom('', 'x'.repeat(5000), 'é'.repeat(2500), '\u0000inner', '😀'.repeat(1500)),
);
const primitives = fc.oneof(
  numbers,
  strings,
  fc.boolean(),
  fc.constant(null),
  fc.constant(undefined),
  fc.string({ maxLength: 4 }).map((description) => Symbol(description)),
  fc.bigInt(),
);
// Objects are kept shallow: nested values are their own case of the map conversion.
const objects = fc.oneof(
  fc.dictionary(fc.string({ maxLength: 6 }), primitives, { maxKeys: 5 }),
  fc.dictionary(fc.string({ maxLength: 6 }), primitives, { maxKeys: 5 }).map((entries) => Object.assign(Object.create(null), entries)),
  fc.array(primitives, { maxLength: 4 }),
  fc.constant(validListener()),
);
const values = fc.oneof(primitives, objects, fc.constant(FUNCTION_MARK));
const argumentLists = fc.array(values, { maxLength: 4 });

// Turns each function mark into a fresh function that counts its calls.
function materialise(list) {
  const callbacks = [];
  const args = list.map((value) => {
    if (value !== FUNCTION_MARK) return value;
    const callback = (...received) => callback.calls.push(received);
    callback.calls = [];
    callbacks.push(callback);
    return callback;
  });
  return { args, callbacks };
}

// An argument list shortened for a failure message.
function describeArgs(args) {
  return inspect(args, { depth: 1, maxArrayLength: 4, maxStringLength: 20, breakLength: Infinity });
}

async function checkServiceCall(adapter, method, list) {
  const { args, callbacks } = materialise(list);
  let returned;
  try {
    returned = adapter[method](...args);
  } catch (error) {
    assert.ok(['0', '401'].includes(error.code), `${method}(${describeArgs(args)}) threw code ${error.code}`);
    return;
  }
  if (returned instanceof Promise) {
    const value = await host.within(returned, `the promise of ${method}(${describeArgs(args)})`, SETTLE_TIMEOUT_MS);
    assert.equal(typeof value, method === 'getDeviceInfo' ? 'string' : 'number');
    return;
  }
  assert.equal(returned, undefined, `${method}(${describeArgs(args)}) returned ${String(returned)}`);
  const what = `a callback of ${method}(${describeArgs(args)})`;
  await until(() => callbacks.some((cb) => cb.calls.length > 0), what, SETTLE_TIMEOUT_MS);
  // A second call from the same completion would come on the same turn.
  await delay(2);
  // Only the last argument is called back: once, with one number.
  const received = callbacks.map((cb) => cb.calls.map((callArgs) => callArgs.map((value) => typeof value)));
  const expected = callbacks.map((cb) => (cb === args[args.length - 1] ? [['number']] : []));
  assert.deepEqual(received, expected, `${method}(${describeArgs(args)}): the callbacks' calls, by argument type`);
}

function checkListenerCall(adapter, method, list) {
  const { args } = materialise(list);
  const returned = adapter[method](...args);
  assert.ok(returned === 0 || returned === undefined, `${method}(${describeArgs(args)}) returned ${String(returned)}`);
}

test.before(() => {
  resetHost();
  host.hilog.setCapacity(0);
});
test.after(() => host.hilog.setCapacity(200000));

for (const { name } of METHODS) {
  const isListenerMethod = name === 'registerConnectListener' || name === 'unregisterConnectListener';
  test(`${name}: any argument list ends in a promised outcome`, async () => {
    const adapter = rovanta.getCarConnectAdapter();
    let runs = 0;
    await fc.assert(
      fc.asyncProperty(argumentLists, async (list) => {
        runs++;
        if (isListenerMethod) checkListenerCall(adapter, name, list);
        else await checkServiceCall(adapter, name, list);
      }),
      { numRuns: RUNS_PER_METHOD },
    );
    if (process.env.ROVANTA_REPORT_FILE) {
      require('node:fs').appendFileSync(process.env.ROVANTA_REPORT_FILE, `${JSON.stringify({ suite: 'property', method: name, runs, failures: 0 })}\n`);
    }
  });
}
