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

// An app's connection to the car, as a system app would write it: bind with a PIN, mirror the screen, send an
// event, ride out a dropped link, disconnect. Nothing here knows whether the car is real or simulated.
import rovanta from '@ohos.carService.rovanta';

const PIN = '4711';
const WAIT_MS = 5000;

type Listener = Required<rovanta.CarConnectListener>;
type EventName = keyof Listener;
type EventArgs<N extends EventName> = Parameters<Listener[N]>;

// The car's events so far, and the waits for one still to come.
const received: { name: EventName; args: unknown[] }[] = [];
const waiting = new Set<() => void>();

function log(text: string): void {
  console.log(text);
}

function arrived(name: EventName, args: unknown[]): void {
  log(`  car event ${name}(${args.map((arg) => JSON.stringify(arg)).join(', ')})`);
  received.push({ name, args });
  waiting.forEach((check) => check());
}

// The first event `name` whose arguments satisfy `matches`, whenever it came; fails after WAIT_MS, saying what it
// waited for.
function nextEvent<N extends EventName>(name: N, what: string, matches: (...args: EventArgs<N>) => boolean)
  : Promise<EventArgs<N>> {
  return new Promise((resolve, reject) => {
    const check = (): void => {
      const event = received.find((e) => e.name === name && matches(...(e.args as EventArgs<N>)));
      if (event !== undefined) {
        waiting.delete(check);
        clearTimeout(timer);
        resolve(event.args as EventArgs<N>);
      }
    };
    const timer = setTimeout(() => {
      waiting.delete(check);
      reject(new Error(`no ${what} (${name}) within ${WAIT_MS} ms`));
    }, WAIT_MS);
    waiting.add(check);
    check();
  });
}

const listener: Listener = {
  onBindResult: (deviceId, result, status, content) => arrived('onBindResult', [deviceId, result, status, content]),
  onDataReceive: (type, data) => arrived('onDataReceive', [type, data]),
  onDeviceStateChange: (state, deviceInfo) => arrived('onDeviceStateChange', [state, deviceInfo]),
  onDeviceChange: (state) => arrived('onDeviceChange', [state]),
  onDeviceServiceStateChange: (serviceId, state, serviceType) =>
    arrived('onDeviceServiceStateChange', [serviceId, state, serviceType]),
  onSurfaceTransferOnEvent: (code, eventId, category) => arrived('onSurfaceTransferOnEvent', [code, eventId, category]),
  onDisconnectResult: (result) => arrived('onDisconnectResult', [result]),
};

function check(code: number, what: string): void {
  if (code !== 0) {
    throw new Error(`${what} failed with code ${code}`);
  }
  log(`${what}: ok`);
}

async function connect(adapter: rovanta.CarAdapterClient): Promise<void> {
  if (adapter.registerConnectListener('example', listener) !== 0) {
    throw new Error('the listener was refused');
  }
  await nextEvent('onDeviceChange', 'car in range', (state) => state === 1);
  check(await adapter.bindTarget(rovanta.DiscoveryMode.BLUETOOTH_DISCOVERY, { NETWORK_ID: 'net-1', HAS_PIN: true }),
    'bindTarget');
  await nextEvent('onBindResult', 'request for a PIN', (deviceId, result, status) => status === 1);
  check(await adapter.sendControlData(1, JSON.stringify({ PIN_CODE: PIN })), 'sendControlData (PIN)');
  const [deviceId] = await nextEvent('onBindResult', 'bond', (id, result, status) => result === 0 && status === 2);
  log(`bound to ${deviceId}`);
}

async function mirrorScreen(adapter: rovanta.CarAdapterClient): Promise<void> {
  check(await adapter.startSurfaceTransfer({ DISPLAY_ID: 0 }), 'startSurfaceTransfer');
  await nextEvent('onSurfaceTransferOnEvent', 'start of the surface transfer', (c, e, category) =>
    category === 'surface-started');
  check(await adapter.sendEvent(4, JSON.stringify({ door: 'open' })), 'sendEvent');
  const [, answer] = await nextEvent('onDataReceive', "car's answer", (type) => type === 4);
  log(`the car answered ${answer}`);
  await nextEvent('onDeviceStateChange', 'loss of the link', (state) => state === 0);
  await nextEvent('onDeviceStateChange', 'return of the link', (state, info) => state === 1 && info.includes('back'));
  log('the link dropped and came back');
}

async function main(): Promise<void> {
  const adapter = rovanta.getCarConnectAdapter();
  await connect(adapter);
  await mirrorScreen(adapter);
  adapter.disconnectDevice((code) => log(`disconnectDevice (callback form): code ${code}`));
  const [result] = await nextEvent('onDisconnectResult', 'disconnect result', () => true);
  log(`disconnected: result ${result}`);
  adapter.unregisterConnectListener();
}

main().catch((error: Error) => {
  console.error(`example failed: ${error.message}`);
  // Where the app runs on Node.js, the failure also shows in the exit status.
  const node = (globalThis as { process?: { exitCode?: number } }).process;
  if (node !== undefined) {
    node.exitCode = 1;
  }
});
