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

// What the suites need and ArkTS's typing does not let them write: reflection over the module's objects, and calls
// with the argument types and counts that the module must refuse (a script caller can make them; an ArkTS one
// cannot).
import rovanta from '@ohos.carService.rovanta';

// The module's exports, sorted.
export function exportNames(): string[] {
  return Object.getOwnPropertyNames(rovanta).sort();
}

// The methods of the adapter class, sorted.
export function adapterMethodNames(): string[] {
  return Object.getOwnPropertyNames(rovanta.CarAdapterClient.prototype)
    .filter((name) => name !== 'constructor')
    .sort();
}

// The members of a DiscoveryMode object in their order.
export function discoveryModeKeys(): string[] {
  return Object.keys(rovanta.DiscoveryMode);
}

type Method = (...args: unknown[]) => unknown;

// adapter[method](...args), whatever the declaration says of the arguments; returns what the call returns.
function invoke(adapter: object, method: string, args: unknown[]): unknown {
  return (adapter as Record<string, Method>)[method](...args);
}

// A call that returns at once: what it returns (a listener method's result), if it does not throw.
export function call(adapter: object, method: string, args: unknown[]): number | undefined {
  return invoke(adapter, method, args) as number | undefined;
}

export function callForPromise(adapter: object, method: string, args: unknown[]): Promise<number | string> {
  return invoke(adapter, method, args) as Promise<number | string>;
}

// The callback form; \`received\` gets every argument the module passes to the callback. Returns whether the call
// returned undefined.
export function callWithCallback(adapter: object, method: string, args: unknown[],
  received: (values: (number | string)[]) => void): boolean {
  const callback = (...values: unknown[]): void => received(values as (number | string)[]);
  return invoke(adapter, method, [...args, callback]) === undefined;
}
