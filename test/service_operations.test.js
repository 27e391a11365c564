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

const test = require('node:test');
const assert = require('node:assert/strict');
const { PRELUDE, runChild } = require('./support/child');
const { host, rovanta, LEVEL, resetHost, texts, moduleLines } = require('./support/rovanta');

const PARAM_MESSAGE = 'Invalid input parameter.';

// Each operation: its script method, the client member it calls, and a valid argument list (one argument per
// declared parameter), which the service receives as it is.
const OPERATIONS = [
  { method: 'bindTarget', member: 'StartBindTarget', args: [2, { a: 'b' }] },
  { method: 'unbindTarget', member: 'StopBindTarget', args: [3] },
  { method: 'sendControlData', member: 'SendControlData', args: [4, 'd'] },
  { method: 'startSurfaceTransfer', member: 'StartSurfaceTransfer', args: [{ x: 'y' }] },
  { method: 'stopSurfaceTransfer', member: 'StopSurfaceTransfer', args: [] },
  { method: 'castOperation', member: 'CastOperation', args: [5] },
  { method: 'disconnectDevice', member: 'DisconnectDevice', args: [] },
  { method: 'getDeviceInfo', member: 'GetDeviceInfo', args: [6] },
  { method: 'sendEvent', member: 'SendEventTo', args: [7, 'e'] },
];

let adapter;
test.beforeEach(() => {
  resetHost();
  adapter = rovanta.getCarConnectAdapter();
  host.hilog.clear();
});

function callbackResult(method, args) {
  return new Promise((resolve, reject) => {
    const received = [];
    const returned = adapter[method](...args, (...callbackArgs) => {
      received.push(callbackArgs);
      // Settle on the next turn so that a second call would still be seen.
      setTimeout(() => resolve(received), 20);
    });
    if (returned !== undefined) reject(new Error(`${method} returned ${returned} in callback form`));
  });
}

function sentArgs(member) {
  return host.carService.calls().filter((call) => call.member === member).map((call) => call.args.slice(0, member === 'GetDeviceInfo' ? 1 : undefined));
}

test.describe('promise and callback forms', () => {
  for (const op of OPERATIONS) {
    test(`${op.method}: promise with ${op.args.length} arguments, callback after them, arity faults throw "0"`, async () => {
      const promise = adapter[op.method](...op.args);
      assert.ok(promise instanceof Promise);
      assert.equal(await promise, op.member === 'GetDeviceInfo' ? '' : 0);

      const received = await callbackResult(op.method, op.args);
      assert.deepEqual(received, [[0]], 'the callback is called once with one number');
      assert.deepEqual(sentArgs(op.member), [op.args, op.args]);

      assert.throws(() => adapter[op.method](...op.args, 'not a function'), { code: '0', message: PARAM_MESSAGE });
      assert.throws(() => adapter[op.method](...op.args, () => {}, 1), { code: '0', message: PARAM_MESSAGE });
      assert.equal(sentArgs(op.member).length, 2, 'a refused call reaches no service');
    });
  }

  test('getDeviceInfo may be called with no argument at all, or with a non-number type, and then asks for type 0', async () => {
    host.carService.setDeviceInfo('{"name":"car"}');
    assert.equal(await adapter.getDeviceInfo(), '{"name":"car"}');
    host.hilog.clear();
    assert.equal(await adapter.getDeviceInfo('a'), '{"name":"car"}');
    assert.deepEqual(texts(LEVEL.WARN), ['ParseGetDeviceInfo# GetDeviceInfo invalid param: type.']);
    assert.deepEqual(sentArgs('GetDeviceInfo'), [[0], [0]]);
  });

  test('the async work of each call is named after the operation', async (t) => {
    let asyncHooks;
    try {
      asyncHooks = require('node:async_hooks');
    } catch {
      t.skip('no async_hooks on this engine');
      return;
    }
    const typesCreatedDuring = async (run) => {
      const types = [];
      const hook = asyncHooks.createHook({ init: (id, type) => types.push(type) }).enable();
      try {
        await run();
      } finally {
        hook.disable();
      }
      return types;
    };
    // Engines other than Node may offer async_hooks without reporting the async work made through Node-API.
    if (!(await typesCreatedDuring(() => host.engine.runAsyncWork('probe'))).includes('probe')) {
      t.skip('async_hooks on this engine does not report Node-API async work');
      return;
    }
    const types = await typesCreatedDuring(async () => {
      for (const op of OPERATIONS) await adapter[op.method](...op.args);
    });
    const expected = ['startBindTarget', 'stopBindTarget', 'sendControlData', 'startSurfaceTransfer', 'stopSurfaceTransfer', 'castOperation', 'disconnectDevice', 'getDeviceInfo', 'sendEventTo'];
    assert.deepEqual(types.filter((type) => expected.includes(type)), expected);
  });
});

