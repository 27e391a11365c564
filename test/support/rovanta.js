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

// Shared by the suites: the module loaded as the platform loads it, and a clean slate per test.
const host = require('../../host');

const rovanta = host.requireNapi('carService.rovanta');

const CONNECT_PERMISSION = 'ohos.permission.ALLOW_CONNECT_CAR';
const ENGINE_PERMISSION = 'ohos.permission.ACCESS_CAR_SYNAPSE';
const LOG_DOMAIN = 0xd005400;
const LEVEL = { DEBUG: 3, INFO: 4, WARN: 5, ERROR: 6, FATAL: 7 };

// Every adapter method with an argument list that passes parsing (callback slot left empty).
const METHODS = [
  { name: 'registerConnectListener', wrapper: 'RegisterConnectListener', args: () => ['s', validListener()] },
  { name: 'unregisterConnectListener', wrapper: 'UnRegisterConnectListener', args: () => [] },
  { name: 'bindTarget', wrapper: 'StartBindTarget', args: () => [1, { k: 'v' }] },
  { name: 'unbindTarget', wrapper: 'StopBindTarget', args: () => [1] },
  { name: 'sendControlData', wrapper: 'SendControllData', args: () => [1, 'data'] },
  { name: 'startSurfaceTransfer', wrapper: 'StartSurfaceTransfer', args: () => [{ k: 'v' }] },
  { name: 'stopSurfaceTransfer', wrapper: 'StopSurfaceTransfer', args: () => [] },
  { name: 'castOperation', wrapper: 'CastOperation', args: () => [1] },
  { name: 'disconnectDevice', wrapper: 'Disconnect', args: () => [] },
  { name: 'getDeviceInfo', wrapper: 'GetDeviceInfo', args: () => [0] },
  { name: 'sendEvent', wrapper: 'SendEventTo', args: () => [1, 'data'] },
];

function validListener(extra = {}) {
  return { onBindResult() {}, onDataReceive() {}, onDeviceStateChange() {}, ...extra };
}

const LISTENER_FUNCTIONS = ['onBindResult', 'onDataReceive', 'onDeviceStateChange', 'onDeviceChange',
  'onDeviceServiceStateChange', 'onSurfaceTransferOnEvent', 'onDisconnectResult'];

// A listener whose seven functions record every call with its receiver, in one shared journal.
function recordingListener(journal, session = '') {
  const listener = {};
  for (const name of LISTENER_FUNCTIONS) {
    listener[name] = function record(...args) {
      journal.push({ session, name, self: this, args });
    };
  }
  return listener;
}

function resetHost() {
  host.identity.reset();
  host.carService.reset();
  host.hilog.clear();
}

// The module's own lines, optionally only those of one level.
function moduleLines(level) {
  return host.hilog.lines().filter((line) => line.domain === LOG_DOMAIN && (level === undefined || line.level === level));
}

function texts(level) {
  return moduleLines(level).map((line) => line.text);
}

function delay(ms) {
  return new Promise((resolve) => setTimeout(resolve, ms));
}

// Waits until `condition` holds; fails the test, naming `what`, after timeoutMs.
function until(condition, what, timeoutMs = 2000) {
  return host.waitUntil(condition, what, timeoutMs);
}

// Registration threads that have registered the callback record and logged it.
function completedRegistrations() {
  return texts().filter((text) => text === 'InitCallback# InitCallback success').length;
}

// Registers and waits until the registration of the call is done: the car service holds the callback record, and
// neither a late registration nor its log line can fall into what the test does next.
async function register(adapter, session, listener) {
  const completedBefore = completedRegistrations();
  const result = adapter.registerConnectListener(session, listener);
  await until(() => completedRegistrations() > completedBefore, 'the registration');
  return result;
}

module.exports = {
  host,
  rovanta,
  CONNECT_PERMISSION,
  ENGINE_PERMISSION,
  LEVEL,
  METHODS,
  validListener,
  recordingListener,
  resetHost,
  moduleLines,
  texts,
  delay,
  until,
  completedRegistrations,
  register,
};
