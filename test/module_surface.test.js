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
  CONNECT_PERMISSION,
  ENGINE_PERMISSION,
  LEVEL,
  METHODS,
  validListener,
  resetHost,
  moduleLines,
  texts,
  until,
  completedRegistrations,
} = require('./support/rovanta');

const NON_SYSTEM_MESSAGE = 'Permission denied, non-system app called system api.';

test.beforeEach(resetHost);

test.describe('loading and exports', () => {
  test('the loader finds the module by its lower-cased name and returns one exports object', () => {
    assert.equal(host.requireNapi('carService.rovanta'), rovanta);
    assert.throws(() => host.requireNapi('carService.missing'), /lib\/module\/carservice\/libmissing\.z\.so/);
  });

  test('exports hold the factory, the enumeration getter and the class, and nothing else', () => {
    assert.deepEqual(Object.getOwnPropertyNames(rovanta).sort(), ['CarAdapterClient', 'DiscoveryMode', 'getCarConnectAdapter']);
    assert.equal(typeof Object.getOwnPropertyDescriptor(rovanta, 'getCarConnectAdapter').value, 'function');
    const discovery = Object.getOwnPropertyDescriptor(rovanta, 'DiscoveryMode');
    assert.equal(typeof discovery.get, 'function');
    assert.equal(discovery.set, undefined);
    assert.equal(typeof rovanta.CarAdapterClient, 'function');
    assert.equal(rovanta.CarAdapterClient.name, 'CarAdapterClient');
  });

  test('every read builds a fresh object with the four modes and no zero member', () => {
    const first = rovanta.DiscoveryMode;
    const second = rovanta.DiscoveryMode;
    assert.notEqual(first, second);
    for (const modes of [first, second]) {
      assert.deepEqual(Object.entries(modes), [['NO_PERCEPTION_DISCOVERY', 1], ['BLUETOOTH_DISCOVERY', 2], ['USB_DISCOVERY', 3], ['QR_DISCOVERY', 4]]);
    }
    assert.deepEqual(texts(LEVEL.INFO), ['DiscoveryMode# DiscoveryMode', 'DiscoveryMode# DiscoveryMode']);
  });
});

test.describe('factory and class', () => {
  test('getCarConnectAdapter constructs, replaces the previous client and manager, then passes the gate', () => {
    rovanta.getCarConnectAdapter();
    host.hilog.clear();
    const adapter = rovanta.getCarConnectAdapter();
    assert.ok(adapter instanceof rovanta.CarAdapterClient);
    const lines = moduleLines();
    assert.deepEqual(
      lines.map((l) => l.text),
      [
        'GetCarConnectAdapter# GetCarConnectAdapter',
        'CarAdapterClient# CarAdapterClient',
        'ConnectListenerManager# ConnectListenerManager constructor',
        '~ConnectListenerManager# ConnectListenerManager destructor',
        '~CarAdapterClient# ~CarAdapterClient',
        'GetCarConnectAdapter# CarAdapterClient GetCarConnectAdapter',
      ],
    );
    for (const line of lines) {
      assert.equal(line.tag, 'TravelVexarNapi');
      assert.equal(line.type, 3);
      assert.equal(line.level, LEVEL.INFO);
      assert.ok(line.format.startsWith('%{public}s# '));
    }
  });

  test('a replaced client is destroyed at the replacement, even while its registration is still retrying', async () => {
    host.carService.failRegistrations(2);
    const adapter = rovanta.getCarConnectAdapter();
    adapter.registerConnectListener('s', validListener());
    host.hilog.clear();
    rovanta.getCarConnectAdapter();
    assert.ok(texts().includes('~CarAdapterClient# ~CarAdapterClient'), texts().join('\n'));
    await until(() => completedRegistrations() === 1, 'the registration');
  });

  test('constructing with new is a construction like any other and passes no gate', () => {
    rovanta.getCarConnectAdapter();
    host.identity.set({ systemApp: false });
    host.hilog.clear();
    const adapter = new rovanta.CarAdapterClient();
    assert.ok(adapter instanceof rovanta.CarAdapterClient);
    assert.deepEqual(texts(), [
      'CarAdapterClient# CarAdapterClient',
      'ConnectListenerManager# ConnectListenerManager constructor',
      '~ConnectListenerManager# ConnectListenerManager destructor',
      '~CarAdapterClient# ~CarAdapterClient',
    ]);
  });
});

