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

// Module hooks of register.mjs: '@ohos.<name>' resolves to a module whose default export is
// globalThis.requireNapi('<name>'), as the platform's script runtime treats such an import.
const PREFIX = '@ohos.';
const SCHEME = 'ohos-napi:';

export async function resolve(specifier, context, nextResolve) {
  if (specifier.startsWith(PREFIX)) {
    return { url: SCHEME + specifier.slice(PREFIX.length), shortCircuit: true };
  }
  return nextResolve(specifier, context);
}

export async function load(url, context, nextLoad) {
  if (url.startsWith(SCHEME)) {
    const name = JSON.stringify(url.slice(SCHEME.length));
    return { format: 'module', shortCircuit: true, source: `export default globalThis.requireNapi(${name});\n` };
  }
  return nextLoad(url, context);
}
