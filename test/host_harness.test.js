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

// The host harness that every other suite stands on: what its stand-ins record and refuse.
const fs = require('fs');
const path = require('path');
const test = require('node:test');
const assert = require('node:assert/strict');
const { PRELUDE, runChild } = require('./support/child');
const { host, rovanta, CONNECT_PERMISSION, resetHost, validListener, recordingListener, register, until } = require('./support/rovanta');

test.beforeEach(resetHost);

test('caller identity: each field may be set alone, a token id of 2^32 or more is refused, and reset restores the default', () => {
  host.identity.set({ tokenId: 5 });
  host.identity.set({ systemApp: false });
  host.permissions.grant('ohos.permission.Z');
  host.permissions.grant('ohos.permission.A');
  assert.deepEqual(host.identity.get(), { systemApp: false, tokenId: 5 });
  assert.deepEqual(host.permissions.list(), ['ohos.permission.A', CONNECT_PERMISSION, 'ohos.permission.Z']);
  assert.throws(() => host.identity.set({ tokenId: 2 ** 32 }));
  host.identity.reset();
  assert.deepEqual(host.identity.get(), { systemApp: true, tokenId: 0x10001 });
  assert.deepEqual(host.permissions.list(), [CONNECT_PERMISSION]);
});

test.describe('HiLog', () => {
  test('past its capacity the oldest lines go and are counted; capacity 0 keeps nothing', () => {
    host.hilog.setCapacity(2);
    try {
      for (let index = 0; index < 5; index++) rovanta.DiscoveryMode;
      assert.equal(host.hilog.lines().length, 2);
      assert.equal(host.hilog.dropped(), 3);
      host.hilog.clear();
      assert.equal(host.hilog.dropped(), 0);
      host.hilog.setCapacity(0);
      rovanta.DiscoveryMode;
      assert.deepEqual(host.hilog.lines(), []);
    } finally {
      host.hilog.setCapacity(200000);
    }
  });

  // A child process, since the echo is chosen when the process starts. The module's first line comes from the
  // main thread, whose thread id is the process id; the registration line from a thread of its own.
  test('HILOG_STDERR=1 echoes each line in the log reader\'s layout, naming the process and the thread', () => {
    const child = runChild(`${PRELUDE}
      rovanta.getCarConnectAdapter().registerConnectListener('echo', listener());
      host.waitUntil(() => host.hilog.lines().some((line) => line.text === 'InitCallback# InitCallback success'),
        'the registration line', 10000);`, { env: { HILOG_STDERR: '1' }, timeout: 30000 });
    assert.equal(child.status, 0, child.stderr);
    const layout = /^\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} +(\d+) +(\d+) ([DIWEF]) C05400\/TravelVexarNapi: (.*)$/;
    const lines = child.stderr.trim().split('\n').map((line) => layout.exec(line));
    assert.ok(lines.length > 2 && lines.every(Boolean), child.stderr);
    const [, processId, mainThread] = lines[0];
    const registration = lines.find((line) => line[4] === 'InitCallback# InitCallback success');
    assert.ok(registration, child.stderr);
    assert.equal(mainThread, processId);
    assert.ok(lines.every((line) => line[1] === processId));
    assert.notEqual(registration[2], processId);
    assert.equal(registration[3], 'I');
  });
});

test.describe('the simulated car service', () => {
  test('emit refuses without a registered record, with a wrong arity, and with a wrong type', async () => {
    assert.throws(() => host.carService.emit('OnDeviceChange', 1), Error);
    const adapter = rovanta.getCarConnectAdapter();
    await register(adapter, 's', validListener());
    assert.throws(() => host.carService.emit('OnDeviceChange'), Error);
    assert.throws(() => host.carService.emit('OnDataReceive', 'x', 'y'), Error);
    assert.throws(() => host.carService.emit('NoSuchCallback', 1), Error);
    assert.throws(() => host.carService.emit(7, 1), Error);
    host.carService.emit(6, 0);
  });

  test('waitForCalls rejects on timeout and resolves with the calls of the member', async () => {
    await assert.rejects(host.carService.waitForCalls('CastOperation', 1, 30), /CastOperation/);
    const adapter = rovanta.getCarConnectAdapter();
    adapter.castOperation(3);
    const calls = await host.carService.waitForCalls('CastOperation', 1);
    assert.deepEqual(calls, [{ member: 'CastOperation', args: [3] }]);
    host.carService.clearCalls();
    assert.deepEqual(host.carService.calls(), []);
  });

  test('reset forgets results, delays, failures, device information and the registered record', async () => {
    host.carService.setResult('CastOperation', 9);
    host.carService.setDelay('CastOperation', 20000);
    host.carService.setDeviceInfo('info');
    host.carService.failRegistrations(5);
    host.carService.reset();
    const adapter = rovanta.getCarConnectAdapter();
    assert.equal(await host.within(adapter.castOperation(1), 'a call whose 20 s delay the reset forgot', 10000), 0);
    assert.equal(await adapter.getDeviceInfo(), '');
    await register(adapter, 's', validListener());
    host.carService.reset();
    assert.equal(host.carService.isRegistered(), false);
  });
});

