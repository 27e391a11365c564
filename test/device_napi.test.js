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

// The device profile's Node-API layer against the device engine's rules where they differ from Node's: each case
// calls one function through the stand-in napi/native_api.h (test/native/device_napi_probe.cpp) and fails if it
// answers as Node's does. Runs only on a device profile build (npm run test:device).
const test = require('node:test');
const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');

const moduleRoot = path.resolve(process.env.OHOS_HOST_ROOT || path.join(__dirname, '..', 'build', 'root'));
const probePath = path.join(moduleRoot, 'lib', 'test', 'device_napi_probe.node');
const present = fs.existsSync(probePath);
const probe = { exports: {} };
if (present) process.dlopen(probe, probePath);
const napi = probe.exports;

const STATUS = { ok: 0, invalidArg: 1, objectExpected: 2 };

test.describe('the device engine\'s Node-API', { skip: !present && 'not a device profile build' }, () => {
  test('wraps: a strong reference, a re-wrap that replaces, no wrap found is ok and null', () => {
    assert.deepEqual(napi.wrapReferenceCount({}), { status: STATUS.ok, count: 2 });
    assert.deepEqual(napi.rewrap({}), { status: STATUS.ok, holds: 2 });
    assert.deepEqual(napi.unwrap({}), { status: STATUS.ok, isNull: true });
    assert.equal(napi.unwrap(5).status, STATUS.objectExpected);
  });

  test('removing a wrap needs a result pointer, and runs the finalizer at once', () => {
    assert.deepEqual(napi.removeWrapWithoutResult({}), { status: STATUS.invalidArg, stays: true, finalized: 0 });
    assert.deepEqual(napi.removeWrapWithResult({}), { status: STATUS.ok, stays: false, finalized: 1 });
  });

  test('references hold primitives too', () => {
    for (const value of [7, 'text', true, null, undefined]) {
      assert.deepEqual(napi.referenceTo(value), { status: STATUS.ok, value });
    }
  });

  test('errors: a throw replaces a pending one, a code may be a number, the device\'s texts', () => {
    assert.throws(() => napi.throwTwice(), { message: 'second' });
    assert.equal(napi.lastThrowStatus(), STATUS.ok);
    const { status, error } = napi.errorWithCode(401);
    assert.equal(status, STATUS.ok);
    assert.equal(error.code, 401);
    assert.equal(error.message, 'refused');
    assert.equal(napi.errorWithCode('401').error.code, '401');
    assert.deepEqual(napi.stringReadError(5), { status: 3, code: 3, message: 'Need string' });
    assert.deepEqual(napi.unwrapError(5), { status: STATUS.objectExpected, code: 2, message: 'Need object' });
  });

  test('property names are the object\'s own, enumerable or not, and none inherited', () => {
    const object = Object.create({ inherited: 1 });
    object.own = 1;
    Object.defineProperty(object, 'hidden', { value: 1, enumerable: false });
    object[Symbol('symbol')] = 1;
    assert.deepEqual(napi.propertyNames(object), { status: STATUS.ok, names: ['own', 'hidden'] });
  });

  test('async work needs a completion; a string read needs a length pointer', () => {
    assert.deepEqual(napi.asyncWorkWithoutCompletion(), { status: STATUS.invalidArg });
    assert.deepEqual(napi.stringWithoutLength('text'), { status: STATUS.invalidArg });
  });
});