test.describe('parse faults', () => {
  const NUMBER_FAULT = ['GetNumber# no type number', 'ParseNumber# SendControllData invalid param type: dataType.'];
  const MAP_FAULT = ['ParseMap# invalid param type: deviceInfo.'];
  const cases = [
    { call: () => adapter.bindTarget(1, 'x'), lines: MAP_FAULT },
    { call: () => adapter.bindTarget('a', {}), lines: NUMBER_FAULT },
    { call: () => adapter.bindTarget(1), lines: MAP_FAULT },
    { call: () => adapter.unbindTarget(), lines: NUMBER_FAULT },
    { call: () => adapter.castOperation('1'), lines: NUMBER_FAULT },
    { call: () => adapter.sendControlData(1, 2), lines: ['GetString# get string failed.', 'ParseString# SendControllData invalid param type: dataType.'] },
    { call: () => adapter.startSurfaceTransfer(() => {}), lines: MAP_FAULT },
    { call: () => adapter.startSurfaceTransfer(null), lines: MAP_FAULT },
    { call: () => adapter.sendEvent('a', 'b'), lines: NUMBER_FAULT },
  ];
  for (const [index, { call, lines }] of cases.entries()) {
    test(`case ${index}: throws "401" synchronously after the parser's lines, before any service call`, () => {
      assert.throws(call, (error) => error.code === '401' && error.message === PARAM_MESSAGE);
      assert.deepEqual(texts(LEVEL.ERROR), lines);
      assert.deepEqual(host.carService.calls(), []);
    });
  }

  test('a parse fault wins over a bad callback slot, and a fault in the first argument still parses the second', () => {
    assert.throws(() => adapter.bindTarget('a', 'b', 'c'), { code: '401' });
    assert.deepEqual(texts(LEVEL.ERROR), [...NUMBER_FAULT, ...MAP_FAULT]);
  });
});

test.describe('values as the service receives them', () => {
  test('numbers arrive as the platform converts them to int32', async () => {
    const inputs = [3.7, -3.9, 2 ** 31, 4294967297, -0, Number.NaN, Infinity, -(2 ** 31) - 1];
    for (const input of inputs) await adapter.castOperation(input);
    assert.deepEqual(sentArgs('CastOperation').flat(), [3, -3, -(2 ** 31), 1, 0, 0, 0, 2 ** 31 - 1]);
  });

  test('strings arrive cut to their first 4095 bytes', async () => {
    await adapter.sendControlData(1, 'x'.repeat(5000));
    await adapter.sendControlData(1, 'y'.repeat(4095));
    await adapter.sendEvent(1, 'é'.repeat(3000));
    const [[, cut], [, whole]] = sentArgs('SendControlData');
    assert.equal(cut, 'x'.repeat(4095));
    assert.equal(whole, 'y'.repeat(4095));
    const [[, multiByte]] = sentArgs('SendEventTo');
    assert.ok(Buffer.byteLength(multiByte) <= 4095 && Buffer.byteLength(multiByte) >= 4094);
    assert.ok('é'.repeat(3000).startsWith(multiByte));
  });

  test('an object becomes a string map, value by value', async () => {
    // Each key: the value given, then the text the service receives.
    const cases = {
      a: [1, '1'], b: [2.5, '2.500000'], c: [true, 'true'], d: [null, ''], e: ['x', 'x'], f: [{}, ''], g: [undefined, ''],
      h: [-3, '-3'], i: [1e21, '1000000000000000000000.000000'], j: [Number.NaN, 'nan'], k: [false, 'false'], l: [[1], ''],
      m: [() => {}, ''], n: [10n, ''], o: [Symbol('o'), ''], p: [2 ** 40, '1099511627776'], 7: ['seven', 'seven'],
    };
    const entries = Object.entries(cases);
    const value = Object.fromEntries(entries.map(([key, [given]]) => [key, given]));
    value[Symbol('hidden')] = 'no';
    await adapter.startSurfaceTransfer(value);
    assert.deepEqual(sentArgs('StartSurfaceTransfer'), [[Object.fromEntries(entries.map(([key, [, text]]) => [key, text]))]]);
    const invalid = moduleLines(LEVEL.ERROR).filter((l) => l.args[0] === 'GetValue');
    assert.deepEqual(invalid.map((l) => l.args[1]).sort(), ['f', 'l', 'm', 'n', 'o']);
    assert.equal(invalid[0].format, '%{public}s# Invalid property: %{public}s');
  });

  test('only own enumerable keys are read; an empty object gives an empty map', async () => {
    const derived = Object.create({ inherited: 'yes' });
    derived.own = 2;
    Object.defineProperty(derived, 'hidden', { value: 'no', enumerable: false });
    await adapter.bindTarget(1, derived);
    await adapter.bindTarget(1, {});
    await adapter.bindTarget(1, [5, 'z']);
    assert.deepEqual(sentArgs('StartBindTarget'), [
      [1, { own: '2' }],
      [1, {}],
      [1, { 0: '5', 1: 'z' }],
    ]);
  });

  test('a map whose keys cannot be listed ends the call with that error, and nothing reaches the service', async () => {
    const trapError = new Error('keys refused');
    const refusingKeys = new Proxy({}, { ownKeys() { throw trapError; } });
    const revocable = Proxy.revocable({}, {});
    revocable.revoke();
    let callbacks = 0;
    for (const map of [refusingKeys, revocable.proxy]) {
      assert.throws(() => adapter.startSurfaceTransfer(map), map === refusingKeys ? trapError : TypeError);
      assert.throws(() => adapter.startSurfaceTransfer(map, () => callbacks++), map === refusingKeys ? trapError : TypeError);
      assert.throws(() => adapter.bindTarget(1, map, () => callbacks++), map === refusingKeys ? trapError : TypeError);
    }
    // Work queued before this call has run by the time it settles.
    await Promise.all(Array.from({ length: 8 }, () => adapter.castOperation(1)));
    assert.deepEqual(host.carService.calls().map((call) => call.member), new Array(8).fill('CastOperation'));
    assert.equal(callbacks, 0);
  });
});

