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

// The paths the benchmarks measure, each on two targets: the module through the simulated car service, and the
// floor addon (bench/floor) doing the least a bridge can do. The call paths also run on a third, the floor's call
// behind the N-API steps the module's design adds to every call (`gate`): the share of the module's cost that no
// implementation of the design can save. Every wait is bounded and names what it waited for.
const path = require('node:path');
const host = require('../host');

const IN_FLIGHT = 1000;
const WAIT_MS = 120000;

// Resolves as `promise` does, or rejects naming `what` after `ms`.
function within(promise, what, ms = WAIT_MS) {
  return host.within(promise, what, ms);
}

function loadFloor() {
  const record = { exports: {} };
  process.dlopen(record, path.join(host.moduleRoot, 'lib', 'bench', 'floor.node'));
  return record.exports;
}

// The same four values on both targets: OnBindResult(deviceId, result, status, content).
const EVENT_ARGS = ['device', 0, 1, 'payload'];

function countingListener() {
  const listener = {
    delivered: 0,
    onBindResult() {
      listener.delivered++;
    },
    onDataReceive() {},
    onDeviceStateChange() {},
  };
  return listener;
}

// Both targets, ready to measure. The module's listener is registered and the car service holds its record.
async function setUp() {
  const floor = loadFloor();
  const rovanta = host.requireNapi('carService.rovanta');
  const adapter = rovanta.getCarConnectAdapter();
  const moduleListener = countingListener();
  adapter.registerConnectListener('bench', moduleListener);
  await within(host.carService.waitForCalls('RegisterCarConnectListener', 1), 'the listener registration');
  await within(host.mainRunner.whenIdle(), 'the registration to settle on the main runner');
  const recordingOff = typeof host.carService.setRecording === 'function';
  if (recordingOff) host.carService.setRecording(false);
  host.carService.clearCalls();
  const floorListener = countingListener();
  const gatedAdapter = new floor.GatedAdapter();
  const targets = {
    module: {
      call: (value) => adapter.castOperation(value),
      callWith: (value, callback) => adapter.castOperation(value, callback),
      listener: moduleListener,
      emit: async (count, threads) => {
        await host.carService.emitMany({ callback: 'OnBindResult', args: EVENT_ARGS, count, threads });
        await host.mainRunner.whenIdle();
      },
    },
    floor: {
      call: (value) => floor.castOperation(value),
      callWith: (value, callback) => floor.castOperation(value, callback),
      listener: floorListener,
      emit: (count, threads) => floor.emitMany(floorListener, count, threads),
    },
    gate: {
      call: (value) => gatedAdapter.castOperation(value),
      callWith: (value, callback) => gatedAdapter.castOperation(value, callback),
    },
  };
  return { floor, targets, recordingOff };
}

// Each path runs `count` operations on a target and returns nothing; it throws if any event went missing.
const PATHS = {
  'call, one at a time': async (target, count) => {
    for (let index = 0; index < count; index++) await target.call(index);
  },
  [`call, ${IN_FLIGHT} in flight`]: async (target, count) => {
    for (let done = 0; done < count; done += IN_FLIGHT) {
      const batch = [];
      for (let index = 0; index < IN_FLIGHT && done + index < count; index++) batch.push(target.call(index));
      await Promise.all(batch);
    }
  },
  'call, callback form': async (target, count) => {
    for (let index = 0; index < count; index++) await new Promise((resolve) => target.callWith(index, resolve));
  },
  'event, 1 service thread': (target, count) => deliver(target, count, 1),
  'event, 4 service threads': (target, count) => deliver(target, count, 4),
};

async function deliver(target, count, threads) {
  const before = target.listener.delivered;
  await target.emit(count, threads);
  const delivered = target.listener.delivered - before;
  if (delivered !== count) throw new Error(`${delivered} of ${count} events reached the listener`);
}

function isEventPath(name) {
  return name.startsWith('event');
}

module.exports = { within, setUp, PATHS, isEventPath };
