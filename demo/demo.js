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

// A session with the car, told as it happens: the module loaded as the platform loads it, talking to the
// simulated car service of the host platform. Lines starting with "app" are what the app's script does,
// "car" what the simulated car service does, "->" what reaches the app.
const host = require('../host');

const rovanta = host.requireNapi('carService.rovanta');
const car = host.carService;

function say(who, text) {
  console.log(`${who.padEnd(4)} ${text}`);
}

function delay(ms) {
  return new Promise((resolve) => setTimeout(resolve, ms));
}

async function waitForRegistration() {
  while (!car.isRegistered()) await delay(5);
}

// The car answers on its own threads; the module moves each answer to this (main) thread.
async function carSays(callback, ...args) {
  say('car', `${callback}(${args.map((a) => JSON.stringify(a)).join(', ')})`);
  car.emit(callback, ...args);
  await host.mainRunner.whenIdle();
}

function callbackForm(adapter, method, ...args) {
  return new Promise((resolve) => adapter[method](...args, resolve));
}

const listener = {
  onBindResult(deviceId, result, status, content) {
    say('->', `onBindResult: device ${deviceId}, result ${result}, status ${status}, content ${content}`);
  },
  onDataReceive(type, data) {
    say('->', `onDataReceive: type ${type}, data ${data}`);
  },
  onDeviceStateChange(state, deviceInfo) {
    say('->', `onDeviceStateChange: state ${state}, device ${deviceInfo}`);
  },
  onDeviceChange(state) {
    say('->', `onDeviceChange: state ${state}`);
  },
  onDeviceServiceStateChange(serviceId, state, serviceType) {
    say('->', `onDeviceServiceStateChange: service ${serviceId}, state ${state}, type ${serviceType}`);
  },
  onSurfaceTransferOnEvent(code, eventId, category) {
    say('->', `onSurfaceTransferOnEvent: code ${code}, event ${eventId}, category ${category}`);
  },
  onDisconnectResult(result) {
    say('->', `onDisconnectResult: result ${result}`);
  },
};

async function main() {
  say('app', `imports "carService.rovanta": ${Object.getOwnPropertyNames(rovanta).join(', ')}`);
  say('app', `DiscoveryMode = ${JSON.stringify(rovanta.DiscoveryMode)}`);

  host.identity.set({ systemApp: false });
  try {
    rovanta.getCarConnectAdapter();
  } catch (error) {
    say('->', `a non-system app is refused: code ${error.code}, "${error.message}"`);
  }
  host.identity.reset();

  const adapter = rovanta.getCarConnectAdapter();
  say('app', 'getCarConnectAdapter() as a system app holding ohos.permission.ALLOW_CONNECT_CAR');

  say('app', `registerConnectListener("demo", listener) = ${adapter.registerConnectListener('demo', listener)}`);
  await waitForRegistration();
  say('car', 'the module registered its seven callbacks from a background thread');

  const bindInfo = { NETWORK_ID: 'net-42', DEVICE_NAME: 'Family car', BIND_TYPE: 1, HAS_PIN: false };
  say('app', `bindTarget(1, ${JSON.stringify(bindInfo)}) -> ${await adapter.bindTarget(1, bindInfo)}`);
  const [bindCall] = car.calls().filter((c) => c.member === 'StartBindTarget');
  say('car', `received StartBindTarget(${bindCall.args.map((a) => JSON.stringify(a)).join(', ')})`);
  await carSays('OnBindResult', 'car-01', 0, 2, '{"pin":"ok"}');
  await carSays('OnDeviceStateChange', 1, '{"id":"car-01","name":"Family car"}');
  await carSays('OnDeviceChange', 1);
  await carSays('OnDeviceServiceStateChange', 'navigation', 1, 3);

  say('app', `startSurfaceTransfer({ DISPLAY_ID: 0 }) -> ${await adapter.startSurfaceTransfer({ DISPLAY_ID: 0 })}`);
  await carSays('OnSurfaceTransferOnEvent', 0, 1, 'surface-started');
  say('app', `castOperation(2), callback form -> ${await callbackForm(adapter, 'castOperation', 2)}`);

  car.setDeviceInfo('{"model":"Roadster","vin":"RV0001"}');
  say('app', `getDeviceInfo(1) -> ${await adapter.getDeviceInfo(1)}`);
  say('app', `getDeviceInfo(1), callback form -> ${await callbackForm(adapter, 'getDeviceInfo', 1)} (the callback gets the code)`);

  say('app', `sendEvent(4, "{\\"door\\":\\"open\\"}") -> ${await adapter.sendEvent(4, '{"door":"open"}')}`);
  say('app', `sendControlData(3, "volume=7") -> ${await adapter.sendControlData(3, 'volume=7')}`);
  await carSays('OnDataReceive', 3, 'volume=7 applied');

  car.setResult('CastOperation', -5);
  say('app', `castOperation(9) with the car refusing -> ${await adapter.castOperation(9)} (a service code resolves)`);
  try {
    adapter.castOperation('nine');
  } catch (error) {
    say('->', `castOperation("nine") throws at once: code ${error.code}, "${error.message}"`);
  }

  say('app', `stopSurfaceTransfer() -> ${await adapter.stopSurfaceTransfer()}`);
  await carSays('OnSurfaceTransferOnEvent', 0, 2, 'surface-stopped');
  say('app', `unbindTarget(1) -> ${await adapter.unbindTarget(1)}`);
  say('app', `disconnectDevice() -> ${await adapter.disconnectDevice()}`);
  await carSays('OnDisconnectResult', 0);

  car.setResult('CastOperation', 0);
  say('', 'every operation in both forms: a promise, or a trailing callback that gets one number');
  const operations = [
    ['bindTarget', 1, { NETWORK_ID: 'net-42' }],
    ['unbindTarget', 1],
    ['sendControlData', 3, 'volume=5'],
    ['startSurfaceTransfer', { DISPLAY_ID: 0 }],
    ['stopSurfaceTransfer'],
    ['castOperation', 2],
    ['disconnectDevice'],
    ['getDeviceInfo', 1],
    ['sendEvent', 4, 'ping'],
  ];
  for (const [method, ...args] of operations) {
    const promised = JSON.stringify(await adapter[method](...args));
    const calledBack = await callbackForm(adapter, method, ...args);
    say('app', `${method.padEnd(20)} promise -> ${promised.padEnd(40)} callback -> ${calledBack}`);
  }

  say('app', `unregisterConnectListener() = ${adapter.unregisterConnectListener()}`);
  say('car', `callbacks registered: ${car.isRegistered()}`);
  say('', `the module wrote ${host.hilog.lines().length} log lines; the service saw ${car.calls().length} calls`);
}

main().catch((error) => {
  console.error(error);
  process.exitCode = 1;
});