test.describe('results', () => {
  test('a non-zero service code resolves the promise and is the callback argument, never a rejection', async () => {
    host.carService.setResult('CastOperation', -1);
    host.carService.setResult('DisconnectDevice', 1001);
    assert.equal(await adapter.castOperation(1), -1);
    assert.deepEqual(await callbackResult('castOperation', [1]), [[-1]]);
    assert.equal(await adapter.disconnectDevice(), 1001);
  });

  test('getDeviceInfo gives its text to a promise and the number 0 to a callback, whatever the service code', async () => {
    host.carService.setDeviceInfo('device-7');
    host.carService.setResult('GetDeviceInfo', 5);
    assert.equal(await adapter.getDeviceInfo(1), 'device-7');
    assert.deepEqual(await callbackResult('getDeviceInfo', [1]), [[0]]);
    assert.deepEqual(texts(LEVEL.INFO).filter((t) => t.startsWith('NapiCreateResult')), ['NapiCreateResult# create string result']);
  });

  test('stopSurfaceTransfer traces itself twice at ERROR on success', async () => {
    assert.equal(await adapter.stopSurfaceTransfer(), 0);
    assert.deepEqual(texts(LEVEL.ERROR), ['NapiStopSurfaceTransfer# NapiStopSurfaceTransfer.', 'StopSurfaceTransferExecuteFunc# StopSurfaceTransferExecuteFunc.']);
    // While the call waits, the collector may free an older adapter object, whose wrap finalizer logs a line.
    const callLines = texts(LEVEL.INFO).filter((text) => text !== 'operator()# delete js object');
    assert.deepEqual(callLines.slice(-2), ['ParseNoItem# no parse.', 'NapiCreateResult# create number result']);
  });

  // A call made on the script thread would return only after the service answered, its promise already settled;
  // one made under a lock that the held call keeps would wait for it.
  test('the service call runs off the script thread, and a held call holds up no other call', async () => {
    host.carService.setDelay('StopBindTarget', 2000);
    let settled = false;
    const pending = adapter.unbindTarget(1).finally(() => {
      settled = true;
    });
    await host.carService.waitForCalls('StopBindTarget', 1);
    assert.equal(settled, false, 'the script thread runs on while the service holds the call');
    assert.equal(await adapter.castOperation(2), 0);
    assert.equal(settled, false, 'another call completes while the service holds the first');
    assert.equal(await host.within(pending, 'the held call to settle', 10000), 0);
  });

  test('concurrent calls each settle once with their own result', async () => {
    host.carService.setDelay('CastOperation', 20);
    const results = await Promise.all(Array.from({ length: 16 }, (_, i) => adapter.castOperation(i)));
    assert.deepEqual(results, new Array(16).fill(0));
    assert.deepEqual(sentArgs('CastOperation').flat().sort((a, b) => a - b), Array.from({ length: 16 }, (_, i) => i));
  });
});

test.describe('the car-service client library', () => {
  test('its proxy descriptor is registered with the broker while the module is loaded', () => {
    assert.ok(host.broker.descriptors().includes('ZUNO.ITravel.Vexar'));
  });

  test('a property read that the platform refuses ends the process', () => {
    const child = runChild(`${PRELUDE}
      rovanta.getCarConnectAdapter().startSurfaceTransfer({ get boom() { throw new Error('getter refused'); } });
      console.log('survived');
    `, { timeout: 30000 });
    assert.equal(child.signal, 'SIGABRT', child.stderr);
    assert.doesNotMatch(child.stdout, /survived/);
  });
});
