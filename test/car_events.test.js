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
const {
  host,
  rovanta,
  LEVEL,
  resetHost,
  texts,
  moduleLines,
  validListener,
  recordingListener,
  delay,
  until,
  completedRegistrations,
  register,
} = require('./support/rovanta');

// The module's lines except the one the wrap finalizer of an older adapter object logs: the collector frees such
// an object whenever it runs, which may be in the middle of a delivery.
function deliveryTexts() {
  return texts().filter((text) => text !== 'operator()# delete js object');
}

function registrationCalls() {
  return host.carService.calls().filter((call) => call.member === 'RegisterCarConnectListener').length;
}

async function emitAndDeliver(callback, ...args) {
  host.carService.emit(callback, ...args);
  await host.mainRunner.whenIdle();
}

let adapter;
test.beforeEach(async () => {
  resetHost();
  adapter = rovanta.getCarConnectAdapter();
  host.hilog.clear();
});

test.describe('delivery of the seven events', () => {
  test('each service callback calls its listener function with its arguments and the adapter as this', async () => {
    const journal = [];
    assert.equal(await register(adapter, 'main', recordingListener(journal)), 0);

    // Each service callback (the device change by its code), the arguments it carries, and the function they reach.
    const deliveries = [
      ['OnBindResult', ['dev1', -1, 2, ''], 'onBindResult'],
      ['OnDataReceive', [7, '{"nested":true}'], 'onDataReceive'],
      ['OnDeviceStateChange', [1, 'info'], 'onDeviceStateChange'],
      [3, [1], 'onDeviceChange'],
      ['OnDeviceServiceStateChange', ['svc', 2, 9], 'onDeviceServiceStateChange'],
      ['OnSurfaceTransferOnEvent', [5, 9, 'cast'], 'onSurfaceTransferOnEvent'],
      ['OnDisconnectResult', [0], 'onDisconnectResult'],
    ];
    host.hilog.clear();
    for (const [callback, args] of deliveries) await emitAndDeliver(callback, ...args);
    assert.deepEqual(journal.map(({ name, args }) => [name, args]), deliveries.map(([, args, name]) => [name, args]));
    assert.ok(journal.every((entry) => entry.self === adapter));
    // Each handler's own line, as the contract writes it (the surface handler's with a small "on").
    assert.deepEqual(texts(LEVEL.INFO).filter((text) => / CarConnectListener [Oo]n/.test(text)), [
      'OnBindResult# CarConnectListener OnBindResult.',
      'OnDataReceive# CarConnectListener OnDataReceive.',
      'OnDeviceStateChange# CarConnectListener OnDeviceStateChange.',
      'OnDeviceChange# CarConnectListener OnDeviceChange.',
      'OnDeviceServiceStateChange# CarConnectListener OnDeviceServiceStateChange.',
      'OnSurfaceTransferOnEvent# CarConnectListener onSurfaceTransferOnEvent.',
      'OnDisconnectResult# CarConnectListener OnDisconnectResult.',
    ]);
  });

  test('delivery runs on the main thread after the service thread returned, and logs each step', async () => {
    const journal = [];
    await register(adapter, 'main', recordingListener(journal));
    host.hilog.clear();
    host.mainRunner.recordPosts(true);
    host.carService.emit('OnDeviceServiceStateChange', 'svc', 1, 2);
    const posts = host.mainRunner.posts();
    host.mainRunner.recordPosts(false);
    assert.deepEqual(posts.map((post) => post.priority), [3], 'one task, posted with priority value 3 (LOW)');
    assert.equal(journal.length, 0, 'nothing runs on the service thread');
    await host.mainRunner.whenIdle();
    assert.equal(journal.length, 1);
    assert.deepEqual(deliveryTexts(), [
      'QueueWork# ConnectListenerManager QueueWork',
      'PublishEvent# ConnectListenerManager PublishEvent',
      'NotifyEvent# CarConnectListener NotifyEvent.',
      'OnDeviceServiceStateChange# CarConnectListener OnDeviceServiceStateChange.',
    ]);
  });

  test('optional functions may be missing: such an event ends with the call failure line only', async () => {
    const calls = [];
    await register(adapter, 'main', validListener({ onDeviceChange: (state) => calls.push(state) }));
    host.hilog.clear();
    await emitAndDeliver('OnDisconnectResult', 3);
    await emitAndDeliver('OnSurfaceTransferOnEvent', 1, 2, 'x');
    await emitAndDeliver('OnDeviceChange', 4);
    assert.deepEqual(calls, [4]);
    assert.deepEqual(texts(LEVEL.ERROR), new Array(2).fill('NotifyEvent# NotifyEvent error, napi_call_function fail.'));
  });

  test('functions are looked up at each event, so a listener may gain or replace them later', async () => {
    const listener = validListener();
    await register(adapter, 'main', listener);
    const seen = [];
    listener.onDisconnectResult = (result) => seen.push(['first', result]);
    await emitAndDeliver('OnDisconnectResult', 1);
    listener.onDisconnectResult = (result) => seen.push(['second', result]);
    await emitAndDeliver('OnDisconnectResult', 2);
    assert.deepEqual(seen, [['first', 1], ['second', 2]]);
  });

  test('an event with no subscribed listener is posted and then dropped on the main thread', async () => {
    assert.equal(adapter.registerConnectListener('only'), undefined);
    await until(() => completedRegistrations() === 1, 'the registration');
    host.hilog.clear();
    await emitAndDeliver('OnDeviceChange', 1);
    assert.deepEqual(deliveryTexts(), ['QueueWork# ConnectListenerManager QueueWork', 'PublishEvent# ConnectListenerManager PublishEvent']);
  });
});

