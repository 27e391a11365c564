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

// What the declaration of "carService.rovanta" lets typed code do, and what it refuses: `npm run typecheck`
// compiles this file, and fails if a line under @ts-expect-error compiles.
import rovanta from '@ohos.carService.rovanta';

export async function allowed(): Promise<void> {
  const adapter: rovanta.CarAdapterClient = rovanta.getCarConnectAdapter();
  const listener: rovanta.CarConnectListener = {
    onBindResult(deviceId: string, result: number, status: number, content: string): void {},
    onDataReceive(type: number, data: string): void {},
    onDeviceStateChange(state: number, deviceInfo: string): void {},
    onDisconnectResult(result: number): void {},
  };
  const registered: number | undefined = adapter.registerConnectListener('session', listener);
  const unregistered: number = adapter.unregisterConnectListener();
  const mode: number = rovanta.DiscoveryMode.QR_DISCOVERY;
  const bound: number = await adapter.bindTarget(mode, { NETWORK_ID: 'net-1', HAS_PIN: true, PORT: 8080, NOTE: null });
  adapter.bindTarget(rovanta.DiscoveryMode.USB_DISCOVERY, {}, (code: number) => {});
  const info: string = await adapter.getDeviceInfo();
  const typed: string = await adapter.getDeviceInfo(1);
  adapter.getDeviceInfo(1, (code: number) => {});
  const codes: number[] = await Promise.all([
    adapter.unbindTarget(1),
    adapter.sendControlData(1, 'data'),
    adapter.startSurfaceTransfer({ DISPLAY_ID: 0 }),
    adapter.stopSurfaceTransfer(),
    adapter.castOperation(2),
    adapter.disconnectDevice(),
    adapter.sendEvent(4, '{}'),
  ]);
  try {
    adapter.castOperation(1);
  } catch (error) {
    const code: string = (error as rovanta.AdapterError).code;
  }
  void [registered, unregistered, bound, info, typed, codes];
}

export function refused(adapter: rovanta.CarAdapterClient): void {
  // @ts-expect-error a listener needs onBindResult, onDataReceive and onDeviceStateChange
  adapter.registerConnectListener('session', { onBindResult() {}, onDataReceive() {} });
  // @ts-expect-error the listener's functions get numbers where the events carry numbers
  adapter.registerConnectListener('session', { onBindResult() {}, onDataReceive(type: string) {}, onDeviceStateChange() {} });
  // @ts-expect-error the mode is a number, not a string
  adapter.bindTarget('1', {});
  // @ts-expect-error the callback gets one code, not an (error, data) pair
  adapter.castOperation(1, (error: Error, data: number) => {});
  // @ts-expect-error the promise of getDeviceInfo resolves with text
  const code: Promise<number> = adapter.getDeviceInfo(1);
  // @ts-expect-error the callback form of getDeviceInfo needs the type first
  adapter.getDeviceInfo((code: number) => {});
  // @ts-expect-error a map's values are texts, numbers, booleans or null
  adapter.startSurfaceTransfer({ DISPLAY: { id: 0 } });
  // @ts-expect-error DiscoveryMode has no member for 0
  const none = rovanta.DiscoveryMode.NONE;
  void [code, none];
}
