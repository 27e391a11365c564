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

// Event records that the service callbacks never produce, handed straight to one listener: how the dispatch
// reads "FUNC_CODE" and each member, and what it logs when they do not fit. And one delivery of a listener
// manager, with the handle scopes it opens and closes counted.
const test = require('node:test');
const assert = require('node:assert/strict');
const path = require('node:path');
const { host, LEVEL, recordingListener, resetHost, texts } = require('./support/rovanta');

const probe = { exports: {} };
process.dlopen(probe, path.join(host.moduleRoot, 'lib', 'test', 'listener_probe.node'));
const { notify, publish } = probe.exports;

const receiver = { name: 'the adapter' };

function deliver(event, listener) {
  const calls = [];
  host.hilog.clear();
  notify(listener ?? recordingListener(calls), receiver, JSON.stringify(event));
  return calls;
}

test.beforeEach(resetHost);

test.describe('the event code', () => {
  for (const code of [7, -1, '2', null, 2 ** 32 + 9]) {
    test(`${JSON.stringify(code)} is refused before any call`, () => {
      assert.deepEqual(deliver({ FUNC_CODE: code, state: 1, deviceInfo: 'x' }), []);
      assert.deepEqual(texts(LEVEL.ERROR), ['NotifyEvent# NotifyEvent error, invalid param: code.']);
    });
  }

  test('a missing code, and a record that is not an object, are refused', () => {
    assert.deepEqual(deliver({ state: 1 }), []);
    assert.deepEqual(deliver([3, 1]), []);
    assert.equal(texts(LEVEL.ERROR).length, 1);
  });
});

test.describe('the members', () => {
  test('a member of the wrong type names its key, then the argument and call failures follow', () => {
    assert.deepEqual(deliver({ FUNC_CODE: 0, deviceId: 'd', result: 1, status: 'two', content: '' }), []);
    assert.deepEqual(texts(LEVEL.ERROR), [
      'CreateArgNumber# Cannot find or invalid status.',
      'OnBindResult# creat argv failed.',
      'NotifyEvent# NotifyEvent error, napi_call_function fail.',
    ]);
  });

  test('each member is read under its own key: a surface record reaches the listener as (code, eventId, category)', () => {
    const calls = deliver({ FUNC_CODE: 5, code: 5, eventId: 9, category: 'cast' });
    assert.deepEqual(calls.map((c) => [c.name, c.args]), [['onSurfaceTransferOnEvent', [5, 9, 'cast']]]);
  });

  test('numbers reach script as 32-bit integers (wide integers keep their low 32 bits); strings stop at a zero byte', () => {
    const calls = deliver({ FUNC_CODE: 1, type: 4294967297, data: 'before\u0000after' });
    assert.deepEqual(calls.map((c) => c.args), [[1, 'before']]);
    assert.deepEqual(deliver({ FUNC_CODE: 6, result: -2.7 }).map((c) => c.args), [[-2]]);
    for (const wide of [1e12, -(2 ** 40) - 5]) {
      assert.deepEqual(deliver({ FUNC_CODE: 6, result: wide }).map((c) => c.args), [[wide | 0]], `${wide}`);
    }
  });

  test('a property read that throws is the fetch failure of its row, and the exception is taken', () => {
    const listener = {};
    Object.defineProperty(listener, 'onSurfaceTransferOnEvent', {
      get() {
        throw new Error('getter refused');
      },
    });
    deliver({ FUNC_CODE: 5, code: 1, eventId: 2, category: 'c' }, listener);
    assert.deepEqual(texts(LEVEL.ERROR), [
      'OnSurfaceTransferOnEvent# get OnSurfaceTransferOnEvent failed.',
      'NotifyEvent# NotifyEvent error, napi_call_function fail.',
      'NotifyEvent# NotifyEvent error, listener threw: Error: getter refused',
    ]);
  });
});

test('a delivery closes every handle scope it opens: its own, and one per listener call', () => {
  const calls = [];
  const sessions = { a: recordingListener(calls, 'a'), b: recordingListener(calls, 'b'), c: recordingListener(calls, 'c') };
  const scopes = publish(receiver, sessions, JSON.stringify({ FUNC_CODE: 6, result: 4 }));
  assert.deepEqual(calls.map((call) => [call.name, call.args, call.self]), new Array(3).fill(['onDisconnectResult', [4], receiver]));
  assert.deepEqual(scopes, { opened: 4, closed: 4 });
});