test.describe('registration with the car service', () => {
  test('a refused registration is retried twice, 50 ms apart, with INFO lines and nothing told to script', async () => {
    host.carService.failRegistrations(2);
    const started = Date.now();
    assert.equal(adapter.registerConnectListener('s', validListener()), 0);
    await until(() => host.carService.isRegistered(), 'the third attempt');
    assert.ok(Date.now() - started >= 95, 'two pauses of 50 ms');
    assert.equal(registrationCalls(), 3);
    const initLines = moduleLines().filter((l) => l.args[0] === 'InitCallback');
    assert.deepEqual(
      initLines.map((l) => [l.level, l.text]),
      [
        [LEVEL.INFO, 'InitCallback# InitCallback'],
        [LEVEL.INFO, 'InitCallback# InitCallback failed, will retry after 50 milliseconds'],
        [LEVEL.INFO, 'InitCallback# InitCallback failed, will retry after 50 milliseconds'],
        [LEVEL.INFO, 'InitCallback# InitCallback success'],
      ],
    );
    assert.deepEqual(initLines[1].args, ['InitCallback', 50]);
  });

  test('an absent service gets exactly three attempts and three failure lines', async () => {
    host.carService.failRegistrations(10);
    assert.equal(adapter.registerConnectListener('s', validListener()), 0);
    await until(() => texts(LEVEL.INFO).filter((t) => t.includes('will retry')).length === 3, 'three failed attempts');
    // A fourth attempt would come 50 ms after the third failure; the registration has ended well before this.
    await delay(200);
    assert.equal(registrationCalls(), 3);
    assert.equal(host.carService.isRegistered(), false);
    assert.ok(!texts().includes('InitCallback# InitCallback success'));
  });

  test('every call, well-formed or not, starts one registration and only a valid one subscribes', async () => {
    const journal = [];
    const cases = [
      { args: ['one'], line: 'RegisterConnectListener# Error get cb info' },
      { args: ['a', recordingListener(journal), 'extra'], line: 'RegisterConnectListener# Error get cb info' },
      { args: [1, recordingListener(journal)], line: 'RegisterConnectListener# not napi_string param' },
      { args: ['a', 'listener'], line: 'ParseJSCarConnectListener# Failed to get object JSCarConnectListener' },
      { args: ['a', Object.assign(function carrier() {}, recordingListener(journal))], line: 'ParseJSCarConnectListener# Failed to get object JSCarConnectListener' },
      { args: ['a', { onDataReceive() {}, onDeviceStateChange() {} }], line: 'GetNamedProperty# no listener named onBindResult' },
      { args: ['a', { onBindResult() {}, onDataReceive: 'x', onDeviceStateChange() {} }], line: 'GetNamedProperty# Failed to get listener named onDataReceive' },
      { args: ['a', { onBindResult() {}, onDataReceive() {} }], line: 'GetNamedProperty# no listener named onDeviceStateChange' },
    ];
    for (const [index, { args, line }] of cases.entries()) {
      host.hilog.clear();
      assert.equal(adapter.registerConnectListener(...args), undefined, `case ${index}`);
      assert.ok(texts(LEVEL.ERROR).includes(line), `case ${index}: ${texts(LEVEL.ERROR)}`);
      await until(() => completedRegistrations() === 1, `registration ${index + 1}`);
    }
    const rejections = moduleLines(LEVEL.ERROR).filter((l) => l.format === '%{public}s# no listener named %{publlic}s');
    assert.equal(rejections.length, 1);
    await emitAndDeliver('OnBindResult', 'd', 0, 0, '');
    assert.deepEqual(journal, [], 'nothing was subscribed');
  });

  test('an empty session name is accepted and the required three functions are enough', async () => {
    host.hilog.clear();
    assert.equal(await register(adapter, '', validListener()), 0);
    const subscribeLines = texts().filter((line) => line.startsWith('SubscribeListener# '));
    assert.deepEqual(subscribeLines, [
      'SubscribeListener# ConnectListenerManager subscribeListener',
      'SubscribeListener# register ConnectListener success',
    ]);
  });
});