test.describe('the gate', () => {
  // The system-app test comes first: a non-system caller is refused before the permission is looked at.
  const refusals = [
    { caller: 'a non-system caller', systemApp: false, code: '202', message: NON_SYSTEM_MESSAGE, serviceLines: 0 },
    { caller: 'a system caller without the permission', systemApp: true, code: '201', message: 'Permission denied.', serviceLines: METHODS.length + 1 },
  ];
  for (const { caller, systemApp, code, message, serviceLines } of refusals) {
    test(`${caller} gets ${code} from the factory and from every method, before any service call`, () => {
      const adapter = rovanta.getCarConnectAdapter();
      host.identity.set({ systemApp });
      host.permissions.revoke(CONNECT_PERMISSION);
      host.hilog.clear();

      assert.throws(() => rovanta.getCarConnectAdapter(), { code, message });
      for (const method of METHODS) {
        assert.throws(() => adapter[method.name](...method.args()), { code, message }, method.name);
      }
      // The permission check logs under the service tag, naming the engine permission.
      const permissionLines = moduleLines().filter((l) => l.tag === 'TravelService');
      assert.equal(permissionLines.length, serviceLines);
      for (const line of permissionLines) {
        assert.equal(line.level, LEVEL.ERROR);
        assert.deepEqual(line.args, ['CheckSelfIsPermissible', ENGINE_PERMISSION]);
      }
      const gateText = `HandleCarAdapter# ${systemApp ? 'Permission denied, Interface caller does not have permission.' : message}`;
      const gateLines = moduleLines(LEVEL.ERROR).filter((l) => l.args[0] === 'HandleCarAdapter');
      assert.equal(gateLines.length, METHODS.length + 1);
      assert.ok(gateLines.every((l) => l.text === gateText), gateLines.map((l) => l.text).join('\n'));
      assert.ok(texts(LEVEL.ERROR).includes(`ThrowNapiError# throw err code: ${code}, message: ${message}`));
      assert.deepEqual(host.carService.calls(), []);
    });
  }

  test('a denied registration starts no registration with the car service', async () => {
    const adapter = rovanta.getCarConnectAdapter();
    host.identity.set({ systemApp: false });
    assert.throws(() => adapter.registerConnectListener('s', {}), { code: '202' });
    await new Promise((resolve) => setTimeout(resolve, 100));
    assert.equal(host.carService.isRegistered(), false);
    assert.deepEqual(host.carService.calls(), []);
  });

  test('the permission belongs to the process token: granting it lets calls through again', async () => {
    const adapter = rovanta.getCarConnectAdapter();
    host.permissions.revoke(CONNECT_PERMISSION);
    assert.throws(() => adapter.castOperation(1), { code: '201' });
    host.permissions.grant(CONNECT_PERMISSION);
    assert.equal(await adapter.castOperation(1), 0);
  });
});

test.describe('methods without a native client', () => {
  // Engines that check the receiver of class methods (V8's signatures) refuse a foreign `this` before the
  // module sees the call; the others reach the wrapper, which finds no client behind it.
  test('a method called on an object that wraps no client ends without a service call', () => {
    const adapter = rovanta.getCarConnectAdapter();
    for (const method of METHODS) {
      for (const receiver of [{}, Object.create(rovanta.CarAdapterClient.prototype)]) {
        host.hilog.clear();
        let outcome;
        try {
          outcome = { returned: adapter[method.name].call(receiver, ...method.args()) };
        } catch (error) {
          outcome = { error };
        }
        if (outcome.error) {
          assert.ok(outcome.error instanceof TypeError, `${method.name}: ${outcome.error}`);
          assert.deepEqual(texts(), []);
        } else {
          assert.equal(outcome.returned, undefined, method.name);
          assert.deepEqual(texts(), [`${method.wrapper}# ${method.wrapper}`, `${method.wrapper}# Get CarAdapterClient failed`]);
        }
      }
    }
    assert.deepEqual(host.carService.calls(), []);
  });

  test('an older adapter keeps working after a newer one replaced its native client', async () => {
    const older = rovanta.getCarConnectAdapter();
    rovanta.getCarConnectAdapter();
    assert.equal(await older.castOperation(7), 0);
    assert.deepEqual(host.carService.calls(), [{ member: 'CastOperation', args: [7] }]);
  });
});
