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
// simulated car service of the host platform, which plays scenarios/session.json: it answers the app's calls by
// itself and drops the link for a moment. Lines starting with "app" are what the app's script does, "car" what
// the simulated car does, "->" what reaches the app.
const fs = require('fs');
const path = require('path');
let host;
let rovanta;
try {
  host = require('../host');
  rovanta = host.requireNapi('carService.rovanta');
} catch (error) {
  console.error(error.message);
  process.exit(1);
}
const car = host.carService;
const SCENARIO = path.join(__dirname, '..', 'scenarios', 'session.json');
const WAIT_MS = 5000;

function say(who, text) {
  console.log(`${who.padEnd(4)} ${text}`);
}

// Every listener call so far, and the waits for one still to come.
const received = [];
const waiting = new Set();

function arrived(name, args) {
  received.push({ name, args });
  for (const waiter of waiting) waiter();
}

// Resolves with the arguments of the first listener call of `name` whose arguments satisfy `matches`, whenever
// it came; rejects after WAIT_MS, naming what it waited for.
function eventOf(name, what, matches = () => true) {
  return new Promise((resolve, reject) => {
    const check = () => {
      const event = received.find((e) => e.name === name && matches(...e.args));
      if (event) {
        waiting.delete(check);
        clearTimeout(timer);
        resolve(event.args);
      }
    };
    const timer = setTimeout(() => {
      waiting.delete(check);
      reject(new Error(`waited ${WAIT_MS} ms for ${what} (${name}), in vain`));
    }, WAIT_MS);
    waiting.add(check);
    check();
  });
}

// Waits for a state of the simulated car that no event announces; bounded like eventOf.
function stateOf(condition, what) {
  return host.waitUntil(condition, what, WAIT_MS);
}

function callbackForm(adapter, method, ...args) {
  return new Promise((resolve) => adapter[method](...args, resolve));
}

const listener = {
  onBindResult(deviceId, result, status, content) {
    say('->', `onBindResult: device ${deviceId}, result ${result}, status ${status}, content ${content}`);
    arrived('onBindResult', [deviceId, result, status, content]);
  },
  onDataReceive(type, data) {
    say('->', `onDataReceive: type ${type}, data ${data}`);
    arrived('onDataReceive', [type, data]);
  },
  onDeviceStateChange(state, deviceInfo) {
    say('->', `onDeviceStateChange: state ${state}, device ${deviceInfo}`);
    arrived('onDeviceStateChange', [state, deviceInfo]);
  },
  onDeviceChange(state) {
    say('->', `onDeviceChange: state ${state}`);
    arrived('onDeviceChange', [state]);
  },
  onDeviceServiceStateChange(serviceId, state, serviceType) {
    say('->', `onDeviceServiceStateChange: service ${serviceId}, state ${state}, type ${serviceType}`);
    arrived('onDeviceServiceStateChange', [serviceId, state, serviceType]);
  },
  onSurfaceTransferOnEvent(code, eventId, category) {
    say('->', `onSurfaceTransferOnEvent: code ${code}, event ${eventId}, category ${category}`);
    arrived('onSurfaceTransferOnEvent', [code, eventId, category]);
  },
  onDisconnectResult(result) {
    say('->', `onDisconnectResult: result ${result}`);
    arrived('onDisconnectResult', [result]);
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

  say('car', `plays ${path.relative(process.cwd(), SCENARIO)}: answers of its own, and a timeline (the car in ` +
    'range at 0 ms, a dropped link later on) that starts when the module registers with the car');
  const played = car.play(JSON.parse(fs.readFileSync(SCENARIO, 'utf8')), { start: 'registration' });

  say('app', `registerConnectListener("demo", listener) = ${adapter.registerConnectListener('demo', listener)}`);
  await stateOf(() => car.isRegistered(), "the car's record of the module's seven callbacks");
  say('car', 'the module registered its seven callbacks from a background thread: the timeline starts');
  await eventOf('onDeviceChange', 'the car coming into range', (state) => state === 1);

  const bindInfo = { NETWORK_ID: 'net-42', DEVICE_NAME: 'Family car', BIND_TYPE: 1, HAS_PIN: true };
  say('app', `bindTarget(BLUETOOTH_DISCOVERY, ${JSON.stringify(bindInfo)}) -> ` +
    `${await adapter.bindTarget(rovanta.DiscoveryMode.BLUETOOTH_DISCOVERY, bindInfo)}`);
  await eventOf('onBindResult', 'the car asking for a PIN', (deviceId, result, status) => status === 1);
  say('app', `sendControlData(1, PIN) -> ${await adapter.sendControlData(1, '{"PIN_CODE":"4711"}')}`);
  await eventOf('onBindResult', 'the bond', (deviceId, result, status) => status === 2);

  say('app', `startSurfaceTransfer({ DISPLAY_ID: 0 }) -> ${await adapter.startSurfaceTransfer({ DISPLAY_ID: 0 })}`);
  await eventOf('onSurfaceTransferOnEvent', 'the surface transfer starting', (c, e, category) => category === 'surface-started');
  say('app', `castOperation(2), callback form -> ${await callbackForm(adapter, 'castOperation', 2)}`);

  car.setDeviceInfo('{"model":"Roadster","vin":"RV0001"}');
  say('app', `getDeviceInfo(1) -> ${await adapter.getDeviceInfo(1)}`);
  say('app', `getDeviceInfo(1), callback form -> ${await callbackForm(adapter, 'getDeviceInfo', 1)} (the callback gets the code)`);

  say('app', `sendEvent(4, "{\\"door\\":\\"open\\"}") -> ${await adapter.sendEvent(4, '{"door":"open"}')}`);
  await eventOf('onDataReceive', "the car's answer to the event", (type) => type === 4);

  await eventOf('onDeviceStateChange', 'the link dropping', (state, info) => state === 0 && info.includes('link lost'));
  await eventOf('onDeviceStateChange', 'the link coming back', (state, info) => state === 1 && info.includes('link back'));
  const outcome = await played;
  say('car', `timeline played: ${outcome.emitted} emitted, ${outcome.skipped} skipped`);

  car.setResult('CastOperation', -5);
  say('app', `castOperation(9) with the car refusing -> ${await adapter.castOperation(9)} (a service code resolves)`);
  try {
    adapter.castOperation('nine');
  } catch (error) {
    say('->', `castOperation("nine") throws at once: code ${error.code}, "${error.message}"`);
  }

  say('app', `stopSurfaceTransfer() -> ${await adapter.stopSurfaceTransfer()}`);
  await eventOf('onSurfaceTransferOnEvent', 'the surface transfer stopping', (c, e, category) => category === 'surface-stopped');
  say('app', `unbindTarget(1) -> ${await adapter.unbindTarget(1)}`);
  say('app', `disconnectDevice() -> ${await adapter.disconnectDevice()}`);
  await eventOf('onDisconnectResult', 'the disconnect result');

  car.reset();
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
  say('', `the module wrote ${host.hilog.lines().length} log lines`);
}

main().catch((error) => {
  console.error(error.message);
  process.exitCode = 1;
});