test.describe('sessions', () => {
  test('every session gets every event, in byte-wise order of the session names', async () => {
    const journal = [];
    for (const session of ['b', 'a', '', 'B']) {
      await register(adapter, session, recordingListener(journal, session));
    }
    await emitAndDeliver('OnDeviceChange', 2);
    assert.deepEqual(journal.map((e) => e.session), ['', 'B', 'a', 'b']);
  });

  test('a second registration under a taken name keeps the first listener', async () => {
    const journal = [];
    await register(adapter, 'same', recordingListener(journal, 'first'));
    host.hilog.clear();
    assert.equal(await register(adapter, 'same', recordingListener(journal, 'second')), 0);
    assert.ok(texts().includes('SubscribeListener# CarConnectListener has been sub'));
    await emitAndDeliver('OnDeviceChange', 1);
    assert.deepEqual(journal.map((e) => e.session), ['first']);
  });

  test('unregistering drops every session and the service registration, and always returns 0', async () => {
    const journal = [];
    await register(adapter, 'a', recordingListener(journal, 'a'));
    await register(adapter, 'b', recordingListener(journal, 'b'));
    assert.equal(adapter.unregisterConnectListener('ignored', 1, 2), 0);
    assert.equal(host.carService.isRegistered(), false);
    assert.equal(adapter.unregisterConnectListener(), 0);
    await register(adapter, 'c', recordingListener(journal, 'c'));
    await emitAndDeliver('OnDeviceChange', 1);
    assert.deepEqual(journal.map((e) => e.session), ['c']);
  });

  test('a newer adapter object takes over: listeners of the older one get nothing more', async () => {
    const journal = [];
    await register(adapter, 'old', recordingListener(journal, 'old'));
    const newer = rovanta.getCarConnectAdapter();
    await emitAndDeliver('OnDeviceChange', 1);
    assert.deepEqual(journal, []);
    await register(newer, 'new', recordingListener(journal, 'new'));
    await emitAndDeliver('OnDeviceChange', 2);
    assert.deepEqual(journal.map((e) => [e.session, e.self === newer]), [['new', true]]);
  });
});