test.describe('a car that answers', () => {
  // A session whose listener records every event it receives as [function, ...arguments].
  async function recordingSession() {
    const journal = [];
    const adapter = rovanta.getCarConnectAdapter();
    await register(adapter, 's', recordingListener(journal));
    return { adapter, events: () => journal.map(({ name, args }) => [name, ...args]) };
  }

  test('a malformed reaction or scenario throws naming the field and installs nothing', async () => {
    const faults = [
      [() => host.carService.onCall('CastOperations', {}), /member: no client member is named CastOperations/],
      [() => host.carService.onCall('CastOperation', { result: 1, delay: 5 }), /reaction\.delay is not a field/],
      [() => host.carService.onCall('CastOperation', { emit: [{ callback: 'OnDeviceChange', args: [1], delayMs: -1 }] }),
        /reaction\.emit\[0\]\.delayMs must be a whole number/],
      [() => host.carService.onCall('CastOperation', { emit: [{ callback: 'OnDeviceChange', args: ['1'] }] }),
        /reaction\.emit\[0\]\.args\[0\] must be a number/],
      [() => host.carService.onCall('CastOperation', { emit: [{ callback: 'OnBindResult', args: ['d', 1] }] }),
        /reaction\.emit\[0\]\.args: OnBindResult takes 4 arguments, got 2/],
      [() => host.carService.play({
        reactions: { CastOperation: { result: 7 } },
        timeline: [{ atMs: 0, callback: 'OnDeviceChange', args: [1] }, { atMs: 5, callback: 'OnDeviceChanged', args: [1] }],
      }), /timeline\[1\]\.callback: no callback is named OnDeviceChanged/],
      [() => host.carService.play({ reactions: { CastOperation: { result: 7 }, Cast: {} } }), /reactions\.Cast: no client/],
    ];
    for (const [fault, message] of faults) assert.throws(fault, message);
    const { adapter, events } = await recordingSession();
    assert.equal(await adapter.castOperation(1), 0);
    await host.mainRunner.whenIdle();
    assert.deepEqual(events(), []);
  });

  test('a reaction returns its result, emits its callbacks in order after the call, and ends after `times`', async () => {
    const { adapter, events } = await recordingSession();
    host.carService.setResult('StartBindTarget', 3);
    host.carService.onCall('StartBindTarget', {
      result: -2,
      times: 2,
      emit: [
        { callback: 'OnBindResult', args: ['car-1', 0, 2, 'pin'], delayMs: 20 },
        { callback: 3, args: [4294967297] },
      ],
    });
    assert.equal(await adapter.bindTarget(1, {}), -2);
    await until(() => events().length === 2, 'the two emitted callbacks');
    assert.deepEqual(events(), [['onBindResult', 'car-1', 0, 2, 'pin'], ['onDeviceChange', 1]]);
    assert.equal(await adapter.bindTarget(1, {}), -2);
    assert.equal(await adapter.bindTarget(1, {}), 3);
    host.carService.onCall('CastOperation', { result: 9 });
    host.carService.onCall('CastOperation', null);
    assert.equal(await adapter.castOperation(1), 0);
    await until(() => events().length === 4, 'the callbacks of the second answered call');
  });

  test('play emits the timeline by offset, counts steps with no record as skipped, and stops on reset', async () => {
    const early = await host.carService.play({ timeline: [{ atMs: 0, callback: 'OnDeviceChange', args: [1] }] });
    assert.deepEqual(early, { emitted: 0, skipped: 1, stopped: false });
    const { adapter, events } = await recordingSession();
    const outcome = await host.carService.play({
      reactions: { DisconnectDevice: { emit: [{ callback: 'OnDisconnectResult', args: [0] }] } },
      timeline: [
        { atMs: 30, callback: 'OnDataReceive', args: [2, 'late'] },
        { atMs: 0, callback: 'OnDataReceive', args: [1, 'early'] },
      ],
    });
    assert.deepEqual(outcome, { emitted: 2, skipped: 0, stopped: false });
    await host.mainRunner.whenIdle();
    assert.deepEqual(events(), [['onDataReceive', 1, 'early'], ['onDataReceive', 2, 'late']]);
    await adapter.disconnectDevice();
    await until(() => events().length === 3, 'the disconnect result the reaction emits');

    const playing = host.carService.play({ timeline: [{ atMs: 3600000, callback: 'OnDeviceChange', args: [1] }] });
    host.carService.reset();
    assert.deepEqual(await playing, { emitted: 0, skipped: 0, stopped: true });
  });

  test('a timeline set to start at registration waits for the first record, or for startTimelines, and reset ends it', async () => {
    const timeline = [0, 50, 100].map((atMs) => ({ atMs, callback: 'OnDataReceive', args: [atMs, 'step'] }));
    const played = host.carService.play({ timeline }, { start: 'registration' });
    const { events } = await recordingSession();
    assert.deepEqual(await host.within(played, 'the timeline'), { emitted: 3, skipped: 0, stopped: false });
    await host.mainRunner.whenIdle();
    assert.deepEqual(events(), timeline.map(({ atMs }) => ['onDataReceive', atMs, 'step']));

    host.carService.reset();
    const started = host.carService.play({ timeline: timeline.slice(0, 1) }, { start: 'registration' });
    host.carService.startTimelines();
    assert.deepEqual(await host.within(started, 'the started timeline'), { emitted: 0, skipped: 1, stopped: false });
    const waiting = host.carService.play({ timeline }, { start: 'registration' });
    host.carService.reset();
    assert.deepEqual(await host.within(waiting, 'the stopped timeline'), { emitted: 0, skipped: 0, stopped: true });
    assert.throws(() => host.carService.play({}, { start: 'later' }), /options\.start must be "now" or "registration"/);
  });

  // What the platform import does with ROVANTA_SCENARIO, in a child of whichever engine runs the suite (CI runs the
  // platform import itself on Node.js, Bun and Deno through the README's commands).
  test('a loaded scenario gives an app that registers at once its 0 ms step; a skipped step is named on stderr', () => {
    const timeline = [0, 50, 100].map((atMs) => ({ atMs, callback: 'OnDeviceChange', args: [atMs] }));
    const prompt = runChild(`${PRELUDE}
      host.carService.load(${JSON.stringify({ timeline })});
      const states = [];
      rovanta.getCarConnectAdapter().registerConnectListener('app', listener({ onDeviceChange(state) { states.push(state); } }));
      host.waitUntil(() => states.length === 3, 'three steps', 5000)
        .then(() => console.log(states.join(' ')), (error) => console.log(error.message, states.join(' ')));`);
    assert.equal(prompt.status, 0, prompt.stderr);
    assert.equal(prompt.stdout.trim(), '0 50 100');

    const skipped = runChild(`${PRELUDE}
      host.carService.play({ timeline: [{ atMs: 0, callback: 'OnDeviceChange', args: [1] }] });`);
    assert.equal(skipped.status, 0, skipped.stderr);
    assert.match(skipped.stderr, /^simulated car: timeline\[0\] \(OnDeviceChange\) skipped: no callback record is registered$/m);
  });

  test('every shipped scenario passes the checks', async () => {
    const folder = path.join(__dirname, '..', 'scenarios');
    const files = fs.readdirSync(folder).filter((name) => name.endsWith('.json'));
    assert.ok(files.length >= 3);
    for (const file of files) {
      const playing = host.carService.play(JSON.parse(fs.readFileSync(path.join(folder, file), 'utf8')));
      host.carService.reset();
      await playing;
    }
  });

  test('with recording off the calls leave no record; reset turns it back on', async () => {
    const adapter = rovanta.getCarConnectAdapter();
    host.carService.setRecording(false);
    assert.equal(await adapter.castOperation(1), 0);
    assert.deepEqual(host.carService.calls(), []);
    host.carService.reset();
    await adapter.castOperation(2);
    assert.deepEqual(host.carService.calls(), [{ member: 'CastOperation', args: [2] }]);
  });
});

// The backlog is queued while the script thread is busy, so that every event is due before delivery starts: a
// runner that drains due tasks in one go gives the script thread a turn or two in all, one that drains them in
// bounded batches gives it a turn per batch.
test('the main runner lets the script thread turn between batches while it works through a backlog of events', async () => {
  const EVENTS = 4000;
  let delivered = 0;
  const adapter = rovanta.getCarConnectAdapter();
  await register(adapter, 'backlog', validListener({ onDataReceive: () => delivered++ }));

  for (let index = 0; index < EVENTS; index++) host.carService.emit('OnDataReceive', index, 'backlog');
  let draining = true;
  const drained = host.mainRunner.whenIdle().finally(() => {
    draining = false;
  });
  let turns = 0;
  const deadline = Date.now() + 60000;
  while (draining) {
    if (Date.now() > deadline) throw new Error(`timed out waiting for ${EVENTS} queued events to be delivered`);
    turns++;
    await new Promise((resolve) => setImmediate(resolve));
  }
  await drained;
  assert.equal(delivered, EVENTS);
  assert.ok(turns >= 20, `${turns} turns of the script thread while ${EVENTS} queued events were delivered`);
});
