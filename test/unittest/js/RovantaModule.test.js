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


// What a device can check of carService.rovanta without control over the car
// service or the caller's identity: the exports, the gate as the test app's
// identity meets it, parse faults, both forms of every operation and the
// results of listener registration.
import { describe, it, expect } from '@ohos/hypium';
import rovanta from '@ohos.carService.rovanta';

const PARAM_MESSAGE = 'Invalid input parameter.';
const GATE_MESSAGES = {
  201: 'Permission denied.',
  202: 'Permission denied, non-system app called system api.',
};

// Every operation with arguments that parse; the callback, when given, comes after them.
const OPERATIONS = [
  { method: 'bindTarget', args: [2, { a: 'b' }] },
  { method: 'unbindTarget', args: [3] },
  { method: 'sendControlData', args: [4, 'd'] },
  { method: 'startSurfaceTransfer', args: [{ x: 'y' }] },
  { method: 'stopSurfaceTransfer', args: [] },
  { method: 'castOperation', args: [5] },
  { method: 'disconnectDevice', args: [] },
  { method: 'getDeviceInfo', args: [6] },
  { method: 'sendEvent', args: [7, 'e'] },
];

function caught(call) {
  try {
    call();
  } catch (error) {
    return error;
  }
  return null;
}

// The factory passes the same gate as every method: its refusal, if any, is
// what each method call must meet too.
function gateRefusal() {
  const error = caught(() => rovanta.getCarConnectAdapter());
  if (error !== null) {
    expect(GATE_MESSAGES[error.code]).assertEqual(error.message);
  }
  return error;
}

function expectRefusedLike(refusal, call) {
  const error = caught(call);
  expect(error !== null).assertTrue();
  expect(error.code).assertEqual(refusal.code);
  expect(error.message).assertEqual(refusal.message);
}

function validListener() {
  return { onBindResult() {}, onDataReceive() {}, onDeviceStateChange() {} };
}

// A promise resolves with the service's code, or getDeviceInfo's text.
function expectPromiseResult(method, value) {
  expect(typeof value).assertEqual(method === 'getDeviceInfo' ? 'string' : 'number');
}

export default function rovantaModuleTest() {
  describe('RovantaModuleTest', () => {
    /**
     * @tc.name: ExportsAndClass
     * @tc.desc: the module exports the factory, DiscoveryMode and the class with its eleven methods
     * @tc.type: FUNC
     */
    it('ExportsAndClass', 0, () => {
      expect(JSON.stringify(Object.getOwnPropertyNames(rovanta).sort())).assertEqual(
        JSON.stringify(['CarAdapterClient', 'DiscoveryMode', 'getCarConnectAdapter']),
      );
      expect(typeof rovanta.getCarConnectAdapter).assertEqual('function');
      const methods = Object.getOwnPropertyNames(rovanta.CarAdapterClient.prototype).filter((n) => n !== 'constructor');
      const expected = [...OPERATIONS.map((op) => op.method), 'registerConnectListener', 'unregisterConnectListener'];
      expect(JSON.stringify(methods.sort())).assertEqual(JSON.stringify(expected.sort()));
      expect(new rovanta.CarAdapterClient() instanceof rovanta.CarAdapterClient).assertTrue();
    });

    /**
     * @tc.name: DiscoveryModeValues
     * @tc.desc: DiscoveryMode holds the four modes in order
     * @tc.type: FUNC
     */
    it('DiscoveryModeValues', 0, () => {
      expect(rovanta.DiscoveryMode).assertDeepEquals({
        NO_PERCEPTION_DISCOVERY: 1,
        BLUETOOTH_DISCOVERY: 2,
        USB_DISCOVERY: 3,
        QR_DISCOVERY: 4,
      });
      expect(JSON.stringify(Object.keys(rovanta.DiscoveryMode))).assertEqual(
        JSON.stringify(['NO_PERCEPTION_DISCOVERY', 'BLUETOOTH_DISCOVERY', 'USB_DISCOVERY', 'QR_DISCOVERY']),
      );
    });

    /**
     * @tc.name: FactoryAsIdentityAllows
     * @tc.desc: the factory builds an adapter, or refuses with 201 or 202 as every method then does
     * @tc.type: FUNC
     */
    it('FactoryAsIdentityAllows', 0, () => {
      const refusal = gateRefusal();
      if (refusal === null) {
        expect(rovanta.getCarConnectAdapter() instanceof rovanta.CarAdapterClient).assertTrue();
        return;
      }
      const adapter = new rovanta.CarAdapterClient();
      for (const op of OPERATIONS) {
        expectRefusedLike(refusal, () => adapter[op.method](...op.args));
      }
      expectRefusedLike(refusal, () => adapter.registerConnectListener('s', validListener()));
    });

    /**
     * @tc.name: ParseFaults
     * @tc.desc: a wrong argument type throws 401, a wrong argument count or callback throws "0"
     * @tc.type: FUNC
     */
    it('ParseFaults', 0, () => {
      if (gateRefusal() !== null) {
        return;
      }
      const adapter = rovanta.getCarConnectAdapter();
      const typeFaults = [
        () => adapter.bindTarget(1, 'not a map'),
        () => adapter.unbindTarget('1'),
        () => adapter.sendControlData(1, 2),
        () => adapter.startSurfaceTransfer(null),
        () => adapter.sendEvent('a', 'b'),
      ];
      for (const call of typeFaults) {
        const error = caught(call);
        expect(error !== null && error.code).assertEqual('401');
        expect(error.message).assertEqual(PARAM_MESSAGE);
      }
      for (const op of OPERATIONS) {
        const error = caught(() => adapter[op.method](...op.args, 'not a function'));
        expect(error !== null && error.code).assertEqual('0');
        expect(caught(() => adapter[op.method](...op.args, () => {}, 1)).code).assertEqual('0');
      }
    });

    /**
     * @tc.name: BothFormsSettleOnce
     * @tc.desc: each operation resolves its promise, and calls its callback once with one number
     * @tc.type: FUNC
     */
    it('BothFormsSettleOnce', 0, async () => {
      if (gateRefusal() !== null) {
        return;
      }
      const adapter = rovanta.getCarConnectAdapter();
      for (const op of OPERATIONS) {
        expectPromiseResult(op.method, await adapter[op.method](...op.args));
        const calls = [];
        await new Promise((resolve) => {
          const returned = adapter[op.method](...op.args, (...callbackArgs) => {
            calls.push(callbackArgs);
            resolve();
          });
          expect(returned).assertUndefined();
        });
        // A second call from the same completion would have happened by now.
        await Promise.resolve();
        expect(calls.length).assertEqual(1);
        expect(calls[0].length).assertEqual(1);
        expect(typeof calls[0][0]).assertEqual('number');
      }
    });

    /**
     * @tc.name: ListenerRegistrationResults
     * @tc.desc: registration returns 0 for a valid listener, undefined for a malformed call; unregistration 0
     * @tc.type: FUNC
     */
    it('ListenerRegistrationResults', 0, () => {
      if (gateRefusal() !== null) {
        return;
      }
      const adapter = rovanta.getCarConnectAdapter();
      expect(adapter.registerConnectListener('session', validListener())).assertEqual(0);
      expect(adapter.registerConnectListener('only a name')).assertUndefined();
      expect(adapter.registerConnectListener(1, validListener())).assertUndefined();
      expect(adapter.registerConnectListener('s', { onBindResult() {} })).assertUndefined();
      expect(adapter.unregisterConnectListener()).assertEqual(0);
    });
  });
}