test.describe('order and re-entry', () => {
  test('events keep their order and none is lost when several service threads emit at once', async () => {
    const received = [];
    await register(adapter, 'main', validListener({ onDataReceive: (type, data) => received.push([type, data]) }));
    host.hilog.setCapacity(0);
    try {
      await host.carService.emitMany({ callback: 'OnDataReceive', args: [1, 'burst'], count: 2000, threads: 4 });
      for (let index = 0; index < 50; index++) host.carService.emit('OnDataReceive', index, 'seq');
      await host.mainRunner.whenIdle();
    } finally {
      host.hilog.setCapacity(200000);
    }
    assert.equal(received.filter(([, data]) => data === 'burst').length, 2000);
    assert.deepEqual(
      received.filter(([, data]) => data === 'seq').map(([type]) => type),
      Array.from({ length: 50 }, (_, i) => i),
    );
  });

  test('the order of the queueing lines is the order of delivery when several service threads post', async () => {
    await register(adapter, 'main', validListener());
    host.hilog.clear();
    host.mainRunner.recordPosts(true);
    try {
      await host.carService.emitMany({ callback: 'OnDeviceChange', args: [1], count: 4000, threads: 4 });
      await host.mainRunner.whenIdle();
      const posters = host.mainRunner.posts().map((post) => post.thread);
      const loggers = moduleLines().filter((line) => line.text === 'QueueWork# ConnectListenerManager QueueWork').map((line) => line.thread);
      assert.equal(posters.length, 4000);
      assert.ok(new Set(posters).size > 1, 'several threads posted');
      assert.deepEqual(loggers, posters);
    } finally {
      host.mainRunner.recordPosts(false);
    }
  });

  // Session 'a', whose onDeviceChange records its call and then does `action`, and session 'b' after it.
  async function reenteringSessions(journal, action) {
    const first = recordingListener(journal, 'a');
    first.onDeviceChange = (...args) => {
      journal.push({ session: 'a', args });
      action();
    };
    await register(adapter, 'a', first);
    await register(adapter, 'b', recordingListener(journal, 'b'));
  }

  test('a listener that unregisters from inside its call stops delivery to the sessions after it', async () => {
    const journal = [];
    await reenteringSessions(journal, () => adapter.unregisterConnectListener());
    await emitAndDeliver('OnDeviceChange', 1);
    assert.deepEqual(journal.map((e) => e.session), ['a']);
  });

  test('a listener that registers from inside its call adds a session for later events', async () => {
    const journal = [];
    await reenteringSessions(journal, () => adapter.registerConnectListener('0-early', recordingListener(journal, '0-early')));
    await emitAndDeliver('OnDeviceChange', 1);
    await until(() => completedRegistrations() === 3, 'the registration made by the listener');
    await emitAndDeliver('OnDeviceChange', 2);
    assert.deepEqual(journal.map((e) => e.session), ['a', 'b', '0-early', 'a', 'b']);
  });

  test('a listener that replaces the adapter from inside its call: the delivery in progress completes safely', async () => {
    const journal = [];
    let replacement;
    await reenteringSessions(journal, () => {
      replacement = rovanta.getCarConnectAdapter();
    });
    await emitAndDeliver('OnDeviceChange', 1);
    await emitAndDeliver('OnDeviceChange', 2);
    assert.deepEqual(journal.map((e) => e.session), ['a', 'b']);
    assert.ok(replacement instanceof rovanta.CarAdapterClient);
    // The replaced manager is destroyed, but only after the delivery it was running: after session b's call.
    const destructorLine = '~ConnectListenerManager# ConnectListenerManager destructor';
    await until(() => texts().includes(destructorLine), 'the destruction of the replaced manager');
    const lines = texts();
    assert.ok(lines.indexOf(destructorLine) > lines.lastIndexOf('OnDeviceChange# CarConnectListener OnDeviceChange.'), lines.join('\n'));
  });

  test('a listener that throws is logged; the other listeners and later events still arrive', async () => {
    const journal = [];
    await reenteringSessions(journal, () => {
      throw new Error('listener failed');
    });
    const uncaught = [];
    const onUncaught = (error) => uncaught.push(error);
    process.on('uncaughtException', onUncaught);
    try {
      await emitAndDeliver('OnDeviceChange', 1);
      await emitAndDeliver('OnDeviceChange', 2);
    } finally {
      process.off('uncaughtException', onUncaught);
    }
    assert.deepEqual(uncaught, []);
    assert.deepEqual(journal.map((e) => [e.session, e.args[0]]), [['a', 1], ['b', 1], ['a', 2], ['b', 2]]);
    assert.ok(texts(LEVEL.ERROR).includes('NotifyEvent# NotifyEvent error, listener threw: Error: listener failed'));
  });
});
